#!/usr/bin/env bash
# What frames of a real match cost in the window: it walks, turns and fires in a room with three bots,
# drawn by software on a screen that nobody sees. Runs of each picture take turns; each figure is the
# median of its runs.
# Usage: bench/match.sh [build folder [runs [seconds of each]]]. Needs Xvfb.
set -euo pipefail
build=$(realpath "${1:-$(dirname "$0")/../build/release}")
runs=${2:-5}
seconds=${3:-20}
for program in drench drench-server drench-bots; do
  if [ ! -x "$build/$program" ]; then
    echo "There is no $build/$program. Build it first, or name the build folder." >&2
    exit 2
  fi
done
if ! command -v Xvfb >/dev/null; then
  echo 'Xvfb is not installed.' >&2
  exit 2
fi

work=$(mktemp -d)
stop() {
  # shellcheck disable=SC2046  # one process each
  kill $(jobs -p) 2>/dev/null || true
  wait
  rm -rf "$work"
}
trap stop EXIT

# Waits up to ten seconds for a line of a file that fits, and prints its number.
number_in() {
  local number
  for _ in $(seq 100); do
    number=$(sed -n "$2" "$1" | head -n 1)
    [ -z "$number" ] || break
    sleep 0.1
  done
  [ -n "$number" ] || { cat "$1" >&2; exit 1; }
  echo "$number"
}

Xvfb -displayfd 1 -screen 0 1280x720x24 -nolisten tcp >"$work/display" 2>"$work/xvfb" &
DISPLAY=:$(number_in "$work/display" 's/^\([0-9]*\)$/\1/p')
export DISPLAY LIBGL_ALWAYS_SOFTWARE=1 SDL_AUDIODRIVER=dummy

port=$((20000 + RANDOM % 10000))
"$build/drench-server" "$port" >"$work/room" 2>&1 &
"$build/drench-bots" "localhost:$port" --arena "$build/Resources/mapdata" --players 3 --quiet \
  >"$work/bots" 2>&1 &
# The bots chart the arena, unless they have done so before.
sleep "${DRENCH_CHARTING_SECONDS:-5}"

# Walks round, looks about and fires every other second, for two minutes.
awk 'BEGIN {
  print "at 30 hold forward"
  for (tick = 31; tick < 7500; ++tick) {
    print "at " tick " turn " int(7 * sin(tick / 90)) " " (tick % 120 < 60 ? 0 : tick % 2)
    if (tick % 124 == 0) print "at " tick " " (tick % 248 == 0 ? "hold fire" : "release fire")
    if (tick % 200 == 0) print "at " tick " jump"
  }
}' >"$work/script"

# One run: measure PICTURE SIZE
measure() {
  mkdir -p "$work/$1/drench"
  printf '[picture]\nquality = "%s"\n' "$1" >"$work/$1/drench/settings.toml"
  XDG_CONFIG_HOME="$work/$1" "$build/drench" "localhost:$port" --name Bench --size "$2" \
    --arena "$build/Resources/mapdata" --script "$work/script" --seconds "$seconds" --frame-times |
    sed -n -e 's/^.* frames: p50 \(.*\) ms, p99 \(.*\) ms, longest.*/\1\n\2/p' \
      -e 's/^processor.*: p50 \(.*\) ms, p99 \(.*\) ms, longest.*/\1\n\2/p' \
      -e 's/^draw calls: at most //p' -e 's/^first frame: after \(.*\) ms/\1/p' \
      -e 's/^memory: \(.*\) MiB.*/\1/p' | paste -sd ' ' >>"$work/$1-$2"
  # The room forgets the one who left before the next one comes.
  sleep 1
}

shown=('plain 1280x720' 'plain 960x540' 'full 1280x720' 'full 960x540')
for _ in $(seq "$runs"); do
  for each in "${shown[@]}"; do
    # shellcheck disable=SC2086  # two words
    measure $each
  done
done

echo "Load average before the last run ended: $(cut -d ' ' -f 1 /proc/loadavg)"
echo '| picture | p50 ms | p99 ms | processor p50 ms | p99 ms | draw calls | first frame ms | memory MiB |'
echo '|---|---:|---:|---:|---:|---:|---:|---:|'
for each in "${shown[@]}"; do
  file="$work/${each/ /-}"
  printf '| %s |' "${each/ /, }"
  for column in 1 2 3 4 5 6 7; do
    printf ' %s |' "$(cut -d ' ' -f "$column" "$file" | sort -n |
      awk '{ value[NR] = $1 } END { print value[int((NR + 1) / 2)] }')"
  done
  echo
done
