#!/usr/bin/env bash
# Builds every fuzz target with clang in build-fuzz (the whole tree with the
# fuzzer's coverage and ASan+UBSan, cmake/Fuzz.cmake) and runs each for a
# while on a copy of its seed corpus, with its dictionary. Targets follow one
# rule: fuzz/<group>/fuzz_<name>.cpp is target fuzz_<name>, seeds in
# fuzz/<group>/corpus_<name>/, dictionary fuzz/<group>/<name>.dict.
#   fuzz/run-short.sh [seconds per target, default 60]
# A crash stops the run; its input is left as build-fuzz/corpus-work/
# fuzz_<name>-crash-*: once the library is fixed, it belongs in the target's
# corpus, where the ordinary suite replays it (ctest -L fuzz).
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
build=build-fuzz
cmake -S . -B "$build" -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCAMREQ_FUZZ=ON -DCAMREQ_BENCH=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo > "$build.configure.log"
targets=()
for source in fuzz/*/fuzz_*.cpp; do
  [ -e "$source" ] || continue
  targets+=("$(basename "$source" .cpp)")
done
[ ${#targets[@]} -eq 0 ] && { echo "no fuzz targets"; exit 0; }
cmake --build "$build" -j2 --target "${targets[@]}"
for source in fuzz/*/fuzz_*.cpp; do
  target="$(basename "$source" .cpp)"
  name="${target#fuzz_}"
  group="$(dirname "$source")"
  seeds="$group/corpus_$name"
  dict="$group/$name.dict"
  work="$build/corpus-work/$target"
  mkdir -p "$work"
  [ -d "$seeds" ] && cp -n "$seeds"/* "$work"/ 2>/dev/null || true
  binary="$(find "$build/fuzz" -type f -name "$target" -perm -u+x | head -n 1)"
  echo "== $target for ${seconds}s"
  log="$build/corpus-work/$target.log"
  status=0
  "$binary" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -dict="$dict" \
    -artifact_prefix="$build/corpus-work/$target-" "$work" > "$log" 2>&1 || status=$?
  grep -E "DONE|ERROR|SUMMARY|Test unit written|Dictionary:" "$log" || true
  if [ "$status" -ne 0 ]; then
    tail -n 40 "$log"
    echo "$target failed (status $status), log in $log"
    exit 1
  fi
done
