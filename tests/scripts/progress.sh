#!/usr/bin/env bash
# Long steps are seen on a terminal and leave a log alone; of tests one reads those that do not pass.
# usage: progress.sh BUILD_FOLDER. Exits with 77 where there is no terminal to be had.
set -euo pipefail

. "$(dirname "$0")/../skipping.sh"
skip_without script
build=$(realpath "$1")
. "$(dirname "$0")/checkout.sh"
trap 'rm -rf "$folder"' EXIT
export TERM=xterm

# on_terminal COMMAND: runs it on a terminal of 30 columns, its output with visible control signs.
on_terminal() {
  local status=0
  script --quiet --return --command "stty cols 30 && $1" /dev/null >"$folder/screen" </dev/null || status=$?
  sed 's/\x1b\[K/<clear>/g; s/\r$//; s/\r/<again>/g' "$folder/screen" >"$folder/said"
  return $status
}

step='. .ci/prerequisites.sh; quietly'
long='echo "[ 42%] Building something with a long name"'
expect 'a step on a terminal succeeds' on_terminal "bash -c '$step bash -c \"${long//\"/\\\"}\"'"
expect 'the line of a step is cut to the terminal, and goes' \
  says "$folder/said" '<again>[ 42%] Building something wit<clear><again><clear>'
expect 'a step without a terminal succeeds' [ "$(status_of bash -c "$step $long")" -eq 0 ]
expect 'a step without a terminal says nothing' [ ! -s "$folder/said" ]
failing="set -o pipefail; $step ls /nowhere"
on_terminal "bash -c '$failing'" && expect 'a step that fails on a terminal ends so' false
expect 'it is named on the terminal' says "$folder/said" 'Failed with status 2: ls /nowhere'
expect 'a step that fails without a terminal ends so' [ "$(status_of bash -c "$failing")" -eq 1 ]
expect 'it is named' says "$folder/said" 'Failed with status 2: ls /nowhere'
expect 'what it said is shown' grep -q '^ls: .*/nowhere' "$folder/said"

# The real ctest, on three tests.
mkdir -p build/release
cat >build/release/CTestTestfile.cmake <<'TESTS'
add_test(Good.Passes true)
add_test(Bad.Fails sh -c "echo 1/1 why it fails; exit 1")
add_test(Odd.IsSkipped sh -c "exit 77")
set_tests_properties(Odd.IsSkipped PROPERTIES SKIP_RETURN_CODE 77)
TESTS
expect 'the status is that of ctest' [ "$(status_of ./test.sh)" -eq 8 ]
expect 'a test that fails is shown' says "$folder/said" 'Test #2: Bad.Fails'
expect 'what it said is shown' says "$folder/said" '1/1 why it fails'
expect 'a test that is skipped is shown' grep -q 'Test #3: Odd.IsSkipped .*Skipped' "$folder/said"
expect 'the summary stays' says "$folder/said" '67% tests passed, 1 tests failed out of 3'
expect 'a test that passes is no line' [ "$(grep -c Good "$folder/said")" -eq 0 ]
expect 'without a terminal nothing is shown for now' [ "$(grep -c $'[\r\033]' "$folder/said")" -eq 0 ]
expect 'those that pass are enough' [ "$(status_of ./test.sh -R Good)" -eq 0 ]
expect 'all have passed' says "$folder/said" '100% tests passed, 0 tests failed out of 1'
expect 'asked to say all, it succeeds' [ "$(status_of ./test.sh -V -R Good)" -eq 0 ]
expect 'asked to say all, it names what passes' says "$folder/said" 'Test #1: Good.Passes'
expect 'tests can be listed' [ "$(status_of ./test.sh -N)" -eq 0 ]
expect 'the list names all' says "$folder/said" 'Test #1: Good.Passes'

on_terminal ./test.sh && expect 'tests that fail on a terminal end so' false
expect 'a build tells on a terminal how far it is' says "$folder/said" '<again>[ 50%] Building half of it<clear>'
expect 'a test is shown while it runs' says "$folder/said" 'Good.Passes<clear>'
expect 'the summary on a terminal has its own line' grep -qx '<again><clear>67% tests passed, 1 tests failed out of 3' "$folder/said"

exit $((failures > 0))
