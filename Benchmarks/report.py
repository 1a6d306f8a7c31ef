"""Writes the results: the tables in results.md, and two plots."""

import pathlib
import shutil
import statistics

import targets
from figures import (NAMES, drifts, format_median, format_value, growth_curves, growth_exponent,
                     percentile, pump_times, spans, tick_errors)
from plots import plot_growth, plot_screen

IMPROVEMENTS = pathlib.Path(__file__).resolve().parent / "improvements.md"
PLOTS = ("bench-growth.svg", "bench-screen.svg")
MODES = """A program is *cold* if its shared libraries are loaded but it has not called any of them: the time
includes connecting to the display and initialising the toolkit. A program is *warm* if it has
connected, and has shown and closed one window of its own. The library's first window has shown a
launch screen, and the library has also adopted the host's window, which a game does in advance with
`vel_create`. "Adopting" means that the time includes the adoption."""


def format_table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + " --- |" * len(head)]
    return "\n".join(lines + ["| " + " | ".join(str(cell) for cell in row) + " |" for row in rows])


def format_span(runs, begin, end):
    values = spans(runs, begin, end)
    return format_median(values) if values else "never"


def target_sections(results):
    return ["## Targets\n\n" + MODES + "\n\nThe first figure is the library's. The second one is the "
            "other program's.",
            format_table(targets.HEAD, targets.user_targets(results)),
            "## Targets that users do not notice\n\nOn an idle machine, each operation takes less than a "
            "millisecond. The rows compare it with plain code.",
            format_table(targets.HEAD, targets.operation_targets(results))]


def cover_table(over):
    rows = [[NAMES[name], mode, format_span(runs, "show_start", "white_start"),
             format_span(runs, "show_start", "show_end"), format_span(runs, "hide_start", "white_end")]
            for (name, mode), runs in over.items() if runs]
    return format_table(
        ["program", "state", "first call to white", "the calls that show it",
         "start of hiding to the host visible"],
        [[cell.replace("warm-adopting", "warm, adopting") for cell in row] for row in rows])


def host_section(over):
    return "## Over the window of another program\n\n" + cover_table(over)


def wayland_section(wayland):
    head = "## On Wayland\n\n"
    if isinstance(wayland, str):
        return f"{head}No results: {wayland}."
    return (head + "sway draws into a window of an X server. The pixels of that server show when the screen is "
            "white, as for the other tables. The time includes the wait for the next frame of sway. "
            "VelLaunchScreen and the bare subsurface cover a window of their own process, which has connected. "
            "A cold program has not bound the global objects of the cover. SDL2 shows a window and draws it "
            "with OpenGL in software.\n\n" + cover_table(wayland))


def start_section(start, objects):
    def median(runs, key, factor=1.0):
        return f"{statistics.median([run[key] for run in runs]) * factor:.4g}"

    rows = []
    for name, runs in start.items():
        if runs:
            errors = tick_errors(runs)
            rows.append([NAMES[name], format_span(runs, "process_start", "white_start"),
                         median(runs, "peak_kibibytes", 1 / 1024),
                         median(runs, "cpu_microseconds", 1e-3), median(runs, "voluntary_switches"),
                         format_value(statistics.median(drifts(runs))),
                         format_value(percentile(errors, 50)), format_value(percentile(errors, 99)),
                         len(objects[name][0]), f"{objects[name][1] / 1e6:.1f}"])
    return ("## From process start\n\nEach window stays for three seconds, with a timer of 0.1 s.\n\n"
            + format_table(["program", "process start to white", "peak memory, MiB", "processor time, ms",
                            "voluntary switches", "drift over 30 ticks", "tick error, percentile 50",
                            "percentile 99", "shared objects", "their size, MB"], rows)
            + "\n\n" + describe_runtime(start))


def describe_runtime(start):
    """Describes what the C++ runtime adds to the time and the memory of a process start."""
    def ratio(value):
        medians = [statistics.median([value(run) for run in start[name]])
                   for name in ("bare-runtime", "bare")]
        return f"{medians[0] / medians[1]:.2f}"

    to_white = ratio(lambda run: run["white_start"] - run["process_start"])
    memory = ratio(lambda run: run["peak_kibibytes"])
    return (f"If bare XCB also loads the C++ runtime without using it, it takes {to_white} times as long "
            f"to white and {memory} times the memory.")


