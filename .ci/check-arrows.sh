#!/usr/bin/env bash
# Holds every include against the table of arrows in docs/maintaining.md, and looks for circles between
# modules: .ci/check-arrows.sh [ROOT]
set -euo pipefail
cd "${1:-$(dirname "$0")/..}"

rooms='common game room client client/recording arena arena/picture replay bots lag keeper window game/render game/ui tools bench tests'

# Prints "FILE:LINE:INCLUDED" for each include in quotes, or of a room in angle brackets; in src/, which
# includes from its own folder, INCLUDED too is named from the root.
includes() {
  git ls-files --cached --others --exclude-standard '*.h' '*.cpp' ':!examples' |
    xargs grep -nE '^ *# *include *("|<(src|common|client|arena|replay|bots|lag|keeper|game|tools|bench|tests)/)' /dev/null |
    sed -E 's/^([^:]*:[0-9]+):[^"<]*["<]([^">]*)[">].*/\1:\2/
            s|^(src/[^:]*:[0-9]+):([^/]*)$|\1:src/\2|'
}

includes | awk -F: -v rooms="$rooms" '
  # The room of a file. src/ holds two: what only the server does, and the game. The folder game/ is the
  # window.
  function room_of(file) {
    if (file ~ /^src\/(Server|NetworkInfo|main)\./) return "room"
    if (file ~ /^src\//) return "game"
    if (file ~ /^arena\/picture\//) return "arena/picture"
    if (file ~ /^client\/recording\//) return "client/recording"
    if (file ~ /^game\/(render|ui)\//) { sub(/\/[^\/]*$/, "", file); return file }
    if (file ~ /^game\//) return "window"
    sub(/\/.*/, "", file)
    return file
  }
  function module_of(file) { sub(/\.[a-z]+$/, "", file); return file }

  BEGIN {
    count = split(rooms, names, " ")
    for (i = 1; i <= count; ++i) known[names[i]] = 1
    while ((getline line < "docs/maintaining.md") > 0) {
      if (line ~ /^\| room \| includes \|/) { reading = 1; continue }
      if (reading && line !~ /^\|/) break
      if (!reading || line ~ /^\|-/) continue
      split(line, cells, "|")
      gsub(/[ `]/, "", cells[2]); gsub(/[ `]/, "", cells[3])
      seen[cells[2]] = 1
      many = split(cells[3], targets, ",")
      for (i = 1; i <= many; ++i) allowed[cells[2], targets[i]] = 1
    }
    for (room in known)
      if (!(room in seen)) { print "docs/maintaining.md: no row for the room " room; bad = 1 }
    for (room in seen)
      if (!(room in known)) { print "docs/maintaining.md: no room is called " room; bad = 1 }
  }
  {
    file = $1; line = $2; target = $3
    from = room_of(file); to = room_of(target)
    if (!(from in known)) { print file ":" line ": lies in no room of the table"; bad = 1; next }
    if (!(to in known) || (getline ignored < target) < 0) {
      print file ":" line ": \"" target "\" is not named from the root"; bad = 1; next
    }
    close(target)
    if (from != to && !((from, to) in allowed) && !((from, module_of(target)) in allowed)) {
      print file ":" line ": " from " may not include " target; bad = 1
    }
  }
  END { exit bad }
' >&2

includes | sed -E 's/^([^:]*)\.[a-z]+:[0-9]+:(.*)\.[a-z]+$/\1 \2/' | tsort >/dev/null
