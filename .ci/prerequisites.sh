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

# parses: whether the compiler takes standard input for C++20. CXX may bring arguments along.
parses() {
  local compiler
  read -ra compiler <<<"${CXX:-c++}"
  "${compiler[@]}" -std=c++20 -x c++ -fsyntax-only -
}
has_compiler() { echo 'int main() {}' | parses; }
has_header() { echo "#include <$1>" | parses; }
has_cmake() {
  printf '3.25\n%s\n' "$(cmake --version | sed -n 's/^cmake version //p')" | sort -CV
}

need_build_tools() {
  if [ -n "${CXX-}" ] && ! has_compiler >/dev/null 2>&1; then
    echo "CXX=$CXX is no C++20 compiler:" >&2
    has_compiler 2>&1 | sed 's/^.*: line [0-9]*: //' >&2 || true
    exit 1
  fi
  need 'a C++20 compiler' g++ has_compiler
  need 'cmake 3.25 or newer' cmake has_cmake
  need make make command -v make
}

# For all but the server.
need_tool_libraries() {
  need pkg-config pkg-config command -v pkg-config
  need CLI11 libcli11-dev has_header CLI/CLI.hpp
  need 'the JSON library' nlohmann-json3-dev has_header nlohmann/json.hpp
  need libpng libpng-dev has_header png.h
  need zstd libzstd-dev has_library libzstd
  need libpcap libpcap-dev has_library libpcap
}

# For drench-keeper, beside those of the tools.
need_keeper_libraries() {
  need pkg-config pkg-config command -v pkg-config
  need cpp-httplib libcpp-httplib-dev has_library cpp-httplib
  need prometheus-cpp prometheus-cpp-dev has_library prometheus-cpp-core
}

# For the window, beside those of the tools.
need_window_libraries() {
  need SDL2 libsdl2-dev has_library sdl2
  need epoxy libepoxy-dev has_library epoxy
  need GLM libglm-dev has_header glm/glm.hpp
  need 'Dear ImGui' libimgui-dev has_library imgui
  need FreeType libfreetype-dev has_library freetype2
  need toml++ libtomlplusplus-dev has_library tomlplusplus
  need 'the font Inter' fonts-inter compgen -G '/usr/share/fonts/opentype/inter/*.otf'
}
has_library() { pkg-config --exists "$1"; }

# For the window on a machine without a screen or a graphics card.
need_window_test_tools() {
  need xvfb-run xvfb command -v xvfb-run
  need xauth xauth command -v xauth
  need xdotool xdotool command -v xdotool
  need ffmpeg ffmpeg command -v ffprobe
  need "Mesa's software renderer" libgl1 has_software_renderer
}
has_software_renderer() {
  compgen -G '/usr/lib/*/libGLX_mesa.so*' && compgen -G '/usr/lib/*/dri/swrast_dri.so'
}

# For packages.
need_package_tools() {
  need file file command -v file
  need dpkg-shlibdeps dpkg-dev command -v dpkg-shlibdeps
}

# For arm64 on another machine: the compiler, with its own libraries.
need_arm64_libraries() {
  need 'a compiler for arm64' g++-aarch64-linux-gnu command -v aarch64-linux-gnu-g++
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

# Of the terminal that somebody watches; 0 where nobody does.
width=0
if [ -t 2 ]; then
  width=$(stty size <&2 | cut -d' ' -f2)
  # Some terminals do not know.
  [ "$width" -gt 1 ] || width=80
fi

# show_for_now TEXT: on a terminal, in place of what was shown for now before.
show_for_now() {
  [ "$width" -eq 0 ] || printf '\r%s\033[K' "${1:0:width-1}" >&2
}

# The same with each line of standard input, and nothing of it at the end.
show_last_line() {
  local line
  while IFS= read -r line; do
    show_for_now "${line//[[:cntrl:]]/ }"
  done
  show_for_now ''
}

# logged LOG COMMAND...: runs the command with its output in the log, on a terminal the last line in
# sight too.
logged() {
  local log=$1
  shift
  if [ "$width" -gt 0 ]; then
    "$@" </dev/null 2>&1 | tee "$log" | show_last_line
  else
    "$@" >"$log" 2>&1 </dev/null
  fi
}

# Runs a command whose output matters only when it fails.
quietly() {
  local log status=0
  log=$(mktemp)
  logged "$log" "$@" || status=$?
  if [ $status -ne 0 ]; then
    cat "$log" >&2
    echo "Failed with status $status: $*" >&2
    rm -f "$log"
    exit 1
  fi
  rm -f "$log"
}
