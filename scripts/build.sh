#!/usr/bin/env bash
# Configures and builds one build type: scripts/build.sh release|asan [targets...]
# release: optimised with debug info; asan: AddressSanitizer + UndefinedBehaviorSanitizer.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
kind=${1:-release}
shift || true

case "$kind" in
  release) flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo) ;;
  asan) flags=(-DCMAKE_BUILD_TYPE=Debug -DVELMAR_SANITIZE=ON) ;;
  *) echo "usage: $0 release|asan [targets...]" >&2; exit 2 ;;
esac

dir="$root/build/$kind"
if [ ! -f "$dir/build.ninja" ]; then
  cmake -S "$root" -B "$dir" -G Ninja -DVELMAR_WERROR=ON "${flags[@]}" >/dev/null
fi
jobs=$(nproc)
if [ $# -gt 0 ]; then
  cmake --build "$dir" -j "$jobs" --target "$@"
else
  cmake --build "$dir" -j "$jobs"
fi
