// The Exec workers of the RTP requester against a simulated camera or
// recorder: what goes on the wire, what the upper layer hears, every line,
// and that every path gives back its buffer and its session.
#include <gtest/gtest.h>

#include "CamScoped.h"
#include "CamTestSupport.h"
#include "SessionTestSupport.h"

namespace {

using sessiontest::RecordingUpper;
using Lines = std::vector<std::string>;

class Exec : public ::testing::Test {
 protected:
  void Aim(int iModel, int iCmdType) {
    device = sessiontest::StartDevice("127.0.0.1", iModel);
    ASSERT_NE(device, nullptr);
    sessiontest::Aim(req, *device, iCmdType, static_cast<unsigned short>(iModel), &upper);
    sPrefix = "IP:      127.0.0.1 POS:1 ";
    char acCell[16];
    std::snprintf(acCell, sizeof(acCell), "%6.6s ", req.cPrintPrefix);
    sPrefix += acCell;
    sPort = std::to_string(device->Port());
    capture.Clear();
  }
  void TearDown() override {
    req.iConnectStatus = 0;
    if (device != nullptr) {
      EXPECT_TRUE(camtest::WaitUntil([&] { return device->OpenConnections() == 0; }))
          << "a session was left open";
    }
    EXPECT_EQ(req.psSession, nullptr);
  }
  Lines Texts() const {
    Lines asOut;
    for (const auto& s : capture.Lines()) asOut.push_back(sessiontest::Text(s, sPrefix));
    return asOut;
  }
  bool Printed(const std::string& sText) const {
    const Lines asTexts = Texts();
    return std::find(asTexts.begin(), asTexts.end(), sText) != asTexts.end();
  }
  std::vector<std::string> Paths() const {
    std::vector<std::string> asOut;
    for (const auto& r : device->Requests()) asOut.push_back(r.path + "?" + r.query);
    return asOut;
  }
  void TakeUid() {
    ASSERT_EQ(req.SetupSessionCommandExec(), 0);
    device->ClearRequests();
    capture.Clear();
  }

