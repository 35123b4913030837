#!/usr/bin/env bash
# Load and save benchmark of the console's database code at 100,000 members.
#
#   scripts/bench.sh [--check] [--keep] [--runs N] [--build-dir DIR] [--work-dir DIR] [--seed N]
#
# Generates the bench preset (velmar-gen --preset bench), records the
# statements of `velmarctl load` and `velmarctl resave` with an SQL trace,
# then times N runs (3 by default) of each, alternating with the sqlite3 shell
# running the same statements on a fresh copy of the same database (under the
# connection settings the console uses: WAL, synchronous=NORMAL, one autocommit
# statement at a time) and prints the medians side by side with the targets.
# Wall time and peak resident memory come from /usr/bin/time.
#
# --check exits with status 1 when a target is missed; --keep leaves the work
# folder (traces, shell input, outputs) in place.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

check=0
keep=0
build=""
work=""
seed=20071008
runs=3
while [ $# -gt 0 ]; do
  case "$1" in
    --check) check=1 ;;
    --keep) keep=1 ;;
    --build-dir) build=$2; shift ;;
    --work-dir) work=$2; shift ;;
    --seed) seed=$2; shift ;;
    --runs) runs=$2; shift ;;
    -h|--help) sed -n '2,16p' "$0"; exit 0 ;;
    *) echo "bench.sh: unknown argument $1" >&2; exit 2 ;;
  esac
  shift
done

for tool in /usr/bin/time sqlite3; do
  if ! command -v "$tool" >/dev/null; then
    echo "bench.sh: $tool is missing; run scripts/install-deps.sh" >&2
    exit 2
  fi
done

# An optimised build unless one is named: the targets are for release code.
if [ -z "$build" ]; then
  build="$root/build/release"
  bash "$root/scripts/build.sh" release velmar-gen velmarctl velmar-trace-to-sqlite >/dev/null
fi
gen="$build/tools/generator/velmar-gen"
ctl="$build/tools/velmarctl/velmarctl"
conv="$build/bench/velmar-trace-to-sqlite"
for exe in "$gen" "$ctl" "$conv"; do
  [ -x "$exe" ] || { echo "bench.sh: $exe is not built" >&2; exit 2; }
done

if [ -z "$work" ]; then
  work=$(mktemp -d "${TMPDIR:-/tmp}/velmar-bench.XXXXXX")
  [ "$keep" = 1 ] || trap 'rm -rf "$work"' EXIT
else
  mkdir -p "$work"
fi
server="$work/server"
db="$server/VelmarDB.mdb"

# measure OUT ERR COMMAND...: runs the command under /usr/bin/time with its
# output in OUT and ERR; prints "seconds peak-KB".
measure() {
  local out=$1 err=$2
  shift 2
  local stats="$work/.time"
  # The shell goes on after a failing statement and then exits non-zero; its
  # errors are counted separately.
  if ! /usr/bin/time -f '%e %M' -o "$stats" "$@" >"$out" 2>"$err" && [ -z "${tolerant:-}" ]; then
    echo "bench.sh: failed: $*" >&2
    tail -20 "$err" >&2
    return 1
  fi
  tail -1 "$stats"
}

echo "work folder: $work"
echo "generating the bench preset ..."
res=$(measure "$work/gen.out" "$work/gen.err" "$gen" --out "$server" --preset bench --seed "$seed")
read -r gen_s gen_kb <<<"$res"
sed -n 's/^/  /;3p' "$work/gen.out"
cp "$db" "$work/pristine.mdb"

common=(--server-dir "$server" --registry-dir "$server/registry")
# Every run starts from the database as generated, without a WAL left behind.
reset_db() {
  rm -f "$1" "$1-wal" "$1-shm"
  cp "$work/pristine.mdb" "$1"
}

