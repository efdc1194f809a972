// Idle cost: N requesters started and running (status 4, keep-alive on)
// against as many bare threads each doing 100 ms timed waits, over the same
// window. Each side runs in a child process of its own, all at the same
// time, so that their CPU time and resident memory are theirs alone and the
// machine's noise falls on all; the simulated camera runs in a child of its
// own, so that its work for the keep-alives is not counted. Resident memory
// is what /proc says is resident (thread stacks by their touched pages),
// taken before the threads start and at the end of the window.
//
// Where in the 100 ms each thread wakes changes what a wake costs: timers
// that expire together are served in one interrupt, back to back, by a CPU
// that is already awake. A requester's waits begin when its own exchanges
// end, so its wakes are spread over the period; bare threads started in a
// loop all wake within a few milliseconds of each other. The requesters are
// therefore held against bare threads whose first waits spread them evenly
// over the period, and the bare threads that wake together are measured
// beside them for the record.
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTypes.h"
#include "Device.h"
#include "Figures.h"
#include "Requesters.h"
#include "Sections.h"

namespace limits {

namespace {

constexpr int kMaxSlices = 128;       // one-second slices of CPU time reported
constexpr int kStartBatch = 64;       // requesters started at once
constexpr int kRunWaitSeconds = 120;  // for all of them to reach RUN
constexpr char kGo = 'g';
constexpr char kStop = 's';
constexpr std::chrono::milliseconds kWaitPeriod(100);  // a bare thread's timed wait

// What a measuring child reports at the end of the window.
struct Result {
  int iReady = 0;    // everything was started (and running)
  int iRunning = 0;  // requesters still in RUN at the end of the window
  long lRssBeforeKiB = 0;
  long lRssAfterKiB = 0;
  double dCpuSeconds = 0;
  int iSlices = 0;
  double adSliceCpuMs[kMaxSlices] = {};
};

long ResidentKiB() {
  std::ifstream smaps("/proc/self/smaps_rollup");
  std::string sKey;
  long lValue = 0;
  while (smaps >> sKey) {
    if (sKey == "Rss:" && smaps >> lValue) return lValue;
  }
  return -1;
}

double CpuSeconds() {
  rusage sUsage{};
  getrusage(RUSAGE_SELF, &sUsage);
  return static_cast<double>(sUsage.ru_utime.tv_sec + sUsage.ru_stime.tv_sec) +
         static_cast<double>(sUsage.ru_utime.tv_usec + sUsage.ru_stime.tv_usec) / 1e6;
}

bool WriteAll(int iFd, const void* pvData, size_t ulSize) {
  return write(iFd, pvData, ulSize) == static_cast<ssize_t>(ulSize);
}

bool ReadAll(int iFd, void* pvData, size_t ulSize) {
  size_t ulHave = 0;
  while (ulHave < ulSize) {
    const ssize_t lRead = read(iFd, static_cast<char*>(pvData) + ulHave, ulSize - ulHave);
    if (lRead <= 0) return false;
    ulHave += static_cast<size_t>(lRead);
  }
  return true;
}

// In a measuring child, once its threads run: tells the parent, then
// measures CPU time from the go to the stop in one-second slices.
void MeasureWindow(int iCommandFd, int iResultFd, Result* psResult) {
  WriteAll(iResultFd, &psResult->iReady, sizeof psResult->iReady);
  char cCommand = 0;
  if (!ReadAll(iCommandFd, &cCommand, 1) || cCommand != kGo) return;
  const double dStart = CpuSeconds();
  double dSliceStart = dStart;
  for (;;) {
    pollfd sPoll = {iCommandFd, POLLIN, 0};
    if (poll(&sPoll, 1, 1000) != 0) break;  // the stop (or the parent gone)
    const double dNow = CpuSeconds();
    if (psResult->iSlices < kMaxSlices) {
      psResult->adSliceCpuMs[psResult->iSlices++] = (dNow - dSliceStart) * 1000.0;
    }
    dSliceStart = dNow;
  }
  ReadAll(iCommandFd, &cCommand, 1);
  psResult->dCpuSeconds = CpuSeconds() - dStart;
  psResult->lRssAfterKiB = ResidentKiB();
}

// Threads take the name of the thread that starts them: a profile of the
// run (perf report --sort comm) then tells the two sides apart.
void NameThreads(const char* pcName) {
  prctl(PR_SET_NAME, pcName);
}

// How the bare threads' wakes lie in the 100 ms period.
enum class Phases { kTogether, kSpread };

[[noreturn]] void BareThreadsChild(int iCount, Phases ePhases, int iCommandFd, int iResultFd) {
  NameThreads(ePhases == Phases::kSpread ? "idle-spread" : "idle-together");
  Result sResult;
  sResult.lRssBeforeKiB = ResidentKiB();
  std::atomic<bool> bStop{false};
  struct Waiter {
    std::mutex mutex;
    std::condition_variable cond;
  };
  std::vector<std::unique_ptr<Waiter>> apWaiters;
  std::vector<std::thread> aThreads;
  const Clock::time_point tBegin = Clock::now();
  for (int i = 0; i < iCount; ++i) {
    apWaiters.push_back(std::make_unique<Waiter>());
    Waiter* psWaiter = apWaiters.back().get();
    const Clock::time_point tFirstWake =
        ePhases == Phases::kSpread ? tBegin + kWaitPeriod + kWaitPeriod * i / iCount : tBegin;
    aThreads.emplace_back([psWaiter, &bStop, tFirstWake] {
      std::unique_lock<std::mutex> lock(psWaiter->mutex);
      psWaiter->cond.wait_until(lock, tFirstWake);
      while (!bStop.load()) psWaiter->cond.wait_until(lock, Clock::now() + kWaitPeriod);
    });
  }
  sResult.iReady = 1;
  MeasureWindow(iCommandFd, iResultFd, &sResult);
  WriteAll(iResultFd, &sResult, sizeof sResult);
  _exit(0);  // the threads end with the process
}

int CountRunning(const std::vector<std::unique_ptr<CCamRequester_Cgi_Kobu_Rtp>>& rapReqs,
                 size_t ulUpTo) {
  int iRunning = 0;
  for (size_t i = 0; i < ulUpTo; ++i) iRunning += rapReqs[i]->iConnectStatus == CAM_HTTP_STS_RUN;
  return iRunning;
}

[[noreturn]] void RequestersChild(int iCount, uint16_t usPort, int iCommandFd, int iResultFd) {
  NameThreads("idle-requesters");
  Result sResult;
  SilencePrint();
  camtest::QuietNotify upper;
  sResult.lRssBeforeKiB = ResidentKiB();
  std::vector<std::unique_ptr<CCamRequester_Cgi_Kobu_Rtp>> apReqs;
  const Clock::time_point tLimit = Clock::now() + std::chrono::seconds(kRunWaitSeconds);
  bool bAllRunning = true;
  for (int i = 0; i < iCount && bAllRunning; ++i) {
    apReqs.push_back(std::make_unique<CCamRequester_Cgi_Kobu_Rtp>());
    ConfigureH264(*apReqs.back(), usPort, upper);
    apReqs.back()->EnableKeepAlive();
    apReqs.back()->Initialize(1000 + i);
    apReqs.back()->RequestStart();
    // A batch at a time, so that the camera is not asked for more
    // connections at once than it serves.
    if ((i + 1) % kStartBatch == 0 || i + 1 == iCount) {
      while (CountRunning(apReqs, apReqs.size()) < i + 1 && Clock::now() < tLimit) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      }
      bAllRunning = CountRunning(apReqs, apReqs.size()) == i + 1;
    }
  }
  sResult.iReady = bAllRunning ? 1 : 0;
  MeasureWindow(iCommandFd, iResultFd, &sResult);
  sResult.iRunning = CountRunning(apReqs, apReqs.size());
  WriteAll(iResultFd, &sResult, sizeof sResult);
  _exit(0);  // the requesters end with the process: only the window counts
}

// The simulated camera's process: reports its port, keeps every RTP stream
// stalled (no media reach this process's measurement anyway: the media
// never pass through a requester) and ends when the parent closes the pipe.
[[noreturn]] void CameraChild(int iCommandFd, int iResultFd) {
  camsim::DeviceConfig sConfig;
  sConfig.model = CAM_REQUESTER_CAMTYPE_CAM07;
  std::string sError;
  auto pDevice = camsim::Device::Start(sConfig, &sError);
  const uint16_t usPort = pDevice != nullptr ? pDevice->Port() : 0;
  WriteAll(iResultFd, &usPort, sizeof usPort);
  for (char cByte = 0; pDevice != nullptr;) {
    pollfd sPoll = {iCommandFd, POLLIN, 0};
    if (poll(&sPoll, 1, 200) != 0 && read(iCommandFd, &cByte, 1) <= 0) break;
    pDevice->StallRtp();
  }
  if (pDevice != nullptr) pDevice->Stop();
  _exit(0);
}

// A child process with a command pipe to it and a result pipe from it.
struct Child {
  pid_t iPid = -1;
  int iCommandFd = -1;
  int iResultFd = -1;
};

template <typename F>
Child Spawn(F fnBody) {
  int aiCommand[2], aiResult[2];
  Child sChild;
  if (pipe2(aiCommand, O_CLOEXEC) != 0) return sChild;
  if (pipe2(aiResult, O_CLOEXEC) != 0) {
    close(aiCommand[0]);
    close(aiCommand[1]);
    return sChild;
  }
  std::fflush(stdout);
  sChild.iPid = fork();
  if (sChild.iPid == 0) {
    close(aiCommand[1]);
    close(aiResult[0]);
    fnBody(aiCommand[0], aiResult[1]);
  }
  close(aiCommand[0]);
  close(aiResult[1]);
  sChild.iCommandFd = aiCommand[1];
  sChild.iResultFd = aiResult[0];
  return sChild;
}

void Reap(Child& rChild) {
  if (rChild.iCommandFd >= 0) close(rChild.iCommandFd);
  if (rChild.iResultFd >= 0) close(rChild.iResultFd);
  if (rChild.iPid > 0) waitpid(rChild.iPid, nullptr, 0);
  rChild = Child();
}

Samples SliceSamples(const Result& rResult) {
  Samples sSlices;
  for (int i = 0; i < rResult.iSlices; ++i) sSlices.Add(rResult.adSliceCpuMs[i]);
  return sSlices;
}

// One measured side: its child process and what it reported.
struct Side {
  const char* pcName;
  Child sChild;
  Result sResult;
};

// Starts the window on every side once all are ready, and ends it; false
// when a side failed to start or to report.
bool RunWindow(std::vector<Side>& raSides, const Options& rOptions) {
  bool bReady = true;
  for (Side& rSide : raSides) {
    int iReady = 0;
    bReady = bReady && ReadAll(rSide.sChild.iResultFd, &iReady, sizeof iReady) && iReady == 1;
  }
  if (!bReady) return false;
  for (Side& rSide : raSides) WriteAll(rSide.sChild.iCommandFd, &kGo, 1);
  std::this_thread::sleep_for(std::chrono::duration<double>(rOptions.dIdleSeconds));
  for (Side& rSide : raSides) WriteAll(rSide.sChild.iCommandFd, &kStop, 1);
  bool bOk = true;
  for (Side& rSide : raSides) {
    bOk = ReadAll(rSide.sChild.iResultFd, &rSide.sResult, sizeof rSide.sResult) && bOk;
  }
  return bOk;
}

long ResidentRiseKiB(const Side& rSide) {
  return rSide.sResult.lRssAfterKiB - rSide.sResult.lRssBeforeKiB;
}

void PrintSide(const Side& rSide, int iCount) {
  const long lKiB = ResidentRiseKiB(rSide);
  std::printf("  %-44s CPU %9.1f ms   resident +%ld KiB (%.1f KiB each)\n", rSide.pcName,
              rSide.sResult.dCpuSeconds * 1000.0, lKiB, static_cast<double>(lKiB) / iCount);
}

double CpuRatio(const Side& rNumerator, const Side& rDenominator) {
  const double dBelow = rDenominator.sResult.dCpuSeconds;
  return dBelow > 0 ? rNumerator.sResult.dCpuSeconds / dBelow : 0.0;
}

bool MeasureCount(int iCount, uint16_t usPort, const Options& rOptions) {
  enum { kSpread, kTogether, kRequesters };
  std::vector<Side> aSides = {
      {"bare threads, wakes spread over the period",
       Spawn([iCount](int iIn, int iOut) { BareThreadsChild(iCount, Phases::kSpread, iIn, iOut); }),
       {}},
      {"bare threads, waking together",
       Spawn(
           [iCount](int iIn, int iOut) { BareThreadsChild(iCount, Phases::kTogether, iIn, iOut); }),
       {}},
      {"requesters",
       Spawn([iCount, usPort](int iIn, int iOut) { RequestersChild(iCount, usPort, iIn, iOut); }),
       {}}};
  const bool bOk = RunWindow(aSides, rOptions);
  for (Side& rSide : aSides) Reap(rSide.sChild);
  if (!bOk) {
    std::printf("  %d: the requesters did not all reach RUN, or a child failed\n", iCount);
    return false;
  }
  std::printf("  %d of each, %.1f s window; requesters in RUN at its end: %d of %d\n", iCount,
              rOptions.dIdleSeconds, aSides[kRequesters].sResult.iRunning, iCount);
  for (const Side& rSide : aSides) PrintSide(rSide, iCount);
  for (const Side& rSide : aSides) {
    PrintRow(std::string(rSide.pcName) + ", CPU/s", SliceSamples(rSide.sResult), "ms");
  }
  PrintRatio("CPU requesters / bare threads spread", CpuRatio(aSides[kRequesters], aSides[kSpread]),
             Bound::kAtMost, 1.3);
  PrintInfoRatio("CPU requesters / bare threads together",
                 CpuRatio(aSides[kRequesters], aSides[kTogether]));
  PrintInfoRatio("CPU bare spread / bare together", CpuRatio(aSides[kSpread], aSides[kTogether]));
  PrintRatio(
      "resident KiB per requester above a thread",
      static_cast<double>(ResidentRiseKiB(aSides[kRequesters]) - ResidentRiseKiB(aSides[kSpread])) /
          iCount,
      Bound::kAtMost, 64.0);
  return true;
}

}  // namespace

bool RunIdle(const Options& rOptions) {
  PrintSection("idle cost: requesters in RUN with keep-alive against bare 100 ms waits");
  Child sCamera = Spawn([](int iIn, int iOut) { CameraChild(iIn, iOut); });
  uint16_t usPort = 0;
  if (!ReadAll(sCamera.iResultFd, &usPort, sizeof usPort) || usPort == 0) {
    std::printf("  camsim did not start\n");
    Reap(sCamera);
    return false;
  }
  bool bOk = true;
  for (int iCount : rOptions.aiIdleCounts) bOk = MeasureCount(iCount, usPort, rOptions) && bOk;
  Reap(sCamera);
  return bOk;
}

}  // namespace limits
