#!/usr/bin/env bash
# valgrind memcheck of the integration tests: requesters driven against the
# camera simulator in the test process, the RTP and HTTP roads with their
# fault tables, and a small fleet. Any error or leak (definite, indirect or
# possible) fails.
#   scripts/valgrind.sh [BUILD_DIR] [all]
# Without "all" a subset that CI runs in about two minutes (one road of each
# kind, the H.264 and JPEG fault tables on IPv4, the fault matrix); with it
# every test of the RTP and HTTP programs too (some three minutes more). Needs a build of BUILD_DIR
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
    --suppressions=scripts/valgrind.supp --num-callers=40 --quiet "$build_dir/$program" --gtest_filter="$filter" --gtest_brief=1
}
if [ "$scope" = all ]; then
  memcheck tests/rtp/test_rtp '*'
  memcheck tests/http/test_http_requester '*'
  memcheck tests/load/test_load 'FaultMatrix.*'
else
  memcheck tests/rtp/test_rtp 'H264Road/FaultTable.*/V4_*:Kel/RecorderRoad.*/V4_KE850:Camera7/LiveRoad.*'
  memcheck tests/http/test_http_requester 'EveryFault/FaultRoadTest.*/V4_*:PushRoadTest.*:RecorderRoadTest.*'
  memcheck tests/load/test_load 'FaultMatrix.*'
fi
