"""Writes what was measured: a table (results.md) and two plots beside it."""

import math
import pathlib
import re
import statistics

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt  # noqa: E402

IMPROVEMENTS = pathlib.Path(__file__).resolve().parent / "improvements.md"
NAMES = {"bare": "bare XCB", "bare-shared": "bare XCB, shared connection",
         "bare-runtime": "bare XCB, C++ runtime loaded", "library": "VelLaunchScreen",
         "library-open": "VelLaunchScreen, display opened before",
         "library-linked": "VelLaunchScreen, C++ runtime linked in", "sdl2": "SDL2", "qt6": "Qt 6",
         "gtk3": "GTK 3", "wx": "wxWidgets"}
COLORS = {"library": "#1f6feb", "plain": "#8b949e", "GLib": "#d29922", "Qt": "#3fb950"}


def spread(values):
    """The distance between the quartiles."""
    if len(values) < 2:
        return 0.0
    low, _, high = statistics.quantiles(values, n=4, method="inclusive")
    return high - low


def shown(value, unit="ns"):
    for factor, name in ((1e9, "s"), (1e6, "ms"), (1e3, "µs")):
        if unit == "ns" and abs(value) >= factor:
            return f"{value / factor:.3g} {name}"
    return f"{value:.3g} {unit}"


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + " --- |" * len(head)]
    return "\n".join(lines + ["| " + " | ".join(str(cell) for cell in row) + " |" for row in rows])


def exponent(points):
    """The slope of the line through cost against size, both logarithmic."""
    xs = [math.log(size) for size, _ in points]
    ys = [math.log(cost) for _, cost in points]
    x, y = statistics.fmean(xs), statistics.fmean(ys)
    return sum((a - x) * (b - y) for a, b in zip(xs, ys)) / sum((a - x) ** 2 for a in xs)


class Targets:
    def __init__(self):
        self.rows = []

    def add(self, what, limit, figure, ratio, met):
        self.rows.append((what, limit, figure, ratio, "yes" if met else "no"))

    def ratio(self, what, ours, other, limit, name, unit="ns"):
        """Met if ours is at most `limit` times the other's median."""
        if ours and other:
            mine, theirs = statistics.median(ours), statistics.median(other)
            self.add(what, f"at most {limit} of {name}", f"{shown(mine, unit)}; {shown(theirs, unit)}",
                     f"{mine / theirs:.2f}", mine <= limit * theirs)

    def ahead(self, what, ours, other, times, name):
        """Met if the other's median is at least `times` ours."""
        if ours and other:
            mine, theirs = statistics.median(ours), statistics.median(other)
            self.add(what, f"{times} times ahead of {name}" if times > 1 else f"ahead of {name}",
                     f"{shown(mine)}; {shown(theirs)}", f"{theirs / mine:.2f} times",
                     theirs >= times * mine)


def spans(runs, begin, end):
    return [run[end] - run[begin] for run in runs if run[end] != 0 and run[begin] != 0]


def lateness(runs):
    """How late each tick came, in nanoseconds, after the one that was least late in its run."""
    late = []
    for run in runs:
        over = [tick - number * 100_000_000 for number, tick in enumerate(run["ticks"])]
        late += [one - min(over) for one in over]
    return late


def drift(runs):
    """How far the last tick of a run has moved against the first one, in nanoseconds."""
    return [abs(run["ticks"][-1] - run["ticks"][0] - (len(run["ticks"]) - 1) * 100_000_000)
            for run in runs if len(run["ticks"]) > 1]


def early(runs):
    return sum(tick < run["called"] + (number + 1) * 100_000_000
               for run in runs for number, tick in enumerate(run["ticks"]))


def percentile(values, hundredth):
    ordered = sorted(values)
    return ordered[min(len(ordered) - 1, int(len(ordered) * hundredth / 100))]


