// START to RUN: the time from RequestStart until an H.264 requester reaches
// RUN against a simulated camera (keep-alive off), against one plain-socket
// exchange with the same server in the same run, and the two exchanges of
// the road (the UID request and the start request) as its floor. The road
// is two exchanges: the queue, the thread and the bookkeeping should add
// almost nothing to them.
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>

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

// The hop every request makes before its road starts: a message made and
// sent to a thread that waits on its queue as a request thread does, timed
// until that thread has it. It is the queue and the thread of the road
// without the requester around them.
class QueueHop {
 public:
  QueueHop() : m_thread([this] { Run(); }) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_iQueue != kUnbound; });
  }
  ~QueueHop() {
    m_bStop = true;
    Send(kStopCode);  // wakes the thread at once; without it, its wait runs out
    m_thread.join();
  }
  // Microseconds from the send until the waiting thread received the
  // message; negative when the queue failed.
  double Once() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_bReceived = false;
    const Clock::time_point tSent = Clock::now();
    if (!Send(kHopCode)) return -1;
    m_changed.wait(lock, [this] { return m_bReceived; });
    return Micros(m_tReceived - tSent);
  }

 private:
  static constexpr int kModule = 99;  // no requester's module
  static constexpr int kHopCode = 1;
  static constexpr int kStopCode = 2;  // only wakes the thread: m_bStop ends it
  static constexpr int kUnbound = -1000;
  bool Send(int iCode) {
    KXCOM_MSGBUF* psBuf = KXCOM_CreateMsgBuf_Asy(iCode, 0, 0);
    if (psBuf == nullptr) return false;
    if (_COM_MsgSndMain(kModule, 0, psBuf) == KXCOM_LIB_OK) return true;
    KXCOM_FreeMsgBuf_Asy(psBuf);
    return false;
  }
  void Run() {
    const int iQueue = KXCOM_InitMsg_Asy(kModule, 0);
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_iQueue = iQueue;
    }
    m_changed.notify_all();
    while (iQueue >= 0 && !m_bStop) {
      const struct timeval sWait = {0, 100000};
      KXCOM_MSGBUF* psMsg = _COM_MsgRcvMain(0, sWait, iQueue);
      if (psMsg == nullptr) continue;
      const Clock::time_point tNow = Clock::now();
      KXCOM_FreeMsgBuf_Asy(psMsg);
      {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_tReceived = tNow;
        m_bReceived = true;
      }
      m_changed.notify_all();
    }
    if (iQueue >= 0) KXCOM_DeleteMsgQue_Asy(iQueue, kModule, 0);
  }
  std::mutex m_mutex;
  std::condition_variable m_changed;
  int m_iQueue = kUnbound;
  std::atomic<bool> m_bStop{false};
  bool m_bReceived = false;
  Clock::time_point m_tReceived;
  std::thread m_thread;
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
  Samples sStart, sOne, sTwo, sHop;
  bool bOk = true;
  {
    QueueHop hop;
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
      const double dHop = hop.Once();
      bOk = bOk && dHop >= 0;
      sHop.Add(dHop);
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
  PrintRow("a message to a thread waiting on its queue", sHop, "us");
  PrintRatio("START->RUN / one raw exchange, p50", sStart.P50() / sOne.P50(), Bound::kAtMost, 2.5);
  PrintInfoRatio("START->RUN / one raw exchange, p99", sStart.P99() / sOne.P99());
  PrintInfoRatio("START->RUN / two raw exchanges, p50", sStart.P50() / sTwo.P50());
  PrintInfoRatio("START->RUN less the queue's hop / one raw exchange, p50",
                 (sStart.P50() - sHop.P50()) / sOne.P50());
  return true;
}

}  // namespace limits
