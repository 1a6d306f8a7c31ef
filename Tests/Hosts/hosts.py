"""The hosts. A host is a program with a window. trial.py covers this window with a launch screen.

One run of trial.py is called a trial.
"""

import os
import shlex
import shutil
import subprocess
from pathlib import Path

HERE = Path(__file__).resolve().parent
SOURCES = HERE / "programs"


class Host:
    """A program with a window.

    `command` starts the program. It can contain two placeholders. `{bin}` is the folder of the built
    programs. `{home}` is the home folder of the trial.

    `window` is a part of the window's class or title.

    `needs` contains the names of other programs that must be installed.

    `build_commands` build the program. They can contain the placeholders `{bin}` and `{sources}`.
    `{sources}` is the folder of the source files.

    `variables` contains environment variables for the program.

    `changes_window` is true if the program changes its window on SIGUSR1. Unless `recreates_window` or
    `maps_again` is true, the next SIGUSR1 undoes the change.

    `recreates_window` is true if the program destroys its window on SIGUSR1 and opens another window.

    `maps_again` is true if the program unmaps its window on SIGUSR1 and maps it again.

    `changes_before_cover` is true if the window changes before the trial covers it. If it is false, the
    window changes while it is covered.

    `draws_on_keys` is true if the program draws only on input. For such a program, the trial presses
    Page Down and Page Up while the window is covered.

    `prepare` is None, or a function that returns more environment variables. Its parameter is the folder
    of the built programs. Trials of hosts with `prepare` run one at a time.

    `buttons` is None if the program draws no window buttons itself. Otherwise it maps the name of each
    button to the position of the button's centre. The position is relative to the
    top right corner of the window without its shadow.
    """

    def __init__(self, name, description, command, window, needs=(), build_commands=(), variables=None):
        self.name = name
        self.description = description
        self.command = command
        self.window = window
        self.needs = needs
        self.build_commands = build_commands
        self.variables = variables or {}
        self.changes_window = False
        self.changes_before_cover = False
        self.recreates_window = False
        self.maps_again = False
        self.draws_on_keys = False
        self.buttons = None
        self.prepare = None

    def with_settings(self, **settings):
        for name, value in settings.items():
            setattr(self, name, value)
        return self

    def reason_not_to_run(self, programs_folder):
        """Returns the reason why the host cannot run, or None."""
        for need in self.needs:
            if shutil.which(need) is None:
                return "%s is not installed" % need
        program = self.command[0].format(bin=programs_folder, home="")
        if shutil.which(program) is None:
            return "%s does not exist" % program
        return None


def _bad_host(habit, description, name=None):
    """Returns a host that runs hosts-badhost with `habit`. badhost.cpp describes the habits."""
    # The name "argb" has no prefix "bad-", because a translucent window is no fault.
    name = name or (habit if habit == "argb" else "bad-" + habit)
    return Host(name, description, ["{bin}/hosts-badhost", habit], "BadHost")


def _compile_command(name, package, source, compiler):
    """Returns the command that builds a program with the flags that pkg-config prints for `package`."""
    return "%s -O1 -o {bin}/hosts-%s {sources}/%s $(pkg-config --cflags --libs %s)" % (
        compiler,
        name,
        source,
        package,
    )


def _sdl2_host(name, description, *arguments):
    """Returns an SDL 2 game. `arguments` can name a change that the game makes to its window (sdl2.c)."""
    return Host(
        name,
        description,
        ["{bin}/hosts-sdl2", *arguments],
        "hosts-sdl2",
        build_commands=[_compile_command("sdl2", "sdl2", "sdl2.c", "cc")],
    ).with_settings(changes_window=bool(arguments))


def _prepare_wine(programs_folder):
    """Returns the environment variable that selects the Wine prefix.

    All trials share one prefix, because Wine takes long to create a prefix.
    """
    return {"WINEPREFIX": str(Path(programs_folder) / "wine")}


_CLIENT_SIDE_BUTTONS = {"close": (-24, 23)}

