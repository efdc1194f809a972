#!/usr/bin/env bash
# Installs, with apt-get and only when missing, the Debian packages listed in
# scripts/packages.txt (or in the list given: scripts/install-deps.sh LIST).
# Safe to run again; asks nothing.
set -euo pipefail
cd "$(dirname "$0")/.."
list=${1:-scripts/packages.txt}
packages=()
while read -r p; do
  case "$p" in "" | \#*) ;; *) packages+=("$p") ;; esac
done < "$list"
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
sudo_cmd=()
[ "$(id -u)" -ne 0 ] && sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
echo "install-deps: installing ${missing[*]}"
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends \
  -o Dpkg::Options::=--force-confdef -o Dpkg::Options::=--force-confold "${missing[@]}"
