#!/usr/bin/env bash
# The image is small, and a room runs from it without privileges, on an arena that was mounted.
# usage: container.sh DRENCH_BOTS. Exits with 77 where there is no buildah or no root.
set -euo pipefail

. "$(dirname "$0")/../skipping.sh"
skip_without buildah
[ "$(id -u)" -eq 0 ] || skip 'only root can unpack an image for another user'
bots=$(realpath "$1")
cd "$(dirname "$0")/../.."
port=$((30000 + $$ % 10000))

folder=$(mktemp -d)
server=
runner=
finish() {
  # shellcheck disable=SC2086  # either may not have been started yet
  kill $server $runner 2>/dev/null || true
  wait
  rm -rf "$folder"
}
trap finish EXIT
# Nothing of the machine's own images is touched.
export CONTAINERS_STORAGE_CONF=$folder/storage.conf BUILDAH_ISOLATION=chroot
printf '[storage]\ndriver = "vfs"\ngraphroot = "%s/images"\nrunroot = "%s/run"\n' "$folder" "$folder" \
  >"$CONTAINERS_STORAGE_CONF"

fail() {
  echo "$1" >&2
  shift
  [ $# -eq 0 ] || cat "$@" >&2
  exit 1
}

deploy/container/build.sh drench >"$folder/build.log" 2>&1 ||
  fail 'The image cannot be built:' "$folder/build.log"
container=$(buildah from drench)
[ "$(buildah inspect --format '{{.OCIv1.Config.Entrypoint}} {{.OCIv1.Config.Cmd}}' "$container")" = \
  '[/drench-server] [5000]' ] || fail 'The image does not start a room on port 5000.'
root=$(buildah mount "$container")
bytes=$(du --summarize --bytes "$root" | cut -f1)
[ "$bytes" -lt $((4 << 20)) ] || fail "The image has $bytes bytes."
[ "$(cd "$root" && find . -type f | sort | tr '\n' ' ')" = './Resources/mapdata ./drench-server ' ] ||
  fail 'The image holds something else than the server and its arena.'

# falls LOG [VOLUME...]: whether a player falls out of the world within two seconds. Then the arena has
# no floor.
falls() {
  local log=$1 status=0
  shift
  : >"$log"
  buildah run "$@" "$container" -- /drench-server "$port" >"$log" 2>&1 &
  runner=$!
  for _ in $(seq 100); do
    if grep -q listening "$log" || ! kill -0 "$runner" 2>/dev/null; then
      break
    fi
    sleep 0.1
  done
  server=$(pgrep -xf "/drench-server $port") || fail 'No room starts from the image:' "$log"
  [ "$(awk '/^Uid/ { print $2 }' "/proc/$server/status")" = 65534 ] || fail 'The room runs as root.'
  printf 'at 120 leave\n' >"$folder/script"
  timeout 30 "$bots" "127.0.0.1:$port" --script "$folder/script" --record "$folder/record.csv" \
    >"$folder/player.log" 2>&1 || fail 'Nobody can play in the container:' "$folder/player.log" "$log"
  kill "$server"
  wait "$runner" || true
  server=
  runner=
  awk -F, 'END { exit !($3 < 0) }' "$folder/record.csv" || status=1
  return $status
}

if falls "$folder/own.log"; then
  fail 'The arena of the image has no floor.'
fi
echo '1 1 1 0 0' >"$folder/mapdata"
chmod 644 "$folder/mapdata"
falls "$folder/mounted.log" --volume "$folder/mapdata:/Resources/mapdata:ro" ||
  fail 'The room does not play the arena that was mounted.'
buildah rm "$container" >/dev/null
