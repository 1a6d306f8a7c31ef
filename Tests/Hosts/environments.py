"""Describes and starts the environments in which trial.py runs.

A trial is one run of trial.py: it covers the window of a program with a launch screen.
"""

import os
import shutil
import signal
import subprocess
import tempfile
import time
from pathlib import Path

# The usual time limit for waiting, in seconds. It is long enough for a busy machine.
PATIENCE = 40
SCREEN = (1280, 960)


def wait_until(condition, patience=PATIENCE, pause=0.02):
    """Calls `condition` until it returns a true value. Returns this value, or None after `patience` seconds."""
    deadline = time.monotonic() + patience
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() >= deadline:
            return None
        time.sleep(pause)


class Environment:
    """A window manager and possibly a compositor. The environment "bare" has neither.

    `commands` start the window manager and the compositor. `{home}` in a command stands for the home
    folder of the trial. `files` maps the name of each settings file in the home folder to the content of
    the file. `needs_bus` is true if the window manager or the compositor needs a D-Bus session bus.

    A window manager may draw a frame with buttons around each window. `buttons` maps the name of each
    button to the position of the button's centre. The position is in pixels, relative to the top right
    corner of the window without the frame. `buttons` is empty if the window manager draws no buttons.
    `can_resize` is true if the user can resize a window by the bottom right corner of the frame.

    `publishes_actions_only_when_mapped` is true if the window manager writes _NET_WM_ALLOWED_ACTIONS only
    when it maps a window.
    """

    def __init__(
        self,
        name,
        commands=(),
        files=None,
        buttons=None,
        can_resize=False,
        has_compositor=False,
        needs_bus=False,
        publishes_actions_only_when_mapped=False,
    ):
        self.name = name
        self.commands = commands
        self.files = files or {}
        self.buttons = buttons or {}
        self.can_resize = can_resize
        self.has_compositor = has_compositor
        self.needs_bus = needs_bus
        self.publishes_actions_only_when_mapped = publishes_actions_only_when_mapped
        self.has_manager = bool(commands)


_GSETTINGS = """[org/gnome/metacity]
compositor='none'

[org/gnome/desktop/wm/preferences]
button-layout=':minimize,maximize,close'

[org/mate/marco/general]
button-layout=':minimize,maximize,close'
"""

_I3_CONFIG = """font pango:DejaVu Sans Mono 8
"""

_OPENBOX = Environment(
    "openbox",
    commands=[["openbox"]],
    buttons={"close": (-10, -10), "maximise": (-26, -10), "minimise": (-42, -10)},
    can_resize=True,
)

ENVIRONMENTS = [
    Environment("bare"),
    Environment(
        "metacity",
        commands=[["metacity"]],
        buttons={"close": (-18, -19), "maximise": (-52, -19), "minimise": (-86, -19)},
        can_resize=True,
    ),
    _OPENBOX,
    Environment(
        "xfwm4",
        commands=[["xfwm4", "--compositor=on"]],
        buttons={"close": (-11, -14), "maximise": (-34, -14), "minimise": (-57, -14)},
        can_resize=True,
        has_compositor=True,
        needs_bus=True,
        publishes_actions_only_when_mapped=True,
    ),
    Environment(
        "marco",
        commands=[["marco", "--composite"]],
        buttons={"close": (-11, -12), "maximise": (-30, -12), "minimise": (-49, -12)},
        can_resize=True,
        has_compositor=True,
    ),
    Environment(
        "icewm",
        commands=[["icewm"]],
        files={".icewm/preferences": "ShowTaskBar=0\nShowSplash=0\n"},
        buttons={"close": (-12, -9), "maximise": (-38, -9), "minimise": (-58, -9)},
        can_resize=True,
    ),
    Environment("i3", commands=[["i3", "-c", "{home}/i3.config"]], files={"i3.config": _I3_CONFIG}),
    Environment(
        "picom",
        commands=[["openbox"], ["picom", "--backend", "xrender", "--config", "/dev/null"]],
        buttons=_OPENBOX.buttons,
        can_resize=True,
        has_compositor=True,
    ),
]


class Display:
    """An X server for one environment.

    The constructor starts the X server. `start_manager` starts the environment's programs. `close` ends
    the X server and these programs.
    """

    def __init__(self, environment):
        self.environment = environment
        self.home = Path(tempfile.mkdtemp(prefix="hosts-"))
        self._processes = []
        self._bus = "disabled:"  # an address to which D-Bus clients cannot connect
        self._log = open(self.home / "log", "wb")
        reader, writer = os.pipe()
        self._start(
            ["Xvfb", "-displayfd", str(writer), "-screen", "0", "%dx%dx24" % SCREEN]
            + ["-nolisten", "tcp", "-noreset", "-dpi", "96"],
            pass_fds=[writer],
        )
        os.close(writer)
        with os.fdopen(reader) as display_numbers:
            self.name = ":" + display_numbers.readline().strip()
        if self.name == ":":
            raise RuntimeError("Xvfb does not start")
        os.environ["DISPLAY"] = self.name
        keyfile = self.home / "config/glib-2.0/settings/keyfile"
        keyfile.parent.mkdir(parents=True)
        keyfile.write_text(_GSETTINGS)
        for name, text in environment.files.items():
            file = self.home / name
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text)

    def variables(self):
        """Returns the environment variables for a new program on this display."""
        values = {
            name: value
            for name, value in os.environ.items()
            if name not in ("WAYLAND_DISPLAY", "XAUTHORITY", "SESSION_MANAGER")
        }
        values.update(
            DISPLAY=self.name,
            HOME=str(self.home),
            XDG_CONFIG_HOME=str(self.home / "config"),
            XDG_RUNTIME_DIR=str(self.home),
            GSETTINGS_BACKEND="keyfile",
            NO_AT_BRIDGE="1",
            LIBGL_ALWAYS_SOFTWARE="1",
            DBUS_SESSION_BUS_ADDRESS=self._bus,
        )
        return values

    def _start(self, command, **settings):
        process = subprocess.Popen(
            command, stdin=subprocess.DEVNULL, stdout=self._log, stderr=self._log, **settings
        )
        self._processes.append(process)
        return process

    def start_manager(self):
        """Starts the session bus if the environment needs it, then the window manager and the compositor."""
        if self.environment.needs_bus:
            reader, writer = os.pipe()
            self._start(
                ["dbus-daemon", "--session", "--nofork", "--print-address=%d" % writer],
                env=self.variables(),
                pass_fds=[writer],
            )
            os.close(writer)
            with os.fdopen(reader) as addresses:
                self._bus = addresses.readline().strip()
        for command in self.environment.commands:
            self._start([part.format(home=self.home) for part in command], env=self.variables())

    def log(self):
        """Returns the output of the server and of the environment's programs."""
        return (self.home / "log").read_text(errors="replace")

    def close(self):
        for process in reversed(self._processes):
            end(process)
        self._log.close()
        shutil.rmtree(self.home, ignore_errors=True)


def end(process):
    """Ends a process and waits until it has ended."""
    if process.poll() is None:
        process.send_signal(signal.SIGTERM)
        try:
            process.wait(2)
        except subprocess.TimeoutExpired:
            process.kill()
    process.wait()