# The statement streams come from traced runs that are not timed: the trace
# is flushed after every statement and would weigh on our side only.
echo "velmarctl load and resave with --sql-trace (statement streams, not timed) ..."
reset_db "$db"
"$ctl" load "${common[@]}" --sql-trace "$work/load.sql" >"$work/load.out" 2>"$work/load.err"
reset_db "$db"
"$ctl" resave "${common[@]}" --sql-trace "$work/save.sql" >"$work/save.out" 2>"$work/save.err"
for phase in load save; do
  "$conv" "$work/$phase.sql" >"$work/$phase.shell.sql" 2>"$work/$phase.count"
done

# The reference: the same statements through the sqlite3 shell on a fresh
# copy of the database. SELECT results go nowhere: the console reads them
# into memory, the shell would only print them. Ours and the shell's runs
# alternate so that both see the same machine.
ours_load=(); ours_save=(); ref_load=(); ref_save=(); journal_ms=(); statements_ms=(); decode_ms=()
load_kb=0; save_kb=0; ref_load_kb=0; ref_save_kb=0
maxkb() { [ "$1" -gt "$2" ] && echo "$1" || echo "$2"; }
# ours PHASE COMMAND and shell PHASE: one run on a fresh database; "seconds peak-KB".
ours() { reset_db "$db"; measure /dev/null "$work/$1.err" "$ctl" "$2" "${common[@]}" "${@:3}"; }
shell() {
  reset_db "$work/ref.mdb"
  tolerant=1 measure /dev/null "$work/$1.shell.err" sqlite3 "$work/ref.mdb" ".read $work/$1.shell.sql"
}
for run in $(seq 1 "$runs"); do
  echo "run $run of $runs ..."
  res=$(ours load load); read -r t kb <<<"$res"
  ours_load+=("$t"); load_kb=$(maxkb "$kb" "$load_kb")
  res=$(shell load); read -r t kb <<<"$res"
  ref_load+=("$t"); ref_load_kb=$(maxkb "$kb" "$ref_load_kb")
  res=$(ours save resave --timings); read -r t kb <<<"$res"
  ours_save+=("$t"); save_kb=$(maxkb "$kb" "$save_kb")
  # The save's own phases: writing its journal, then running it.
  journal_ms+=("$(sed -n 's/^journal: \([0-9.]*\) ms.*/\1/p' "$work/save.err")")
  statements_ms+=("$(sed -n 's/^statements and notices: \([0-9.]*\) ms.*/\1/p' "$work/save.err")")
  decode_ms+=("$(sed -n 's/^statements and notices: .*reading them back from the journal \([0-9.]*\) ms.*/\1/p' "$work/save.err")")
  res=$(shell save); read -r t kb <<<"$res"
  ref_save+=("$t"); ref_save_kb=$(maxkb "$kb" "$ref_save_kb")
