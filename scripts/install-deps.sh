#!/usr/bin/env bash
# Installs the Debian 12 packages the console, its tests and its demo need.
# Safe to run again: apt-get skips what is already there.
set -euo pipefail

packages=(
  build-essential cmake ninja-build ccache pkg-config
  qt6-base-dev qt6-base-dev-tools libqt6sql6-sqlite libqt6sql6-odbc
  libgl-dev
  unixodbc odbcinst odbc-postgresql libsqliteodbc unixodbc-dev
  # the member import's LDAP source (libldap) and its tests' private server
  libldap-dev slapd ldap-utils
  sqlite3 libsqlite3-dev postgresql time
  xvfb xauth fonts-wqy-microhei
  systemd dbus dbus-user-session util-linux
  # invitation mails: SMTP through libcurl, the password in the keyring;
  # the tests' SMTP server, its certificates and a private Secret Service
  libcurl4-openssl-dev qtkeychain-qt6-dev libsecret-1-0 python3-aiosmtpd openssl gnome-keyring
  # manual pages, icons, packages and their checks
  scdoc cmark librsvg2-bin groff groff-base dpkg-dev fakeroot file lintian
  desktop-file-utils appstream bash-completion
  # the fuzz targets (scripts/fuzz.sh): clang, libFuzzer and the sanitizers
  clang libclang-rt-14-dev
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

if [ ${#missing[@]} -gt 0 ]; then
  sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
