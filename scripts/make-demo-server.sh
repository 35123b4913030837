#!/usr/bin/env bash
# Creates a demo server folder: scripts/make-demo-server.sh DIR
# DIR gets VelmarDB.mdb, Serverinfo.ini, uploaded notice files, file-box
# folders, a few days of daemon logs, and the registry hives in DIR/registry.
# Point the console at it with --server-dir DIR --registry-dir DIR/registry
# (or VELMAR_SERVER_DIR / VELMAR_REGISTRY_DIR). Running it again on the same
# folder replaces the demo data; a folder it did not make is left alone.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

if [ $# -ne 1 ] || [ "$1" = "-h" ] || [ "$1" = "--help" ]; then
  echo "usage: $0 DIR" >&2
  exit 2
fi
dir=$1

# VELMAR_GEN names a velmar-gen built elsewhere; otherwise the release build,
# brought up to date first.
gen=${VELMAR_GEN:-}
if [ -z "$gen" ]; then
  bash "$root/scripts/build.sh" release velmar-gen >/dev/null
  gen="$root/build/release/tools/generator/velmar-gen"
fi

"$gen" --out "$dir" --registry-dir "$dir/registry" --preset demo --logs
