#!/usr/bin/env bash
# A room behind the firewall file keeps its rate for four players under attack, and what happens
# without it. Two hosts with a link between them, made here and nowhere else: traffic stays inside.
# usage: firewall.sh BUILD_FOLDER HOSTILE. Exits with 77 where namespaces or tools are missing.
# shellcheck disable=SC2317 # Attacks are called by their names.
set -euo pipefail

. "$(dirname "$0")/../skipping.sh"
skip_without ip nft jq
[ "$(id -u)" = 0 ] || skip 'network namespaces need root'

build=$(realpath "$1")
hostile=$(realpath "$2")
cd "$(dirname "$0")/../.."
firewall=$PWD/deploy/nftables/drench.nft

room=drench-room-$$
far=drench-far-$$
port=5000
room_address=198.18.0.1
far_address=198.18.0.2
# Addresses of the far host, so that it answers for them.
crowd=198.18.1.0
crowd_size=200
seconds=3

folder=$(mktemp -d)
finish() {
  local namespace pids
  for namespace in "$room" "$far"; do
    pids=$(ip netns pids "$namespace" 2>/dev/null || true)
    # shellcheck disable=SC2086
    [ -z "$pids" ] || kill -KILL $pids 2>/dev/null || true
    ip netns delete "$namespace" 2>/dev/null || true
  done
  rm -rf "$folder"
}
trap finish EXIT
cd "$folder"

in_room() { ip netns exec "$room" "$@"; }
in_far() { ip netns exec "$far" "$@"; }

if ! { ip netns add "$room" && ip netns add "$far" &&
  ip -n "$room" link add link0 type veth peer name link0 netns "$far" &&
  in_room nft list ruleset &&
  in_far "$hostile" "$room_address" "$port" "$far_address" 1 1 1 1 0; } \
  >/dev/null 2>refused; then
  skip "no namespaces with nftables and raw sockets here: $(head -1 refused)"
fi
ip -n "$room" address add "$room_address/16" dev link0
ip -n "$far" address add "$far_address/16" dev link0
for namespace in "$room" "$far"; do
  ip -n "$namespace" link set lo up
  ip -n "$namespace" link set link0 up
done
ip -n "$far" route add local "$crowd/24" dev lo
# Forged sources shall meet the firewall, not the kernel's own filter, which not every host has on.
for setting in all default link0; do
  in_room sh -c "echo 0 >/proc/sys/net/ipv4/conf/$setting/rp_filter"
done

mkdir Resources
cp "$build/drench-server" .
# A court that bots know within a second.
awk 'BEGIN {
  print 32, 16, 32
  for (i = 0; i < 32; ++i)
    for (j = 0; j < 16; ++j) {
      line = ""
      for (k = 0; k < 32; ++k)
        line = line (j == 0 || i == 0 || i == 31 || k == 0 || k == 31 ? " 1 1" : " 0 0")
      print line
    }
}' >Resources/mapdata

failures=0
fail() {
  echo "FAILED: $1" >&2
  failures=$((failures + 1))
}

# wait_for LINE: in the room's log, at most 10 seconds.
wait_for() {
  local tenths
  for ((tenths = 0; tenths < 100; ++tenths)); do
    if grep -qs "$1" room.log; then
      return
    fi
    sleep 0.1
  done
  fail "no \"$1\" in the room's log: $(tail -2 room.log)"
  return 1
}

open_room() {
  # The log of the room before would look like this one's.
  : >room.log
  # Not by the function above, which would be a process of its own.
  ip netns exec "$room" ./drench-server "$port" >room.log &
  server=$!
  wait_for 'Server is listening'
}

# close_room: ends it, and keeps in `ending` how it ended, "playing" if it did not by itself.
close_room() {
  local status=0
  if kill -0 "$server" 2>/dev/null; then
    kill "$server"
    wait "$server" || true
    ending=playing
    return
  fi
  wait "$server" || status=$?
  ending="status $status, $(tail -1 room.log)"
}

ended='status 0, Error sending bytes to client'

# attack FROM ADDRESSES SOURCE_PORT BYTES RATE SECONDS
attack() {
  in_far "$hostile" "$room_address" "$port" "$@"
}

# Datagrams for which the room had a socket, read or lost for want of memory.
received() {
  # shellcheck disable=SC2016
  in_room awk '/^Udp: [0-9]/ { print $2 + $4 }' /proc/net/snmp
}

