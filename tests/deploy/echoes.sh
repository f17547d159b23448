#!/usr/bin/env bash
# Two rooms whom a forged datagram sets to answer each other do so for ever, and fall silent where one
# of them is behind the firewall.
# usage: echoes.sh BUILD_FOLDER HOSTILE. Exits with 77 where namespaces or tools are missing.
set -euo pipefail

. "$(dirname "$0")/two-hosts.sh"

open=5000
room_guarded=5001
far_guarded=5002
both_guarded=5003
ports=("$open" "$room_guarded" "$far_guarded" "$both_guarded")

for namespace in "$room" "$far"; do
  ip netns exec "$namespace" nft -f "$firewall"
done
for guarded in "$room_guarded" "$both_guarded"; do
  in_room "$guard" start "$guarded"
done
for guarded in "$far_guarded" "$both_guarded"; do
  in_far "$guard" start "$guarded"
done

# Counts what rooms send each other before the firewall has a say.
{
  echo 'table ip traffic {'
  for port in "${ports[@]}"; do
    echo "counter port$port {}"
  done
  echo 'chain arriving { type filter hook prerouting priority raw - 10; policy accept;'
  for port in "${ports[@]}"; do
    echo "udp sport $port udp dport $port counter name port$port"
  done
  printf '}\n}\n'
} >traffic.nft
in_room nft -f traffic.nft
in_far nft -f traffic.nft

# passed PORT: datagrams between the two rooms so far.
passed() {
  { in_room nft -j list counter ip traffic "port$1" && in_far nft -j list counter ip traffic "port$1"; } |
    jq -s '[.[].nftables[].counter.packets // empty] | add'
}

declare -A rooms
# start NAMESPACE PORT
start() {
  ip netns exec "$1" ./drench-server "$2" >"room-$1-$2.log" &
  rooms[$1-$2]=$!
}

# set_off PORT: a join, as if the far room had asked for it.
set_off() {
  in_far "$hostile" "$room_address" "$1" "$far_address" 1 "$1" j 1 1 0.5 >/dev/null
}

for port in "${ports[@]}"; do
  start "$room" "$port"
  start "$far" "$port"
done
# Bash need not tell that they were killed in the end.
disown -a
sleep 0.5

row() { printf '%-24s %14s %10s %16s\n' "$@"; }
row 'one forged join' 'in a second' 'in all' 'in the last one'

set_off "$open"
before=$(passed "$open")
sleep 1
in_a_second=$(($(passed "$open") - before))
row 'no firewall' "$in_a_second" - -
[ "$in_a_second" -gt 2000 ] || fail "open rooms do not answer each other for ever: $in_a_second"
kill "${rooms[$room-$open]}" "${rooms[$far-$open]}"

for port in "${ports[@]:1}"; do
  set_off "$port"
done
# Until those who joined are dropped.
sleep 6
declare -A earlier
for port in "${ports[@]:1}"; do
  earlier[$port]=$(passed "$port")
done
sleep 1
for port in "${ports[@]:1}"; do
  now=$(passed "$port")
  case $port in
    "$room_guarded") name='before the room' ;;
    "$far_guarded") name='before the other' ;;
    *) name='before both' ;;
  esac
  row "$name" - "$now" "$((now - earlier[$port]))"
  [ "$now" -gt 0 ] || fail "$name: nothing set the rooms off"
  [ "$now" = "${earlier[$port]}" ] || fail "$name: they still answer each other"
  for namespace in "$room" "$far"; do
    kill -0 "${rooms[$namespace-$port]}" || fail "$name: a room has ended"
  done
done
exit $((failures > 0))
