#!/usr/bin/env bash
# Lists what a shared object exports (nm -D --defined-only) and fails on any
# name that is not part of its interface.
#
#   abi/check-exports.sh requester libCCamRequester.so
#       only the requester classes, the notification class and the fields the
#       concrete classes share (members, tables, thunks, type information)
#   abi/check-exports.sh platform libkxcom.so kxcom.h
#       only calls declared in the library's header
set -euo pipefail
if [ $# -lt 2 ]; then
  echo "usage: $0 requester LIBRARY | $0 platform LIBRARY HEADER" >&2
  exit 2
fi
kind=$1 library=$2
names=$(nm -D --defined-only "$library" | awk '{print $NF}')
[ -n "$names" ] || { echo "check-exports: $library exports nothing" >&2; exit 1; }
bad=()
case "$kind" in
  requester)
    classes='(CCamRequester|CCamRequester_Cgi_Kobu_Rtp|CCamRequester_Cgi_Kobu_Http|CCamRequesterNotify|CamRequesterFields)'
    prefix='((vtable|VTT|typeinfo|typeinfo name|construction vtable) for |(virtual|non-virtual) thunk to )?'
    while IFS= read -r demangled; do
      bad+=("$demangled")
    done < <(nm -DC --defined-only "$library" | sed -E 's/^[0-9a-fA-F]+ [A-Za-z] //' |
             grep -Ev "^${prefix}${classes}(::|-in-|\$)" || true)
    ;;
  platform)
    header=$3
    while IFS= read -r name; do
      grep -Eq "(^|[^A-Za-z0-9_])${name}[[:space:]]*\(" "$header" || bad+=("$name")
    done <<< "$names"
    ;;
  *)
    echo "check-exports: unknown kind $kind" >&2
    exit 2
    ;;
esac
echo "check-exports: $library exports $(wc -l <<< "$names") names"
if [ ${#bad[@]} -gt 0 ]; then
  echo "check-exports: not part of the interface:" >&2
  printf '  %s\n' "${bad[@]}" >&2
  exit 1
fi
