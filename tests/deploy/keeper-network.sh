#!/usr/bin/env bash
# Alone with its room in a network namespace, the keeper counts players by what leaves it: it agrees with the
# notices, and knows whether anybody plays where notices lack or are too many.
# usage: keeper-network.sh BUILD_FOLDER. Exits with 77 where there are no network namespaces.
set -euo pipefail

. "$(dirname "$0")/../skipping.sh"
build=$(realpath "$1")
if [ "${2-}" != inside ]; then
  skip_without ip
  for namespace in 'unshare --net' 'unshare --map-root-user --net'; do
    # shellcheck disable=SC2086
    ! $namespace true 2>/dev/null || exec $namespace "$0" "$build" inside
  done
  skip 'no network namespaces here'
fi

# The players are elsewhere: their own sockets are no part of the room's namespace.
unshare --net sleep 300 &
elsewhere=$!
folder=$(mktemp -d)
keeper=
finish() {
  kill "$elsewhere"
  [ -z "$keeper" ] || kill -KILL "$keeper" 2>/dev/null || true
  rm -rf "$folder"
}
trap finish EXIT

for _ in $(seq 100); do
  [ "$(readlink /proc/self/ns/net)" = "$(readlink "/proc/$elsewhere/ns/net")" ] || break
  sleep 0.05
done
from_elsewhere() { nsenter --target "$elsewhere" --net "$@"; }
ip link add link0 type veth peer name link0 netns "$elsewhere"
ip address add 198.18.0.1/24 dev link0
from_elsewhere ip address add 198.18.0.2/24 dev link0
for namespace in '' from_elsewhere; do
  $namespace ip link set lo up
  $namespace ip link set link0 up
done

fail() {
  echo "$1" >&2
  cat "$folder/keeper.log" >&2
  exit 1
}
metric() {
  exec 3<>/dev/tcp/127.0.0.1/5000
  printf 'GET /metrics HTTP/1.0\r\n\r\n' >&3
  sed -n "s/^$1 //p" <&3
}
# expect METRIC VALUE: comes true.
expect() {
  local value
  for _ in $(seq 150); do
    value=$(metric "$1" 2>/dev/null || true)
    [ "$value" != "$2" ] || return 0
    sleep 0.1
  done
  fail "$1 is $value, not $2"
}
# keep FILTER: starts the keeper of a room whose console goes through a sed script.
keep() {
  printf '#!/bin/bash\nexec %q "$1" > >(exec sed -u %q)\n' "$build/drench-server" "$1" >"$folder/server"
  chmod +x "$folder/server"
  "$build/drench-keeper" 5000 --server "$folder/server" --metrics 5000 >"$folder/keeper.log" 2>&1 &
  keeper=$!
  expect drench_room_answering 1
}
play() {
  from_elsewhere timeout 60 "$build/drench-bots" 198.18.0.1:5000 --players "$1" --seconds "$2" \
    >"$folder/bots.log" 2>&1
}
end() {
  kill "$keeper"
  wait "$keeper" || fail "the keeper ended with status $?"
  keeper=
}

keep ''
play 3 10 &
expect drench_room_players 3
wait $!
expect drench_room_players 0
[ "$(metric drench_keeper_headcount_corrections_total)" = 0 ] || fail 'the network contradicts the notices'
end

# No notice tells of these two.
keep '/ joined$/d'
play 2 14 &
bots=$!
expect drench_keeper_headcount_corrections_total 1
# How many they are is not for the network to say.
[ "$(metric drench_room_players)" = 1 ] || fail 'players without a notice are not noticed'
kill "$keeper"
sleep 2
kill -0 "$keeper" 2>/dev/null || fail 'the match of players without a notice was ended'
wait "$bots"
wait "$keeper" || fail "the keeper ended with status $?"
keeper=

# One plays, and notices tell of two, and of one who leaves.
keep '/ joined$/p'
play 1 6 &
bots=$!
expect drench_room_players 2
wait "$bots"
expect drench_keeper_headcount_corrections_total 1
expect drench_room_players 0
end

# A room that says that somebody plays, and sends nobody anything, answers and still does not count as well.
keep 's/^Server is listening.*/&\nAnn joined/'
expect drench_room_answering 0
expect drench_room_players 0
end
