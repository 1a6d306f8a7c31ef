"""The targets of the benchmarks, and whether the results meet them."""

import re
import statistics

from figures import (NAMES, count_early_ticks, drifts, format_value, percentile, pump_times, spans,
                     tick_errors)

HEAD = ["what", "target", "figures", "ratio", "met"]
# The runtime libraries of C++, and the libraries of XCB.
ALLOWED_OBJECTS = re.compile(r"lib(stdc\+\+|gcc_s|m|xcb.*)\.so")
FRAME = 1e9 / 240


class TargetTable:
    def __init__(self):
        self.rows = []

    def add(self, what, target, figures, is_met, ratio=""):
        self.rows.append((what, target, figures, ratio, "yes" if is_met else "no"))

    def add_ratio(self, what, ours, others, limit, name, unit="ns"):
        """Adds the target that our median is at most `limit` times the median of the others."""
        if ours and others:
            our_median, other_median = statistics.median(ours), statistics.median(others)
            self.add(what, f"at most {limit} times {name}",
                     f"{format_value(our_median, unit)}; {format_value(other_median, unit)}",
                     our_median <= limit * other_median, f"{our_median / other_median:.2f}")

    def add_lead(self, what, ours, others, times, name):
        """Adds the target that the median of the others is at least `times` our median."""
        if ours and others:
            our_median, other_median = statistics.median(ours), statistics.median(others)
            target = (f"{name} takes at least {times} times as long" if times > 1
                      else f"faster than {name}")
            self.add(what, target, f"{format_value(our_median)}; {format_value(other_median)}",
                     other_median >= times * our_median, f"1 / {other_median / our_median:.2f}")


def add_cover_targets(table, over):
    """Adds the targets of a cover over the window of another program, cold and warm."""
    for mode in ("warm", "cold"):
        ours, bare = over["library", mode], over["bare", mode]
        white_span = ("show_start", "white_start")
        table.add_ratio(f"first call to white, {mode}", spans(ours, *white_span),
                        spans(bare, *white_span), 1.15, "bare XCB")
        for peer in ("sdl2", "qt6", "gtk3", "wx"):
            table.add_lead(f"first call to white, {mode}", spans(ours, *white_span),
                           spans(over[peer, mode], *white_span), 3, NAMES[peer])
    hiding_span = ("hide_start", "white_end")
    table.add_ratio("start of hiding to the host visible", spans(over["library", "warm"], *hiding_span),
                    spans(over["bare", "warm"], *hiding_span), 1.15, "bare XCB")


def add_wayland_targets(table, wayland):
    """Adds the targets of a cover on Wayland. Does nothing if `wayland` is a reason without results."""
    if isinstance(wayland, str):
        return
    white_span = ("show_start", "white_start")
    for mode in ("warm", "cold"):
        table.add_ratio(f"first call to white on Wayland, {mode}", spans(wayland["wayland-library", mode], *white_span),
                        spans(wayland["wayland-bare", mode], *white_span), 1.15, "a bare subsurface")


def add_start_targets(table, start, objects):
    white_span = ("process_start", "white_start")
    table.add_ratio("process start to white", spans(start["library"], *white_span),
                    spans(start["bare"], *white_span), 1.3, "bare XCB")
    for peer in ("sdl2", "qt6", "gtk3"):
        table.add_lead("process start to white", spans(start["library"], *white_span),
                       spans(start[peer], *white_span), 7, NAMES[peer])
    memory = {name: [run["peak_kibibytes"] for run in runs] for name, runs in start.items()}
    table.add_ratio("peak resident memory", memory["library"], memory["bare"], 1.3, "bare XCB", "KiB")
    foreign_objects = [name for name in objects["library"][0]
                       if name not in objects["bare"][0] and not ALLOWED_OBJECTS.match(name)]
    table.add("shared objects other than those of XCB and of the C++ runtime", "none",
              ", ".join(foreign_objects) or "none", not foreign_objects)


def add_countdown_targets(table, start):
    switches = {name: statistics.median([run["voluntary_switches"] / 3 for run in start[name]])
                for name in ("library", "bare")}
    table.add("wake-ups a second while counting (30 ticks, with start and end)",
              "at most 1.3 times bare XCB", f"{switches['library']:.1f}; {switches['bare']:.1f}",
              switches["library"] <= 1.3 * switches["bare"],
              f"{switches['library'] / switches['bare']:.2f}")
    drift = statistics.median(drifts(start["library"]))
    table.add("drift over 30 ticks", "at most 0.5 ms", format_value(drift), drift <= 500_000)
    early_tick_count = count_early_ticks(start["library"])
    table.add("ticks that came early", "none", str(early_tick_count), early_tick_count == 0)


