// The roads of a push stream through the public interface: JPEG from a
// camera, a Quillon camera and a recorder (each on 127.0.0.1 and ::1), G.726
// over HTTP, play-back, and a start retried while a push runs. The upper
// layer reads every handed-over push on its own reader thread.
#include "HttpRig.h"
#include "HttpRoads.h"

namespace httptest {
namespace {

class PushRoadTest : public HttpRequesterTest {};

// The JPEG road on either loopback address.
class JpegRoadTest : public HttpRequesterTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(JpegRoadTest, CameraJpegLiveCarriesRateAndResolutionAndIsWithdrawnBeforeClosing) {
  RigOptions sOptions;
  sOptions.usFrate = 11;      // "30"
  sOptions.usResolution = 1;  // "320"
  sOptions.sAddress = GetParam();
  HttpRig rig(sOptions);
  camtest::PrintCapture capture;
  rig.Configure();
  rig.req->RequestStart();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN)) << capture.All();
  ASSERT_TRUE(rig.notify.WaitForPictures(10, seconds(10))) << capture.All();
  EXPECT_EQ(rig.notify.BadParts(), 0u);

  const auto asPaths = Paths(*rig.device);
  ASSERT_GE(asPaths.size(), 2u);
  EXPECT_EQ(asPaths[0], "/cgi-bin/getuid");
  const auto sPush = FindRequest(*rig.device, "/cgi-bin/jpeg", "connect=start");
  ASSERT_TRUE(sPush.has_value());
  const int iUid = rig.req->iUid;
  EXPECT_EQ(sPush->query, "connect=start&framerate=30&resolution=320&UID=" + std::to_string(iUid));
  // The set-up told the upper layer the UID, without a record for live JPEG.
  const auto asInfos = rig.notify.SessionInfos();
  ASSERT_EQ(asInfos.size(), 1u);
  EXPECT_EQ(asInfos[0].iUid, iUid);
  EXPECT_FALSE(asInfos[0].bRecord);
  EXPECT_EQ(asInfos[0].iPos, 1);
  EXPECT_EQ(asInfos[0].iCmdType, CAM_REQUESTER_CMD_JPEG_HTTP);
  EXPECT_EQ(capture.CountContaining("StreamStartCommandExec [DEBUG] JPEG HTTP "
                                    "NotifyCamRequesterHandle\n"),
            1);

  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
  const auto asEvents = rig.notify.HandleEvents();
  ASSERT_EQ(asEvents.size(), 2u);
  EXPECT_NE(asEvents[0].psHandle, nullptr);
  EXPECT_EQ(asEvents[0].iUid, iUid);
  EXPECT_EQ(asEvents[1].psHandle, nullptr);
  // The handle was taken back while it was still an open session.
  EXPECT_TRUE(asEvents[1].bOpenWhenWithdrawn);
  EXPECT_TRUE(FindRequest(*rig.device, "/cgi-bin/jpeg", "connect=stop").has_value());
  EXPECT_TRUE(rig.device->WaitForOpenConnections(0, seconds(5)));
}

TEST_P(JpegRoadTest, QuillonCameraChangesModeFirstAndReleasesTheUidOnStop) {
  RigOptions sOptions;
  sOptions.iModel = CAM_REQUESTER_CAMTYPE_CAM13;
  sOptions.usFrate = 9;  // "10"
  sOptions.sAddress = GetParam();
  HttpRig rig(sOptions);
  camtest::PrintCapture capture;
  rig.Configure();
  rig.req->RequestStart();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN)) << capture.All();
  ASSERT_TRUE(rig.notify.WaitForPictures(10, seconds(10))) << capture.All();
  const int iUid = rig.req->iUid;
  const std::string sUid = std::to_string(iUid);

  const auto asPaths = Paths(*rig.device);
  ASSERT_GE(asPaths.size(), 3u);
  EXPECT_EQ(asPaths[0], "/cgi-bin/getuid");
  EXPECT_EQ(asPaths[1], "/cgi-bin/syssetup");
  EXPECT_EQ(asPaths[2], "/cgi-bin/push");
  EXPECT_EQ(rig.device->Requests()[1].query, "LIVEMODE=PUSH&UID=" + sUid);
  EXPECT_EQ(rig.device->Requests()[2].Param("FRAMERATE"), "10");

  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
  EXPECT_TRUE(FindRequest(*rig.device, "/cgi-bin/push", "MODE=STOP").has_value());
  const auto sRelease = FindRequest(*rig.device, "/cgi-bin/uidutil", "UTIL=RELEASE");
  ASSERT_TRUE(sRelease.has_value());
  EXPECT_EQ(sRelease->query, "UID=" + sUid + "&UTIL=RELEASE");
  EXPECT_TRUE(rig.device->LiveUids().empty());
  EXPECT_EQ(rig.notify.Withdrawals(), 1);
  EXPECT_TRUE(rig.notify.HandleEvents().back().bOpenWhenWithdrawn);
}