  camtest::PrintCapture capture;
  RecordingUpper upper;
  std::unique_ptr<camsim::Device> device;
  CCamRequester_Cgi_Kobu_Rtp req;
  std::string sPrefix;
  std::string sPort;
};

TEST_F(Exec, SetupOfAnH264CameraTakesTheUidAndTellsTheUpperLayer) {
  Aim(7, 0);
  req.m_KELCtrlFlag = 0;
  EXPECT_EQ(req.SetupSessionCommandExec(), 0);
  EXPECT_EQ(Paths(), Lines{"/cgi-bin/getuid?FILE=2&vcodec=h264"});
  EXPECT_EQ(req.iUid.load(), 1);
  const auto notices = upper.Rtp();
  ASSERT_EQ(notices.size(), 1u);
  const auto& n = notices[0];
  EXPECT_EQ(n.iUid, 1);
  EXPECT_TRUE(n.bSessionInfo);
  EXPECT_EQ(upper.LastHost(), "127.0.0.1") << "the copied session names the camera";
  EXPECT_EQ(upper.LastPort(), device->Port());
  EXPECT_EQ(n.iRtpPort, 5000) << "the multicast port replaces the receive port";
  EXPECT_EQ(n.sAddress, "127.0.0.1");
  EXPECT_EQ(n.iPos, 1);
  EXPECT_EQ(n.iCmdType, 0);
  EXPECT_EQ(n.iAudioBitrate, 32);
  EXPECT_EQ(n.iAudioEnable, 1);
  EXPECT_EQ(n.sMultiAddr, "239.1.2.4");
  EXPECT_TRUE(Printed("SetupSessionCommandExec [DEBUG] RTP: IP:127.0.0.1 PORT:" + sPort +
                      " CamType:MODEL7[7] Pos:1 \n"));
  EXPECT_TRUE(
      Printed("SetupSessionCommandExec [DEBUG] cgi=/cgi-bin/getuid?FILE=2&vcodec=h264. \n"));
  char acNotify[128];
  std::snprintf(acNotify, sizeof(acNotify),
                "SetupSessionCommandExec [DEBUG] p_notify_to_upper:%p \n",
                static_cast<void*>(&upper));
  EXPECT_EQ(Texts().back(), acNotify);
}

TEST_F(Exec, SetupWithAKnownUidSendsNothingAndNotifiesAgain) {
  Aim(7, 2);
  req.iUid = 77;
  EXPECT_EQ(req.SetupSessionCommandExec(), 0);
  EXPECT_EQ(device->RequestCount(), 0u);
  const auto notices = upper.Rtp();
  ASSERT_EQ(notices.size(), 1u);
  EXPECT_EQ(notices[0].iUid, 77);
  EXPECT_FALSE(notices[0].bSessionInfo);
}

TEST_F(Exec, SetupOfAControlledRecorderWaitsForItsUid) {
  Aim(33, 0);
  req.m_KELCtrlFlag = 1;
  EXPECT_EQ(req.SetupSessionCommandExec(), -1);
  EXPECT_EQ(Texts(), Lines{"SetupSessionCommandExec [DEBUG] Wait set KEL UID\n"});
  EXPECT_EQ(device->RequestCount(), 0u);
  // A UID set from outside completes the set-up and ends the wait.
  req.iUid = 12;
  EXPECT_EQ(req.SetupSessionCommandExec(), 0);
  EXPECT_EQ(req.m_KELCtrlFlag.load(), 0);
}

TEST_F(Exec, RecorderKeyLogsInBeforeTheUidIsRead) {
  Aim(34, 0);
  sessiontest::SetAuth(req, "admin", "password");
  capture.Clear();
  EXPECT_EQ(req.SetupSessionCommandExec(), 0);
  const auto records = device->Requests();
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].path + "?" + records[0].query, "/cgi-bin/start.cgi?UID=-1");
  EXPECT_EQ(records[1].path, "/cgi-bin/ulogin.cgi");
  EXPECT_EQ(records[1].status, 200) << "the login was accepted";
  EXPECT_EQ(records[1].Param("KEY"), req.strKey);
  EXPECT_EQ(std::string(req.strKey).size(), 6u);
  EXPECT_EQ(req.iUid.load(), 1) << "the UID of the login's reply";
  EXPECT_TRUE(Printed(std::string("SetupSessionCommandExec [DEBUG] strKey:") + req.strKey + "\n"));
  EXPECT_TRUE(Printed("KelSetupSessionCommandExec [DEBUG] Rtp: IP:127.0.0.1 PORT:" + sPort +
                      " CamType:MODEL34[34] Pos:1 \n"));
  ASSERT_EQ(upper.Rtp().size(), 1u);
  EXPECT_EQ(upper.Rtp()[0].iUid, 1);
}

TEST_F(Exec, RefusedLoginFailsTheSetup) {
  Aim(35, 0);
  sessiontest::SetAuth(req, "admin", "wrong");
  EXPECT_EQ(req.SetupSessionCommandExec(), -1);
  EXPECT_EQ(req.iUid.load(), -1);
  EXPECT_TRUE(upper.Rtp().empty());
}

TEST_F(Exec, SetupReplyWithoutUidGivesMinusTwo) {
  Aim(7, 0);
  camsim::Fault sFault;
  sFault.omitKey = "UID=";
  device->SetFault("/cgi-bin/getuid", sFault);
  EXPECT_EQ(req.SetupSessionCommandExec(), -2);
  EXPECT_TRUE(upper.Rtp().empty());
}

TEST_F(Exec, SetupOfARefusingCameraForgetsTheUid) {
  Aim(7, 0);
  device->RefuseConnections();
  EXPECT_EQ(req.SetupSessionCommandExec(), -1);
  EXPECT_TRUE(Printed("SetupSessionCommandExec [Error] Rtp::SetupSessionCommand failed\n"));
  EXPECT_TRUE(Printed("UidInvalid [DEBUG] H.264:\n"));
  ASSERT_EQ(upper.Rtp().size(), 1u);
  EXPECT_EQ(upper.Rtp()[0].iUid, -1);
}

