#!/usr/bin/env bash
# Builds what it needs and opens the window in a room: ./play.sh --help
set -euo pipefail
caller=$PWD
cd "$(dirname "$0")"

usage() {
  cat <<'USAGE'
usage: ./play.sh [HOST[:PORT]] [--name NAME] [--arena FILE] [--bots N] [--skill X]
Builds the window where needed, starts a room on this machine with three bots in it, and opens the
window there. Closing the window ends all of it. With HOST it joins the room there instead.
  HOST[:PORT]   a room elsewhere, port 5000 unless named
  --name NAME   your name, at most 11 bytes
  --arena FILE  what is played: a map text, a plan or a voxel file (docs/arena.md); The Dry Fountain
                unless named
  --bots N      0 to 3 bots, default 3; for a room on this machine
  --skill X     how well they play, 0 to 1, default 0.3
  --help        this
The compiler is that of CXX, where it is set.
USAGE
}
misused() {
  echo "$1" >&2
  usage >&2
  exit 2
}

room=
name=
arena=
bots=3
skill=0.3
of_own_room=
while [ $# -gt 0 ]; do
  case $1 in
    --help | -h)
      usage
      exit
      ;;
    --name)
      [ -n "${2-}" ] || misused '--name: says no name'
      [ "$(printf %s "$2" | wc -c)" -le 11 ] || misused "--name $2: longer than 11 bytes"
      name=$2
      shift 2
      ;;
    --arena)
      [ -n "${2-}" ] || misused '--arena: names no file'
      arena=$2
      shift 2
      ;;
    --bots)
      [[ ${2-} =~ ^[0-3]$ ]] || misused "--bots ${2-}: not 0 to 3"
      bots=$2
      of_own_room=$1
      shift 2
      ;;
    --skill)
      [[ ${2-} =~ ^(0|1|0?\.[0-9]+|1\.0+)$ ]] || misused "--skill ${2-}: not 0 to 1"
      skill=$2
      of_own_room=$1
      shift 2
      ;;
    -*) misused "$1: no option" ;;
    *)
      [ -z "$room" ] || misused "$1: what is it, after the room $room?"
      [ -n "$1" ] || misused 'a room needs an address'
      room=$1
      shift
      ;;
  esac
done
[ -z "$room" ] || [ -z "$of_own_room" ] || misused "$of_own_room: $room has its own bots"

. .ci/building.sh

window=()
if [ -n "$arena" ]; then
  arena=$(cd "$caller" && realpath --no-symlinks -- "$arena")
  if ! [ -f "$arena" ] || ! [ -r "$arena" ]; then
    echo "$arena: is no file that can be read." >&2
    exit 2
  fi
  window+=(--arena "$arena")
fi
[ -z "$name" ] || window+=(--name "$name")

if [ -z "${DISPLAY-}${WAYLAND_DISPLAY-}" ]; then
  echo 'There is no display: neither DISPLAY nor WAYLAND_DISPLAY is set. ./run.sh hosts without one.' >&2
  exit 2
fi
need_writable_checkout
need_build_tools
need_tool_libraries
need_window_libraries
install_missing
if [ ! -x build/release/drench ]; then
  echo 'Building the window; the first time this takes some minutes ...'
fi
targets=(drench)
[ -n "$room" ] || targets+=(drench-server drench-map drench-bots)
configure release
build release "${targets[@]}"

if [ -n "$room" ]; then
  exec build/release/drench "$room" "${window[@]}"
fi

log=$(mktemp)
room_pid=
window_pid=
stop() {
  trap - EXIT
  # shellcheck disable=SC2086  # either may not have been started yet
  kill $window_pid $room_pid || true
  wait
  rm -f "$log"
} 2>/dev/null
trap stop EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

hosting=(0 --skill "$skill")
[ "$bots" -eq 0 ] || hosting+=(--bots "$bots")
if [ -n "$arena" ]; then
  hosting+=(--arena "$arena")
  echo "Checking $arena; this takes some ten seconds ..."
fi
./run.sh "${hosting[@]}" >"$log" &
room_pid=$!
port=
while [ -z "$port" ]; do
  sleep 0.05
  port=$(sed -n 's/^The system chose port \([0-9]*\)\.$/\1/p' "$log")
  if [ -z "$port" ] && ! kill -0 "$room_pid" 2>/dev/null; then
    status=0
    wait "$room_pid" || status=$?
    cat "$log" >&2
    exit "$status"
  fi
done

build/release/drench "localhost:$port" "${window[@]}" &
window_pid=$!
status=0
wait "$window_pid" || status=$?
exit $status