TEST_F(PushRoadTest, QuillonModeChangeRefusedForgetsTheUidAndTheStartIsRebuilt) {
  RigOptions sOptions;
  sOptions.iModel = CAM_REQUESTER_CAMTYPE_CAM13;
  HttpRig rig(sOptions);
  camtest::PrintCapture capture;
  rig.Configure();
  camsim::Fault sFault;
  sFault.status = 500;
  sFault.times = 1;
  rig.device->SetFault("/cgi-bin/syssetup", sFault);
  rig.req->RequestStart();
  ASSERT_TRUE(capture.WaitFor("QuillonChgModeCommandExec [Error] DoRequest failed\n"))
      << capture.All();
  // The failed exchange forgot the UID and told the upper layer.
  ASSERT_TRUE(rig.notify.WaitForSessionInfos(2, seconds(10)));
  EXPECT_EQ(rig.notify.SessionInfos()[1].iUid, -1);
  // The rebuilt session changes the mode and pushes.
  ASSERT_TRUE(rig.notify.WaitForPictures(3, seconds(15))) << capture.All();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN));
  EXPECT_GE(CountRequests(*rig.device, "/cgi-bin/syssetup"), 2);
  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
}

TEST_F(PushRoadTest, QuillonStopThatTimesOutStillReleasesTheUid) {
  http_set_timeout_divisor(10);
  RigOptions sOptions;
  sOptions.iModel = CAM_REQUESTER_CAMTYPE_CAM06;
  HttpRig rig(sOptions);
  camtest::PrintCapture capture;
  rig.Configure();
  rig.req->RequestStart();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN)) << capture.All();
  ASSERT_TRUE(rig.notify.WaitForPictures(1, seconds(10)));
  const std::string sUid = std::to_string(rig.req->iUid);
  rig.device->SetFault("/cgi-bin/push", Fault("when=MODE=STOP,noanswer"));
  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
  http_set_timeout_divisor(1);
  EXPECT_TRUE(capture.Contains("StreamStopCommandExec [ERROR] timeout ret=0x8007000\n"));
  const auto sRelease = FindRequest(*rig.device, "/cgi-bin/uidutil", "UTIL=RELEASE");
  ASSERT_TRUE(sRelease.has_value()) << capture.All();
  EXPECT_EQ(sRelease->query, "UID=" + sUid + "&UTIL=RELEASE");
  EXPECT_EQ(rig.notify.Withdrawals(), 1);
  EXPECT_TRUE(rig.notify.HandleEvents().back().bOpenWhenWithdrawn);
  rig.device->ClearFaults();
  EXPECT_TRUE(rig.device->WaitForOpenConnections(0, seconds(5)));
}

TEST_F(PushRoadTest, PresetGoesBeforeThePushAndA4xxStillCountsAsMoved) {
  RigOptions sOptions;
  sOptions.iModel = CAM_REQUESTER_CAMTYPE_CAM11;
  HttpRig rig(sOptions);
  camtest::PrintCapture capture;
  rig.Configure();
  rig.SetDeviceCredentials();
  SetParam(*rig.req, CAM_PARAM_PRESET, uint16_t{3});
  rig.req->RequestStart();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN)) << capture.All();
  const auto asPaths = Paths(*rig.device);
  ASSERT_GE(asPaths.size(), 3u);
  EXPECT_EQ(asPaths[1], "/cgi-bin/camctrl");
  EXPECT_EQ(rig.device->Requests()[1].query, "preset=3");
  EXPECT_EQ(asPaths[2], "/cgi-bin/jpeg");
  EXPECT_TRUE(
      capture.Contains("SendCamPresetCommandExec [DEBUG] UserName:admin Password:password\n"));
  // A preset request answered 404 passes the lenient request: no error event.
  camsim::Fault sFault;
  sFault.status = 404;
  rig.device->SetFault("/cgi-bin/camctrl", sFault);
  rig.req->RequestPresetPosition();
  ASSERT_TRUE(
      camtest::WaitUntil([&] { return CountRequests(*rig.device, "/cgi-bin/camctrl") == 2; }));
  ASSERT_TRUE(capture.WaitFor("SendCamPresetCommandExec [DEBUG] free="));
  EXPECT_EQ(rig.req->iConnectStatus, CAM_HTTP_STS_RUN);
  EXPECT_FALSE(capture.Contains("Event=6:4"));
  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
}

