# Lists and installs the Debian packages that the project needs. Source this file.
# shellcheck shell=bash

# shellcheck disable=SC2034  # read by name, in require_packages
packages_build=(g++ cmake ninja-build pkg-config libcli11-dev nlohmann-json3-dev libpng-dev
  # the X11 back end
  libxcb1-dev libxcb-icccm4-dev libxcb-randr0-dev libxcb-render0-dev libxcb-shape0-dev
  # the Wayland back end
  libwayland-dev libwayland-bin wayland-protocols libdecor-0-dev
  # the frame of its windows under a compositor that draws no frames
  libdecor-0-plugin-1-cairo)
# shellcheck disable=SC2034
packages_test=(googletest libgtest-dev libgmock-dev clang-format-16 clang-tidy-16 git groff-base python3
  clang-16 lld libc++-16-dev
  pkg-config dpkg-dev file fonts-dejavu-core
  libglib2.0-dev libsdl2-dev doxygen
  # the X servers, window managers and programs of the tests on X11
  libxcb-damage0-dev libxcb-res0-dev libxcb-xtest0-dev
  xvfb metacity openbox xfwm4 icewm marco mate-settings-daemon-common fluxbox xdotool x11-apps
  x11-xserver-utils xterm mesa-utils xmahjongg python3-xlib
  # the free AppKit of GNUstep for the AppKit back end; the other builds work without it
  libgnustep-gui-dev gnustep-back0.29 gnustep-back0.29-cairo gobjc++
  # the compositors of the tests on Wayland; setpriv of util-linux starts sway
  sway util-linux weston libweston-10-dev xwayland libgtk-3-dev libgl1-mesa-dri)
# The hosts and environments of scripts/hosts.sh.
# shellcheck disable=SC2034
packages_hosts=(xfwm4 xfconf dbus-daemon marco mate-desktop-common mate-settings-daemon-common icewm i3-wm
  picom libgtk-3-dev libgtk-4-dev qtbase5-dev qt6-base-dev libsdl2-dev openjdk-17-jdk godot3-runner wine
  wine64 mpv xauth)
# The presets libcxx and asan-ubsan. llvm-16 has the symbolizer of the sanitizers.
# shellcheck disable=SC2034
packages_libcxx=(clang-16 libc++-16-dev libc++abi-16-dev libclang-rt-16-dev llvm-16)
# shellcheck disable=SC2034
packages_fuzz=(clang libclang-rt-dev)
# shellcheck disable=SC2034
packages_coverage=(gcovr)
# shellcheck disable=SC2034
packages_benchmark=(libbenchmark-dev libglib2.0-dev libgtk-3-dev qt6-base-dev libsdl2-dev libwxgtk3.2-dev
  libxcb-damage0-dev python3 python3-matplotlib xvfb metacity x11-utils sway util-linux)

package_is_installed() {
  [[ "$(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null)" == installed ]]
}

# require_packages GROUP...: installs the missing packages of the groups. Prints nothing if no package
# is missing.
require_packages() {
  if ! command -v dpkg-query >/dev/null; then
    echo "$0: not a Debian system: install the packages that scripts/packages.sh lists yourself; continuing" >&2
    return 0
  fi

  local group package missing=()
  for group in "$@"; do
    local -n packages="packages_${group}"
    for package in "${packages[@]}"; do
      package_is_installed "$package" || missing+=("$package")
    done
  done
  if [[ ${#missing[@]} -eq 0 ]]; then
    return 0
  fi

  local as_root=()
  if [[ $EUID -ne 0 ]]; then
    if ! command -v sudo >/dev/null; then
      echo "$0: these Debian packages are missing: ${missing[*]}" >&2
      echo "$0: install them as root: apt-get install ${missing[*]}" >&2
      return 1
    fi
    as_root=(sudo)
  fi

  echo "$0: installing ${missing[*]}" >&2
  local log
  log="$(mktemp)"
  if ! { "${as_root[@]}" apt-get update &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
      apt-get install --yes --no-install-recommends "${missing[@]}"; } >"$log" 2>&1 </dev/null; then
    cat "$log" >&2
    rm -f "$log"
    echo "$0: installation failed" >&2
    return 1
  fi
  rm -f "$log"
}