TEST_F(Exec, SetupFailedRequest) {
  Aim(7, 0);
  camsim::Fault sFault;
  sFault.status = 503;
  device->SetFault("/cgi-bin/getuid", sFault);
  EXPECT_EQ(req.SetupSessionCommandExec(), -1);
  EXPECT_TRUE(Printed("SetupSessionCommandExec [Error] DoRequest failed\n"));
}

TEST_F(Exec, StreamStartAndStopOfAnH264Camera) {
  Aim(7, 0);
  TakeUid();
  EXPECT_EQ(req.StreamStartCommandExec(), 0);
  EXPECT_EQ(Paths(), Lines{"/cgi-bin/h264?connect=start&protocol=rtp&my_port=5000&UID=1&stream=1"});
  EXPECT_EQ(device->Requests()[0].Header("Host"), "127.0.0.1") << "AddHeader";
  const Lines asStart = Texts();
  ASSERT_GE(asStart.size(), 4u);
  EXPECT_TRUE(Printed("StreamStartCommandExec [DEBUG] RTP: IP:127.0.0.1 PORT:" + sPort +
                      " CamType:MODEL7[7] Pos:1 \n"));
  EXPECT_TRUE(
      Printed("StreamStartCommandExec [DEBUG] cgi=/cgi-bin/h264?connect=start&protocol=rtp&"
              "my_port=5000&UID=1&stream=1. \n"));
  EXPECT_EQ(asStart[asStart.size() - 2].rfind("StreamStartCommandExec [DEBUG] free=0x", 0), 0u);
  EXPECT_EQ(asStart.back().rfind(" CloseSessionCommand [DEBUG] Session Close [psSession:", 0), 0u);
  device->ClearRequests();
  capture.Clear();
  EXPECT_EQ(req.StreamStopCommandExec(), 0);
  EXPECT_EQ(Paths(), Lines{"/cgi-bin/h264?connect=stop&protocol=rtp&my_port=5000&UID=1&stream=1"});
  EXPECT_EQ(req.uid_logout, 1);
  EXPECT_TRUE(Printed("StreamStopCommandExec [DEBUG] RTP: IP:127.0.0.1 PORT:" + sPort +
                      " CamType:MODEL7[7] Pos:1 uid_logout:1\n"));
  // Keep-alive is off: nothing is logged out.
  EXPECT_TRUE(Printed("KelStreamStopCommandExec [DEBUG] KEL Logout CGI Command No!!\n"));
}

TEST_F(Exec, StreamStopThatTimesOutStillSucceeds) {
  Aim(7, 2);
  TakeUid();
  camsim::Fault sFault;
  sFault.action = camsim::FaultAction::kNoAnswer;
  device->SetFault("/cgi-bin/mpeg4", sFault);
  EXPECT_EQ(req.StreamStopCommandExec(), 0);
  EXPECT_TRUE(Printed("StreamStopCommandExec [ERROR] timeout ret=0x8007000\n"));
  device->ClearFaults();
}

TEST_F(Exec, StreamStopClassifiesWithoutFailing) {
  Aim(7, 0);
  TakeUid();
  camsim::Fault sFault;
  sFault.status = 404;
  device->SetFault("/cgi-bin/h264", sFault);
  EXPECT_EQ(req.StreamStopCommandExec(), 0);
  EXPECT_TRUE(Printed("StreamStopCommandExec [ERROR] client or server error ret=0x8000404\n"));
  sFault = camsim::Fault();
  sFault.action = camsim::FaultAction::kGarbage;
  device->SetFault("/cgi-bin/h264", sFault);
  EXPECT_EQ(req.StreamStopCommandExec(), 0);
  EXPECT_TRUE(Printed("StreamStopCommandExec [ERROR] other error ret=0x8005000\n"));
  EXPECT_EQ(req.iUid.load(), 1) << "a stop forgets no UID";
}

