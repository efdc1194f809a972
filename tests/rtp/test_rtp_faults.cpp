// Every misbehaviour of a camera on every exchange of the H.264 road: the
// status it leads to, the lines printed, the upper layer told, the session
// rebuilt, in bounded time and with nothing left behind (the fixture counts
// descriptors and message buffers after every row; ASan counts the heap).
#include <chrono>
#include <string>
#include <vector>

#include "CamFaultKinds.h"
#include "CamTestTiming.h"
#include "RtpRoad.h"

namespace rtptest {
namespace {

using Clock = std::chrono::steady_clock;

enum class Exchange { kSetup, kStart, kKeepAlive, kStop };
enum class Kind {
  kRefused,
  kSilent,
  kSlow,
  kCloseHeader,
  kCloseBody,
  kGarbage,
  kReset,
  k404,
  k503,
  kNoUid
};

struct Row {
  const char* pcAddress;
  Exchange eExchange;
  Kind eKind;
};

const char* const kExchangeNames[] = {"Setup", "Start", "KeepAlive", "Stop"};

// What the strict request prints for each answer (the result word carries
// the HTTP status, or the client's failure class).
std::vector<std::string> DoRequestLines(Kind e) {
  switch (e) {
    case Kind::kSilent:
      return {"DoRequest [Error] http_get_response failed1:ret =8007000\n"};
    case Kind::kCloseHeader:
    case Kind::kCloseBody:
      return {"DoRequest [Error] http_get_response failed3:ret =8006000\n"};
    case Kind::kGarbage:
      return {"DoRequest [Error] http_get_response failed3:ret =8005000\n"};
    case Kind::kReset:
      return {"DoRequest [Error] http_get_response failed3:ret =8003000\n"};
    case Kind::k404:
      return {"DoRequest [Error] ret =8000404\n",
              "DoRequest [Error] http_get_response failed2:ret =8000404\n"};
    case Kind::k503:
      return {"DoRequest [Error] ret =8000503\n",
              "DoRequest [Error] http_get_response failed2:ret =8000503\n"};
    default:
      return {};
  }
}

// What the stop prints for each answer: it only classifies.
std::string StopLine(Kind e) {
  switch (e) {
    case Kind::kSilent:
      return "StreamStopCommandExec [ERROR] timeout ret=0x8007000\n";
    case Kind::kCloseHeader:
    case Kind::kCloseBody:
      return "StreamStopCommandExec [ERROR] other error ret=0x8006000\n";
    case Kind::kGarbage:
      return "StreamStopCommandExec [ERROR] other error ret=0x8005000\n";
    case Kind::kReset:
      return "StreamStopCommandExec [ERROR] other error ret=0x8003000\n";
    case Kind::k404:
      return "StreamStopCommandExec [ERROR] client or server error ret=0x8000404\n";
    case Kind::k503:
      return "StreamStopCommandExec [ERROR] client or server error ret=0x8000503\n";
    default:
      return "";
  }
}

// The kinds are the shared rows, in their order.
camsim::Fault FaultOf(Kind e) {
  camsim::Fault s;
  const char* pcText = camtest::kFaultKinds[static_cast<size_t>(e)].pcFault;
  std::string sError;
  if (pcText != nullptr) {
    EXPECT_TRUE(camsim::ParseFault(pcText, &s, &sError)) << sError;
  }
  s.times = 1;
  return s;
}

const char* const kPaths[] = {"/cgi-bin/getuid", "/cgi-bin/h264", "/cgi-bin/keep_alive",
                              "/cgi-bin/h264"};
const char* const kOpenFailed[] = {
    "SetupSessionCommandExec [Error] Rtp::SetupSessionCommand failed\n",
    "StreamStartCommandExec [Error] OpenSessionCommandExec failed\n",
    "SendKeepAliveCommandExec [Error] OpenSessionCommandExec failed\n",
    "StreamStopCommandExec [Error] OpenSessionCommandExec failed\n"};
const char* const kEventLines[] = {"ChangeStatus [DEBUG] Video Event=3:2 -> 1. \n",
                                   "ChangeStatus [DEBUG] Video Event=5:3 -> 1. \n",
                                   "ChangeStatus [DEBUG] Video Event=6:4 -> 1. \n",
                                   "ChangeStatus [DEBUG] Video Event=8:5 -> 0. \n"};

class FaultTable : public RoadTest, public ::testing::WithParamInterface<Row> {
 protected:
  Exchange Where() const { return GetParam().eExchange; }
  Kind What() const { return GetParam().eKind; }
  // How often the upper layer hears UID -1 from the failure.
  int UidInvalidCalls() const {
    if (What() == Kind::kSlow || What() == Kind::kNoUid) return 0;
    switch (Where()) {
      case Exchange::kKeepAlive:
        return 2;  // inside the exchange, and again by the keep-alive command
      case Exchange::kStop:
        return What() == Kind::kRefused ? 1 : 0;
      default:
        return 1;
    }
  }
  // Closes the listener once the exchange before the faulted one is under
  // way (its answer is held back meanwhile), so that exactly the faulted
  // exchange finds the camera gone.
  void RefuseAfter(const char* pcPath, const std::string& sHead) {
    camsim::Fault sHold;
    sHold.delayMs = 300;  // inside the (divided) time-out
    sHold.times = 1;
    Camera().SetFault(pcPath, sHold);
    m_sRefuseAfter = sHead;
  }
  void Arm() {
    if (What() != Kind::kRefused) {
      Camera().SetFault(kPaths[static_cast<int>(Where())], FaultOf(What()));
      return;
    }
    switch (Where()) {
      case Exchange::kSetup:
        ASSERT_TRUE(Camera().RefuseConnections());
        break;
      case Exchange::kStart:
        RefuseAfter("/cgi-bin/getuid", "GET /cgi-bin/getuid");
        break;
      case Exchange::kKeepAlive:
        RefuseAfter("/cgi-bin/h264", "GET /cgi-bin/h264?connect=start");
        break;
      case Exchange::kStop:
        ASSERT_TRUE(Camera().RefuseConnections());
        break;
    }
  }

