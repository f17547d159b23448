#!/usr/bin/env bash
# The installed server, started through its link in bin/, finds its arena.
# usage: installed-server.sh BUILD_FOLDER
set -euo pipefail

prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$1" --prefix "$prefix" >"$prefix/install.log"

# Port 0 lets the system choose one. The server ends as soon as it has said what it should.
coproc server { exec timeout 20 "$prefix/bin/drench-server" 0; }
pid=$server_PID
while read -r line <&"${server[0]}"; do
  if [ "$line" = 'Server is listening on port 0' ]; then
    kill "$pid"
    exit 0
  fi
  echo "$line" >&2
done
echo 'The installed server did not start.' >&2
exit 1