TEST_F(Exec, PlayBackTypesAreNeverStartedOrStoppedHere) {
  Aim(33, 3);
  req.iUid = 5;
  EXPECT_EQ(req.StreamStartCommandExec(), -1);
  EXPECT_EQ(req.StreamStopCommandExec(), -1);
  req.iCmdType = 4;
  EXPECT_EQ(req.StreamStartCommandExec(), -1);
  EXPECT_EQ(req.StreamStopCommandExec(), -1);
  EXPECT_EQ(Texts(), (Lines{"StreamStartCommandExec [Error] iCmdType:MPEG4_PLAY\n",
                            "StreamStopCommandExec [Error] iCmdType:MPEG4_PLAY\n",
                            "StreamStartCommandExec [Error] iCmdType:H264_PLAY\n",
                            "StreamStopCommandExec [Error] iCmdType:H264_PLAY\n"}));
  EXPECT_EQ(device->RequestCount(), 0u);
}

TEST_F(Exec, WorkersWithoutUid) {
  Aim(11, 0);
  req.iUid = -1;
  req.usPresetNo = 3;
  req.m_iKeepAliveCount = 300;
  req.m_iPBKeepAliveCount = 30;
  EXPECT_EQ(req.StreamStartCommandExec(), -1);
  EXPECT_EQ(req.StreamStopCommandExec(), -1);
  EXPECT_EQ(req.SendKeepAliveCommandExec(), -1);
  EXPECT_EQ(req.SendPBKeepAliveCommandExec(), -1);
  EXPECT_EQ(req.SendCamIframInstCommandExec(), -1);
  EXPECT_EQ(req.SendCamPresetCommandExec(), -1);
  EXPECT_EQ(Texts(), (Lines{"StreamStartCommandExec [Error]iUid == -1. \n",
                            "StreamStopCommandExec [Error]iUid == -1. \n",
                            "SendKeepAliveCommandExec IN!!!!!. \n",
                            "SendKeepAliveCommandExec [Error]iUid == -1. \n",
                            "SendPBKeepAliveCommandExec [Error]iUid == -1. \n",
                            "SendCamIframInstCommandExec [Error]iUid == -1. \n",
                            "SendCamPresetCommandExec [Error]iUid == -1. \n"}));
  EXPECT_EQ(device->RequestCount(), 0u);
}

TEST_F(Exec, KeepAliveGoesOutOnThe300thCall) {
  Aim(7, 0);
  TakeUid();
  req.m_iKeepAliveCount = 0;
  for (int i = 0; i < 299; ++i) ASSERT_EQ(req.SendKeepAliveCommandExec(), 0);
  EXPECT_EQ(device->RequestCount(), 0u);
  EXPECT_TRUE(capture.Lines().empty());
  EXPECT_EQ(req.SendKeepAliveCommandExec(), 0);
  EXPECT_EQ(Paths(), Lines{"/cgi-bin/keep_alive?mode=h264&protocol=rtp&UID=1&page=" +
                           device->Requests()[0].Param("page") + "&stream=1"});
  EXPECT_EQ(req.m_iKeepAliveCount, 0);
  const Lines asTexts = Texts();
  EXPECT_EQ(asTexts.front(), "SendKeepAliveCommandExec IN!!!!!. \n");
  EXPECT_EQ(asTexts.back(), "SendKeepAliveCommandExec OUT!!!!!. \n");
}

TEST_F(Exec, KeepAliveOfAForgottenUidFails) {
  Aim(7, 0);
  TakeUid();
  device->ForgetUids();
  req.m_iKeepAliveCount = 300;
  EXPECT_EQ(req.SendKeepAliveCommandExec(), -1);
  EXPECT_EQ(req.iUid.load(), -1) << "the failed request forgot the UID";
  ASSERT_EQ(upper.Rtp().size(), 2u);
  EXPECT_EQ(upper.Rtp()[1].iUid, -1);
}

