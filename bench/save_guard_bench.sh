#!/usr/bin/env bash
# What the save's safety costs at 100,000 members, beside velmarctl load:
# the concurrent-change check inside a resave, the save preview of a small
# edit and the data doctor, on the bench preset (velmar-gen --preset bench).
#
#   bench/save_guard_bench.sh [--build-dir DIR] [--runs N]
#
# Targets: the check adds at most 2 % to a save, the preview takes at most
# 2 s, the doctor at most 3 s.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build="$root/build/release"
runs=3
while [ $# -gt 0 ]; do
  case "$1" in
    --build-dir) build=$2; shift ;;
    --runs) runs=$2; shift ;;
    *) echo "save_guard_bench.sh: unknown argument $1" >&2; exit 2 ;;
  esac
  shift
done
gen="$build/tools/generator/velmar-gen"
ctl="$build/tools/velmarctl/velmarctl"
work=$(mktemp -d "${TMPDIR:-/tmp}/velmar-guard-bench.XXXXXX")
trap 'rm -rf "$work"' EXIT
server="$work/server"
"$gen" --out "$server" --preset bench --seed 20071008 >/dev/null
common=(--server-dir "$server" --registry-dir "$server/registry")
cp "$server/VelmarDB.mdb" "$work/pristine.mdb"
reset_db() {
  rm -f "$server/VelmarDB.mdb-wal" "$server/VelmarDB.mdb-shm"
  cp "$work/pristine.mdb" "$server/VelmarDB.mdb"
}
seconds() { /usr/bin/time -f '%e' -o "$work/t" "$@" >"$work/out" 2>"$work/err"; cat "$work/t"; }
median() { printf '%s\n' "$@" | sort -g | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

load=(); save=(); guard=(); preview=(); doctor=()
for run in $(seq 1 "$runs"); do
  reset_db
  load+=("$(seconds "$ctl" load "${common[@]}")")
  reset_db
  save+=("$(seconds "$ctl" resave "${common[@]}" --timings)")
  guard+=("$(sed -n 's/^concurrent-change check: \([0-9.]*\) ms.*/\1/p' "$work/err")")
  reset_db
  "$ctl" edit "${common[@]}" --preview --timings - <<<"group add /bench-preview" >"$work/out" 2>"$work/err"
  preview+=("$(sed -n 's/^preview: \([0-9.]*\) ms.*/\1/p' "$work/err")")
  doctor+=("$(seconds "$ctl" doctor "${common[@]}")")
done
load_s=$(median "${load[@]}"); save_s=$(median "${save[@]}"); guard_ms=$(median "${guard[@]}")
preview_ms=$(median "${preview[@]}"); doctor_s=$(median "${doctor[@]}")
echo "velmarctl load (whole command):       ${load_s} s"
echo "velmarctl resave (whole command):     ${save_s} s"
awk -v g="$guard_ms" -v s="$save_s" 'BEGIN { printf "concurrent-change check in the save:  %.1f ms = %.2f %% of the save (target <= 2 %%; the console reads once more after its save)\n", g, g / (s * 10) }'
echo "save preview of one edit:             ${preview_ms} ms (target <= 2000 ms; after the load)"
echo "velmarctl doctor (whole command):     ${doctor_s} s (target <= 3 s, load included)"
