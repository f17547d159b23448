#!/usr/bin/env bash
# Builds the server where needed and starts it on the default arena, with bots in the room on request.
set -euo pipefail
cd "$(dirname "$0")"

usage() {
  echo 'usage: ./run.sh [port] [--bots N]    (port 0 to 65535, default 5000; 1 to 4 bots)' >&2
  exit 2
}

port=
bots=0
while [ $# -gt 0 ]; do
  case $1 in
    --bots)
      [[ ${2-} =~ ^[1-4]$ ]] || usage
      bots=$2
      shift 2
      ;;
    *)
      if [ -n "$port" ] || ! [[ $1 =~ ^[0-9]{1,5}$ ]] || [ "$((10#$1))" -gt 65535 ]; then
        usage
      fi
      port=$1
      shift
      ;;
  esac
done
port=${port:-5000}
if [ "$bots" -gt 0 ] && [ "$((10#$port))" -eq 0 ]; then
  echo 'Port 0 is one that the system chooses; bots would not find it.' >&2
  exit 2
fi

. .ci/prerequisites.sh
need_build_tools
if [ "$bots" -gt 0 ]; then
  need_tool_libraries
fi
install_missing

server=build/release/drench-server
if [ "$bots" -eq 0 ]; then
  [ -x $server ] || echo 'Building the server; this takes about half a minute ...'
  [ -f build/release/CMakeCache.txt ] || quietly cmake --preset release
  quietly cmake --build --preset release --target drench-server --parallel "$(nproc)"
  exec $server "$port"
fi

players=build/release/drench-bots
[ -x $players ] || echo 'Building the server and the bots; this takes a minute or two ...'
# Always, since the libraries may have come after the last time.
quietly cmake --preset release
quietly cmake --build --preset release --target drench-server drench-bots --parallel "$(nproc)"

server_pid=
players_pid=
stop() {
  trap - EXIT
  # shellcheck disable=SC2086  # either may not have been started yet
  kill $players_pid $server_pid || true
  wait
} 2>/dev/null
trap stop EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

echo 'The bots chart the arena first and join in some seconds.'
$server "$port" &
server_pid=$!
$players "localhost:$port" --players "$bots" --quiet &
players_pid=$!

status=0
wait "$server_pid" || status=$?
exit $status
