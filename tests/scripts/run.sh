#!/usr/bin/env bash
# ./run.sh starts the room that it is asked for, or says why not.
# usage: run.sh BUILD_FOLDER
set -euo pipefail

build=$(realpath "$1")
. "$(dirname "$0")/checkout.sh"
room=
finish() {
  [ -z "$room" ] || kill "$room" 2>/dev/null || true
  wait
  rm -rf "$folder"
}
trap finish EXIT

# start ARGUMENT...: a room in the background, once it has said on which port; its lines go to a log.
start() {
  : >"$folder/room.log"
  ./run.sh "$@" >"$folder/room.log" 2>&1 &
  room=$!
  within 60 grep -q '^The system chose port' "$folder/room.log" || {
    cat "$folder/room.log" >&2
    exit 1
  }
  port=$(sed -n 's/^The system chose port \([0-9]*\)\.$/\1/p' "$folder/room.log")
}
stop() {
  local status=0
  kill "$room"
  wait "$room" || status=$?
  room=
  expect 'a room that is told to ends with the status of its signal' [ $status -eq 143 ]
  expect 'a room leaves no folder behind' [ "$(echo build/room.*)" = 'build/room.*' ]
}
# The executable that the room runs.
executable() {
  local process path
  for process in $(cat "/proc/$room/task/$room/children"); do
    path=$(readlink "/proc/$process/exe" || true)
    [[ $path != */drench-server ]] || echo "$path"
  done
}
# answers PORT: whether a room there answers with a receipt.
answers() {
  local socket
  exec {socket}<>"/dev/udp/127.0.0.1/$1"
  printf x >&"$socket"
  [ "$(timeout 5 dd bs=1000 count=1 status=none <&"$socket" | wc -c)" -eq 532 ] || return
  exec {socket}>&-
}
plays() { cmp -s <(tr -s '[:space:]' '\n' <"$1") <(tr -s '[:space:]' '\n' <"$(dirname "$(executable)")/Resources/mapdata"); }
no_build() { [ ! -e "$folder/cmake.log" ]; }

for help in --help -h; do
  expect "$help succeeds" [ "$(status_of ./run.sh $help)" -eq 0 ]
  expect "$help names the options" says "$folder/said" '--arena FILE'
done
for wrong in 65536 x '5000 5001' '--bots 5' '--bots' '--skill 1.5' '--skill' '--arena'; do
  # shellcheck disable=SC2086  # words
  expect "$wrong is refused" [ "$(status_of ./run.sh $wrong)" -eq 2 ]
  expect "it is said that $wrong is wrong" says "$folder/said" "${wrong##* }"
  expect "after $wrong the usage is said" says "$folder/said" 'usage: ./run.sh'
done
expect 'a missing arena is refused' [ "$(status_of ./run.sh --arena nowhere.plan)" -eq 2 ]
expect 'the missing arena is named' says "$folder/said" 'nowhere.plan: is no file that can be read'
expect 'what is refused builds nothing' no_build

start 0
expect 'a room answers on the port that the system chose' answers "$port"
expect 'a room plays the default arena unless told otherwise' plays Resources/mapdata
rm "$folder/cmake.log"
expect 'a taken port is refused' [ "$(status_of ./run.sh "$port")" -eq 1 ]
expect 'the taken port is named' says "$folder/said" "Port $port is taken"
expect 'a taken port is found before anything is built' no_build
stop

# One flat court, behind a border.
awk 'BEGIN {
  print 32, 16, 32
  for (column = 0; column < 32; ++column)
    for (row = 0; row < 16; ++row)
      for (depth = 0; depth < 32; ++depth) {
        solid = !row || !column || column == 31 || !depth || depth == 31
        printf " %d %d%s", solid, 2 * solid, depth == 31 ? "\n" : ""
      }
}' >"$folder/court"
court=$folder/court
(
  cd "$folder/elsewhere"
  "$build/drench-map" plan "$court" -o 'my court.plan' >/dev/null
  "$build/drench-map" export "$court" -o -court.vox >/dev/null
)
mkdir -p build/release/Resources
echo 'the arena of the build tree' >build/release/Resources/mapdata
for arena in "$court" 'my court.plan' -court.vox; do
  # Relative names count from where one stands.
  pushd "$folder/elsewhere" >/dev/null
  : >"$folder/room.log"
  ../drench/run.sh 0 --arena "$arena" >"$folder/room.log" 2>&1 &
  room=$!
  popd >/dev/null
  within 60 grep -q '^The system chose port' "$folder/room.log" || cat "$folder/room.log" >&2
  expect "$arena is played" plays "$court"
  expect "it is said that $arena can be played" says "$folder/room.log" "$arena: can be played"
  expect "warnings of $arena are said" says "$folder/room.log" ': warning:'
  stop
done
expect "the build tree's arena stays as it is" says build/release/Resources/mapdata 'the arena of the build tree'

# A hole in the border, and what is no arena.
sed 's/^ 1 2 0 0/ 0 0 0 0/' "$court" >"$folder/hole"
echo 'no arena' >"$folder/words"
expect 'an arena that cannot be played is refused' [ "$(status_of ./run.sh 0 --arena "$folder/hole")" -eq 1 ]
expect 'the hole is named' says "$folder/said" 'players can leave the world'
expect 'the consequence is said' says "$folder/said" 'cannot be played'
expect 'a file without an arena is refused' [ "$(status_of ./run.sh 0 --arena "$folder/words")" -eq 2 ]
expect 'the file without an arena is named' says "$folder/said" "$folder/words"

# Bots that only keep what they were given.
cat >build/release/drench-bots <<BOTS
#!/usr/bin/env bash
cp "\$3" "$folder/bots.arena"
echo "\$*" >"$folder/bots.arguments"
exec sleep 60
BOTS
start 0 --bots 3 --skill 0.25 --arena "$court"
expect 'bots join' within 10 test -s "$folder/bots.arguments"
expect 'bots join the very room' says "$folder/bots.arguments" "localhost:$port --arena"
expect 'as many bots join as were asked for' says "$folder/bots.arguments" '--players 3'
expect 'bots play as well as asked for' says "$folder/bots.arguments" '--skill 0.25'
expect 'bots know the arena that is played' cmp -s "$court" "$folder/bots.arena"
stop

printf '#!/bin/sh\necho Error opening socket\n' >build/release/drench-server
expect 'a room that ends by itself is an error' [ "$(status_of ./run.sh 0)" -eq 1 ]
expect 'the end of the room is said' says "$folder/said" 'The room ended'

exit $((failures > 0))
