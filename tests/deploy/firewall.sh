#!/usr/bin/env bash
# A room behind the firewall file keeps its rate for four players under attack, and what happens
# without it.
# usage: firewall.sh BUILD_FOLDER HOSTILE. Exits with 77 where namespaces or tools are missing.
# shellcheck disable=SC2317 # Attacks are called by their names.
set -euo pipefail

. "$(dirname "$0")/two-hosts.sh"

# Attacks; what follows is RATE SECONDS.
forged_port() { attack "$far_address" 1 0 q 1 "$@"; }
forged_broadcast() { attack 198.18.255.255 1 40000 q 1 "$@"; }
forged_nowhere() { attack 203.0.113.9 1 40000 q 1 "$@"; }
# From an address on another link of the room.
forged_other_link() { attack 198.19.0.9 1 40000 q 1 "$@"; }
forged_own() { attack "$room_address" 1 40000 q 1 "$@"; }
forged() {
  forged_port "$@"
  forged_broadcast "$@"
  forged_nowhere "$@"
  forged_own "$@"
}
flood_of_many() { attack "$crowd" "$crowd_size" 40000 q 1 "$@"; }
oversized() { attack "$far_address" 1 40000 q 1400 "$@"; }

sized() { attack "${crowd%.*}.250" 1 40000 q "$1" 10 1; }

neighbour() {
  amid_play
  attack "$far_address" 1 40000 q 1 "$@"
}
reload() {
  amid_play
  in_room nft -f "$firewall"
  echo -
}
throw_out() {
  amid_play
  in_room bash -c "printf d2 >/dev/udp/127.0.0.1/$port"
  echo -
}
# link_down NAMESPACE SECONDS
link_down() {
  amid_play
  ip -n "$1" link set link0 down
  sleep "$2"
  ip -n "$1" link set link0 up
  echo -
}

# player RATE SECONDS: somebody whom the room has let in.
player() {
  in_room nft flush set inet drench players
  in_room nft add element inet drench players "{ $crowd . 40000 . $port }"
  flood_of_one "$@"
}

# own_player RATE SECONDS: one on the room's own host.
own_player() {
  in_room nft flush set inet drench own_rates
  in_room nft add element inet drench players "{ $room_address . 40000 . $port }"
  in_room "$hostile" "$room_address" "$port" "$room_address" 1 40000 q 1 "$@"
}

row 'without the firewall' '' '' '' '' '' '' '' '' '' ''
plays_calmly
dies 'source port 0' forged_port 1 1
dies 'broadcast source' forged_broadcast 1 1
dies 'source without a route' forged_nowhere 1 1
play 'flood, 1 address' "$seconds" flood_of_one 20000 5
[ "$attacks_arrived" -gt 50000 ] || fail "the flood did not reach the open room: $attacks_arrived"
play 'own link down for 2 s' "$seconds" link_down "$room" 2
[ "$ending" = "$ended" ] || fail "own link down: the room should have ended, but: $ending"

# Of another table, which counts what is tracked.
cat >other.nft <<'END'
table inet other {
  chain arriving {
    type filter hook input priority 0; policy accept;
    udp dport 5000 ct state != untracked counter
  }
  chain leaving {
    type filter hook output priority 0; policy accept;
    udp sport 5000 ct state != untracked counter
  }
}
END
in_room nft -f "$firewall"
in_room nft -f "$firewall"
row 'with the firewall' '' '' '' '' '' '' '' '' '' ''
lets_in 'no room at this port' all 1500 flood_of_one 1000 1
in_room nft -f other.nft
in_room nft list table inet other >other
in_room "$guard" start "$port"
in_room "$guard" start "$port"

row 'and its room' '' '' '' '' '' '' '' '' '' ''
play 'reloaded while they play' "$seconds" reload
keeps_its_rate 'reloaded'
play 'forged sources' "$seconds" forged 500 1.5
keeps_its_rate 'forged sources'
# Players come when the flood is under way.
head_start=1
play 'flood, 1 address' "$seconds" flood_of_one 20000 5
keeps_its_rate 'flood of 1 address'
[ "$attacks_arrived" -lt 2000 ] || fail "flood of 1 address: $attacks_arrived arrived"
head_start=0
play 'flood, the players'\'' address' "$seconds" neighbour 20000 2
keeps_its_rate 'flood of the players'\'' address'
head_start=1
play 'flood, 200 addresses' "$seconds" flood_of_many 20000 5
# They use up what strangers may send all together, newcomers among them.
plays_without_a_gap 'flood of 200 addresses'
# 1000 at once and 1000 a second, and the bots' own.
[ "$attacks_arrived" -lt 7500 ] || fail "flood of 200 addresses: $attacks_arrived arrived"
head_start=0
play '1400 bytes' "$seconds" oversized 5000 5
keeps_its_rate '1400 bytes'
play 'far link down for 2 s' 5 link_down "$far" 2
[ "$ending $joins" = 'playing 4' ] || fail "far link down for 2 s: $ending, $joins joins"
if [ "$longest" -lt 2000 ] || [ "$longest" -gt 3000 ]; then
  fail "far link down for 2 s: the longest gap is $longest ms"
