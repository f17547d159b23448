#!/usr/bin/env bash
# Builds what the keeper links as static libraries, which Debian does not have, from Debian's sources with
# its corrections: deploy/container/libraries.sh PREFIX [CMAKE OPTION...]
# A prefix that has them stays as it is. Needs dpkg-dev; nothing is installed.
set -euo pipefail
mkdir -p "$1"
prefix=$(realpath "$1")
shift
[ ! -e "$prefix/lib/pkgconfig/cpp-httplib.pc" ] || exit 0

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir -p "$folder"/lists/partial "$folder"/archives/partial "$folder"/sources
: >"$folder/status"
# The sources of the archives whose packages apt knows.
for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
  [ ! -f "$list" ] || sed 's/^deb /deb-src /' "$list" >>"$folder/sources/from-lines.list"
done
for list in /etc/apt/sources.list.d/*.sources; do
  [ ! -f "$list" ] || sed 's/^Types:.*/Types: deb-src/' "$list" >"$folder/sources/$(basename "$list")"
done
cd "$folder"
apt() {
  apt-get --quiet -o Dir::Etc::SourceList=/dev/null -o "Dir::Etc::SourceParts=$folder/sources" \
    -o "Dir::State::Lists=$folder/lists" -o "Dir::State::Status=$folder/status" -o "Dir::Cache=$folder" \
    -o APT::Sandbox::User= -o Debug::NoLocking=true "$@"
}
apt update
apt source prometheus-cpp cpp-httplib

cmake -S prometheus-cpp-*/ -B build -DCMAKE_BUILD_TYPE=Release -DCMAKE_POSITION_INDEPENDENT_CODE=ON \
  -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_INSTALL_LIBDIR=lib -DCMAKE_CXX_FLAGS="-ffile-prefix-map=$folder=." \
  -DBUILD_SHARED_LIBS=OFF -DENABLE_TESTING=OFF -DENABLE_PUSH=OFF -DENABLE_PULL=OFF \
  -DENABLE_COMPRESSION=OFF -DUSE_THIRDPARTY_LIBRARIES=OFF "$@"
cmake --build build --parallel "$(nproc)"
cmake --install build
install -D -m 644 cpp-httplib-*/httplib.h "$prefix/include/httplib.h"
mkdir -p "$prefix/lib/pkgconfig"
cat >"$prefix/lib/pkgconfig/cpp-httplib.pc" <<END
Name: cpp-httplib
Description: the header alone
Version: 0
Cflags: -I$prefix/include
Libs:
END
