#!/usr/bin/env bash
# The game comes to the same bits on arm64: its unit tests, the match with the known end among them, pass
# under qemu-user, and bots play in a room there.
# usage: arm64.sh BUILD_FOLDER DRENCH_BOTS. Builds in arm64/ of the folder. Exits with 77 where the cross
# compiler, qemu or GoogleTest's sources are missing.
set -euo pipefail

. "$(dirname "$0")/../skipping.sh"
skip_without aarch64-linux-gnu-g++ qemu-aarch64 jq
[ -d /usr/src/googletest/googletest ] || skip "GoogleTest's sources are not installed"
build=$(realpath "$1")/arm64
bots=$(realpath "$2")
cd "$(dirname "$0")/../.."
port=$((30000 + $$ % 10000))

folder=$(mktemp -d)
room=
finish() {
  [ -z "$room" ] || kill "$room" 2>/dev/null || true
  wait
  rm -rf "$folder"
}
trap finish EXIT
fail() {
  echo "$1" >&2
  shift
  [ $# -eq 0 ] || cat "$@" >&2
  exit 1
}
emulated=(qemu-aarch64 -L /usr/aarch64-linux-gnu)

{
  cmake --preset arm64 -B "$build" -DDRENCH_WERROR=ON
  cmake --build "$build" --parallel "$(nproc)" --target drench-game-tests drench-server
} >"$folder/build.log" 2>&1 || fail 'The game cannot be built for arm64:' "$folder/build.log"

# A few tests start their own executable, which qemu cannot do by itself.
tests() { "${emulated[@]}" "$build/drench-game-tests" --gtest_filter="$1" >"$folder/tests.log" 2>&1; }
tests -FileLoaderDeathTest.\* || fail 'On arm64 the game is another:' "$folder/tests.log"
tests Match.OfThousandsOfTicksEndsInOneKnownState || fail 'On arm64 the match ends otherwise.'
grep -q 'PASSED.* 1 test' "$folder/tests.log" || fail 'There is no such match.'

"${emulated[@]}" "$build/drench-server" "$port" >"$folder/room.log" 2>&1 &
room=$!
for _ in $(seq 100); do
  ! grep -q listening "$folder/room.log" || break
  sleep 0.1
done
timeout 60 "$bots" "127.0.0.1:$port" --players 4 --seconds 5 --seed 1 --json --quiet >"$folder/report" ||
  fail 'Nobody can play in a room on arm64:' "$folder/room.log"
# 62 a second, of which a busy machine under an emulator may keep half.
jq --exit-status '.playersEntered == 4 and ([.players[].snapshots] | min) > 150' "$folder/report" >/dev/null ||
  fail 'A room on arm64 is slow:' "$folder/report"
