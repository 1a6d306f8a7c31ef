#!/usr/bin/env python3
"""Covers each host in each environment and writes a table of the results.

usage: matrix.py --launchscreen PROGRAM --programs FOLDER [--output TABLE] [--jobs N]
                 [--hosts NAME,...] [--environments NAME,...] [--endings ENDING,...] [--update]

A host is a program with a window (hosts.py). An environment is a window manager and possibly a compositor
(environments.py). A trial uses `launchscreen` to cover the window of one host in one environment
(trial.py). ENDING is the cause that ends the launch screen: time, skip, SIGTERM or SIGINT.

FOLDER must contain hosts-sampler and hosts-badhost. The script also builds hosts into FOLDER. The script
writes the table to TABLE (by default build/hosts.md). It writes all details to a JSON file with the name
of TABLE and the suffix .json. A run with --update replaces only the results of its own pairs of host and
environment. Exits with 1 if a result in the table is a fault or "not run".
"""

import argparse
import json
import shutil
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from environments import ENVIRONMENTS
from hosts import HOSTS, build

HERE = Path(__file__).resolve().parent
# The default of --endings. trial.py describes each value.
ENDINGS = ["time", "skip", "SIGTERM", "SIGINT"]


def select(candidates, names):
    if not names:
        return candidates
    chosen_names = names.split(",")
    unknown_names = set(chosen_names) - {candidate.name for candidate in candidates}
    if unknown_names:
        sys.exit("unknown: " + ", ".join(sorted(unknown_names)))
    return [candidate for candidate in candidates if candidate.name in chosen_names]


def run_trial(host, environment, ending, arguments):
    """Runs one trial in its own process and returns its result."""
    result = {"host": host.name, "environment": environment.name, "ending": ending, "faults": []}
    command = [sys.executable, str(HERE / "trial.py"), host.name, environment.name, ending]
    process = subprocess.run(
        command + [arguments.launchscreen, arguments.programs],
        stdin=subprocess.DEVNULL,
        capture_output=True,
        text=True,
        check=False,
    )
    try:
        result = json.loads(process.stdout)
    except ValueError:
        result["error"] = process.stderr.strip()[-400:] or "no output"
    return result


def verdict(result):
    if "error" in result:
        return "not run"
    return "fault" if result["faults"] else "passed"


def describe_buttons(result):
    working_before, working_after = result.get("buttons"), result.get("buttons after")
    if working_before is None:
        return ""
    close_works = result.get("closes")
    if working_before:
        parts = [
            name if working_after is None or name in working_after else name + " (lost)"
            for name in working_before
        ]
    else:
        parts = ["none works"] if result.get("has buttons") else ["no frame"]
    if close_works is not None:
        parts.append("close" if close_works else "close (lost)")
    return ", ".join(parts)


def table_row(result):
    if "error" in result:
        cells = [result["host"], result["environment"], result["ending"], "not run", "", "", result["error"]]
    else:
        white_frames = ""
        if "frames" in result:
            white_frames = "%d of %d" % (result["frames"] - result.get("not white", 0), result["frames"])
            if result.get("not drawn yet"):
                white_frames += ", %d not drawn yet" % result["not drawn yet"]
        cells = [
            result["host"],
            result["environment"],
            result["ending"],
            verdict(result),
            white_frames,
            describe_buttons(result),
            "; ".join(result["faults"] + ([result["note"]] if "note" in result else [])),
        ]
    return "| " + " | ".join(cell.replace("|", "/").replace("\n", " ") for cell in cells) + " |"


