#!/usr/bin/env bash
# Unpacks packages of another architecture, with all that they depend on, where a cross compiler and
# dpkg-shlibdeps look for them: deploy/debian/sysroot.sh ARCHITECTURE FOLDER PACKAGE...
# They come from the archives that apt knows, checked as ever, but nothing is installed: this machine's
# packages and lists stay as they are, and it takes no root. A folder with these packages stays as it is.
set -euo pipefail
if [ $# -lt 3 ]; then
  echo 'usage: deploy/debian/sysroot.sh ARCHITECTURE FOLDER PACKAGE...' >&2
  exit 2
fi
architecture=$1
wanted=$2.wanted
if [ "$(cat "$wanted" 2>/dev/null)" = "$architecture ${*:3}" ]; then
  exit
fi
rm -rf "$wanted" "$2"
mkdir -p "$2"
folder=$(realpath "$2")

database=$folder/var/lib/dpkg
mkdir -p "$folder/apt/lists/partial" "$folder/apt/archives/partial" "$database/info"
echo 1 >"$database/info/format"
: >"$database/status"
: >"$database/available"

# As apt would work on a machine of that architecture where nothing is installed yet.
apt() {
  apt-get --quiet --yes -o "APT::Architecture=$architecture" -o "APT::Architectures=$architecture" \
    -o "Dir::State::Lists=$folder/apt/lists" -o "Dir::State::Status=$database/status" \
    -o "Dir::Cache=$folder/apt" -o "Dir::Cache::Archives=$folder/apt/archives" \
    -o APT::Sandbox::User= -o Debug::NoLocking=true "$@"
}
apt update
apt install --download-only --no-install-recommends "${@:3}"

for package in "$folder"/apt/archives/*.deb; do
  dpkg-deb --extract "$package" "$folder"
  name=$(dpkg-deb --field "$package" Package)
  [ "$(dpkg-deb --field "$package" Multi-Arch)" != same ] || name+=:$architecture
  # What dpkg would note, for whoever asks which package a library is of.
  {
    dpkg-deb --field "$package"
    printf 'Status: install ok installed\n\n'
  } >>"$database/status"
  dpkg-deb --fsys-tarfile "$package" | tar --list | sed -n "s|^\./\(.*[^/]\)$|$folder/\1|p" \
    >"$database/info/$name.list"
  for file in shlibs symbols; do
    dpkg-deb --info "$package" $file >"$database/info/$name.$file" 2>/dev/null ||
      rm "$database/info/$name.$file"
  done
done
rm -r "$folder/apt"
# Links that name files by their whole path mean this folder's.
find "$folder" -type l -lname '/*' -printf '%p\n%l\n' | while IFS= read -r link && IFS= read -r target; do
  ln --symbolic --relative --force --no-target-directory "$folder$target" "$link"
done
echo "$architecture ${*:3}" >"$wanted"
