#!/usr/bin/env bash
# The Wireshark dissector names every byte of a match in both directions, and what is odd.
# usage: dissector.sh BUILD_FOLDER. Exits with 77 where tshark is missing or must not capture.
# With DRENCH_RENEW_DISSECTION=1 it keeps today's dissection of the odd datagrams as the expected.
set -euo pipefail

. "$(dirname "$0")/../skipping.sh"
skip_without tshark text2pcap dumpcap

build=$(realpath "$1")
cd "$(dirname "$0")/../.."
dissector=$PWD/deploy/wireshark/drench.lua
data=$PWD/tests/data

folder=$(mktemp -d)
processes=()
# shellcheck disable=SC2317
finish() {
  for process in "${processes[@]}"; do
    kill "$process" 2>/dev/null || true
  done
  wait
  rm -rf "$folder"
}
trap finish EXIT
cd "$folder"
# No settings of whoever runs this, nor their plugins.
export HOME=$folder XDG_CONFIG_HOME=$folder
failures=0

# dissect FILE PORT ARGUMENT...: tshark, with the room at PORT.
dissect() {
  tshark -X lua_script:"$dissector" -o "drench.ports:$2" -n -r "$1" "${@:3}" 2>>tshark.log
}

# fail MESSAGE
fail() {
  echo "$1" >&2
  failures=$((failures + 1))
}

# fully_dissected FILE PORT COUNT: that many datagrams, all of them the dissector's, and each byte
# of them in a field.
fully_dissected() {
  dissect "$1" "$2" -T pdml >packets.pdml
  awk -v wanted="$3" '
    function attribute(name) {
      if (!match($0, " " name "=\"[^\"]*\""))
        return ""
      return substr($0, RSTART + length(name) + 3, RLENGTH - length(name) - 4)
    }
    /<packet>/ { ++packets; mine = 0; bytes = -1; delete seen }
    /<field name="udp.length"/ { bytes = attribute("show") - 8 }
    /<proto name="drench"/ { mine = 1; start = attribute("pos") }
    # A slot claims the bytes of its fields without naming them.
    mine && /<field name="drench\./ && !/<field name="drench\.slot"/ && attribute("size") > 0 {
      first = attribute("pos") - start
      for (i = 0; i < attribute("size") + 0; ++i)
        ++seen[first + i]
    }
    /"_ws\.malformed|"_ws\.lua\.error|Lua Error/ {
      print "packet " packets ": malformed"
      bad = 1
    }
    /<\/packet>/ {
      if (!mine || bytes < 0) {
        print "packet " packets ": not dissected"
        bad = 1
      }
      for (i = 0; i < bytes; ++i)
        if (seen[i] != 1) {
          print "packet " packets ": byte " i " is in " seen[i] + 0 " fields"
          bad = 1
          break
        }
      total += bytes
    }
    END {
      if (packets != wanted || total == 0) {
        print packets + 0 " packets instead of " wanted
        bad = 1
      }
      exit bad
    }' packets.pdml >found || {
    fail "$1 is not dissected whole:"
    head -20 found >&2
  }
}

