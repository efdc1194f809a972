#!/usr/bin/env bash
# Builds the library and camreq and runs the main job: three requesters driven
# for a few seconds against the camera simulator inside camreq, an H.264 camera
# over RTP, a JPEG camera by server push, and a recorder whose RTP stream
# stalls and is pushed again; live status lines, then the summary.
#   bash scripts/run.sh                            the main job
#   bash scripts/run.sh ADDRESS PORT [OPTIONS...]  an H.264 requester against a
#                                                  real camera (camreq --help)
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$(nproc)" --target camreq
if [ $# -ge 2 ] && [[ "$1" != -* ]]; then
  address=$1
  port=$2
  shift 2
  exec ./build/tools/camreq/camreq --address "$address" --http-port "$port" "$@"
fi
exec ./build/tools/camreq/camreq --config tools/camreq/main-job.ini --duration 7 "$@"
