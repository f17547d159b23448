#!/usr/bin/env bash
# What keepers publish keeps Prometheus's conventions; the alerts fire when they should, and they and the
# dashboard ask for nothing that is not published; a real Prometheus finds all rooms of a machine.
# usage: metrics.sh BUILD_FOLDER SOURCE_FOLDER. Exits with 77, after what can be tried, where tools or
# mount namespaces are missing.
set -euo pipefail

. "$(dirname "$0")/../skipping.sh"
skip_without promtool jq
build=$(realpath "$1")
source=$(realpath "$2")
published=$source/deploy/prometheus
# What it writes to /run stays apart from this machine's rooms.
mounts=$(readlink /proc/self/ns/mnt)
if [ "$(id -u)" -eq 0 ] && [ "${DRENCH_APART_FROM:-$mounts}" = "$mounts" ] && unshare --mount true 2>/dev/null; then
  DRENCH_APART_FROM=$mounts exec unshare --mount "$0" "$@"
fi

folder=$(mktemp -d)
processes=()
finish() {
  [ ${#processes[@]} -eq 0 ] || kill -KILL "${processes[@]}" 2>/dev/null || true
  wait 2>/dev/null
  rm -rf "$folder"
}
trap finish EXIT
fail() {
  echo "$1" >&2
  shift
  [ $# -eq 0 ] || cat "$@" >&2
  exit 1
}

# get PORT PATH
get() {
  exec 3<>"/dev/tcp/127.0.0.1/$1" || return 1
  printf 'GET %s HTTP/1.0\r\n\r\n' "$2" >&3
  sed '1,/^\r$/d' <&3
}
port=$((22000 + $$ % 5000))
for room in "$port" $((port + 1)); do
  "$build/drench-keeper" "$room" --metrics "$room" --agones off >"$folder/$room.log" 2>&1 &
  processes+=($!)
done
for room in "$port" $((port + 1)); do
  for _ in $(seq 100); do
    ! get "$room" /metrics 2>/dev/null | grep -qx 'drench_room_answering 1' || break
    sleep 0.1
  done
  get "$room" /metrics >"$folder/metrics" || fail 'a keeper has no metrics:' "$folder/$room.log"
  grep -qx 'drench_room_answering 1' "$folder/metrics" || fail 'a room does not answer:' "$folder/metrics"
done
# Its only label values appear with a failure.
{
  cat "$folder/metrics"
  printf '# HELP drench_keeper_agones_failures_total Calls.\n# TYPE drench_keeper_agones_failures_total counter\n'
  printf 'drench_keeper_agones_failures_total{call="ready"} 1\n'
} >"$folder/all-metrics"
promtool check metrics <"$folder/all-metrics" >"$folder/check.log" 2>&1 ||
  fail 'promtool check metrics:' "$folder/check.log"
[ ! -s "$folder/check.log" ] || fail 'promtool check metrics:' "$folder/check.log"

cp "$published/alerts.yml" "$(dirname "$0")/prometheus/alerts.test.yml" "$folder"
promtool check rules "$folder/alerts.yml" >"$folder/rules.log" 2>&1 || fail 'alerts:' "$folder/rules.log"
promtool test rules "$folder/alerts.test.yml" >"$folder/rules.log" 2>&1 || fail 'alerts:' "$folder/rules.log"
# Each alert is missed where it is off: for each there is a test that has it fire.
alerts=$(sed -n 's/^ *- alert: //p' "$folder/alerts.yml")
for alert in $alerts; do
  sed "/- alert: $alert\$/,/expr:/s/expr:.*/expr: vector(0) > 1/;/- alert: $alert\$/,/for:\|labels:/{/^ \{10\}/d}" \
    "$published/alerts.yml" >"$folder/alerts.yml"
  promtool check rules "$folder/alerts.yml" >"$folder/rules.log" 2>&1 || fail "$alert off:" "$folder/rules.log"
  ! promtool test rules "$folder/alerts.test.yml" >/dev/null 2>&1 || fail "no test has $alert fire"
done

# The dashboard's questions, as rules: with its variables filled in, they must parse.
jq -r '.panels[].targets[].expr' "$published/dashboard.json" >"$folder/questions"
[ "$(wc -l <"$folder/questions")" -ge 20 ] || fail 'the dashboard asks nearly nothing'
# shellcheck disable=SC2016
jq -n --rawfile questions "$folder/questions" '{groups: [{name: "dashboard", rules: [$questions |
  split("\n")[] | select(. != "") | gsub("\\$__rate_interval"; "5m") | gsub("\\$room"; ".*")] |
  to_entries | map({record: "question_\(.key)", expr: .value})}]}' >"$folder/questions.yml"
promtool check rules "$folder/questions.yml" >"$folder/rules.log" 2>&1 || fail 'dashboard:' "$folder/rules.log"
sed -n 's/^# TYPE \([^ ]*\) .*/\1/p' "$folder/all-metrics" | sort -u >"$folder/names"
sed 's/ALERTS//' "$published/alerts.yml" "$folder/questions" | grep -oE 'drench_[a-z_]+' |
  sed 's/_bucket$//' | sort -u >"$folder/asked"
comm -23 "$folder/asked" "$folder/names" >"$folder/unknown"
[ ! -s "$folder/unknown" ] || fail 'not published:' "$folder/unknown"
comm -13 "$folder/asked" "$folder/names" >"$folder/unused"
[ ! -s "$folder/unused" ] || fail 'neither alert nor dashboard asks for:' "$folder/unused"

promtool check config --syntax-only "$published/prometheus.yml" >"$folder/config.log" 2>&1 ||
  fail 'prometheus.yml:' "$folder/config.log"
command -v prometheus >/dev/null || skip 'prometheus is not installed'
[ "${DRENCH_APART_FROM:-$mounts}" != "$mounts" ] || skip 'no mount namespaces here'
mount -t tmpfs tmpfs /run
scrape=$published/drench-scrape
for wrong in '' x 5x -1 123456; do
  ! "$scrape" start "$wrong" 2>/dev/null || fail "drench-scrape takes the port '$wrong'"
done
for room in "$port" $((port + 1)) 7; do
  "$scrape" start "$room"
done
"$scrape" stop 7
"$scrape" stop 8
sed "s|/usr/share/drench/prometheus|$published|; s/scrape_interval: 15s/scrape_interval: 1s/" \
  "$published/prometheus.yml" >"$folder/prometheus.yml"
prometheus --config.file="$folder/prometheus.yml" --storage.tsdb.path="$folder/data" \
  --web.listen-address="127.0.0.1:$((port + 2))" >"$folder/prometheus.log" 2>&1 &
processes+=($!)
for _ in $(seq 200); do
  get $((port + 2)) '/api/v1/query?query=drench_room_answering' >"$folder/answer" 2>/dev/null || true
  [ "$(jq -r '.data.result | length' "$folder/answer" 2>/dev/null)" != 2 ] || break
  sleep 0.1
done
jq -r '.data.result[] | .metric.job + " " + .metric.room + " " + .metric.instance + " " + .value[1]' \
  "$folder/answer" | sort >"$folder/found" || fail 'Prometheus says:' "$folder/answer" "$folder/prometheus.log"
printf 'drench %d 127.0.0.1:%d 1\n' "$port" "$port" $((port + 1)) $((port + 1)) >"$folder/expected"
cmp -s "$folder/found" "$folder/expected" || fail 'Prometheus has not found the two rooms, but:' \
  "$folder/found" "$folder/answer" "$folder/prometheus.log"
