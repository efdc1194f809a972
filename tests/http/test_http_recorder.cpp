// A recorder's push watched by the stream check: a push that ends or stalls
// is asked for again, the stall is a connection error at once and its end a
// reset; the play-back keep-alive with its play-mode check; and the other
// recorder roads (a stop that times out, play-back set-up failures, a start
// whose line cannot be built).
#include <mutex>
#include <string>
#include <vector>

#include "HttpRig.h"
#include "HttpRoads.h"

namespace httptest {
namespace {

class RecorderRoadTest : public ShortTimeoutTest {
 protected:
  static RigOptions Recorder() {
    RigOptions s;
    s.iModel = CAM_REQUESTER_CAMTYPE_KE850;
    return s;
  }
};

TEST_F(RecorderRoadTest, PushClosedMidStreamIsPushedAgainByTheStreamCheck) {
  RigOptions sOptions = Recorder();
  sOptions.usFrate = 11;
  HttpRig rig(sOptions);
  camtest::PrintCapture capture;
  rig.Configure();
  rig.SetDeviceCredentials();
  // The first push breaks off in its first picture.
  rig.device->SetFault("/cgi-bin/push.cgi", Fault("close-body,times=1"));
  rig.req->RequestStart();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN)) << capture.All();
  // The reader sees the end of the push.
  ASSERT_TRUE(rig.notify.WaitForEnd(seconds(10)));
  EXPECT_EQ(rig.notify.EndCode(), HTTP_ERR_CLOSED);
  // The upper layer answers the next stream check: stopped. The check
  // pushes again and reports the stall at once.
  rig.notify.m_iStreamState = 1;
  ASSERT_TRUE(capture.WaitFor("[CCamR::ConnectError] ERROR ON iPos =[1]")) << capture.All();
  // Arriving again from the next check on.
  rig.notify.m_iStreamState = 0;
  EXPECT_TRUE(capture.Contains("CheckStreamStart [DEBUG] POS=1 PUSH CGI!\n"));
  EXPECT_TRUE(capture.Contains("CheckStreamStart HTTP RUN ->STOP  POS=1 \n"));
  ASSERT_TRUE(rig.notify.WaitForHandOvers(2, seconds(15))) << capture.All();
  ASSERT_TRUE(rig.notify.WaitForPicturesOfCurrentHandle(10, seconds(10)));
  // The old handle was taken back before the new one came.
  const auto asEvents = rig.notify.HandleEvents();
  ASSERT_GE(asEvents.size(), 3u);
  EXPECT_EQ(asEvents[1].psHandle, nullptr);
  EXPECT_TRUE(asEvents[1].bOpenWhenWithdrawn);
  EXPECT_TRUE(asEvents[2].bNothingHeld);
  // Arriving again: reported once as recovered.
  ASSERT_TRUE(capture.WaitFor("[CCamR::ConnectErrorReset] ERROR OFF iPos =[1]")) << capture.All();
  EXPECT_TRUE(capture.Contains("CheckStreamStart HTTP STOP -> RUN  POS=1 \n"));
  EXPECT_EQ(capture.CountContaining("HTTP RUN ->STOP"), 1);
  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
  EXPECT_TRUE(FindRequest(*rig.device, "/cgi-bin/logout.cgi", "").has_value());
}

