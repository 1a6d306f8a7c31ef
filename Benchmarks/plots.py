"""Draws the plots of the results."""

import math
import statistics

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt  # noqa: E402

from figures import NAMES, growth_exponent, spans  # noqa: E402

COLORS = {"library": "#1f6feb", "plain": "#8b949e", "plain, observers kept alive": "#8250df",
          "GLib": "#d29922", "Qt": "#3fb950"}
LIBRARY_COLOR = COLORS["library"]
OTHER_COLOR = "#8b949e"


def plot_growth(curves, path):
    """Draws one plot for each benchmark with several sizes: the cost against the size."""
    columns = 3
    rows = math.ceil(len(curves) / columns)
    figure, axes = plt.subplots(rows, columns, figsize=(11, 3.2 * rows), squeeze=False)
    for axis in axes.flat[len(curves):]:
        axis.axis("off")
    for axis, (operation, by_implementation) in zip(axes.flat, curves):
        for implementation, points in by_implementation.items():
            axis.loglog(*zip(*points), marker="o", color=COLORS.get(implementation),
                        label=f"{implementation}: {growth_exponent(points):.2f}")
        axis.set_title(operation, fontsize=10)
        axis.set_xlabel("size")
        axis.set_ylabel("ns")
        axis.grid(True, alpha=0.3)
        axis.legend(fontsize=8, title="exponent", title_fontsize=8)
    figure.tight_layout()
    figure.savefig(path)
    plt.close(figure)


def draw_bars(axis, title, values):
    """Draws one bar for each program, with its median in milliseconds and a mark for each run."""
    values = {name: times for name, times in values.items() if times}
    order = sorted(values, key=lambda name: -statistics.median(values[name]))
    for row, name in enumerate(order):
        median = statistics.median(values[name])
        axis.barh(row, median, color=LIBRARY_COLOR if "library" in name else OTHER_COLOR)
        axis.plot(values[name], [row] * len(values[name]), "|", color="#24292f", alpha=0.5)
        axis.annotate(f"{median:.3g}", (max(values[name]), row), xytext=(4, 0),
                      textcoords="offset points", va="center", fontsize=8)
    axis.set_yticks(range(len(order)), [NAMES[name] for name in order], fontsize=8)
    axis.set_xscale("log")
    axis.margins(x=0.15)
    axis.set_xlabel("ms (log)")
    axis.set_title(title, fontsize=10)


def plot_screen(results, path):
    """Plots the time until the screen is white: warm, cold, and from process start."""
    def milliseconds(runs, begin):
        return [time / 1e6 for time in spans(runs, begin, "white_start")]

    over_host = results["over_a_host"]
    figure, axes = plt.subplots(1, 3, figsize=(14, 3.4))
    for axis, mode in zip(axes, ("warm", "cold")):
        draw_bars(axis, f"First call to white, {mode}",
                  {name: milliseconds(runs, "show_start")
                   for (name, run_mode), runs in over_host.items() if run_mode == mode})
    draw_bars(axes[2], "Process start to white",
              {name: milliseconds(runs, "process_start")
               for name, runs in results["from_start"].items()})
    figure.tight_layout()
    figure.savefig(path)
    plt.close(figure)