# Of the room; 0 once it has ended.
processor_ms() {
  awk -v tick="$(getconf CLK_TCK)" '{ print ($14 + $15) * 1000 / tick }' "/proc/$server/stat" \
    2>/dev/null || echo 0
}

sent_bytes() {
  ip -n "$room" -s -j link show link0 | jq '.[0].stats64.tx.bytes'
}

# Datagrams that the attack has sent.
attacks() {
  awk '$1 != "-" { sum += $1 } END { print sum == "" ? "-" : sum }' attacks
}

row() {
  printf '%-32s %8s %8s %7s %7s %7s %8s %9s %9s %7s  %s\n' "$@" >>table
}
row case attacks arrived 'MB out' states missed 'p99 gap' 'longest' 'trip ms' 'CPU ms' 'the room'

# play CASE SECONDS ATTACK...: four bots in a new room, joining amid what the command ATTACK does to
# it, with a line in the table.
play() {
  local name=$1 length=$2 arrived out work attacker
  shift 2
  open_room
  arrived=$(received)
  out=$(sent_bytes)
  work=$(processor_ms)
  "$@" >attacks &
  attacker=$!
  in_far "$build/drench-bots" "$room_address:$port" --arena Resources/mapdata \
    --players 4 --name Bot --seconds "$length" --seed 1 --json --quiet >report 2>bots.log || true
  wait "$attacker" || fail "$name: the attack failed"
  arrived=$(($(received) - arrived))
  out=$(($(sent_bytes) - out))
  work=$(($(processor_ms) - work))
  close_room
  # The least lucky player's.
  states=$(jq '[.players[].snapshots] | min // 0' report)
  joins=$(jq '.total.joined' report)
  entered=$(jq '.playersEntered' report)
  answered=$(jq '[.players[] | select(.roundTripMilliseconds != null)] | length' report)
  longest=$(jq '.total.gapMilliseconds.max // 0 | round' report)
  attacks_arrived=$arrived
  row "$name" "$(attacks)" "$arrived" "$(jq -n "$out / 1e5 | round / 10")" "$states" \
    "$(jq '.total.snapshotsMissed' report)" "$(jq '.total.gapMilliseconds.p99' report)" "$longest" \
    "$(jq '.total.roundTripMilliseconds // 0 | . * 100 | round / 100' report)" "$work" "$ending"
}

# keeps_its_rate CASE: the last play was as good as the calm one.
keeps_its_rate() {
  [ "$ending" = playing ] || fail "$1: the room ended: $ending"
  [ "$entered $joins" = '4 4' ] || fail "$1: $entered players entered, with $joins joins"
  [ "$answered" = 4 ] || fail "$1: $answered players had receipts"
  [ $((states * 100)) -ge $((calm_states * 95)) ] ||
    fail "$1: $states states for the least lucky player; in the calm room $calm_states"
}

# dies CASE ATTACK...: a room without players does.
dies() {
  local name=$1 tenths
  shift
  open_room
  "$@" >attacks
  for ((tenths = 0; tenths < 20; ++tenths)); do
    kill -0 "$server" 2>/dev/null || break
    sleep 0.1
  done
  close_room
  row "$name" "$(attacks)" - - - - - - - - "$ending"
  [ "$ending" = "$ended" ] || fail "$name: the room should have ended, but: $ending"
}

# lets_in CASE LEAST MOST ATTACK...: so many datagrams reach the room; LEAST may be "all".
lets_in() {
  local name=$1 least=$2 most=$3 arrived
  shift 3
  open_room
  arrived=$(received)
  "$@" >attacks
  arrived=$(($(received) - arrived))
  close_room
  if [ "$least" = all ]; then
    least=$(attacks)
  fi
  row "$name" "$(attacks)" "$arrived" - - - - - - - "$ending"
  if [ "$ending" != playing ] || [ "$arrived" -lt "$least" ] || [ "$arrived" -gt "$most" ]; then
    fail "$name: $arrived arrived, not $least to $most; the room: $ending"
  fi
}

