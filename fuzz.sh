#!/usr/bin/env bash
# Fuzzes what reads bytes from outside: ./fuzz.sh [target] [seconds]
# Without a target each has its turn; a turn takes a minute unless told otherwise. Inputs that break a
# rule go to tests/fuzz/found/<target>/, those that reach new code to build/fuzz/grown/<target>/, from
# where the next session goes on.
set -euo pipefail
cd "$(dirname "$0")"

targets=(server client prediction match scene watching maptext plan vox script settings chart recording bots relay)
usage() { echo "usage: ./fuzz.sh [target] [seconds]    (targets: ${targets[*]}; 60 seconds each)"; }
misused() {
  usage >&2
  exit 2
}
if [ "${1-}" = --help ]; then
  usage
  exit
fi

chosen=("${targets[@]}")
if [ $# -gt 0 ] && ! [[ $1 =~ ^[0-9]+$ ]]; then
  [[ " ${targets[*]} " == *" $1 "* ]] || misused
  chosen=("$1")
  shift
fi
seconds=${1:-60}
[[ $seconds =~ ^[1-9][0-9]*$ && $# -le 1 ]] || misused

. .ci/building.sh
# The preset's own.
unset CXX
has_fuzzer() {
  echo 'extern "C" int LLVMFuzzerTestOneInput(const char*, unsigned long) { return 0; }' |
    clang++ -fsanitize=fuzzer,address -x c++ - -o /dev/null
}
need_writable_checkout
need cmake cmake has_cmake
need make make command -v make
need clang clang command -v clang++
need libFuzzer libclang-rt-dev has_fuzzer
install_missing

echo 'Building ...'
configure fuzz
build fuzz

status=0
for target in "${chosen[@]}"; do
  seeds=tests/fuzz/corpus/$target
  found=tests/fuzz/found/$target
  grown=build/fuzz/grown/$target
  log=build/fuzz/$target.log
  mkdir -p "$found" "$grown"
  echo "$target: $seconds s, log in $log"
  logged "$log" build/fuzz/drench-fuzz-"$target" -max_total_time="$seconds" -timeout=10 \
    -artifact_prefix="$found/" "$grown" "$seeds" || status=1
  grep -aE '^(broken:|SUMMARY|.* runtime error:|.*Test unit written)|DONE' "$log" || true
done
if [ $status -ne 0 ]; then
  echo "A rule was broken. Again: build/fuzz/drench-fuzz-<target> <file>" >&2
fi
exit $status
