#!/usr/bin/env bash
# Nothing is installed where service units could not name it, and they name what lies outside the prefix.
# usage: prefix.sh BUILD_FOLDER
set -euo pipefail

build=$(realpath "$1")
sources=$(realpath "$(dirname "$0")/../..")
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

cmake -S "$sources" -B outside -DDRENCH_TOOLS=OFF -DBUILD_TESTING=OFF -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_INSTALL_LIBDIR=/opt/own -DCMAKE_INSTALL_DATADIR=/opt/data >log
cp "$build/drench-server" outside
DESTDIR=$folder/root cmake --install outside --component server --prefix /usr >log
named() {
  sed -n "s|^ExecStart=[^/]*\(/.*\)|\1|p" "root/usr/lib/systemd/system/$1" | tr ' ' '\n' | grep /drench
}
for file in $(named drench@.service) $(named drench-firewall.service); do
  if [[ $file != /opt/* ]] || ! [ -f "root$file" ]; then
    echo "a unit names $file, which is not there" >&2
    failures=1
  fi
done
[ "$(find root/opt -name 'drench-server' -o -name 'drench.nft' | wc -l)" -eq 2 ] || failures=1
exit $failures