def add_game_targets(table, game):
    """Adds the targets of a game at 240 frames a second."""
    if not all(game.values()):
        return
    ours, bare = pump_times(game["library"]), pump_times(game["bare"])
    for what, statistic, limit, name in (
            ("99.9th percentile of vel_pump", lambda times: percentile(times, 99.9), FRAME / 10,
             "a tenth of a frame"),
            ("longest vel_pump", max, FRAME, "one frame")):
        table.add(f"{what} in a game", f"at most {name}: {format_value(limit)}",
                  f"{format_value(statistic(ours))}; bare XCB {format_value(statistic(bare))}",
                  statistic(ours) <= limit, f"{statistic(ours) / statistic(bare):.2f}")
    for what, key in (("appears", "missed_coming"), ("disappears", "missed_going")):
        missed_frames = {name: statistics.fmean([run[key] for run in runs])
                         for name, runs in game.items()}
        table.add(f"frames that the game misses while the cover {what}",
                  "at most one more than with bare XCB",
                  f"{missed_frames['library']:.1f}; bare XCB {missed_frames['bare']:.1f}; "
                  f"no cover {missed_frames['none']:.1f}",
                  missed_frames["library"] <= missed_frames["bare"] + 1)


def add_loading_targets(table, loading):
    if not loading:
        return
    time = statistics.median([run["load"] for run in loading])
    table.add("loading the library into a running C++ game", f"at most one frame: {format_value(FRAME)}",
              format_value(time), time <= FRAME)
    memory = statistics.median([run["private"][1] - run["private"][0] for run in loading])
    table.add("private memory that loading adds", "at most 1 MiB", format_value(memory, "KiB"),
              memory <= 1024)


def add_size_targets(table, sizes):
    for name, limit in (("x11", 400_000), ("headless", 250_000)):
        if name in sizes:
            table.add(f"stripped shared library, {name}", f"less than {limit // 1000} KB",
                      f"{sizes[name] / 1000:.0f} KB", sizes[name] < limit)


def user_targets(results):
    """Returns the rows of the targets that a user or the author of a host can notice."""
    table = TargetTable()
    add_cover_targets(table, results["over_a_host"])
    add_wayland_targets(table, results["wayland"])
    add_start_targets(table, results["from_start"], results["shared_objects"])
    covered_runs, runs = results["over_a_screen"]["library"]
    table.add("covers a host that fills the screen, middle and corners", "in every run",
              f"{covered_runs} of {runs}", runs > 0 and covered_runs == runs)
    add_game_targets(table, results["game"])
    add_loading_targets(table, results["loading"])
    add_countdown_targets(table, results["from_start"])
    add_size_targets(table, results["sizes"])
    return table.rows


def operation_targets(results):
    """Returns the rows of the targets for operations that are too short for a user to notice."""
    table = TargetTable()
    over, start, inside = (results[key] for key in ("over_a_host", "from_start", "in_process"))
    call_span = ("show_start", "show_end")
    for mode in ("warm", "cold"):
        table.add_ratio(f"the calls that show the cover, {mode}", spans(over["library", mode], *call_span),
                        spans(over["bare", mode], *call_span), 1.25, "bare XCB")
    for percent, limit in ((50, 1.3), (99, 1.5)):
        table.add_ratio(f"error of a tick, percentile {percent}",
                        [percentile(tick_errors(start["library"]), percent)],
                        [percentile(tick_errors(start["bare"]), percent)], limit, "timerfd")

    def compare(what, size, limit, name):
        runs = inside.get((what, size), {})
        table.add_ratio(f"{what}, {size}" if size else what, runs.get("library"), runs.get("plain"),
                        limit, name)

    compare("tick", None, 3, "reading the clock, comparing and calling")
    compare("idle pump", None, 2, "reading the clock")
    compare("idle pump on a display", None, 2, "reading the clock and checking the connection")
    for size, limit in ((1, 2), (10, 2), (1000, 1.5)):
        compare("post", size, limit, "copying the observers under a mutex and calling them")
    for size in (10, 1000):
        runs = inside["post", size]
        table.add_lead(f"post, {size}", runs["library"], runs["Qt"], 1, "a signal of Qt")
    compare("task", None, 2, "a mutex and a vector")
    compare("task from another thread", None, 1.2, "a mutex and an eventfd")
    return table.rows
