#!/usr/bin/env bash
# Prints the line and branch coverage of LaunchScreen/ by its own tests. Exits with 1 if a line is not
# covered. Branches that only an exception takes are not counted.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh
source scripts/build.sh

require_packages build test coverage
build_preset coverage LaunchScreenTests
find build/coverage -name '*.gcda' -delete
build/coverage/bin/LaunchScreenTests --gtest_brief=1

report() {
  gcovr --root . --object-directory build/coverage --filter LaunchScreen/ \
    --exclude-throw-branches --exclude-unreachable-branches "$@" build/coverage
}
report --branches
report --fail-under-line 100
