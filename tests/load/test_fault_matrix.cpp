// Every fault of the simulated devices against every exchange of every road:
// RTP live, RTP recorder, RTP play-back, JPEG, G.726 and Quillon. In each
// cell the failure (or, for a fault that is none, the lack of one) comes in
// bounded time with the status change the tables give, the stream runs
// again once the device behaves, and nothing is left behind. A fault that
// the device applies only to other answers (a push's fault on a CGI line,
// an RTP stream's fault on an HTTP road) is armed all the same: the
// exchange must go as without it. Where the exchange begins the stream, the
// stream must deliver again too. The cells run nine at a time, kind by
// kind, each with a device and a requester of its own, told apart in the
// print by their screen position. The matrix is printed.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamFaultKinds.h"
#include "CamTestSupport.h"
#include "CamTypes.h"
#include "FaultMatrix.h"
#include "HttpRig.h"
#include "HttpRoads.h"
#include "LoadFleet.h"

namespace loadtest {
namespace {

using Clock = std::chrono::steady_clock;
using camtest::FaultReach;
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

// A camera's stream that no packet reached for this long counts as stopped
// for its upper layer (25 pictures a second come while it runs).
constexpr long kSilenceMs = 300;

long MsSince(Clock::time_point t) {
  return static_cast<long>(
      std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - t).count());
}

bool IsPush(const RoadExchange& rEx) {
  return rEx.eAnswer == Answer::kJpegPush || rEx.eAnswer == Answer::kAudioStream;
}

// Whether the device applies the fault to the exchange's answer (or to the
// stream it begins); elsewhere the answer goes out as without it.
bool Reaches(const camtest::FaultKind& rKind, const RoadExchange& rEx) {
  switch (rKind.eReach) {
    case FaultReach::kConnection:
    case FaultReach::kAnswer:
      return true;
    case FaultReach::kText:
      return !IsPush(rEx);
    case FaultReach::kUidLine:
      return rEx.bUidReply;
    case FaultReach::kStream:
      return IsPush(rEx);
    case FaultReach::kMultipart:
      return rEx.eAnswer == Answer::kJpegPush;
    case FaultReach::kRtpStart:
      return rEx.eAnswer == Answer::kRtpStart;
  }
  return false;
}

// Whether a fault that reaches the exchange makes it fail.
bool Fails(const RoadExchange& rEx, size_t ulKind) {
  switch (ulKind) {
    case camtest::kFaultRefused:
      return !rEx.bRefusalIsNoFailure;
    case camtest::kFaultSlow:
    case camtest::kFaultLongBody:  // what a reply can hold begins with the keys
    case camtest::kFaultNoLength:
    case camtest::kFaultChunked:
      return false;
    case camtest::kFaultLateKeys:
      // Only what fits the reply buffer is read: the keys are lost.
      return rEx.bKeysRead;
    case camtest::kFaultCloseBody:
    case camtest::kFaultReset:
      // The head of a push came whole: it is handed over, and what follows
      // is the upper layer's to read.
      return !IsPush(rEx);
    case camtest::kFaultPushStall:
    case camtest::kFaultPushEnd:
    case camtest::kFaultQuotedBoundary:
    case camtest::kFaultBareBoundary:
    case camtest::kFaultRtpStall:
    case camtest::kFaultRtpEnd:
      // After the answer: the start succeeded.
      return false;
    default:
      // No answer, none whole (cut in its head, in its body or before its
      // last chunk, or dripping past the time-out), none in HTTP, a refusal,
      // or one without the UID.
      return true;
  }
}

// The upper layer of the RTP roads. It answers the stream-state query as a
// receiver of the stream on loopback would: 0 while packets come, 1 once
// none came for a while. The packets are counted where the device sends
// them (each cell has a device of its own, and loopback loses nothing), so
// that a camera's multicast needs no receiver of each cell's own.
class ArrivalNotify : public camtest::NotifyRecorder {
 public:
  explicit ArrivalNotify(const camsim::Device& rDevice) : m_rDevice(rDevice) {}

  int GetStreamState(unsigned short usCameraType, int iCmdType) override {
    const uint64_t ulSent = m_rDevice.RtpPacketsSent();
    const Clock::time_point tNow = Clock::now();
    if (ulSent != m_ulSent) {
      m_ulSent = ulSent;
      m_tLast = tNow;
    }
    const bool bStopped = tNow - m_tLast > milliseconds(camtest::ScaledMs(kSilenceMs));
    if (bStopped) ++m_iStoppedAnswers;
    SetStreamState(bStopped ? 1 : 0);
    return NotifyRecorder::GetStreamState(usCameraType, iCmdType);
  }
  int StoppedAnswers() const { return m_iStoppedAnswers.load(); }

