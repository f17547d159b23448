#!/usr/bin/env bash
# Builds everything and runs every test: ./test.sh --help
set -euo pipefail
cd "$(dirname "$0")"

preset=release
if [ $# -gt 0 ] && [[ $1 != -* ]]; then
  preset=$1
  shift
elif [ "${1-}" = --help ]; then
  cat <<'USAGE'
usage: ./test.sh [preset] [ctest arguments]
Builds everything and runs every test, of which it shows those that do not pass.
  preset      release, debug, asan or tsan; default release
  -R PATTERN  the tests whose names match, for example -R '^PlayerMovement\.'
  -V          with all that the tests say
  -N          lists the tests
USAGE
  exit
fi

. .ci/building.sh
need_writable_checkout
need_build_tools
need GoogleTest libgtest-dev has_header gtest/gtest.h
need_tool_libraries
need_keeper_libraries
need 'Google Benchmark' libbenchmark-dev has_header benchmark/benchmark.h
need_window_libraries
need_window_test_tools
install_missing

echo "Building ($preset) ..."
configure "$preset" ${CI:+-DDRENCH_WERROR=ON}
# The thread sanitizer gets what has threads.
if [ "$preset" = tsan ]; then
  build tsan
else
  build "$preset" all drench-fuzz
fi

for argument; do
  case $argument in
    -V* | --verbose | --extra-verbose) exec ctest --preset "$preset" "$@" ;;
  esac
done

# Standard input without the tests that pass, which are shown for now.
show_results() {
  local line finished=
  local start='^ *Start +[0-9]+: (.*)$' pass='^ *([0-9]+/[0-9]+) Test +#[0-9]+: .* Passed +[0-9.]+ sec$'
  while IFS= read -r line; do
    if [[ $line =~ $start ]]; then
      show_for_now "$finished ${BASH_REMATCH[1]}"
    elif [[ $line =~ $pass ]]; then
      finished=${BASH_REMATCH[1]}
    else
      show_for_now ''
      printf '%s\n' "$line"
    fi
  done
}
ctest --preset "$preset" "$@" | show_results
