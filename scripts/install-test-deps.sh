#!/usr/bin/env bash
# Installs, with apt-get and only when missing, every Debian package that the
# HTTP client's tests and fuzz runs need: the build tools, the hash library,
# the forwarding proxy and the web server the tests start on loopback, and
# clang for the fuzz targets. Safe to run again; asks nothing.
set -euo pipefail
packages=(
  cmake make g++ pkg-config libgtest-dev
  nettle-dev
  tinyproxy
  lighttpd
  clang libclang-rt-dev
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -eq 0 ]; then
  echo "install-test-deps: all packages present"
  exit 0
fi
sudo_cmd=()
[ "$(id -u)" -ne 0 ] && sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
echo "install-test-deps: installing ${missing[*]}"
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends \
  -o Dpkg::Options::=--force-confdef -o Dpkg::Options::=--force-confold "${missing[@]}"