  std::string m_sRefuseAfter;
};

TEST_P(FaultTable, StatusLinesNotificationsAndRebuild) {
  const std::string sAddr = GetParam().pcAddress;
  StartCamera(CameraConfig(sAddr, 7));
  const std::string sOpenFaild =
      "CCamRequester_Cgi_Kobu_Rtp::OpenSessionCommandExec [ERROR] open faild IP:" + sAddr +
      "  Port:" + std::to_string(Camera().Port()) + "\n";
  Stream& s = AddStream(StreamSetup());
  const bool bStop = Where() == Exchange::kStop;
  if (bStop) StartToRun(s);
  Arm();

  const Clock::time_point tStart = Clock::now();
  if (bStop) {
    s.r().RequestStop();
  } else {
    s.r().RequestStart();
  }
  if (!m_sRefuseAfter.empty()) {
    ASSERT_TRUE(WaitForRequest(m_sRefuseAfter)) << Tail();
    ASSERT_TRUE(Camera().RefuseConnections());
  }

  if (What() == Kind::kSlow) {
    // A slow answer inside the time-out is no failure.
    if (bStop) {
      ASSERT_TRUE(WaitStatus(s, CAM_HTTP_STS_IDLE)) << Tail();
    } else {
      ASSERT_TRUE(WaitStatus(s, CAM_HTTP_STS_RUN)) << Tail();
      ASSERT_TRUE(m_capture.WaitFor(s.Line("SendKeepAliveCommandExec OUT!!!!!. \n")));
    }
    // No line of a failure: none begins with the words of one.
    for (const std::string& sLine : Lines()) {
      for (const char* pcFailure :
           {"DoRequest [Error]", "UidInvalid", "StreamStopCommandExec [ERROR]",
            "ChangeStatus [DEBUG] Video Event=3:2", "ChangeStatus [DEBUG] Video Event=5:3",
            "ChangeStatus [DEBUG] Video Event=6:4"}) {
        EXPECT_NE(sLine.rfind(s.Line(pcFailure), 0), 0u) << sLine;
      }
    }
    return;
  }

  ASSERT_TRUE(m_capture.WaitFor(s.Line(kEventLines[static_cast<int>(Where())]))) << Tail();
  // Bounded: the divided time-outs are a second; the real ones
  // would be 5 s for an answer and 30 s for a connection.
  EXPECT_LT(std::chrono::duration_cast<milliseconds>(Clock::now() - tStart).count(),
            camtest::ScaledMs(4000));

  std::vector<std::string> asExpected;
  if (What() == Kind::kRefused) {
    asExpected = {s.Line(sOpenFaild), s.Line(kOpenFailed[static_cast<int>(Where())])};
    for (int i = 0; i < UidInvalidCalls(); ++i)
      asExpected.push_back(s.Line("UidInvalid [DEBUG] H.264:\n"));
  } else if (What() == Kind::kNoUid) {
    asExpected = {s.Line("CheckCamInfo_RcvData [Error] SearchNumber UID=-1\n")};
  } else if (bStop) {
    asExpected = {s.Line(StopLine(What())),
                  s.Line("KelStreamStopCommandExec [ERROR] usCameraType = 7\n")};
  } else {
    // The request declares the UID invalid itself; the keep-alive command
    // does so once more after the exchange.
    for (const std::string& sLine : DoRequestLines(What())) asExpected.push_back(s.Line(sLine));
    for (int i = 0; i < UidInvalidCalls(); ++i)
      asExpected.push_back(s.Line("UidInvalid [DEBUG] H.264:\n"));
    if (Where() == Exchange::kSetup) {
      asExpected.push_back(s.Line("SetupSessionCommandExec [Error] DoRequest failed\n"));
    }
  }
  asExpected.push_back(s.Line(kEventLines[static_cast<int>(Where())]));
  if (Where() == Exchange::kSetup) {
    asExpected.push_back(
        s.Line("CCamRequester_Cgi_Kobu_Rtp::SetupSessionCommand [ERROR] open faild IP:" + sAddr +
               "  Port:" + std::to_string(Camera().Port()) + "\n"));
    ASSERT_TRUE(m_capture.WaitFor("[CCamR::ConnectError] m_iErrorCount = [1]")) << Tail();
  } else if (bStop) {
    ASSERT_TRUE(WaitStatus(s, CAM_HTTP_STS_IDLE)) << Tail();
  }
  ASSERT_TRUE(camtest::WaitUntil([&] {
    for (const std::string& sLine : Lines()) {
      if (sLine == asExpected.back()) return true;
    }
    return false;
  })) << Tail();
  // The failure's own lines: those before the thread first rebuilds (a
  // camera that still refuses fails the rebuild too).
  std::vector<std::string> asOwn;
  for (const std::string& sLine : Lines()) {
    if (sLine.rfind("RequestThreadMain [DEBUG] RESTART", 0) == 0) break;
    asOwn.push_back(sLine);
  }
  ExpectInOrder(asOwn, asExpected);
  int iUidInvalid = 0;
  bool bCounted = false;
  for (const std::string& sLine : asOwn) {
    iUidInvalid += sLine == s.Line("UidInvalid [DEBUG] H.264:\n") ? 1 : 0;
    bCounted |= sLine.find("[CCamR::ConnectError] m_iErrorCount = [1]") != std::string::npos;
  }
  EXPECT_EQ(iUidInvalid, UidInvalidCalls()) << Tail();
  // Only a failed set-up counts towards the connection-error alarm.
  EXPECT_EQ(bCounted, Where() == Exchange::kSetup) << Tail();
  if (bStop) {
    EXPECT_EQ(s.Status(), CAM_HTTP_STS_IDLE);
    EXPECT_EQ(static_cast<int>(s.pNotify->RtpNotices().size()), 1 + UidInvalidCalls());
    return;
  }

  // The camera behaves again: the session is rebuilt and runs.
  if (What() == Kind::kRefused) {
    ASSERT_TRUE(Camera().AcceptConnections());
  }
  ASSERT_TRUE(WaitStatus(s, CAM_HTTP_STS_RUN)) << Tail();
  // Every UID -1 printed reached the upper layer, and the last word is
  // the new UID.
  const std::vector<camtest::RtpNotice> asNotices = s.pNotify->RtpNotices();
  ASSERT_FALSE(asNotices.empty());
  EXPECT_GT(asNotices.back().iUid, 0);
  int iGone = 0;
  for (const camtest::RtpNotice& n : asNotices) iGone += n.iUid == -1 ? 1 : 0;
  EXPECT_EQ(iGone, m_capture.Count(s.Line("UidInvalid [DEBUG] H.264:\n")));
  EXPECT_TRUE(m_capture.Contains("RequestThreadMain [DEBUG] RESTART TINDEX=" + s.Tindex() + "\n"));

  // Other processes hear of a failed UID request only when the UID itself
  // was missing, and of the success after it.
  int32_t aiPayload[3] = {};
  ASSERT_TRUE(m_pUidReceiver->NextWithin(aiPayload, kLimit));
  EXPECT_EQ(aiPayload[2], What() == Kind::kNoUid && Where() == Exchange::kSetup ? 1 : 0);
  if (What() == Kind::kNoUid) {
    ASSERT_TRUE(m_pUidReceiver->NextWithin(aiPayload, kLimit));
    EXPECT_EQ(aiPayload[2], 0);
    EXPECT_TRUE(m_capture.Contains("GETUID:SndMsg_GetUID [DEBUG] POS[1] CAM[3] ERROR"));
  }
  EXPECT_FALSE(m_pUidReceiver->Next(aiPayload));
}

std::vector<Row> Rows() {
  std::vector<Row> asRows;
  for (Exchange e : {Exchange::kSetup, Exchange::kStart, Exchange::kKeepAlive, Exchange::kStop}) {
    for (Kind k : {Kind::kRefused, Kind::kSilent, Kind::kSlow, Kind::kCloseHeader, Kind::kCloseBody,
                   Kind::kGarbage, Kind::kReset, Kind::k404, Kind::k503}) {
      asRows.push_back({"127.0.0.1", e, k});
    }
    asRows.push_back({"::1", e, Kind::kRefused});
    asRows.push_back({"::1", e, Kind::kSilent});
  }
  asRows.push_back({"127.0.0.1", Exchange::kSetup, Kind::kNoUid});
  asRows.push_back({"::1", Exchange::kSetup, Kind::kNoUid});
  return asRows;
}

INSTANTIATE_TEST_SUITE_P(
    H264Road, FaultTable, ::testing::ValuesIn(Rows()),
    [](const ::testing::TestParamInfo<Row>& rInfo) {
      return std::string(rInfo.param.pcAddress[0] == ':' ? "V6_" : "V4_") +
             kExchangeNames[static_cast<int>(rInfo.param.eExchange)] + "_" +
             camtest::kFaultKinds[static_cast<size_t>(rInfo.param.eKind)].pcName;
    });

}  // namespace
}  // namespace rtptest
