#!/usr/bin/env bash
# Edit-script benchmark of `velmarctl edit` on the 100,000-member bench server.
#
#   bench/edit_bench.sh [--keep] [--runs N] [--build-dir DIR] [--work-dir DIR] [--seed N]
#
# Generates the bench preset (velmar-gen --preset bench, as scripts/bench.sh
# does), writes a script of 10,000 `member add` lines, 10,000 `place` lines
# (the new members under 100 groups named by path) and 1,000 `member delete`
# lines (members of the generated data), and runs `velmarctl edit --timings`
# on it N times (3 by default): --dry-run runs for the edit phase alone, then
# one run that saves, each on a fresh copy of the generated database. Prints
# the phases of each run and the median of the edit phase.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

keep=0
build=""
work=""
seed=20071008
runs=3
while [ $# -gt 0 ]; do
  case "$1" in
    --keep) keep=1 ;;
    --build-dir) build=$2; shift ;;
    --work-dir) work=$2; shift ;;
    --seed) seed=$2; shift ;;
    --runs) runs=$2; shift ;;
    -h|--help) sed -n '2,13p' "$0"; exit 0 ;;
    *) echo "edit_bench.sh: unknown argument $1" >&2; exit 2 ;;
  esac
  shift
done

command -v sqlite3 >/dev/null || { echo "edit_bench.sh: sqlite3 is missing; run scripts/install-deps.sh" >&2; exit 2; }

if [ -z "$build" ]; then
  build="$root/build/release"
  bash "$root/scripts/build.sh" release velmar-gen velmarctl >/dev/null
fi
gen="$build/tools/generator/velmar-gen"
ctl="$build/tools/velmarctl/velmarctl"
for exe in "$gen" "$ctl"; do
  [ -x "$exe" ] || { echo "edit_bench.sh: $exe is not built" >&2; exit 2; }
done

if [ -z "$work" ]; then
  work=$(mktemp -d "${TMPDIR:-/tmp}/velmar-edit-bench.XXXXXX")
  [ "$keep" = 1 ] || trap 'rm -rf "$work"' EXIT
else
  mkdir -p "$work"
fi
server="$work/server"
db="$server/VelmarDB.mdb"

echo "work folder: $work"
echo "generating the bench preset ..."
"$gen" --out "$server" --preset bench --seed "$seed" >"$work/gen.out"
sed -n 's/^/  /;3p' "$work/gen.out"
cp "$db" "$work/pristine.mdb"
cp "$server/Serverinfo.ini" "$work/pristine.ini"

# Group paths from the root of the organisation tree, for 100 groups of the
# deepest levels; names are quoted for the script (no name holds a quote:
# the generator writes none, and the save would refuse one).
sqlite3 "$db" >"$work/paths.txt" <<'SQL'
WITH RECURSIVE path(id, text, depth) AS (
  SELECT OGroupID, '/' || GroupName, 1 FROM [Group] WHERE IsGuestGroup = 0 AND OGroupID_P = -1
  UNION ALL
  SELECT g.OGroupID, path.text || '/' || g.GroupName, path.depth + 1
  FROM [Group] g JOIN path ON g.OGroupID_P = path.id WHERE g.IsGuestGroup = 0
)
SELECT text FROM path WHERE instr(text, '''') = 0 ORDER BY depth DESC, id LIMIT 100;
SQL
# Regular members whose user IDs pass the member rules and are listed once.
sqlite3 "$db" >"$work/deletes.txt" <<'SQL'
SELECT MemberID FROM Member WHERE IsGuestMember = 0 AND MemberID GLOB '[A-Za-z0-9_-]*'
  AND MemberID NOT GLOB '*[^A-Za-z0-9_-]*'
GROUP BY MemberID HAVING COUNT(*) = 1 ORDER BY OMemberID LIMIT 1000 OFFSET 2000;
SQL
[ "$(wc -l <"$work/paths.txt")" -gt 0 ] || { echo "edit_bench.sh: no group paths" >&2; exit 1; }
[ "$(wc -l <"$work/deletes.txt")" -eq 1000 ] || { echo "edit_bench.sh: fewer than 1,000 members to delete" >&2; exit 1; }

script="$work/edit.txt"
awk -v paths="$work/paths.txt" -v deletes="$work/deletes.txt" '
  BEGIN {
    n = 0
    while ((getline line < paths) > 0) group[n++] = line
    for (i = 0; i < 10000; i++)
      printf "member add bench_%05d --name \"Bench %d\" --password pw%d --email b%d@bench.example\n", i, i, i, i
    for (i = 0; i < 10000; i++)
      printf "place \x27%s\x27 bench_%05d\n", group[i % n], i
    while ((getline id < deletes) > 0) printf "member delete %s\n", id
  }' >"$script"
echo "script: $(wc -l <"$script") lines ($(grep -c '^member add' "$script") member add, $(grep -c '^place' "$script") place, $(grep -c '^member delete' "$script") member delete)"

reset() {
  rm -f "$db" "$db-wal" "$db-shm"
  cp "$work/pristine.mdb" "$db"
  cp "$work/pristine.ini" "$server/Serverinfo.ini"
}

common=(--server-dir "$server" --registry-dir "$server/registry" --timings)
edits=()
for ((r = 1; r <= runs; r++)); do
  reset
  "$ctl" edit --dry-run "${common[@]}" "$script" >"$work/dry.out" 2>"$work/dry.err"
  tail -1 "$work/dry.out" | sed 's/^/  /'
  echo "  dry run $r: $(tr '\n' ' ' <"$work/dry.err")"
  edits+=("$(sed -n 's/^edits: \([0-9.]*\) ms$/\1/p' "$work/dry.err")")
done
reset
"$ctl" edit "${common[@]}" "$script" >"$work/save.out" 2>"$work/save.err"
tail -1 "$work/save.out" | sed 's/^/  /'
echo "  saved run: $(tr '\n' ' ' <"$work/save.err")"
echo "  members after the save: $(sqlite3 "$db" 'SELECT COUNT(*) FROM Member') (generated: $(sqlite3 "$work/pristine.mdb" 'SELECT COUNT(*) FROM Member'))"
median=$(printf '%s\n' "${edits[@]}" | sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }')
echo "edit phase, median of $runs dry runs: $median ms for $(wc -l <"$script") lines ($(nproc) cores, load average $(cut -d' ' -f1-3 /proc/loadavg))"
