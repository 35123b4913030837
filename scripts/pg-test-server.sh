#!/usr/bin/env bash
# A throw-away PostgreSQL server for the tests.
#
#   pg-test-server.sh start <dir>      initialise and start a server in <dir>; prints export lines
#   pg-test-server.sh stop <dir>       stop the server of <dir>
#   pg-test-server.sh run -- cmd ...   start a server in a fresh temporary folder, run cmd with
#                                      VELMAR_TEST_PG_* exported, stop the server, exit with cmd's code
#
# The server trusts every local connection, listens on 127.0.0.1 only, on a free port picked at
# random from a private range, and keeps its socket inside <dir>. initdb refuses to run as root,
# so as root the cluster belongs to the "postgres" account. Durability is switched off: the data
# is thrown away after the run and the tests create many databases.
set -euo pipefail

die() {
  echo "pg-test-server: $*" >&2
  exit 2
}

find_bindir() {
  if [ -n "${PG_BINDIR:-}" ]; then
    echo "$PG_BINDIR"
    return
  fi
  local d
  for d in /usr/lib/postgresql/*/bin; do
    [ -x "$d/initdb" ] && candidate="$d"
  done
  if [ -n "${candidate:-}" ]; then
    echo "$candidate"
    return
  fi
  if command -v pg_config >/dev/null && [ -x "$(pg_config --bindir)/initdb" ]; then
    pg_config --bindir
    return
  fi
  die "no PostgreSQL server binaries found (install postgresql or set PG_BINDIR)"
}

BINDIR=$(find_bindir)

# Runs a command as the account that owns the cluster.
as_owner() {
  if [ "$(id -u)" -eq 0 ]; then
    runuser -u postgres -- "$@"
  else
    "$@"
  fi
}

port_in_use() {
  (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null
}

start_server() {
  local dir=$1
  mkdir -p "$dir"
  dir=$(cd "$dir" && pwd)
  [ -e "$dir/data/PG_VERSION" ] && die "$dir already holds a cluster"
  if [ "$(id -u)" -eq 0 ]; then
    id postgres >/dev/null 2>&1 || die "running as root needs the postgres account"
    chown postgres: "$dir"
    # The account must be able to reach the folder (mktemp makes its parents private).
    chmod 0755 "$dir"
  fi
  as_owner "$BINDIR/initdb" -D "$dir/data" -U postgres -A trust -E UTF8 --locale=C \
    --no-sync >"$dir/initdb.log" 2>&1 || {
    cat "$dir/initdb.log" >&2
    die "initdb failed"
  }

  local attempt port
  for attempt in 1 2 3 4 5 6 7 8 9 10; do
    port=$((20000 + RANDOM % 30000))
    port_in_use "$port" && continue
    if as_owner "$BINDIR/pg_ctl" -D "$dir/data" -l "$dir/server.log" -w -t 60 \
      -o "-p $port -k $dir -c listen_addresses=127.0.0.1 -c fsync=off -c synchronous_commit=off -c full_page_writes=off -c max_connections=200" \
      start >/dev/null; then
      {
        echo "export VELMAR_TEST_PG_HOST=127.0.0.1"
        echo "export VELMAR_TEST_PG_PORT=$port"
        echo "export VELMAR_TEST_PG_USER=postgres"
        echo "export VELMAR_TEST_PG_SOCKET_DIR=$dir"
      } >"$dir/env"
      cat "$dir/env"
      return 0
    fi
    # Another process may have taken the port between the check and the start.
    sleep 0.2
  done
  tail -n 20 "$dir/server.log" >&2 || true
  die "the server did not start"
}

stop_server() {
  local dir=$1
  [ -e "$dir/data/PG_VERSION" ] || die "$dir holds no cluster"
  as_owner "$BINDIR/pg_ctl" -D "$dir/data" -w -t 60 -m fast stop >/dev/null
}

# Debian's psqlODBC entry switches CommLog on, which leaves a log file in /tmp
# for every test process. The run gets a copy of the ODBC configuration with
# the same drivers and data sources and the logs off.
private_odbc_config() {
  local dir=$1 sysdir
  sysdir=$(odbcinst -j 2>/dev/null | sed -n 's/^DRIVERS\.*: *//p' | xargs -r dirname)
  [ -n "$sysdir" ] && [ -r "$sysdir/odbcinst.ini" ] || return 0
  mkdir -p "$dir"
  sed -e 's/^\([[:space:]]*CommLog[[:space:]]*=[[:space:]]*\)1/\10/' \
    -e 's/^\([[:space:]]*Debug[[:space:]]*=[[:space:]]*\)1/\10/' \
    "$sysdir/odbcinst.ini" >"$dir/odbcinst.ini"
  if [ -r "$sysdir/odbc.ini" ]; then cp "$sysdir/odbc.ini" "$dir/odbc.ini"; else : >"$dir/odbc.ini"; fi
  export ODBCSYSINI=$dir
}

cmd=${1:-}
case "$cmd" in
start)
  [ $# -eq 2 ] || die "usage: $0 start <dir>"
  start_server "$2"
  ;;
stop)
  [ $# -eq 2 ] || die "usage: $0 stop <dir>"
  stop_server "$2"
  ;;
run)
  shift
  [ "${1:-}" = "--" ] && shift
  [ $# -ge 1 ] || die "usage: $0 run -- <command...>"
  tmp=$(mktemp -d "${TMPDIR:-/tmp}/velmar-pg.XXXXXX")
  cleanup() {
    if [ -e "$tmp/data/postmaster.pid" ]; then
      stop_server "$tmp" || true
    fi
    rm -rf "$tmp"
  }
  trap cleanup EXIT
  trap 'exit 130' INT TERM
  start_server "$tmp" >/dev/null
  # shellcheck disable=SC1091
  source "$tmp/env"
  private_odbc_config "$tmp/odbc"
  export VELMAR_REQUIRE_PG=${VELMAR_REQUIRE_PG:-1}
  set +e
  "$@"
  rc=$?
  set -e
  exit "$rc"
  ;;
*)
  die "usage: $0 start <dir> | stop <dir> | run -- <command...>"
  ;;
esac
