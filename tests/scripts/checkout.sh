# shellcheck shell=bash
# Sourced by tests of the scripts in the root: a copy of them that compiles and installs nothing.
# The test sets `build`, the build tree whose executables take the place of compiled ones.

source_tree=$(realpath "$(dirname "${BASH_SOURCE[0]}")/../..")
folder=$(mktemp -d)
chmod 755 "$folder"
checkout=$folder/drench
mkdir "$checkout" "$folder/bin" "$folder/elsewhere"
cp -r "$source_tree"/{run.sh,play.sh,test.sh,fuzz.sh,CMakePresets.json,.ci,Resources} "$checkout"
unset CXX CI
export PATH=$folder/bin:$PATH

# What it was asked for goes to a log. As the real one does, it keeps the first compiler unless told to
# begin afresh, and tells how far it is.
cat >"$folder/bin/cmake" <<CMAKE
#!/usr/bin/env bash
if [ "\$1" = --version ]; then
  echo 'cmake version 3.25.1'
  exit
fi
echo "\$*" >>"$folder/cmake.log"
if [ "\$1" = --preset ]; then
  tree=build/\$2
  if [ ! -e "\$tree/CMakeCache.txt" ] || [[ "\$*" == *--fresh* ]]; then
    mkdir -p "\$tree/CMakeFiles/3.25.1"
    echo "CMAKE_HOME_DIRECTORY:INTERNAL=\$PWD" >"\$tree/CMakeCache.txt"
    read -r compiler arguments <<<"\${CXX:-c++}"
    printf 'set(CMAKE_CXX_COMPILER "%s")\nset(CMAKE_CXX_COMPILER_ARG1 "%s")\n' \
      "\$(type -P "\$compiler")" "\${arguments:+ \$arguments}" >"\$tree/CMakeFiles/3.25.1/CMakeCXXCompiler.cmake"
  fi
else
  echo '[ 50%] Building half of it'
  for program in drench-server drench-map drench-bots drench; do
    [ -e "build/\$3/\$program" ] || cp "$build/\$program" "build/\$3" 2>/dev/null || true
  done
  echo '[100%] Built target all'
fi
CMAKE
for compiler in c++ clang-14 launcher; do
  printf '#!/bin/sh\ncat >/dev/null\n' >"$folder/bin/$compiler"
done
ln -s clang-14 "$folder/bin/clang++"
printf '#!/bin/sh\necho "$*" >>"%s/apt-get.log"\nexit 1\n' "$folder" >"$folder/bin/apt-get"
chmod +x "$folder"/bin/*
cd "$checkout"

failures=0

# expect WHAT COMMAND...: notes that WHAT does not hold unless the command succeeds.
expect() {
  local what=$1
  shift
  if ! "$@"; then
    echo "does not hold: $what" >&2
    failures=$((failures + 1))
  fi
}

# says FILE TEXT: whether the text stands in the file, which is shown if not.
says() { grep -qF -e "$2" "$1" || { cat "$1" >&2 && false; }; }

# within SECONDS COMMAND...: whether the command succeeds in time, tried ten times a second.
within() {
  local tries=$((10 * $1))
  shift
  while ! "$@"; do
    [ $((tries--)) -gt 0 ] || return 1
    sleep 0.1
  done
}

# status_of COMMAND...: runs it with its output in "$folder/said", and prints its status.
status_of() {
  local status=0
  timeout 60 "$@" >"$folder/said" 2>&1 </dev/null || status=$?
  echo $status
}