TEST_F(RecorderRoadTest, StalledPushIsAConnectionErrorOnceAndPushedOnEveryCheck) {
  HttpRig rig(Recorder());
  camtest::PrintCapture capture;
  rig.Configure();
  rig.SetDeviceCredentials();
  rig.device->SetFault("/cgi-bin/push.cgi", Fault("push-stall=2"));
  rig.req->RequestStart();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN)) << capture.All();
  ASSERT_TRUE(rig.notify.WaitForPictures(2, seconds(10)));
  rig.notify.m_iStreamState = 1;
  ASSERT_TRUE(rig.notify.WaitForHandOvers(3, seconds(20))) << capture.All();
  ASSERT_TRUE(capture.WaitFor("[CCamR::ConnectError] ERROR ON")) << capture.All();
  EXPECT_EQ(capture.CountContaining("HTTP RUN ->STOP  POS=1"), 1) << capture.All();
  EXPECT_EQ(capture.CountContaining("[CCamR::ConnectError] ERROR ON"), 1);
  // Recovered: the stall is reset once and nothing more is pushed.
  rig.device->ClearFaults();
  rig.notify.m_iStreamState = 0;
  ASSERT_TRUE(capture.WaitFor("ERROR OFF")) << capture.All();
  EXPECT_EQ(capture.CountContaining("CheckStreamStart HTTP STOP -> RUN  POS=1 \n"), 1);
  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
  EXPECT_EQ(rig.notify.HandOvers(), rig.notify.Withdrawals());
}

TEST_F(RecorderRoadTest, StreamNotArrivingWithoutStoppingIsPushedAgainButNotCounted) {
  HttpRig rig(Recorder());
  camtest::PrintCapture capture;
  rig.Configure();
  rig.SetDeviceCredentials();
  rig.req->RequestStart();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN)) << capture.All();
  rig.notify.m_iStreamState = 2;
  ASSERT_TRUE(rig.notify.WaitForHandOvers(3, seconds(20))) << capture.All();
  rig.notify.m_iStreamState = 0;
  EXPECT_EQ(capture.CountContaining("HTTP RUN ->STOP"), 0);
  EXPECT_EQ(capture.CountContaining("[CCamR::ConnectError] ERROR ON"), 0);
  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
}

TEST_F(RecorderRoadTest, StatusWithoutFileNameFailsTheKeepAliveAndForgetsTheUid) {
  HttpRig rig(Recorder());
  camtest::PrintCapture capture;
  rig.Configure();
  rig.SetDeviceCredentials();
  rig.device->SetFault("/cgi-bin/status.cgi", Fault("omit=FILENAME,times=1"));
  rig.req->RequestStart();
  ASSERT_TRUE(capture.WaitFor(" SendKeepAliveCommandExec [Error] KeepAlive Failed.\n"))
      << capture.All();
  EXPECT_TRUE(capture.Contains(" CheckKeepAlive_RcvData [Error] FILENAME NOT EXIST.\n"));
  ASSERT_TRUE(rig.notify.WaitForSessionInfos(2, seconds(10)));
  EXPECT_EQ(rig.notify.SessionInfos()[1].iUid, -1);
  ASSERT_TRUE(capture.WaitFor("ChangeStatus [DEBUG] Video Event=6:4 -> 1. \n")) << capture.All();
  // A recorder's failed video is rebuilt at once, with a new login.
  ASSERT_TRUE(rig.notify.WaitForHandOvers(2, seconds(10))) << capture.All();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN));
  EXPECT_GE(CountRequests(*rig.device, "/cgi-bin/ulogin.cgi"), 2);
  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
}

TEST_F(RecorderRoadTest, StopThatTimesOutStillLogsOutAndClosesBoth) {
  HttpRig rig(Recorder());
  camtest::PrintCapture capture;
  rig.Configure();
  rig.SetDeviceCredentials();
  rig.req->RequestStart();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN)) << capture.All();
  ASSERT_TRUE(rig.notify.WaitForPictures(1, seconds(10)));
  rig.device->SetFault("/cgi-bin/push.cgi", Fault("noanswer"));
  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
  EXPECT_TRUE(capture.Contains("StreamStopCommandExec [ERROR] timeout ret=0x8007000\n"));
  EXPECT_TRUE(FindRequest(*rig.device, "/cgi-bin/logout.cgi", "").has_value());
  EXPECT_EQ(rig.notify.Withdrawals(), 1);
  EXPECT_TRUE(rig.notify.HandleEvents().back().bOpenWhenWithdrawn);
  rig.device->ClearFaults();
  EXPECT_TRUE(rig.device->WaitForOpenConnections(0, seconds(5)));
}

