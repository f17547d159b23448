# shellcheck shell=bash
# Sourced, in the root, by the scripts that build.

. .ci/prerequisites.sh

# Ends the script where nothing can be written, before anything is installed.
need_writable_checkout() {
  local why
  if ! why=$({ mkdir -p build && rmdir "$(mktemp -d build/writable.XXXXXX)"; } 2>&1); then
    echo "Nothing can be built in $PWD: $why" >&2
    echo 'Copy the checkout to where you may write, and run this there.' >&2
    exit 1
  fi
}

# compiler_of FOLDER: with its arguments, as the build tree was configured for it.
compiler_of() {
  sed -n 's/^set(CMAKE_CXX_COMPILER\(_ARG1\)\? "\(.*\)")$/\2/p' \
    "$1"/CMakeFiles/[0-9]*/CMakeCXXCompiler.cmake 2>/dev/null | tr -d '\n'
}

# The compiler that CXX asks for, as CMake would note it down.
compiler_asked_for() {
  local words
  read -ra words <<<"$CXX"
  words[0]=$(realpath --no-symlinks "$(type -P "${words[0]}")")
  echo "${words[*]}"
}

# configure PRESET [CMAKE OPTION...]: afresh where the build tree is of another place or compiler, which
# CMake would keep in silence.
configure() {
  local preset=$1 folder=build/$1 place afresh=()
  shift
  if [ -f "$folder/CMakeCache.txt" ]; then
    place=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$folder/CMakeCache.txt")
    if ! [ "$place" -ef . ]; then
      echo "$folder was made for a checkout in $place; building it afresh."
      afresh=(--fresh)
    elif [ -n "${CXX-}" ] && [ "$(compiler_of "$folder")" != "$(compiler_asked_for)" ]; then
      echo "$folder was made by $(compiler_of "$folder"); building it afresh with CXX=$CXX."
      afresh=(--fresh)
    fi
  fi
  quietly cmake --preset "$preset" "${afresh[@]}" "$@"
}

# build PRESET [TARGET...]: everything, or these.
build() {
  local preset=$1
  shift
  quietly cmake --build --preset "$preset" --parallel "$(nproc)" ${1+--target "$@"}
}

# unpack_arm64_libraries: what the packages are built against, into build/sysroot-arm64.
unpack_arm64_libraries() {
  quietly deploy/debian/sysroot.sh arm64 build/sysroot-arm64 \
    libc6-dev libstdc++6 libcli11-dev nlohmann-json3-dev libpng-dev libzstd-dev libpcap-dev \
    libcpp-httplib-dev prometheus-cpp-dev
}
