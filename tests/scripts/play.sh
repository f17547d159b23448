#!/usr/bin/env bash
# ./play.sh opens the window in the room asked for, and ends with it all that it started.
# usage: play.sh BUILD_FOLDER
set -euo pipefail

build=$(realpath "$1")
. "$(dirname "$0")/checkout.sh"
player=
finish() {
  [ -z "$player" ] || kill "$player" 2>/dev/null || true
  wait
  rm -rf "$folder"
}
trap finish EXIT
export DISPLAY=:none XDG_CONFIG_HOME=$folder

# A window and bots that only keep what they were given; the window is open as long as its file is there.
mkdir -p build/release/Resources
cat >build/release/drench <<WINDOW
#!/usr/bin/env bash
echo "\$*" >"$folder/window.arguments"
echo \$\$ >"$folder/window.process"
while [ -e "$folder/window.arguments" ]; do sleep 0.1; done
exit 7
WINDOW
cat >build/release/drench-bots <<BOTS
#!/usr/bin/env bash
echo "\$*" >"$folder/bots.arguments"
echo \$\$ >"$folder/bots.process"
exec sleep 60
BOTS
chmod +x build/release/*
is_gone() { ! kill -0 "$(cat "$1")" 2>/dev/null; }

# play ARGUMENT...: in the background, until its window is open.
play() {
  rm -f "$folder"/window.* "$folder"/bots.*
  ./play.sh "$@" >"$folder/played" 2>&1 &
  player=$!
  within 60 test -s "$folder/window.process" || {
    cat "$folder/played" >&2
    exit 1
  }
}
ended() {
  local status=0
  wait "$player" || status=$?
  player=
  [ "$status" -eq "$1" ]
}

for help in --help -h; do
  expect "$help succeeds" [ "$(status_of ./play.sh $help)" -eq 0 ]
  expect "$help names the options" says "$folder/said" '--skill X'
done
for wrong in '--bots 4' '--bots' '--skill 2' '--name' '--name abcdefghijkl' '--arena' '--quick' 'here there' \
  'here --bots 2'; do
  # shellcheck disable=SC2086  # words
  expect "$wrong is refused" [ "$(status_of ./play.sh $wrong)" -eq 2 ]
  expect "after $wrong the usage is said" says "$folder/said" 'usage: ./play.sh'
done
expect 'a missing arena is refused' [ "$(status_of ./play.sh --arena nowhere.plan)" -eq 2 ]
expect 'the missing arena is named' says "$folder/said" 'nowhere.plan: is no file that can be read'
expect 'without a display nobody plays' [ "$(status_of env -u DISPLAY -u WAYLAND_DISPLAY ./play.sh)" -eq 2 ]
expect 'the missing display is said' says "$folder/said" 'no display'
expect 'what is refused builds nothing' [ ! -e "$folder/cmake.log" ]

play --name Ann
expect 'the window opens in a room of this machine' grep -qE '^localhost:[0-9]+ --name Ann$' "$folder/window.arguments"
expect 'three bots join' within 10 grep -q -e '--players 3 --skill 0.3' "$folder/bots.arguments"
expect 'bots join the very room' says "$folder/bots.arguments" "$(cut -d' ' -f1 "$folder/window.arguments")"
rm "$folder/window.arguments"
expect 'closing the window ends with its status' ended 7
expect 'closing the window ends the bots' is_gone "$folder/bots.process"
expect 'closing the window ends the room' [ "$(echo build/room.*)" = 'build/room.*' ]

play --bots 0
kill "$player"
expect 'a signal ends it with its status' ended 143
expect 'a signal closes the window' within 10 is_gone "$folder/window.process"
expect 'a signal ends the room' [ "$(echo build/room.*)" = 'build/room.*' ]
expect 'no bots join where none were asked for' [ ! -e "$folder/bots.arguments" ]

play example.org:5001 --name Bob
expect 'a room elsewhere is joined there' says "$folder/window.arguments" 'example.org:5001 --name Bob'
rm "$folder/window.arguments"
expect 'closing the window ends it there too' ended 7
expect 'no room is started for it' [ "$(echo build/room.*)" = 'build/room.*' ]

printf '#!/bin/sh\necho Error opening socket\n' >build/release/drench-server
expect 'a room that cannot start is an error' [ "$(status_of ./play.sh)" -eq 1 ]
expect 'it is said why' says "$folder/said" 'Error opening socket'

exit $((failures > 0))
