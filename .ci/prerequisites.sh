# shellcheck shell=bash
# Sourced by the scripts that build: finds out what is missing and installs it.

missing=()
packages=()

# need NAME PACKAGE CHECK...: notes NAME and its Debian package unless the CHECK succeeds.
need() {
  local name=$1 package=$2
  shift 2
  if ! "$@" >/dev/null 2>&1; then
    missing+=("$name")
    packages+=("$package")
  fi
}

has_compiler() { echo 'int main() {}' | "${CXX:-c++}" -std=c++20 -x c++ -fsyntax-only -; }
has_header() { echo "#include <$1>" | "${CXX:-c++}" -std=c++20 -x c++ -fsyntax-only -; }
has_cmake() {
  printf '3.25\n%s\n' "$(cmake --version | sed -n 's/^cmake version //p')" | sort -CV
}

need_build_tools() {
  need 'a C++20 compiler' g++ has_compiler
  need 'cmake 3.25 or newer' cmake has_cmake
  need make make command -v make
}

# For drench-map and drench-bots.
need_tool_libraries() {
  need CLI11 libcli11-dev has_header CLI/CLI.hpp
  need 'the JSON library' nlohmann-json3-dev has_header nlohmann/json.hpp
  need libpng libpng-dev has_header png.h
}

# For packages.
need_package_tools() {
  need file file command -v file
  need dpkg-shlibdeps dpkg-dev command -v dpkg-shlibdeps
}

# Installs what need() noted, or says what it is and stops.
install_missing() {
  [ ${#missing[@]} -gt 0 ] || return 0
  local list
  printf -v list '%s, ' "${missing[@]}"
  list=${list%, }
  local as_root=()
  if ! command -v apt-get >/dev/null; then
    echo "Missing: $list. Please install it and run this again." >&2
    exit 1
  fi
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "Missing: $list. Please run as root: apt-get install ${packages[*]}" >&2
      exit 1
    fi
    as_root=(sudo)
  fi
  echo "Installing what is missing ($list) with apt-get ..."
  quietly "${as_root[@]}" apt-get update
  quietly "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install --yes --no-install-recommends "${packages[@]}"
}

# Runs a command whose output matters only when it fails.
quietly() {
  local log status=0
  log=$(mktemp)
  "$@" >"$log" 2>&1 </dev/null || status=$?
  if [ $status -ne 0 ]; then
    cat "$log" >&2
    echo "Failed with status $status: $*" >&2
    rm -f "$log"
    exit 1
  fi
  rm -f "$log"
}
