#!/usr/bin/env bash
# The member import on the bench server (100,000 members):
#
#   bench/import_bench.sh [--build-dir DIR] [--server DIR] [--keep]
#
# Generates the bench preset (velmar-gen --preset bench) unless --server
# names one made before, writes two UTF-8 CSV files with the import's
# column names: 10,000 new members, and 100,000 rows of which every 100th
# repeats a user ID of the server and every 1,000th breaks the character
# rule. Runs velmar-import-bench on them (medians of five runs beside the
# targets), then times sqlite3's .import of the same files into an
# in-memory table as the reference.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build="$root/build/release"
server=""
keep=0
while [ $# -gt 0 ]; do
  case "$1" in
    --build-dir) build=$2; shift ;;
    --server) server=$2; shift ;;
    --keep) keep=1 ;;
    -h|--help) sed -n '2,12p' "$0"; exit 0 ;;
    *) echo "import_bench.sh: unknown argument $1" >&2; exit 2 ;;
  esac
  shift
done
command -v sqlite3 >/dev/null || { echo "import_bench.sh: sqlite3 is missing; run scripts/install-deps.sh" >&2; exit 2; }
bench="$build/bench/velmar-import-bench"
gen="$build/tools/generator/velmar-gen"
for exe in "$bench" "$gen"; do
  [ -x "$exe" ] || { echo "import_bench.sh: $exe is not built" >&2; exit 2; }
done
work=$(mktemp -d "${TMPDIR:-/tmp}/velmar-import-bench.XXXXXX")
[ "$keep" = 1 ] && echo "work folder: $work" || trap 'rm -rf "$work"' EXIT
if [ -z "$server" ]; then
  server="$work/server"
  "$gen" --out "$server" --preset bench --seed 20071008 >/dev/null
fi

header='用户ID,姓名,密码,邮箱,手机,电话,地址,性别,管理权限,出生年月,信息公开'
sqlite3 "$server/VelmarDB.mdb" \
  "SELECT MemberID FROM Member WHERE IsGuestMember = 0 ORDER BY OMemberID LIMIT 1000;" >"$work/existing.txt"
awk -v header="$header" -v rows=10000 'BEGIN {
  print header
  for (i = 1; i <= rows; i++)
    printf "imp%06d,测试用户%d,pw%d,imp%d@example.cn,1390000%04d,010-%d,\"北京市, 海淀区 %d 号\",%d,0,1990-01-01,1\r\n", i, i, i, i, i % 10000, i, i, i % 2
}' >"$work/members-10000.csv"
awk -v header="$header" -v rows=100000 'NR == FNR { existing[n++] = $0; next }
END {
  print header
  for (i = 1; i <= rows; i++) {
    id = sprintf("row%06d", i)
    if (i % 1000 == 0) id = "bad.id" i
    else if (i % 100 == 0) id = existing[(i / 100) % n]
    printf "%s,姓名%d,pw,r%d@example.cn,,,,1,0,,1\r\n", id, i, i
  }
}' "$work/existing.txt" >"$work/rows-100000.csv"

"$bench" "$server" "$work/members-10000.csv" "$work/rows-100000.csv"

# The reference: sqlite3 reading the same CSV files into a table.
for f in members-10000 rows-100000; do
  start=$(date +%s%N)
  sqlite3 :memory: ".import --csv $work/$f.csv t" "SELECT count(*) FROM t;" >/dev/null
  end=$(date +%s%N)
  printf '%-44s %8.1f ms  (reference: sqlite3 .import --csv into :memory:)\n' \
    "sqlite3 .import $f.csv" "$(echo "($end - $start) / 1000000" | bc -l)"
done
