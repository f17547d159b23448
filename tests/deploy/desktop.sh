#!/usr/bin/env bash
# The desktop's own checkers accept the window's entry, and what it says to software centres.
# usage: desktop.sh FOLDER. Exits with 77 where they are missing.
set -euo pipefail
. "$(dirname "$0")/../skipping.sh"
skip_without desktop-file-validate
skip_without appstreamcli
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp "$1"/* "$folder"

check() {
  desktop-file-validate "$folder/drench.desktop" &&
    appstreamcli validate --no-net "$folder"/*.metainfo.xml
} >"$folder/log" 2>&1
check || {
  cat "$folder/log" >&2
  exit 1
}
for spoilt in 's/^Type=.*/Type=Program/' 's/<name>.*//'; do
  cp "$1"/* "$folder"
  sed -i "$spoilt" "$folder"/drench.desktop "$folder"/*.metainfo.xml
  if check; then
    echo "they accept files without what $spoilt takes" >&2
    exit 1
  fi
done
grep -qx 'MimeType=x-scheme-handler/drench;' "$1/drench.desktop"
