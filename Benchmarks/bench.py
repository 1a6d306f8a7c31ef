#!/usr/bin/python3
"""Runs the benchmarks that have been built and writes the results to build/bench.

Programs that are compared run alternately, and the results are ratios of medians. Absolute times
differ from run to run on a machine that also does other work. The script does not fail if a target is
not met.
"""

import argparse
import datetime
import json
import os
import pathlib
import platform
import random
import shutil
import subprocess
import sys
import time

import report
from display import BIN, ROOT, Host, Server, print_status

sys.path.insert(0, str(ROOT / "Tests/Support/Wayland"))
from sway import Sway  # noqa: E402

OUT = ROOT / "build" / "bench"
CORNERS_AND_MIDDLE = "640,480;5,5;1274,5;5,954;1274,954"  # of the screen
STARTED_PROGRAMS = ("bare", "bare-runtime", "library", "library-linked", "sdl2", "qt6", "gtk3", "wx")
PEERS = ("bare", "library", "sdl2", "qt6", "gtk3", "wx")
COVERS = ("none", "bare", "library")
# The programs on Wayland, and the names of their files.
WAYLAND_PROGRAMS = {"wayland-bare": "wayland-bare", "wayland-library": "wayland-library",
                    "wayland-sdl2": "sdl2"}
# A point inside the measured window and outside the first window of a warm program. sway centres both.
WAYLAND_POINT = "250,200"
METACITY = ["metacity", "--sm-disable"]


