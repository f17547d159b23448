#!/usr/bin/env bash
# The packages for arm64 hold what those of this machine hold, depend on the same, and run there.
# usage: arm64-packages.sh BUILD_FOLDER. Builds in package-arm64/ of the folder. Exits with 77 where tools
# are missing, or the libraries that deploy/debian/build.sh --arm64 unpacks.
set -euo pipefail

. "$(dirname "$0")/../skipping.sh"
. "$(dirname "$0")/packages.sh"
skip_without aarch64-linux-gnu-g++ qemu-aarch64 lintian
can_pack || skip 'what makes packages is not installed'
build=$(realpath "$1")
cd "$(dirname "$0")/../.."
sysroot=$PWD/build/sysroot-arm64
[ -d "$sysroot" ] || skip "the libraries for arm64 are not in $sysroot"

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
fail() {
  echo "$1" >&2
  shift
  [ $# -eq 0 ] || cat "$@" >&2
  exit 1
}
mkdir "$folder/own" "$folder/arm64"
unpack_packages "$build" "$folder/own"
{
  cmake --preset package-arm64 -B "$build/package-arm64" -DDRENCH_WERROR=ON
  cmake --build "$build/package-arm64" --parallel "$(nproc)"
} >"$folder/build.log" 2>&1 || fail 'The packages cannot be built for arm64:' "$folder/build.log"
(
  export DPKG_ADMINDIR=$sysroot/var/lib/dpkg DEB_HOST_ARCH=arm64
  unpack_packages "$build/package-arm64" "$folder/arm64"
)

files_of() { (cd "$1" && find . -path ./DEBIAN -prune -o ! -type d -print | sort); }
depends() { sed -n 's/^Depends: //p' "$1/DEBIAN/control"; }
packages=(drench libdrench-dev)
[ ! -d "$folder/own/drench-keeper" ] || packages+=(drench-keeper)
for package in "${packages[@]}"; do
  own=$folder/own/$package
  arm64=$folder/arm64/$package
  grep -qx 'Architecture: arm64' "$arm64/DEBIAN/control" || fail "$package is not for arm64"
  diff <(files_of "$own") <(files_of "$arm64") >"$folder/files" ||
    fail "$package holds other files for arm64:" "$folder/files"
  [ "$(depends "$own")" = "$(depends "$arm64")" ] ||
    fail "$package depends on $(depends "$arm64") for arm64, and here on $(depends "$own")"
done
! find "$folder/arm64" -type f -exec file {} + | grep 'ELF' | grep -v 'ARM aarch64' ||
  fail 'The packages for arm64 hold programs for another machine.'
lintian --allow-root --fail-on error,warning "$folder"/arm64/packed/*.deb >"$folder/lintian.log" 2>&1 ||
  fail 'lintian refuses the packages for arm64:' "$folder/lintian.log"

cd "$folder/arm64/drench/usr"
emulated() { qemu-aarch64 -L "$sysroot" "$@"; }
for program in bin/drench-{map,lag} lib/drench/drench-bots; do
  emulated "$PWD/$program" --help >"$folder/help" 2>&1 || fail "$program does not run:" "$folder/help"
done
emulated "$PWD/bin/drench-map" build share/drench/arenas/default.plan -o "$folder/mapdata" 2>"$folder/errors" ||
  fail 'drench-map cannot build an arena on arm64:' "$folder/errors"
cmp "$folder/mapdata" lib/drench/Resources/mapdata || fail 'On arm64 drench-map builds another arena.'
