#!/usr/bin/env bash
# valgrind memcheck of the integration tests: requesters driven against the
# camera simulator in the test process, the RTP and HTTP roads with their
# fault tables, and a small fleet. Any error or leak (definite, indirect or
# possible) fails.
#   scripts/valgrind.sh [BUILD_DIR] [all]
# Without "all" a subset that CI runs in a few minutes; with it every test of
# the three programs (about half an hour). Needs a build of BUILD_DIR
# without sanitizers.
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir="${1:-build}"
scope="${2:-subset}"
# memcheck runs the code some twenty times slower: the tests' upper time
# bounds widen as much (tests/support/CamTestTiming.h).
export CAMREQ_TEST_TIME_SCALE="${CAMREQ_TEST_TIME_SCALE:-20}"
memcheck() {
  local program=$1 filter=$2
  echo "== valgrind: $program --gtest_filter=$filter"
  valgrind --tool=memcheck --error-exitcode=99 --leak-check=full \
    --show-leak-kinds=definite,indirect,possible --errors-for-leak-kinds=definite,indirect,possible \
    --num-callers=40 --quiet "$build_dir/$program" --gtest_filter="$filter" --gtest_brief=1
}
if [ "$scope" = all ]; then
  memcheck tests/rtp/test_rtp '*'
  memcheck tests/http/test_http_requester '*'
  memcheck tests/load/test_load 'FaultMatrix.*'
else
  # One road of each kind, every fault of the H.264 road and of the JPEG
  # road on IPv4, and the recorders.
  memcheck tests/rtp/test_rtp 'H264Road/FaultTable.V4_*:*RecorderRoad*V4_KE850*:*LiveRoad*'
  memcheck tests/http/test_http_requester 'EveryFault/FaultRoadTest.V4_*:*PushRoadTest*:*RecorderRoadTest*'
fi