TEST_F(Exec, RecorderKeepAliveChecksTheFileName) {
  Aim(32, 0);
  req.iUid = 9;
  req.m_iKeepAliveCount = 300;
  EXPECT_EQ(req.SendKeepAliveCommandExec(), -1) << "UID 9 was never issued";
  device->ForgetUids();
  // A UID the recorder knows: log in first.
  sessiontest::SetAuth(req, "admin", "password");
  req.iUid = -1;
  TakeUid();
  req.m_iKeepAliveCount = 300;
  EXPECT_EQ(req.SendKeepAliveCommandExec(), 0);
  EXPECT_EQ(Paths(), Lines{"/cgi-bin/status.cgi?UID=1&HTML=as_status.html"});
  camsim::Fault sFault;
  sFault.omitKey = "FILENAME";
  device->SetFault("/cgi-bin/status.cgi", sFault);
  req.m_iKeepAliveCount = 300;
  capture.Clear();
  EXPECT_EQ(req.SendKeepAliveCommandExec(), -1);
  EXPECT_TRUE(Printed(" SendKeepAliveCommandExec [Error] KeepAlive Failed.\n"));
  EXPECT_FALSE(Printed("SendKeepAliveCommandExec OUT!!!!!. \n"));
}

TEST_F(Exec, OpenFailureForgetsACamerasUidButNotARecorders) {
  Aim(7, 0);
  TakeUid();
  device->RefuseConnections();
  EXPECT_EQ(req.StreamStartCommandExec(), -1);
  EXPECT_TRUE(Printed("StreamStartCommandExec [Error] OpenSessionCommandExec failed\n"));
  EXPECT_EQ(req.iUid.load(), -1);
  // A recorder keeps its UID; its keep-alive even counts as done.
  req.usCameraType = 33;
  req.iUid = 4;
  EXPECT_EQ(req.StreamStartCommandExec(), -1);
  req.m_iKeepAliveCount = 300;
  EXPECT_EQ(req.SendKeepAliveCommandExec(), 0);
  EXPECT_EQ(req.iUid.load(), 4);
}

TEST_F(Exec, PlayBackKeepAliveEvery30thCallAndNeverForgetsTheUid) {
  Aim(7, 0);
  TakeUid();
  req.m_iPBKeepAliveCount = 0;
  for (int i = 0; i < 29; ++i) ASSERT_EQ(req.SendPBKeepAliveCommandExec(), 0);
  EXPECT_EQ(device->RequestCount(), 0u);
  EXPECT_EQ(req.SendPBKeepAliveCommandExec(), 0);
  EXPECT_EQ(device->RequestCount(), 1u);
  EXPECT_EQ(req.m_iPBKeepAliveCount, 0);
  device->RefuseConnections();
  req.m_iPBKeepAliveCount = 30;
  EXPECT_EQ(req.SendPBKeepAliveCommandExec(), -1);
  EXPECT_TRUE(Printed("SendPBKeepAliveCommandExec [Error] OpenSessionCommandExec failed\n"));
  EXPECT_EQ(req.iUid.load(), 1);
}

TEST_F(Exec, RecorderPlayModeMismatchFailsThePlayBackKeepAlive) {
  Aim(36, 4);
  req.iUid = -1;
  sessiontest::SetAuth(req, "admin", "password");
  TakeUid();
  auto values = device->Values();
  values.playMode = 5;
  device->SetValues(values);
  req.m_VOGPlayMode = 0;
  req.m_iPBKeepAliveCount = 30;
  EXPECT_EQ(req.SendPBKeepAliveCommandExec(), -1);
  EXPECT_TRUE(Printed(" SendPBKeepAliveCommandExec [Error] Play Mode Status Unmatch.\n"));
  req.m_VOGPlayMode = 5;
  req.m_iPBKeepAliveCount = 30;
  EXPECT_EQ(req.SendPBKeepAliveCommandExec(), 0);
}

