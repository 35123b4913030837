#!/usr/bin/env bash
# A throw-away systemd user manager for the service tests.
#
#   systemd-test-manager.sh run -- cmd ...   start a private user manager with its own session
#                                            bus, run cmd with DBUS_SESSION_BUS_ADDRESS and
#                                            VELMAR_SERVICE_BUS=user pointing at it, stop the
#                                            manager (it stops its units), exit with cmd's code
#
# The manager runs in a private mount namespace with a tmpfs on /run/systemd (so it believes it
# runs on a systemd machine, in a container too), a private XDG_RUNTIME_DIR and HOME; the test
# units go to $HOME/.config/systemd/user. It is never process 1 of a namespace: systemd as
# process 1 cleans the machine's /tmp at boot. When the manager cannot start, cmd runs without
# it (VELMAR_TEST_SYSTEMD unset) and the tests that need it say why they skip.
set -euo pipefail

die() {
  echo "systemd-test-manager: $*" >&2
  exit 2
}

SYSTEMD=${SYSTEMD_BINARY:-/lib/systemd/systemd}

run_without_manager() {
  echo "systemd-test-manager: $*; running without a user manager" >&2
  unset VELMAR_TEST_SYSTEMD
  exec "${command[@]}"
}

inner() {
  tmp=$(mktemp -d "${TMPDIR:-/tmp}/velmar-systemd.XXXXXX")
  manager_pid=""
  cleanup() {
    if [ -n "$manager_pid" ] && kill -0 "$manager_pid" 2>/dev/null; then
      kill -TERM "$manager_pid" 2>/dev/null || true
      for _ in $(seq 100); do kill -0 "$manager_pid" 2>/dev/null || break; sleep 0.1; done
      kill -KILL "$manager_pid" 2>/dev/null || true
    fi
    rm -rf "$tmp"
  }
  trap cleanup EXIT
  trap 'exit 130' INT TERM

  mkdir -p /run/systemd
  mount -t tmpfs -o mode=0755 tmpfs /run/systemd || run_without_manager "cannot mount /run/systemd"
  mkdir -p /run/systemd/system
  export XDG_RUNTIME_DIR="$tmp/runtime" HOME="$tmp/home"
  mkdir -p "$XDG_RUNTIME_DIR" "$HOME/.config/systemd/user"
  chmod 0700 "$XDG_RUNTIME_DIR"
  unset DBUS_SESSION_BUS_ADDRESS XDG_CONFIG_HOME

  "$SYSTEMD" --user >"$tmp/manager.log" 2>&1 &
  manager_pid=$!
  for _ in $(seq 300); do
    [ -S "$XDG_RUNTIME_DIR/systemd/private" ] && break
    kill -0 "$manager_pid" 2>/dev/null || break
    sleep 0.1
  done
  if [ ! -S "$XDG_RUNTIME_DIR/systemd/private" ]; then
    tail -n 20 "$tmp/manager.log" >&2 || true
    run_without_manager "the user manager did not start"
  fi
  # The manager only registers on a bus that it started itself.
  systemctl --user start dbus.service >/dev/null 2>&1 || {
    tail -n 20 "$tmp/manager.log" >&2 || true
    run_without_manager "the session bus did not start under the manager"
  }
  export DBUS_SESSION_BUS_ADDRESS="unix:path=$XDG_RUNTIME_DIR/bus"
  export VELMAR_SERVICE_BUS=user VELMAR_TEST_SYSTEMD=1
  set +e
  "${command[@]}"
  rc=$?
  set -e
  exit "$rc"
}

cmd=${1:-}
case "$cmd" in
run)
  shift
  [ "${1:-}" = "--" ] && shift
  [ $# -ge 1 ] || die "usage: $0 run -- <command...>"
  command=("$@")
  if [ -n "${VELMAR_SYSTEMD_INNER:-}" ]; then
    unset VELMAR_SYSTEMD_INNER
    inner
  fi
  [ -x "$SYSTEMD" ] || run_without_manager "$SYSTEMD is not installed"
  command -v unshare >/dev/null || run_without_manager "unshare is not installed"
  flags=(-m --propagation private)
  # Without root, a user namespace gives the mount namespace.
  [ "$(id -u)" -eq 0 ] || flags=(-r "${flags[@]}")
  if ! unshare "${flags[@]}" true 2>/dev/null; then
    run_without_manager "cannot make a private mount namespace"
  fi
  exec env VELMAR_SYSTEMD_INNER=1 unshare "${flags[@]}" bash "$0" run -- "$@"
  ;;
*)
  die "usage: $0 run -- <command...>"
  ;;
esac
