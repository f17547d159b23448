# shellcheck shell=bash
# Sourced by tests that need what not every machine has.

# skip WHY: ends the test, which then counts as skipped.
skip() {
  echo "skipped: $1"
  exit 77
}

# skip_without TOOL...
skip_without() {
  local tool
  for tool in "$@"; do
    command -v "$tool" >/dev/null || skip "$tool is not installed"
  done
}
