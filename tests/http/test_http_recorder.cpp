// A recorder's push watched by the stream check: a push that ends or stalls
// is asked for again, the stall is a connection error at once and its end a
// reset; and the other recorder roads (a stop that times out, play-back
// set-up failures, a start whose line cannot be built).
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

}  // namespace
}  // namespace httptest
