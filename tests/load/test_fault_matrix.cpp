// Every fault of the simulated devices against every exchange of every road:
// RTP live, RTP recorder, RTP play-back, JPEG, G.726 and Quillon. In each
// cell the failure (or, for a fault that is none, the lack of one) comes in
// bounded time with the status change the tables give, the stream runs
// again once the device behaves, and nothing is left behind. The cells run
// nine at a time, each with a device and a requester of its own, told apart
// in the print by their screen position. The matrix is printed.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamFaultKinds.h"
#include "CamTestSupport.h"
#include "FaultMatrix.h"
#include "HttpRig.h"
#include "HttpRoads.h"
#include "LoadFleet.h"

namespace loadtest {
namespace {

using Clock = std::chrono::steady_clock;
using camtest::kFaultKinds;

// Idle rounds of 1 ms: a keep-alive every 0.3 s, a rebuild 30 ms after a
// failure. Time-outs of 1 s instead of 5.
constexpr int kWaitDivisor = 100;
constexpr int kHttpDivisor = 5;
// From the command to the status change: at worst a time-out (1 s) and an
// exchange or two, on a loaded machine.
constexpr long kBoundMs = 4000;
constexpr milliseconds kLimit{10000};
// Positions 1..9 print as one digit: nine cells at a time.
constexpr int kCellsAtOnce = 9;

long MsSince(Clock::time_point t) {
  return static_cast<long>(
      std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - t).count());
}

// Whether the fault makes the exchange fail; -1 where it cannot meet it
// (no UID in the reply to leave out).
int Fails(const RoadExchange& rEx, size_t ulKind) {
  switch (ulKind) {
    case camtest::kFaultSlow:
      return 0;
    case camtest::kFaultNoUid:
      return rEx.bUidReply ? 1 : -1;
    case camtest::kFaultCloseBody:
    case camtest::kFaultReset:
    case camtest::kFaultDrip:
      // The head of a push came whole: it is handed over, and what follows
      // is the upper layer's to read.
      return rEx.bPushHead ? 0 : 1;
    case camtest::kFaultRefused:
      return rEx.bRefusalIsNoFailure ? 0 : 1;
    default:
      return 1;
  }
}

struct CellResult {
  int iWant = -1;  // the status the tables give; -1: not applicable
  int iGot = -1;
  long lMs = -1;
  bool bRunAgain = false;
  std::string sWhy;  // empty: the cell holds
};

class Cell {
 public:
  Cell(const MatrixRoad& rRoad, const RoadExchange& rEx, size_t ulKind, int iPos,
       const camtest::PrintCapture& rCapture)
      : m_rRoad(rRoad), m_rEx(rEx), m_ulKind(ulKind), m_iPos(iPos), m_rCapture(rCapture) {}

  CellResult Run() {
    const int iFails = Fails(m_rEx, m_ulKind);
    if (iFails < 0) return m_sResult;
    const bool bStopSide = m_rEx.eSide == Side::kStop;
    // A play-back is set up (READY) until the upper layer reports it arriving.
    const int iRuns =
        m_rRoad.bPlayBack && m_rEx.eSide == Side::kStart ? CAM_HTTP_STS_READY : CAM_HTTP_STS_RUN;
    m_sResult.iWant = bStopSide ? CAM_HTTP_STS_IDLE : iFails ? CAM_HTTP_STS_ERROR : iRuns;
    if (Setup()) Exercise(iFails == 1);
    TearDown();
    return m_sResult;
  }

 private:
  bool Fail(const std::string& sWhy) {
    if (m_sResult.sWhy.empty()) m_sResult.sWhy = sWhy;
    return false;
  }
  int Status() const { return m_pReq->iConnectStatus.load(); }
  bool WaitStatus(int iStatus, milliseconds tLimit = kLimit) const {
    return camtest::WaitUntil([&] { return Status() == iStatus; }, tLimit);
  }
  std::string Prefixed(const std::string& sText) const {
    return httptest::Prefixed(*m_pFields, sText);
  }

  bool Setup() {
    camsim::DeviceConfig sConfig;
    sConfig.address = "127.0.0.1";
    sConfig.model = m_rRoad.iModel;
    std::string sError;
    m_pDevice = camsim::Device::Start(sConfig, &sError);
    if (!m_pDevice) return Fail("camsim did not start: " + sError);
    return MakeRequester();
  }