done
median() { printf '%s\n' "$@" | sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
load_s=$(median "${ours_load[@]}"); save_s=$(median "${ours_save[@]}")
ref_load_s=$(median "${ref_load[@]}"); ref_save_s=$(median "${ref_save[@]}")
echo "seconds per run: load ${ours_load[*]} (shell ${ref_load[*]}); save ${ours_save[*]} (shell ${ref_save[*]})"
jour_ms=$(median "${journal_ms[@]}"); stmt_ms=$(median "${statements_ms[@]}"); dec_ms=$(median "${decode_ms[@]}")
echo "save journal per run (ms): ${journal_ms[*]}; reading it back (ms): ${decode_ms[*]}; statements per run (ms): ${statements_ms[*]}"

# Round trip: after load and resave the tables hold the rows they held (a
# lower-case "w" right is saved back as "W", as designed).
queries=("Member" "[Group]" "Relation" "Rank" "AccessToken" "VoipInfo" "VoipNumberList" "Folder"
         "(SELECT OFolderID, OMemberID, upper(Authority) FROM UserAuthority)"
         "(SELECT OFolderID, OGroupID, upper(Authority) FROM GroupAuthority)" "CONTENTS")
differs=""
for q in "${queries[@]}"; do
  a=$(sqlite3 "$work/pristine.mdb" "SELECT * FROM $q" | sort | md5sum)
  b=$(sqlite3 "$db" "SELECT * FROM $q" | sort | md5sum)
  [ "$a" = "$b" ] || differs="$differs $(sed 's/.* FROM \([A-Za-z]*\)).*/\1/' <<<"$q")"
done

status=0
awk -v gen_s="$gen_s" -v gen_kb="$gen_kb" \
    -v load_s="$load_s" -v load_kb="$load_kb" -v save_s="$save_s" -v save_kb="$save_kb" \
    -v rload_s="$ref_load_s" -v rload_kb="$ref_load_kb" -v rsave_s="$ref_save_s" -v rsave_kb="$ref_save_kb" \
    -v nload="$(cut -d' ' -f1 "$work/load.count")" -v nsave="$(cut -d' ' -f1 "$work/save.count")" \
    -v jour_ms="$jour_ms" -v stmt_ms="$stmt_ms" -v dec_ms="$dec_ms" \
    -v check="$check" '
function verdict(ours, ref, limit, ratio_limit, kb, mb_limit,    ok) {
  ok = ours <= limit && (ref <= 0 || ours / ref <= ratio_limit) && kb / 1024 <= mb_limit
  if (!ok) missed = 1
  return ok ? "met" : "MISSED"
}
BEGIN {
  printf "\n%-6s %10s %10s %16s %7s %10s %10s  %-32s %s\n", "phase", "statements", "ours (s)", "sqlite3 shell (s)", "ratio", "ours (MB)", "shell (MB)", "target", "result"
  printf "%-6s %10d %10.2f %16.2f %7.2f %10.0f %10.0f  %-32s %s\n", "load", nload, load_s, rload_s, (rload_s > 0 ? load_s / rload_s : 0), load_kb / 1024, rload_kb / 1024, "<= 3 s, <= 2x, <= 250 MB", verdict(load_s, rload_s, 3, 2, load_kb, 250)
  printf "%-6s %10d %10.2f %16.2f %7.2f %10.0f %10.0f  %-32s %s\n", "save", nsave, save_s, rsave_s, (rsave_s > 0 ? save_s / rsave_s : 0), save_kb / 1024, rsave_kb / 1024, "<= 15 s, <= 1.3x, <= 500 MB", verdict(save_s, rsave_s, 15, 1.3, save_kb, 500)
  # The journal phase also formats the statements, which the save did
  # before it had a journal: counting it whole overstates the cost.
  share = (jour_ms + stmt_ms > 0) ? 100 * (jour_ms + dec_ms) / (jour_ms + stmt_ms) : 0
  jok = share <= 5
  if (!jok) missed = 1
  printf "%-6s %10s %10.2f %16s %7s %10s %10s  %-32s %s\n", "journal", "", (jour_ms + dec_ms) / 1000, "-", sprintf("%.1f%%", share), "", "", "<= 5% of the save (writing + reading back)", jok ? "met" : "MISSED"
  printf "\ngeneration of the bench preset: %.2f s, %.0f MB\n", gen_s, gen_kb / 1024
  exit (check && missed) ? 1 : 0
}' || status=$?
for phase in load save; do
  errors=$(grep -c '^\(Parse error\|Runtime error\|Error\)' "$work/$phase.shell.err" || true)
  [ "$errors" = 0 ] || echo "sqlite3 shell: $errors failing statements in the $phase trace (see $work/$phase.shell.err)"
done
if [ -n "$differs" ]; then
  echo "round trip: tables changed by load + resave:$differs"
else
  echo "round trip: every table holds the rows it held before"
fi
echo "(save = the whole 'velmarctl resave' run, which loads before it saves; $(nproc) cores, load average $(cut -d' ' -f1-3 /proc/loadavg))"
exit $status
