#!/usr/bin/env bash
# The scripts build with the compiler that is asked for, in the place where they are, or say why not.
# usage: building.sh BUILD_FOLDER
set -euo pipefail

build=$(realpath "$1")
. "$(dirname "$0")/checkout.sh"
trap 'rm -rf "$folder"' EXIT

# What the others stand on is how the real CMake notes down its compiler.
expect 'the compiler of a real build tree is known' [ -x "$(
  . .ci/building.sh
  compiler_of "$build" | cut -d' ' -f1
)" ]

printf '#!/bin/sh\n' >"$folder/bin/ctest"
chmod +x "$folder/bin/ctest"

# configures WHAT [VARIABLE=VALUE]: as test.sh, in a build tree that may be there.
configures() {
  : >"$folder/cmake.log"
  expect "$1: it is built" [ "$(status_of env "${@:2}" ./test.sh)" -eq 0 ]
}
expect_afresh() { expect "$1: it is built afresh" says "$folder/cmake.log" --fresh; }
expect_as_before() { expect "$1: what is built stays" [ "$(grep -c -e --fresh "$folder/cmake.log")" -eq 0 ]; }

configures 'the first time'
expect_as_before 'the first time'
expect 'everything is built, and the fuzz programs' says "$folder/cmake.log" '--target all drench-fuzz'
configures 'the second time'
expect_as_before 'the second time'
configures 'another compiler' CXX=clang++
expect_afresh 'another compiler'
expect 'the compiler of before is named' says "$folder/said" "made by $folder/bin/c++;"
expect 'the new compiler is named' says "$folder/said" 'afresh with CXX=clang++'
configures 'the same compiler' CXX=clang++
expect_as_before 'the same compiler'
configures 'the same compiler by its path' "CXX=$folder/elsewhere/../bin/clang++"
expect_as_before 'the same compiler by its path'
configures 'whichever compiler'
expect_as_before 'whichever compiler'
configures 'a compiler behind a launcher' 'CXX=launcher clang++ -m64'
expect_afresh 'a compiler behind a launcher'
configures 'the same behind a launcher' 'CXX=launcher clang++ -m64'
expect_as_before 'the same behind a launcher'
configures 'other arguments' 'CXX=launcher clang++ -m32'
expect_afresh 'other arguments'

: >"$folder/cmake.log"
for script in ./run.sh ./test.sh; do
  expect "$script without the compiler asked for ends" [ "$(status_of env CXX=nope $script)" -eq 1 ]
  expect "$script names the compiler that is not there" says "$folder/said" 'CXX=nope is no C++20 compiler'
done
expect 'without the compiler asked for nothing is built' [ ! -s "$folder/cmake.log" ]

mv "$checkout" "$folder/moved"
cd "$folder/moved"
configures 'a moved checkout'
expect_afresh 'a moved checkout'
expect 'the place of before is named' says "$folder/said" "for a checkout in $checkout"
configures 'a moved checkout the second time'
expect_as_before 'a moved checkout the second time'

# Root may write anywhere, but nobody not.
nobody=()
if [ "$(id -u)" -eq 0 ]; then
  nobody=(setpriv --reuid 65534 --regid 65534 --clear-groups)
fi
chmod -R a-w "$folder/moved"
: >"$folder/cmake.log"
for script in './run.sh 0' ./test.sh './fuzz.sh plan 1'; do
  # shellcheck disable=SC2086  # words
  expect "$script in a read-only checkout ends" [ "$(status_of "${nobody[@]}" $script)" -eq 1 ]
  expect "$script says that the checkout is read-only" \
    says "$folder/said" "Nothing can be built in $folder/moved: "
done
chmod -R u+w "$folder/moved"
expect 'in a read-only checkout nothing is built' [ ! -s "$folder/cmake.log" ]
expect 'nothing was installed all the while' [ ! -e "$folder/apt-get.log" ]

exit $((failures > 0))