HOSTS = [
    Host(
        "xterm",
        "xterm, which has no Motif hints",
        ["xterm", "-bg", "#204060", "-fg", "#80c0ff", "-geometry", "80x24+100+80"]
        + ["-e", "sh", "-c", "while :; do date; sleep 0.1; done"],
        "XTerm",
    ),
    Host(
        "gtk3",
        "GTK 3 with client-side decorations",
        ["{bin}/hosts-gtk3"],
        "hosts-gtk3",
        build_commands=[_compile_command("gtk3", "gtk+-3.0", "gtk3.c", "cc")],
    ).with_settings(buttons=_CLIENT_SIDE_BUTTONS),
    Host(
        "gtk4",
        "GTK 4",
        ["{bin}/hosts-gtk4"],
        "hosts-gtk4",
        build_commands=[_compile_command("gtk4", "gtk4", "gtk4.c", "cc")],
        variables={"GSK_RENDERER": "cairo"},
    ).with_settings(buttons=_CLIENT_SIDE_BUTTONS),
    Host(
        "qt5",
        "Qt 5",
        ["{bin}/hosts-qt5"],
        "hosts-qt",
        build_commands=[_compile_command("qt5", "Qt5Widgets", "qt.cpp", "c++ -std=c++17 -fPIC")],
    ),
    Host(
        "qt6",
        "Qt 6",
        ["{bin}/hosts-qt6"],
        "hosts-qt",
        build_commands=[_compile_command("qt6", "Qt6Widgets", "qt.cpp", "c++ -std=c++17 -fPIC")],
    ),
    _bad_host("argb", "a translucent ARGB window"),
    Host(
        "swing",
        "Java Swing",
        ["java", "-cp", "{bin}", "HostsSwing"],
        "hosts-swing",
        needs=["java"],
        build_commands=["javac -d {bin} {sources}/HostsSwing.java"],
    ),
    _sdl2_host("sdl2", "an SDL 2 game"),
    Host("glxgears", "an OpenGL program", ["glxgears", "-geometry", "500x400+100+80"], "glxgears"),
    Host(
        "godot",
        "a game of Godot 3 with GLES2",
        ["godot3-runner", "--video-driver", "GLES2", "--audio-driver", "Dummy"]
        + ["--path", str(SOURCES / "godot")],
        "hosts-godot",
    ),
    Host(
        "wine",
        "notepad under Wine",
        # The file has several pages, so Page Down and Page Up scroll the text.
        ["wine", "notepad", "Z:" + str(HERE / "trial.py").replace("/", "\\")],
        "notepad",
        build_commands=[
            "test -e {bin}/wine/system.reg ||"
            " WINEPREFIX={bin}/wine WINEDEBUG=-all WINEDLLOVERRIDES='mscoree=;mshtml='"
            " xvfb-run --auto-servernum wine wineboot --init"
        ],
        variables={"WINEDEBUG": "-all", "WINEDLLOVERRIDES": "mscoree=;mshtml="},
    ).with_settings(prepare=_prepare_wine, draws_on_keys=True),
    Host(
        "mpv",
        "mpv",
        ["mpv", "--no-config", "--vo=x11", "--no-audio", "--no-osc", "--loop=inf"]
        + ["--geometry=640x480+100+80", "av://lavfi:testsrc2=size=640x480:rate=25"],
        "mpv",
    ),
    _bad_host("redirect", "selects SubstructureRedirect on its own window"),
    _bad_host("inferiors", "draws with IncludeInferiors at each frame"),
    _bad_host("raise", "raises its child windows every millisecond"),
    _bad_host("recreate", "destroys its window while covered and opens another").with_settings(
        changes_window=True, recreates_window=True
    ),
    _bad_host("resize", "changes its size while covered").with_settings(changes_window=True),
    _bad_host("maximise", "maximises its window while covered").with_settings(changes_window=True),
    _bad_host("toggle", "maximises its window while covered, with a request to toggle").with_settings(
        changes_window=True
    ),
    _bad_host("maximise", "a window that is maximised before it is covered", "bad-maximised").with_settings(
        changes_window=True, changes_before_cover=True
    ),
    _bad_host("fullscreen", "goes fullscreen while covered").with_settings(changes_window=True),
    _bad_host("remap", "unmaps its window and maps it again while covered").with_settings(
        changes_window=True, maps_again=True
    ),
    Host(
        "bad-tiny",
        "a window of 24 by 18 pixels",
        ["{bin}/hosts-badhost", "none", "24", "18"],
        "BadHost",
    ),
    Host(
        "bad-large",
        "a window larger than the screen",
        ["{bin}/hosts-badhost", "none", "2000", "1500"],
        "BadHost",
    ),
    _sdl2_host("sdl2-resize", "an SDL 2 game that changes its size while covered", "resize"),
    _sdl2_host("sdl2-fullscreen", "an SDL 2 game that goes fullscreen while covered", "fullscreen"),
    _sdl2_host("sdl2-desktop", "an SDL 2 game that fills the desktop while covered", "desktop"),
]


def build(host, programs_folder):
    """Builds the host's program in `programs_folder`. Returns the reason for a failure, or None."""
    for command in host.build_commands:
        command = command.format(
            bin=shlex.quote(str(programs_folder)), sources=shlex.quote(str(SOURCES))
        )
        process = subprocess.run(
            ["bash", "-c", "set -o pipefail; " + command],
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            timeout=300,
            check=False,
            env={name: value for name, value in os.environ.items() if name != "DISPLAY"},
        )
        if process.returncode != 0:
            lines = (process.stderr or process.stdout).strip().splitlines() or ["no output"]
            return "%s failed: %s" % (command.split()[0], lines[-1])
    return None