 private:
  const camsim::Device& m_rDevice;
  // Touched by the request thread alone.
  uint64_t m_ulSent = 0;
  Clock::time_point m_tLast = Clock::now();
  std::atomic<int> m_iStoppedAnswers{0};
};

struct CellResult {
  int iWant = -1;  // the status the tables give
  int iGot = -1;
  long lMs = -1;
  bool bRunAgain = false;
  bool bReached = true;  // false: the device applies the fault to other answers only
  std::string sWhy;      // empty: the cell holds
};

class Cell {
 public:
  Cell(const MatrixRoad& rRoad, const RoadExchange& rEx, size_t ulKind, int iPos,
       const camtest::PrintCapture& rCapture)
      : m_rRoad(rRoad), m_rEx(rEx), m_ulKind(ulKind), m_iPos(iPos), m_rCapture(rCapture) {}

  CellResult Run() {
    const camtest::FaultKind& rKind = kFaultKinds[m_ulKind];
    m_sResult.bReached = Reaches(rKind, m_rEx);
    const bool bFails = m_sResult.bReached && Fails(m_rEx, m_ulKind);
    m_bStopsStream = m_sResult.bReached && !bFails && rKind.bStopsStream;
    const bool bStopSide = m_rEx.eSide == Side::kStop;
    // A play-back is set up (READY) until the upper layer reports it arriving.
    const int iRuns =
        m_rRoad.bPlayBack && m_rEx.eSide == Side::kStart ? CAM_HTTP_STS_READY : CAM_HTTP_STS_RUN;
    m_sResult.iWant = bStopSide ? CAM_HTTP_STS_IDLE : bFails ? CAM_HTTP_STS_ERROR : iRuns;
    if (Setup()) Exercise(bFails);
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
      m_pRtpNotify = std::make_unique<ArrivalNotify>(*m_pDevice);
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
    if (IsKelRecorder(static_cast<unsigned>(m_rRoad.iModel))) {
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
    if (m_sResult.bRunAgain && m_rEx.eAnswer != Answer::kText) {
      m_sResult.bRunAgain = StreamAgain(tStart);
    }
    if (m_sResult.iGot != m_sResult.iWant) {
      Fail("status " + std::to_string(m_sResult.iGot) + ", not " + std::to_string(m_sResult.iWant));
    }
    if (m_sResult.lMs > camtest::ScaledMs(kBoundMs)) {
      Fail("took " + std::to_string(m_sResult.lMs) + " ms");
    }
    if (!m_sResult.bRunAgain) Fail("not in RUN again once healed");
  }

  // The stream that the exchange begins delivers again. One that the fault
  // stopped after its start was answered is asked for again first: a
  // recorder's by the requester's stream check, which hears from the upper
  // layer that nothing arrives; a camera's by the upper layer, with STOP
  // and START, since for a camera the requester only passes the upper
  // layer's answer on.
  bool StreamAgain(Clock::time_point tStart) {
    if (m_bStopsStream && IsKelRecorder(static_cast<unsigned>(m_rRoad.iModel)) && !m_rRoad.bHttp) {
      const std::string sPos = std::to_string(m_iPos);
      if (!m_rCapture.WaitFor(Prefixed("CheckStreamStart [DEBUG] POS=" + sPos + " PUSH CGI!\n"),
                              kLimit)) {
        return Fail("the stopped stream was not asked for again");
      }
      // The time to the requester's own answer to the stall.
      m_sResult.lMs = MsSince(tStart);
      if (!m_rCapture.WaitFor(Prefixed("CheckStreamStart RTP STOP -> RUN  POS=" + sPos + " \n"),
                              kLimit)) {
        return Fail("the stream's return was not reported");
      }
      if (!m_rCapture.Contains(Prefixed("CheckStreamStart RTP RUN ->STOP  POS=" + sPos + " \n"))) {
        return Fail("the stall was not reported");
      }
    } else if (m_bStopsStream) {
      if (m_pRtpNotify != nullptr) {
        // The upper layer saw the stream stop; the requester asked nothing.
        if (!camtest::WaitUntil([&] { return m_pRtpNotify->StoppedAnswers() > 0; }, kLimit)) {
          return Fail("the stream did not stop");
        }
        if (m_rCapture.Contains(Prefixed("CheckStreamStart [DEBUG] POS="))) {
          return Fail("a camera's stream was asked for again by the requester");
        }
      }
      if (Status() != CAM_HTTP_STS_RUN) return Fail("not in RUN with the stream stopped");
      Stop();
      if (!WaitStatus(CAM_HTTP_STS_IDLE)) return Fail("no IDLE after the upper layer's stop");
      if (!StartToRun()) return false;
    }
    return MediaFlows() || Fail("the stream delivers nothing");
  }
  // Pictures on the push now held, audio bytes, or RTP packets come.
  bool MediaFlows() const {
    if (m_rRoad.iCmdType == CAM_REQUESTER_CMD_JPEG_HTTP && m_rRoad.bHttp) {
      return m_pPushNotify->WaitForPicturesOfCurrentHandle(2, kLimit);
    }
    if (m_rRoad.bHttp) {
      return m_pPushNotify->WaitForAudioBytes(m_pPushNotify->AudioBytes() + 800, kLimit);
    }
    const uint64_t ulSent = m_pDevice->RtpPacketsSent();
    return camtest::WaitUntil([&] { return m_pDevice->RtpPacketsSent() >= ulSent + 10; }, kLimit);
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
  std::unique_ptr<ArrivalNotify> m_pRtpNotify;
  std::atomic<bool> m_bRefused{false};
  bool m_bStopsStream = false;
};

struct CellRef {
  size_t ulRoad;
  size_t ulExchange;
  size_t ulKind;
  size_t ulAt;  // where its result goes: the row's kinds one after another
};

TEST(FaultMatrix, EveryFaultOnEveryExchangeOfEveryRoad) {
  RaiseFileLimit();
  KXCOM_SetWaitDivisor(kWaitDivisor);
  http_set_timeout_divisor(kHttpDivisor);
  // Kind by kind: the cells of a round then take about as long as each
  // other (a silent device costs a time-out in every cell of its kind), and
  // few wait for the slowest of their round.
  std::vector<CellRef> asCells;
  for (size_t k = 0; k < camtest::kFaultKindCount; ++k) {
    size_t ulRow = 0;
    for (size_t r = 0; r < std::size(kMatrixRoads); ++r) {
      for (size_t e = 0; e < kMatrixRoads[r].ulExchanges; ++e, ++ulRow) {
        asCells.push_back({r, e, k, ulRow * camtest::kFaultKindCount + k});
      }
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
        asResults[c.ulAt] = cell.Run();
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
      CellResult& rResult = asResults[asCells[i].ulAt];
      if (rResult.sWhy.empty()) {
        rResult.sWhy =
            "left behind: " + Describe(Snapshot()) + " (before " + Describe(sBefore) + ")";
      }
    }
  }
  http_set_timeout_divisor(1);
  KXCOM_SetWaitDivisor(1);

  // The rows are the exchanges of every road; asResults holds a row's kinds
  // one after another.
  std::vector<std::string> asRows;
  for (const MatrixRoad& rRoad : kMatrixRoads) {
    for (size_t e = 0; e < rRoad.ulExchanges; ++e) {
      asRows.push_back(std::string(rRoad.pcName) + "/" + rRoad.asExchanges[e].pcName);
    }
  }
  int iFailed = 0;
  for (size_t i = 0; i < asResults.size(); ++i) {
    if (asResults[i].sWhy.empty()) continue;
    ++iFailed;
    ADD_FAILURE() << asRows[i / camtest::kFaultKindCount] << " "
                  << kFaultKinds[i % camtest::kFaultKindCount].pcName << ": " << asResults[i].sWhy;
  }

  // The matrix, eleven kinds to a block: the status each fault led to
  // (1 ERROR, 3 READY, 4 RUN, 0 IDLE), "R" when the stream ran again once
  // healed, the time to the status change in ms; "!" marks a cell that
  // failed. A cell in parentheses is one whose answer the device sent as
  // without the fault, which it applies to other answers only.
  constexpr size_t kKindsPerBlock = 11;
  std::string sTable;
  for (size_t ulKind0 = 0; ulKind0 < camtest::kFaultKindCount; ulKind0 += kKindsPerBlock) {
    const size_t ulKindEnd = std::min<size_t>(camtest::kFaultKindCount, ulKind0 + kKindsPerBlock);
    char ac[64];
    sTable += "\nroad/exchange        ";
    for (size_t k = ulKind0; k < ulKindEnd; ++k) {
      snprintf(ac, sizeof(ac), "%-12s", kFaultKinds[k].pcName);
      sTable += ac;
    }
    sTable += "\n";
    for (size_t ulRow = 0; ulRow < asRows.size(); ++ulRow) {
      snprintf(ac, sizeof(ac), "%-21s", asRows[ulRow].c_str());
      sTable += ac;
      for (size_t k = ulKind0; k < ulKindEnd; ++k) {
        const CellResult& s = asResults[ulRow * camtest::kFaultKindCount + k];
        snprintf(ac, sizeof(ac), s.bReached ? "%d%s %ld%s" : "(%d%s %ld)%s", s.iGot,
                 s.bRunAgain ? "R" : "", s.lMs, s.sWhy.empty() ? "" : "!");
        std::string sCell = ac;
        sCell.resize(12, ' ');
        sTable += sCell;
      }
      sTable += "\n";
    }
  }
  std::printf("%s\n%zu cells, %d failed, in %ld ms\n", sTable.c_str(), asCells.size(), iFailed,
              MsSince(tBegin));
}

}  // namespace
}  // namespace loadtest
