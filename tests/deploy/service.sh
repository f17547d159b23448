#!/usr/bin/env bash
# The service unit is well formed and exposes little, and a room lives under all that it imposes.
# usage: service.sh BUILD_FOLDER CONFINED. Exits with 77, after what can be tried, where systemd-analyze
# or root is missing.
set -euo pipefail

build=$1
confined=$2
port=$((20000 + $$ % 10000))
skipped=

folder=$(mktemp -d)
room=
. "$(dirname "$0")/../skipping.sh"
. "$(dirname "$0")/control-groups.sh"
finish() {
  if [ -n "$room" ]; then
    kill "$room" 2>/dev/null || true
    wait "$room" 2>/dev/null || true
  fi
  remove_group
  rm -rf "$folder"
}
trap finish EXIT
# The room runs as somebody else.
chmod 755 "$folder"
cmake --install "$build" --prefix "$folder" >"$folder/install.log"
units=$folder/lib/systemd/system
unit=$units/drench@$port.service
cp "$units/drench@.service" "$unit"
# With a keeper, rooms are tried by themselves: drop-ins would count everywhere.
keepers=$folder/keepers
mkdir "$keepers"
has_keeper=
if [ -d "$units/drench@.service.d" ]; then
  has_keeper=yes
  mv "$units"/*.d "$keepers"
fi

fail() {
  echo "$1" >&2
  shift
  [ $# -eq 0 ] || cat "$@" >&2
  exit 1
}

# analyze: what systemd finds of the units as they are.
analyze() {
  # Its status alone misses unknown keys.
  MANPATH=$folder/share/man systemd-analyze verify "$unit" "$units"/drench-recycle.{service,timer} \
    "$units"/drench-firewall.service "$units"/drench.slice \
    >"$folder/verify.log" 2>&1 || fail 'systemd-analyze verify fails:' "$folder/verify.log"
  [ ! -s "$folder/verify.log" ] || fail 'systemd-analyze verify says:' "$folder/verify.log"
  systemd-analyze security --offline=true --threshold=15 "$unit" >"$folder/security.log" 2>&1 ||
    fail 'The unit is exposed by more than 1.5:' "$folder/security.log"
  tail -n1 "$folder/security.log"
}

if command -v systemd-analyze >/dev/null; then
  analyze
  if [ -n "$has_keeper" ]; then
    cp -r "$keepers"/* "$units"
    analyze
    rm -r "$units"/*.d
  fi
else
  skipped='systemd-analyze is not installed'
fi

if [ "$(id -u)" -ne 0 ]; then
  skipped='only root can run a room as somebody else'
elif [ ! -x "$confined" ]; then
  skipped='libseccomp was not found, so nothing applies the filter of system calls'
else
  make_group "drench-test-$$" "$unit"
  # start UNIT: starts the room of that unit, whose lines go to room.log.
  start() {
    : >"$folder/room.log"
    (enter_group && exec "$confined" "$1" "$port") >"$folder/room.log" 2>&1 &
    room=$!
    for _ in $(seq 100); do
      if grep -q listening "$folder/room.log" || ! kill -0 "$room" 2>/dev/null; then
        return
      fi
      sleep 0.1
    done
    fail 'The confined room does not start:' "$folder/room.log"
  }

  printf 'at 10 hold forward\nat 20 turn 90 10\nat 30 say hello\nat 60 leave\n' >"$folder/script"
  start "$unit"
  timeout 30 "$folder/bin/drench-bots" "127.0.0.1:$port" --script "$folder/script" \
    >"$folder/player.log" 2>&1 ||
    fail 'Nobody can play in the confined room:' "$folder/player.log" "$folder/room.log"
  [ "$(awk '/^Uid/ { print $2 }' "/proc/$room/status")" = 65534 ] || fail 'The room runs as root.'
  [ "$(awk '/^Seccomp:/ { print $2 }' "/proc/$room/status")" = 2 ] || fail 'The room has no filter.'
  kill "$room"
  wait "$room" || true

  # Its lines may go to where there are no pipes.
  "$confined" "$unit" "$port" >/dev/null 2>&1 &
  room=$!
  timeout 30 "$folder/bin/drench-bots" "127.0.0.1:$port" --script "$folder/script" \
    >"$folder/player.log" 2>&1 || fail 'A room without a log cannot be played in:' "$folder/player.log"
  kill "$room"
  wait "$room" || true

  # What is not in the filter is the end of the room.
  sed 's/ sendto$//' "$unit" >"$folder/mute.service"
  start "$folder/mute.service"
  timeout 3 "$folder/bin/drench-bots" "127.0.0.1:$port" --script "$folder/script" \
    >"$folder/player.log" 2>&1 || true
  status=0
  wait "$room" || status=$?
  room=
  [ "$status" -eq $((128 + $(kill -l SYS))) ] ||
    fail "A room that may not send ended with $status, not by SIGSYS:" "$folder/room.log"
fi

# keeper_says WORDS: in time.
keeper_says() {
  for _ in $(seq 100); do
    ! grep -q "$1" "$folder/room.log" || return 0
    sleep 0.1
  done
  fail "The confined keeper does not say \"$1\":" "$folder/room.log"
}

if [ -z "$skipped" ] && [ -n "$has_keeper" ]; then
  # The drop-in replaces the command, and adds to all else.
  {
    sed '/^ExecStart=/d' "$unit"
    grep -v '^ExecStart=$' "$keepers/drench@.service.d/keeper.conf"
  } >"$folder/kept.service"
  start "$folder/kept.service"
  timeout 30 "$folder/bin/drench-bots" "127.0.0.1:$port" --script "$folder/script" \
    >"$folder/player.log" 2>&1 ||
    fail 'Nobody can play in the confined room of a keeper:' "$folder/player.log" "$folder/room.log"
  server=$(cat "/proc/$room/task/$room/children")
  server=${server%% *}
  for process in "$room" "$server"; do
    [ "$(awk '/^Uid/ { print $2 }' "/proc/$process/status")" = 65534 ] || fail 'The keeper or its room runs as root.'
    [ "$(awk '/^Seccomp:/ { print $2 }' "/proc/$process/status")" = 2 ] || fail 'The keeper or its room has no filter.'
  done
  tasks=$(cat "/proc/$room/status" "/proc/$server/status" | awk '/^Threads:/ { sum += $2 } END { print sum }')
  [ "$tasks" -le "$(sed -n 's/^TasksMax=//p' "$unit")" ] || fail "The keeper and its room have $tasks threads."
  kill -KILL "$server"
  keeper_says 'ended by itself with status 137'
  # Until it has been started again, and has answered.
  sleep 2
  exec 3<>"/dev/tcp/127.0.0.1/$port"
  printf 'GET /metrics HTTP/1.0\r\n\r\n' >&3
  grep -E '^drench_room_(restarts_total.*signal.*|players|answering) ' <&3 | sort >"$folder/metrics.log"
  printf 'drench_room_%s\n' 'answering 1' 'players 0' 'restarts_total{reason="signal"} 1' |
    cmp -s - "$folder/metrics.log" || fail 'The confined keeper publishes:' "$folder/metrics.log"
  kill "$room"
  wait "$room" || fail "The confined keeper ended with $?:" "$folder/room.log"
  room=
fi

[ -z "$skipped" ] || skip "$skipped"
