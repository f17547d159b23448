#!/usr/bin/env bash
# What the package's scripts do to a host: an upgrade keeps rooms, a removal ends them, and a purge leaves
# nothing but the host's own files. Tried in a mount namespace, where this host is out of reach.
# usage: maintainer-scripts.sh SCRIPTS_FOLDER. Exits with 77 where that cannot be tried.
set -euo pipefail

. "$(dirname "$0")/../skipping.sh"
apply_settings=/usr/lib/systemd/systemd-sysctl
if [ "${2-}" != inside ]; then
  [ "$(id -u)" -eq 0 ] || skip 'only root can mount'
  [ -x $apply_settings ] || skip 'systemd is not installed'
  exec unshare --mount --net "$0" "$(realpath "$1")" inside
fi

scripts=$1
mount -t tmpfs tmpfs /mnt
mount -t tmpfs tmpfs /run
mount -t tmpfs tmpfs /etc
mkdir /mnt/bin
# Masked units and the like are no reason for a package to fail.
printf '#!/bin/sh\necho "${0##*/} $*" >>/mnt/log\nexit 1\n' >/mnt/bin/stub
chmod +x /mnt/bin/stub
for command in systemctl deb-systemd-invoke systemd-sysctl; do
  cp /mnt/bin/stub /mnt/bin/$command
done
mount --bind /mnt/bin/systemd-sysctl $apply_settings
export PATH=/mnt/bin:$PATH

fail() {
  echo "$1, but:" >&2
  cat /mnt/log >&2
  exit 1
}
# run SCRIPT ARGUMENT...: what it calls is in /mnt/log.
run() {
  : >/mnt/log
  "$scripts/$1" "${@:2}" || fail "$* should succeed"
}
# line_of PATTERN: of the first such call.
line_of() {
  grep -nm 1 -e "$1" /mnt/log | cut -d: -f1 || fail "a call like $1 is expected"
}

# Where no systemd runs, as in an image.
run postinst configure ''
[ ! -s /mnt/log ] || fail 'without systemd nothing is to be called'

mkdir -p /run/systemd/system
run prerm upgrade 0.1.1
[ ! -s /mnt/log ] || fail 'an upgrade stops nothing'
run postinst configure 0.1.0
reload=$(line_of daemon-reload)
settings=$(line_of systemd-sysctl)
rooms=$(line_of 'deb-systemd-invoke try-restart .*drench@\*\.service')
firewall=$(line_of 'deb-systemd-invoke try-.* drench-firewall\.service')
[ "$reload" -lt "$rooms" ] && [ "$settings" -lt "$rooms" ] && [ "$rooms" -lt "$firewall" ] ||
  fail 'rooms restart with new units and settings, and before the firewall'
! grep -E ' (start|restart|enable) ' /mnt/log || fail 'what the host has not started stays so'

run keeper/postinst configure ''
line_of daemon-reload >/mnt/line
line_of '^deb-systemd-invoke stop drench-recycle\.timer' >/mnt/line
! grep 'drench@' /mnt/log || fail 'rooms play on until they are given keepers'
run keeper/postrm remove
! grep '^deb-systemd-invoke' /mnt/log || fail 'without rooms no timer is started'
sed -i 's/exit 1/exit 0/' /mnt/bin/systemctl
run keeper/postrm remove
line_of '^deb-systemd-invoke start drench-recycle\.timer' >/mnt/line
run keeper/postrm upgrade 0.1.1
! grep '^deb-systemd-invoke' /mnt/log || fail 'an upgrade of keepers leaves the timer as it is'
sed -i 's/exit 0/exit 1/' /mnt/bin/systemctl

run prerm remove
for unit in 'drench@\*\.service' 'drench-recycle\.timer' 'drench-firewall\.service'; do
  grep -q "^deb-systemd-invoke stop .*$unit" /mnt/log || fail "a removal stops $unit"
done

mkdir -p /etc/systemd/system/{multi-user,timers}.target.wants /run/drench
links=(multi-user.target.wants/{drench@5000,drench-firewall}.service timers.target.wants/drench-recycle.timer)
others=/etc/systemd/system/multi-user.target.wants/other.service
for link in "${links[@]}"; do
  ln -s "/usr/lib/systemd/system/${link#*/}" "/etc/systemd/system/$link"
done
ln -s /usr/lib/systemd/system/other.service $others
touch /etc/drench/ports.nft
run postrm remove
line_of daemon-reload >/mnt/line
[ -L "/etc/systemd/system/${links[0]}" ] || fail 'a removal keeps what the host enabled'
run postrm purge
for link in "${links[@]}"; do
  [ ! -L "/etc/systemd/system/$link" ] || fail "a purge leaves no $link"
done
[ -L $others ] && [ -e /etc/drench/ports.nft ] || fail "a purge keeps the host's own files"
[ ! -e /run/drench ] || fail 'a purge leaves no /run/drench'
rm /etc/drench/ports.nft
run postrm purge
[ ! -e /etc/drench ] || fail 'a purge leaves no empty folder'
