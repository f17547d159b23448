#!/usr/bin/env bash
# Builds the Debian packages, and installs what that takes: deploy/debian/build.sh [--window]
# The window's package is built too where its libraries are installed; --window installs them.
set -euo pipefail
cd "$(dirname "$0")/../.."
if [ $# -gt 0 ] && [ "$*" != --window ]; then
  echo 'usage: deploy/debian/build.sh [--window]' >&2
  exit 2
fi

. .ci/building.sh
need_writable_checkout
need_build_tools
need_tool_libraries
need_package_tools
[ $# -eq 0 ] || need_window_libraries
install_missing
echo 'Building; this takes a minute or two ...'
configure package
build package
rm -f build/drench_*.deb build/libdrench-dev_*.deb build/drench-window_*.deb
quietly cpack --config build/package/CPackConfig.cmake -B build
rm -rf build/_CPack_Packages
as_root='sudo '
[ "$(id -u)" -ne 0 ] || as_root=
install="${as_root}apt-get install --reinstall"
echo "For rooms, bots and arenas:     $install $(echo ./build/drench_*.deb)"
if compgen -G 'build/drench-window_*.deb' >/dev/null; then
  echo "To play, with rooms and bots:   $install $(echo ./build/drench_*.deb ./build/drench-window_*.deb)"
fi
echo "To build clients in C++:        $install $(echo ./build/libdrench-dev_*.deb)"
