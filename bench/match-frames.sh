#!/usr/bin/env bash
# How long the window's frames take in a match: bench/match-frames.sh [RUNS] [SECONDS] [BUILD] [RECORDING]
# Each size in turn, RUNS times (5), SECONDS long (20), on a screen without a graphics card; prints the
# median of each run's percentiles. The match is played, with a room and three bots beside; or it is
# watched, if a RECORDING is named, and the same in every run. Needs Xvfb.
set -euo pipefail
cd "$(dirname "$0")/.."
runs=${1-5}
seconds=${2-20}
build=${3-build/release}
recording=${4-}
sizes=(1280x720 960x540)

folder=$(mktemp -d)
processes=()
finish() {
  kill "${processes[@]}" || true
  wait
  rm -rf "$folder"
} 2>/dev/null
trap finish EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

Xvfb -displayfd 3 -screen 0 1280x720x24 -nolisten tcp 3>"$folder/display" 2>/dev/null &
processes+=($!)
until [ -s "$folder/display" ]; do
  sleep 0.2
done
DISPLAY=:$(<"$folder/display")
export DISPLAY LIBGL_ALWAYS_SOFTWARE=1 SDL_AUDIODRIVER=dummy XDG_CONFIG_HOME=$folder

if [ -n "$recording" ]; then
  match=("$recording" --player 1)
else
  ./run.sh 0 --bots 3 >"$folder/room" &
  processes+=($!)
  until grep -q '^The system chose port' "$folder/room"; do
    sleep 0.2
  done
  port=$(sed -n 's/^The system chose port \([0-9]*\)\.$/\1/p' "$folder/room")
  # The bots chart the arena once, and join.
  sleep 15
  # Somebody who runs through the arena, turns and fires.
  for ((tick = 30; tick < 62 * seconds; tick += 40)); do
    echo "at $tick hold forward"
    [ $((tick % 3)) -ne 0 ] || printf 'at %d jump\n' "$tick"
    [ $((tick % 2)) -ne 0 ] || printf 'at %d hold fire\n' "$tick"
    for ((turn = 0; turn < 30; turn += 3)); do
      echo "at $((tick + turn)) turn $(((tick / 40 % 3 - 1) * 18)) 0"
    done
  done >"$folder/script"
  match=("localhost:$port" --name Bench --script "$folder/script")
fi

for ((run = 0; run < runs; ++run)); do
  for size in "${sizes[@]}"; do
    "$build/drench" "${match[@]}" --seconds "$seconds" --size "$size" --frame-times >>"$folder/$size"
  done
done

# median FILE WORD: of the numbers behind the word.
median() { sed -n "s/^[0-9]* frames:.* $2 \([0-9.]*\) ms.*/\1/p" "$1" | sort -g | sed -n "$(((runs + 1) / 2))p"; }
echo "size        p50 ms  p99 ms  longest ms   (medians of $runs runs of $seconds s)"
for size in "${sizes[@]}"; do
  printf '%-10s %7s %7s %11s\n' "$size" "$(median "$folder/$size" p50)" "$(median "$folder/$size" p99)" \
    "$(median "$folder/$size" longest)"
done
