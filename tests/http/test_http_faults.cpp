// Every fault of the simulated camera on each exchange of the JPEG road:
// the UID request, the push, the keep-alive and the stop, on 127.0.0.1 and
// on ::1. Each row gives the status the requester must reach, a line it must
// print, and whether the upper layer gets a push; the line comes in bounded
// time; every row ends with a STOP, the requester destroyed and nothing left
// open (the fixture counts descriptors and message buffers).
#include <atomic>
#include <chrono>
#include <string>
#include <vector>

#include "CamTestTiming.h"
#include "HttpRig.h"
#include "HttpRoads.h"

namespace httptest {
namespace {

using Clock = std::chrono::steady_clock;

enum class Exchange { kUid, kPush, kKeepAlive, kStop };

struct FaultRow {
  const char* pcName;
  Exchange eExchange;
  const char* pcFault;     // camsim's fault text; null: the camera refuses connections
  bool bRuns;              // the push is handed over and the status is RUN
  const char* pcLine;      // a line the requester prints (without its prefix)
  int iPictures = 1;       // whole pictures the upper layer reads from the first push
  bool bEnds = false;      // and then the push ends under the reader
  bool bRecorder = false;  // a recorder (KE850) instead of camera type 7
};

// The texts follow from the library's result codes: a refused status is
// failed2, a time-out failed1 (Network Timeout for the push), an answer cut
// in the head or body or not HTTP at all is failed3. A refused connection is
// the Exec's own open-failure line; the UID request words it as the set-up.
const FaultRow kRows[] = {
    {"UidRefused", Exchange::kUid, nullptr, false,
     "SetupSessionCommandExec [Error] Http::SetupSessionCommand failed\n"},
    {"UidStatus404", Exchange::kUid, "status=404", false,
     "DoRequest [Error] http_get_response failed2:ret =8000404\n"},
    {"UidStatus503", Exchange::kUid, "status=503", false,
     "DoRequest [Error] http_get_response failed2:ret =8000503\n"},
    {"UidNoAnswer", Exchange::kUid, "noanswer", false,
     "DoRequest [Error] http_get_response failed1:ret =8007000\n"},
    {"UidCloseHeader", Exchange::kUid, "close-header", false,
     "DoRequest [Error] http_get_response failed3:ret =8006000\n"},
    {"UidCloseBody", Exchange::kUid, "close-body", false,
     "DoRequest [Error] http_get_response failed3:ret =8006000\n"},
    {"UidGarbage", Exchange::kUid, "garbage", false,
     "DoRequest [Error] http_get_response failed3:ret =8005000\n"},
    {"UidWithoutUid", Exchange::kUid, "omit=UID=", false,
     "CheckCamInfo_RcvData [Error] SearchNumber UID=-1\n"},
    {"UidLongBody", Exchange::kUid, "long-body=8000", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n"},
    {"UidSlow", Exchange::kUid, "delay=100", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n"},
    {"UidReset", Exchange::kUid, "reset", false,
     "DoRequest [Error] http_get_response failed3:ret =8003000\n"},
    {"UidDrip", Exchange::kUid, "drip=400", false,
     "DoRequest [Error] http_get_response failed1:ret =8007000\n"},
    {"UidNoLength", Exchange::kUid, "no-length", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n"},
    // The keys come after the 2048 bytes that a reply may fill.
    {"UidLateKeys", Exchange::kUid, "late-keys", false,
     "CheckCamInfo_RcvData [Error] SearchNumber UID=-1\n"},
    {"PushRefused", Exchange::kPush, nullptr, false,
     "StreamStartCommandExec [Error] OpenSessionCommandExec failed\n"},
    {"PushStatus404", Exchange::kPush, "status=404", false,
     "StreamStartCommandExec [Error] http_get_response failed2:ret =8000404\n"},
    {"PushStatus500", Exchange::kPush, "status=500", false,
     "StreamStartCommandExec [Error] http_get_response failed2:ret =8000500\n"},
    {"PushNoAnswer", Exchange::kPush, "noanswer", false,
     " StreamStartCommandExec [Error] Network Timeout.\n"},
    {"PushCloseHeader", Exchange::kPush, "close-header", false,
     "StreamStartCommandExec [Error] http_get_response failed3:ret =8006000\n"},
    {"PushGarbage", Exchange::kPush, "garbage", false,
     "StreamStartCommandExec [Error] http_get_response failed3:ret =8005000\n"},
    // The head of these came whole: the push is handed over, and what
    // follows is the upper layer's to read.
    {"PushStatus302", Exchange::kPush, "status=302", true,
     "StreamStartCommandExec[Error]ret =8000302\n", 0},
    {"PushCloseBody", Exchange::kPush, "close-body", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n", 0, true},
    {"PushStall", Exchange::kPush, "push-stall=2", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n", 2},
    {"PushEnd", Exchange::kPush, "push-end=3", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n", 3, true},
    {"PushReset", Exchange::kPush, "reset", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n", 0, true},
    {"PushBoundaryQuoted", Exchange::kPush, "boundary-quoted", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n", 5},
    {"PushSlow", Exchange::kPush, "delay=100", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n", 5},
    {"KeepAliveRefused", Exchange::kKeepAlive, nullptr, false,
     "SendKeepAliveCommandExec [Error] OpenSessionCommandExec failed\n"},
    // A recorder that cannot be reached for its keep-alive is no failure.
    {"RecorderKeepAliveRefused", Exchange::kKeepAlive, nullptr, true,
     "SendKeepAliveCommandExec [Error] OpenSessionCommandExec failed\n", 1, false, true},
    {"KeepAliveSlow", Exchange::kKeepAlive, "delay=100", true,
     "SendKeepAliveCommandExec OUT!!!!!. \n"},
    {"KeepAliveStatus404", Exchange::kKeepAlive, "status=404", false,
     "DoRequest [Error] http_get_response failed2:ret =8000404\n"},
    {"KeepAliveStatus503", Exchange::kKeepAlive, "status=503", false,
     "DoRequest [Error] http_get_response failed2:ret =8000503\n"},
    {"KeepAliveNoAnswer", Exchange::kKeepAlive, "noanswer", false,
     "DoRequest [Error] http_get_response failed1:ret =8007000\n"},
    {"KeepAliveGarbage", Exchange::kKeepAlive, "garbage", false,
     "DoRequest [Error] http_get_response failed3:ret =8005000\n"},
    {"KeepAliveCloseHeader", Exchange::kKeepAlive, "close-header", false,
     "DoRequest [Error] http_get_response failed3:ret =8006000\n"},
    {"KeepAliveCloseBody", Exchange::kKeepAlive, "close-body", false,
     "DoRequest [Error] http_get_response failed3:ret =8006000\n"},
    {"KeepAliveReset", Exchange::kKeepAlive, "reset", false,
     "DoRequest [Error] http_get_response failed3:ret =8003000\n"},
    {"KeepAliveDrip", Exchange::kKeepAlive, "drip=400", false,
     "DoRequest [Error] http_get_response failed1:ret =8007000\n"},
    // A stop goes back to IDLE whatever the camera does.
    {"StopRefused", Exchange::kStop, nullptr, true,
     "StreamStopCommandExec [Error] OpenSessionCommandExec failed\n"},
    {"StopStatus404", Exchange::kStop, "status=404", true,
     "StreamStopCommandExec [ERROR] client or server error ret=0x8000404\n"},
    {"StopStatus500", Exchange::kStop, "status=500", true,
     "StreamStopCommandExec [ERROR] client or server error ret=0x8000500\n"},
    {"StopNoAnswer", Exchange::kStop, "noanswer", true,
     "StreamStopCommandExec [ERROR] timeout ret=0x8007000\n"},
    {"StopSlow", Exchange::kStop, "delay=100", true,
     "ChangeStatus [DEBUG] Video Event=8:5 -> 0. \n"},
    {"StopGarbage", Exchange::kStop, "garbage", true,
     "StreamStopCommandExec [ERROR] other error ret=0x8005000\n"},
    {"StopCloseHeader", Exchange::kStop, "close-header", true,
     "StreamStopCommandExec [ERROR] other error ret=0x8006000\n"},
    {"StopCloseBody", Exchange::kStop, "close-body", true,
     "StreamStopCommandExec [ERROR] other error ret=0x8006000\n"},
    {"StopReset", Exchange::kStop, "reset", true,
     "StreamStopCommandExec [ERROR] other error ret=0x8003000\n"},
};

struct FaultCase {
  const char* pcAddress;
  FaultRow sRow;
};

std::vector<FaultCase> Cases() {
  std::vector<FaultCase> asOut;
  for (const char* pcAddress : {"127.0.0.1", "::1"}) {
    for (const FaultRow& r : kRows) asOut.push_back({pcAddress, r});
  }
  return asOut;
}

const char* PathOf(Exchange eExchange) {
  switch (eExchange) {
    case Exchange::kUid:
      return "/cgi-bin/getuid";
    case Exchange::kKeepAlive:
      return "/cgi-bin/keep_alive";
    case Exchange::kPush:
    case Exchange::kStop:
      return "/cgi-bin/jpeg";
  }
  return "";
}

// The status change that a failure of the exchange raises (video table).
const char* EventLineOf(Exchange eExchange) {
  switch (eExchange) {
    case Exchange::kUid:
      return "ChangeStatus [DEBUG] Video Event=3:2 -> 1. \n";
    case Exchange::kPush:
      return "ChangeStatus [DEBUG] Video Event=5:3 -> 1. \n";
    case Exchange::kKeepAlive:
      return "ChangeStatus [DEBUG] Video Event=6:4 -> 1. \n";
    case Exchange::kStop:
      return "ChangeStatus [DEBUG] Video Event=8:5 -> 0. \n";
  }
  return "";
}

// Bounded: the divided time-outs are half a second; the real ones would be
// 5 s for an answer and 30 s for a connection.
constexpr long kBoundMs = 4000;

long MsSince(Clock::time_point t) {
  return static_cast<long>(
      std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - t).count());
}

class FaultRoadTest : public ShortTimeoutTest, public ::testing::WithParamInterface<FaultCase> {
 protected:
  const FaultRow& Row() const { return GetParam().sRow; }
  bool Refused() const { return Row().pcFault == nullptr; }

  // Closes the listener as soon as the request of the exchange before the
  // faulted one has come (its answer still goes out on the open
  // connection), so that exactly the faulted exchange finds the camera gone.
  void RefuseAfter(HttpRig& rig, const std::string& sPath, const std::string& sQueryPart) {
    camsim::Device* pDevice = rig.device.get();
    m_bRefused = false;
    pDevice->SetObserver([this, pDevice, sPath, sQueryPart](const camsim::RequestRecord& r) {
      if (r.path != sPath || r.query.find(sQueryPart) == std::string::npos) return;
      if (!m_bRefused.exchange(true)) pDevice->RefuseConnections();
    });
  }
  // Arms the fault before the request that meets it.
  void Arm(HttpRig& rig) {
    if (!Refused()) {
      rig.device->SetFault(PathOf(Row().eExchange), Fault(Row().pcFault));
      return;
    }
    switch (Row().eExchange) {
      case Exchange::kUid:
      case Exchange::kStop:
        ASSERT_TRUE(rig.device->RefuseConnections());
        break;
      case Exchange::kPush:
        RefuseAfter(rig, "/cgi-bin/getuid", "");
        break;
      case Exchange::kKeepAlive:
        if (Row().bRecorder) {
          RefuseAfter(rig, "/cgi-bin/push.cgi", "CMD=START");
        } else {
          RefuseAfter(rig, "/cgi-bin/jpeg", "connect=start");
        }
        break;
    }
  }
  // The camera behaves again.
  void Heal(HttpRig& rig) {
    rig.device->SetObserver(nullptr);
    rig.device->ClearFaults();
    if (Refused() && !rig.device->Listening()) {
      std::string sError;
      ASSERT_TRUE(rig.device->AcceptConnections(&sError)) << sError;
    }
  }
  // The line "open faild" of the session that could not be opened.
  std::string OpenFailedLine(const HttpRig& rig) const {
    return "CCamRequester_Cgi_Kobu_Http::OpenSessionCommandExec [ERROR] open faild IP:" +
           std::string(GetParam().pcAddress) + "  Port:" + std::to_string(rig.device->Port()) +
           "\n";
  }
  // Whether the failure makes the requester forget a UID it had and tell
  // the upper layer: a failed keep-alive, and a push or a stop whose session
  // cannot be opened. A refused push answer, like a failed UID request
  // (which has no UID yet), forgets nothing.
  bool ForgetsUid() const {
    switch (Row().eExchange) {
      case Exchange::kUid:
        return false;
      case Exchange::kPush:
      case Exchange::kStop:
        return Refused();
      case Exchange::kKeepAlive:
        return !Row().bRuns;
    }
    return false;
  }
  int UidsForgotten(const HttpRig& rig) const {
    int n = 0;
    for (const auto& s : rig.notify.SessionInfos()) n += s.iUid == -1 ? 1 : 0;
    return n;
  }

  std::atomic<bool> m_bRefused{false};
};

TEST_P(FaultRoadTest, EndsInTheSpecifiedStatusWithItsLine) {
  const FaultRow& r = Row();
  RigOptions sOptions;
  sOptions.sAddress = GetParam().pcAddress;
  if (r.bRecorder) sOptions.iModel = CAM_REQUESTER_CAMTYPE_KE850;
  HttpRig rig(sOptions);
  ASSERT_NE(rig.device, nullptr);
  camtest::PrintCapture capture;
  rig.Configure();
  if (r.bRecorder) rig.SetDeviceCredentials();

  if (r.eExchange == Exchange::kStop) {
    rig.req->RequestStart();
    ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN)) << capture.All();
    ASSERT_TRUE(rig.notify.WaitForPictures(1, seconds(10)));
    // The START ends with a keep-alive: the fault is armed once it is back,
    // so that the stop meets it, not that keep-alive (a slow run, valgrind).
    ASSERT_TRUE(capture.WaitFor("SendKeepAliveCommandExec OUT!!!!!. \n")) << capture.All();
    Arm(rig);
    const Clock::time_point tStop = Clock::now();
    rig.req->RequestStop();
    // A stop never fails once it was asked for: the status returns to IDLE.
    ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
    EXPECT_LT(MsSince(tStop), camtest::ScaledMs(kBoundMs));
    EXPECT_TRUE(capture.Contains(r.pcLine)) << capture.All();
    EXPECT_TRUE(capture.Contains(EventLineOf(r.eExchange))) << capture.All();
    if (Refused()) {
      EXPECT_TRUE(capture.Contains(OpenFailedLine(rig))) << capture.All();
      // The stop ends at the failed open: the push stays with the upper
      // layer, which has been told that the UID is gone.
      EXPECT_EQ(rig.notify.Withdrawals(), 0);
      EXPECT_TRUE(rig.notify.Reading());
      EXPECT_EQ(UidsForgotten(rig), 1);
      EXPECT_EQ(rig.req->iUid.load(), -1);
    } else {
      EXPECT_EQ(rig.notify.Withdrawals(), 1);
      EXPECT_TRUE(rig.notify.HandleEvents().back().bOpenWhenWithdrawn);
      EXPECT_EQ(UidsForgotten(rig), 0);
    }
    if (r.pcFault != nullptr && std::string(r.pcFault).rfind("delay=", 0) == 0) {
      EXPECT_EQ(capture.CountContaining(Prefixed(*rig.req, "StreamStopCommandExec [ERROR]")), 0)
          << capture.All();
    }
    Heal(rig);
    return;
  }

  Arm(rig);
  const Clock::time_point tStart = Clock::now();
  rig.req->RequestStart();
  ASSERT_TRUE(capture.WaitFor(r.pcLine)) << capture.All();
  EXPECT_LT(MsSince(tStart), camtest::ScaledMs(kBoundMs));
  if (Refused()) {
    EXPECT_TRUE(capture.Contains(OpenFailedLine(rig))) << capture.All();
  }
  if (r.bRuns) {
    ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN)) << capture.All();
    EXPECT_TRUE(rig.notify.WaitForHandOvers(1, seconds(10)));
    EXPECT_TRUE(rig.notify.WaitForPictures(static_cast<uint64_t>(r.iPictures), seconds(10)));
    if (r.bEnds) {
      // The camera ended the push: the reader sees the end, not a hang.
      EXPECT_TRUE(rig.notify.WaitForEnd(seconds(10)));
      EXPECT_EQ(rig.notify.Pictures(), static_cast<uint64_t>(r.iPictures));
    }
    if (r.eExchange == Exchange::kKeepAlive) {
      // The idle rounds go on past the keep-alive's command: by the first
      // stream check it has long returned, and raised nothing.
      ASSERT_TRUE(capture.WaitFor("CheckStreamStart [DEBUG] CheckStreamStart Start\n"))
          << capture.All();
      EXPECT_EQ(rig.req->iConnectStatus, CAM_HTTP_STS_RUN);
      EXPECT_EQ(capture.CountContaining("Event=6:4"), 0) << capture.All();
      EXPECT_EQ(capture.CountContaining("UidInvalid"), 0) << capture.All();
    }
  } else {
    ASSERT_TRUE(capture.WaitFor(EventLineOf(r.eExchange))) << capture.All();
    EXPECT_LT(MsSince(tStart), camtest::ScaledMs(kBoundMs));
    if (r.eExchange == Exchange::kUid) {
      // A failed live set-up counts towards the connection-error alarm.
      EXPECT_TRUE(capture.WaitFor(
          "CCamRequester_Cgi_Kobu_Http::SetupSessionCommand [ERROR] open faild IP:" +
          std::string(GetParam().pcAddress) + "  Port:" + std::to_string(rig.device->Port()) +
          "\n"))
          << capture.All();
      EXPECT_TRUE(capture.WaitFor("[CCamR::ConnectError] m_iErrorCount = [1]")) << capture.All();
    }
    if (ForgetsUid()) {
      // The upper layer heard that the UID is gone.
      ASSERT_TRUE(rig.notify.WaitForSessionInfos(2, seconds(10)));
      EXPECT_EQ(rig.notify.SessionInfos()[1].iUid, -1);
    } else {
      EXPECT_EQ(UidsForgotten(rig), 0);
    }
    if (r.eExchange != Exchange::kKeepAlive) {
      EXPECT_EQ(rig.notify.HandOvers(), 0);
    }
    // Once the camera behaves again the request thread rebuilds the stream.
    Heal(rig);
    ASSERT_TRUE(rig.notify.WaitForPicturesOfCurrentHandle(1, seconds(15))) << capture.All();
    ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN));
  }
  Heal(rig);
  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
  EXPECT_EQ(rig.notify.HandOvers(), rig.notify.Withdrawals());
  for (const auto& e : rig.notify.HandleEvents()) {
    if (e.psHandle == nullptr) {
      EXPECT_TRUE(e.bOpenWhenWithdrawn);
    } else {
      EXPECT_TRUE(e.bNothingHeld);
    }
  }
  if (r.bRecorder) {
    EXPECT_TRUE(FindRequest(*rig.device, "/cgi-bin/logout.cgi", "").has_value());
  }
}

INSTANTIATE_TEST_SUITE_P(EveryFault, FaultRoadTest, ::testing::ValuesIn(Cases()),
                         [](const ::testing::TestParamInfo<FaultCase>& rInfo) {
                           return std::string(rInfo.param.pcAddress[0] == ':' ? "V6_" : "V4_") +
                                  rInfo.param.sRow.pcName;
                         });

}  // namespace
}  // namespace httptest
