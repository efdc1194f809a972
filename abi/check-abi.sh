#!/usr/bin/env bash
# Compares the device ABI of libCCamRequester with the committed baseline:
# the exported symbols (nm -D --defined-only), the length of CCamRequester's
# virtual table, the slot of every virtual operation of CCamRequester and of
# the notification class, the offset and width of every field, and the
# sizes of the parameter records (abi/abi_probe.cpp, built from the headers).
#
#   abi/check-abi.sh BASELINE LIBRARY CXX INCLUDE_DIR...
#   ABI_UPDATE=1 abi/check-abi.sh ...     rewrites BASELINE (an intended change:
#                                         say why in the commit message)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
if [ $# -lt 3 ]; then
  echo "usage: $0 BASELINE LIBRARY CXX INCLUDE_DIR..." >&2
  exit 2
fi
baseline=$1 library=$2 cxx=$3
shift 3
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
includes=()
for d in "$@"; do includes+=(-I "$d"); done

"$cxx" -std=c++17 "${includes[@]}" "$here/abi_probe.cpp" -o "$tmp/probe"
"$tmp/probe" > "$tmp/probe.txt"
pointer=$(awk '$1 == "size" && $2 == "void*" {print $3}' "$tmp/probe.txt")
table=$(nm -DS --defined-only "$library" | awk '$4 == "_ZTV13CCamRequester" {print $2}')
if [ -z "$table" ]; then
  echo "check-abi: $library exports no table of CCamRequester" >&2
  exit 1
fi
{
  echo "# Device ABI of libCCamRequester ($(uname -m)); checked by abi/check-abi.sh"
  # The table holds the offset to the top and the type information, then the slots.
  echo "table CCamRequester $((16#$table / pointer - 2)) slots"
  sort -k1,2 -k3n "$tmp/probe.txt"
  nm -D --defined-only "$library" | awk '{print "symbol " $NF}' | LC_ALL=C sort
} > "$tmp/current"

if [ "${ABI_UPDATE:-0}" = 1 ]; then
  cp "$tmp/current" "$baseline"
  echo "check-abi: baseline $baseline written"
  exit 0
fi
if ! diff -u "$baseline" "$tmp/current" > "$tmp/diff"; then
  cat "$tmp/diff"
  echo "check-abi: the device ABI of $library differs from $baseline (lines - baseline, + now)." >&2
  echo "check-abi: the media process is built against the baseline; if the change is intended," >&2
  echo "check-abi: rewrite it with ABI_UPDATE=1 $0 ... and say why in the commit." >&2
  exit 1
fi
echo "check-abi: $(grep -c '^slot' "$tmp/current") slots, $(grep -c '^field' "$tmp/current") fields, $(grep -c '^symbol' "$tmp/current") symbols as in the baseline"
