#!/usr/bin/env python3
"""Runs clang-tidy on the sources of the library, the program launchscreen and the examples.

usage: tidy.py ROOT BUILD_DIR CLANG_TIDY

BUILD_DIR/compile_commands.json says how each source is compiled. A source that has passed is checked
again only after a change to the source, to one of the project's headers that it includes, to its
compile command, to a .clang-tidy file, or to clang-tidy itself. The state of a source is a digest of
all these inputs. If a source passes, the script creates a stamp: an empty file in BUILD_DIR/tidy that
is named after the state of the source.
"""

import hashlib
import json
import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

# Running the tests, fuzzers and benchmarks shows their faults, so clang-tidy does not check them. The
# folder build contains generated sources.
SKIPPED = ("Tests/", "Fuzz/", "Benchmarks/", "build/")

OPTIONS = ["--quiet", "--extra-arg=-Wno-unknown-warning-option"]

INCLUDE = re.compile(rb'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)


class Sources:
    """Reads each source and header once. Remembers its digest and the headers that it includes."""

    def __init__(self, root):
        self._root = root
        self._files = {}

    def _digest_and_includes(self, name):
        if name not in self._files:
            path = self._root / name
            text = path.read_bytes() if path.is_file() else b""
            included_names = [include.decode() for include in INCLUDE.findall(text)]
            self._files[name] = (hashlib.sha256(text).digest(), included_names)
        return self._files[name]

    def digest_with_headers(self, name):
        """Returns a digest of the file and of all project headers that it includes, directly or
        indirectly."""
        visited_names, pending_names = set(), [name]
        while pending_names:
            included_name = pending_names.pop()
            if included_name not in visited_names:
                visited_names.add(included_name)
                pending_names.extend(self._digest_and_includes(included_name)[1])
        digest = hashlib.sha256()
        for visited_name in sorted(visited_names):
            digest.update(visited_name.encode() + b"\0" + self._digest_and_includes(visited_name)[0])
        return digest.digest()


def clang_tidy_settings_for(root, name):
    """Returns the text of every .clang-tidy file that applies to the source."""
    files = [root / folder / ".clang-tidy" for folder in Path(name).parents]
    return b"\0".join(file.read_bytes() for file in files if file.is_file())


def commands(root, build):
    """Returns pairs: a source's path relative to root, and the command that compiles the source."""
    file = build / "compile_commands.json"  # does not exist if there is nothing to compile
    database = json.loads(file.read_text(encoding="utf-8")) if file.is_file() else []
    sources = {}
    for entry in database:
        path = Path(entry["directory"], entry["file"]).resolve()
        if not path.is_relative_to(root):
            continue
        name = path.relative_to(root).as_posix()
        if name.endswith((".m", ".mm")):
            # Objective-C sources include headers of GNUstep. clang-tidy reports faults in GNUstep's
            # headers as errors.
            continue
        if not name.startswith(SKIPPED) and not path.is_relative_to(build):
            sources[name] = entry.get("command") or " ".join(entry["arguments"])
    return sorted(sources.items())


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    root, build = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
    clang_tidy = sys.argv[3]
    version = subprocess.run(
        [clang_tidy, "--version"], capture_output=True, text=True, check=True
    ).stdout
    version_and_options = version.encode() + repr(OPTIONS).encode()
    sources = Sources(root)

    stamp_folder = build / "tidy"
    stamp_folder.mkdir(exist_ok=True)
    unchecked_sources, current_states = [], set()
    for name, command in commands(root, build):
        state = hashlib.sha256(
            version_and_options
            + clang_tidy_settings_for(root, name)
            + command.encode()
            + sources.digest_with_headers(name)
        ).hexdigest()
        current_states.add(state)
        if not (stamp_folder / state).exists():
            unchecked_sources.append((name, state))
    for stamp in stamp_folder.iterdir():
        if stamp.name not in current_states:
            stamp.unlink()

    def check(name, state):
        result = subprocess.run(
            [clang_tidy, *OPTIONS, "-p", str(build), str(root / name)],
            capture_output=True,
            text=True,
            check=False,
        )
        if result.returncode == 0:
            (stamp_folder / state).touch()
            return None
        # The warnings are in stdout. If clang-tidy could not start, stderr says why.
        return result.stdout or result.stderr

    with ThreadPoolExecutor(os.cpu_count() or 1) as pool:
        complaints = list(filter(None, pool.map(lambda source: check(*source), unchecked_sources)))
    for complaint in complaints:
        print(complaint)
    print(f"{len(unchecked_sources)} sources checked, {len(complaints)} with complaints")
    sys.exit(1 if complaints else 0)


if __name__ == "__main__":
    main()
