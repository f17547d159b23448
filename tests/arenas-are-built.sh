#!/usr/bin/env bash
# Resources/mapdata is what the default arena's plan builds.
set -euo pipefail
cd "$(dirname "$0")/.."
cmp <(arenas/plan-to-mapdata arenas/default.plan) Resources/mapdata
