#!/usr/bin/env bash
# Builds the image of a room, which holds the static server and its arena and nothing else.
# usage: deploy/container/build.sh [image name]. Needs buildah and what the server needs; no daemon.
set -euo pipefail
image=${1:-drench}
cd "$(dirname "$0")/../.."

cmake --preset container
cmake --build --preset container --target drench-server --parallel "$(nproc)"

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
install -m 755 build/container/drench-server "$folder"
install -D -m 644 Resources/mapdata "$folder/Resources/mapdata"
strip "$folder/drench-server"
buildah build --isolation chroot --file deploy/container/Containerfile --tag "$image" "$folder"