TEST_F(RecorderRoadTest, PlayBackSetUpFailureIsNoConnectionError) {
  RigOptions sOptions = Recorder();
  sOptions.iCmdType = CAM_REQUESTER_CMD_JPEG_PLAY;
  HttpRig rig(sOptions);
  camtest::PrintCapture capture;
  rig.Configure();
  rig.SetDeviceCredentials();
  rig.device->SetFault("/cgi-bin/start.cgi", Fault("status=503,times=1"));
  rig.req->RequestPBStart();
  ASSERT_TRUE(capture.WaitFor(
      "CCamRequester_Cgi_Kobu_Http::SetupSessionCommand [ERROR] open faild IP:127.0.0.1  Port:" +
      std::to_string(rig.device->Port()) + "\n"))
      << capture.All();
  EXPECT_TRUE(capture.Contains("ChangeStatus [DEBUG] Video Event=3:2 -> 1. \n"));
  EXPECT_EQ(capture.CountContaining("[CCamR::ConnectError]"), 0);
  EXPECT_EQ(rig.notify.HandOvers(), 0);
  // The failed play-back is rebuilt from ERROR like any stream; a stop ends it.
  ASSERT_TRUE(rig.StopUntilIdle()) << capture.All();
}

TEST_F(RecorderRoadTest, LiveSetUpFailureCountsTowardsTheAlarm) {
  HttpRig rig(Recorder());
  camtest::PrintCapture capture;
  rig.Configure();
  rig.SetDeviceCredentials();
  rig.device->SetFault("/cgi-bin/start.cgi", Fault("status=503,times=1"));
  rig.req->RequestStart();
  ASSERT_TRUE(capture.WaitFor("[CCamR::ConnectError] m_iErrorCount = [1]")) << capture.All();
  EXPECT_TRUE(capture.Contains("ChangeStatus [DEBUG] Video Event=3:2 -> 1. \n"));
  // A recorder's failed video restarts at once, and succeeds.
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN)) << capture.All();
  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
}

TEST_F(RecorderRoadTest, RecorderAudioIsReadFromTheHandle) {
  RigOptions sOptions = Recorder();
  sOptions.iCmdType = CAM_REQUESTER_CMD_G726_HTTP;
  HttpRig rig(sOptions);
  camtest::PrintCapture capture;
  rig.Configure();
  rig.SetDeviceCredentials();
  CAM_UID_PARAM sUid = {};
  // The UID of the recorder's login, as the video requester of the upper layer got it.
  const int iUid = RecorderLogin(*rig.device);
  ASSERT_GT(iUid, 0);
  sUid.iUid = iUid;
  SetParam(*rig.req, CAM_PARAM_UID, sUid);
  rig.req->RequestStart();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN)) << capture.All();
  ASSERT_TRUE(rig.notify.WaitForAudioBytes(1000, seconds(10))) << capture.All();
  const auto sPush = FindRequest(*rig.device, "/cgi-bin/push.cgi", "COMP=AUDIO");
  ASSERT_TRUE(sPush.has_value());
  EXPECT_EQ(sPush->query, "CMD=START&CAM=0&UID=" + std::to_string(iUid) + "&COMP=AUDIO");
  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
  EXPECT_EQ(rig.notify.Withdrawals(), 1);
}

TEST_F(RecorderRoadTest, StartWhoseLineCannotBeBuiltSendsNothing) {
  // Camera type 21 has no audio over HTTP: the start is skipped, not failed.
  RigOptions sOptions;
  sOptions.iModel = CAM_REQUESTER_CAMTYPE_QV262;
  sOptions.iCmdType = CAM_REQUESTER_CMD_G726_HTTP;
  sOptions.bKeepAlive = false;
  HttpRig rig(sOptions);
  camtest::PrintCapture capture;
  rig.Configure();
  CAM_UID_PARAM sUid = {};
  sUid.iUid = 12;
  SetParam(*rig.req, CAM_PARAM_UID, sUid);
  rig.req->RequestStart();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN)) << capture.All();
  EXPECT_TRUE(capture.Contains("CmdSet_AudioDistribute [ERROR] Unknown Camera Type enum#[21]\n"));
  EXPECT_EQ(rig.device->RequestCount(), 0u);
  EXPECT_EQ(rig.notify.HandOvers(), 0);
  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
}

