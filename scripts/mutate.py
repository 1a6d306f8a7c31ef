#!/usr/bin/env python3
"""Mutation testing of LaunchScreen/: changes one place at a time and reports what no test detects.

    scripts/mutate.py [--every N] [--only TEXT] [--list]

Works in a copy of the tree below build/mutation. A mutation changes an operator, a number or a
Boolean, or removes a call, an assignment or a return. The script compiles each mutation and runs the
tests of LaunchScreen/. The results are `killed` (a test fails, hangs or crashes), `refused` (it does
not compile) and `LIVES`. Exits with 1 if a mutation lives that is not in EQUIVALENT.
"""

import argparse
import pathlib
import re
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
COPY = ROOT / "build" / "mutation" / "tree"
BUILD = ROOT / "build" / "mutation" / "build"
PROGRAM = BUILD / "bin" / "LaunchScreenTests"
SOURCES = sorted(path.relative_to(ROOT) for path in (ROOT / "LaunchScreen").rglob("*.cpp"))

REPLACEMENTS = [
    (r" == ", [" != "]),
    (r" != ", [" == "]),
    (r" >= ", [" > ", " < "]),
    (r" > ", [" >= ", " <= "]),
    (r" < ", [" <= ", " >= "]),
    (r" && ", [" || "]),
    (r" \|\| ", [" && "]),
    (r"\btrue\b", ["false"]),
    (r"\bfalse\b", ["true"]),
    (r"(?<=[(\s&|])!(?=[\w(])", [""]),
    (r" - ", [" + "]),
    (r" \* ", [" / "]),
    (r" & ~", [" & "]),
    (r"(?<![\w.])0\.0(?!\d)", ["1.0"]),
    (r"(?<![\w.\[])(\d+)(?![\w.])", [lambda number: str(int(number) + 1)]),
    (r"\b(\d+\.\d+)\b", [lambda number: str(float(number) + 1)]),
    (r'(?<=")(\w[\w ]+)(?=")', [lambda text: text + "x"]),
]
# Mutations that change no observable behaviour: (source, change) and the reason.
MANAGER = "LaunchScreen/LaunchScreenManager.cpp"
CONTROLLER = "LaunchScreen/View/macOS/LaunchScreenViewControllerMac.cpp"
MANAGER_IS_DESTROYED = "the manager is being destroyed"
REDUNDANT = "the member already has this value"
EQUIVALENT = {
    (MANAGER, "launchScreenExpired_ = true;"): MANAGER_IS_DESTROYED,
    (MANAGER, "without launchScreenExpired_ = false;"): MANAGER_IS_DESTROYED,
    (MANAGER, "without launchScreenExpirationTimer_ = nullptr;"): MANAGER_IS_DESTROYED,
    (MANAGER, "if (launchScreenExpirationTimeLeft() >= 0 && !appIsUnfocused()) {"):
        "without time left, the countdown does not start",
    (MANAGER, "without LaunchScreenConfiguration::setDefaultConfiguration(configuration);"):
        "this object is the default configuration",
    (MANAGER, "without return true; after if (holdsChildOfClass(frontWindow, className)) {"):
        "a key or main window is on the screen, so the search of all windows finds it too",
    (CONTROLLER, "without controller->setPresentationMode(LaunchScreenPresentationEmbedded);"):
        REDUNDANT,
    (CONTROLLER, "without controller->setAppWindow(nullptr);"): REDUNDANT,
    (CONTROLLER, "without controller->setAppWindowStyleMask(kNoSavedStyle);"): REDUNDANT,
}
SKIPPED = re.compile(r"^\s*(//|#|using |namespace |static constexpr auto kMethod)")


def statements(lines):
    """Yields (index of the first line, index of the last line) of each statement that can be removed."""
    first_index = None
    for index, line in enumerate(lines):
        if first_index is None:
            if re.match(r"^  \s*[\w(]", line) and not re.match(
                r"^\s*(if|for|while|switch|case|default|else|struct|class|using|const|static|auto)\b",
                line,
            ):
                first_index = index
            else:
                continue
        text = "\n".join(lines[first_index : index + 1])
        if line.rstrip().endswith("{"):
            first_index = None
        elif re.search(r";\s*(//.*)?$", line) and text.count("(") == text.count(")"):
            if text.count("{") == text.count("}"):
                yield first_index, index
            first_index = None


