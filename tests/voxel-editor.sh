#!/usr/bin/env bash
# Maps go through a real voxel editor, Debian's goxel, and come back as they were; so do its files.
# usage: voxel-editor.sh DRENCH_MAP. Exits with 77 where the editor or its display is missing.
set -euo pipefail

. "$(dirname "$0")/skipping.sh"
skip_without goxel xvfb-run xauth

drench_map=$(realpath "$1")
cd "$(dirname "$0")/.."
data=$PWD/tests/data
default_arena=$PWD/Resources/mapdata

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
# The editor keeps its settings there.
export HOME=$folder XDG_CONFIG_HOME=$folder
failures=0

# edit FROM TO: opens a file in the editor and exports it as another.
edit() {
  rm -f "$2"
  if ! timeout --kill-after=5 60 xvfb-run -a goxel "$1" --export "$2" >editor.log 2>&1 ||
    [ ! -s "$2" ]; then
    echo "the editor makes no $2 of $1:" >&2
    cat editor.log >&2
    exit 1
  fi
}

# words FILE: one on each line.
words() {
  tr -s '[:space:]' '\n' <"$1" | sed '/^$/d'
}

# same NAME FILE FILE: both hold the same words, however they are laid out.
same() {
  if ! cmp -s <(words "$2") <(words "$3"); then
    echo "$1: $2 and $3 differ; they begin with" >&2
    head -qn1 "$2" "$3" >&2
    failures=$((failures + 1))
  fi
}

# comes_back NAME MAPDATA: a map that reaches its sides (the editor cuts off empty margins) is the
# same after the editor has read and written it, as a voxel file and as text.
comes_back() {
  "$drench_map" export "$2" -o out.vox >/dev/null
  edit out.vox edited.vox
  "$drench_map" import edited.vox -o edited >/dev/null
  same "$1, as a voxel file" "$2" edited
  edit out.vox out.txt
  edit out.txt edited.vox
  "$drench_map" import edited.vox -o edited >/dev/null
  same "$1, as text" "$2" edited
}

# cubes FIRST LAST: a row of solid cubes, one of each of these cellValues.
cubes() {
  echo "1 1 $(($2 - $1 + 1))"
  seq -f ' 1 %g' "$1" "$2"
}

# byte NUMBER, int32 NUMBER: as they stand in a file; the number is below 65536.
byte() {
  printf '%b' "\\x$(printf %02x "$1")"
}
int32() {
  byte $(($1 & 255))
  byte $(($1 >> 8))
  printf '\0\0'
}

# default_colours INDEX...: a row of voxels in these colours of the default palette.
default_colours() {
  local x=0 index
  printf 'VOX \x96\0\0\0MAIN\0\0\0\0'
  int32 $((40 + 4 * $#))
  printf 'SIZE\x0c\0\0\0\0\0\0\0'
  int32 $#
  printf '\x01\0\0\0\x01\0\0\0'
  printf XYZI
  int32 $((4 + 4 * $#))
  printf '\0\0\0\0'
  int32 $#
  for index; do
    byte $((x++))
    printf '\0\0'
    byte "$index"
  done
}

comes_back 'the default arena' "$default_arena"

# The editor takes in 254 colours and mixes some of more.
cubes 1 128 >low
cubes 128 255 >high
comes_back 'cellValues from 1 to 128' low
comes_back 'cellValues from 128 to 255' high

# Cubes at (0, 0, 0), (1, 0, 0), (0, 2, 0) and (0, 0, 3) of 2 columns, 3 rows and 4 of depth.
echo '2 3 4
 1 1 0 0 0 0 1 2
 0 0 0 0 0 0 0 0
 1 3 0 0 0 0 0 0
 1 4 0 0 0 0 0 0
 0 0 0 0 0 0 0 0
 0 0 0 0 0 0 0 0' >axes
comes_back 'a map without symmetry' axes
# The editor centres what it reads, so the places count from the lowest.
printf '%s\n' '0 0 0' '0 3 0' '0 3 2' '1 3 0' >expected
grep -v '^#' out.txt | awk '
  { x[NR] = $1; y[NR] = $2; z[NR] = $3 }
  NR == 1 || $1 < left { left = $1 }
  NR == 1 || $2 < front { front = $2 }
  NR == 1 || $3 < floor { floor = $3 }
  END { for (i = 1; i <= NR; ++i) print x[i] - left, y[i] - front, z[i] - floor }' | sort >found
same 'the voxels of a map without symmetry' expected found

# What the editor makes of the stored texts today is what it made when they were stored.
for name in goxel goxel-default-palette; do
  edit "$data/$name.txt" today.vox
  "$drench_map" import today.vox -o today >/dev/null
  "$drench_map" import "$data/$name.vox" -o stored >/dev/null
  same "$name" stored today
done

# A file without a palette means the same to the editor, which writes one as soon as the last colour
# is used, and to us: in the cubes and in what is said of the colours.
for last in 128 254; do
  # shellcheck disable=SC2046
  default_colours $(seq $((last - 127)) "$last") 255 >colours.vox
  "$drench_map" import colours.vox -o map >said 2>&1
  mv map ours
  mv said ours.said
  edit colours.vox edited.vox
  grep -q RGBA edited.vox
  mv edited.vox colours.vox
  "$drench_map" import colours.vox -o map >said 2>&1
  same "default colours up to $last" ours map
  same "what is said of default colours up to $last" ours.said said
done

exit $((failures > 0))
