#!/usr/bin/env bash
# The image is small and the same wherever it is built, and a room runs from it with its keeper, without
# privileges, on an arena that was mounted; the one for arm64 under qemu-user. The firewall's image loads it.
# usage: container.sh DRENCH_BOTS. Exits with 77 where there is no buildah or no root. What is for arm64 is
# left out where qemu, the compiler or the libraries that deploy/debian/build.sh --arm64 unpacks are missing.
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

arm64=
if command -v aarch64-linux-gnu-g++ qemu-aarch64 >/dev/null && [ -d build/sysroot-arm64 ]; then
  arm64=--arm64
fi
deploy/container/build.sh $arm64 drench >"$folder/build.log" 2>&1 ||
  fail 'The image cannot be built:' "$folder/build.log"

# From a copy elsewhere, with the libraries as they are.
mkdir -p "$folder/copy/build"
git ls-files -z --cached --others --exclude-standard | tar --null --files-from - --create | tar -x -C "$folder/copy"
cp -r build/static-* build/firewall-* "$folder/copy/build"
cp build/firewall-*.wanted "$folder/copy/build"
"$folder/copy/deploy/container/build.sh" copy >"$folder/build.log" 2>&1 ||
  fail 'The image cannot be built from a copy:' "$folder/build.log"
files_of() { (cd "$(buildah mount "$1")" && find . -type f -exec sha256sum {} + | sort); }
for image in drench drench-firewall; do
  own=$(buildah from "$image")
  other=$(buildah from "${image/drench/copy}")
  diff <(files_of "$own") <(files_of "$other") >"$folder/files" || fail "$image is another elsewhere:" "$folder/files"
  # The name is the only difference.
  layers() { buildah inspect --format '{{.OCIv1.RootFS.DiffIDs}} {{.OCIv1.Created}}' "$1"; }
  [ "$(layers "$own")" = "$(layers "$other")" ] || fail "$image has other layers elsewhere."
  buildah rm "$own" "$other" >/dev/null
done

container=$(buildah from drench)
about() { buildah inspect --format "$1" "$container"; }
[ "$(about '{{.OCIv1.Config.Entrypoint}} {{.OCIv1.Config.Cmd}} {{.OCIv1.Config.User}}')" = \
  '[/drench-keeper] [5000] 65534:65534' ] || fail 'The image does not start a room on port 5000 as nobody.'
[ "$(about '{{index .OCIv1.Config.Labels "org.opencontainers.image.version"}}')" = \
  "$(sed -n 's/^project(drench VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)" ] || fail 'The image has no version.'
root=$(buildah mount "$container")
bytes=$(du --summarize --bytes "$root" | cut -f1)
[ "$bytes" -lt $((8 << 20)) ] || fail "The image has $bytes bytes."
[ "$(cd "$root" && find . -type f | sort | tr '\n' ' ')" = './Resources/mapdata ./drench-keeper ./drench-server ' ] ||
  fail 'The image holds something else than the server, its keeper and its arena.'

# falls LOG [VOLUME...]: whether a player falls out of the world within two seconds. Then the arena has
# no floor.
falls() {
  local log=$1 status=0
  shift
  : >"$log"
  buildah run "$@" "$container" -- /drench-keeper "$port" >"$log" 2>&1 &
  runner=$!
  for _ in $(seq 100); do
    if grep -q listening "$log" || ! kill -0 "$runner" 2>/dev/null; then
      break
    fi
    sleep 0.1
  done
  server=$(pgrep -xf "/drench-keeper $port") || fail 'No room starts from the image:' "$log"
  [ "$(awk '/^Uid/ { print $2 }' "/proc/$server/status")" = 65534 ] || fail 'The room runs as root.'
  printf 'at 120 leave\n' >"$folder/script"
  timeout 30 "$bots" "127.0.0.1:$port" --script "$folder/script" --record "$folder/record.csv" \
    >"$folder/player.log" 2>&1 || fail 'Nobody can play in the container:' "$folder/player.log" "$log"
  kill "$server"
  wait "$runner" || fail 'The keeper does not end its empty room:' "$log"
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

if unshare --net nft list ruleset 2>/dev/null; then
  container=$(buildah from drench-firewall)
  # As its pod would start it, which is not what buildah does.
  start=$(buildah inspect --format '{{range .OCIv1.Config.Entrypoint}}{{.}} {{end}}' "$container")
  # shellcheck disable=SC2016,SC2086
  rules=$(unshare --net sh -c 'chroot "$@" && nft list set inet drench named_rooms' - \
    "$(buildah mount "$container")" $start) || fail 'The firewall of the image does not load.'
  [[ $rules = *'{ 5000 }'* ]] || fail "The firewall of the image guards another port: $rules"
  buildah rm "$container" >/dev/null
fi

[ -n "$arm64" ] || exit 0
container=$(buildah from --pull=never localhost/drench:arm64)
[ "$(about '{{.OCIv1.Architecture}}')" = arm64 ] || fail 'The image for arm64 does not say so.'
root=$(buildah mount "$container")
qemu-aarch64 "$root/drench-keeper" --version >"$folder/version" || fail 'The keeper does not run on arm64.'
# Without the keeper, which would have to start a program for arm64 by itself.
qemu-aarch64 "$root/drench-server" "$port" >"$folder/arm64.log" 2>&1 &
server=$!
for _ in $(seq 100); do
  ! grep -q listening "$folder/arm64.log" || break
  sleep 0.1
done
timeout 60 "$bots" "127.0.0.1:$port" --players 4 --seconds 5 --seed 1 --json --quiet >"$folder/report" ||
  fail 'Nobody can play in the room of the image for arm64:' "$folder/arm64.log"
grep -q '"playersEntered": *4' "$folder/report" || fail 'Not everybody came in on arm64:' "$folder/report"