  bool MakeRequester() {
    CCamRequesterNotify* pNotify = nullptr;
    if (m_rRoad.bHttp) {
      auto pReq = std::make_unique<CCamRequester_Cgi_Kobu_Http>();
      m_pFields = pReq.get();
      m_pReq = std::move(pReq);
      m_pPushNotify = std::make_unique<httptest::PushReaderNotify>(
          m_rRoad.iCmdType == CAM_REQUESTER_CMD_G726_HTTP
              ? httptest::PushReaderNotify::Media::kAudio
              : httptest::PushReaderNotify::Media::kJpeg);
      pNotify = m_pPushNotify.get();
    } else {
      auto pReq = std::make_unique<CCamRequester_Cgi_Kobu_Rtp>();
      m_pFields = pReq.get();
      m_pReq = std::move(pReq);
      m_pRtpNotify = std::make_unique<camtest::NotifyRecorder>();
      pNotify = m_pRtpNotify.get();
      httptest::SetParam(*m_pReq, CAM_PARAM_RTPPORT, int32_t{40000 + 2 * m_iPos});
    }
    CCamRequester& r = *m_pReq;
    if (r.SetParameter(CAM_PARAM_IPADDRESS, "127.0.0.1", 0) != 0) return Fail("address refused");
    httptest::SetParam(r, CAM_PARAM_HTTPPORT, int32_t{m_pDevice->Port()});
    httptest::SetParam(r, CAM_PARAM_CMDTYPE, int32_t{m_rRoad.iCmdType});
    CAM_TYPE_PARAM sType{};
    sType.usCameraNumber = static_cast<uint16_t>(m_iPos);
    sType.usCameraType = static_cast<uint16_t>(m_rRoad.iModel);
    snprintf(sType.CamName, sizeof(sType.CamName), "MODEL%d", m_rRoad.iModel);
    httptest::SetParam(r, CAM_PARAM_CAMTYPE, sType);
    httptest::SetParam(r, CAM_PARAM_SCREENPOS, int32_t{m_iPos});
    if (m_rRoad.iModel >= CAM_REQUESTER_CAMTYPE_KEL31) {
      CAM_AUTH_PARAM sAuth{};
      snprintf(sAuth.cUserName, sizeof(sAuth.cUserName), "admin");
      snprintf(sAuth.cPassword, sizeof(sAuth.cPassword), "password");
      httptest::SetParam(r, CAM_PARAM_AUTH, sAuth);
    }
    if (m_rRoad.bUpperUid) {
      CAM_UID_PARAM sUid{};
      sUid.iUid = httptest::IssueUid(*m_pDevice, "FILE=2&vcodec=audio");
      sUid.iAudioEnable = 1;
      if (sUid.iUid <= 0) return Fail("no UID for the upper layer");
      httptest::SetParam(r, CAM_PARAM_UID, sUid);
    }
    if (r.SetParameter(CAM_PARAM_CALLBACK, pNotify, 0) != 0) return Fail("callback refused");
    // (A play-back's keep-alive is the upper layer's to send; the switch
    // also makes its stop log out.)
    r.EnableKeepAlive();
    static std::atomic<long> s_lIndex{5000};
    if (r.Initialize(s_lIndex++) != 0) return Fail("Initialize failed");
    return true;
  }

  // The upper layer starts the stream and, for a play-back, reports it
  // arriving once it is set up.
  bool StartToRun() {
    if (!m_rRoad.bPlayBack) {
      m_pReq->RequestStart();
      return WaitStatus(CAM_HTTP_STS_RUN) || Fail("no RUN, status " + std::to_string(Status()));
    }
    m_pReq->RequestPBStart();
    if (!WaitStatus(CAM_HTTP_STS_READY)) return Fail("play-back not READY");
    httptest::SetParam(*m_pReq, CAM_PARAM_STATUSCHANGE, int32_t{1});
    return WaitStatus(CAM_HTTP_STS_RUN) || Fail("play-back not in RUN");
  }
  void Stop() {
    if (m_rRoad.bPlayBack) {
      m_pReq->RequestPBStop();
    } else {
      m_pReq->RequestStop();
    }
  }
  // STOP until IDLE: a requester rebuilding its session may be caught in
  // SETUP or READY, where a STOP changes nothing.
  bool StopUntilIdle() {
    for (int i = 0; i < 50; ++i) {
      Stop();
      if (WaitStatus(CAM_HTTP_STS_IDLE, milliseconds(200))) return true;
    }
    return false;
  }

