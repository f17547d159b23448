#!/usr/bin/env bash
# What a pod of the fleet does, in a network namespace: an init container with one capability loads the
# firewall, and is gone; then the room with its keeper, without any, plays behind it under attack, and is
# called healthy all the time.
# usage: pod.sh BUILD_FOLDER HOSTILE. Exits with 77 where namespaces or tools are missing.
# shellcheck disable=SC2317 # Attacks are called by their names.
set -euo pipefail

. "$(dirname "$0")/two-hosts.sh"
skip_without setpriv
[ -x "$build/drench-keeper" ] || skip 'the keeper was not built'
cp "$build/drench-keeper" .
chmod -R go+rX .

# Only this test sees what it puts there; the file is that of the firewall's image.
if [ ! -d /etc/drench ]; then
  mkdir upper work
  mount -t overlay -o "lowerdir=/etc,upperdir=$folder/upper,workdir=$folder/work" overlay /etc 2>/dev/null ||
    skip 'no overlay over /etc here'
fi
mkdir -p /etc/drench
sed -n "s/^  echo '\(redefine.*\)' .*/\1/p" "$deploy/container/build.sh" >/etc/drench/room.nft
grep -q 5000 /etc/drench/room.nft || fail 'the image does not name the port of its room'

none=(--inh-caps=-all --no-new-privs)
init_container() { in_room setpriv --bounding-set=-all,+net_admin "${none[@]}" nft "$@"; }
as_room=(setpriv --reuid=65534 --regid=65534 --clear-groups --bounding-set=-all "${none[@]}")

# The room of two-hosts.sh, with its keeper.
open_room() {
  : >room.log
  ip netns exec "$room" "${as_room[@]}" ./drench-keeper "$port" --agones off --metrics 127.0.0.1:5000 >room.log &
  server=$!
  wait_for 'Server is listening'
}
metric() {
  # shellcheck disable=SC2016
  in_room bash -c 'exec 3<>/dev/tcp/127.0.0.1/5000
    printf "GET /metrics HTTP/1.0\r\n\r\n" >&3
    cat <&3' | sed -n "s/^$1 //p"
}

# steady CASE ATTACK...: the room answers its keeper in each second of an attack.
steady() {
  local name=$1 attacker second lost
  shift
  open_room
  sleep 3
  [ "$(metric drench_room_answering)" = 1 ] || fail "$name: the room does not answer before it is attacked"
  "$@" 60000 12 >attacks &
  attacker=$!
  for second in $(seq 11); do
    sleep 1
    [ "$(metric drench_room_answering)" = 1 ] || fail "$name: the room does not answer in second $second"
  done
  wait "$attacker"
  lost=$(metric drench_room_unanswered_probes_total)
  row "$name" "$(attacks)" - - - - - - - - "$lost probes lost"
  [ "$lost" = 0 ] || fail "$name: $lost of the keeper's probes were lost"
  close_room
}
forged() { attack "$far_address" 1 0 q 1 "$@"; }
# So many that strangers together use up what they may send.
flood_of_thousands() { attack 198.18.16.0 4000 40000 q 1 "$@"; }
ip -n "$far" route add local 198.18.16.0/20 dev lo

row 'without the firewall' '' '' '' '' '' '' '' '' '' ''
plays_calmly
open_room
forged 1 1 >attacks
sleep 1
grep -q 'the room ended by itself' room.log || fail 'one forged datagram should end an open room'
close_room

init_container --file "$firewall"
row 'with that of the init container' '' '' '' '' '' '' '' '' '' ''
if in_room "${as_room[@]}" nft flush ruleset 2>refused; then
  fail 'the room could take its firewall away'
fi
guarded=$(in_room nft list set inet drench named_rooms)
[[ $guarded = *"{ $port }"* ]] || fail "the firewall guards another port: $guarded"
play 'forged sources' "$seconds" forged 500 1.5
keeps_its_rate 'forged sources'
head_start=1
play 'flood, 1 address' "$seconds" flood_of_one 20000 5
keeps_its_rate 'flood of 1 address'
steady 'flood, 1 address' flood_of_one
steady 'flood, 4000 addresses' flood_of_thousands

cat table
exit $((failures > 0))
