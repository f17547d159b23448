#!/usr/bin/env bash
# Copies a program, and each shared library that it needs, out of an unpacked Debian:
#   deploy/container/gather.sh SYSROOT FOLDER /PROGRAM
# Of whatever architecture; nothing of it is run.
set -euo pipefail
sysroot=$1
folder=$2
multiarch=$(basename "$(dirname "$(find "$sysroot" -name libc.so.6 -print -quit)")")

# take FILE: to where it lies in the Debian, with what it needs, unless it is there already.
take() {
  local file=$1 name
  [ ! -e "$folder$file" ] || return 0
  install -D -m 755 "$(realpath "$sysroot$file")" "$folder$file"
  while read -r name; do
    take "$(library "$name")"
  done < <(readelf --dynamic "$folder$file" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
}

library() {
  local place
  for place in /lib/"$multiarch" /usr/lib/"$multiarch" /lib /lib64; do
    if [ -e "$sysroot$place/$1" ]; then
      echo "$place/$1"
      return
    fi
  done
  echo "no $1 in $sysroot" >&2
  return 1
}

take "$3"
# The kernel starts this one first.
take "$(readelf --program-headers "$folder$3" | sed -n 's/.*program interpreter: \(.*\)\]/\1/p')"
