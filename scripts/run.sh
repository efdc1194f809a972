#!/usr/bin/env bash
# Builds the library and runs the main job: a requester driven through a
# whole start and stop, with its log on the terminal.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$(nproc)" --target example_start_stop
./build/examples/start_stop/example_start_stop "$@"