// ---- the play-back keep-alive ---------------------------------------------------

// The requester as the upper layer may extend it: the base's PlayModeStop is
// watched, with the status at the time of the call.
class PlayModeStopWatch : public CCamRequester_Cgi_Kobu_Http {
 public:
  // The request thread may still be in a virtual call (the end of a
  // play-back stop) when the upper layer deletes the requester: it is ended
  // here, before this class's part is gone.
  ~PlayModeStopWatch() override {
    m_iDestruct = 1;
    StopChildThread();
  }
  struct Call {
    int iPos;
    std::string sAddress;
    int iPlayMode;
    int iStatus;
  };
  int PlayModeStop(int iPosition, char* pcAddress, int iMode) override {
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_calls.push_back({iPosition, pcAddress != nullptr ? pcAddress : "", iMode,
                         static_cast<int>(iConnectStatus)});
    }
    return CCamRequester_Cgi_Kobu_Http::PlayModeStop(iPosition, pcAddress, iMode);
  }
  std::vector<Call> Calls() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_calls;
  }

 private:
  mutable std::mutex m_mutex;
  std::vector<Call> m_calls;
};

// The index of the first line equal to sLine at or after ulFrom, or -1.
int IndexOf(const std::vector<std::string>& asLines, const std::string& sLine, size_t ulFrom = 0) {
  for (size_t i = ulFrom; i < asLines.size(); ++i) {
    if (asLines[i] == sLine) return static_cast<int>(i);
  }
  return -1;
}

// A JPEG play-back of a recorder (KE850) on either loopback address. The
// request thread never sends the play-back keep-alive: the upper layer
// calls SendPBKeepAliveCommand itself.
class PlayBackKeepAliveTest : public HttpRequesterTest,
                              public ::testing::WithParamInterface<const char*> {
 protected:
  static RigOptions PlayBack() {
    RigOptions s;
    s.iModel = CAM_REQUESTER_CAMTYPE_KE850;
    s.iCmdType = CAM_REQUESTER_CMD_JPEG_PLAY;
    s.sAddress = GetParam();
    return s;
  }
  // Set up on the play-back start, then RUN once the upper layer reports the
  // stream arriving; the recorder in iRecorderMode, this device expecting
  // iExpectedMode.
  static void StartPlayBack(HttpRig& rig, int iRecorderMode, int iExpectedMode) {
    rig.Configure();
    rig.SetDeviceCredentials();
    httptest::SetParam(*rig.req, CAM_PARAM_PLAYMODE, int32_t{iExpectedMode});
    rig.device->SetPlayMode(iRecorderMode);
    rig.req->RequestPBStart();
    ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_READY));
    httptest::SetParam(*rig.req, CAM_PARAM_STATUSCHANGE, int32_t{1});
    ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN));
  }
  // The play-back stop, until the status is IDLE: a play-back left in ERROR
  // is rebuilt (and fails again) meanwhile. Bounded in count and time.
  static bool StopPlayBack(HttpRig& rig) {
    for (int i = 0; i < 50; ++i) {
      rig.req->RequestPBStop();
      if (rig.WaitForStatus(CAM_HTTP_STS_IDLE, milliseconds(200))) return true;
    }
    return false;
  }
  static PlayModeStopWatch* Watch(HttpRig& rig) {
    auto* pWatch = new PlayModeStopWatch();
    rig.req.reset(pWatch);
    return pWatch;
  }
  // One PlayModeStop with position 1, the camera's address and the expected
  // play mode 0, while the status was still RUN (before the error event).
  static void ExpectOnePlayModeStopInRun(const PlayModeStopWatch& rWatch,
                                         const std::string& sAddress) {
    const std::vector<PlayModeStopWatch::Call> asCalls = rWatch.Calls();
    ASSERT_EQ(asCalls.size(), 1u);
    EXPECT_EQ(asCalls[0].iPos, 1);
    EXPECT_EQ(asCalls[0].sAddress, sAddress);
    EXPECT_EQ(asCalls[0].iPlayMode, 0);
    EXPECT_EQ(asCalls[0].iStatus, CAM_HTTP_STS_RUN);
  }
};

