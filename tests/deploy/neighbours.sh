#!/usr/bin/env bash
# A room behind the firewall and with the kernel settings keeps its rate when forged senders have it
# answer to addresses on its link that nobody has, and stands still without the settings.
# usage: neighbours.sh BUILD_FOLDER HOSTILE. Exits with 77 where namespaces or tools are missing.
# shellcheck disable=SC2317 # Attacks are called by their names.
set -euo pipefail

. "$(dirname "$0")/two-hosts.sh"
systemd_sysctl=/usr/lib/systemd/systemd-sysctl
skip_without $systemd_sysctl
settings=$deploy/sysctl/60-drench.conf

# Attacks; what follows is ADDRESSES RATE SECONDS.
strangers() {
  amid_play
  attack "$nobody" "$1" 40000 q 1 "$2" "$3"
}
joins() {
  amid_play
  attack "$nobody" "$1" 40000 j 1 "$2" "$3"
}
# Those who join meanwhile have an address that the room's host has not seen before.
flood() {
  ip -n "$far" route add "$room_address" dev link0 src "${crowd%.*}.77"
  attack "$nobody" "$1" 40000 q 1 "$2" "$3"
}

stands_still() {
  [ "$(percent_of_calm)" -lt 80 ] ||
    fail "$1: $states states, so the attack does not reach what the settings are for"
}

# both EXPECTATION
both() {
  play '300 strangers' "$seconds" strangers 300 500 0.6
  "$1" '300 strangers'
  # They leave two places to those who are forged.
  players=2
  # Each gets 62 states a second, so that the buffer is full after 1.3 of them.
  play 'two forged joins' 5 joins 2 10 0.2
  "$1" 'forged joins'
  players=4
}

# What Linux does by itself; this machine may have the settings already.
for default in unres_qlen_bytes=212992 mcast_solicit=3 ucast_solicit=3 retrans_time_ms=1000; do
  in_room sh -c "echo ${default#*=} >/proc/sys/net/ipv4/neigh/link0/${default%=*}"
done
send_buffer=212992

in_room nft -f "$firewall"
in_room "$guard" start "$port"
row 'with the firewall alone' '' '' '' '' '' '' '' '' '' ''
plays_calmly
both stands_still

# That of the socket is the whole machine's, so each room's socket gets it by itself.
in_room $systemd_sysctl --prefix=/net/ipv4/neigh "$settings"
send_buffer=$(sed -n 's/^net.core.wmem_default = //p' "$settings")
row 'with the kernel settings' '' '' '' '' '' '' '' '' '' ''
both keeps_its_rate
play '20 000/s from 5000 addresses' "$seconds" strangers 5000 20000 1.5
keeps_its_rate '5000 addresses'
# So many get through, and would fill the table of neighbours.
head_start=2
play 'newcomers, 900/s from 5000' "$seconds" flood 5000 900 7
keeps_its_rate 'newcomers'
head_start=0

# By arithmetic, whatever the rates: all that may wait for neighbours fits into the buffer.
per_neighbour=$(in_room cat /proc/sys/net/ipv4/neigh/link0/unres_qlen_bytes)
neighbours=1024
[ $((neighbours * per_neighbour)) -lt "$send_buffer" ] ||
  fail "$neighbours neighbours with $per_neighbour bytes do not fit into $send_buffer"
in_room nft delete table inet drench
row 'without the firewall' '' '' '' '' '' '' '' '' '' ''
play '20 000/s from 1000 addresses' "$seconds" strangers 1000 20000 1.5
keeps_its_rate 'no firewall'

cat table
exit $((failures > 0))
