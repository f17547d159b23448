#!/usr/bin/env bash
# Debian's own checker finds neither an error nor a warning in the packages, nor a hardening left out.
# usage: lintian.sh BUILD_FOLDER. Exits with 77 where tools are missing.
set -euo pipefail

. "$(dirname "$0")/../skipping.sh"
. "$(dirname "$0")/packages.sh"
skip_without lintian
can_pack || skip 'what makes packages is not installed'
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
unpack_packages "$(realpath "$1")" "$folder"

# check PACKAGE...: for root too. Hardening is mere information to it.
check() {
  lintian --allow-root --fail-on error,warning --display-info --tag-display-limit 0 "$@" \
    >"$folder/lintian.log" 2>&1 && ! grep -q ': hardening-' "$folder/lintian.log"
}
check "$folder"/packed/*.deb || {
  cat "$folder/lintian.log" >&2
  exit 1
}
# It looks at what it is given: without its licence, a package is wrong.
rm "$folder/libdrench-dev/usr/share/doc/libdrench-dev/copyright"
dpkg-deb --root-owner-group --build "$folder/libdrench-dev" "$folder/wrong.deb" >/dev/null
if check "$folder/wrong.deb" || ! grep -q 'E: libdrench-dev: no-copyright-file' "$folder/lintian.log"; then
  echo 'lintian accepts a package without a copyright file' >&2
  exit 1
fi
