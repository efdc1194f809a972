// The road of a live stream and of a play-back from a KEL recorder: the key
// in the session reply, the login with the transformed credentials, the
// push.cgi start, the status.cgi keep-alive, the stop and the logout.
#include <sys/socket.h>

#include <string>
#include <vector>

#include "RtpRoad.h"

namespace rtptest {
namespace {

struct Recorder {
  const char* pcAddress;
  uint16_t usType;
  const char* pcName;
};

bool IsLowerHex(const std::string& sText) {
  return sText.find_first_not_of("0123456789abcdef") == std::string::npos;
}

std::string RecorderName(const ::testing::TestParamInfo<Recorder>& rInfo) {
  return std::string(rInfo.param.pcAddress[0] == ':' ? "V6_" : "V4_") + rInfo.param.pcName;
}

class RecorderRoad : public RoadTest, public ::testing::WithParamInterface<Recorder> {
 protected:
  bool V6() const { return GetParam().pcAddress[0] == ':'; }
  camsim::DeviceConfig Config() const {
    camsim::DeviceConfig sConfig = CameraConfig(GetParam().pcAddress, GetParam().usType);
    sConfig.values.fileName = "=CAM_A_0042.DAT";
    return sConfig;
  }
  StreamSetup Setup(int iCmdType = CAM_REQUESTER_CMD_H264_RTP) const {
    StreamSetup s;
    s.iCmdType = iCmdType;
    s.usCameraType = GetParam().usType;
    s.sCamName = GetParam().pcName;
    s.sUser = "operator";
    s.sPassword = "s3cret!";
    return s;
  }
  // The key the recorder handed out, as the set-up printed it.
  std::string Key(const Stream& s) const {
    const std::string sHead = s.Line("SetupSessionCommandExec [DEBUG] strKey:");
    for (const std::string& sLine : m_capture.Lines()) {
      if (sLine.rfind(sHead, 0) == 0 && sLine.size() == sHead.size() + 7 && sLine.back() == '\n') {
        return sLine.substr(sHead.size(), 6);
      }
    }
    return "";
  }
  std::string IpLine(const char* pcWord) const {
    return std::string(pcWord) + ": IP:" + GetParam().pcAddress +
           " PORT:" + std::to_string(Camera().Port()) + " CamType:" + GetParam().pcName + "[" +
           std::to_string(GetParam().usType) + "] Pos:1 ";
  }
  // The codec part of the push.cgi line of H.264.
  std::string H264Comp() const { return GetParam().usType == 36 ? "COMP=H264&RES=1" : "COMP=H264"; }
  // Types 31, 34 and 36 take fixed audio settings; the others read them.
  bool FixedAudio() const {
    return GetParam().usType == 31 || GetParam().usType == 34 || GetParam().usType == 36;
  }
};

TEST_P(RecorderRoad, LoginPushKeepAliveStopLogout) {
  StartCamera(Config());
  Stream& s = AddStream(Setup());
  StartToRun(s);
  ASSERT_TRUE(WaitForRequest("GET /cgi-bin/status.cgi", 2)) << Tail();

  // What the upper layer can ask of the recorder session while it runs.
  CAM_KEL_INFO sInfo{};
  snprintf(sInfo.cIpAddr, sizeof(sInfo.cIpAddr), "%s", GetParam().pcAddress);
  sInfo.iHttpPort = Camera().Port();
  sInfo.usCameraType = GetParam().usType;
  snprintf(sInfo.CamName, sizeof(sInfo.CamName), "%s", GetParam().pcName);
  ASSERT_EQ(s.r().GetInfo(CAM_INFO_KELINFO, &sInfo), 0) << Tail();
  EXPECT_EQ(sInfo.iUid, 41);
  EXPECT_STREQ(sInfo.cSelfAddr, GetParam().pcAddress);
  EXPECT_EQ(sInfo.iSelfFamily, V6() ? AF_INET6 : AF_INET);
  EXPECT_EQ(sInfo.iPeerFamily, V6() ? AF_INET6 : AF_INET);
  EXPECT_EQ(sInfo.ucMulticast, 0);
  EXPECT_EQ(sInfo.iRtpPort, 5500);

  StopToIdle(s);
  const std::string sKey = Key(s);
  ASSERT_EQ(sKey.size(), 6u) << Tail();

  const std::string sStart = "/cgi-bin/push.cgi?CMD=START&CAM=0&UID=41&PORT=5500&" + H264Comp();
  const std::string sStop = "/cgi-bin/push.cgi?CMD=STOP&CAM=0&UID=41&PORT=5500&" + H264Comp();
  const std::string sStatus = "/cgi-bin/status.cgi?UID=41&HTML=as_status.html";
  const std::vector<camsim::RequestRecord> asRecords = Camera().Requests();
  const std::vector<std::string> asLines = RequestLines();
  ASSERT_GE(asLines.size(), 6u);
  EXPECT_EQ(asLines[0], "GET /cgi-bin/start.cgi?UID=-1 HTTP/1.0");
  // Both credentials travel as 64 hexadecimal digits, never in plain; the
  // recorder accepted them (200), so they were transformed with its key.
  const std::string sHead = "GET /cgi-bin/ulogin.cgi?USER=";
  const std::string sTail = "&KEY=" + sKey + "&TEMP=N HTTP/1.0";
  ASSERT_EQ(asLines[1].size(), sHead.size() + 64 + 6 + 64 + sTail.size()) << asLines[1];
  EXPECT_EQ(asLines[1].substr(0, sHead.size()), sHead);
  EXPECT_TRUE(IsLowerHex(asLines[1].substr(sHead.size(), 64))) << asLines[1];
  EXPECT_EQ(asLines[1].substr(sHead.size() + 64, 6), "&PASS=");
  EXPECT_TRUE(IsLowerHex(asLines[1].substr(sHead.size() + 70, 64))) << asLines[1];
  EXPECT_EQ(asLines[1].substr(sHead.size() + 134), sTail);
  EXPECT_EQ(asRecords[1].status, 200);
  EXPECT_EQ(asLines[1].find("operator"), std::string::npos);
  EXPECT_EQ(asLines[1].find("s3cret"), std::string::npos);
  EXPECT_EQ(asLines[2], "GET " + sStart + " HTTP/1.0");
  for (size_t i = 3; i + 2 < asLines.size(); ++i)
    EXPECT_EQ(asLines[i], "GET " + sStatus + " HTTP/1.0");
  EXPECT_EQ(asLines[asLines.size() - 2], "GET " + sStop + " HTTP/1.0");
  EXPECT_EQ(asLines.back(), "GET /cgi-bin/logout.cgi?UID=41 HTTP/1.0");
  EXPECT_TRUE(Camera().LiveUids().empty()) << "the logout released the UID";

  const std::string sLoginCgi =
      Normalized(asRecords[1].requestLine.substr(4, asRecords[1].requestLine.size() - 13));
  std::vector<std::string> asExpected = {
      s.Line("ChangeStatus [DEBUG] Video Event=0:0 -> 2. \n"),
      s.Line("SetupSessionCommandExec [DEBUG] " + IpLine("RTP") + "\n"),
      s.Line("SetupSessionCommandExec [DEBUG] cgi=/cgi-bin/start.cgi?UID=-1. \n"),
      s.Line("SetupSessionCommandExec [DEBUG] strKey:" + sKey + "\n"),
      s.Line("KelSetupSessionCommandExec [DEBUG] " + IpLine("Rtp") + "\n"),
      s.Line("KelSetupSessionCommandExec [DEBUG] cgi=" + sLoginCgi + ". \n"),
      s.Line("CheckCamInfo_RcvData [DEBUG] uid=41 aBitrate=" +
             std::string(FixedAudio() ? "32" : "24") + " aEnable=" + (FixedAudio() ? "1" : "1") +
             " IP:" + GetParam().pcAddress + " ScreenPos:1\n"),
      s.Line("CheckCamInfo_RcvData [DEBUG] SerachString sDelivery=uni\n"),
      s.Line("GetMultiUniSetup [DEBUG] sa_family=" + std::string(V6() ? "AF_INET6" : "AF_INET") +
             " \n"),
      s.Line("ChangeStatus [DEBUG] Video Event=2:2 -> 3. \n"),
      s.Line("CCamRequester_Cgi_Kobu_Rtp::SetupSessionCommand [DEBUG] ConnectErrorReset\n"),
      s.Line("StreamStartCommandExec [DEBUG] cgi=" + sStart + ". \n"),
      s.Line("ChangeStatus [DEBUG] Video Event=4:3 -> 4. \n"),
      s.Line("SendKeepAliveCommandExec [DEBUG] cgi=" + sStatus + ". \n"),
      s.Line(" CheckKeepAlive_RcvData [DEBUG] KE REC SERIES !!\n"),
      s.Line(" CheckKeepAlive_RcvData [DEBUG] FILENAME EXIST. [ =CAM_A_0042.DAT ]\n"),
      s.Line("SendKeepAliveCommandExec OUT!!!!!. \n"),
      s.Line("ChangeStatus [DEBUG] Video Event=1:4 -> 5. \n"),
      s.Line("StreamStopCommandExec [DEBUG] cgi=" + sStop + ". \n"),
      s.Line("KelStreamStopCommandExec [DEBUG] cgi=/cgi-bin/logout.cgi?UID=41. \n"),
      s.Line("ChangeStatus [DEBUG] Video Event=8:5 -> 0. \n")};
  ExpectLines(asExpected);

  const std::vector<camtest::RtpNotice> asNotices = s.pNotify->RtpNotices();
  ASSERT_EQ(asNotices.size(), 1u);
  EXPECT_EQ(asNotices[0].iUid, 41);
  EXPECT_TRUE(asNotices[0].bSessionInfo);
  EXPECT_EQ(asNotices[0].iRtpPort, 5500);
  EXPECT_EQ(asNotices[0].sMultiAddr, "");
  EXPECT_EQ(asNotices[0].iCmdType, CAM_REQUESTER_CMD_H264_RTP);
  if (FixedAudio()) {
    EXPECT_EQ(asNotices[0].iAudioBitrate, 32);
    EXPECT_EQ(asNotices[0].iAudioEnable, 1);
  }
  int32_t aiPayload[3] = {};
  ASSERT_TRUE(m_pUidReceiver->Next(aiPayload));
  EXPECT_EQ(aiPayload[2], 0);
}

TEST_P(RecorderRoad, WrongPasswordIsRefusedAndCountsAsFailure) {
  StartCamera(Config());
  StreamSetup sSetup = Setup();
  sSetup.sPassword = "s3cret?";
  Stream& s = AddStream(sSetup);
  s.r().RequestStart();
  ASSERT_TRUE(m_capture.WaitFor(s.Line("ChangeStatus [DEBUG] Video Event=3:2 -> 1. \n"))) << Tail();
  // A recorder's video is rebuilt on the next idle round, not after 30.
  ASSERT_TRUE(WaitForRequest("GET /cgi-bin/ulogin.cgi", 2)) << Tail();
  s.r().RequestStop();
  ASSERT_TRUE(WaitStatus(s, CAM_HTTP_STS_IDLE));

  const std::vector<camsim::RequestRecord> asRecords = Camera().Requests();
  ASSERT_GE(asRecords.size(), 2u);
  EXPECT_EQ(asRecords[1].path, "/cgi-bin/ulogin.cgi");
  EXPECT_EQ(asRecords[1].status, 403);
  EXPECT_EQ(CountRequests("GET /cgi-bin/push.cgi"), 0);
  ExpectLines({s.Line("DoRequest [Error] ret =8000403\n"),
               s.Line("DoRequest [Error] http_get_response failed2:ret =8000403\n"),
               s.Line("KelSetupSessionCommandExec [Error] DoRequest failed\n"),
               s.Line("ChangeStatus [DEBUG] Video Event=3:2 -> 1. \n"),
               s.Line("CCamRequester_Cgi_Kobu_Rtp::SetupSessionCommand [ERROR] open faild IP:" +
                      std::string(GetParam().pcAddress) +
                      "  Port:" + std::to_string(Camera().Port()) + "\n"),
               "RequestThreadMain [DEBUG] RESTART TINDEX=" + s.Tindex() + "\n"});
  EXPECT_TRUE(m_capture.Contains("[CCamR::ConnectError] m_iErrorCount = [1]")) << Tail();
  // A recorder's failure does not make its UID invalid.
  EXPECT_TRUE(s.pNotify->RtpNotices().empty());
  EXPECT_FALSE(m_capture.Contains("UidInvalid"));
}

TEST_P(RecorderRoad, KeepAliveOffNoStatusNoLogout) {
  StartCamera(Config());
  StreamSetup sSetup = Setup(CAM_REQUESTER_CMD_MPEG4_RTP);
  sSetup.bKeepAlive = false;
  Stream& s = AddStream(sSetup);
  StartToRun(s);
  StopToIdle(s);
  const std::vector<std::string> asLines = RequestLines();
  ASSERT_EQ(asLines.size(), 4u);
  EXPECT_EQ(asLines[0], "GET /cgi-bin/start.cgi?UID=-1 HTTP/1.0");
  EXPECT_EQ(asLines[1].rfind("GET /cgi-bin/ulogin.cgi?USER=", 0), 0u);
  EXPECT_EQ(asLines[2],
            "GET /cgi-bin/push.cgi?CMD=START&CAM=0&UID=41&PORT=5500&COMP=MPEG4 HTTP/1.0");
  EXPECT_EQ(asLines[3],
            "GET /cgi-bin/push.cgi?CMD=STOP&CAM=0&UID=41&PORT=5500&COMP=MPEG4 HTTP/1.0");
  EXPECT_TRUE(
      m_capture.Contains(s.Line("KelStreamStopCommandExec [DEBUG] KEL Logout CGI Command No!!\n")))
      << Tail();
}

std::vector<Recorder> Recorders() {
  std::vector<Recorder> asOut;
  for (const char* pcAddress : {"127.0.0.1", "::1"}) {
    asOut.push_back({pcAddress, 31, "KEL31"});
    asOut.push_back({pcAddress, 32, "KEL32"});
    asOut.push_back({pcAddress, 33, "KEL33"});
    asOut.push_back({pcAddress, 34, "KE850"});
    asOut.push_back({pcAddress, 35, "KEL35"});
    asOut.push_back({pcAddress, 36, "KEL36"});
  }
  return asOut;
}

INSTANTIATE_TEST_SUITE_P(Kel, RecorderRoad, ::testing::ValuesIn(Recorders()), RecorderName);

// ---- play-back ---------------------------------------------------------------

struct PlayBack {
  const char* pcAddress;
  int iCmdType;
};

class PlayBackRoad : public RoadTest, public ::testing::WithParamInterface<PlayBack> {
 protected:
  Stream& Start(int iCameraPlayMode) {
    camsim::DeviceConfig sConfig = CameraConfig(GetParam().pcAddress, 34);
    sConfig.values.playMode = iCameraPlayMode;
    StartCamera(sConfig);
    StreamSetup sSetup;
    sSetup.iCmdType = GetParam().iCmdType;
    sSetup.usCameraType = 34;
    sSetup.sCamName = "KE850";
    sSetup.sUser = "operator";
    sSetup.sPassword = "s3cret!";
    Stream& s = AddStream(sSetup);
    s.r().RequestPBStart();
    EXPECT_TRUE(WaitStatus(s, CAM_HTTP_STS_READY)) << Tail();
    // The upper layer reports that the stream arrives.
    const int32_t iRun = 1;
    EXPECT_EQ(s.r().SetParameter(CAM_PARAM_STATUSCHANGE, &iRun, sizeof(iRun)), 0);
    EXPECT_EQ(s.Status(), CAM_HTTP_STS_RUN);
    return s;
  }
  // The play-back keep-alive goes out on every 30th call.
  void KeepAlive30(Stream& s) {
    const int iBefore = CountRequests("GET /cgi-bin/status.cgi");
    for (int i = 0; i < 29; ++i) EXPECT_EQ(s.r().SendPBKeepAliveCommand(), 0);
    EXPECT_EQ(CountRequests("GET /cgi-bin/status.cgi"), iBefore);
    EXPECT_EQ(s.r().SendPBKeepAliveCommand(), 0);
    EXPECT_EQ(CountRequests("GET /cgi-bin/status.cgi"), iBefore + 1);
  }
  std::string Word() const { return GetParam().iCmdType == 3 ? "MPEG4_PLAY" : "H264_PLAY"; }
};

TEST_P(PlayBackRoad, SetUpRunKeepAliveMatchAndStopWithLogout) {
  Stream& s = Start(3);
  const std::string sAddr = GetParam().pcAddress;
  const std::string sStatus = "GET /cgi-bin/status.cgi?UID=41&HTML=as_status.html HTTP/1.0";
  // Modes other than 0 and 5 match whatever this device expects.
  KeepAlive30(s);
  EXPECT_EQ(s.Status(), CAM_HTTP_STS_RUN);
  // Mode 5 matches only an expected 5.
  const int32_t iFive = 5;
  ASSERT_EQ(s.r().SetParameter(CAM_PARAM_PLAYMODE, &iFive, sizeof(iFive)), 0);
  camsim::ReplyValues sValues = Camera().Values();
  sValues.playMode = 5;
  Camera().SetValues(sValues);
  KeepAlive30(s);
  EXPECT_EQ(s.Status(), CAM_HTTP_STS_RUN);

  s.r().RequestPBStop();
  ASSERT_TRUE(WaitStatus(s, CAM_HTTP_STS_IDLE)) << Tail();
  const std::vector<std::string> asLines = RequestLines();
  ASSERT_EQ(asLines.size(), 5u);
  EXPECT_EQ(asLines[0], "GET /cgi-bin/start.cgi?UID=-1 HTTP/1.0");
  EXPECT_EQ(asLines[1].rfind("GET /cgi-bin/ulogin.cgi?USER=", 0), 0u);
  EXPECT_EQ(asLines[2], sStatus);
  EXPECT_EQ(asLines[3], sStatus);
  EXPECT_EQ(asLines[4], "GET /cgi-bin/logout.cgi?UID=41 HTTP/1.0");

  ExpectLines(
      {"RequestThreadMain [DEBUG] START command TINDEX=" + s.Tindex() + "\n",
       s.Line("ChangeStatus [DEBUG] Video Event=0:0 -> 2. \n"),
       s.Line("SetupSessionCommandExec [DEBUG] cgi=/cgi-bin/start.cgi?UID=-1. \n"),
       s.Line("SetupSessionCommandExec [DEBUG] host:" + sAddr + " \n"),
       s.Line("SetupSessionCommandExec [DEBUG] port:" + std::to_string(Camera().Port()) + " \n"),
       s.Line("ChangeStatus [DEBUG] Video Event=2:2 -> 3. \n"),
       s.Line("SetParameterStatusChange [DEBUG] Change Status:CAM_HTTP_EVT_RUN_SUCCESS\n"),
       s.Line("ChangeStatus [DEBUG] Video Event=4:3 -> 4. \n"),
       s.Line("SendPBKeepAliveCommandExec [DEBUG] "
              "cgi=/cgi-bin/status.cgi?UID=41&HTML=as_status.html. \n"),
       s.Line(" CheckPlayMode_RcvData [DEBUG] KE REC SERIES !!\n"),
       s.Line("CheckPlayMode_RcvData [DEBUG] PLAY_MODE Match [m_KELPlayMode:3][m_VOGPlayMode:0]\n"),
       s.Line("CheckPlayMode_RcvData [DEBUG] PLAY_MODE Match [m_KELPlayMode:5][m_VOGPlayMode:5]\n"),
       "RequestThreadMain [DEBUG] STOP command TINDEX=" + s.Tindex() + "\n",
       s.Line("ChangeStatus [DEBUG] Video Event=1:4 -> 5. \n"),
       s.Line("KelStreamStopCommandExec [DEBUG] cgi=/cgi-bin/logout.cgi?UID=41. \n"),
       s.Line("ChangeStatus [DEBUG] Video Event=8:5 -> 0. \n")});
  // Play-back prints the set-up's success line but takes no part in the
  // connection-error accounting, and never starts a live delivery.
  EXPECT_TRUE(m_capture.Contains(
      s.Line("CCamRequester_Cgi_Kobu_Rtp::SetupSessionCommand [DEBUG] ConnectErrorReset\n")));
  EXPECT_FALSE(m_capture.Contains("[CCamR::"));
  EXPECT_FALSE(m_capture.Contains("StreamStartCommandExec"));

  const std::vector<camtest::RtpNotice> asNotices = s.pNotify->RtpNotices();
  ASSERT_EQ(asNotices.size(), 1u);
  EXPECT_EQ(asNotices[0].iUid, 41);
  EXPECT_EQ(asNotices[0].iCmdType, GetParam().iCmdType);
  EXPECT_TRUE(asNotices[0].bSessionInfo);
  EXPECT_EQ(asNotices[0].usSessionPort, Camera().Port());
}

TEST_P(PlayBackRoad, PlayModeMismatchEndsTheRun) {
  Stream& s = Start(5);  // this device expects 0
  KeepAlive30(s);
  EXPECT_EQ(s.Status(), CAM_HTTP_STS_ERROR);
  ExpectLines(
      {s.Line(" CheckKeepAlive_RcvData [DEBUG] FILENAME EXIST. [ =REC0001.DAT ]\n"),
       s.Line(
           "CheckPlayMode_RcvData [Error] PLAY_MODE Unmatch [m_KELPlayMode:5][m_VOGPlayMode:0]\n"),
       s.Line(" SendPBKeepAliveCommandExec [Error] Play Mode Status Unmatch.\n"),
       s.Line("ChangeStatus [DEBUG] Video Event=6:4 -> 1. \n")});
  // A failed play-back keep-alive keeps the UID.
  EXPECT_FALSE(m_capture.Contains("UidInvalid"));
  // Left in status 1, the thread rebuilds as a live start, which a
  // play-back type refuses.
  ASSERT_TRUE(m_capture.WaitFor("RequestThreadMain [DEBUG] RESTART TINDEX=" + s.Tindex() + "\n"));
  ASSERT_TRUE(m_capture.WaitFor(s.Line("StreamStartCommandExec [Error] iCmdType:" + Word() + "\n")))
      << Tail();
  ASSERT_TRUE(WaitStatus(s, CAM_HTTP_STS_ERROR));
  s.r().RequestPBStop();
  ASSERT_TRUE(WaitStatus(s, CAM_HTTP_STS_IDLE)) << Tail();
}

INSTANTIATE_TEST_SUITE_P(Kel34, PlayBackRoad,
                         ::testing::Values(PlayBack{"127.0.0.1", CAM_REQUESTER_CMD_MPEG4_PLAY},
                                           PlayBack{"127.0.0.1", CAM_REQUESTER_CMD_H264_PLAY},
                                           PlayBack{"::1", CAM_REQUESTER_CMD_MPEG4_PLAY},
                                           PlayBack{"::1", CAM_REQUESTER_CMD_H264_PLAY}),
                         [](const ::testing::TestParamInfo<PlayBack>& rInfo) {
                           return std::string(rInfo.param.pcAddress[0] == ':' ? "V6_" : "V4_") +
                                  (rInfo.param.iCmdType == 3 ? "Mpeg4Play" : "H264Play");
                         });

// ---- a recorder stream whose owner hands the UID over, and recorder audio ------

class RecorderGroup : public RoadTest, public ::testing::WithParamInterface<const char*> {
 protected:
  StreamSetup Setup(int iPos) const {
    StreamSetup s;
    s.usCameraType = 34;
    s.sCamName = "KE850";
    s.sUser = "operator";
    s.sPassword = "s3cret!";
    s.iPos = iPos;
    s.iRtpPort = 5500 + iPos;
    return s;
  }
  // The first stream logs in; its UID is what the owner hands on.
  Stream& First() {
    StartCamera(CameraConfig(GetParam(), 34));
    Stream& a = AddStream(Setup(1));
    StartToRun(a);
    return a;
  }
};

TEST_P(RecorderGroup, ControlledStreamWaitsForTheUidFromOutside) {
  Stream& a = First();
  Stream& b = AddStream(Setup(2));
  const int32_t iOn = 1;
  ASSERT_EQ(b.r().SetParameter(CAM_PARAM_CTRLFLAG_KEL, &iOn, sizeof(iOn)), 0);
  int32_t iFlag = 0;
  ASSERT_EQ(b.r().GetInfo(CAM_INFO_CTRLFLAG_KEL, &iFlag), 0);
  EXPECT_EQ(iFlag, 1);

  b.r().RequestStart();
  ASSERT_TRUE(m_capture.WaitFor(b.Line("SetupSessionCommandExec [DEBUG] Wait set KEL UID\n")))
      << Tail();
  // The owner decides: no failed set-up, no error count, nothing sent.
  ASSERT_TRUE(m_capture.WaitFor(b.Line("StreamStartCommand [DEBUG] NOP iConnectStatus=")))
      << Tail();
  EXPECT_EQ(m_capture.Count(b.Line("ChangeStatus [DEBUG] Video Event=3:2 -> 1. \n")), 0);
  EXPECT_FALSE(m_capture.Contains(b.Line("[CCamR::ConnectError]")));
  EXPECT_EQ(CountRequests("GET /cgi-bin/start.cgi"), 1);
  EXPECT_TRUE(b.pNotify->RtpNotices().empty());

  // The owner hands over the UID of the group's login.
  CAM_KEL_INFO sInfo{};
  snprintf(sInfo.cIpAddr, sizeof(sInfo.cIpAddr), "%s", GetParam());
  sInfo.iHttpPort = Camera().Port();
  sInfo.usCameraType = 34;
  snprintf(sInfo.CamName, sizeof(sInfo.CamName), "%s", "KE850");
  ASSERT_EQ(a.r().GetInfo(CAM_INFO_KELINFO, &sInfo), 0);
  ASSERT_EQ(sInfo.iUid, 41);
  sInfo.iRtpPort = 5502;
  ASSERT_EQ(b.r().SetParameter(CAM_PARAM_KELINFO, &sInfo, sizeof(sInfo)), 0);
  b.r().RequestStart();
  ASSERT_TRUE(WaitStatus(b, CAM_HTTP_STS_RUN)) << Tail();
  ASSERT_TRUE(WaitForRequest("GET /cgi-bin/push.cgi?CMD=START&CAM=0&UID=41&PORT=5502&COMP=H264"))
      << Tail();
  // No login of its own; the completed set-up clears the flag.
  EXPECT_EQ(CountRequests("GET /cgi-bin/start.cgi"), 1);
  EXPECT_EQ(CountRequests("GET /cgi-bin/ulogin.cgi"), 1);
  ASSERT_EQ(b.r().GetInfo(CAM_INFO_CTRLFLAG_KEL, &iFlag), 0);
  EXPECT_EQ(iFlag, 0);
  const std::vector<camtest::RtpNotice> asNotices = b.pNotify->RtpNotices();
  ASSERT_FALSE(asNotices.empty());
  EXPECT_EQ(asNotices.back().iUid, 41);
  EXPECT_EQ(asNotices.back().iPos, 2);
  EXPECT_FALSE(asNotices.back().bSessionInfo);  // no exchange, no session block
}

TEST_P(RecorderGroup, AudioOnTheGroupUidIsPushedAndNotChecked) {
  First();
  StreamSetup sAudio = Setup(3);
  sAudio.iCmdType = CAM_REQUESTER_CMD_G726_RTP;
  sAudio.iUid = 41;
  Stream& c = AddStream(sAudio);
  StartToRun(c);
  // Two stream checks pass: recorder audio is only named, never asked about.
  ASSERT_TRUE(m_capture.WaitForCount(
      c.Line("CheckStreamStart [DEBUG] CAM_REQUESTER_CMD_G726_RTP\n"), 2, kLimit))
      << Tail();
  EXPECT_GE(m_capture.Count(c.Line("CheckStreamStart [DEBUG] CAM_REQUESTER_CAMTYPE_KE850\n")), 1);
  EXPECT_TRUE(c.pNotify->StateQueries().empty());
  StopToIdle(c);
  ExpectInOrder(RequestLines(),
                {"GET /cgi-bin/push.cgi?CMD=START&CAM=0&UID=41&PORT=5503&COMP=AUDIO HTTP/1.0",
                 "GET /cgi-bin/status.cgi?UID=41&HTML=as_status.html HTTP/1.0",
                 "GET /cgi-bin/push.cgi?CMD=STOP&CAM=0&UID=41&PORT=5503&COMP=AUDIO HTTP/1.0",
                 "GET /cgi-bin/logout.cgi?UID=41 HTTP/1.0"});
  ExpectLines({c.Line("ChangeStatus [DEBUG] Audio Event=0:0 -> 3. \n"),
               c.Line("ChangeStatus [DEBUG] Audio Event=4:3 -> 4. \n"),
               c.Line("ChangeStatus [DEBUG] Audio Event=1:4 -> 5. \n"),
               c.Line("ChangeStatus [DEBUG] Audio Event=8:5 -> 0. \n")});
}

INSTANTIATE_TEST_SUITE_P(Kel34, RecorderGroup, ::testing::Values("127.0.0.1", "::1"),
                         [](const ::testing::TestParamInfo<const char*>& rInfo) {
                           return std::string(rInfo.param[0] == ':' ? "V6" : "V4");
                         });

}  // namespace
}  // namespace rtptest
