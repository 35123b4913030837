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

# A sample for "使用外部数据" (VelmarManager --view import opens it): new
# members, one whose user ID the demo already has and one the character rule
# refuses, so that the wizard's preview shows both outcomes.
taken=$(sqlite3 "$dir/VelmarDB.mdb" \
  "SELECT MemberID FROM Member WHERE IsGuestMember = 0 ORDER BY OMemberID LIMIT 1" 2>/dev/null || true)
taken=${taken:-admin}
cat > "$dir/ImportDemo.csv" <<CSV
用户ID,姓名,密码,邮箱,手机,性别,办公电话,出生年月,部门
wangfang,王芳,Wf-2024,wangfang@example.com,13800138001,0,010-62001001,1990-04-12,市场部
liqiang,李强,Lq-2024,liqiang@example.com,13800138002,1,010-62001002,1987-11-03,研发部
zhaolei,赵磊,Zl-2024,zhaolei@example.com,13800138003,1,010-62001003,1992-07-21,研发部
$taken,重复的用户,Dup-2024,dup@example.com,13800138004,1,010-62001004,1985-01-30,行政部
chen.jing,陈静,Cj-2024,chenjing@example.com,13800138005,0,010-62001005,1995-09-09,财务部
sunli,孙丽,Sl-2024,sunli@example.com,13800138006,0,010-62001006,1993-02-14,市场部
zhouyang,周阳,Zy-2024,zhouyang@example.com,13800138007,1,010-62001007,1989-12-01,销售部
CSV

# The wizard's side picture, looked for beside the console as "Wizgration.bmp":
# a 164 x 314 24-bit bitmap, a blue gradient with a lighter band, drawn here
# so that the demo needs no image tools.
perl -e '
  my ($w, $h) = (164, 314);
  my $stride = ($w * 3 + 3) & ~3;
  my $size = 54 + $stride * $h;
  my $out = pack("A2 V v v V", "BM", $size, 0, 0, 54)
          . pack("V l l v v V V l l V V", 40, $w, $h, 1, 24, 0, $stride * $h, 2835, 2835, 0, 0);
  for my $y (0 .. $h - 1) {            # bottom row first
    my $row = "";
    for my $x (0 .. $w - 1) {
      my $t = $y / ($h - 1);
      my ($r, $g, $b) = (20 + 40 * $t, 70 + 80 * $t, 140 + 90 * $t);
      my $d = abs(($x + $y * 0.55) - 200);
      if ($d < 26) { my $k = 1 - $d / 26; $r += 90 * $k; $g += 80 * $k; $b += 25 * $k; }
      $row .= pack("C3", map { $_ > 255 ? 255 : int $_ } ($b, $g, $r));
    }
    $out .= $row . ("\0" x ($stride - $w * 3));
  }
  binmode STDOUT; print $out;
' > "$dir/Wizgration.bmp"