def table(results, hosts, environments, seconds):
    symbols = {"passed": "✓", "fault": "✗", "not run": "–"}
    result_by_pair = {(result["host"], result["environment"]): result for result in results}
    counts = {name: sum(verdict(result) == name for result in results) for name in symbols}
    lines = [
        "# Hosts and environments",
        "",
        "This run covered each host in each environment with `launchscreen show --window ID`.",
        "%d trials took %d s: %d passed, %d showed a fault, %d did not run."
        % (len(results), seconds, counts["passed"], counts["fault"], counts["not run"]),
        "",
        "A trial passes if it finds no fault. The main conditions are:",
        "",
        "- From the first white frame to the end of the cover, each sampled point (corners, middles of the edges,",
        "  centre) is white in each sampled frame in which the window is viewable.",
        "- Each button that worked before the cover works after the cover.",
        "- The hints have the same bytes before and after the cover.",
        "- The window has the position and size that it had before the cover. If the host requested another",
        "  position or size during the cover, the window has the requested position and size.",
        "",
        "A compositor draws a window some milliseconds after the window is mapped, moved or resized. Until then,",
        "a sampled point can show the screen behind the window. The table counts such a frame as not drawn yet,",
        "not as a fault.",
        "",
        "✓ passed, ✗ fault, – not run.",
        "",
        "| host | " + " | ".join(environment.name for environment in environments) + " |",
        "|---" * (len(environments) + 1) + "|",
    ]
    for host in hosts:
        pairs = [(host.name, environment.name) for environment in environments]
        cells = [symbols[verdict(result_by_pair[pair])] if pair in result_by_pair else "" for pair in pairs]
        lines.append("| %s: %s | %s |" % (host.name, host.description, " | ".join(cells)))
    lines += [
        "",
        "| host | environment | ended by | result | white frames | buttons | what was wrong |",
        "|---" * 7 + "|",
    ]
    lines += [table_row(result) for result in results]
    return "\n".join(lines) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--launchscreen", required=True)
    parser.add_argument("--programs", required=True)
    parser.add_argument("--output", default="build/hosts.md")
    parser.add_argument("--jobs", type=int, default=3)
    parser.add_argument("--hosts")
    parser.add_argument("--environments")
    parser.add_argument("--endings")
    parser.add_argument("--update", action="store_true")
    arguments = parser.parse_args()
    arguments.launchscreen = str(Path(arguments.launchscreen).resolve())
    arguments.programs = str(Path(arguments.programs).resolve())
    hosts = select(HOSTS, arguments.hosts)
    environments = select(ENVIRONMENTS, arguments.environments)
    endings = arguments.endings.split(",") if arguments.endings else ENDINGS

    start_time = time.monotonic()
    build_failures = {host.name: build(host, arguments.programs) for host in hosts}
    missing_programs = {
        environment.name: next(
            (command[0] + " is not installed" for command in environment.commands if not shutil.which(command[0])),
            None,
        )
        for environment in environments
    }

    def run_pair(indices):
        host_index, environment_index = indices
        host, environment = hosts[host_index], environments[environment_index]
        # Varies the ending: a run with all environments tries each ending on each host.
        ending = endings[(HOSTS.index(host) + ENVIRONMENTS.index(environment)) % len(endings)]
        reason = (
            build_failures[host.name]
            or host.reason_not_to_run(arguments.programs)
            or missing_programs[environment.name]
        )
        if reason:
            result = {"host": host.name, "environment": environment.name, "ending": ending}
            result.update(error=reason, faults=[])
        else:
            result = run_trial(host, environment, ending, arguments)
        print(
            "%-16s %-9s %-8s %s %s"
            % (
                host.name,
                environment.name,
                ending,
                verdict(result),
                result.get("error") or "; ".join(result["faults"]),
            ),
            flush=True,
        )
        return result

    index_pairs = [
        (host_index, environment_index)
        for host_index in range(len(hosts))
        for environment_index in range(len(environments))
    ]
    with ThreadPoolExecutor(arguments.jobs) as pool:
        results = list(pool.map(run_pair, index_pairs))
    seconds = round(time.monotonic() - start_time)
    output = Path(arguments.output)
    output.parent.mkdir(parents=True, exist_ok=True)
    if arguments.update and output.with_suffix(".json").exists():
        result_by_pair = {
            (result["host"], result["environment"]): result
            for result in json.loads(output.with_suffix(".json").read_text()) + results
        }
        hosts, environments = HOSTS, ENVIRONMENTS
        pairs = [(host.name, environment.name) for host in hosts for environment in environments]
        results = [result_by_pair[pair] for pair in pairs if pair in result_by_pair]
    output.write_text(table(results, hosts, environments, seconds))
    output.with_suffix(".json").write_text(json.dumps(results, indent=1))
    print("%d trials in %d s: %s" % (len(results), seconds, output))
    return 1 if any(verdict(result) != "passed" for result in results) else 0


if __name__ == "__main__":
    sys.exit(main())
