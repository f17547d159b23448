#!/usr/bin/env bash
# Builds the Debian packages, and installs what that takes: deploy/debian/build.sh
set -euo pipefail
cd "$(dirname "$0")/../.."

. .ci/building.sh
need_writable_checkout
need_build_tools
need_tool_libraries
need_package_tools
install_missing
echo 'Building; this takes a minute or two ...'
configure package
build package
rm -f build/drench_*.deb build/libdrench-dev_*.deb
quietly cpack --config build/package/CPackConfig.cmake -B build
rm -rf build/_CPack_Packages
as_root='sudo '
[ "$(id -u)" -ne 0 ] || as_root=
install="${as_root}apt-get install --reinstall"
echo "For rooms, bots and arenas:     $install $(echo ./build/drench_*.deb)"
echo "To build clients in C++:        $install $(echo ./build/libdrench-dev_*.deb)"
