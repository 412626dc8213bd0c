#!/bin/sh
# Installs the build packages that are missing (Debian). Needs root when
# something is missing; does nothing otherwise.
set -e
pkgs="cmake g++ make libgtest-dev libbenchmark-dev libcli11-dev valgrind libssl-dev"
missing=""
for p in $pkgs; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing="$missing $p"
done
if [ -n "$missing" ]; then
  SUDO=""
  [ "$(id -u)" -eq 0 ] || SUDO=sudo
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq $missing
fi
