#!/usr/bin/env python3
"""Checks that every source follows the include rule. The lists below define the rule: which folders
may include which headers, and which folders may use platform macros in #if. Prints each line that
breaks the rule.

usage: include_rule.py ROOT
"""

import re
import sys
from pathlib import Path

from sources import source_files

# Lists of folders for the table MAY_INCLUDE.
BASE = ["Platform/Foundation"]
WINDOW_SYSTEM = ["Platform/WindowSystem", *BASE]
PLATFORM_API = ["Platform/AppKit", "Platform/Dispatch", *BASE]
LIBRARY = ["LaunchScreen", "HostInterfaces", *PLATFORM_API]
# Without X11 and Wayland, because Backends opens these window systems.
BACKENDS = ["Platform/WindowSystem/Backends", "Platform/WindowSystem/Headless", *WINDOW_SYSTEM]
EVERYTHING = [""]  # the root folder, which contains every folder
# For each folder, the other folders that its files may include from. A folder's row also applies to
# its subfolders that have no row of their own.
MAY_INCLUDE = {
    "Platform/Foundation": [],
    "Platform/WindowSystem": BASE,
    "Platform/WindowSystem/Headless": WINDOW_SYSTEM,
    "Platform/WindowSystem/Wayland": WINDOW_SYSTEM,
    "Platform/WindowSystem/X11": WINDOW_SYSTEM,
    "Platform/WindowSystem/Cocoa": ["Platform/WindowSystem/Backends", *WINDOW_SYSTEM],
    "Platform/WindowSystem/Backends": [
        "Platform/WindowSystem/Headless",
        "Platform/WindowSystem/Wayland",
        "Platform/WindowSystem/X11",
        *WINDOW_SYSTEM,
    ],
    "Platform/Dispatch": BASE,
    "Platform/AppKit": ["Platform/Dispatch", *WINDOW_SYSTEM],
    "HostInterfaces": PLATFORM_API,
    "LaunchScreen": LIBRARY,
    "Bindings/Json": BASE,
    "Bindings/C": [*LIBRARY, *WINDOW_SYSTEM, "Bindings/Json", "Platform/WindowSystem/Backends"],
    "Bindings/ObjectiveC": [
        *LIBRARY,
        *WINDOW_SYSTEM,
        "Platform/WindowSystem/Backends",
        "Platform/WindowSystem/Cocoa",
    ],
    "include": ["Bindings/C", "Bindings/ObjectiveC", *LIBRARY, *BACKENDS],
    "Host": [*LIBRARY, *BACKENDS, "Bindings/Json"],
    "Examples": [],
    "Tests": EVERYTHING,
    "Fuzz": ["Bindings/Json", "Host", "Tests", *LIBRARY],
    "Benchmarks": [*LIBRARY, *BACKENDS],
}

# The folders whose sources may include the system's AppKit and Foundation.
MAY_INCLUDE_SYSTEM_APPKIT = [
    "Bindings/ObjectiveC",
    "Examples/appkit-host",
    "Platform/WindowSystem/Cocoa",
    "Tests/Support/Cocoa",
    "Tests/WindowSystem/Cocoa",
]

# The folders whose sources may include headers of POSIX or of an operating system.
MAY_INCLUDE_SYSTEM_HEADERS = [
    "Platform/Foundation/Linux",
    "Platform/Foundation/MacOS",
    "Platform/Foundation/Posix",
    "Platform/WindowSystem",
    "Host/Posix",
    "Examples",
    "Tests",
    "Benchmarks",
]

# Headers of other projects and of the system. Maps the first characters of a header's name to the
# folders that may include the header. All folders may include a header that is not listed.
EXTERNAL_HEADERS = {
    "xcb/": [
        "Platform/WindowSystem/X11",
        "Tests/WindowSystem/X11",
        "Tests/Support/X11",
        "Tests/Hosts",
        "Benchmarks",
    ],
    "wayland-client.h": [
        "Platform/WindowSystem/Wayland",
        "Tests/WindowSystem/Wayland",
        "Tests/Bindings/Wayland",
        "Tests/Support/Wayland",
        "Benchmarks",
    ],
    "wayland-server": ["Tests/Support/Wayland"],
    "libdecor.h": ["Platform/WindowSystem/Wayland"],
    "X11/": [],
    "AppKit/": MAY_INCLUDE_SYSTEM_APPKIT,
    "Foundation/": MAY_INCLUDE_SYSTEM_APPKIT,
    "GNUstepGUI/": ["Tests/Support/Cocoa"],
    "CLI/": ["Host"],
    "png.h": ["Host", "Tests/Support/X11"],
    "nlohmann/": ["Bindings/Json", "Host", "Tests/Host", "Fuzz"],
    "gtest/": ["Tests"],
    "gmock/": ["Tests"],
    "benchmark/": ["Benchmarks"],
    "fcntl.h": MAY_INCLUDE_SYSTEM_HEADERS,
    "poll.h": MAY_INCLUDE_SYSTEM_HEADERS,
    "pthread.h": MAY_INCLUDE_SYSTEM_HEADERS,
    "sys/": MAY_INCLUDE_SYSTEM_HEADERS,
    "unistd.h": MAY_INCLUDE_SYSTEM_HEADERS,
}