  bool Matches(const camsim::RequestRecord& r, const RoadExchange& rEx) const {
    return r.path == rEx.pcPath && (rEx.pcKey == nullptr || r.Param(rEx.pcKey) == rEx.pcValue);
  }
  int Met() const {
    int iCount = 0;
    for (const camsim::RequestRecord& r : m_pDevice->Requests()) iCount += Matches(r, m_rEx);
    return iCount;
  }
  // The exchange before this one on the same side, which a refusal follows.
  const RoadExchange* Before() const {
    const RoadExchange* psBefore = nullptr;
    for (size_t i = 0; i < m_rRoad.ulExchanges; ++i) {
      const RoadExchange& rEx = m_rRoad.asExchanges[i];
      if (&rEx == &m_rEx) return psBefore;
      psBefore = rEx.eSide == m_rEx.eSide ? &rEx : nullptr;
    }
    return nullptr;
  }
  void Arm() {
    const char* pcFault = kFaultKinds[m_ulKind].pcFault;
    if (pcFault != nullptr) {
      camsim::Fault sFault = httptest::Fault(pcFault);
      if (m_rEx.pcKey != nullptr) sFault.when = {{m_rEx.pcKey, m_rEx.pcValue}};
      m_pDevice->SetFault(m_rEx.pcPath, sFault);  // until healed
      return;
    }
    const RoadExchange* psBefore = Before();
    if (psBefore == nullptr) {
      m_pDevice->RefuseConnections();
      return;
    }
    // Closed as soon as the exchange before came; its answer still goes out.
    camsim::Device* pDevice = m_pDevice.get();
    m_pDevice->SetObserver([this, pDevice, psBefore](const camsim::RequestRecord& r) {
      if (Matches(r, *psBefore) && !m_bRefused.exchange(true)) pDevice->RefuseConnections();
    });
  }
  bool MetNow() const {
    if (kFaultKinds[m_ulKind].pcFault != nullptr) return Met() > 0;
    return m_rCapture.Contains("OpenSessionCommandExec [ERROR] open faild IP:127.0.0.1  Port:" +
                               std::to_string(m_pDevice->Port()) + "\n");
  }
  void Heal() {
    m_pDevice->SetObserver(nullptr);
    m_pDevice->ClearFaults();
    if (!m_pDevice->Listening()) m_pDevice->AcceptConnections();
  }