# Attacks; what follows is RATE SECONDS.
forged_port() { attack "$far_address" 1 0 1 "$@"; }
forged_broadcast() { attack 198.18.255.255 1 40000 1 "$@"; }
forged_nowhere() { attack 203.0.113.9 1 40000 1 "$@"; }
forged_own() { attack "$room_address" 1 40000 1 "$@"; }
forged() {
  forged_port "$@"
  forged_broadcast "$@"
  forged_nowhere "$@"
  forged_own "$@"
}
flood_of_one() { attack "$crowd" 1 40000 1 "$@"; }
flood_of_many() { attack "$crowd" "$crowd_size" 40000 1 "$@"; }
oversized() { attack "$far_address" 1 40000 1400 "$@"; }

sized() { attack "${crowd%.*}.250" 1 40000 "$1" 10 1; }

# Once all play.
amid_play() {
  wait_for 'Bot 4 joined'
  # Longer than clients take to learn the rate.
  sleep 1.5
}
neighbour() {
  amid_play
  attack "$far_address" 1 40000 1 "$@"
}
reload() {
  amid_play
  in_room nft -f "$firewall"
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

row 'without the firewall' '' '' '' '' '' '' '' '' '' ''
play 'calm' "$seconds" echo -
calm_states=$states
[ "$ending $joins" = 'playing 4' ] || fail "calm: $ending, $joins joins"
dies 'source port 0' forged_port 1 1
dies 'broadcast source' forged_broadcast 1 1
dies 'source without a route' forged_nowhere 1 1
play 'flood, 1 address' "$seconds" flood_of_one 20000 5
[ "$attacks_arrived" -gt 50000 ] || fail "the flood did not reach the open room: $attacks_arrived"
play 'flood, 200 addresses' "$seconds" flood_of_many 20000 5
[ "$attacks_arrived" -gt 50000 ] || fail "the flood did not reach the open room: $attacks_arrived"
play '1400 bytes' "$seconds" oversized 5000 5
[ "$attacks_arrived" -gt 20000 ] || fail "not even the open room had them: $attacks_arrived"
play 'own link down for 2 s' "$seconds" link_down "$room" 2
[ "$ending" = "$ended" ] || fail "own link down: the room should have ended, but: $ending"

# Twice, beside another table, which it leaves alone, and which counts what is tracked.
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
in_room nft -f other.nft
in_room nft list ruleset >rules
in_room nft -f "$firewall"
in_room nft -f "$firewall"

row 'with the firewall' '' '' '' '' '' '' '' '' '' ''
play 'reloaded while they play' "$seconds" reload
keeps_its_rate 'reloaded'
play 'forged sources' "$seconds" forged 500 1.5
keeps_its_rate 'forged sources'
play 'flood, 1 address' "$seconds" flood_of_one 20000 5
keeps_its_rate 'flood of 1 address'
[ "$attacks_arrived" -lt 2000 ] || fail "flood of 1 address: $attacks_arrived arrived"
play 'flood, the players'\'' address' "$seconds" neighbour 20000 2
keeps_its_rate 'flood of the players'\'' address'
play 'flood, 200 addresses' "$seconds" flood_of_many 20000 5
keeps_its_rate 'flood of 200 addresses'
# 1000 at once and 1000 a second, and the bots' own.
[ "$attacks_arrived" -lt 7500 ] || fail "flood of 200 addresses: $attacks_arrived arrived"
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

# What each may send, floods in 3 seconds; a little more for the clocks.
lets_in '512 bytes' all 10 sized 512
lets_in '513 bytes' 0 0 sized 513
lets_in 'a stranger' 20 40 flood_of_one 1000 3
lets_in 'a player with a fast mouse' all 3100 player 1000 3
lets_in 'a player, far too fast' 4000 4300 player 5000 3

# A route of last resort makes an interface that is down a loss like any other.
ip -n "$room" route add default dev lo metric 9999
play 'own link down, a last route' 5 link_down "$room" 2
[ "$ending $joins" = 'playing 4' ] || fail "own link down, with a last route: $ending, $joins joins"
counters=$(in_room nft list counters table inet drench)
for counter in unanswerable oversized too_fast strangers_too_fast; do
  grep -A1 "counter $counter " <<<"$counters" | grep -q 'packets [1-9]' ||
    fail "nothing was $counter"
done
in_room nft delete table inet drench
in_room nft list ruleset | diff rules - || fail 'other rules, or their counters, are not as they were'

cat table
exit $((failures > 0))
