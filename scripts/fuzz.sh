#!/usr/bin/env bash
# Builds the fuzzers and runs them one after the other, each for SECONDS.
# usage: scripts/fuzz.sh [SECONDS [NAME...]]      default: 60 seconds, every fuzzer
# build/fuzz/corpus/NAME keeps the corpus for the next run. Failing inputs go to build/fuzz/findings.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh
source scripts/build.sh

seconds="${1:-60}"
shift || true
if [[ ! "$seconds" =~ ^[1-9][0-9]*$ ]]; then
  sed -n '3s/^# //p' "${BASH_SOURCE[0]}" >&2
  exit 2
fi
names=("$@")
if [[ ${#names[@]} -eq 0 ]]; then
  names=(number-text request-parameters scenario random-script)
fi

require_packages build fuzz
build_preset fuzz

# The maximum input length, for fuzzers that ignore the rest of an input.
declare -A max_lengths=([random-script]=65)

findings=build/fuzz/findings
mkdir -p "$findings"
status=0
for name in "${names[@]}"; do
  corpus="build/fuzz/corpus/$name"
  log="build/fuzz/$name.log"
  dictionary="Fuzz/dictionaries/$name.dict"
  options=(-max_total_time="$seconds" -max_len="${max_lengths[$name]:-2048}" -timeout=20 -print_final_stats=1
    -artifact_prefix="$findings/$name-")
  if [[ -f "$dictionary" ]]; then
    options+=(-dict="$dictionary")
  fi
  mkdir -p "$corpus"
  result="no findings"
  if ! "build/fuzz/bin/fuzz-$name" "${options[@]}" "$corpus" "Fuzz/seeds/$name" >"$log" 2>&1; then
    result="A FINDING, see $log"
    status=1
  fi
  executions="$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")"
  echo "$name: ${executions:-0} executions, $result"
done
exit "$status"
