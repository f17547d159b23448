#!/usr/bin/env bash
# .ci/check-arrows.sh refuses each way to break the house's arrows, and says where: usage arrows.sh
# SOURCE_FOLDER. Tried on a small tree of its own, under the table of the maintainers' page.
set -euo pipefail
root=$1
if ! command -v git >/dev/null; then
  echo 'git is not installed.' >&2
  exit 77
fi

tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT

# A tree that keeps every rule, with an arrow to one module of another room among them.
build_tree() {
  rm -rf "${tree:?}"/* "$tree/.git"
  mkdir -p "$tree"/{docs,src,client,arena/picture}
  git -C "$tree" init --quiet
  cp "$root/docs/maintaining.md" "$tree/docs/"
  echo '#include <netinet/in.h>' >"$tree/src/NetworkInfo.h"
  echo '#include "NetworkInfo.h"' >"$tree/src/Player.h"
  echo '#include "Player.h"' >"$tree/src/Server.h"
  echo '#include "src/Player.h"' >"$tree/client/Session.h"
  echo '#include "client/Session.h"' >"$tree/client/Session.cpp"
  echo '#include "src/Player.h"' >"$tree/arena/Map.h"
  echo '#include "arena/Map.h"' >"$tree/arena/picture/Picture.h"
}

check() {
  "$root/.ci/check-arrows.sh" "$tree" 2>&1
}

# refuses WHAT MESSAGE: the tree as it is now fails the check, which says so in a line like that.
refuses() {
  local said
  if said=$(check); then
    echo "$1: accepted" >&2
    exit 1
  fi
  if ! grep -qE "$2" <<<"$said"; then
    printf '%s: refused, but for another reason:\n%s\n' "$1" "$said" >&2
    exit 1
  fi
  build_tree
}

build_tree
if ! said=$(check); then
  printf 'a tree that keeps the rules is refused:\n%s\n' "$said" >&2
  exit 1
fi

echo '#include "src/Server.h"' >>"$tree/client/Session.cpp"
refuses 'a call of the server' '^client/Session\.cpp:2: client may not include src/Server\.h$'

echo '#include <src/Server.h>' >>"$tree/client/Session.cpp"
refuses 'a call of the server in angle brackets' \
  '^client/Session\.cpp:2: client may not include src/Server\.h$'

echo '#include "Server.h"' >>"$tree/src/Player.h"
refuses 'a game that knows its room' '^src/Player\.h:2: game may not include src/Server\.h$'

echo '#include "arena/picture/Picture.h"' >>"$tree/arena/Map.h"
refuses 'an arrow upwards' '^arena/Map\.h:2: arena may not include arena/picture/Picture\.h$'

echo '#include "Session.h"' >"$tree/client/Session.cpp"
refuses 'a name that is not from the root' '^client/Session\.cpp:1: "Session\.h" is not named from'

echo '#include "../src/Player.h"' >"$tree/client/Session.cpp"
refuses 'a relative name' '^client/Session\.cpp:1: "\.\./src/Player\.h" is not named from the root$'

echo '#include "client/Missing.h"' >"$tree/client/Session.cpp"
refuses 'a header that is not there' '^client/Session\.cpp:1: "client/Missing\.h" is not named from'

mkdir "$tree/shed"
echo '#include "src/Player.h"' >"$tree/shed/Tool.cpp"
refuses 'a folder that is no room' '^shed/Tool\.cpp:1: lies in no room of the table$'

echo '#include "client/Session.h"' >"$tree/client/Clock.h"
echo '#include "client/Clock.h"' >>"$tree/client/Session.h"
refuses 'a circle of two modules' 'loop'

echo '#include "client/Clock.h"' >>"$tree/client/Session.h"
echo '#include "client/Names.h"' >"$tree/client/Clock.h"
echo '#include "client/Session.h"' >"$tree/client/Names.h"
refuses 'a circle of three modules' 'loop'

sed -i '/^| `lag` |/d' "$tree/docs/maintaining.md"
refuses 'a room missing in the table' 'no row for the room lag$'

sed -i 's/^| `lag` |.*/&\n| `shed` | `game` |/' "$tree/docs/maintaining.md"
refuses 'a room too many in the table' 'no room is called shed$'
