#!/usr/bin/env bash
# Builds what it needs and starts a room: ./run.sh --help
set -euo pipefail
caller=$PWD
cd "$(dirname "$0")"

usage() {
  cat <<'USAGE'
usage: ./run.sh [port] [--arena FILE] [--bots N [--skill X]]
Builds the server where needed and starts a room, which Ctrl-C ends.
  port          0 to 65535, default 5000; for 0 the system chooses one, and you are told
  --arena FILE  play there instead of in The Dry Fountain: a map text, a plan or a voxel file,
                checked first (docs/arena.md)
  --bots N      1 to 4 bots play along (docs/bots.md)
  --skill X     how well they play, 0 to 1, default 0.5
  --help        this
The compiler is that of CXX, where it is set.
USAGE
}
misused() {
  echo "$1" >&2
  usage >&2
  exit 2
}

port=
bots=0
skill=0.5
arena=
while [ $# -gt 0 ]; do
  case $1 in
    --help | -h)
      usage
      exit
      ;;
    --bots)
      [[ ${2-} =~ ^[1-4]$ ]] || misused "--bots ${2-}: not 1 to 4"
      bots=$2
      shift 2
      ;;
    --skill)
      [[ ${2-} =~ ^(0|1|0?\.[0-9]+|1\.0+)$ ]] || misused "--skill ${2-}: not 0 to 1"
      skill=$2
      shift 2
      ;;
    --arena)
      [ -n "${2-}" ] || misused '--arena: names no file'
      arena=$2
      shift 2
      ;;
    *)
      [ -z "$port" ] || misused "$1: what is it, after port $port?"
      [[ $1 =~ ^[0-9]{1,5}$ && $((10#$1)) -le 65535 ]] || misused "$1: no port and no option"
      port=$((10#$1))
      shift
      ;;
  esac
done
port=${port:-5000}

. .ci/building.sh

arena_file=Resources/mapdata
if [ -n "$arena" ]; then
  arena_file=$(cd "$caller" && realpath --no-symlinks -- "$arena")
  if ! [ -f "$arena_file" ] || ! [ -r "$arena_file" ]; then
    echo "$arena: is no file that can be read." >&2
    exit 2
  fi
fi

# is_taken TABLE...: whether one of the tables names a socket with our port.
is_taken() {
  awk -v "port=$(printf ':%04X$' "$port")" '$2 ~ port { taken = 1 } END { exit !taken }' "$@"
}
say_taken() {
  echo "Port $port is taken, perhaps by another room. Who has it: ss -lunp sport = :$port (as root)." >&2
  echo './run.sh 0 takes a free one and says which; ./run.sh PORT the one you name.' >&2
}
if [ "$port" -ne 0 ]; then
  if is_taken /proc/net/udp; then
    say_taken
    exit 1
  fi
  lowest=$(cat /proc/sys/net/ipv4/ip_unprivileged_port_start)
  if [ "$port" -lt "$lowest" ] && [ "$(id -u)" -ne 0 ]; then
    echo "Port $port is for root alone; yours begin at $lowest." >&2
    exit 1
  fi
fi

targets=(drench-server)
[ -z "$arena" ] || targets+=(drench-map)
[ "$bots" -eq 0 ] || targets+=(drench-bots)
need_writable_checkout
need_build_tools
[ ${#targets[@]} -eq 1 ] || need_tool_libraries
install_missing
for target in "${targets[@]}"; do
  if [ ! -x "build/release/$target" ]; then
    echo "Building ${targets[*]}; this takes half a minute, with tools a minute or two ..."
    break
  fi
done
configure release
build release "${targets[@]}"

map_tool=$PWD/build/release/drench-map
if [ -n "$arena" ]; then
  echo "Checking $arena; this takes some ten seconds ..."
  # A name is no option, whatever it begins with.
  [[ $arena != -* ]] || arena=./$arena
  status=0
  report=$(cd "$caller" && "$map_tool" check "$arena") || status=$?
  if [ $status -ne 0 ]; then
    [ -z "$report" ] || echo "$report" >&2
    echo "There is no room on $arena as long as it cannot be played; docs/arena.md says what arenas need." >&2
    exit $status
  fi
  sed -n '/: warning:/p; $p' <<<"$report"
fi

room=
server_pid=
players_pid=
stop() {
  trap - EXIT
  # shellcheck disable=SC2086  # either may not have been started yet
  kill $players_pid $server_pid || true
  wait
  rm -rf "$room"
} 2>/dev/null
trap stop EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

# A server reads the arena beside its executable, so the room has a folder with both of its own.
room=$(mktemp -d build/room.XXXXXX)
mkdir "$room/Resources"
mapdata=$room/Resources/mapdata
cp build/release/drench-server "$room"
if [ -n "$arena" ] && "$map_tool" build "$arena_file" -o "$mapdata" 2>/dev/null; then
  : # a plan
elif [ -n "$arena" ] && "$map_tool" import "$arena_file" -o "$mapdata" 2>"$room/remarks"; then
  cat "$room/remarks" >&2
else
  cp "$arena_file" "$mapdata"
fi

# The hexadecimal port of the server's socket, which is of all addresses, once it has one.
port_of_server() {
  local inode
  for inode in $(readlink "/proc/$server_pid/fd/"* | sed -n 's/^socket:\[\(.*\)\]$/\1/p'); do
    awk -v inode="$inode" '$10 == inode && sub(/^00000000:/, "", $2) { print $2 }' /proc/net/udp
  done
} 2>/dev/null

"$room/drench-server" "$port" &
server_pid=$!
chosen=
for _ in $(seq 200); do
  chosen=$(port_of_server)
  if [ -n "$chosen" ] || ! kill -0 "$server_pid" 2>/dev/null; then
    break
  fi
  sleep 0.05
done
if [ -n "$chosen" ]; then
  if [ "$port" -eq 0 ]; then
    port=$((16#$chosen))
    echo "The system chose port $port."
  fi
  if [ "$bots" -gt 0 ]; then
    echo 'The bots join in some seconds, the first time once they have charted the arena.'
    build/release/drench-bots "localhost:$port" --arena "$mapdata" --players "$bots" --skill "$skill" \
      --quiet &
    players_pid=$!
  fi
fi

status=0
wait "$server_pid" || status=$?
# After its own errors too the server's status is 0.
if [ $status -eq 0 ]; then
  status=1
  if is_taken /proc/net/udp /proc/net/udp6; then
    say_taken
  else
    echo 'The room ended; its last line says why.' >&2
  fi
fi
exit $status
