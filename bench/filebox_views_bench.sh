#!/usr/bin/env bash
# The file-box and notice views on the bench server (100,000 members, 500
# folders, 5,000 rights, 5,000 notices), offscreen:
#
#   bench/filebox_views_bench.sh [--build-dir DIR] [--server DIR]
#
# Generates the bench preset into a temporary folder unless --server names
# one made before (velmar-gen --preset bench), then prints the medians of
# five runs beside the targets.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build="$root/build/release"
server=""
while [ $# -gt 0 ]; do
  case "$1" in
    --build-dir) build=$2; shift ;;
    --server) server=$2; shift ;;
    -h|--help) sed -n '2,9p' "$0"; exit 0 ;;
    *) echo "filebox_views_bench.sh: unknown argument $1" >&2; exit 2 ;;
  esac
  shift
done
bench="$build/bench/velmar-filebox-views-bench"
gen="$build/tools/generator/velmar-gen"
for exe in "$bench" "$gen"; do
  [ -x "$exe" ] || { echo "filebox_views_bench.sh: $exe is not built" >&2; exit 2; }
done
if [ -z "$server" ]; then
  work=$(mktemp -d "${TMPDIR:-/tmp}/velmar-views-bench.XXXXXX")
  trap 'rm -rf "$work"' EXIT
  server="$work/server"
  "$gen" --out "$server" --preset bench --seed 20071008 >/dev/null
fi
QT_QPA_PLATFORM=offscreen "$bench" "$server" "$server/registry"
