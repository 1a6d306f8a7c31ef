"""Lists the project's C++, C, Objective-C and Objective-C++ files, for the checks."""

import os
import subprocess
from pathlib import Path

SUFFIXES = {".h", ".hpp", ".c", ".cpp", ".m", ".mm"}


def source_files(root):
    """Returns all sources below root, as sorted paths relative to root. If root is a git repository,
    returns only files that git tracks or would add. Otherwise skips build folders and hidden
    folders."""
    root = Path(root)
    git_process = subprocess.run(
        ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
        cwd=root,
        capture_output=True,
        text=True,
        check=False,
    )
    if git_process.returncode == 0 and (root / ".git").exists():
        sources = {Path(name) for name in git_process.stdout.split("\0") if name}
    else:
        sources = set()
        for folder, folders, names in os.walk(root):
            folders[:] = [name for name in folders if name != "build" and not name.startswith(".")]
            sources |= {(Path(folder) / name).relative_to(root) for name in names}
    return sorted(path for path in sources if path.suffix in SUFFIXES and (root / path).is_file())
