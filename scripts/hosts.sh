#!/usr/bin/env bash
# Runs `launchscreen show` over the window of every host (a program with a window) in every environment
# (a window manager), and writes what the screen showed to build/hosts.md. The script takes less than
# half an hour on two cores. Arguments go to Tests/Hosts/matrix.py, for example
#   scripts/hosts.sh --hosts xterm,godot --environments bare,xfwm4
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh
source scripts/build.sh

require_packages build test hosts
build_preset debug launchscreen hosts-sampler hosts-badhost
exec python3 Tests/Hosts/matrix.py --launchscreen build/debug/bin/launchscreen \
  --programs build/debug/hosts "$@"
