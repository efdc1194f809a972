// 262 requesters at once, as many as a device runs: RTP and HTTP, cameras, a
// Quillon camera and a KEL recorder, cycles of START, keep-alives, STOP and
// destruction. Every cycle ends with every UID message and alarm accounted
// for and the process holding the descriptors, threads and message buffers
// it held before; over ten cycles the heap in use does not grow.
#include <gtest/gtest.h>

#include <cstdio>

#include "LoadCycle.h"

namespace loadtest {
namespace {

constexpr int kRequesters = 262;
constexpr int kCycles = 10;
// The heap in use grows over the first cycles and then stays: the HTTP
// client keeps what a closed session held for 10 s after the close
// (kxhttp.h), which is seven cycles of about 1.5 s here. That is bounded
// bookkeeping of the process, not of one requester: the heap is compared
// over ten cycles that follow ten, which take longer than those 10 s.
constexpr int kSettleCycles = 10;
// An idle round of 4 ms: a keep-alive every 1.2 s, a stream check every
// 0.6 s, a rebuild 120 ms after a failure.
constexpr int kWaitDivisor = 25;
// Time-outs as on the device: no fault is injected here.
constexpr int kHttpDivisor = 1;
// What the heap may differ by across the ten cycles compared: far below
// 50 bytes left behind per requester and cycle (262 x 50 x 10).
constexpr long long kHeapSlack = 128 * 1024;

TEST(Scale, CyclesOf262RequestersLeaveNothingBehind) {
  PrintCounter printed;
  Fleet fleet(kRequesters, kWaitDivisor, kHttpDivisor);
  ASSERT_TRUE(fleet.Started());
  const Resources sBaseline = Snapshot();
  std::printf("baseline: %s\n", Describe(sBaseline).c_str());
  long long llHeapFirst = -1;
  for (int iCycle = 1; iCycle <= kSettleCycles + kCycles; ++iCycle) {
    SCOPED_TRACE("cycle " + std::to_string(iCycle));
    const CycleResult r = RunCycle(fleet, sBaseline, nullptr, false);
    std::printf("cycle %2d: all in RUN after %5ld ms, all in IDLE after %5ld ms; %s\n", iCycle,
                r.lToRunMs, r.lToIdleMs, Describe(r.sAfter).c_str());
    std::fflush(stdout);
    if (iCycle == kSettleCycles + 1) llHeapFirst = r.sAfter.llHeap;
    if (iCycle > kSettleCycles + 1) {
      EXPECT_LE(r.sAfter.llHeap, llHeapFirst + kHeapSlack) << "the heap grows";
    }
    if (HasFailure()) break;
  }
  std::printf("lines printed by the requesters: %llu\n",
              static_cast<unsigned long long>(printed.Count()));
}

}  // namespace
}  // namespace loadtest
