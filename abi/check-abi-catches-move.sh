#!/usr/bin/env bash
# Shows that the ABI check catches a moved virtual operation: RequestStop is
# moved below RequestStartRetry in a copy of CCamRequester.h, and
# abi/check-abi.sh, given that copy, must fail and name the moved slots.
#
#   abi/check-abi-catches-move.sh BASELINE LIBRARY CXX INCLUDE_DIR...
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
baseline=$1 library=$2 cxx=$3
shift 3
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
header=
for d in "$@"; do
  if [ -f "$d/CCamRequester.h" ]; then header=$d/CCamRequester.h; break; fi
done
[ -n "$header" ] || { echo "no CCamRequester.h among $*" >&2; exit 2; }
awk '/virtual int RequestStop\(\);/ { held = $0; next }
     { print }
     /virtual int RequestStartRetry\(\);/ && held != "" { print held; held = "" }' \
  "$header" > "$tmp/CCamRequester.h"
if cmp -s "$header" "$tmp/CCamRequester.h"; then
  echo "check-abi-catches-move: could not move RequestStop in $header" >&2
  exit 2
fi
if bash "$here/check-abi.sh" "$baseline" "$library" "$cxx" "$tmp" "$@" > "$tmp/out" 2>&1; then
  cat "$tmp/out"
  echo "check-abi-catches-move: the check passed with RequestStop moved" >&2
  exit 1
fi
if ! grep -q '^+slot CCamRequester .* RequestStop$' "$tmp/out"; then
  cat "$tmp/out"
  echo "check-abi-catches-move: the check failed, but not on the moved slot" >&2
  exit 1
fi
grep '^[-+]slot' "$tmp/out"
echo "check-abi-catches-move: the moved operation was caught"
