"""Lists the project's C++, C, Objective-C and Objective-C++ files."""

import os
import subprocess
from pathlib import Path

SUFFIXES = {".h", ".hpp", ".c", ".cpp", ".m", ".mm"}


def source_files(root):
    """Returns the sorted paths of the sources below root, relative to root. If root is a git
    repository, skips the files that git ignores. Otherwise skips build folders and hidden folders."""
    root = Path(root)
    git_process = subprocess.run(
        ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
        cwd=root,
        capture_output=True,
        text=True,
        check=False,
    )
    if git_process.returncode == 0 and (root / ".git").exists():
        paths = {Path(name) for name in git_process.stdout.split("\0") if name}
    else:
        paths = set()
        for folder, subfolders, names in os.walk(root):
            subfolders[:] = [
                name for name in subfolders if name != "build" and not name.startswith(".")
            ]
            paths |= {(Path(folder) / name).relative_to(root) for name in names}
    return sorted(path for path in paths if path.suffix in SUFFIXES and (root / path).is_file())
