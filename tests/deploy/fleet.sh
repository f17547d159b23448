#!/usr/bin/env bash
# The manifests of the fleet are built and accepted by kubectl, fit together, and match the keeper; a room
# is asked for and told.
# usage: fleet.sh DRENCH_MAP KEEPER. KEEPER may be empty where it was not built. Definitions of Agones'
# resources in the folder DRENCH_AGONES_DEFINITIONS are held against the manifests too.
# Exits with 77 where tools are missing.
set -euo pipefail

. "$(dirname "$0")/../skipping.sh"
skip_without kubectl python3 jq
python3 -c 'import jsonschema, yaml' 2>/dev/null || skip "Python's jsonschema and yaml are not installed"
map=$(realpath "$1")
keeper=${2:+$(realpath "$2")}
tests=$(realpath "$(dirname "$0")/fleet")
deploy=$(realpath "$(dirname "$0")/../../deploy")

folder=$(mktemp -d)
server=
finish() {
  [ -z "$server" ] || kill "$server" 2>/dev/null || true
  rm -rf "$folder"
}
trap finish EXIT
fail() {
  echo "$1" >&2
  shift
  [ $# -eq 0 ] || cat "$@" >&2
  exit 1
}
export KUBECONFIG=$folder/kubeconfig

cp -r "$deploy/fleet" "$folder/fleet"
for arena in "$folder"/fleet/arenas/*/; do
  "$map" build "$deploy/../arenas/$(basename "$arena").plan" -o "$arena/mapdata" 2>"$folder/map.log" ||
    fail 'An arena of the fleet cannot be built:' "$folder/map.log"
  # With its name and the like, a resource may have a megabyte.
  [ "$(stat -c %s "$arena/mapdata")" -lt 1000000 ] || fail "$arena does not fit into a config map."
done
definitions=()
[ -z "${DRENCH_AGONES_DEFINITIONS-}" ] || mapfile -t definitions < <(find "$DRENCH_AGONES_DEFINITIONS" -name '*.yaml')
python3 "$tests/manifests.py" "$folder/fleet" "$keeper" "${definitions[@]}"

# kubectl asks a cluster which kinds there are, and nothing else when it only pretends.
coproc discovery { exec python3 "$tests/discovery.py"; }
server=$discovery_PID
read -r port <&"${discovery[0]}"
accepts() {
  kubectl --server "http://127.0.0.1:$port" create --dry-run=client --validate=false --output name \
    --filename "$1" >"$folder/accepted" 2>"$folder/refused"
}
for overlay in machine regions; do
  kubectl kustomize "$folder/fleet/$overlay" >"$folder/$overlay.yaml"
  accepts "$folder/$overlay.yaml" || fail "kubectl refuses $overlay:" "$folder/refused"
  [ "$(wc -l <"$folder/accepted")" = "$(grep -c ^kind: "$folder/$overlay.yaml")" ] ||
    fail "kubectl overlooks something in $overlay:" "$folder/accepted"
done
accepts "$folder/fleet/allocation.yaml" || fail 'kubectl refuses the allocation:' "$folder/refused"
sed 's/^kind: FleetAutoscaler/kind: FleetAutoscaller/' "$folder/machine.yaml" >"$folder/wrong.yaml"
! accepts "$folder/wrong.yaml" || fail 'kubectl accepts a kind that there is not.'

# A room for friends, from kubectl's own reading of an answer like a cluster's.
mkdir "$folder/bin"
cat >"$folder/bin/kubectl" <<END
#!/bin/sh
cat >"$folder/asked.yaml"
exec $(command -v kubectl) --server http://127.0.0.1:$port create -o "\$5" -f "$folder/answer.yaml" --dry-run=client --validate=false
END
chmod +x "$folder/bin/kubectl"
room_for() { PATH=$folder/bin:$PATH "$folder/fleet/room-for" "$@" >"$folder/room" 2>"$folder/errors"; }
answer() {
  printf '%s\n' 'apiVersion: allocation.agones.dev/v1' 'kind: GameServerAllocation' 'metadata: { name: a }' \
    "status: $1" >"$folder/answer.yaml"
}
answer '{ state: Allocated, address: 203.0.113.5, ports: [{ name: play, port: 7123 }] }'
room_for 3 drench-europe || fail 'No room for three friends:' "$folder/errors"
[ "$(cat "$folder/room")" = drench://203.0.113.5:7123 ] || fail 'The room is told otherwise:' "$folder/room"
[ "$(grep -c 'agones.dev/fleet: drench-europe$' "$folder/asked.yaml")" = 2 ] &&
  grep -q 'minAvailable: 3$' "$folder/asked.yaml" || fail 'Another room is asked for:' "$folder/asked.yaml"
answer '{ state: UnAllocated }'
! room_for 2 || fail 'A room is told where there is none:' "$folder/room"
grep -q 'UnAllocated' "$folder/errors" || fail 'Nothing says why there is no room:' "$folder/errors"
for wrong in '' 0 5 two '2 a;b'; do
  # shellcheck disable=SC2086
  ! room_for $wrong || fail "A room for '$wrong' is asked for."
done
