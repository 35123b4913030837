#!/usr/bin/env bash
# Log search benchmark (bench/logs_bench.sh) on the release build:
#   scripts/bench-logs.sh [WORK_DIR] [--scale PERCENT]
# WORK_DIR defaults to /tmp/velmar-logs-bench and is kept for the next run.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
work=${1:-/tmp/velmar-logs-bench}
[ $# -gt 0 ] && shift
bash "$root/scripts/build.sh" release velmarctl velmar-gen velmar-log-search-bench >/dev/null
exec bash "$root/bench/logs_bench.sh" "$root/build/release/bench/velmar-log-search-bench" \
  "$root/build/release/tools/velmarctl/velmarctl" \
  "$root/build/release/tools/generator/velmar-gen" "$work" "$@"