TEST_P(PlayBackKeepAliveTest, GoesOutOnEveryCallAndPassesAMatchingPlayMode) {
  HttpRig rig(PlayBack());
  PlayModeStopWatch* pWatch = Watch(rig);
  camtest::PrintCapture capture;
  StartPlayBack(rig, 3, 0);
  const std::string sUid = std::to_string(rig.req->iUid.load());
  const std::string sQuery = "UID=" + sUid + "&HTML=as_status.html";
  const int iBefore = CountRequests(*rig.device, "/cgi-bin/status.cgi");

  // No calls are counted here: every call is one status request.
  EXPECT_EQ(rig.req->SendPBKeepAliveCommand(), 0);
  EXPECT_EQ(CountRequests(*rig.device, "/cgi-bin/status.cgi", sQuery), iBefore + 1);
  EXPECT_EQ(rig.req->SendPBKeepAliveCommand(), 0);
  EXPECT_EQ(CountRequests(*rig.device, "/cgi-bin/status.cgi", sQuery), iBefore + 2);
  EXPECT_EQ(rig.device->Requests().back().query, sQuery);
  EXPECT_EQ(capture.Count(Prefixed(
                *rig.req,
                "SendPBKeepAliveCommandExec [DEBUG] cgi=/cgi-bin/status.cgi?" + sQuery + ". \n")),
            2)
      << capture.All();
  // A recorder mode other than 0 and 5 matches whatever this device expects.
  EXPECT_EQ(
      capture.Count(Prefixed(
          *rig.req,
          "CheckPlayMode_RcvData [DEBUG] PLAY_MODE Match [m_KELPlayMode:3][m_VOGPlayMode:0]\n")),
      2);
  // Mode 5 matches an expected 5.
  httptest::SetParam(*rig.req, CAM_PARAM_PLAYMODE, int32_t{5});
  rig.device->SetPlayMode(5);
  EXPECT_EQ(rig.req->SendPBKeepAliveCommand(), 0);
  EXPECT_EQ(CountRequests(*rig.device, "/cgi-bin/status.cgi", sQuery), iBefore + 3);
  EXPECT_EQ(
      capture.Count(Prefixed(
          *rig.req,
          "CheckPlayMode_RcvData [DEBUG] PLAY_MODE Match [m_KELPlayMode:5][m_VOGPlayMode:5]\n")),
      1);

  EXPECT_EQ(rig.req->iConnectStatus, CAM_HTTP_STS_RUN);
  EXPECT_TRUE(pWatch->Calls().empty());
  EXPECT_EQ(capture.CountContaining("[Error] KeepAlive Failed."), 0);
  EXPECT_EQ(capture.CountContaining("[Error] Play Mode Status Unmatch."), 0);
  EXPECT_EQ(capture.CountContaining("Event=6:"), 0);
  ASSERT_TRUE(StopPlayBack(rig)) << capture.All();
}

