# shellcheck shell=bash
# Sourced by tests of a room under attack, as `. two-hosts.sh BUILD_FOLDER HOSTILE`, by Bash as root.
# Makes two hosts with a link between them, in network namespaces of their own: traffic stays inside.
# What the test writes to /run, and what this machine has in /etc/drench, stays apart as well.

. "$(dirname "$0")/../skipping.sh"
skip_without ip nft jq unshare
[ "$(id -u)" = 0 ] || skip 'network namespaces need root'
mounts=$(readlink /proc/self/ns/mnt)
if [ "${DRENCH_APART_FROM:-$mounts}" = "$mounts" ]; then
  unshare --mount true 2>/dev/null || skip 'no mount namespaces here'
  DRENCH_APART_FROM=$mounts exec unshare --mount "$0" "$@"
fi
mount -t tmpfs tmpfs /run
[ ! -d /etc/drench ] || mount -t tmpfs tmpfs /etc/drench

build=$(realpath "$1")
hostile=$(realpath "$2")
deploy=$(realpath "$(dirname "$0")/../../deploy")
firewall=$deploy/nftables/drench.nft
guard=$deploy/nftables/drench-guard

room=drench-room-$$
far=drench-far-$$
port=5000
room_address=198.18.0.1
far_address=198.18.0.2
# Addresses of the far host, so that it answers for them.
crowd=198.18.1.0
crowd_size=200
# Addresses on the link that nobody answers for.
nobody=198.18.128.0
players=4
seconds=3
# Of an attack before those who play.
head_start=0
# Of the rooms' sockets in bytes; empty for what this machine gives.
send_buffer=

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
  in_far "$hostile" "$room_address" "$port" "$far_address" 1 1 q 1 1 0; } \
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
cp "$build"/drench-{server,bots,send-buffer} .
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
  [ -z "$send_buffer" ] || ./drench-send-buffer "$server" "$send_buffer"
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

# attack FROM ADDRESSES SOURCE_PORT CODE BYTES RATE SECONDS. All that the code q draws is a receipt.
attack() {
  in_far "$hostile" "$room_address" "$port" "$@"
}
flood_of_one() { attack "$crowd" 1 40000 q 1 "$@"; }

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

# play CASE SECONDS ATTACK...: bots in a new room, joining amid what the command ATTACK does to
# it, with a line in the table.
play() {
  local name=$1 arrived out work attacker
  length=$2
  shift 2
  open_room
  arrived=$(received)
  out=$(sent_bytes)
  work=$(processor_ms)
  "$@" >attacks &
  attacker=$!
  sleep "$head_start"
  in_far ./drench-bots "$room_address:$port" --arena Resources/mapdata \
    --players "$players" --name Bot --seconds "$length" --seed 1 --json --quiet >report 2>bots.log || true
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

# percent_of_calm: the rate of states in the last play.
percent_of_calm() {
  echo $((states * seconds * 100 / (calm_states * length)))
}

# all_play CASE: in the last play everybody came in once, and had receipts.
all_play() {
  [ "$ending" = playing ] || fail "$1: the room ended: $ending"
  [ "$entered $joins" = "$players $players" ] ||
    fail "$1: $entered players entered, with $joins joins"
  [ "$answered" = "$players" ] || fail "$1: $answered players had receipts"
}

# keeps_its_rate CASE: the last play was as good as the calm one.
keeps_its_rate() {
  all_play "$1"
  [ "$(percent_of_calm)" -ge 95 ] ||
    fail "$1: $states states for the least lucky player; in $seconds calm seconds $calm_states"
}

# plays_without_a_gap CASE: whoever was in missed nothing, but a join may have had to go out again, half a
# second later, because so many strangers came at once.
plays_without_a_gap() {
  all_play "$1"
  [ "$longest" -le 100 ] || fail "$1: a gap of $longest ms"
  [ "$(percent_of_calm)" -ge 50 ] ||
    fail "$1: $states states for the least lucky player; in $seconds calm seconds $calm_states"
}

# plays_calmly: what later plays are held against.
plays_calmly() {
  play 'calm' "$seconds" echo -
  calm_states=$states
  [ "$ending $joins" = "playing $players" ] || fail "calm: $ending, $joins joins"
}

# amid_play: returns once all play, for attacks that come then.
amid_play() {
  wait_for "Bot $players joined"
  # Longer than clients take to learn the rate.
  sleep 1.5
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