def mutations(source):
    """Yields (line number, description, complete new text) for each mutation of a source."""
    lines = (ROOT / source).read_text().split("\n")
    for index, line in enumerate(lines):
        if SKIPPED.match(line) or "template" in line:
            continue
        code = line.split("//")[0]
        for pattern, replacements in REPLACEMENTS:
            for match in re.finditer(pattern, code):
                for replacement in replacements:
                    new_text = replacement if isinstance(replacement, str) else replacement(match[0])
                    changed_line = line[: match.start()] + new_text + line[match.end() :]
                    yield index + 1, changed_line.strip(), "\n".join(
                        lines[:index] + [changed_line] + lines[index + 1 :])
    for first_index, last_index in statements(lines):
        description = "without " + " ".join(line.strip() for line in lines[first_index : last_index + 1])
        if "return" in description:
            description += " after " + lines[first_index - 1].strip()
        yield first_index + 1, description, "\n".join(
            lines[:first_index] + ["  ;"] + lines[last_index + 1 :])


def build():
    return subprocess.run(
        ["cmake", "--build", BUILD, "--target", "LaunchScreenTests", "--", "--quiet"],
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)


def test_result():
    if build().returncode != 0:
        return "refused"
    try:
        process = subprocess.run([PROGRAM, "--gtest_brief=1"], cwd=ROOT, timeout=60, check=False,
                                 stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    except subprocess.TimeoutExpired:
        return "killed"
    return "killed" if process.returncode != 0 else "LIVES"


def main():
    arguments = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    arguments.add_argument("--every", type=int, default=1, help="try only every N-th mutation")
    arguments.add_argument("--only", default="", help="try only sources whose path contains TEXT")
    arguments.add_argument("--list", action="store_true", help="list the mutations without trying them")
    options = arguments.parse_args()

    selected = [(source, *mutation) for source in SOURCES if options.only in str(source)
                for mutation in mutations(source)][:: options.every]
    if options.list:
        for source, number, change, _ in selected:
            print(f"{source}:{number}: {change}")
        print(f"{len(selected)} mutations")
        return 0

    shutil.rmtree(COPY, ignore_errors=True)
    COPY.mkdir(parents=True)
    files = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, check=True, capture_output=True)
    for name in filter(None, files.stdout.decode().split("\0")):
        if (ROOT / name).is_file():
            (COPY / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(ROOT / name, COPY / name)
    subprocess.run(["cmake", "-S", COPY, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=",
                    "-DCMAKE_CXX_FLAGS=-O0 -D_GLIBCXX_ASSERTIONS", "-DVEL_TESTS=ON", "-DVEL_HOST=OFF",
                    "-DVEL_X11=OFF", "-DVEL_WAYLAND=OFF",
                    "-DVEL_COCOA=OFF"], check=True, stdout=subprocess.DEVNULL)
    first_build = build()
    if first_build.returncode != 0 or test_result() != "LIVES":
        sys.exit(f"the tests fail on the unchanged sources\n{first_build.stdout}")

    counts = {"killed": 0, "refused": 0, "LIVES": 0, "equivalent": 0}
    for source, number, change, text in selected:
        original_text = (ROOT / source).read_text()
        (COPY / source).write_text(text)
        result = test_result()
        (COPY / source).write_text(original_text)
        reason = EQUIVALENT.get((str(source), change))
        if result == "LIVES" and reason:
            result = "equivalent"
        counts[result] += 1
        print(f"{result:10} {source}:{number}: {change}", flush=True)
    print(", ".join(f"{count} {name}" for name, count in counts.items()))
    return 1 if counts["LIVES"] else 0


if __name__ == "__main__":
    sys.exit(main())