def targets(measured):
    made = Targets()
    over, start = measured["over_a_host"], measured["from_start"]
    bare = over["bare"]
    white = ("called", "white")
    ours = over["library-open"]
    made.ratio("request to white", spans(ours, *white), spans(bare, *white), 1.15, "bare XCB")
    made.ratio("opening the display to white", spans(over["library"], *white), spans(bare, *white),
               1.15, "bare XCB")
    for peer in ("gtk3", "sdl2", "qt6"):
        made.ahead("request to white", spans(ours, *white), spans(over[peer], *white), 3, NAMES[peer])
    made.ratio("the present call", spans(ours, "called", "returned"),
               spans(bare, "called", "returned"), 1.25, "bare connect, create, map")
    made.ratio("opening the display to presented", spans(over["library"], "called", "returned"),
               spans(bare, "called", "returned"), 1.25, "bare connect, create, map")
    made.ratio("down to the host visible again", spans(ours, "down", "gone"),
               spans(bare, "down", "gone"), 1.15, "bare XCB")

    white = ("started", "white")
    made.ratio("process start to white", spans(start["library"], *white),
               spans(start["bare"], *white), 1.3, "bare XCB")
    for peer in ("sdl2", "qt6", "gtk3"):
        made.ahead("process start to white", spans(start["library"], *white),
                   spans(start[peer], *white), 7, NAMES[peer])
    memory = {name: [run["kibibytes"] for run in runs] for name, runs in start.items()}
    made.ratio("peak resident memory", memory["library"], memory["bare"], 1.3, "bare XCB", "KiB")
    sizes, loads = measured["sizes"]
    extra = [one for one in loads["library"][0] if one not in loads["bare"][0]]
    foreign = [one for one in extra if not re.match(r"lib(stdc\+\+|gcc_s|m|xcb.*)\.so", one)]
    made.add("shared objects beyond XCB's and the C++ runtime's", "none", ", ".join(foreign) or "none",
             "", not foreign)

    times, runs = measured["over_a_screen"]["library"]
    made.add("covers a host that fills the screen, centre and corners", "every run",
             f"{times} of {runs}", "", runs > 0 and times == runs)

    switches = [run["switches"] / 3 for run in start["library"]]
    made.add("wake-ups a second while counting (30 ticks, start and end included)", "10 and start-up",
             f"{statistics.median(switches):.1f}; bare XCB "
             f"{statistics.median([run['switches'] / 3 for run in start['bare']]):.1f}", "",
             statistics.median(switches) <=
             statistics.median([run["switches"] / 3 for run in start["bare"]]) * 1.3)
    made.add("drift over 30 ticks", "at most 0.5 ms", shown(statistics.median(drift(start["library"]))),
             "", statistics.median(drift(start["library"])) <= 500_000)
    for hundredth, limit in ((50, 1.3), (99, 1.5)):
        made.ratio(f"error of a tick, p{hundredth}", [percentile(lateness(start["library"]), hundredth)],
                   [percentile(lateness(start["bare"]), hundredth)], limit, "timerfd")
    made.add("ticks that came early", "none", str(early(start["library"])), "",
             early(start["library"]) == 0)

    inside = measured["in_process"]

    def beside(what, size, limit, other="plain", name=None):
        runs = inside.get((what, size), {})
        label = f"{what}, {size}" if size else what
        made.ratio(label, runs.get("library"), runs.get(other), limit, name or other)

    beside("tick", None, 3, name="clock read, compare, call")
    beside("idle pump", None, 2, name="clock read")
    beside("idle pump on a display", None, 2, name="clock read and look at the connection")
    for size, limit in ((1, 2), (10, 2), (1000, 1.5)):
        beside("post", size, limit, name="a snapshot under a mutex")
    for size in (10, 1000):
        runs = inside[("post", size)]
        made.ahead(f"post, {size}", runs["library"], runs["Qt"], 1, "Qt's signals")
    beside("task", None, 2, name="mutex and vector")
    beside("task from another thread", None, 1.2, name="mutex and eventfd")
    for name, limit in (("x11", 400_000), ("headless", 250_000)):
        if name in sizes:
            made.add(f"stripped shared library, {name}", f"under {limit // 1000} KB",
                     f"{sizes[name] / 1000:.0f} KB", "", sizes[name] < limit)
    return made.rows


def growth(inside):
    """[(what, {who: [(size, median)]})] of what was measured in several sizes."""
    kinds = {}
    for (what, size), runs in inside.items():
        if size is not None:
            for who, values in runs.items():
                kinds.setdefault(what, {}).setdefault(who, []).append(
                    (size, statistics.median(values)))
    return [(what, {who: sorted(points) for who, points in by.items()})
            for what, by in kinds.items() if all(len(points) > 1 for points in by.values())]


def plot_growth(kinds, path):
    columns = 3
    rows = math.ceil(len(kinds) / columns)
    figure, axes = plt.subplots(rows, columns, figsize=(11, 3.2 * rows), squeeze=False)
    for axis in axes.flat[len(kinds):]:
        axis.axis("off")
    for axis, (what, by) in zip(axes.flat, kinds):
        for who, points in by.items():
            axis.loglog(*zip(*points), marker="o", color=COLORS.get(who),
                        label=f"{who}: {exponent(points):.2f}")
        axis.set_title(what, fontsize=10)
        axis.set_xlabel("size")
        axis.set_ylabel("ns")
        axis.grid(True, alpha=0.3)
        axis.legend(fontsize=8, title="exponent", title_fontsize=8)
    figure.tight_layout()
    figure.savefig(path)
    plt.close(figure)


def plot_screen(measured, path):
    parts = [("Request to white over a host's window", measured["over_a_host"], "called"),
             ("Process start to white", measured["from_start"], "started")]
    figure, axes = plt.subplots(1, 2, figsize=(11, 3.4))
    for axis, (title, programs, begin) in zip(axes, parts):
        values = {name: [one / 1e6 for one in spans(runs, begin, "white")]
                  for name, runs in programs.items()}
        values = {name: some for name, some in values.items() if some}
        order = sorted(values, key=lambda name: -statistics.median(values[name]))
        for place, name in enumerate(order):
            median = statistics.median(values[name])
            axis.barh(place, median, color="#1f6feb" if "library" in name else "#8b949e")
            axis.plot(values[name], [place] * len(values[name]), "|", color="#24292f", alpha=0.5)
            axis.annotate(f"{median:.3g}", (max(values[name]), place), xytext=(4, 0),
                          textcoords="offset points", va="center", fontsize=8)
        axis.set_yticks(range(len(order)), [NAMES[name] for name in order], fontsize=8)
        axis.set_xscale("log")
        axis.set_xlabel("ms (log)")
        axis.set_title(title, fontsize=10)
    figure.tight_layout()
    figure.savefig(path)
    plt.close(figure)