  void Exercise(bool bFails) {
    if (m_rEx.eSide != Side::kStart && !StartToRun()) return;
    int iKeptAlive = m_rCapture.CountContaining(Prefixed("SendKeepAliveCommandExec OUT"));
    if (m_rEx.eSide != Side::kStart && !m_rRoad.bPlayBack) {
      // The fault is armed right after a keep-alive: a stop then is the
      // exchange that meets it, not the next keep-alive; and a keep-alive
      // cell never arms it while the keep-alive that follows the START is
      // still on its connection (a refusal would reset that one instead).
      if (!m_rCapture.WaitForCount(Prefixed("SendKeepAliveCommandExec OUT"), iKeptAlive + 1,
                                   kLimit)) {
        Fail("no keep-alive in RUN");
        return;
      }
      ++iKeptAlive;
    }
    Arm();
    const Clock::time_point tStart = Clock::now();
    switch (m_rEx.eSide) {
      case Side::kStart:
        if (m_rRoad.bPlayBack) {
          m_pReq->RequestPBStart();
        } else {
          m_pReq->RequestStart();
        }
        break;
      case Side::kRun:
        // The upper layer sends a play-back's keep-alive on every 30th call.
        if (m_rRoad.bPlayBack) {
          for (int i = 0; i < 30; ++i) m_pReq->SendPBKeepAliveCommand();
        }
        break;
      case Side::kStop:
        Stop();
        break;
    }
    if (!camtest::WaitUntil([&] { return MetNow(); }, kLimit)) {
      Fail("the fault was never met");
      Heal();
      return;
    }

    if (m_rEx.eSide == Side::kStop) {
      // A stop ends in IDLE whatever the device answers.
      if (!WaitStatus(CAM_HTTP_STS_IDLE)) Fail("no IDLE after the stop");
      m_sResult.lMs = MsSince(tStart);
      m_sResult.iGot = Status();
      // The status word changes before its line is printed.
      if (!m_rCapture.WaitFor(Prefixed(m_rEx.pcFailLine), kLimit)) {
        Fail("no line " + std::string(m_rEx.pcFailLine));
      }
      Heal();
      // The stream is asked for again as the media process asks for a
      // stream, with a requester of its own: a recorder's requester keeps
      // the UID it logged out of.
      DestroyRequester();
      m_sResult.bRunAgain = MakeRequester() && StartToRun();
    } else if (bFails) {
      if (!m_rCapture.WaitFor(Prefixed(m_rEx.pcFailLine), kLimit)) {
        Fail("no status change " + std::string(m_rEx.pcFailLine));
      } else {
        m_sResult.lMs = MsSince(tStart);
        m_sResult.iGot = CAM_HTTP_STS_ERROR;
      }
      Heal();
      m_sResult.bRunAgain =
          m_rRoad.bPlayBack ? StopUntilIdle() && StartToRun() : WaitStatus(CAM_HTTP_STS_RUN);
    } else {
      // No failure: the time is that of the fault met; once healed, the
      // keep-alive after the faulted exchange shows that the thread went
      // past it. The stream runs on.
      m_sResult.lMs = MsSince(tStart);
      Heal();
      const bool bPast =
          m_rRoad.bPlayBack
              ? WaitStatus(m_rEx.eSide == Side::kRun ? CAM_HTTP_STS_RUN : CAM_HTTP_STS_READY)
              : m_rCapture.WaitForCount(Prefixed("SendKeepAliveCommandExec OUT"), iKeptAlive + 1,
                                        kLimit);
      m_sResult.iGot = bPast ? Status() : -1;
      // No status change to ERROR was printed for this requester.
      for (const std::string& sLine : m_rCapture.Lines()) {
        if (sLine.rfind(Prefixed(""), 0) == 0 && sLine.find("-> 1. \n") != std::string::npos) {
          m_sResult.iGot = CAM_HTTP_STS_ERROR;
        }
      }
      if (m_rRoad.bPlayBack && m_rEx.eSide == Side::kStart) {
        httptest::SetParam(*m_pReq, CAM_PARAM_STATUSCHANGE, int32_t{1});
      }
      m_sResult.bRunAgain = WaitStatus(CAM_HTTP_STS_RUN);
    }
    if (m_sResult.iGot != m_sResult.iWant) {
      Fail("status " + std::to_string(m_sResult.iGot) + ", not " + std::to_string(m_sResult.iWant));
    }
    if (m_sResult.lMs > camtest::ScaledMs(kBoundMs)) {
      Fail("took " + std::to_string(m_sResult.lMs) + " ms");
    }
    if (!m_sResult.bRunAgain) Fail("not in RUN again once healed");
  }

  void DestroyRequester() {
    if (m_pReq) {
      if (!StopUntilIdle()) Fail("could not be brought to IDLE");
      if (m_pPushNotify) m_pPushNotify->Detach();
      m_pReq.reset();
    }
    m_pPushNotify.reset();
    m_pRtpNotify.reset();
  }
  void TearDown() {
    if (m_pDevice) Heal();
    DestroyRequester();
    if (m_pDevice) m_pDevice->Stop();
  }

