#!/usr/bin/env bash
# What arenas/plan-to-mapdata says of broken plans: where, what stands there, what is allowed. It
# then writes nothing and exits with status 1.
set -euo pipefail
cd "$(dirname "$0")/.."

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
plan=$folder/broken.plan
failures=0

good='arena Small
size 2 1 2
legend
. 0 air
g 1 ground
row 0
gg
g.'

# refuses NAME SED_SCRIPT MESSAGE: the good plan, broken by sed, is refused with this message.
refuses() {
  local output errors status=0
  sed "$2" <<<"$good" >"$plan"
  output=$(arenas/plan-to-mapdata "$plan" 2>"$folder/errors") || status=$?
  errors=$(<"$folder/errors")
  if [ $status -ne 1 ] || [ -n "$output" ] || [ "$errors" != "$plan:$3" ]; then
    printf '%s:\n  status %s, output "%s"\n  said     %s\n  expected %s\n' \
      "$1" "$status" "$output" "$errors" "$plan:$3" >&2
    failures=$((failures + 1))
  fi
}

printf '%s\n' "$good" >"$plan"
expected=$'2 1 2\n 1 1 1 1\n 1 1 0 0'
if [ "$(arenas/plan-to-mapdata "$plan")" != "$expected" ]; then
  echo 'the good plan is not built as it should be' >&2
  failures=1
fi

refuses 'a misspelt keyword' '1s/arena/arean/' \
  '1: "arean Small" where "arena <name>" is allowed'
refuses 'a size that is no number' '2s/1/x/' \
  '2: "size 2 x 2" where "size <columns> <rows> <depth>" is allowed, each from 1 to 9999'
refuses 'no legend' '3d' \
  '3: ". 0 air" where "legend" is allowed'
refuses 'a value used twice' '5s/1/0/' \
  '5: cellValue 0 is air already; each cellValue is allowed once'
refuses 'solid air' '4s/air/void/' \
  '4: void with cellValue 0; air has 0, and what is solid has 1 or more'
refuses 'a row too early' '6s/0/1/' \
  '6: "row 1" where row 0 is the next allowed'
refuses 'an unknown material' '7s/gg/g?/' \
  '7: "?" in column 1 of row 0; the legend allows . g'
refuses 'a line too long' '7s/gg/ggg/' \
  '7: 3 characters in depth index 0 of row 0; 2 are allowed'
refuses 'a line too few' '8d' \
  '7: the end inside row 0; its 2 lines are allowed there, and 1 stand so far'
refuses 'no row at all' '6,8d' \
  '5: the end where "row 0" is allowed; rows 0 to 0 must stand'
refuses 'a row too many' '$a row 1' \
  '9: "row 1" after the last; rows 0 to 0 are allowed'
exit $((failures > 0))
