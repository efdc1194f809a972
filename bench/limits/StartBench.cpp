// START to RUN: the time from RequestStart until an H.264 requester reaches
// RUN against a simulated camera (keep-alive off), against one plain-socket
// exchange with the same server in the same run, and the two exchanges of
// the road (the UID request and the start request) as its floor. The road
// is two exchanges: the queue, the thread and the bookkeeping should add
// almost nothing to them.
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>

#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTypes.h"
#include "Device.h"
#include "Figures.h"
#include "Loopback.h"
#include "Requesters.h"
#include "Sections.h"
#include "kxcom.h"

namespace limits {

namespace {

// Tells the measurement the moment the status changes.
class SignallingRtp : public CCamRequester_Cgi_Kobu_Rtp {
 public:
  ~SignallingRtp() override { StopChildThread(); }
  int ChangeStatus(int iEvent) override {
    const int iRet = CCamRequester_Cgi_Kobu_Rtp::ChangeStatus(iEvent);
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_tChanged = Clock::now();
    }
    m_changed.notify_all();
    return iRet;
  }
  // Waits until the status is iStatus; the time it was reached, or false.
  bool WaitStatus(int iStatus, Clock::time_point* ptReached) {
    std::unique_lock<std::mutex> lock(m_mutex);
    const bool bOk = m_changed.wait_for(lock, std::chrono::seconds(10),
                                        [&] { return iConnectStatus == iStatus; });
    *ptReached = m_tChanged;
    return bOk;
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  Clock::time_point m_tChanged;
};

// The UID in a session reply, "1" when there is none.
std::string UidOf(const char* pcReply) {
  const char* pcUid = std::strstr(pcReply, "UID=");
  if (pcUid == nullptr) return "1";
  pcUid += 4;
  return std::string(pcUid, std::strcspn(pcUid, "\r\n"));
}

}  // namespace

bool RunStartToRun(const Options& rOptions) {
  PrintSection("START to RUN of an H.264 RTP requester against camsim, and raw exchanges");
  camsim::DeviceConfig sConfig;
  sConfig.model = CAM_REQUESTER_CAMTYPE_CAM07;
  std::string sError;
  auto pDevice = camsim::Device::Start(sConfig, &sError);
  if (pDevice == nullptr) {
    std::printf("  camsim: %s\n", sError.c_str());
    return false;
  }
  const uint16_t usPort = pDevice->Port();
  SilencePrint();
  camtest::QuietNotify upper;
  Samples sStart, sOne, sTwo;
  bool bOk = true;
  {
    SignallingRtp req;
    ConfigureH264(req, usPort, upper);
    req.Initialize(7);
    const std::string sUidRequest = GetRequest("/cgi-bin/getuid?FILE=2&vcodec=h264");
    char acReply[4096];
    for (int i = 0; i < rOptions.iStartRounds && bOk; ++i) {
      // The requester's road: START -> RUN, then back to IDLE untimed.
      Clock::time_point tRun, tIdle;
      const Clock::time_point t0 = Clock::now();
      req.RequestStart();
      bOk = req.WaitStatus(CAM_HTTP_STS_RUN, &tRun);
      if (!bOk) break;
      sStart.Add(Micros(tRun - t0));
      req.RequestStop();
      bOk = req.WaitStatus(CAM_HTTP_STS_IDLE, &tIdle);
      req.iUid = -1;  // the next START asks for a UID again

      // The floor: the same two requests on plain sockets.
      const Clock::time_point t1 = Clock::now();
      long lRead = RawExchange(usPort, sUidRequest, acReply, sizeof acReply - 1);
      const Clock::time_point t2 = Clock::now();
      acReply[lRead > 0 ? lRead : 0] = '\0';
      const std::string sStartRequest =
          GetRequest("/cgi-bin/h264?connect=start&protocol=rtp&my_port=5000&UID=" + UidOf(acReply) +
                     "&stream=1");
      const Clock::time_point t3 = Clock::now();
      lRead = RawExchange(usPort, sStartRequest, acReply, sizeof acReply - 1);
      const Clock::time_point t4 = Clock::now();
      // The stream the raw start line began ends, untimed, as the
      // requester's STOP ends its own: streams left running would load the
      // machine more with every round.
      pDevice->EndRtp();
      bOk = bOk && lRead > 0;
      sOne.Add(Micros(t2 - t1));
      sTwo.Add(Micros(t2 - t1) + Micros(t4 - t3));
    }
  }
  COM_SetPrintSink(nullptr, nullptr);
  if (!bOk) {
    std::printf("  a round failed\n");
    return false;
  }
  PrintRow("requester START -> RUN", sStart, "us");
  PrintRow("one raw exchange (UID request)", sOne, "us");
  PrintRow("the road's two raw exchanges", sTwo, "us");
  PrintRatio("START->RUN / one raw exchange, p50", sStart.P50() / sOne.P50(), Bound::kAtMost, 2.5);
  PrintInfoRatio("START->RUN / one raw exchange, p99", sStart.P99() / sOne.P99());
  PrintInfoRatio("START->RUN / two raw exchanges, p50", sStart.P50() / sTwo.P50());
  return true;
}

}  // namespace limits
