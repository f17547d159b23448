#!/usr/bin/env bash
# Builds the Debian packages, and installs what that takes:
#   deploy/debian/build.sh [--window] [--keeper] [--arm64]
# The packages of window and keeper are built too where their libraries are installed; --window and
# --keeper install them. --arm64 builds all but the window's a second time, for arm64.
set -euo pipefail
cd "$(dirname "$0")/../.."
for argument; do
  if [[ ! $argument =~ ^--(window|keeper|arm64)$ ]]; then
    echo 'usage: deploy/debian/build.sh [--window] [--keeper] [--arm64]' >&2
    exit 2
  fi
done

. .ci/building.sh
need_writable_checkout
need_build_tools
need_tool_libraries
need_package_tools
for argument; do
  "need_${argument#--}_libraries"
done
install_missing

architecture=$(dpkg --print-architecture)
if [[ " $* " = *' --arm64 '* ]] && [ "$architecture" = arm64 ]; then
  echo 'This machine is an arm64 itself: its packages are for arm64 without --arm64.' >&2
  exit 2
fi
echo 'Building; this takes a minute or two ...'
rm -f build/drench_*.deb build/libdrench-dev_*.deb build/drench-window_*.deb build/drench-keeper_*.deb

# pack PRESET
pack() {
  configure "$1"
  build "$1"
  quietly cpack --config "build/$1/CPackConfig.cmake" -B build
  rm -rf build/_CPack_Packages
}
pack package
if [[ " $* " = *' --arm64 '* ]]; then
  echo 'Building the same for arm64 ...'
  unpack_arm64_libraries
  # Where dpkg-shlibdeps learns which packages the libraries are of.
  (
    export DPKG_ADMINDIR=$PWD/build/sysroot-arm64/var/lib/dpkg DEB_HOST_ARCH=arm64
    pack package-arm64
  )
fi

as_root='sudo '
[ "$(id -u)" -ne 0 ] || as_root=
install="${as_root}apt-get install --reinstall"
here="_$architecture.deb"
echo "For rooms, bots and arenas:     $install $(echo ./build/drench_*"$here")"
if compgen -G "build/drench-window_*$here" >/dev/null; then
  echo "To play, with rooms and bots:   $install $(echo ./build/drench_*"$here" ./build/drench-window_*"$here")"
fi
if compgen -G "build/drench-keeper_*$here" >/dev/null; then
  echo "With a keeper for each room:    $install $(echo ./build/drench_*"$here" ./build/drench-keeper_*"$here")"
fi
echo "To build clients in C++:        $install $(echo ./build/libdrench-dev_*"$here")"
[[ " $* " != *' --arm64 '* ]] || echo "For machines with arm64:        $(echo ./build/*_arm64.deb)"