TEST_P(JpegRoadTest, RecorderLogsInPushesKeepsAliveAndLogsOut) {
  RigOptions sOptions;
  sOptions.iModel = CAM_REQUESTER_CAMTYPE_KE850;
  sOptions.sAddress = GetParam();
  HttpRig rig(sOptions);
  camtest::PrintCapture capture;
  rig.Configure();
  rig.SetDeviceCredentials();
  rig.req->RequestStart();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN)) << capture.All();
  ASSERT_TRUE(rig.notify.WaitForPictures(10, seconds(10))) << capture.All();
  // The keep-alive right after the start is a recorder status request.
  ASSERT_TRUE(camtest::WaitUntil(
      [&] { return FindRequest(*rig.device, "/cgi-bin/status.cgi", "").has_value(); }));
  const auto asPaths = Paths(*rig.device);
  ASSERT_GE(asPaths.size(), 3u);
  EXPECT_EQ(asPaths[0], "/cgi-bin/start.cgi");
  EXPECT_EQ(asPaths[1], "/cgi-bin/ulogin.cgi");
  EXPECT_EQ(asPaths[2], "/cgi-bin/push.cgi");
  const std::string sUid = std::to_string(rig.req->iUid);
  EXPECT_EQ(rig.device->Requests()[2].query, "CMD=START&CAM=0&UID=" + sUid + "&COMP=JPEG");

  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
  EXPECT_TRUE(FindRequest(*rig.device, "/cgi-bin/push.cgi", "CMD=STOP").has_value());
  const auto sLogout = FindRequest(*rig.device, "/cgi-bin/logout.cgi", "");
  ASSERT_TRUE(sLogout.has_value()) << capture.All();
  EXPECT_EQ(sLogout->query, "UID=" + sUid);
  EXPECT_TRUE(rig.device->LiveUids().empty());
  EXPECT_TRUE(rig.notify.HandleEvents().back().bOpenWhenWithdrawn);
}

TEST_F(PushRoadTest, AudioOverHttpIsReadFromTheHandleAfterStartGoesZeroThreeFour) {
  RigOptions sOptions;
  sOptions.iCmdType = CAM_REQUESTER_CMD_G726_HTTP;
  HttpRig rig(sOptions);
  camtest::PrintCapture capture;
  rig.Configure();
  // Audio has no set-up of its own: the UID comes from the upper layer.
  const int iUid = IssueUid(*rig.device, "FILE=2&vcodec=audio");
  ASSERT_GT(iUid, 0);
  CAM_UID_PARAM sUid = {};
  sUid.iUid = iUid;
  sUid.iAudioEnable = 1;
  SetParam(*rig.req, CAM_PARAM_UID, sUid);
  rig.req->RequestStart();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN)) << capture.All();
  ASSERT_TRUE(rig.notify.WaitForAudioBytes(1000, seconds(10))) << capture.All();
  EXPECT_EQ(capture.Count(Prefixed(*rig.req, "ChangeStatus [DEBUG] Audio Event=0:0 -> 3. \n")), 1)
      << capture.All();
  EXPECT_EQ(capture.Count(Prefixed(*rig.req, "ChangeStatus [DEBUG] Audio Event=4:3 -> 4. \n")), 1);
  EXPECT_EQ(capture.CountContaining("StreamStartCommandExec [DEBUG] G726 HTTP "
                                    "NotifyCamRequesterHandle\n"),
            1);
  const auto sPush = FindRequest(*rig.device, "/cgi-bin/audio", "connect=start");
  ASSERT_TRUE(sPush.has_value());
  EXPECT_EQ(sPush->Param("protocol"), "http");
  EXPECT_TRUE(rig.notify.SessionInfos().empty());

  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
  EXPECT_TRUE(FindRequest(*rig.device, "/cgi-bin/audio", "connect=stop").has_value());
  EXPECT_EQ(rig.notify.Withdrawals(), 1);
  EXPECT_TRUE(rig.notify.HandleEvents().back().bOpenWhenWithdrawn);
}