# The folders whose sources may use platform macros in #if.
MAY_USE_PLATFORM_MACROS = ["Platform/WindowSystem/Backends"]

INCLUDE = re.compile(r'^\s*#\s*(?:include|import)\s*(?:"([^"]*)"|<([^>]*)>)')
CONDITION = re.compile(r"^\s*#\s*(?:el)?if(?:n?def)?\b(.*)")
PLATFORM_MACRO = re.compile(
    r"\b(__APPLE__|__MACH__|TARGET_OS_\w+|_?_?WIN(?:32|64)(?:__)?|_MSC_VER|__CYGWIN__|__MINGW\w*"
    r"|(?:__)?(?:gnu_)?linux(?:__)?|(?:__)?unix(?:__)?|__ANDROID__|__\w+BSD__|__EMSCRIPTEN__)\b"
)
# Matches strings too, so that // in a string does not begin a comment.
COMMENT_OR_STRING = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', re.DOTALL)


def is_below(path, folder):
    return folder == "" or path == folder or path.startswith(folder + "/")


def layer_of(path):
    """Returns the innermost folder in MAY_INCLUDE that contains the file, or None."""
    return max((folder for folder in MAY_INCLUDE if is_below(path, folder)), key=len, default=None)


def without_comments(text):
    """Returns the text without its comments. Line numbers stay the same."""

    def replacement(match):
        matched_text = match.group()
        return matched_text if matched_text.startswith('"') else "\n" * matched_text.count("\n")

    return COMMENT_OR_STRING.sub(replacement, text)


def include_fault(path, included_path, is_quoted, root):
    """Returns None if the file `path` may include `included_path`. Otherwise returns a message."""
    layer = layer_of(path)
    if not is_quoted:
        for prefix, folders in EXTERNAL_HEADERS.items():
            if included_path.startswith(prefix) and not any(is_below(path, folder) for folder in folders):
                return f"<{prefix}…> may be included only in {', '.join(folders) or 'no folder'}"
        if layer_of(included_path) is None:
            return None
        return f'include this project\'s header as "{included_path}"'
    target_layer = layer_of(included_path)
    if target_layer is None or not (root / included_path).is_file():
        return f'"{included_path}" does not exist; write includes from the project\'s root'
    allowed_folders = [layer, *MAY_INCLUDE[layer]]
    if "" in allowed_folders or target_layer in allowed_folders:
        return None
    return f"{layer} may not include from {target_layer}"


def faults(root):
    """Yields each fault in the sources of the folder `root`, as `file:line: message`."""
    root = Path(root)
    for file in source_files(root):
        path = file.as_posix()
        if layer_of(path) is None:
            yield f"{path}:1: this folder has no row in the include rule"
            continue
        may_use_platform_macros = any(is_below(path, folder) for folder in MAY_USE_PLATFORM_MACROS)
        text = without_comments((root / file).read_text(encoding="utf-8"))
        for number, line in enumerate(text.split("\n"), start=1):
            if match := INCLUDE.match(line):
                is_quoted = match.group(1) is not None
                fault = include_fault(path, match.group(1) or match.group(2) or "", is_quoted, root)
                if fault:
                    yield f"{path}:{number}: {fault}"
            elif (match := CONDITION.match(line)) and not may_use_platform_macros:
                if macro := PLATFORM_MACRO.search(match.group(1)):
                    yield f"{path}:{number}: {macro.group()} may be tested only in {MAY_USE_PLATFORM_MACROS[0]}"


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    all_faults = list(faults(sys.argv[1]))
    for fault in all_faults:
        print(fault)
    sys.exit(1 if all_faults else 0)


if __name__ == "__main__":
    main()
