# Configures and builds a preset. Source this file from the project's root.
# shellcheck shell=bash

# build_preset PRESET [TARGET...]: configures the preset and builds the targets (default: all). Shows
# the output only if the build fails.
build_preset() {
  local preset="$1" log targets=()
  shift
  if [[ $# -gt 0 ]]; then
    targets=(--target "$@")
  fi
  mkdir -p build
  log="build/${preset}.log"
  if [[ ! -f "build/${preset}.built" ]]; then
    echo "building ${preset}; the first time this takes a while" >&2
  fi
  if ! { cmake --preset "$preset" && cmake --build --preset "$preset" -j "$(nproc)" "${targets[@]}" -- --quiet; } \
    >"$log" 2>&1 </dev/null; then
    cat "$log" >&2
    echo "building ${preset} failed" >&2
    return 1
  fi
  touch "build/${preset}.built"
}
