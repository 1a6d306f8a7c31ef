#!/usr/bin/env python3
"""Runs clang-tidy over the sources of the library and the program.

usage: tidy.py ROOT BUILD_DIR CLANG_TIDY

How each source is compiled is read from BUILD_DIR/compile_commands.json. A source that passed is
not looked at again before it, a header of ours that it includes, its command, a .clang-tidy or
clang-tidy itself changes: BUILD_DIR/tidy holds an empty file for each state that passed.
"""

import hashlib
import json
import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

# Tests are held to less, and what they get wrong shows when they run.
SKIPPED = ("Tests/", "Fuzz/", "Benchmarks/", "build/")

OPTIONS = ["--quiet", "--extra-arg=-Wno-unknown-warning-option"]

INCLUDE = re.compile(rb'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)


class Sources:
    """The text of our files and what they include, each read once."""

    def __init__(self, root):
        self._root = root
        self._read = {}

    def _file(self, name):
        if name not in self._read:
            path = self._root / name
            text = path.read_bytes() if path.is_file() else b""
            included = [i.decode() for i in INCLUDE.findall(text)]
            self._read[name] = (hashlib.sha256(text).digest(), included)
        return self._read[name]

    def digest(self, name):
        """A digest of the file and of everything of ours that it includes, however far away."""
        seen, waiting = set(), [name]
        while waiting:
            current = waiting.pop()
            if current not in seen:
                seen.add(current)
                waiting.extend(self._file(current)[1])
        digest = hashlib.sha256()
        for each in sorted(seen):
            digest.update(each.encode() + b"\0" + self._file(each)[0])
        return digest.digest()


def checks_for(root, name):
    """The text of every .clang-tidy that holds for the source."""
    files = [root / folder / ".clang-tidy" for folder in Path(name).parents]
    return b"\0".join(file.read_bytes() for file in files if file.is_file())


def commands(root, build):
    """Pairs of a source's path, relative to root, and the command that compiles it."""
    file = build / "compile_commands.json"  # not there while there is nothing to compile
    database = json.loads(file.read_text(encoding="utf-8")) if file.is_file() else []
    found = {}
    for entry in database:
        path = Path(entry["directory"], entry["file"]).resolve()
        if not path.is_relative_to(root):
            continue
        name = path.relative_to(root).as_posix()
        if not name.startswith(SKIPPED) and not path.is_relative_to(build):
            found[name] = entry.get("command") or " ".join(entry["arguments"])
    return sorted(found.items())


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    root, build = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
    clang_tidy = sys.argv[3]
    version = subprocess.run(
        [clang_tidy, "--version"], capture_output=True, text=True, check=True
    ).stdout
    settings = version.encode() + repr(OPTIONS).encode()
    sources = Sources(root)

    stamps = build / "tidy"
    stamps.mkdir(exist_ok=True)
    waiting, current = [], set()
    for name, command in commands(root, build):
        state = hashlib.sha256(
            settings + checks_for(root, name) + command.encode() + sources.digest(name)
        ).hexdigest()
        current.add(state)
        if not (stamps / state).exists():
            waiting.append((name, state))
    for stamp in stamps.iterdir():
        if stamp.name not in current:
            stamp.unlink()

    def look_at(name, state):
        result = subprocess.run(
            [clang_tidy, *OPTIONS, "-p", str(build), str(root / name)],
            capture_output=True,
            text=True,
            check=False,
        )
        if result.returncode == 0:
            (stamps / state).touch()
            return None
        # What it has to say stands in stdout; stderr counts what it kept to itself, and says why
        # it could not start.
        return result.stdout or result.stderr

    with ThreadPoolExecutor(os.cpu_count() or 1) as pool:
        complaints = [c for c in pool.map(lambda w: look_at(*w), waiting) if c]
    for complaint in complaints:
        print(complaint)
    print(f"{len(waiting)} sources looked at, {len(complaints)} with complaints")
    sys.exit(1 if complaints else 0)


if __name__ == "__main__":
    main()
