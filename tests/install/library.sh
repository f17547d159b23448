#!/usr/bin/env bash
# Strangers build on the libraries: the examples against the unpacked package, or an installation where no
# package can be made, every public header by itself, and a project that has the sources in a folder of its
# own.
# usage: library.sh BUILD_FOLDER SOURCE_FOLDER COMPILER
set -euo pipefail

build=$(realpath "$1")
source=$(realpath "$2")
export CXX=$3
. "$(dirname "$0")/../deploy/packages.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Whatever is found must be found in the installation.
cd "$work"

run() {
  "$@" >"$work/log" 2>&1 || {
    echo "failed: $*" >&2
    cat "$work/log" >&2
    exit 1
  }
}

if can_pack; then
  unpack_packages "$build" "$work"
  prefix=$work/libdrench-dev/usr
else
  prefix=$work/prefix
  run cmake --install "$build" --component dev --prefix "$prefix"
fi
if grep -rn "$source\|$build" "$prefix"; then
  echo 'what is installed names the tree that it came from' >&2
  exit 1
fi

for example in client map-reader; do
  cp -r "$prefix/share/doc/drench/examples/$example" "$example"
  run cmake -S "$example" -B "$example/build" -DCMAKE_PREFIX_PATH="$prefix"
  run cmake --build "$example/build"
done
found=$(map-reader/build/map-reader "$source/Resources/mapdata")
[[ $found =~ ^32\ x\ 16\ x\ 32\ cells,\ [0-9]+\ solid\;\ a\ shot\ lands\ at\ [0-9.]+,\ [0-9.]+,\ [0-9.]+$ ]] || {
  echo "map-reader says: $found" >&2
  exit 1
}

for header in "$prefix"/include/drench/*/*.h; do
  run "$CXX" -std=c++20 -Wall -Wextra -Wpedantic -Werror -I "$prefix/include" \
    -include "$header" -fsyntax-only -x c++ /dev/null
done

# The example joins a room, and the room says so.
coproc server { exec timeout 20 "$build/drench-server" 0; }
pid=$server_PID
server_child=
port=
for ((tries = 0; tries < 100 && ${#port} == 0; ++tries)); do
  server_child=$(ps -o pid= --ppid "$pid" | tr -d ' ')
  port=$(ss -lunp | sed -n "s/.*:\([0-9]*\) .*pid=$server_child,.*/\1/p")
  sleep 0.1
done
timeout 20 client/build/client "localhost:$port" >client.log 2>&1 &
client=$!
joined=
while read -r line <&"${server[0]}"; do
  if [ "$line" = 'Ann joined' ]; then
    joined=yes
    break
  fi
done
kill "$client" "$pid" || true
wait "$client" || true
[ -n "$joined" ] || {
  echo 'the example did not join' >&2
  cat client.log >&2
  exit 1
}

# As a subdirectory: the same names, and not a word of its own.
mkdir outer
cat >outer/CMakeLists.txt <<EOF
cmake_minimum_required(VERSION 3.25)
project(outer LANGUAGES CXX)
add_subdirectory($source drench)
add_executable(outer $work/map-reader/map-reader.cpp)
target_link_libraries(outer PRIVATE drench::game drench::client)
EOF
run cmake -S outer -B outer/build
if grep -i drench log; then
  echo 'a subproject should configure in silence' >&2
  exit 1
fi
run cmake --build outer/build
targets=$(find outer/build -name 'drench-*' -type f -perm -u+x)
[ -z "$targets" ] || {
  echo "a subproject builds unasked: $targets" >&2
  exit 1
}
