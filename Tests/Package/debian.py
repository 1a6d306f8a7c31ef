"""The Debian packages that have been made; shared by the tests of them."""

from package import WORK, run, try_run

RUNTIME = "libvellaunchscreen1"
DEVELOPMENT = "libvellaunchscreen-dev"
PROGRAM = "launchscreen"
PACKAGES = [RUNTIME, DEVELOPMENT, PROGRAM]


def field(file, name):
    """A field of a package's description."""
    return run("dpkg-deb", "--field", file, name).strip()


def made_packages():
    """The file of each package, by the package's name."""
    return {field(file, "Package"): file for file in (WORK / "debian").glob("*.deb")}


def contents(file):
    """What a package has the system have: its folders, which end in a slash, and its files."""
    lines = run("dpkg-deb", "--contents", file).splitlines()
    return {line.split(maxsplit=5)[5].split(" -> ")[0].removeprefix(".") for line in lines}


def is_installed(package):
    """Whether the system has the package, or anything left of it."""
    status = try_run("dpkg-query", "--show", "--showformat=${db:Status-Status}", package).stdout
    return status not in ("", "not-installed")
