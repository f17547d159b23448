#!/usr/bin/env bash
# Builds everything and runs every test: ./test.sh [preset] [ctest arguments]
# For example ./test.sh -R PlayerMovement, or ./test.sh asan.
set -euo pipefail
cd "$(dirname "$0")"

preset=release
if [ $# -gt 0 ] && [[ $1 != -* ]]; then
  preset=$1
  shift
fi

. .ci/prerequisites.sh
need_build_tools
need GoogleTest libgtest-dev has_header gtest/gtest.h
need_tool_libraries
need 'Google Benchmark' libbenchmark-dev has_header benchmark/benchmark.h
install_missing

echo "Building ($preset) ..."
quietly cmake --preset "$preset" ${CI:+-DDRENCH_WERROR=ON}
quietly cmake --build --preset "$preset" --parallel "$(nproc)"
ctest --preset "$preset" "$@"
