#!/usr/bin/env bash
# Builds the Debian packages, and installs what that takes: deploy/debian/build.sh [--window] [--keeper]
# The packages of window and keeper are built too where their libraries are installed; --window and
# --keeper install them.
set -euo pipefail
cd "$(dirname "$0")/../.."
for argument; do
  if [ "$argument" != --window ] && [ "$argument" != --keeper ]; then
    echo 'usage: deploy/debian/build.sh [--window] [--keeper]' >&2
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
echo 'Building; this takes a minute or two ...'
configure package
build package
rm -f build/drench_*.deb build/libdrench-dev_*.deb build/drench-window_*.deb build/drench-keeper_*.deb
quietly cpack --config build/package/CPackConfig.cmake -B build
rm -rf build/_CPack_Packages
as_root='sudo '
[ "$(id -u)" -ne 0 ] || as_root=
install="${as_root}apt-get install --reinstall"
echo "For rooms, bots and arenas:     $install $(echo ./build/drench_*.deb)"
if compgen -G 'build/drench-window_*.deb' >/dev/null; then
  echo "To play, with rooms and bots:   $install $(echo ./build/drench_*.deb ./build/drench-window_*.deb)"
fi
if compgen -G 'build/drench-keeper_*.deb' >/dev/null; then
  echo "With a keeper for each room:    $install $(echo ./build/drench_*.deb ./build/drench-keeper_*.deb)"
fi
echo "To build clients in C++:        $install $(echo ./build/libdrench-dev_*.deb)"