def measure_in_process(quick):
    """Returns {(operation, size): {implementation: [nanoseconds]}}."""
    print_status("inside the process")
    output = OUT / "in-process.json"
    with Server() as server:
        subprocess.run(
            [BIN / "bench-in-process", "--benchmark_enable_random_interleaving=true",
             f"--benchmark_repetitions={3 if quick else 15}",
             f"--benchmark_min_time={0.01 if quick else 0.03}",
             "--benchmark_out_format=json", f"--benchmark_out={output}"],
            env=server.environment, check=True, stdout=subprocess.DEVNULL)
    scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
    times = {}
    for run in json.loads(output.read_text())["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        if run.get("error_occurred"):
            sys.exit(f"bench: {run['name']}: {run['error_message']}")
        operation, implementation, *rest = run["name"].split("/")
        size = int(rest[0]) if rest and rest[0].isdigit() else None
        times.setdefault((operation, size), {}).setdefault(implementation, []).append(
            run["real_time"] * scale[run["time_unit"]])
    return times


def measure_alternately(rounds, names, measure):
    """Calls measure(name) for each name, in a random order in each round.

    Returns {name: [result]} without the results that are None.
    """
    results = {name: [] for name in names}
    for _ in range(rounds):
        for name in random.sample(names, len(names)):
            result = measure(name)
            if result is not None:
                results[name].append(result)
    return results


def measure_from_process_start(quick):
    print_status("from process start, three seconds each")
    with Server() as server:
        return measure_alternately(1 if quick else 5, list(STARTED_PROGRAMS),
                                   lambda name: server.watch(name, "cold", 30))


def measure_over_a_host(quick):
    """Returns {(program, mode): [what the watcher printed]}."""
    print_status("over the window of another program")
    cases = [(name, mode) for name in PEERS for mode in ("cold", "warm")]
    cases.append(("library", "warm-adopting"))
    with Server() as server, Host(server) as host:
        return measure_alternately(2 if quick else 13, cases,
                                   lambda case: server.watch(*case, 3, host.window))


def measure_over_a_screen(quick):
    """Returns {name: (number of runs that covered the whole screen, number of runs)}."""
    print_status("over a host that fills the screen")
    with Server(METACITY) as server, Host(server, "fill") as host:
        time.sleep(1)  # The window manager makes the window fill the screen.

        def measure(name):
            if name == "library":
                return server.watch(name, "cold", 5, host.window, CORNERS_AND_MIDDLE)
            return server.watch(name, "cold", 5, host.window)

        results = measure_alternately(3 if quick else 10, ["library", "qt6", "gtk3"], measure)
    return {name: (sum(run["white_start"] != 0 for run in runs), len(runs))
            for name, runs in results.items()}


def measure_game(quick):
    """Returns {cover: [what the game printed]}."""
    print_status("in a game at 240 frames a second")
    with Server(METACITY) as server:
        return measure_alternately(1 if quick else 4, list(COVERS),
                                   lambda cover: server.run("screen-game", cover, 2 if quick else 5))


def measure_loading(quick, library):
    """Returns [what the program that loads the library printed]."""
    print_status("loading the library into a game")
    if library is None:
        return []
    with Server(METACITY) as server:
        runs = [server.run("screen-loading", library) for _ in range(3 if quick else 15)]
    return [run for run in runs if run is not None]


def measure_on_wayland(quick):
    """Returns {(program, mode): [what the watcher printed]}, or the reason why there are no results."""
    if not (BIN / "bench-screen-wayland-library").exists():
        return "the Wayland back end is not built"
    if shutil.which("sway") is None:
        return "sway is not installed"
    print_status("on Wayland")
    cases = [(name, mode) for name in WAYLAND_PROGRAMS for mode in ("cold", "warm")]
    with Server() as server, Sway(server.environment["DISPLAY"]) as sway:
        server.environment.update(WAYLAND_DISPLAY=sway.wayland_display, SDL_VIDEODRIVER="wayland")
        return measure_alternately(
            2 if quick else 25, cases,
            lambda case: server.watch(WAYLAND_PROGRAMS[case[0]], case[1], 3, points=WAYLAND_POINT))


def strip_libraries():
    """Strips the shared libraries with and without the X11 back end. Returns {name: path}."""
    paths = {}
    for name, folder in (("x11", "benchmarks"), ("headless", "bench-headless")):
        library = next((ROOT / "build" / folder).glob("libVelLaunchScreen.so.*.*"), None)
        if library:
            paths[name] = OUT / f"libVelLaunchScreen-{name}.so"
            subprocess.run(["strip", "-o", paths[name], library], check=True)
    return paths


def list_shared_objects():
    """Returns {program: (names of the shared objects that it loads, their size in bytes)}."""
    objects = {}
    for program in STARTED_PROGRAMS:
        listing = subprocess.run(["ldd", BIN / f"bench-screen-{program}"], capture_output=True,
                                 text=True, check=True).stdout
        files = [line.split("=>")[1].split()[0] for line in listing.splitlines() if "=>" in line]
        objects[program] = (sorted(os.path.basename(file) for file in files),
                           sum(os.stat(file).st_size for file in files))
    return objects


def describe_machine():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return f"{line.split(':')[1].strip()}, {os.cpu_count()} cores, {platform.system()}"
    return f"{platform.machine()}, {os.cpu_count()} cores"


def main():
    parser = argparse.ArgumentParser(prog="./bench", description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--quick", action="store_true",
                        help="few repetitions: shows that the benchmarks run; do not quote the results")
    parser.add_argument("--publish", action="store_true",
                        help="also write the targets to Benchmarks/results.md and the plots to docs/pictures")
    options = parser.parse_args()
    if options.quick and options.publish:
        parser.error("the results of a quick run cannot be published")
    OUT.mkdir(parents=True, exist_ok=True)
    libraries = strip_libraries()
    results = {
        "date": datetime.date.today().isoformat(),
        "machine": describe_machine(),
        "quick": options.quick,
        "in_process": measure_in_process(options.quick),
        "over_a_host": measure_over_a_host(options.quick),
        "from_start": measure_from_process_start(options.quick),
        "over_a_screen": measure_over_a_screen(options.quick),
        "game": measure_game(options.quick),
        "loading": measure_loading(options.quick, libraries.get("x11")),
        "wayland": measure_on_wayland(options.quick),
        "sizes": {name: path.stat().st_size for name, path in libraries.items()},
        "shared_objects": list_shared_objects(),
    }
    report.write_all(results, OUT)
    if options.publish:
        report.publish(results, ROOT)
    print((OUT / "results.md").read_text())


if __name__ == "__main__":
    main()
