"""Starts the Wayland compositor sway in a window of an X server."""

import os
import pathlib
import subprocess
import tempfile
import time

CONFIGURATION = """xwayland disable
default_border none
default_floating_border none
for_window [title=".*"] floating enable
output * bg #203020 solid_color
seat * hide_cursor 0
"""
NOBODY = 65534  # the user and the group
START_TIMEOUT = 30  # seconds


class Sway:
    """Starts sway on the X display `display`. If `display` is empty, starts an Xvfb server for sway.

    The window of sway is 1024 by 768 pixels, at the upper left corner of the X screen. sway centres new
    windows, draws no frames and gives new windows the focus. If the caller runs as root, sway runs as
    the user nobody. `close` ends all processes that this object started.
    """

    def __init__(self, display=""):
        self.processes = []
        self.temporary_directory = tempfile.TemporaryDirectory(prefix="sway-")
        folder = pathlib.Path(self.temporary_directory.name)
        # The value of WAYLAND_DISPLAY for clients.
        self.wayland_display = str(folder / "wayland-1")
        try:
            self._start(display or self._start_xvfb(), folder)
        except BaseException:
            self.close()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        for process in reversed(self.processes):
            process.terminate()
            process.wait()
        self.processes = []
        self.temporary_directory.cleanup()

    def _start_xvfb(self):
        read_end, write_end = os.pipe()
        self.processes.append(subprocess.Popen(
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1280x960x24", "-nolisten", "tcp", "-noreset"],
            pass_fds=[write_end], stderr=subprocess.DEVNULL))
        os.close(write_end)
        with os.fdopen(read_end) as pipe:
            return ":" + pipe.readline().strip()

    def _start(self, display, folder):
        configuration, control_socket = folder / "config", folder / "ipc"
        configuration.write_text(CONFIGURATION, encoding="utf-8")
        command = ["sway", "--config", str(configuration)]
        if os.getuid() == 0:
            os.chown(folder, NOBODY, NOBODY)
            command = ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups", "--pdeathsig", "KILL",
                       *command]
        environment = {**os.environ, "DISPLAY": display, "XDG_RUNTIME_DIR": str(folder), "HOME": str(folder),
                       "SWAYSOCK": str(control_socket), "WLR_BACKENDS": "x11", "WLR_RENDERER": "pixman",
                       "WLR_LIBINPUT_NO_DEVICES": "1", "WLR_X11_OUTPUTS": "1"}
        environment.pop("WAYLAND_DISPLAY", None)
        self.processes.append(subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL,
                                               stderr=subprocess.DEVNULL))
        deadline = time.monotonic() + START_TIMEOUT
        while not (os.path.exists(self.wayland_display) and self._has_screen(control_socket)):
            if time.monotonic() > deadline:
                raise RuntimeError("sway does not start")
            time.sleep(0.05)

    @staticmethod
    def _has_screen(control_socket):
        reply = subprocess.run(["swaymsg", "-s", str(control_socket), "-t", "get_outputs"],
                               capture_output=True, text=True, check=False)
        return '"rect"' in reply.stdout
