#!/usr/bin/env bash
# A room as the service runs it, for some time: four bots play in it, two of them over a bad line, a
# stranger sends it whatever comes to hand, and now and then it is killed. What came of it is written
# to a folder: report.txt, soak.png, and what they were made of.
# usage: ./soak.sh MINUTES [FOLDER]    (default build/soak; root, so that the room can be confined)
set -euo pipefail
cd "$(dirname "$0")"

usage() { echo 'usage: ./soak.sh MINUTES [FOLDER]    (1 to 10000 minutes; default folder build/soak)'; }
misused() {
  usage >&2
  exit 2
}
if [ "${1-}" = --help ]; then
  usage
  exit
fi
[[ $# -ge 1 && $# -le 2 && $1 =~ ^[1-9][0-9]{0,4}$ && $1 -le 10000 ]] || misused
seconds=$((60 * $1))
folder=$(realpath -m "${2:-build/soak}")
if [ -n "${2-}" ] && [ -e "$folder" ]; then
  echo "$folder is there already; name a new folder." >&2
  exit 2
fi
if [ "$(id -u)" -ne 0 ]; then
  echo 'Only root can run the room as another user, as the service does.' >&2
  exit 2
fi

. .ci/building.sh
need_writable_checkout
need_build_tools
need_tool_libraries
need libseccomp libseccomp-dev has_header seccomp.h
need GoogleTest libgtest-dev has_header gtest/gtest.h
need jq jq command -v jq
need script bsdutils command -v script
need gnuplot gnuplot-nox command -v gnuplot
install_missing
echo 'Building ...'
configure release
build release drench-server drench-bots drench-lag drench-confined

port=$((20000 + $$ % 10000))
rm -rf "$folder"
mkdir -p "$folder"
prefix=$(mktemp -d)
chmod 755 "$prefix"
cmake --install build/release --prefix "$prefix" >"$folder/install.log"
unit=$prefix/lib/systemd/system/drench@.service
. tests/deploy/control-groups.sh
make_group "drench-soak-$$" "$unit"

start=$(date +%s.%N)
elapsed() { awk -v now="$(date +%s.%N)" -v start="$start" 'BEGIN { printf "%.3f\n", now - start }'; }

stop() {
  touch "$prefix/over"
  # shellcheck disable=SC2046  # one word for each process
  kill $(jobs -p) 2>/dev/null || true
  [ ! -s "$prefix/room" ] || kill "$(cat "$prefix/room")" 2>/dev/null || true
  wait 2>/dev/null || true
  remove_group
  rm -rf "$prefix"
}
trap stop EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

# What systemd does by Restart=always and RestartSec=200ms.
keep_room() {
  while [ ! -e "$prefix/over" ]; do
    (enter_group && exec build/release/drench-confined "$unit" "$port") > >(
      while IFS= read -r line; do echo "$(elapsed) $line"; done >>"$folder/room.log"
    ) &
    echo $! >"$prefix/room"
    wait $! 2>/dev/null || true
    elapsed >>"$folder/ends"
    sleep 0.2
  done
}

sample_memory() {
  while sleep 1; do
    echo "$(elapsed) $(awk '/^VmRSS/ { print $2 }' "/proc/$(cat "$prefix/room")/status" || echo 0)"
  done >"$folder/memory" 2>/dev/null
}

# Datagrams of up to 600 random bytes, some of which begin like records.
send_rubbish() {
  local codes=(k m t x u '' '' '')
  while sleep 0.05; do
    { printf '%s' "${codes[RANDOM % ${#codes[@]}]}" && head -c $((RANDOM % 600)) /dev/urandom; } |
      dd bs=1024 count=1 iflag=fullblock status=none >"/dev/udp/127.0.0.1/$port" || true
  done 2>/dev/null
}

kill_now_and_then() {
  while :; do
    elapsed >>"$folder/kills"
    kill -KILL "$(cat "$prefix/room")" 2>/dev/null || true
    sleep $((20 + RANDOM % 80))
  done
}

# On a terminal of their own, bots tell their rate each second.
bots() {
  script --quiet --return --flush /dev/null --command "build/release/drench-bots 127.0.0.1:$1 \
    --players 2 --skill 0.7 --seconds $seconds --name $2 --json >$(printf %q "$folder/$2.json")" |
    while IFS= read -r -d $'\r' line; do echo "$(elapsed) $line"; done >"$folder/$2.live"
}

: >"$folder/kills"
: >"$folder/ends"
keep_room &
sample_memory &
build/release/drench-lag $((port + 10000)) "127.0.0.1:$port" --delay 40 --jitter 20 --loss 2% \
  --burst 3 --duplicate 1% --reorder 1% --seed 1 --json >"$folder/lag.json" 2>"$folder/lag.log" &
send_rubbish &
bots "$port" Near &
near=$!
bots $((port + 10000)) Far &
far=$!
sleep 15
kill_now_and_then &
show_what_happens() {
  while [ "$width" -gt 0 ] && [ ! -e "$prefix/over" ]; do
    show_for_now "$(elapsed | cut -d. -f1) of $seconds s, $(wc -l <"$folder/kills") kills"
    sleep 1
  done
}
echo "Playing for $1 minutes ..."
show_what_happens &
watcher=$!
wait "$near"
wait "$far"
touch "$prefix/over"
wait "$watcher"
show_for_now ''

# Seconds, and states a second of each player while both play.
for name in Near Far; do
  awk '/ticks\/s.*playing 2 of 2/ { print $1, $2 + 0 }' "$folder/$name.live" >"$folder/$name.rates"
done

# Only the bots' own joins count: rubbish may be a join too, of whatever name.
LC_ALL=C awk -v kills="$folder/kills" '
  BEGIN { while ((getline at < kills) > 0) kill[++count] = at }
  { while (last < count && $1 >= kill[last + 1]) ++last }
  /Server is listening/ && last && !(last in listens) { listens[last] = $1 - kill[last] }
  / (Near|Far) [12] joined$/ {
    if (!last || (last, $2, $3) in back) next
    back[last, $2, $3] = 1
    if (++joins[last] == 1) first[last] = $1 - kill[last]
    if (joins[last] == 4) four[last] = $1 - kill[last]
  }
  END { for (i = 1; i <= count; ++i) print kill[i], listens[i], first[i], four[i] }' "$folder/room.log" \
  >"$folder/recoveries"

{
  echo "$1 minutes, $(wc -l <"$folder/kills") kills, $(wc -l <"$folder/ends") ends"
  echo
  echo 'seconds from a kill until   median  longest'
  words=('the room listens again' 'the first player is back' 'all four play again')
  for column in 2 3 4; do
    what=${words[column - 2]}
    awk -v column=$column 'NF >= column { print $column }' "$folder/recoveries" | sort -n |
      awk -v what="$what" '{ v[NR] = $1 } END { if (NR) printf "%-26s %7.2f  %7.2f\n", what, v[int((NR + 1) / 2)], v[NR] }'
  done
  echo
  echo '      states/s  5 % below  received  missed  gap p50  gap p99  longest  round trip ms'
  for name in Near Far; do
    echo "$name $(sort -n -k 2 "$folder/$name.rates" | awk '{ v[NR] = $2 } END { print v[int((NR + 1) / 2)], v[int(NR / 20) + 1] }') $(
      jq -r '.total | [.snapshots, .snapshotsMissed, .gapMilliseconds.p50, .gapMilliseconds.p99,
        .gapMilliseconds.max, .roundTripMilliseconds] | @tsv' "$folder/$name.json"
    )"
  done | awk '{ printf "%-5s %8.1f  %9.1f  %8d  %6d  %7.1f  %7.1f  %7.1f  %13.2f\n", $1, $2, $3, $4, $5, $6, $7, $8, $9 }'
  echo
  awk '$2 > 0 { v[++n] = $2 } END { printf "memory in KiB: first %d, last %d", v[1], v[n]; for (i in v) if (v[i] > most) most = v[i]; print ", most " most }' \
    "$folder/memory"
} | tee "$folder/report.txt"

