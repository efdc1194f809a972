// The edge cases of the RTP requester's state machine through its public
// interface: a STOP that finds no running stream, an audio START while
// running, the order of a failed keep-alive's notices, the recorder flags.
#include <gtest/gtest.h>

#include <atomic>

#include "CamTestSupport.h"
#include "ScriptedRequester.h"
#include "SessionTestSupport.h"
#include "kxcom.h"

namespace {

// Notes the status of its requester at every RTP stream notification.
class StatusNotingUpper : public sessiontest::RecordingUpper {
 public:
  void NotifyRtpStream(int iUid, const void* pSessionInfo, int iRtpPort, const char* cIpAddr,
                       int iPos, int iCmdType, int iSelectChNo, int iAudioBitrate, int iAudioEnable,
                       const char* cMultiAddr, int iUniPort, int iAudioInPort) override {
    if (pWatched != nullptr) aiStatusAtNotice.push_back(pWatched->iConnectStatus);
    RecordingUpper::NotifyRtpStream(iUid, pSessionInfo, iRtpPort, cIpAddr, iPos, iCmdType,
                                    iSelectChNo, iAudioBitrate, iAudioEnable, cMultiAddr, iUniPort,
                                    iAudioInPort);
  }
  CCamRequester* pWatched = nullptr;
  std::vector<int> aiStatusAtNotice;
};

int CountPath(const camsim::Device& rDevice, const std::string& sPath, const std::string& sWord) {
  int n = 0;
  for (const auto& r : rDevice.Requests())
    n += r.path == sPath && r.query.find(sWord) != std::string::npos;
  return n;
}

TEST(Edges, StopBeforeTheStreamRanIsQuietAndTheNextStartGoesStraightToDelivery) {
  KXCOM_SetWaitDivisor(100);
  auto device = sessiontest::StartDevice("127.0.0.1", 7);
  ASSERT_NE(device, nullptr);
  sessiontest::RecordingUpper upper;
  {
    CCamRequester_Cgi_Kobu_Rtp req;
    sessiontest::Aim(req, *device, 0, 7, &upper);
    req.Initialize(61);
    // A play-back start only sets the session up: READY.
    req.RequestPBStart();
    ASSERT_TRUE(camtest::WaitUntil([&] { return req.iConnectStatus == CAM_HTTP_STS_READY; }));
    camtest::PrintCapture capture;
    req.RequestStop();
    ASSERT_TRUE(capture.WaitFor("RequestThreadMain [DEBUG] COM_MsgBufFree="));
    EXPECT_EQ(req.iConnectStatus.load(), CAM_HTTP_STS_READY);
    EXPECT_EQ(CountPath(*device, "/cgi-bin/h264", "connect=stop"), 0);
    capture.Clear();
    req.RequestStart();
    ASSERT_TRUE(camtest::WaitUntil([&] { return req.iConnectStatus == CAM_HTTP_STS_RUN; }));
    EXPECT_TRUE(capture.WaitFor("SetupSessionCommand [DEBUG] NOP iConnectStatus=3\n"));
    EXPECT_EQ(CountPath(*device, "/cgi-bin/getuid", ""), 1) << "no second set-up";
    EXPECT_EQ(CountPath(*device, "/cgi-bin/h264", "connect=start"), 1);
    req.RequestStop();
    ASSERT_TRUE(camtest::WaitUntil([&] { return req.iConnectStatus == CAM_HTTP_STS_IDLE; }));
    EXPECT_EQ(CountPath(*device, "/cgi-bin/h264", "connect=stop"), 1);
  }
  KXCOM_SetWaitDivisor(1);
}

TEST(Edges, AudioStartWhileRunningRequestsDeliveryAgain) {
  sessiontest::ScriptedRtp req;
  req.iCmdType = 1;
  req.iConnectStatus = CAM_HTTP_STS_RUN;
  req.ChangeStatus(CAM_HTTP_EVT_START);
  EXPECT_EQ(req.iConnectStatus.load(), CAM_HTTP_STS_READY);
  req.ClearCalls();
  req.StreamStartCommand();
  EXPECT_EQ(req.Calls(), (std::vector<std::string>{"StreamStartCommandExec", "ChangeStatus(4)"}));
  EXPECT_EQ(req.iConnectStatus.load(), CAM_HTTP_STS_RUN);
}

TEST(Edges, FailedKeepAliveTellsTheUpperLayerBeforeTheStatusDrops) {
  auto device = sessiontest::StartDevice("127.0.0.1", 7);
  ASSERT_NE(device, nullptr);
  for (int iType : {0, 2}) {
    StatusNotingUpper upper;
    CCamRequester_Cgi_Kobu_Rtp req;
    sessiontest::Aim(req, *device, iType, 7, &upper);
    upper.pWatched = &req;
    ASSERT_EQ(req.SetupSessionCommandExec(), 0);
    req.iConnectStatus = CAM_HTTP_STS_RUN;
    device->ForgetUids();
    req.SetKeeAliveCount(300);
    req.SendKeepAliveCommand();
    EXPECT_EQ(req.iConnectStatus.load(), CAM_HTTP_STS_ERROR);
    const auto notices = upper.Rtp();
    // The set-up's notice, then UID -1 twice (the failed request and the
    // keep-alive command each tell), both while still running.
    ASSERT_EQ(notices.size(), 3u);
    EXPECT_EQ(notices[1].iUid, -1);
    EXPECT_EQ(notices[2].iUid, -1);
    EXPECT_EQ(upper.aiStatusAtNotice, (std::vector<int>{0, 4, 4}));
    req.iConnectStatus = 0;
  }
}

TEST(Edges, RecorderFlagsRefuseACamera) {
  CCamRequester_Cgi_Kobu_Rtp req;
  req.usCameraType = 7;
  const int32_t iSeven = 7;
  int32_t iOut = 55;
  EXPECT_EQ(req.SetParameter(CAM_PARAM_CTRLFLAG_KEL, &iSeven, 4), -1);
  EXPECT_EQ(req.SetParameter(CAM_PARAM_SAMEUIDGROUP_KEL, &iSeven, 4), -1);
  EXPECT_EQ(req.SetParameter(CAM_PARAM_KEEPALIVEFLAG_KEL, &iSeven, 4), -1);
  EXPECT_EQ(req.GetInfo(CAM_INFO_CTRLFLAG_KEL, &iOut), -1);
  EXPECT_EQ(req.GetInfo(CAM_INFO_SAMEUIDGROUP_KEL, &iOut), -1);
  EXPECT_EQ(req.GetInfo(CAM_INFO_KEEPALIVEFLAG_KEL, &iOut), -1);
  EXPECT_EQ(iOut, 55);
  EXPECT_EQ(req.m_KELCtrlFlag.load(), 0);
  EXPECT_EQ(req.m_KELSameUIDGroup, -1);
  EXPECT_EQ(req.GetKeepAlive(), 0);
  req.usCameraType = 34;
  EXPECT_EQ(req.SetParameter(CAM_PARAM_CTRLFLAG_KEL, &iSeven, 4), 0);
  EXPECT_EQ(req.GetInfo(CAM_INFO_CTRLFLAG_KEL, &iOut), 0);
  EXPECT_EQ(iOut, 1);
  EXPECT_EQ(req.SetParameter(CAM_PARAM_SAMEUIDGROUP_KEL, &iSeven, 4), 0);
  EXPECT_EQ(req.GetInfo(CAM_INFO_SAMEUIDGROUP_KEL, &iOut), 0);
  EXPECT_EQ(iOut, 7);
  // ChangeStatus_KEL raises the error event whatever the record says.
  req.iCmdType = 0;
  req.iConnectStatus = CAM_HTTP_STS_RUN;
  EXPECT_EQ(req.SetParameter(CAM_PARAM_CHANGESTATUS_KEL, &iSeven, 4), 0);
  EXPECT_EQ(req.iConnectStatus.load(), CAM_HTTP_STS_ERROR);
  req.iConnectStatus = 0;
}

}  // namespace
