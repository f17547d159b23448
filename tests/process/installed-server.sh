#!/usr/bin/env bash
# The installed server, started through its link in bin/, finds its arena.
# usage: installed-server.sh BUILD_FOLDER
set -euo pipefail

prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$1" --prefix "$prefix" >"$prefix/install.log"

# A room on a port of the system's choice ends by itself after a second.
output=$(timeout 1 "$prefix/bin/drench-server" 0 || true)
if ! grep -qx 'Server is listening on port 0' <<<"$output"; then
  printf 'The installed server did not start:\n%s\n' "$output" >&2
  exit 1
fi
