#!/usr/bin/env bash
# Installs, with apt-get and only when missing, the Debian packages that the
# build and the tests need. Safe to run again.
set -euo pipefail
cd "$(dirname "$0")/.."
packages=(cmake g++ make pkg-config libgtest-dev libgmock-dev libbenchmark-dev nettle-dev libjpeg-dev)
# Packages that the test groups add (a proxy server, a web server...).
if [ -f scripts/test-packages.txt ]; then
  while read -r p; do
    case "$p" in ""|\#*) ;; *) packages+=("$p") ;; esac
  done < scripts/test-packages.txt
fi
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
sudo_cmd=()
[ "$(id -u)" -ne 0 ] && sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
