// Idle cost: N requesters started and running (status 4, keep-alive on)
// against as many bare threads each doing 100 ms timed waits, over the same
// window. Each side runs in a child process of its own, both at the same
// time, so that their CPU time and resident memory are theirs alone and the
// machine's noise falls on both; the simulated camera runs in a third child,
// so that its work for the keep-alives is not counted. Resident memory is
// what /proc says is resident (thread stacks by their touched pages), taken
// before the threads start and at the end of the window.
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

[[noreturn]] void BareThreadsChild(int iCount, int iCommandFd, int iResultFd) {
  NameThreads("idle-bare");
  Result sResult;
  sResult.lRssBeforeKiB = ResidentKiB();
  std::atomic<bool> bStop{false};
  struct Waiter {
    std::mutex mutex;
    std::condition_variable cond;
  };
  std::vector<std::unique_ptr<Waiter>> apWaiters;
  std::vector<std::thread> aThreads;
  for (int i = 0; i < iCount; ++i) {
    apWaiters.push_back(std::make_unique<Waiter>());
    Waiter* psWaiter = apWaiters.back().get();
    aThreads.emplace_back([psWaiter, &bStop] {
      std::unique_lock<std::mutex> lock(psWaiter->mutex);
      while (!bStop.load()) {
        psWaiter->cond.wait_until(
            lock, std::chrono::steady_clock::now() + std::chrono::milliseconds(100));
      }
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

bool MeasureCount(int iCount, uint16_t usPort, const Options& rOptions) {
  Child sBare = Spawn([iCount](int iIn, int iOut) { BareThreadsChild(iCount, iIn, iOut); });
  Child sReqs =
      Spawn([iCount, usPort](int iIn, int iOut) { RequestersChild(iCount, usPort, iIn, iOut); });
  int iBareReady = 0, iReqsReady = 0;
  const bool bReady = ReadAll(sBare.iResultFd, &iBareReady, sizeof iBareReady) &&
                      ReadAll(sReqs.iResultFd, &iReqsReady, sizeof iReqsReady) && iBareReady == 1 &&
                      iReqsReady == 1;
  Result sBareResult, sReqsResult;
  bool bOk = false;
  if (bReady) {
    WriteAll(sBare.iCommandFd, &kGo, 1);
    WriteAll(sReqs.iCommandFd, &kGo, 1);
    std::this_thread::sleep_for(std::chrono::duration<double>(rOptions.dIdleSeconds));
    WriteAll(sBare.iCommandFd, &kStop, 1);
    WriteAll(sReqs.iCommandFd, &kStop, 1);
    bOk = ReadAll(sBare.iResultFd, &sBareResult, sizeof sBareResult) &&
          ReadAll(sReqs.iResultFd, &sReqsResult, sizeof sReqsResult);
  }
  Reap(sBare);
  Reap(sReqs);
  if (!bOk) {
    std::printf("  %d: the requesters did not all reach RUN, or a child failed\n", iCount);
    return false;
  }
  const long lBareKiB = sBareResult.lRssAfterKiB - sBareResult.lRssBeforeKiB;
  const long lReqsKiB = sReqsResult.lRssAfterKiB - sReqsResult.lRssBeforeKiB;
  std::printf("  %d of each, %.1f s window; requesters in RUN at its end: %d of %d\n", iCount,
              rOptions.dIdleSeconds, sReqsResult.iRunning, iCount);
  std::printf("  %-44s CPU %9.1f ms   resident +%ld KiB (%.1f KiB each)\n", "bare threads",
              sBareResult.dCpuSeconds * 1000.0, lBareKiB, static_cast<double>(lBareKiB) / iCount);
  std::printf("  %-44s CPU %9.1f ms   resident +%ld KiB (%.1f KiB each)\n", "requesters",
              sReqsResult.dCpuSeconds * 1000.0, lReqsKiB, static_cast<double>(lReqsKiB) / iCount);
  PrintRow("bare threads, CPU per second", SliceSamples(sBareResult), "ms");
  PrintRow("requesters, CPU per second", SliceSamples(sReqsResult), "ms");
  PrintRatio("CPU requesters / bare threads",
             sBareResult.dCpuSeconds > 0 ? sReqsResult.dCpuSeconds / sBareResult.dCpuSeconds : 0.0,
             Bound::kAtMost, 1.3);
  PrintRatio("resident KiB per requester above a thread",
             static_cast<double>(lReqsKiB - lBareKiB) / iCount, Bound::kAtMost, 64.0);
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
