#!/usr/bin/env bash
# Builds the libFuzzer targets of fuzz/ (clang, AddressSanitizer and
# UndefinedBehaviorSanitizer) in build/fuzz and runs each for SECONDS
# (default 60) on a working copy of its seed corpus, with its dictionary.
#   scripts/fuzz.sh [SECONDS] [TARGET...]
# Prints one line per target and exits non-zero when any target crashed,
# leaked or timed out; the input that did it is left in fuzz/findings/.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

seconds=${1:-60}
if ! [[ "$seconds" =~ ^[0-9]+$ ]] || [ "$seconds" -lt 1 ]; then
  echo "usage: $0 [SECONDS] [TARGET...]" >&2
  exit 2
fi
shift || true

# clang and its runtime (libFuzzer and the sanitizers) come from Debian.
missing=()
for p in clang libclang-rt-14-dev; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# Only the fuzz targets and the libraries they link are built, through ccache
# (the same objects again after a commit cost a cache look-up each).
build=build/fuzz
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
if [ ! -f "$build/CMakeCache.txt" ]; then
  CC=clang CXX=clang++ cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DVELMAR_FUZZ=ON -DVELMAR_WERROR=OFF "${launcher[@]}" >/dev/null
fi
build_start=$(date +%s)
cmake --build "$build" -j"${VELMAR_JOBS:-$(nproc)}" --target fuzzers
echo "fuzz build: $(( $(date +%s) - build_start )) s"

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for f in fuzz/fuzz_*.cpp; do targets+=("$(basename "$f" .cpp)"); done
fi

# The log readers' hand-made damaged files are the ordinary tests' corpus too.
extra_seeds() {
  case $1 in
    fuzz_chat_log) echo tests/data/fuzz/chat ;;
    fuzz_user_log | fuzz_system_log) echo tests/data/fuzz/userlog ;;
    fuzz_rtf) echo tests/data/fuzz/rtf ;;
  esac
}

mkdir -p fuzz/findings
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=0}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
export LSAN_OPTIONS=${LSAN_OPTIONS:-suppressions=$root/tests/data/lsan.supp:print_suppressions=0}
export QT_QPA_PLATFORM=offscreen

failed=0
printf '%-24s %10s %8s %8s  %s\n' target runs coverage features result
for target in "${targets[@]}"; do
  exe="$build/fuzz/$target"
  work="$build/corpus/$target"
  log="$build/logs/$target.log"
  mkdir -p "$work" "$(dirname "$log")"
  seeds=()
  [ -d "fuzz/corpus/$target" ] && seeds+=("fuzz/corpus/$target")
  extra=$(extra_seeds "$target")
  [ -n "$extra" ] && seeds+=("$extra")
  args=(-max_total_time="$seconds" -timeout=25 -rss_limit_mb=4096 -print_final_stats=1
    -artifact_prefix="fuzz/findings/$target-")
  [ -f "fuzz/$target.dict" ] && args+=(-dict="fuzz/$target.dict")
  status=0
  "$exe" "${args[@]}" "$work" "${seeds[@]}" >"$log" 2>&1 || status=$?
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n1 || true)
  cov=$(grep -oE 'cov: [0-9]+' "$log" | tail -n1 | cut -d' ' -f2 || true)
  ft=$(grep -oE 'ft: [0-9]+' "$log" | tail -n1 | cut -d' ' -f2 || true)
  if [ "$status" -eq 0 ]; then
    result=ok
  else
    failed=1
    kind=$(grep -oE 'ERROR: (libFuzzer|AddressSanitizer|LeakSanitizer): [a-z-]+( signal)?|runtime error|ALARM: working on the last Unit for [0-9]+ seconds' "$log" | head -n1 || true)
    artifact=$(sed -n 's/.*Test unit written to //p' "$log" | tail -n1 || true)
    result="FAILED (${kind:-exit $status}) ${artifact:-} log $log"
  fi
  printf '%-24s %10s %8s %8s  %s\n' "$target" "${runs:-0}" "${cov:-0}" "${ft:-0}" "$result"
done
exit $failed
