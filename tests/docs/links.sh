#!/usr/bin/env bash
# Every relative link and #anchor of the pages leads somewhere, in the tree and as installed.
# usage: links.sh BUILD_FOLDER SOURCE_FOLDER
set -euo pipefail

build=$(realpath "$1")
source=$(realpath "$2")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Prints "LINE TARGET" for each link and picture of a page, those in code aside.
links() {
  awk '
    /^ *```/ { code = !code }
    code { next }
    {
      gsub(/`[^`]*`/, "")
      while (match($0, /\]\([^) ]*/)) {
        print NR, substr($0, RSTART + 2, RLENGTH - 2)
        $0 = substr($0, RSTART + RLENGTH)
      }
    }' "$1"
}

# Prints the anchor of each heading of a page, as forges derive it from the words.
anchors() {
  awk '
    /^ *```/ { code = !code }
    !code && /^#+ / {
      sub(/^#+ +/, "")
      $0 = tolower($0)
      gsub(/[^a-z0-9 _-]/, "")
      gsub(/ /, "-")
      print $0 (seen[$0]++ ? "-" seen[$0] - 1 : "")
    }' "$1"
}

# dangling PAGE...: prints "PAGE:LINE: TARGET" for each link that leads nowhere.
dangling() {
  local page line target file
  for page in "$@"; do
    while read -r line target; do
      [[ $target =~ ^[a-z]+: ]] && continue
      file=$page
      [[ $target = \#* ]] || file=$(dirname "$page")/${target%%#*}
      if [ ! -e "$file" ] ||
        { [[ $target = *#* ]] && ! anchors "$file" | grep -qxF -- "${target#*#}"; }; then
        echo "$page:$line: $target"
      fi
    done < <(links "$page")
  done
}

cat >"$work/page.md" <<'END'
# A `b`, c
[x](#a-b-c) [x](page.md#a-b-c) [x](https://example.org/x#y) `[x](code)`
![x](none.png) [x](#none) [x](page.md#none) [x](none.md#a-b-c)
END
expected=$(printf '%s\n' "$work/page.md:3: "{none.png,#none,page.md#none,none.md#a-b-c})
[ "$(dangling "$work/page.md")" = "$expected" ] || {
  echo 'this test no longer sees which links dangle' >&2
  exit 1
}

cmake --install "$build" --component server --prefix "$work" >"$work/install.log"
installed=("$work"/share/doc/drench/*.md)
pages=("$source"/docs/*.md)
[ ${#installed[@]} -eq ${#pages[@]} ] || {
  echo "${#pages[@]} pages, of which ${#installed[@]} are installed" >&2
  exit 1
}
found=$(dangling "$source/README.md" "${pages[@]}" "${installed[@]}")
[ -z "$found" ] || {
  echo "$found" >&2
  exit 1
}
