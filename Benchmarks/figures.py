"""Computes and formats the figures of the results."""

import math
import statistics

NAMES = {"bare": "bare XCB", "bare-runtime": "bare XCB, C++ runtime loaded",
         "library": "VelLaunchScreen", "library-linked": "VelLaunchScreen, C++ runtime linked in",
         "sdl2": "SDL2", "qt6": "Qt 6", "gtk3": "GTK 3", "wx": "wxWidgets", "none": "no cover",
         "wayland-bare": "bare subsurface", "wayland-library": "VelLaunchScreen", "wayland-sdl2": "SDL2"}
TICK_INTERVAL = 100_000_000  # nanoseconds


def interquartile_range(values):
    if len(values) < 2:
        return 0.0
    low, _, high = statistics.quantiles(values, n=4, method="inclusive")
    return high - low


def format_value(value, unit="ns"):
    for factor, name in ((1e9, "s"), (1e6, "ms"), (1e3, "µs")):
        if unit == "ns" and abs(value) >= factor:
            return f"{value / factor:.3g} {name}"
    if unit == "KiB":
        return f"{value / 1024:.2f} MiB"
    return f"{value:.3g} {unit}"


def format_median(values):
    """Formats the median, the minimum and the interquartile range."""
    return (f"{format_value(statistics.median(values))} "
            f"({format_value(min(values))}; {format_value(interquartile_range(values))})")


def growth_exponent(points):
    """Returns the slope of the regression line of log(cost) over log(size)."""
    log_sizes = [math.log(size) for size, _ in points]
    log_costs = [math.log(cost) for _, cost in points]
    mean_size, mean_cost = statistics.fmean(log_sizes), statistics.fmean(log_costs)
    products = [(size - mean_size) * (cost - mean_cost) for size, cost in zip(log_sizes, log_costs)]
    return sum(products) / sum((size - mean_size) ** 2 for size in log_sizes)


def growth_curves(in_process):
    """Returns [(operation, {implementation: [(size, median)]})] for the benchmarks with several sizes."""
    curves = {}
    for (operation, size), runs in in_process.items():
        if size is not None:
            for implementation, values in runs.items():
                curves.setdefault(operation, {}).setdefault(implementation, []).append(
                    (size, statistics.median(values)))
    return [(operation, {implementation: sorted(points)
                         for implementation, points in by_implementation.items()})
            for operation, by_implementation in curves.items()
            if all(len(points) > 1 for points in by_implementation.values())]


def spans(runs, begin, end):
    """Returns the time between two timestamps for each run that has both timestamps."""
    return [run[end] - run[begin] for run in runs if run[end] != 0 and run[begin] != 0]


def tick_errors(runs):
    """Returns the delay of each tick minus the minimum delay in its run."""
    errors = []
    for run in runs:
        delays = [tick - number * TICK_INTERVAL for number, tick in enumerate(run["tick_times"])]
        errors += [value - min(delays) for value in delays]
    return errors


def drifts(runs):
    """Returns for each run the error of the time from the first to the last tick."""
    return [abs(run["tick_times"][-1] - run["tick_times"][0] - (len(run["tick_times"]) - 1) * TICK_INTERVAL)
            for run in runs if len(run["tick_times"]) > 1]


def count_early_ticks(runs):
    return sum(tick < run["show_start"] + (number + 1) * TICK_INTERVAL
               for run in runs for number, tick in enumerate(run["tick_times"]))


def percentile(values, percent):
    sorted_values = sorted(values)
    return sorted_values[min(len(sorted_values) - 1, int(len(sorted_values) * percent / 100))]


def pump_times(runs):
    return [time for run in runs for time in run["pumps"]]
