#!/usr/bin/env bash
# Installs what is needed, builds, and runs every test: first in the release
# build, then again in the sanitizer build. A private PostgreSQL server and a
# private systemd user manager (for the service tests) are started for the run
# and stopped afterwards. Then every fuzz target runs for VELMAR_FUZZ_SECONDS
# (default 30; 0 leaves the fuzzing out).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

bash scripts/install-deps.sh

start=$(date +%s)
bash scripts/build.sh release
bash scripts/build.sh asan
echo "build: $(( $(date +%s) - start )) s"

export VELMAR_REQUIRE_PG=1
jobs=$(nproc)

start=$(date +%s)
bash scripts/pg-test-server.sh run -- bash scripts/systemd-test-manager.sh run -- \
  ctest --test-dir build/release --output-on-failure -j "$jobs"
echo "tests (release): $(( $(date +%s) - start )) s"

start=$(date +%s)
# unixODBC and the ODBC drivers keep a few process-lifetime allocations; only
# those are suppressed, leaks in our code still fail.
export LSAN_OPTIONS="suppressions=$root/tests/data/lsan.supp:print_suppressions=0"
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
bash scripts/pg-test-server.sh run -- bash scripts/systemd-test-manager.sh run -- \
  ctest --test-dir build/asan --output-on-failure -j "$jobs"
echo "tests (sanitizers): $(( $(date +%s) - start )) s"

fuzz_seconds=${VELMAR_FUZZ_SECONDS:-30}
if [ "$fuzz_seconds" -gt 0 ]; then
  start=$(date +%s)
  bash scripts/fuzz.sh "$fuzz_seconds"
  echo "fuzzing: $(( $(date +%s) - start )) s"
fi
