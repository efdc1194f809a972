#!/usr/bin/env bash
# Starts camsim on a free loopback port, runs the consumer against it, and
# stops camsim again.
#
#   run-against-camsim.sh CAMSIM CONSUMER [CAMERA_TYPE]
set -euo pipefail
camsim=$1 consumer=$2 model=${3:-7}
log=$(mktemp)
"$camsim" --listen 127.0.0.1:0 --model "$model" > "$log" 2>&1 &
pid=$!
trap 'kill "$pid" 2>/dev/null; wait "$pid" 2>/dev/null; rm -f "$log"' EXIT
port=
for _ in $(seq 1 100); do
  port=$(sed -n 's/.*listening on 127\.0\.0\.1 port \([0-9]*\).*/\1/p' "$log" | head -n 1)
  [ -n "$port" ] && break
  kill -0 "$pid" 2>/dev/null || break
  sleep 0.05
done
if [ -z "$port" ]; then
  echo "run-against-camsim: camsim did not start:" >&2
  cat "$log" >&2
  exit 1
fi
echo "run-against-camsim: camsim model $model on 127.0.0.1 port $port"
"$consumer" 127.0.0.1 "$port" "$model"
