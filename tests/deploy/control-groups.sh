# shellcheck shell=bash
# Sourced: holds processes to the memory, tasks and processor time of a unit, by control groups as
# systemd does, of either version.

group_folders=()

# group_limit FOLDER FILE VALUE: makes the group where it is missing.
group_limit() {
  mkdir -p "$1" && echo "$3" >"$1/$2"
}

# make_group NAME UNIT: says so where this machine gives no control groups.
make_group() {
  if ! set_limits "$@" 2>/dev/null; then
    group_folders=()
    echo 'No control groups here: neither memory, tasks nor processor time are limited.'
  fi
}

set_limits() {
  local root=/sys/fs/cgroup period=100000 memory tasks quota
  memory=$(sed -n 's/^MemoryMax=//p' "$2" | numfmt --from=iec)
  tasks=$(sed -n 's/^TasksMax=//p' "$2")
  quota=$(($(sed -n 's/^CPUQuota=\(.*\)%$/\1/p' "$2") * period / 100))
  if [ -e $root/cgroup.controllers ]; then
    group_folders=("$root/$1")
    echo '+memory +pids +cpu' >$root/cgroup.subtree_control
    group_limit "$root/$1" memory.max "$memory" && group_limit "$root/$1" pids.max "$tasks" &&
      group_limit "$root/$1" cpu.max "$quota $period"
  else
    group_folders=("$root/memory/$1" "$root/pids/$1" "$root/cpu/$1")
    group_limit "${group_folders[0]}" memory.limit_in_bytes "$memory" &&
      group_limit "${group_folders[1]}" pids.max "$tasks" &&
      group_limit "${group_folders[2]}" cpu.cfs_period_us "$period" &&
      group_limit "${group_folders[2]}" cpu.cfs_quota_us "$quota"
  fi
}

# enter_group: this shell, and what it starts from now on.
enter_group() {
  local folder
  for folder in "${group_folders[@]}"; do
    echo "$BASHPID" >"$folder/cgroup.procs"
  done
}

# remove_group: once nothing is left in it.
remove_group() {
  local folder
  for folder in "${group_folders[@]}"; do
    rmdir "$folder" 2>/dev/null || true
  done
}
