#!/usr/bin/env bash
# Builds the library and runs the main job: an H.264 requester driven against
# an embedded camera simulator through START, RUN with a keep-alive, STOP and
# IDLE, with its log on the terminal (a camera address and port drive a real one).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$(nproc)" --target example_start_stop
./build/examples/start_stop/example_start_stop "$@"
