"""The project's own C++ and C files; shared by the checks."""

import os
import subprocess
from pathlib import Path

SUFFIXES = {".h", ".hpp", ".c", ".cpp"}


def source_files(root):
    """All sources below root, as sorted paths relative to it: those that git knows or would add, or,
    where there is no repository, all outside build folders and hidden ones."""
    root = Path(root)
    listed = subprocess.run(
        ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
        cwd=root,
        capture_output=True,
        text=True,
        check=False,
    )
    if listed.returncode == 0 and (root / ".git").exists():
        found = {Path(name) for name in listed.stdout.split("\0") if name}
    else:
        found = set()
        for folder, folders, names in os.walk(root):
            folders[:] = [f for f in folders if f != "build" and not f.startswith(".")]
            found |= {(Path(folder) / name).relative_to(root) for name in names}
    return sorted(f for f in found if f.suffix in SUFFIXES and (root / f).is_file())
