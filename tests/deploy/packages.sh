# shellcheck shell=bash
# Sourced by tests of the Debian packages.

can_pack() {
  local tool
  for tool in dpkg-deb dpkg-shlibdeps file gzip; do
    command -v "$tool" >/dev/null || return 1
  done
}

# unpack_packages BUILD_FOLDER FOLDER: packs what was built into FOLDER/packed, and unpacks each package
# into a folder of its own name beside that, with its scripts in DEBIAN/.
unpack_packages() {
  local package
  cpack --config "$1/CPackConfig.cmake" -B "$2/packed" >"$2/cpack.log" 2>&1 || {
    cat "$2/cpack.log" >&2
    exit 1
  }
  for package in "$2"/packed/*.deb; do
    dpkg-deb --raw-extract "$package" "$2/$(dpkg-deb --field "$package" Package)"
  done
}
