#!/usr/bin/env bash
# Builds the image of a room, which holds the static server, its keeper and its arena and nothing else, and
# the image NAME-firewall, which loads the firewall into a pod: deploy/container/build.sh [--arm64] [NAME]
# --arm64 builds both for arm64 too, as NAME:arm64, and lists NAME:all and NAME-firewall:all with both.
# The same sources and Debian packages give the same images. Needs buildah; no daemon.
set -euo pipefail
cd "$(dirname "$0")/../.."
arm64=
if [ "${1-}" = --arm64 ]; then
  arm64=yes
  shift
fi
if [ $# -gt 1 ] || [[ ${1-} = -* ]]; then
  echo 'usage: deploy/container/build.sh [--arm64] [NAME]' >&2
  exit 2
fi
image=${1:-drench}

. .ci/building.sh
need_writable_checkout
need_build_tools
need_tool_libraries
need_package_tools
need buildah buildah command -v buildah
[ -z "$arm64" ] || need_arm64_libraries
install_missing
own=$(dpkg --print-architecture)
version=$(sed -n 's/^project(drench VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
# The time that all files get, so that it is not that of the build.
released=$(date --date "$(sed -n 's/^ -- .*>  //p' deploy/debian/changelog | head -n 1)" +%s)

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# pack ARCHITECTURE CONTAINERFILE FOLDER IMAGE DESCRIPTION
pack() {
  local tag=$4
  [ "$1" = "$own" ] || tag=$4:$1
  buildah build --isolation chroot --arch "$1" --timestamp "$released" --identity-label=false \
    --label "org.opencontainers.image.title=${4##*/}" --label "org.opencontainers.image.version=$version" \
    --label "org.opencontainers.image.description=$5" \
    --label "org.opencontainers.image.vendor=The Drench maintainers" \
    --file "$2" --tag "$tag" "$3"
}

# images ARCHITECTURE PRESET STRIP
images() {
  local room=$folder/$1/room firewall=$folder/$1/firewall sysroot=build/firewall-$1
  build "$2" drench-server drench-keeper
  mkdir -p "$room" "$firewall"
  install -m 755 "build/$2/drench-server" "build/$2/drench-keeper" "$room"
  "$3" "$room/drench-server" "$room/drench-keeper"
  install -D -m 644 Resources/mapdata "$room/Resources/mapdata"
  pack "$1" deploy/container/Containerfile "$room" "$image" 'A room of the Drench water fight with its keeper'

  quietly deploy/debian/sysroot.sh "$1" "$sysroot" nftables
  deploy/container/gather.sh "$sysroot" "$firewall" /usr/sbin/nft
  install -D -m 644 deploy/nftables/drench.nft "$firewall/usr/share/drench/drench.nft"
  mkdir -p "$firewall/etc/drench"
  echo 'redefine drench_rooms = { 5000 }' >"$firewall/etc/drench/room.nft"
  chmod -R u=rwX,go=rX "$firewall"
  pack "$1" deploy/container/Firewall.containerfile "$firewall" "$image-firewall" \
    'Loads the firewall of a Drench room into its pod'
}

quietly deploy/container/libraries.sh "build/static-$own"
# Afresh, since CMake keeps where it once found libraries, the shared ones too.
configure container --fresh
images "$own" container strip
[ -n "$arm64" ] || exit 0

unpack_arm64_libraries
quietly deploy/container/libraries.sh build/sysroot-arm64/opt/static \
  --toolchain "$PWD/deploy/arm64.cmake" -DDRENCH_SYSROOT="$PWD/build/sysroot-arm64"
configure container-arm64 --fresh
images arm64 container-arm64 aarch64-linux-gnu-strip
for each in "$image" "$image-firewall"; do
  ! buildah manifest exists "$each:all" || buildah manifest rm "$each:all"
  buildah manifest create "$each:all" "$each:latest" "$each:arm64"
done
