#!/usr/bin/env bash
# A plain build leaves out the fuzz programs, and puts the default arena beside the server whatever was
# put there meanwhile.
# usage: plain-build.sh BUILD_FOLDER
set -euo pipefail

build=$(realpath "$1")
cd "$(dirname "$0")/.."
steps=$(cmake --build "$build" -- -n)
for target in drench-server drench-tests; do
  grep -q "$target" <<<"$steps" || {
    echo "a plain build leaves out $target" >&2
    exit 1
  }
done
if grep 'Built target drench-fuzz' <<<"$steps" >&2; then
  echo 'a plain build builds fuzz programs' >&2
  exit 1
fi


# In a tree of its own: others play in the first one.
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cmake -S . -B "$folder" -DBUILD_TESTING=OFF >"$folder/log"
played=$folder/Resources/mapdata
for there in nothing another; do
  cmake --build "$folder" --target resources >"$folder/log"
  cmp Resources/mapdata "$played" || {
    echo "a build does not put the default arena where $there was" >&2
    exit 1
  }
  echo 'another arena' >"$played"
done