def screen_rows(programs, columns):
    rows = []
    for name, runs in programs.items():
        if runs:
            rows.append([NAMES[name]] + [column(runs) for column in columns])
    return rows


def span_cell(begin, end):
    def cell(runs):
        values = spans(runs, begin, end)
        if not values:
            return "never"
        return f"{shown(statistics.median(values))} ({shown(min(values))}; {shown(spread(values))})"
    return cell


def median_cell(key, factor=1.0, unit=""):
    return lambda runs: f"{statistics.median([run[key] for run in runs]) * factor:.4g}{unit}"


def runtime_share(start):
    """What a program that is started pays before the library has any part in it."""
    def median(name, of):
        return statistics.median([of(run) for run in start[name]])
    to_white = [median(name, lambda run: run["white"] - run["started"])
                for name in ("bare-runtime", "bare")]
    memory = [median(name, lambda run: run["kibibytes"]) for name in ("bare-runtime", "bare")]
    return (f"Bare XCB that loads the C++ runtime, and uses nothing of it, is white after "
            f"{to_white[0] / to_white[1]:.2f} times as long as bare XCB and takes "
            f"{memory[0] / memory[1]:.2f} times its memory.")


def write(measured, folder):
    kinds = growth(measured["in_process"])
    plot_growth(kinds, folder / "growth.svg")
    plot_screen(measured, folder / "screen.svg")
    sizes, loads = measured["sizes"]

    parts = [f"# What it costs\n\n{measured['date']}, {measured['machine']}. Medians; in brackets the "
             "least and the distance between the quartiles. What is compared ran alternately."]
    if measured["quick"]:
        parts.append("**A quick run: few repetitions, not to be quoted.**")
    parts.append("## Targets\n\n" + table(["what", "target", "figures", "ratio", "met"],
                                          targets(measured)))
    parts.append("## On the screen\n\nOver the window of another program, the library loaded:\n\n" + table(
        ["program", "to white", "the call", "down to the host visible"],
        screen_rows(measured["over_a_host"], [span_cell("called", "white"),
                                              span_cell("called", "returned"),
                                              span_cell("down", "gone")])))
    parts.append("From process start, shown for three seconds with a timer of 0.1 s:\n\n" + table(
        ["program", "to white", "peak memory, MiB", "processor, ms", "voluntary switches",
         "drift over 30 ticks", "tick late, p50", "p99", "shared objects", "their size, MB"],
        [row + [len(loads[name][0]), f"{loads[name][1] / 1e6:.1f}"] for name, row in zip(
            [name for name, runs in measured["from_start"].items() if runs],
            screen_rows(measured["from_start"], [
                span_cell("started", "white"), median_cell("kibibytes", 1 / 1024),
                median_cell("microseconds", 1e-3), median_cell("switches"),
                lambda runs: shown(statistics.median(drift(runs))),
                lambda runs: shown(percentile(lateness(runs), 50)),
                lambda runs: shown(percentile(lateness(runs), 99))]))]))
    parts.append(runtime_share(measured["from_start"]))
    parts.append("![On the screen](screen.svg)")
    parts.append("Over a host that fills the screen, under metacity: " + "; ".join(
        f"{NAMES[name]} {times} of {runs}" for name, (times, runs) in measured["over_a_screen"].items())
        + ". The peers' are ordinary splash windows.")
    if sizes:
        parts.append("The shared library, stripped: " + "; ".join(
            f"{name} {size / 1000:.0f} KB" for name, size in sizes.items()) + ".")
    rows = []
    for (what, size), runs in sorted(measured["in_process"].items(), key=lambda one: (one[0][0], one[0][1] or 0)):
        ours = statistics.median(runs["library"])
        for who, values in runs.items():
            rows.append([what, size or "", who,
                         f"{shown(statistics.median(values))} ({shown(min(values))}; {shown(spread(values))})",
                         "" if who == "library" else f"{ours / statistics.median(values):.2f}"])
    parts.append("## Inside the process\n\nThe last column is the library's median as a multiple of this "
                 "one's.\n\n" + table(["what", "size", "who", "time", "library is"], rows))
    parts.append("## Growth\n\n" + table(["what", "who", "exponent"], [
        [what, who, f"{exponent(points):.2f}"] for what, by in kinds for who, points in by.items()])
        + "\n\n![Growth](growth.svg)")
    if IMPROVEMENTS.exists():
        parts.append(IMPROVEMENTS.read_text().strip())
    (folder / "results.md").write_text("\n\n".join(parts) + "\n")
