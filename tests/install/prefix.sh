#!/usr/bin/env bash
# Nothing is installed where service units could not name it.
# usage: prefix.sh BUILD_FOLDER
set -euo pipefail

build=$(realpath "$1")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
failures=0
for prefix in relative "$folder/of two words" "$folder/100%" "$folder/\$HOME" "$folder/a:b" "$folder/[a]"; do
  if cmake --install "$build" --prefix "$prefix" >../"${folder##*/}.log" 2>&1 ||
    ! tr -s '[:space:]' ' ' <../"${folder##*/}.log" | grep -qF "The prefix \"$prefix\""; then
    echo "installing to \"$prefix\" is not refused by name" >&2
    failures=1
  fi
  rm ../"${folder##*/}.log"
  if [ -n "$(ls -A)" ]; then
    echo "\"$prefix\" was refused, but something was installed" >&2
    failures=1
  fi
done
exit $failures
