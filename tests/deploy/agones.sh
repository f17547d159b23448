#!/usr/bin/env bash
# The keeper makes the calls that the real SDK server of Agones waits for: its conformance run.
# usage: agones.sh BUILD_FOLDER [SDK_SERVER]. Exits with 77 without the SDK server's executable, which
# Agones publishes with each release (agonessdk-server-VERSION.zip).
set -euo pipefail

. "$(dirname "$0")/../skipping.sh"
build=$(realpath "$1")
sdk_server=${2-}
if [ -z "$sdk_server" ] || [ ! -x "$sdk_server" ]; then
  echo 'NOT TRIED against the real SDK server: set AGONES_SDK_SERVER to its executable and configure again.'
  skip 'no SDK server'
fi

folder=$(mktemp -d)
sdk= keeper=
finish() {
  [ -z "$keeper" ] || kill -KILL "$keeper" 2>/dev/null || true
  [ -z "$sdk" ] || kill -KILL "$sdk" 2>/dev/null || true
  rm -rf "$folder"
}
trap finish EXIT
fail() {
  echo "$1" >&2
  cat "$folder"/*.log >&2
  exit 1
}

port=$((20000 + $$ % 10000))
# It ends by itself once all of these were called, and fails when one has not been in time.
"$sdk_server" --local --test ready,health,allocate,gameserver,shutdown --timeout 60 \
  >"$folder/sdk.log" 2>&1 &
sdk=$!
"$build/drench-keeper" "$port" --agones on --end-when-unused-for 2 >"$folder/keeper.log" 2>&1 &
keeper=$!
for _ in $(seq 200); do
  ! grep -q listening "$folder/keeper.log" || break
  sleep 0.1
done
# Its join allocates the room; once it has left, the room is unused, and asks for its end.
timeout 60 "$build/drench-bots" "127.0.0.1:$port" --players 1 --seconds 5 >"$folder/bots.log" 2>&1 ||
  fail 'nobody can play'
wait "$keeper" || fail "the keeper ended with status $?"
keeper=
grep -q 'allocated and nobody came or stayed' "$folder/keeper.log" || fail 'the room was never allocated'
! grep -q 'did not take the end' "$folder/keeper.log" || fail 'the end was not taken'
wait "$sdk" || fail "the SDK server misses a call: status $?"
sdk=
