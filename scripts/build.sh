# How a preset is configured and built. Sourced, not run, from the project's root.
# shellcheck shell=bash

# build_preset PRESET [TARGET...]: configures it and builds the targets, or all of it, and shows the
# output only if that fails.
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