TEST_F(Exec, PresetPassesA4xxAndSkipsWithoutPreset) {
  Aim(11, 0);
  TakeUid();
  req.usPresetNo = 0;
  EXPECT_EQ(req.SendCamPresetCommandExec(), 0);
  EXPECT_EQ(device->RequestCount(), 0u);
  req.usPresetNo = 3;
  EXPECT_EQ(req.SendCamPresetCommandExec(), 0);
  EXPECT_EQ(Paths(), Lines{"/cgi-bin/camctrl?preset=3"});
  camsim::Fault sFault;
  sFault.status = 404;
  device->SetFault("/cgi-bin/camctrl", sFault);
  EXPECT_EQ(req.SendCamPresetCommandExec(), 0) << "a 4xx passes the lenient request";
  sFault.status = 500;
  device->SetFault("/cgi-bin/camctrl", sFault);
  EXPECT_EQ(req.SendCamPresetCommandExec(), -1);
  EXPECT_EQ(req.iUid.load(), -1) << "a failed request forgets the UID";
  req.iUid = 1;
  req.usCameraType = 7;  // no presets on this type
  capture.Clear();
  EXPECT_EQ(req.SendCamPresetCommandExec(), -1);
  EXPECT_EQ(Texts().back(), "SendCamPresetCommandExec [Error] CGI failed\n");
}

TEST_F(Exec, IframeIntervalByType) {
  Aim(9, 0);
  TakeUid();
  EXPECT_EQ(req.SendCamIframInstCommandExec(), 0);
  req.iCmdType = 2;
  EXPECT_EQ(req.SendCamIframInstCommandExec(), 0);
  EXPECT_EQ(Paths(), (Lines{"/cgi-bin/h264_I_interval?stream=1", "/cgi-bin/mpeg4_I_interval?"}));
  camsim::Fault sFault;
  sFault.status = 500;
  device->SetFault("*", sFault);
  capture.Clear();
  EXPECT_EQ(req.SendCamIframInstCommandExec(), -1);
  EXPECT_TRUE(Printed("SendCamIframInstCommandExec [Error] camera session failed\n"));
  // A type without the command: the refusal counts as done.
  req.iUid = 1;
  req.usCameraType = 8;
  EXPECT_EQ(req.SendCamIframInstCommandExec(), 0);
}

TEST_F(Exec, ShortOfMemoryEveryPathClosesItsSession) {
  Aim(7, 0);
  TakeUid();
  camses::FailNextReplyAllocations(1);
  EXPECT_EQ(req.StreamStartCommandExec(), -1);
  EXPECT_TRUE(Printed("StreamStartCommandExec [Error] memory allocate failed\n"));
  camses::FailNextReplyAllocations(1);
  EXPECT_EQ(req.StreamStopCommandExec(), -1);
  EXPECT_TRUE(Printed("StreamStopCommandExec [Error] memory allocate failed\n"));
  camses::FailNextReplyAllocations(1);
  req.iUid = -1;
  EXPECT_EQ(req.SetupSessionCommandExec(), -1);
  EXPECT_TRUE(Printed("SetupSessionCommandExec [Error] memory allocate failed\n"));
  camses::FailNextReplyAllocations(0);
}

TEST_F(Exec, RecorderLogoutWithKeepAliveOn) {
  Aim(33, 0);
  sessiontest::SetAuth(req, "admin", "password");
  TakeUid();
  req.EnableKeepAlive();
  EXPECT_EQ(req.StreamStopCommandExec(), 0);
  EXPECT_EQ(Paths(), (Lines{"/cgi-bin/push.cgi?CMD=STOP&CAM=0&UID=1&PORT=5004&COMP=H264",
                            "/cgi-bin/logout.cgi?UID=1"}));
  EXPECT_TRUE(Printed("KelStreamStopCommandExec [DEBUG] cgi=/cgi-bin/logout.cgi?UID=1. \n"));
  EXPECT_TRUE(device->LiveUids().empty()) << "logged out";
}

TEST_F(Exec, LogoutOfACameraIsRefused) {
  Aim(7, 0);
  TakeUid();
  req.EnableKeepAlive();
  EXPECT_EQ(req.StreamStopCommandExec(), 0);
  EXPECT_TRUE(Printed("KelStreamStopCommandExec [ERROR] usCameraType = 7\n"));
  EXPECT_TRUE(Printed("KelStreamStopCommandExec [ERROR] KelStreamStopCommandExec NG\n"));
  EXPECT_EQ(device->RequestCount(), 1u);
}

}  // namespace