def game_section(game):
    rows = []
    for name, runs in game.items():
        if not runs:
            continue
        times = pump_times(runs)
        missed_frames = [f"{statistics.fmean([run[key] for run in runs]):.1f}"
                         for key in ("missed_coming", "missed_going", "missed")]
        rows.append([NAMES[name], format_median([run["show"] for run in runs]),
                     *[format_value(percentile(times, percent)) for percent in (50, 99, 99.9)],
                     format_value(max(times)), *missed_frames])
    return ("## In a game at 240 frames a second\n\nThe game runs under metacity and covers its own "
            "window. The indicator is on. A frame lasts 4.17 ms. A frame is missed if the game still "
            "works on the previous frame when this frame should start; the figures are means of all runs. The "
            "cover's call is `vel_pump`, or for bare XCB the same work done by hand.\n\n"
            + format_table(["cover", "the calls that show it", "its call in a frame, median",
                            "percentile 99", "percentile 99.9", "longest", "frames missed while it appears",
                            "while it disappears", "in the whole run"], rows))


def loading_section(loading):
    if not loading:
        return "## Loading the library\n\nNo results."
    def difference(key, step):
        return format_value(
            statistics.median([run[key][step] - run[key][0] for run in loading]), "KiB")

    return ("## Loading the library into a running C++ game\n\n"
            f"`dlopen` with `RTLD_NOW` takes {format_median([run['load'] for run in loading])}.\n\n"
            + format_table(["memory added", "by loading", "by loading and showing a launch screen"],
                           [["resident", difference("resident", 1), difference("resident", 2)],
                            ["private", difference("private", 1), difference("private", 2)]]))


def process_section(in_process):
    rows = []
    for (operation, size), runs in sorted(in_process.items(), key=lambda item: (item[0][0], item[0][1] or 0)):
        ours = statistics.median(runs["library"])
        for implementation, values in runs.items():
            rows.append([operation, size or "", implementation, format_median(values),
                         "" if implementation == "library" else f"{ours / statistics.median(values):.2f}"])
    return ("## Inside the process\n\nThe last column is the library's median divided by the median of "
            "the row.\n\n" + format_table(["operation", "size", "implementation", "time", "ratio"], rows))


def growth_section(curves):
    return "## Growth\n\n" + format_table(["operation", "implementation", "exponent"], [
        [operation, implementation, f"{growth_exponent(points):.2f}"]
        for operation, by_implementation in curves
        for implementation, points in by_implementation.items()]) + (
            "\n\n![Plots of cost against size](bench-growth.svg)")


def write_all(results, folder):
    """Writes results.md and the plots to `folder`."""
    curves = growth_curves(results["in_process"])
    plot_growth(curves, folder / PLOTS[0])
    plot_screen(results, folder / PLOTS[1])
    parts = [f"# Benchmark results\n\n{results['date']}, {results['machine']}. Times are medians. The "
             "brackets contain the minimum and the interquartile range. Programs that are compared ran "
             "alternately."]
    if results["quick"]:
        parts.append("**This was a quick run with few repetitions. Do not quote it.**")
    parts += target_sections(results)
    parts += [host_section(results["over_a_host"]), wayland_section(results["wayland"]),
              start_section(results["from_start"], results["shared_objects"]),
              "![Bars: milliseconds until the screen is white](bench-screen.svg)",
              "## Over a host that fills the screen\n\nRuns under metacity in which the screen was "
              "white: " + "; ".join(f"{NAMES[name]} {covered_runs} of {runs}" for name, (covered_runs, runs)
                                    in results["over_a_screen"].items())
              + ". For the toolkits, which show ordinary splash windows, only the middle counts.",
              game_section(results["game"]), loading_section(results["loading"])]
    if results["sizes"]:
        parts.append("## Size\n\nThe stripped shared library: " + "; ".join(
            f"{name} {size / 1000:.0f} KB" for name, size in results["sizes"].items()) + ".")
    parts += [process_section(results["in_process"]), growth_section(curves)]
    if IMPROVEMENTS.exists():
        parts.append(IMPROVEMENTS.read_text().strip())
    (folder / "results.md").write_text("\n\n".join(parts) + "\n")


def publish(results, root):
    """Writes the targets to Benchmarks/results.md, and copies the plots to docs/pictures."""
    folder, pictures = root / "build" / "bench", root / "docs" / "pictures"
    for name in PLOTS:
        shutil.copyfile(folder / name, pictures / name)
    intro = (f"# Benchmark results\n\n`./bench --publish` wrote this page on {results['date']} "
             f"({results['machine']}). Absolute times differ from run to run, so compare only figures "
             "of one run. [improvements.md](improvements.md) explains why some targets are not met.")
    growth = ("## Growth\n\nThe cost against the size, with the exponent of each curve:\n\n"
              "![Plots of cost against size, with logarithmic axes](../docs/pictures/bench-growth.svg)")
    parts = [intro, *target_sections(results), wayland_section(results["wayland"]), game_section(results["game"]),
             loading_section(results["loading"]), growth]
    (root / "Benchmarks" / "results.md").write_text("\n\n".join(parts) + "\n")
