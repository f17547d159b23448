#!/usr/bin/env bash
# Builds the server where needed and starts it on the default arena.
set -euo pipefail
cd "$(dirname "$0")"

port=${1:-5000}
if [ $# -gt 1 ] || ! [[ $port =~ ^[0-9]{1,5}$ ]] || [ "$((10#$port))" -gt 65535 ]; then
  echo 'usage: ./run.sh [port]    (0 to 65535, default 5000)' >&2
  exit 2
fi

. .ci/prerequisites.sh
need_build_tools
install_missing

server=build/release/drench-server
[ -x $server ] || echo 'Building the server; this takes about half a minute ...'
[ -f build/release/CMakeCache.txt ] || quietly cmake --preset release
quietly cmake --build --preset release --target drench-server --parallel "$(nproc)"
exec $server "$port"
