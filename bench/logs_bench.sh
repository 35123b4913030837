#!/usr/bin/env bash
# Log search benchmark: the log views' search (velmar-log-search-bench: the
# list model of each view filled for the month period) over thirty days of
# logs at the volume of a busy server, side by side with `grep -c -E` and the
# header expression over the same files; `velmarctl logs` printing every row
# as text is timed as a second line.
#
#   bench/logs_bench.sh SEARCH_BENCH VELMARCTL VELMAR_GEN WORK_DIR [--scale PERCENT]
#
# WORK_DIR gets the generated server (velmar-gen --logs-bench, 5,000 members,
# dated today) unless it already holds one; it takes about 1.4 GB of disk at
# full scale. Wall time and peak resident memory come from /usr/bin/time -v;
# "bytes listed" is the size of the files the period accepts.
set -euo pipefail
search=$1
ctl=$2
gen=$3
work=$4
shift 4
scale=100
while [ $# -gt 0 ]; do
  case "$1" in
    --scale) scale=$2; shift ;;
    *) echo "unknown option $1" >&2; exit 2 ;;
  esac
  shift
done

if [ ! -d "$work/LogFiles/VelmarD" ]; then
  echo "generating the log month in $work ..." >&2
  "$gen" --out "$work" --members 5000 --logs-bench --logs-bench-scale "$scale" >/dev/null
fi

from="$(date -d '-29 days' +%Y-%m-%d)T00:00:00"
to="$(date -d tomorrow +%Y-%m-%d)T00:59:59"
expr='^[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} .*'
logs="$work/LogFiles"

files_of() {
  case "$1" in
    user) find "$logs/VelmarD" -maxdepth 1 -name 'u*.txt' ;;
    system) for d in VelmarD GroupD RelayD FileDispatchD FileSessionD ChatD; do
        find "$logs/$d" -maxdepth 1 -name 's*.txt'; done ;;
    chat) find "$logs/ChatD" -maxdepth 1 -name 'c*_*.txt' ;;
  esac
}

measure() { # prints "seconds peak_kb" of a command whose output goes down a pipe
  # Not straight to /dev/null: grep notices that and stops at the first match.
  "$@" 2>/dev/null | cat >/dev/null || true # warms the page cache
  /usr/bin/time -v -o "$work/.time" "$@" 2>/dev/null | cat >/dev/null || true
  local wall rss
  wall=$(grep 'Elapsed (wall clock)' "$work/.time" | awk '{print $NF}' | awk -F: '{ if (NF==3) print $1*3600+$2*60+$3; else print $1*60+$2 }')
  rss=$(grep 'Maximum resident set size' "$work/.time" | awk '{print $NF}')
  echo "$wall $rss"
}

printf '%-9s %10s %12s %8s %8s %8s %8s %8s\n' kind rows "bytes" "ours s" "grep s" "peak MB" "x grep" "mem x"
for kind in user system chat; do
  files_of "$kind" > "$work/.files"
  bytes=$(xargs -a "$work/.files" -d '\n' stat -c %s | awk '{s+=$1} END {print s+0}')
  read -r grepped _ < <(measure xargs -a "$work/.files" -d '\n' grep -c -E "$expr")
  # The search: once to warm the page cache, then the run that counts.
  "$search" --server-dir "$work" --registry-dir "$work/registry" "$kind" >/dev/null 2>&1
  read -r _ rows ours rss _ < <("$search" --server-dir "$work" --registry-dir "$work/registry" "$kind" 2>/dev/null)
  awk -v k="$kind" -v r="$rows" -v b="$bytes" -v o="$ours" -v g="$grepped" -v m="$rss" 'BEGIN {
    printf "%-9s %10d %12d %8.2f %8.2f %8.1f %8.1f %8.2f\n", k, r, b, o, g, m/1024, o/g, (m*1024)/b }'
  # Secondary: velmarctl printing every row as TSV (each measure() runs twice).
  read -r printed prss < <(measure "$ctl" logs "$kind" --from "$from" --to "$to" \
    --server-dir "$work" --registry-dir "$work/registry")
  awk -v k="$kind" -v o="$printed" -v g="$grepped" -v m="$prss" -v b="$bytes" 'BEGIN {
    printf "%-9s %10s %12s %8.2f %8.2f %8.1f %8.1f %8.2f\n", "  ctl", "", "", o, g, m/1024, o/g, (m*1024)/b }'
done
rm -f "$work/.files" "$work/.time"
echo "rows: ctl = velmarctl logs printing every row; targets (the search): user 4 s, system 2 s, chat 2 s; within 3x of grep; peak memory <= 2x the bytes listed"
