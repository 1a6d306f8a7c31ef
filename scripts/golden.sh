#!/usr/bin/env bash
# Writes the expected traces of the scenarios again, after a deliberate change of behaviour. Review the
# result with `git diff` before you commit it.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
for trace in Tests/Host/Play/golden/*.jsonl; do
  name="$(basename "$trace")"
  # `play` exits with an error if the scenario ends with a fatal error; its trace is complete.
  build/debug/bin/launchscreen play "Examples/scenarios/${name%%--*}.json" >"$trace" || true
done