fi
# Longer than a client waits: they are back when the link is.
play 'far link down for 6 s' 12 link_down "$far" 6
[ "$ending $joins" = 'playing 8' ] || fail "far link down for 6 s: $ending, $joins joins"
[ "$states" -gt $((calm_states * 4 / seconds)) ] || fail "far link down for 6 s: $states states"

# What each may send, floods in 2 seconds; a little more for the clocks.
lets_in '512 bytes' all 10 sized 512
lets_in '513 bytes' 0 0 sized 513
lets_in 'a stranger' 20 30 flood_of_one 1000 2
lets_in 'a player with a fast mouse' all 2100 player 1000 2
lets_in 'a player, far too fast' 2800 3100 player 5000 2

# A route of last resort makes an interface that is down a loss like any other.
ip -n "$room" route add default dev lo metric 9999
play 'own link down, a last route' 5 link_down "$room" 2
[ "$ending $joins" = 'playing 4' ] || fail "own link down, with a last route: $ending, $joins joins"
counters=$(in_room nft list counters table inet drench)
for counter in unanswerable oversized too_fast strangers_too_fast; do
  grep -A1 "counter $counter " <<<"$counters" | grep -q 'packets [1-9]' ||
    fail "nothing was $counter"
done
in_room nft list table inet other | diff other - || fail 'what passed was tracked'

# The host tracks what it sends itself.
lets_in 'a player on the own host' all 1500 own_player 1000 1
! in_room nft list set inet drench own_rates | grep elements ||
  fail "a player on the room's own host used up what is for its keeper"

ip -n "$room" link add other0 type veth peer name other1
ip -n "$room" address add 198.19.0.1/24 dev other0
ip -n "$room" link set other0 up
ip -n "$room" link set other1 up
lets_in 'answers leave by another link' 0 0 forged_other_link 10 1
sed "1,/^include/s|^include|redefine drench_detours = { \"link0\" }\n&|" "$firewall" >detour.nft
in_room nft -f detour.nft
lets_in 'and the host says it may' all 10 forged_other_link 10 1
in_room nft -f "$firewall"
ip -n "$room" link delete other0

play 'one is thrown out by the host' "$seconds" throw_out
most_states=$(jq '[.players[].snapshots] | max' report)
if [ "$ending $joins" != 'playing 4' ] || [ "$(percent_of_calm)" -gt 80 ] ||
  [ $((most_states * 100)) -lt $((calm_states * 95)) ]; then
  fail "thrown out: $ending, $joins joins, $states to $most_states states"
fi

port=5060
lets_in 'another service, on port 5060' all 1500 flood_of_one 1000 1
port=5000

# A room that ends leaves its port to others, but for one that the host has named.
in_room "$guard" stop "$port"
lets_in 'the room has ended' all 1500 flood_of_one 1000 1
mkdir etc
echo "redefine drench_rooms = { $port-5002 }" >etc/ports.nft
sed "s|/etc/drench/|$folder/etc/|" "$firewall" >named.nft
in_room nft -f named.nft
in_room "$guard" start "$port"
in_room "$guard" stop "$port"
lets_in 'a port that the host has named' 20 30 flood_of_one 1000 1
for word in 0 65536 070536 5000x -1 ''; do
  if in_room "$guard" start "$word" 2>refused || ! grep -q "'$word' is not a port" refused; then
    fail "drench-guard took '$word' for a port: $(cat refused)"
  fi
done
in_room "$guard" start 05010
in_room nft get element inet drench running_rooms '{ 5010 }' >refused || fail '05010 is not 5010'
in_room "$guard" stop 5010
[ "$(ls /run/drench)" = '' ] || fail "ports are still named: $(ls /run/drench)"
in_room nft delete table inet drench
[ "$(in_room nft list tables)" = 'table inet other' ] || fail "left over: $(in_room nft list tables)"

cat table
exit $((failures > 0))