TEST_F(PushRoadTest, PlayBackSetUpHandsTheRecordUpAndPushesNothing) {
  RigOptions sOptions;
  sOptions.iModel = CAM_REQUESTER_CAMTYPE_KE850;
  sOptions.iCmdType = CAM_REQUESTER_CMD_JPEG_PLAY;
  HttpRig rig(sOptions);
  camtest::PrintCapture capture;
  rig.Configure();
  rig.SetDeviceCredentials();
  SetParam(*rig.req, CAM_PARAM_PRESET, uint16_t{3});
  rig.req->RequestPBStart();
  ASSERT_TRUE(rig.notify.WaitForSessionInfos(1, seconds(10))) << capture.All();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_READY));
  const auto asInfos = rig.notify.SessionInfos();
  ASSERT_EQ(asInfos.size(), 1u);
  EXPECT_EQ(asInfos[0].iUid, rig.req->iUid);
  ASSERT_TRUE(asInfos[0].bRecord);
  // Host and port read back from the record.
  EXPECT_EQ(asInfos[0].sHost, "127.0.0.1");
  EXPECT_EQ(asInfos[0].uPort, rig.device->Port());
  EXPECT_EQ(asInfos[0].iCmdType, CAM_REQUESTER_CMD_JPEG_PLAY);
  EXPECT_EQ(capture.Count(Prefixed(*rig.req, "SetupSessionCommandExec [DEBUG] host:127.0.0.1 \n")),
            1)
      << capture.All();

  // The preset is refused for play-back, before any exchange.
  const size_t ulRequests = rig.device->RequestCount();
  rig.req->RequestPresetPosition();
  ASSERT_TRUE(capture.WaitFor("SendCamPresetCommand [Error] Undefined iCmdType=2\n"));
  EXPECT_EQ(rig.device->RequestCount(), ulRequests);
  EXPECT_EQ(rig.notify.HandOvers(), 0);
  EXPECT_FALSE(FindRequest(*rig.device, "/cgi-bin/push.cgi", "").has_value());

  // The upper layer reports the play-back running; its stop logs out.
  SetParam(*rig.req, CAM_PARAM_STATUSCHANGE, int32_t{1});
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN));
  rig.req->RequestPBStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
  EXPECT_TRUE(camtest::WaitUntil(
      [&] { return FindRequest(*rig.device, "/cgi-bin/logout.cgi", "").has_value(); }));
  EXPECT_EQ(rig.notify.HandOvers(), 0);
}

TEST_F(PushRoadTest, RetriedStartWithdrawsAndClosesTheRunningPushThenHandsOverANewOne) {
  HttpRig rig(RigOptions{});
  camtest::PrintCapture capture;
  rig.Configure();
  rig.req->RequestStart();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN));
  ASSERT_TRUE(rig.notify.WaitForPictures(3, seconds(10)));
  rig.AskForStartRetry();
  ASSERT_TRUE(rig.notify.WaitForHandOvers(2, seconds(10))) << capture.All();
  ASSERT_TRUE(camtest::WaitUntil([&] { return rig.StartRetryFlag() == 0; }));
  EXPECT_EQ(rig.req->iConnectStatus, CAM_HTTP_STS_RUN);
  const auto asEvents = rig.notify.HandleEvents();
  ASSERT_EQ(asEvents.size(), 3u);
  EXPECT_EQ(asEvents[1].psHandle, nullptr);
  EXPECT_TRUE(asEvents[1].bOpenWhenWithdrawn);
  EXPECT_TRUE(asEvents[2].bNothingHeld);
  EXPECT_EQ(capture.CountContaining("StreamStartCommand [DEBUG] CloseSessionPush(). TINDEX=" +
                                    Hex(rig.req->iChildThreadIndex) + " status=4\n"),
            1)
      << capture.All();
  ASSERT_TRUE(rig.notify.WaitForPicturesOfCurrentHandle(3, seconds(10)));
  // The old push is closed: only the new one stays open on the camera.
  EXPECT_TRUE(rig.device->WaitForOpenConnections(1, seconds(5)));

  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE));
}

TEST_F(PushRoadTest, RetriedStartWhosePushIsRefusedEndsInError) {
  HttpRig rig(RigOptions{});
  camtest::PrintCapture capture;
  rig.Configure();
  rig.req->RequestStart();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN));
  camsim::Fault sFault;
  sFault.status = 403;
  sFault.times = 1;
  rig.device->SetFault("/cgi-bin/jpeg", sFault);
  rig.AskForStartRetry();
  ASSERT_TRUE(capture.WaitFor("ChangeStatus [DEBUG] Video Event=5:4 -> 1. \n")) << capture.All();
  EXPECT_EQ(capture.CountContaining(
                "StreamStartCommandExec [Error] http_get_response failed2:ret =8000403\n"),
            1);
  EXPECT_EQ(rig.notify.Withdrawals(), 1);
  EXPECT_TRUE(rig.notify.HandleEvents()[1].bOpenWhenWithdrawn);
  // The request thread rebuilds the session from status 1.
  ASSERT_TRUE(rig.notify.WaitForHandOvers(2, seconds(10))) << capture.All();
  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE));
}

INSTANTIATE_TEST_SUITE_P(Loopback, JpegRoadTest, ::testing::Values("127.0.0.1", "::1"),
                         [](const ::testing::TestParamInfo<const char*>& rInfo) {
                           return std::string(rInfo.param[0] == ':' ? "V6" : "V4");
                         });

}  // namespace
}  // namespace httptest
