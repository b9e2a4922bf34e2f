#!/usr/bin/env bash
# Runs every benchmark program of a build under Wine, one after the other.
# Called by `make bench` inside the harness (display and wineserver are up).
set -uo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
dir=$(cd "${1:-$here/build/x86_64}" && pwd)
status=0
for exe in "$dir"/*_bench.exe; do
  [ -e "$exe" ] || continue
  echo "== $(basename "$exe")"
  (cd "$dir" && timeout 600 "$here/tools/wine-run" "$exe") || status=1
done
exit $status
