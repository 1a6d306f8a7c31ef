"""Helpers for the tests in this folder. The tests build and run hosts: programs that use the library."""

import os
import shlex
import shutil
import subprocess
from pathlib import Path

SOURCE = Path(os.environ["VEL_SOURCE"])
BUILD = Path(os.environ["VEL_BUILD"])
WORK = Path(os.environ["VEL_WORK"])
# The folder in which the library is installed (the installation prefix).
PREFIX = WORK / "prefix"
# The subfolder of an installation prefix that contains the libraries.
LIB = os.environ["VEL_LIB"]
# The folder with the sources of the hosts.
CONSUMERS = Path(__file__).resolve().parent / "consumers"
CC = os.environ["CC"]
CXX = os.environ["CXX"]
WARNING_FLAGS = ["-Wall", "-Wextra", "-Wpedantic", "-Werror"]
# The time limit for a command, in seconds. It is much longer than any build.
TIMEOUT = 240
# The output of consumers/host.c and of consumers/host.cpp.
EXPECTED_OUTPUT = "will appear\ndid disappear\nevent launch_end\n"


def run(*command, **environment):
    """Runs a command and returns its stdout. Raises AssertionError if the command fails."""
    result = try_run(*command, **environment)
    if result.returncode != 0:
        raise AssertionError(f"{shlex.join(map(str, command))}\n{result.stdout}{result.stderr}")
    return result.stdout


def try_run(*command, **environment):
    """Runs a command and returns its exit status, stdout and stderr. A command that fails is not an error."""
    return subprocess.run(
        command,
        stdin=subprocess.DEVNULL,
        capture_output=True,
        text=True,
        timeout=TIMEOUT,
        env={**os.environ, **environment},
        check=False,
    )


def make_folder(name):
    """Creates an empty folder of this name in WORK and returns it. Deletes an existing folder first."""
    folder = WORK / name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    return folder


def cmake_build(project, folder, *settings):
    """Configures and builds one of the projects in consumers/."""
    run("cmake", "-S", CONSUMERS / project, "-B", folder, *settings)
    run("cmake", "--build", folder)


def pkg_config(*arguments, prefix=None):
    """Returns the words that pkg-config prints for the library. Without a prefix, pkg-config finds the
    library that is installed on the system."""
    search_path = {} if prefix is None else {"PKG_CONFIG_PATH": str(prefix / LIB / "pkgconfig")}
    return shlex.split(run("pkg-config", *arguments, "vellaunchscreen", **search_path))


def loader_environment(prefix):
    """Returns the environment variable with which a program finds the shared library in the prefix."""
    return {"LD_LIBRARY_PATH": str(prefix / LIB)}
