#!/usr/bin/env bash
# Stand-in daemons for a demo of the service commands, under the private user
# manager of systemd-test-manager.sh:
#
#   scripts/systemd-test-manager.sh run -- bash scripts/demo-services.sh SERVER_DIR [SCREENSHOT.png]
#
# Installs eight user units that only sleep, starts five of them (FileSessionD
# is made to fail) and opens the console on SERVER_DIR; with SCREENSHOT it
# saves the main window under Xvfb instead.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
[ $# -ge 1 ] || { echo "usage: $0 SERVER_DIR [SCREENSHOT.png]" >&2; exit 2; }
[ "${VELMAR_SERVICE_BUS:-}" = user ] || { echo "$0: run it under scripts/systemd-test-manager.sh" >&2; exit 2; }
server=$1
units="$HOME/.config/systemd/user"
mkdir -p "$units"
for name in VelmarD GroupD VelmarboxServerManager RelayD CheckD FileDispatchD FileSessionD ChatD; do
  pre=""
  [ "$name" = FileSessionD ] && pre="ExecStartPre=/bin/false"
  printf '[Unit]\nDescription=stand-in for %s\n\n[Service]\n%s\nExecStart=/bin/sleep infinity\n' \
    "$name" "$pre" >"$units/$name.service"
done
systemctl --user daemon-reload
systemctl --user start VelmarD.service GroupD.service RelayD.service ChatD.service CheckD.service
systemctl --user start FileSessionD.service 2>/dev/null || true

console="$root/build/release/src/app/VelmarManager"
args=(--server-dir "$server")
[ -d "$server/registry" ] && args+=(--registry-dir "$server/registry")
if [ $# -ge 2 ]; then
  xvfb-run -a -s "-screen 0 1366x800x24" "$console" "${args[@]}" --screenshot "$2"
else
  "$console" "${args[@]}"
fi
