#!/usr/bin/env bash
# Organisation view benchmark on the 100,000-member bench server.
#
#   bench/organize_bench.sh [--build-dir DIR] [--server-dir DIR] [--seed N] [--keep]
#
# Generates the bench preset (velmar-gen --preset bench, as scripts/bench.sh
# does) unless --server-dir names one already generated, then:
#   1. velmar-organize-bench: end of load to a painted view, filter
#      keystrokes, scrolling, a new member, a 1,000-member drop and a
#      1,000-member deletion, each with its repaint;
#   2. the whole console, offscreen: `VelmarManager --view organize
#      --screenshot` against `--view home` on the same server (wall time and
#      peak memory), and `velmarctl load` for the memory reference.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

build=""
server=""
seed=20071008
keep=0
while [ $# -gt 0 ]; do
  case "$1" in
    --build-dir) build=$2; shift ;;
    --server-dir) server=$2; shift ;;
    --seed) seed=$2; shift ;;
    --keep) keep=1 ;;
    -h|--help) sed -n '2,13p' "$0"; exit 0 ;;
    *) echo "organize_bench.sh: unknown argument $1" >&2; exit 2 ;;
  esac
  shift
done

if [ -z "$build" ]; then
  build="$root/build/release"
  bash "$root/scripts/build.sh" release velmar-gen velmarctl VelmarManager velmar-organize-bench >/dev/null
fi
gen="$build/tools/generator/velmar-gen"
ctl="$build/tools/velmarctl/velmarctl"
console="$build/src/app/VelmarManager"
bench="$build/bench/velmar-organize-bench"
for exe in "$gen" "$ctl" "$console" "$bench"; do
  [ -x "$exe" ] || { echo "organize_bench.sh: $exe is not built" >&2; exit 2; }
done

work=$(mktemp -d "${TMPDIR:-/tmp}/velmar-organize-bench.XXXXXX")
[ "$keep" = 1 ] || trap 'rm -rf "$work"' EXIT
if [ -z "$server" ]; then
  server="$work/server"
  echo "generating the bench preset ..."
  "$gen" --out "$server" --preset bench --seed "$seed" | sed -n 's/^/  /;3p'
fi
common=(--server-dir "$server" --registry-dir "$server/registry")

echo
echo "== the view, in process (velmar-organize-bench)"
QT_QPA_PLATFORM=offscreen "$bench" "$server" "$server/registry" 2>/dev/null

# run LABEL COMMAND...: wall seconds and peak resident memory.
run() {
  local label=$1
  shift
  /usr/bin/time -f '%e %M' -o "$work/time" "$@" >/dev/null 2>"$work/err" || {
    echo "organize_bench.sh: failed: $*" >&2; tail -5 "$work/err" >&2; return 1; }
  read -r secs kb <"$work/time"
  printf '%-44s %7.2f s %9d KB\n' "$label" "$secs" "$kb"
  echo "$kb" >"$work/$label.kb"
}

echo
echo "== the whole console, offscreen (load included)"
export QT_QPA_PLATFORM=offscreen
run home "$console" "${common[@]}" --view home --screenshot "$work/home.png"
run organize "$console" "${common[@]}" --view organize --screenshot "$work/organize.png"
run velmarctl-load "$ctl" load "${common[@]}"
ratio=$(awk -v a="$(cat "$work/organize.kb")" -v b="$(cat "$work/velmarctl-load.kb")" \
  'BEGIN { printf "%.2f", a / b }')
echo "peak memory, organisation view / velmarctl load: $ratio (target <= 1.5)"
