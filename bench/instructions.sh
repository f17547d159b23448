#!/usr/bin/env bash
# Instructions that a tick of the game takes outside the kernel, four players in the default arena.
# Usage: bench/instructions.sh [build folder]. Needs valgrind. The same on every run and machine of a
# kind, for one compiler.
set -euo pipefail
ticks="${1:-$(dirname "$0")/../build/release}/bench/ticks"
count=128
if [ ! -x "$ticks" ]; then
  echo "There is no $ticks. Build it first, or name the build folder." >&2
  exit 2
fi
if ! command -v valgrind >/dev/null; then
  echo 'valgrind is not installed.' >&2
  exit 2
fi

# Start-up cancels between a run and one of twice as many ticks.
instructions() {
  valgrind --tool=callgrind --callgrind-out-file=/dev/null "$ticks" "$1" "$2" "$3" 2>&1 >/dev/null |
    sed -n 's/.*Collected : //p'
}

echo 'instructions per tick  no inputs  two inputs of each player'
for pastime in standing walking wall sky; do
  printf '%-21s' "$pastime"
  for inputs in 0 2; do
    printf '  %9d' $((($(instructions "$pastime" $((2 * count)) $inputs) -
      $(instructions "$pastime" $count $inputs)) / count))
  done
  echo
done
