"""Helpers for the tests of the Debian packages."""

from package import WORK, run, try_run

RUNTIME = "libvellaunchscreen1"
DEVELOPMENT = "libvellaunchscreen-dev"
PROGRAM = "launchscreen"
PACKAGES = [RUNTIME, DEVELOPMENT, PROGRAM]


def field(file, name):
    """Returns the value of a field in the control file of a package."""
    return run("dpkg-deb", "--field", file, name).strip()


def package_files():
    """Maps the name of each built package to its .deb file."""
    return {field(file, "Package"): file for file in (WORK / "debian").glob("*.deb")}


def contents(file):
    """Returns the paths that a package installs. Paths of folders end in a slash."""
    lines = run("dpkg-deb", "--contents", file).splitlines()
    return {line.split(maxsplit=5)[5].split(" -> ")[0].removeprefix(".") for line in lines}


def is_installed(package):
    """True if the package is installed.

    A removed package counts as installed while its configuration files remain.
    """
    status = try_run("dpkg-query", "--show", "--showformat=${db:Status-Status}", package).stdout
    return status not in ("", "not-installed")
