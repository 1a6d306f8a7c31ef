#!/usr/bin/python3
"""Runs the benchmarks that have been built and writes what they measured.

Everything that is compared runs alternately, and what is reported are ratios of medians: on a
machine that others use too, only these mean anything. Nothing here fails because something is slow.
"""

import argparse
import datetime
import json
import os
import pathlib
import platform
import random
import subprocess
import sys
import tempfile
import time

import report

ROOT = pathlib.Path(__file__).resolve().parent.parent
BIN = ROOT / "build" / "benchmarks" / "bin"
OUT = ROOT / "build" / "bench"
FIVE = "640,480;325,245;955,245;325,715;955,715"  # the window's middle and corners
FILLED = "640,480;5,5;1274,5;5,954;1274,954"
SCREEN = "1280x960x24"
STARTED = ("bare", "bare-runtime", "library", "library-linked", "sdl2", "qt6", "gtk3", "wx")


def say(text):
    print(f"bench: {text}", file=sys.stderr, flush=True)


class Server:
    """An X server of our own, and a window manager if wanted; both end with us, by process id."""

    def __init__(self, manager=None):
        reading, writing = os.pipe()
        self.processes = [subprocess.Popen(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", SCREEN, "-nolisten", "tcp",
             "-noreset"],
            pass_fds=[writing], stderr=subprocess.DEVNULL)]
        os.close(writing)
        with os.fdopen(reading) as number:
            display = number.readline().strip()
        if not display:
            sys.exit("bench: Xvfb does not start")
        self.home = tempfile.TemporaryDirectory(prefix="vel-bench-")
        self.environment = {**os.environ, "DISPLAY": f":{display}", "HOME": self.home.name,
                            "XDG_RUNTIME_DIR": self.home.name, "NO_AT_BRIDGE": "1",
                            "GSETTINGS_BACKEND": "memory"}
        self.environment.pop("WAYLAND_DISPLAY", None)
        if manager:
            self.processes.append(subprocess.Popen(
                manager, env=self.environment, stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.terminate()
            process.wait()
        self.home.cleanup()

    def watch(self, places, program, tenths, window=0):
        """Runs a program under the watcher; answers what that saw, or None if it failed."""
        run = subprocess.run(
            [BIN / "bench-watch", places, "--", BIN / f"bench-screen-{program}", str(tenths),
             "320", "240", "640", "480", str(window)],
            env=self.environment, capture_output=True, text=True, timeout=60, check=False)
        try:
            seen = json.loads(run.stdout)
        except ValueError:
            say(f"{program}: {run.stderr.strip() or 'no answer'}")
            return None
        if seen["status"] != 0 or "called" not in seen:
            say(f"{program}: status {seen['status']}: {run.stderr.strip()}")
            return None
        for stamp in ("called", "returned", "down", "kibibytes"):
            seen[stamp] = seen[stamp][0]
        return seen


class Host:
    """The window of somebody else, on a server."""

    def __init__(self, server, *arguments):
        self.process = subprocess.Popen([BIN / "bench-screen-host", *arguments],
                                        env=server.environment, stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True)
        self.window = int(self.process.stdout.readline())

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.wait()


def in_process(quick):
    """{(what, size): {who: [nanoseconds]}}"""
    say("inside the process")
    output = OUT / "in-process.json"
    with Server() as server:
        subprocess.run(
            [BIN / "bench-in-process", "--benchmark_enable_random_interleaving=true",
             f"--benchmark_repetitions={3 if quick else 15}",
             f"--benchmark_min_time={0.01 if quick else 0.03}",
             "--benchmark_out_format=json", f"--benchmark_out={output}"],
            env=server.environment, check=True, stdout=subprocess.DEVNULL)
    scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
    found = {}
    for run in json.loads(output.read_text())["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        if run.get("error_occurred"):
            sys.exit(f"bench: {run['name']}: {run['error_message']}")
        what, who, *rest = run["name"].split("/")
        size = int(rest[0]) if rest and rest[0].isdigit() else None
        found.setdefault((what, size), {}).setdefault(who, []).append(
            run["real_time"] * scale[run["time_unit"]])
    return found


def alternately(rounds, names, measure):
    """{name: [what measure(name) answered]}, in another order each round."""
    found = {name: [] for name in names}
    for _ in range(rounds):
        for name in random.sample(names, len(names)):
            result = measure(name)
            if result is not None:
                found[name].append(result)
    return found


def from_start(quick):
    names = list(STARTED)
    say("from process start, three seconds each")
    with Server() as server:
        return alternately(1 if quick else 9, names,
                           lambda name: server.watch("640,480", name, 30))


def over_a_host(quick):
    names = ["bare", "bare-shared", "library", "library-open", "sdl2", "qt6", "gtk3"]
    say("over the window of another program")
    with Server() as server, Host(server) as host:
        return alternately(5 if quick else 25, names,
                           lambda name: server.watch("640,480", name, 3, host.window))


def over_a_screen(quick):
    """How often each covered a host that fills the screen, under a window manager: (times, runs)"""
    names = ["library", "qt6", "gtk3"]
    say("over a host that fills the screen")
    runs = 3 if quick else 10
    with Server(["metacity", "--sm-disable"]) as server:
        wait_for_manager(server)
        with Host(server, "fill") as host:
            time.sleep(1)  # the window manager lays it out; nothing is timed here
            seen = alternately(
                runs, names,
                lambda name: server.watch(FILLED if name == "library" else "640,480", name, 5,
                                          host.window))
    return {name: (sum(one["white"] != 0 for one in all_of_it), len(all_of_it))
            for name, all_of_it in seen.items()}


def wait_for_manager(server):
    for _ in range(200):
        answer = subprocess.run(["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"],
                                env=server.environment, capture_output=True, text=True, check=False)
        if "window id" in answer.stdout:
            return
        time.sleep(0.05)
    sys.exit("bench: the window manager does not start")


def sizes():
    """Bytes of the stripped shared libraries, and what each program loads."""
    say("sizes")
    found = {}
    for name in ("x11", "headless"):
        library = next((ROOT / "build" / f"bench-{name}").glob("**/libVelLaunchScreen.so.*.*"), None)
        if library:
            stripped = OUT / f"libVelLaunchScreen-{name}.so"
            subprocess.run(["strip", "-o", stripped, library], check=True)
            found[name] = stripped.stat().st_size
    loads = {}
    for program in STARTED:
        listed = subprocess.run(["ldd", BIN / f"bench-screen-{program}"], capture_output=True,
                                text=True, check=True).stdout
        files = [line.split("=>")[1].split()[0] for line in listed.splitlines() if "=>" in line]
        loads[program] = (sorted(os.path.basename(one) for one in files),
                          sum(os.stat(one).st_size for one in files))
    return found, loads


def machine():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return f"{line.split(':')[1].strip()}, {os.cpu_count()} cores, {platform.system()}"
    return f"{platform.machine()}, {os.cpu_count()} cores"


def main():
    arguments = argparse.ArgumentParser(prog="./bench", description=__doc__.split("\n")[0])
    arguments.add_argument("--quick", action="store_true",
                           help="few repetitions: to see that it runs, not to quote from")
    options = arguments.parse_args()
    OUT.mkdir(parents=True, exist_ok=True)
    measured = {
        "date": datetime.date.today().isoformat(),
        "machine": machine(),
        "quick": options.quick,
        "in_process": in_process(options.quick),
        "over_a_host": over_a_host(options.quick),
        "from_start": from_start(options.quick),
        "over_a_screen": over_a_screen(options.quick),
        "sizes": sizes(),
    }
    report.write(measured, OUT)
    print((OUT / "results.md").read_text())


if __name__ == "__main__":
    main()
