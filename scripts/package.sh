#!/usr/bin/env bash
# Builds the release configuration and packs it: scripts/package.sh [OUTDIR]
# writes velmarmanager_<version>_<arch>.deb and velmarctl_<version>_<arch>.deb
# into OUTDIR (default build/packages) and lints them. Install both with
#   sudo apt install ./build/packages/velmarmanager_*.deb ./build/packages/velmarctl_*.deb
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
out=${1:-$root/build/packages}

bash "$root/scripts/install-deps.sh"
bash "$root/scripts/build.sh" release VelmarManager velmarctl velmar_packaging_files

mkdir -p "$out"
rm -f "$out"/velmarmanager_*.deb "$out"/velmarctl_*.deb
cpack --config "$root/build/release/CPackConfig.cmake" -G DEB -B "$out" >/dev/null
rm -rf "$out/_CPack_Packages"

# Errors fail the script; the warnings kept are listed in the README.
lintian --fail-on error "$out"/velmarmanager_*.deb "$out"/velmarctl_*.deb
ls -1 "$out"/*.deb
