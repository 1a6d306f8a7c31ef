#!/usr/bin/env bash
# Says which lines and branches of LaunchScreen/ its own tests reach; ends with 1 if a line is left out.
# Branches that only an exception takes are not counted.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh
source scripts/build.sh

require_packages build x11 test x11_test coverage
build_preset coverage LaunchScreenTests
find build/coverage -name '*.gcda' -delete
build/coverage/bin/LaunchScreenTests --gtest_brief=1

report() {
  gcovr --root . --object-directory build/coverage --filter LaunchScreen/ \
    --exclude-throw-branches --exclude-unreachable-branches "$@" build/coverage
}
report --branches
report --fail-under-line 100