  const MatrixRoad& m_rRoad;
  const RoadExchange& m_rEx;
  size_t m_ulKind;
  int m_iPos;
  const camtest::PrintCapture& m_rCapture;
  CellResult m_sResult;
  std::unique_ptr<camsim::Device> m_pDevice;
  std::unique_ptr<CCamRequester> m_pReq;
  const CamRequesterFields* m_pFields = nullptr;
  std::unique_ptr<httptest::PushReaderNotify> m_pPushNotify;
  std::unique_ptr<camtest::NotifyRecorder> m_pRtpNotify;
  std::atomic<bool> m_bRefused{false};
};

struct CellRef {
  size_t ulRoad;
  size_t ulExchange;
  size_t ulKind;
};

TEST(FaultMatrix, EveryFaultOnEveryExchangeOfEveryRoad) {
  RaiseFileLimit();
  KXCOM_SetWaitDivisor(kWaitDivisor);
  http_set_timeout_divisor(kHttpDivisor);
  std::vector<CellRef> asCells;
  for (size_t r = 0; r < std::size(kMatrixRoads); ++r) {
    for (size_t e = 0; e < kMatrixRoads[r].ulExchanges; ++e) {
      for (size_t k = 0; k < camtest::kFaultKindCount; ++k) asCells.push_back({r, e, k});
    }
  }
  std::vector<CellResult> asResults(asCells.size());
  const Clock::time_point tBegin = Clock::now();
  for (size_t ulFirst = 0; ulFirst < asCells.size(); ulFirst += kCellsAtOnce) {
    const size_t ulEnd = std::min(asCells.size(), ulFirst + kCellsAtOnce);
    camtest::PrintCapture capture;
    const Resources sBefore = Snapshot();
    std::vector<std::thread> aThreads;
    for (size_t i = ulFirst; i < ulEnd; ++i) {
      aThreads.emplace_back([&, i] {
        const CellRef& c = asCells[i];
        const MatrixRoad& rRoad = kMatrixRoads[c.ulRoad];
        Cell cell(rRoad, rRoad.asExchanges[c.ulExchange], c.ulKind,
                  static_cast<int>(i - ulFirst) + 1, capture);
        asResults[i] = cell.Run();
      });
    }
    for (std::thread& t : aThreads) t.join();
    // Nothing left behind by the cells of this round.
    const bool bClean = camtest::WaitUntil([&] {
      const Resources s = Snapshot();
      return s.iFds <= sBefore.iFds && s.iThreads <= sBefore.iThreads &&
             s.iBuffers == sBefore.iBuffers;
    });
    for (size_t i = ulFirst; i < ulEnd && !bClean; ++i) {
      if (asResults[i].sWhy.empty()) {
        asResults[i].sWhy =
            "left behind: " + Describe(Snapshot()) + " (before " + Describe(sBefore) + ")";
      }
    }
  }
  http_set_timeout_divisor(1);
  KXCOM_SetWaitDivisor(1);

  // The matrix: the status each fault led to (1 ERROR, 3 READY, 4 RUN, 0 IDLE), "R"
  // when the stream ran again once healed, the time to the status change
  // in ms; "!" marks a cell that failed, "-" one the fault cannot meet.
  std::string sTable = "\nroad/exchange        ";
  for (const camtest::FaultKind& k : kFaultKinds) {
    char ac[32];
    snprintf(ac, sizeof(ac), "%-12s", k.pcName);
    sTable += ac;
  }
  sTable += "\n";
  size_t ulAt = 0;
  int iFailed = 0;
  for (size_t r = 0; r < std::size(kMatrixRoads); ++r) {
    for (size_t e = 0; e < kMatrixRoads[r].ulExchanges; ++e) {
      char ac[64];
      snprintf(ac, sizeof(ac), "%-21s",
               (std::string(kMatrixRoads[r].pcName) + "/" + kMatrixRoads[r].asExchanges[e].pcName)
                   .c_str());
      sTable += ac;
      for (size_t k = 0; k < camtest::kFaultKindCount; ++k, ++ulAt) {
        const CellResult& s = asResults[ulAt];
        if (s.iWant < 0) {
          snprintf(ac, sizeof(ac), "%-12s", "-");
        } else {
          snprintf(ac, sizeof(ac), "%d%s %ld%s", s.iGot, s.bRunAgain ? "R" : "", s.lMs,
                   s.sWhy.empty() ? "" : "!");
          std::string sCell = ac;
          sCell.resize(12, ' ');
          snprintf(ac, sizeof(ac), "%s", sCell.c_str());
        }
        sTable += ac;
        if (!s.sWhy.empty()) {
          ++iFailed;
          ADD_FAILURE() << kMatrixRoads[r].pcName << "/" << kMatrixRoads[r].asExchanges[e].pcName
                        << " " << kFaultKinds[k].pcName << ": " << s.sWhy;
        }
      }
      sTable += "\n";
    }
  }
  std::printf("%s\n%zu cells, %d failed, in %ld ms\n", sTable.c_str(), asCells.size(), iFailed,
              MsSince(tBegin));
}

}  // namespace
}  // namespace loadtest
