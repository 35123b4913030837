#!/usr/bin/env bash
# Installs what is needed, builds, creates a demo server folder (embedded
# database, sample logs and settings) and opens the console on it. Without a
# display the console runs under Xvfb, saves a screenshot and prints its path.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

bash scripts/install-deps.sh
bash scripts/build.sh release VelmarManager velmar-gen velmarctl

demo=${VELMAR_DEMO_DIR:-$root/build/demo-server}
bash scripts/make-demo-server.sh "$demo"

console="$root/build/release/src/app/VelmarManager"
args=(--server-dir "$demo" --registry-dir "$demo/registry")

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  shot="$root/build/demo-screenshot.png"
  xvfb-run -a -s "-screen 0 1366x800x24" "$console" "${args[@]}" --screenshot "$shot"
  echo "Screenshot of the console: $shot"
  # The user log view after a search of the last week, a rich-text message selected.
  logshot="$root/build/userlog-screenshot.png"
  xvfb-run -a -s "-screen 0 1366x800x24" "$console" "${args[@]}" --view userlog \
    --screenshot "$logshot"
  echo "Screenshot of the user log view: $logshot"
else
  exec "$console" "${args[@]}"
fi
