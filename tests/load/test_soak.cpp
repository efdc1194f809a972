// The scale test for minutes, with faults injected at random into the
// devices and cleared again: every cycle the fleet is started, kept alive
// under faults, healed, must be in RUN again within the bound, is stopped
// and destroyed, and then every UID message and alarm is accounted for and
// nothing is left behind. The faults come from a seeded generator; the seed
// is printed, and CAMREQ_SOAK_SEED repeats a run. CAMREQ_SOAK_SECONDS sets
// the length (120 by default; the README gives the ten-minute command).
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <random>
#include <thread>

#include "CamFaultKinds.h"
#include "HttpRig.h"
#include "LoadCycle.h"

namespace loadtest {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRequesters = 262;
constexpr int kWaitDivisor = 25;  // idle rounds of 4 ms, as in the scale test
constexpr int kHttpDivisor = 5;   // a silent device costs 1 s, not 5
constexpr std::chrono::seconds kFaultPeriod{15};
// The heap is compared once the HTTP client has let go of the cycle's
// closed sessions (SettledSnapshot), and the message layer's memory of freed
// buffers is full before the baseline (the fleet fills it). It may still
// rise a little over the first cycles, as the tables of live sessions and
// buffers grow to the most the faults ever hold at once; after that it must
// stay within the highest of those cycles, which a leak of every cycle
// outgrows.
constexpr int kSettleCycles = 3;
constexpr long long kHeapSlack = 128 * 1024;

long EnvNumber(const char* pcName, long lDefault) {
  const char* pcValue = std::getenv(pcName);
  if (pcValue == nullptr || *pcValue == '\0') return lDefault;
  char* pcEnd = nullptr;
  const long lValue = std::strtol(pcValue, &pcEnd, 10);
  return pcEnd != pcValue && *pcEnd == '\0' && lValue > 0 ? lValue : lDefault;
}

// Injects and clears faults on the fleet's devices until told to stop.
class Chaos {
 public:
  Chaos(Fleet& rFleet, std::mt19937& rRandom) : m_rFleet(rFleet), m_rRandom(rRandom) {}

  // Runs for tPeriod on the calling thread.
  void Run(std::chrono::milliseconds tPeriod) {
    const Clock::time_point tEnd = Clock::now() + tPeriod;
    std::vector<Clock::time_point> atReopen(static_cast<size_t>(Dev::kCount), Clock::time_point{});
    while (Clock::now() < tEnd) {
      std::this_thread::sleep_for(std::chrono::milliseconds(Pick(50, 400)));
      for (size_t d = 0; d < atReopen.size(); ++d) {
        if (atReopen[d] != Clock::time_point{} && Clock::now() >= atReopen[d]) {
          m_rFleet.Device(static_cast<Dev>(d)).AcceptConnections();
          atReopen[d] = Clock::time_point{};
        }
      }
      const Dev eDev = static_cast<Dev>(Pick(0, static_cast<int>(Dev::kCount) - 1));
      camsim::Device& rDevice = m_rFleet.Device(eDev);
      const int iAction = Pick(0, 99);
      if (iAction < 10) {
        ++m_iClears;
        rDevice.ClearFaults();
      } else if (iAction < 20) {
        if (rDevice.Listening()) {
          ++m_aiKinds[camtest::kFaultRefused];
          rDevice.RefuseConnections();
          atReopen[static_cast<size_t>(eDev)] =
              Clock::now() + std::chrono::milliseconds(Pick(100, 1500));
        }
      } else {
        const size_t ulKind = static_cast<size_t>(Pick(1, camtest::kFaultKindCount - 1));
        camsim::Fault sFault = httptest::Fault(camtest::kFaultKinds[ulKind].pcFault);
        sFault.times = Pick(0, 3);  // 0: until cleared
        const std::vector<std::string> asPaths = PathsOf(eDev);
        const int iPath = Pick(0, static_cast<int>(asPaths.size()));
        rDevice.AddFault(iPath == static_cast<int>(asPaths.size())
                             ? camsim::kEveryPath
                             : asPaths[static_cast<size_t>(iPath)],
                         sFault);
        ++m_aiKinds[ulKind];
      }
    }
  }
  std::string Counts() const {
    std::string sOut;
    for (size_t k = 0; k < camtest::kFaultKindCount; ++k) {
      sOut +=
          std::string(" ") + camtest::kFaultKinds[k].pcName + "=" + std::to_string(m_aiKinds[k]);
    }
    return sOut + " clears=" + std::to_string(m_iClears);
  }

 private:
  int Pick(int iLow, int iHigh) {
    return std::uniform_int_distribution<int>(iLow, iHigh)(m_rRandom);
  }

  Fleet& m_rFleet;
  std::mt19937& m_rRandom;
  int m_aiKinds[camtest::kFaultKindCount] = {};
  int m_iClears = 0;
};

TEST(Soak, FleetUnderRandomFaults) {
  const long lSeconds = EnvNumber("CAMREQ_SOAK_SECONDS", 120);
  const unsigned uSeed = static_cast<unsigned>(
      EnvNumber("CAMREQ_SOAK_SEED", static_cast<long>(std::random_device{}() & 0x7fffffff)));
  std::printf("soak: %ld s, seed %u (CAMREQ_SOAK_SEED=%u repeats the faults)\n", lSeconds, uSeed,
              uSeed);
  std::fflush(stdout);
  std::mt19937 random(uSeed);
  PrintCounter printed;
  Fleet fleet(kRequesters, kWaitDivisor, kHttpDivisor);
  ASSERT_TRUE(fleet.Started());
  Chaos chaos(fleet, random);
  const Resources sBaseline = Snapshot();
  std::printf("baseline: %s\n", Describe(sBaseline).c_str());
  const Clock::time_point tEnd = Clock::now() + std::chrono::seconds(lSeconds);
  long long llHeapHighest = -1;
  for (int iCycle = 1; iCycle == 1 || Clock::now() < tEnd; ++iCycle) {
    SCOPED_TRACE("cycle " + std::to_string(iCycle));
    const auto tLeft = std::chrono::duration_cast<std::chrono::milliseconds>(tEnd - Clock::now());
    const auto tPeriod = std::max(std::chrono::milliseconds(2000),
                                  std::min<std::chrono::milliseconds>(kFaultPeriod, tLeft));
    const CycleResult r = RunCycle(
        fleet, sBaseline, [&] { chaos.Run(tPeriod); }, true);
    const Resources sSettled = SettledSnapshot();
    std::printf(
        "cycle %2d: all in RUN after %5ld ms, faults for %ld ms, all in IDLE after %5ld ms; %s; "
        "settled heap %lld KiB\n",
        iCycle, r.lToRunMs, static_cast<long>(tPeriod.count()), r.lToIdleMs,
        Describe(r.sAfter).c_str(), sSettled.llHeap / 1024);
    std::fflush(stdout);
    if (iCycle <= kSettleCycles) {
      llHeapHighest = std::max(llHeapHighest, sSettled.llHeap);
    } else {
      EXPECT_LE(sSettled.llHeap, llHeapHighest + kHeapSlack) << "the heap grows";
    }
    if (HasFailure()) break;
  }
  std::printf("faults injected:%s\nlines printed by the requesters: %llu\n", chaos.Counts().c_str(),
              static_cast<unsigned long long>(printed.Count()));
}

}  // namespace
}  // namespace loadtest