TEST_P(PlayBackKeepAliveTest, PlayModeUnmatchStopsThePlayModeThenRaisesTheErrorEvent) {
  HttpRig rig(PlayBack());
  PlayModeStopWatch* pWatch = Watch(rig);
  camtest::PrintCapture capture;
  StartPlayBack(rig, 5, 0);  // the recorder plays mode 5, this device expects 0
  const int iUid = rig.req->iUid;
  ASSERT_GT(iUid, 0);

  // The guard's result is 0 whatever the exchange gave.
  EXPECT_EQ(rig.req->SendPBKeepAliveCommand(), 0);

  const std::vector<std::string> asLines = capture.Lines();
  const int iMismatch =
      IndexOf(asLines, Prefixed(*rig.req,
                                "CheckPlayMode_RcvData [Error] PLAY_MODE Unmatch [m_KELPlayMode:5]"
                                "[m_VOGPlayMode:0]\n"));
  ASSERT_GE(iMismatch, 0) << capture.All();
  const int iFailed =
      IndexOf(asLines,
              Prefixed(*rig.req, " SendPBKeepAliveCommandExec [Error] Play Mode Status Unmatch.\n"),
              static_cast<size_t>(iMismatch));
  ASSERT_GT(iFailed, iMismatch) << capture.All();
  EXPECT_GT(IndexOf(asLines, Prefixed(*rig.req, "ChangeStatus [DEBUG] Video Event=6:4 -> 1. \n"),
                    static_cast<size_t>(iFailed)),
            iFailed)
      << capture.All();
  // The keep-alive itself was alive: only the play mode failed.
  EXPECT_EQ(capture.CountContaining("[Error] KeepAlive Failed."), 0);
  // PlayModeStop with position, address and the expected mode, while still
  // in RUN: before the error event.
  ExpectOnePlayModeStopInRun(*pWatch, GetParam());
  // A failed reply check forgets no UID.
  EXPECT_EQ(capture.CountContaining("UidInvalid"), 0);
  EXPECT_EQ(rig.req->iUid.load(), iUid);
  ASSERT_TRUE(StopPlayBack(rig)) << capture.All();
}

TEST_P(PlayBackKeepAliveTest, KeepAliveFailedStopsThePlayModeThenRaisesTheErrorEvent) {
  HttpRig rig(PlayBack());
  PlayModeStopWatch* pWatch = Watch(rig);
  camtest::PrintCapture capture;
  StartPlayBack(rig, 3, 0);
  // The recorder's status leaves out the file name: the stream is not alive.
  rig.device->SetFault("/cgi-bin/status.cgi", Fault("omit=FILENAME,times=1"));

  EXPECT_EQ(rig.req->SendPBKeepAliveCommand(), 0);

  const std::vector<std::string> asLines = capture.Lines();
  const int iMissing =
      IndexOf(asLines, Prefixed(*rig.req, " CheckKeepAlive_RcvData [Error] FILENAME NOT EXIST.\n"));
  ASSERT_GE(iMissing, 0) << capture.All();
  const int iFailed = IndexOf(
      asLines, Prefixed(*rig.req, " SendPBKeepAliveCommandExec [Error] KeepAlive Failed.\n"),
      static_cast<size_t>(iMissing));
  ASSERT_GT(iFailed, iMissing) << capture.All();
  EXPECT_GT(IndexOf(asLines, Prefixed(*rig.req, "ChangeStatus [DEBUG] Video Event=6:4 -> 1. \n"),
                    static_cast<size_t>(iFailed)),
            iFailed)
      << capture.All();
  // The play mode is not looked at once the keep-alive failed.
  EXPECT_EQ(capture.CountContaining("CheckPlayMode_RcvData"), 0);
  EXPECT_EQ(capture.CountContaining("[Error] Play Mode Status Unmatch."), 0);
  ExpectOnePlayModeStopInRun(*pWatch, GetParam());
  EXPECT_EQ(capture.CountContaining("UidInvalid"), 0);
  ASSERT_TRUE(StopPlayBack(rig)) << capture.All();
}

INSTANTIATE_TEST_SUITE_P(Kel34, PlayBackKeepAliveTest, ::testing::Values("127.0.0.1", "::1"),
                         [](const ::testing::TestParamInfo<const char*>& rInfo) {
                           return std::string(rInfo.param[0] == ':' ? "V6" : "V4");
                         });

}  // namespace
}  // namespace httptest
