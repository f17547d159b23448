#!/usr/bin/env bash
# The Debian packages hold all they should and nothing of each other, of one version, and a room runs from
# the one for hosts.
# usage: package.sh BUILD_FOLDER VERSION. Exits with 77 where tools are missing.
set -euo pipefail

build=$(realpath "$1")
version=$2
. "$(dirname "$0")/../skipping.sh"
. "$(dirname "$0")/packages.sh"

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
can_pack || skip "what makes packages is not installed"
unpack_packages "$build" "$folder"
cd "$folder"

failures=0
complain() {
  echo "$1" >&2
  failures=1
}

# holds PACKAGE FILE...
holds() {
  local package=$1 file
  shift
  for file in "$@"; do
    [ -r "$package/usr/$file" ] || complain "not in $package: /usr/$file"
  done
}
holds drench bin/drench-server bin/drench-bots bin/drench-map bin/drench-lag bin/drench-replay lib/drench/Resources/mapdata \
  share/doc/drench/hosting.md share/drench/drench.nft share/drench/drench.lua share/drench/arenas/cascade.plan \
  lib/drench/drench-guard lib/sysctl.d/60-drench.conf \
  share/man/man6/drench-server.6.gz share/man/man6/drench-bots.6.gz \
  share/man/man1/drench-map.1.gz share/man/man1/drench-lag.1.gz share/man/man1/drench-replay.1.gz lib/systemd/system/drench@.service \
  lib/systemd/system/drench-recycle.service lib/systemd/system/drench-recycle.timer \
  lib/systemd/system/drench-firewall.service lib/systemd/system/drench.slice
holds libdrench-dev lib/libdrench-game.a lib/libdrench-client.a include/drench/game/Player.h \
  include/drench/client/Session.h lib/cmake/drench/drench-config.cmake \
  lib/cmake/drench/drench-config-version.cmake share/doc/drench/examples/client/client.cpp \
  share/doc/drench/examples/map-reader/map-reader.cpp

has_window=
[ ! -d drench-window ] || has_window=yes
[ -z "$has_window" ] || holds drench-window bin/drench lib/drench/drench share/applications/drench.desktop \
  share/icons/hicolor/scalable/apps/drench.svg share/metainfo/invalid.drench.Drench.metainfo.xml \
  share/man/man6/drench.6.gz

files_of() { (cd "$1/usr" && find . ! -type d | sort); }
files_of drench >drench.files
files_of libdrench-dev >libdrench-dev.files
of_makers='^\./(include/|lib/libdrench-[a-z]*\.a$|lib/cmake/drench/|share/doc/drench/examples/)'
! grep -E "$of_makers" drench.files || complain 'drench holds what is for makers of clients'
! grep -vE "$of_makers|^\./share/doc/libdrench-dev/" libdrench-dev.files ||
  complain 'libdrench-dev holds what is not for makers of clients'
of_players='^\./(bin/drench$|lib/drench/drench$|share/(applications|icons|metainfo|doc/drench-window)/|share/man/man6/drench\.6)'
! grep -E "$of_players" drench.files || complain 'drench holds what is for players'
if [ -n "$has_window" ]; then
  files_of drench-window >drench-window.files
  ! grep -vE "$of_players|^\./share/lintian/overrides/drench-window$" drench-window.files ||
    complain 'drench-window holds what is not for players'
  for package in drench libdrench-dev; do
    ! grep -E '^(Pre-)?Depends:.*(sdl|imgui|epoxy|libgl)' $package/DEBIAN/control ||
      complain "$package depends on a window"
  done
fi
comm -12 drench.files libdrench-dev.files >both.files
[ ! -s both.files ] || complain "both packages hold $(cat both.files)"

for package in drench libdrench-dev ${has_window:+drench-window}; do
  grep -qx "Version: $version" $package/DEBIAN/control || complain "$package has another version than $version"
  about=$package/usr/share/doc/$package
  grep -q 'No licence has been granted yet' "$about/copyright" ||
    complain "$package does not say under which licence it is"
  newest=$(gzip -dc "$about/changelog.gz" | head -n 1)
  [[ $newest = "drench ($version) "* ]] || complain "the changelog of $package ends before $version: $newest"
done
grep -qx 'ExecStart=/usr/sbin/nft -f /usr/share/drench/drench.nft' \
  drench/usr/lib/systemd/system/drench-firewall.service ||
  complain 'the firewall unit loads another file than the installed one'
grep -qE '^Depends: (.*, )?libc6 \(' drench/DEBIAN/control ||
  complain "drench does not depend on the C library: $(grep ^Depends: drench/DEBIAN/control)"
grep -qx 'ExecStart=/usr/lib/drench/drench-server %i' drench/usr/lib/systemd/system/drench@.service ||
  complain 'the unit starts another executable than the installed one'

grep -qx 'ExecStartPre=+-/usr/lib/drench/drench-guard start %i' \
  drench/usr/lib/systemd/system/drench@.service && [ -x drench/usr/lib/drench/drench-guard ] ||
  complain 'the unit does not have its port guarded by the installed script'

# Both apply the kernel settings to interfaces that are there already.
for file in drench/usr/lib/systemd/system/drench-firewall.service drench/DEBIAN/postinst; do
  grep -q '/usr/lib/systemd/systemd-sysctl --prefix=/net/ipv4/neigh --prefix=/net/core/wmem_default' \
    "$file" || complain "$file does not apply the kernel settings"
done

# documented PROGRAM PAGE [COMMAND]: the manual page has every option that --help has.
documented() {
  local option
  local package=drench
  [ "$1" != drench ] || package=drench-window
  for option in $("$package/usr/bin/$1" ${3+"$3"} --help | grep -oE '^ +(-.,)?--[a-z]+' | sed 's/.*--//'); do
    gzip -dc "$package/usr/share/man/$2.gz" | grep -E "Fl -$option\b|, -$option\b|\| -$option\b" >page.log ||
      complain "$2 does not name --$option"
  done
}
documented drench-bots man6/drench-bots.6
documented drench-lag man1/drench-lag.1
documented drench-replay man1/drench-replay.1
documented drench-map man1/drench-map.1
for command in check build plan picture import export; do
  documented drench-map man1/drench-map.1 "$command"
done
for command in info soakings heat tracks cut join import verify; do
  documented drench-replay man1/drench-replay.1 "$command"
done
[ -z "$has_window" ] || documented drench man6/drench.6
for program in drench-bots drench-lag drench-map drench-replay; do
  [ "$("drench/usr/bin/$program" --version)" = "$program $version" ] ||
    complain "$program has another version than $version"
done

coproc server { exec timeout 20 drench/usr/bin/drench-server 0; }
pid=$server_PID
listens=
while read -r line <&"${server[0]}"; do
  if [ "$line" = 'Server is listening on port 0' ]; then
    listens=yes
    kill "$pid"
    break
  fi
done
[ -n "$listens" ] || complain 'the packaged server does not start'
exit $failures
