"""The display that the programs are measured on, and the programs that run on it."""

import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
BIN = ROOT / "build" / "benchmarks" / "bin"
SCREEN = "1280x960x24"
# The position and the size of the measured windows.
WINDOW = ("320", "240", "640", "480")
MIDDLE = "640,480"
TIMESTAMPS = ("show_start", "show_end", "hide_start", "peak_kibibytes")


def print_status(text):
    print(f"bench: {text}", file=sys.stderr, flush=True)


class Server:
    """An X server. If `manager` is the command of a window manager, also runs this window manager.

    Both programs end when the `with` block of this object ends.
    """

    def __init__(self, manager=None):
        read_end, write_end = os.pipe()
        self.processes = [subprocess.Popen(
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", SCREEN, "-nolisten", "tcp",
             "-noreset"],
            pass_fds=[write_end], stderr=subprocess.DEVNULL)]
        os.close(write_end)
        with os.fdopen(read_end) as numbers:
            display = numbers.readline().strip()
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
            self._wait_for_manager()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.terminate()
            process.wait()
        self.home.cleanup()

    def _wait_for_manager(self):
        for _ in range(200):
            property_line = subprocess.run(
                ["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], env=self.environment,
                capture_output=True, text=True, check=False).stdout
            if "window id" in property_line:
                return
            time.sleep(0.05)
        sys.exit("bench: the window manager does not start")

    def run(self, program, *arguments):
        """Runs a program that prints one JSON object. Returns the object, or None if it failed."""
        process = subprocess.run([BIN / f"bench-{program}", *map(str, arguments)], env=self.environment,
                                 capture_output=True, text=True, timeout=120, check=False)
        if process.returncode != 0:
            print_status(f"{program}: status {process.returncode}: {process.stderr.strip()}")
            return None
        return json.loads(process.stdout)

    def watch(self, program, mode, ticks, window=0, points=MIDDLE):
        """Runs a program that shows a white window. bench-watch starts it and watches the points of the screen.

        `window` is the window to cover; 0 means a new window. Returns what the watcher printed, or
        None if the program failed.
        """
        observation = self.run("watch", points, "--", BIN / f"bench-screen-{program}", mode, ticks, *WINDOW,
                        window)
        if observation is None:
            return None
        if observation["status"] != 0 or "show_start" not in observation:
            print_status(f"{program}: status {observation['status']}")
            return None
        for name in TIMESTAMPS:
            observation[name] = observation[name][0]
        return observation


class Host:
    """A program that does not use the library, with one window on a server."""

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
