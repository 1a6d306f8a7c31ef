"""Builds and runs hosts of the library outside its tree; shared by the tests of the package."""

import os
import shlex
import shutil
import subprocess
from pathlib import Path

SOURCE = Path(os.environ["VEL_SOURCE"])
WORK = Path(os.environ["VEL_WORK"])
PREFIX = WORK / "prefix"
# Where libraries lie under a prefix.
LIB = os.environ["VEL_LIB"]
CONSUMERS = Path(__file__).resolve().parent / "consumers"
CC = os.environ["CC"]
CXX = os.environ["CXX"]
STRICT = ["-Wall", "-Wextra", "-Wpedantic", "-Werror"]
# Far beyond what a build takes, also on a busy machine.
PATIENCE = 240
# What every host prints.
RUN = "will appear\ndid disappear\nevent launch_end\n"


def run(*command, **environment):
    """Runs a command to its end; answers what it wrote, and fails with that if the command does."""
    done = try_run(*command, **environment)
    if done.returncode != 0:
        raise AssertionError(f"{shlex.join(map(str, command))}\n{done.stdout}{done.stderr}")
    return done.stdout


def try_run(*command, **environment):
    """The same, whatever comes of it; answers the process."""
    return subprocess.run(
        command,
        stdin=subprocess.DEVNULL,
        capture_output=True,
        text=True,
        timeout=PATIENCE,
        env={**os.environ, **environment},
        check=False,
    )


def fresh_folder(name):
    """An empty folder of that name to work in."""
    folder = WORK / name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    return folder


def cmake_build(project, folder, *settings):
    """Configures and builds one of the projects in consumers/."""
    run("cmake", "-S", CONSUMERS / project, "-B", folder, *settings)
    run("cmake", "--build", folder)


def pkg_config(*arguments, prefix=None):
    """What pkg-config answers about the library under a prefix, or else where the system has it."""
    search = {} if prefix is None else {"PKG_CONFIG_PATH": str(prefix / LIB / "pkgconfig")}
    return shlex.split(run("pkg-config", *arguments, "vellaunchscreen", **search))


def library_path(prefix):
    """The setting by which the loader finds the shared library under a prefix."""
    return {"LD_LIBRARY_PATH": str(prefix / LIB)}
