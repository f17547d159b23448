#!/usr/bin/env bash
# The Debian package holds all it should, of one version, and a room runs from it.
# usage: package.sh BUILD_FOLDER VERSION. Exits with 77 where tools are missing.
set -euo pipefail

build=$(realpath "$1")
version=$2
. "$(dirname "$0")/../skipping.sh"
skip_without dpkg-deb dpkg-shlibdeps file

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
cpack --config "$build/CPackConfig.cmake" -B "$folder" >cpack.log 2>&1 || {
  cat cpack.log >&2
  exit 1
}
package=$(echo drench_"${version}"_*.deb)
[ "$(dpkg-deb --field "$package" Version)" = "$version" ]
dpkg-deb --extract "$package" root

failures=0
for file in bin/drench-server bin/drench-bots bin/drench-map bin/drench-lag lib/drench/Resources/mapdata \
  share/doc/drench/hosting.md share/drench/drench.nft share/drench/drench.lua share/drench/arenas/cascade.plan \
  lib/drench/drench-guard lib/sysctl.d/60-drench.conf \
  share/man/man6/drench-server.6 share/man/man6/drench-bots.6 \
  share/man/man1/drench-map.1 share/man/man1/drench-lag.1 lib/systemd/system/drench@.service \
  lib/systemd/system/drench-recycle.service lib/systemd/system/drench-recycle.timer \
  lib/systemd/system/drench-firewall.service lib/systemd/system/drench.slice; do
  if [ ! -r "root/usr/$file" ]; then
    echo "not in the package: /usr/$file" >&2
    failures=1
  fi
done
grep -qx 'ExecStart=/usr/sbin/nft -f /usr/share/drench/drench.nft' \
  root/usr/lib/systemd/system/drench-firewall.service || {
  echo 'the firewall unit loads another file than the installed one' >&2
  failures=1
}
grep -qE '^libc6 \(|, libc6 \(' <<<"$(dpkg-deb --field "$package" Depends)" || {
  echo "the package does not depend on the C library: $(dpkg-deb --field "$package" Depends)" >&2
  failures=1
}
grep -qx 'ExecStart=/usr/lib/drench/drench-server %i' root/usr/lib/systemd/system/drench@.service ||
  {
    echo 'the unit starts another executable than the installed one' >&2
    failures=1
  }

grep -qx 'ExecStartPre=+-/usr/lib/drench/drench-guard start %i' \
  root/usr/lib/systemd/system/drench@.service && [ -x root/usr/lib/drench/drench-guard ] || {
  echo 'the unit does not have its port guarded by the installed script' >&2
  failures=1
}

# Both apply the kernel settings to interfaces that are there already.
dpkg-deb --control "$package" control
for file in root/usr/lib/systemd/system/drench-firewall.service control/postinst; do
  grep -q '/usr/lib/systemd/systemd-sysctl --prefix=/net/ipv4/neigh --prefix=/net/core/wmem_default' \
    "$file" || {
    echo "$file does not apply the kernel settings" >&2
    failures=1
  }
done

# documented PROGRAM PAGE [COMMAND]: the manual page has every option that --help has.
documented() {
  local option
  for option in $("root/usr/bin/$1" ${3+"$3"} --help | grep -oE '^ +(-.,)?--[a-z]+' | sed 's/.*--//'); do
    if ! grep -qE "Fl -$option\b|, -$option\b|\| -$option\b" "root/usr/share/man/$2"; then
      echo "$2 does not name --$option" >&2
      failures=1
    fi
  done
}
documented drench-bots man6/drench-bots.6
documented drench-lag man1/drench-lag.1
documented drench-map man1/drench-map.1
for command in check build plan picture import export; do
  documented drench-map man1/drench-map.1 "$command"
done
for program in drench-bots drench-lag drench-map; do
  [ "$("root/usr/bin/$program" --version)" = "$program $version" ] || {
    echo "$program has another version than $version" >&2
    failures=1
  }
done

coproc server { exec timeout 20 root/usr/bin/drench-server 0; }
pid=$server_PID
listens=
while read -r line <&"${server[0]}"; do
  if [ "$line" = 'Server is listening on port 0' ]; then
    listens=yes
    kill "$pid"
    break
  fi
done
[ -n "$listens" ] || {
  echo 'the packaged server does not start' >&2
  failures=1
}
exit $failures