gnuplot -e "folder='$folder'; minutes=$1" - <<'GNUPLOT'
set terminal pngcairo size 1400,900 font 'sans,13' background '#ffffff'
set output folder.'/soak.png'
set border 3 linecolor '#666666'
set tics nomirror textcolor '#333333'
set grid ytics linecolor '#dddddd' linetype 1
set key outside above right horizontal textcolor '#333333'
set multiplot layout 3,1
set lmargin 8
set xrange [0:minutes]
set ylabel 'states a second'
set yrange [0:80]
plot folder.'/Near.rates' using ($1/60):2 with points pointtype 7 pointsize 0.3 linecolor '#2368b5' title 'of each player nearby', \
     folder.'/Far.rates' using ($1/60):2 with points pointtype 7 pointsize 0.3 linecolor '#d9822b' title 'over the bad line'
set ylabel 'MiB resident'
set yrange [0:6]
plot folder.'/memory' using ($1/60):($2/1024) with lines linecolor '#2368b5' title 'memory of the room'
set ylabel 'seconds after a kill'
set yrange [0:*]
set xlabel 'minutes'
plot folder.'/recoveries' using ($1/60):2 with impulses linewidth 4 linecolor '#9aa5b1' title 'the room listens again', \
     '' using ($1/60):4 with points pointtype 7 linecolor '#2368b5' title 'all four play again'
GNUPLOT
echo "Written to $folder"