# ip_packet DIRECTION BYTE...: one datagram between a room at port 5000 and a client, as text2pcap
# reads a raw IPv4 packet.
ip_packet() {
  local bytes=() word left hosts ports
  for word in "${@:2}"; do
    left=1
    if [[ $word == *'*'* ]]; then
      left=${word#*\*}
    fi
    for (( ; left > 0; --left)); do
      bytes+=("${word%\**}")
    done
  done
  if [ "$1" = '>' ]; then
    hosts='0a 00 00 02 0a 00 00 01' ports='9c 40 13 88'
  else
    hosts='0a 00 00 01 0a 00 00 02' ports='13 88 9c 40'
  fi
  local udp=$((8 + ${#bytes[@]}))
  printf '000000 45 00 %02x %02x 00 00 00 00 40 11 00 00 %s %s %02x %02x 00 00 %s\n' \
    $(((udp + 20) >> 8)) $(((udp + 20) & 255)) "$hosts" "$ports" $((udp >> 8)) $((udp & 255)) \
    "${bytes[*]}"
}

# Odd ones first: they need no permission.
set -f
while read -r direction bytes; do
  if [ "$direction" = '<' ] || [ "$direction" = '>' ]; then
    # shellcheck disable=SC2086
    ip_packet "$direction" $bytes
  fi
done <"$data/odd-datagrams.txt" >odd.hex
set +f
text2pcap -q -l 101 odd.hex odd.pcap 2>text2pcap.log
fully_dissected odd.pcap 5000 "$(wc -l <odd.hex)"
dissect odd.pcap 5000 -O drench | sed -n '/^Drench/,/^$/p' >odd.found
if [ "${DRENCH_RENEW_DISSECTION:-}" = 1 ]; then
  cp odd.found "$data/odd-datagrams.expected"
fi
diff -u "$data/odd-datagrams.expected" odd.found >difference || {
  fail 'the odd datagrams are dissected differently:'
  cat difference >&2
}

# A match: three bots, somebody who stands still and speaks, and somebody who finds the room full.
mkdir Resources
cp "$build/drench-server" .
cp "$build/Resources/mapdata" Resources
port=$((10000 + $$ % 10000))

dumpcap -q -i lo -f "udp port $port" -a duration:120 -w match.pcap 2>dumpcap.log &
capture=$!
processes+=("$capture")
# wait_for FILE LINE: at most 60 seconds.
wait_for() {
  for ((tenths = 0; tenths < 600; ++tenths)); do
    if grep -qs "$2" "$1"; then
      return
    fi
    sleep 0.1
  done
  echo "no \"$2\" in $1:" >&2
  cat "$1" >&2
  exit 1
}
for ((tenths = 0; tenths < 100; ++tenths)); do
  if ! kill -0 "$capture" 2>/dev/null || grep -qs "^File: " dumpcap.log; then
    break
  fi
  sleep 0.1
done
if ! kill -0 "$capture" 2>/dev/null; then
  cat dumpcap.log >&2
  [ $failures -eq 0 ] && grep -qi permi dumpcap.log || exit 1
  skip 'no permission to capture on the loopback interface'
fi

./drench-server "$port" >server.log &
processes+=($!)
wait_for server.log 'Server is listening'
"$build/drench-bots" "localhost:$port" --players 3 --seconds 8 --name Bot --quiet &
bots=$!
processes+=("$bots")
wait_for server.log '^Bot 3 joined'
printf 'at 150 say hello there\nat 240 leave\n' >script
"$build/drench-bots" "localhost:$port" --script script --name Statue --quiet &
statue=$!
processes+=("$statue")
wait_for server.log '^Statue joined'
printf 'at 1 leave\n' >script-of-the-fifth
if "$build/drench-bots" "localhost:$port" --script script-of-the-fifth --seconds 1 --quiet \
  2>fifth.log; then
  fail 'a fifth player got in'
fi
wait "$statue"
wait "$bots"
kill -INT "$capture"
wait "$capture"

frames=$(tshark -n -r match.pcap -Y 'udp && !icmp' -T fields -e frame.number 2>>tshark.log | wc -l)
fully_dissected match.pcap "$port" "$frames"
# What is odd must not be seen in what our own programs send.
dissect match.pcap "$port" -Y '_ws.expert' >odd
if [ -s odd ]; then
  fail 'a match has odd datagrams:'
  head -20 odd >&2
fi
dissect match.pcap "$port" -T fields -e drench.from_room -e drench.code |
  sed 's/False/0/; s/True/1/' | sort | uniq -c >kinds
for kind in '0 j' '0 d' '0 k' '0 m' '0 t' '0 x' '1 j' '1 s' '1 f' '1 t' '1 u'; do
  if ! awk -v kind="$kind" '$2 " " $3 == kind { found = 1 } END { exit !found }' kinds; then
    fail "no datagram of kind $kind (from the room, code) was seen"
  fi
done
cat kinds
# The lines that a reader sees first.
dissect match.pcap "$port" -T fields -e _ws.col.Info >lines
for line in 'receipt' 'accepted as player 4' 'refused: the room is full' 'notice: Statue joined' \
  'x player 4 is here' 't player 4: hello there' 'player 4: hello there' 'd player 4 leaves' \
  'j join as "Statue"'; do
  if ! grep -qxF "$line" lines; then
    fail "no \"$line\" among the lines"
  fi
done
for line in 'state: 4 players, [0-4] firing' 'k player [123] [a-z]* \(down\|up\)' \
  'm player [123] turns \(left\|right\) [0-9]*, \(up\|down\) [0-9]*'; do
  if ! grep -qx "$line" lines; then
    fail "no \"$line\" among the lines"
  fi
done
exit $((failures > 0))
