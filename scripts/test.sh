#!/usr/bin/env bash
# Builds the library, its tools and every test, then runs the whole suite.
#   scripts/test.sh [BUILD_DIR] [extra cmake arguments...]
# Installs what a fresh machine lacks (Debian packages) first.
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir="${1:-build}"
[ $# -gt 0 ] && shift
bash scripts/install-deps.sh
cmake -S . -B "$build_dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@"
cmake --build "$build_dir" -j"$(nproc)"
cd "$build_dir"
# The soak runs for minutes: CI runs it once, by its label (.ci/run).
ctest --output-on-failure --timeout 300 -j"$(nproc)" -LE soak
