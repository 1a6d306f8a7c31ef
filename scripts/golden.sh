#!/usr/bin/env bash
# Builds the program, then writes the expected traces of the scenarios and docs/pictures/timeline.svg
# again. Use it after a deliberate change of behaviour, and review the result with `git diff`.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh
source scripts/build.sh

require_packages build test
build_preset debug launchscreen
program=build/debug/bin/launchscreen

# The exit status of `play` if the scenario ends with a fatal error. The trace of such a scenario is
# complete.
fatal_error_status=3

for trace in Tests/Host/Play/golden/*.jsonl; do
  name="$(basename "$trace")"
  status=0
  "$program" play "Examples/scenarios/${name%%--*}.json" >"$trace.new" || status=$?
  if [[ $status -ne 0 && $status -ne $fatal_error_status ]]; then
    rm "$trace.new"
    exit "$status"
  fi
  mv "$trace.new" "$trace"
done
"$program" play Examples/scenarios/switch-away-and-back.json --timeline docs/pictures/timeline.svg >/dev/null
