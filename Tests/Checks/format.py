#!/usr/bin/env python3
"""Checks that every source file follows .clang-format. With --fix, formats the files instead.

usage: format.py [--fix] ROOT CLANG_FORMAT
"""

import re
import subprocess
import sys
from pathlib import Path

from sources import source_files


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--fix"]
    if len(arguments) != 2:
        sys.exit(__doc__)
    root, clang_format = Path(arguments[0]), arguments[1]
    mode = ["-i"] if "--fix" in sys.argv else ["--dry-run", "-Werror"]
    files = [file.as_posix() for file in source_files(root)]
    if not files:
        return
    result = subprocess.run(
        [clang_format, "--style=file", *mode, *files],
        cwd=root,
        stderr=subprocess.PIPE,
        text=True,
        check=False,
    )
    if result.returncode:
        locations = re.findall(r"^(\S+:\d+):\d+: error", result.stderr, re.MULTILINE)
        print("\n".join(dict.fromkeys(locations)) or result.stderr)
        print("These lines do not follow .clang-format. To format them:")
        print("cmake --build --preset debug --target format")
    sys.exit(result.returncode)


if __name__ == "__main__":
    main()
