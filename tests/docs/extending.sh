#!/usr/bin/env bash
# Each list of files in docs/extending.md is complete and true: what it names holds what its section
# follows, and what holds that outside of tests, benches and arenas is named.
# usage: extending.sh SOURCE_FOLDER [PAGE]
set -euo pipefail
cd "$1"
page=${2-docs/extending.md}

# Every file of the tree that is no build's: there need not be a checkout.
files() {
  if [ -e .git ]; then
    git ls-files --cached --others --exclude-standard
  else
    find . -path ./build -prune -o -type f -printf '%P\n'
  fi
}

failures=0
sections=0
check_section() {
  local title=$1 pattern=$2 listed=$3 file
  sections=$((sections + 1))
  while read -r file; do
    if ! grep -qE "$pattern" "$file" 2>/dev/null; then
      echo "$page: $title: $file holds no $pattern" >&2
      failures=1
    fi
  done <<<"$listed"
  while read -r file; do
    if ! grep -qxF "$file" <<<"$listed"; then
      echo "$page: $title: $file is not named, and holds $pattern" >&2
      failures=1
    fi
  done < <(files | grep -E '^(src|client|common|arena|bots|lag|tools|deploy|docs)/' | grep -vxF "$page" |
    tr '\n' '\0' | xargs -0 grep -lE "$pattern" || true)
}

title= pattern= listed=
flush() {
  if [ -n "$pattern" ]; then
    check_section "$title" "$pattern" "$listed"
  fi
  pattern= listed=
}
while IFS= read -r line; do
  case $line in
    '## '*)
      flush
      title=${line#\#\# }
      ;;
    *'`git grep -E '*)
      pattern=${line#*git grep -E }
      pattern=${pattern%%\`*}
      pattern=${pattern% -- *}
      pattern=${pattern//\'/}
      ;;
    '| `'*)
      line=${line#| \`}
      listed+=${listed:+$'\n'}${line%%\`*}
      ;;
  esac
done <"$page"
flush
if [ "$sections" -lt 4 ]; then
  echo "$page: only $sections sections follow something" >&2
  failures=1
fi

# A page with a list too short, one with a file that has nothing to do with it, and one without lists
# must be refused.
if [ $# -eq 1 ]; then
  spoilt=$(mktemp)
  trap 'rm -f "$spoilt"' EXIT
  for edit in '/^| `src\/Server.cpp`/d' 's/^| `src\/Server.cpp`/| `src\/main.cpp` | |\n&/' '/git grep/d'; do
    sed "$edit" "$page" >"$spoilt"
    if cmp -s "$page" "$spoilt" || "$0" . "$spoilt" 2>/dev/null; then
      echo "a page edited by $edit is accepted" >&2
      failures=1
    fi
  done
fi
exit $failures
