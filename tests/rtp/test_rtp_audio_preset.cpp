// G.726 audio beside a video stream of the same camera, and the two
// commands that move or tune a running camera: the preset position and the
// I-frame interval.
#include <string>
#include <vector>

#include "RtpRoad.h"

namespace rtptest {
namespace {

// ---- G.726 audio -----------------------------------------------------------

struct Audio {
  const char* pcAddress;
  const char* pcEnable;  // what the camera reports as "aEnable="
};

class AudioRoad : public RoadTest, public ::testing::WithParamInterface<Audio> {};

TEST_P(AudioRoad, StartsWithoutSetUpOnTheVideoUid) {
  camsim::DeviceConfig sConfig = CameraConfig(GetParam().pcAddress, 7);
  sConfig.values.audioEnable = GetParam().pcEnable;
  StartCamera(sConfig);
  const bool bIn = std::string(GetParam().pcEnable) == "in";

  // The video stream obtains the UID and learns the camera's audio setting.
  Stream& v = AddStream(StreamSetup());
  StartToRun(v);
  const std::vector<camtest::RtpNotice> asVideo = v.pNotify->RtpNotices();
  ASSERT_EQ(asVideo.size(), 1u);
  EXPECT_EQ(asVideo[0].iAudioEnable, bIn ? 100 : 1);

  // The upper layer hands both to the audio requester.
  StreamSetup sAudio;
  sAudio.iCmdType = CAM_REQUESTER_CMD_G726_RTP;
  sAudio.iRtpPort = 5600;
  sAudio.iPos = 2;
  sAudio.iCamNo = 4;
  sAudio.iUid = asVideo[0].iUid;
  sAudio.iAudioEnable = asVideo[0].iAudioEnable;
  Stream& a = AddStream(sAudio);
  Camera().ClearRequests();
  StartToRun(a);
  StopToIdle(a);

  const std::string sMode = bIn ? "&mode=in" : "";
  // The video stream's keep-alives may come in between; they are left out.
  EXPECT_EQ(CollapsedRequestLines("mode=h264"),
            (std::vector<std::string>{
                "GET /cgi-bin/audio?connect=start&protocol=rtp&my_port=5600" + sMode +
                    "&UID=41&page=N&stream=1 HTTP/1.0",
                "GET /cgi-bin/keep_alive?mode=audio&protocol=rtp&UID=41&page=N&stream=1 HTTP/1.0",
                "GET /cgi-bin/audio?connect=stop&protocol=rtp&my_port=5600" + sMode +
                    "&UID=41&page=N&stream=1 HTTP/1.0"}));
  ExpectLines({a.Line("ChangeStatus [DEBUG] Audio Event=0:0 -> 3. \n"),
               a.Line("CmdSet_AudioDistribute [DEBUG] Camera Type = 7 \n"),
               a.Line("ChangeStatus [DEBUG] Audio Event=4:3 -> 4. \n"),
               a.Line("ChangeStatus [DEBUG] Audio Event=1:4 -> 5. \n"),
               a.Line("ChangeStatus [DEBUG] Audio Event=8:5 -> 0. \n")});
  // Audio is never set up: no session request, no notification, no UID
  // message of its own.
  EXPECT_TRUE(a.pNotify->RtpNotices().empty());
  EXPECT_FALSE(m_capture.Contains(a.Line("SetupSessionCommandExec")));
  int32_t aiPayload[3] = {};
  ASSERT_TRUE(m_pUidReceiver->Next(aiPayload));  // the video stream's
  EXPECT_EQ(aiPayload[0], 0);
  EXPECT_FALSE(m_pUidReceiver->Next(aiPayload));
  StopToIdle(v);
}

TEST_P(AudioRoad, LostUidKeepsItAndTellsNobody) {
  StartCamera(CameraConfig(GetParam().pcAddress, 7));
  Stream& v = AddStream(StreamSetup());
  StartToRun(v);
  StreamSetup sAudio;
  sAudio.iCmdType = CAM_REQUESTER_CMD_G726_RTP;
  sAudio.iPos = 2;
  sAudio.iUid = 41;
  sAudio.iAudioEnable = 1;
  Stream& a = AddStream(sAudio);
  StartToRun(a);
  // The camera restarts and forgets every UID: the next audio keep-alive
  // fails.
  Camera().ForgetUids();
  ASSERT_TRUE(m_capture.WaitFor(a.Line("ChangeStatus [DEBUG] Audio Event=6:4 -> 1. \n"))) << Tail();
  EXPECT_GE(m_capture.Count(a.Line("UidInvalid [DEBUG] G.726:\n")), 2);
  EXPECT_TRUE(a.pNotify->RtpNotices().empty());
}

INSTANTIATE_TEST_SUITE_P(Camera7, AudioRoad,
                         ::testing::Values(Audio{"127.0.0.1", "in"}, Audio{"127.0.0.1", "1"},
                                           Audio{"::1", "in"}, Audio{"::1", "1"}),
                         [](const ::testing::TestParamInfo<Audio>& rInfo) {
                           return std::string(rInfo.param.pcAddress[0] == ':' ? "V6_" : "V4_") +
                                  (rInfo.param.pcEnable[0] == 'i' ? "In" : "On");
                         });

// ---- preset ------------------------------------------------------------------

class Preset : public RoadTest, public ::testing::WithParamInterface<const char*> {
 protected:
  StreamSetup Camera11() const {
    StreamSetup s;
    s.usCameraType = 11;
    s.sCamName = "CAM11";
    s.usPreset = 5;
    s.usSelectChNo = 2;
    return s;
  }
};

TEST_P(Preset, SentBetweenSetUpAndStartAndOnRequest) {
  StartCamera(CameraConfig(GetParam(), 11));
  Stream& s = AddStream(Camera11());
  StartToRun(s);
  ASSERT_EQ(s.r().RequestPresetPosition(), 0);
  ASSERT_TRUE(WaitForRequest("GET /cgi-bin/camctrl", 2)) << Tail();
  StopToIdle(s);
  const std::string sPreset = "GET /cgi-bin/camctrl?preset=5&ch=2 HTTP/1.0";
  const std::string sKeepAlive =
      "GET /cgi-bin/keep_alive?mode=h264&protocol=rtp&ch=2&UID=41&page=N&stream=1 HTTP/1.0";
  const std::vector<std::string> asLines = CollapsedRequestLines();
  ASSERT_GE(asLines.size(), 6u);
  EXPECT_EQ(asLines[0], "GET /cgi-bin/getuid?FILE=2&vcodec=h264&ch=2 HTTP/1.0");
  EXPECT_EQ(asLines[1], sPreset);
  EXPECT_EQ(
      asLines[2],
      "GET /cgi-bin/h264?connect=start&protocol=rtp&my_port=5004&ch=2&UID=41&stream=1 HTTP/1.0");
  EXPECT_EQ(asLines[3], sKeepAlive);
  ExpectInOrder(asLines, {sKeepAlive, sPreset,
                          "GET /cgi-bin/h264?connect=stop&protocol=rtp&my_port=5004&ch=2&UID=41&"
                          "stream=1 HTTP/1.0"});
  EXPECT_EQ(CountRequests(sPreset), 2);
  const std::vector<camsim::RequestRecord> asRecords = Camera().Requests();
  const bool bV6 = GetParam()[0] == ':';
  EXPECT_EQ(asRecords[1].Header("Connection"), "Keep-Alive");
  EXPECT_EQ(asRecords[1].Header("Host"), bV6 ? "[::1]" : "127.0.0.1");
  ExpectLines({s.Line("SendCamPresetCommandExec [DEBUG] cgi=/cgi-bin/camctrl?preset=5&ch=2. \n"),
               "RequestThreadMain [DEBUG] PRESET command TINDEX=" + s.Tindex() + "\n",
               s.Line("SendCamPresetCommandExec [DEBUG] cgi=/cgi-bin/camctrl?preset=5&ch=2. \n")});
}

TEST_P(Preset, UpperCaseFormOnCamera13WithAGivenUid) {
  StartCamera(CameraConfig(GetParam(), 13));
  StreamSetup sSetup;
  sSetup.usCameraType = 13;
  sSetup.sCamName = "CAM13";
  sSetup.usPreset = 16;
  sSetup.iUid = 77;
  Stream& s = AddStream(sSetup);
  ASSERT_EQ(s.r().RequestPresetPosition(), 0);
  ASSERT_TRUE(WaitForRequest("GET /cgi-bin/camctrl")) << Tail();
  // 17 is beyond what camera type 13 takes: refused and reset to none.
  const uint16_t usSeventeen = 17;
  EXPECT_EQ(s.r().SetParameter(CAM_PARAM_PRESET, &usSeventeen, sizeof(usSeventeen)), -1);
  ASSERT_EQ(s.r().RequestPresetPosition(), 0);
  ASSERT_TRUE(m_capture.WaitForCount("PRESET command TINDEX=", 2));
  // Both PRESET messages were handled (and freed): only the first sent.
  ASSERT_TRUE(m_capture.WaitForCount("RequestThreadMain [DEBUG] COM_MsgBufFree=", 2));
  EXPECT_EQ(RequestLines(), std::vector<std::string>{"GET /cgi-bin/camctrl?PRESET=16 HTTP/1.0"});
  EXPECT_EQ(s.Status(), CAM_HTTP_STS_IDLE);
}

TEST_P(Preset, ClientErrorPassesServerErrorFailsAndIsRebuilt) {
  StartCamera(CameraConfig(GetParam(), 11));
  Stream& s = AddStream(Camera11());
  StartToRun(s);
  camsim::Fault sFault;
  sFault.status = 404;
  sFault.times = 1;
  Camera().SetFault("/cgi-bin/camctrl", sFault);
  ASSERT_EQ(s.r().RequestPresetPosition(), 0);
  ASSERT_TRUE(WaitForRequest("GET /cgi-bin/camctrl", 2));
  // The 404 passes the lenient request: nothing changes.
  ASSERT_TRUE(m_capture.WaitForCount(s.Line("SendCamPresetCommandExec [DEBUG] free="), 2))
      << Tail();
  EXPECT_EQ(s.Status(), CAM_HTTP_STS_RUN);
  EXPECT_FALSE(m_capture.Contains("DoRequest2 [Error]"));
  EXPECT_EQ(s.pNotify->RtpNotices().size(), 1u);

  sFault.status = 503;
  Camera().SetFault("/cgi-bin/camctrl", sFault);
  ASSERT_EQ(s.r().RequestPresetPosition(), 0);
  ASSERT_TRUE(m_capture.WaitFor(s.Line("ChangeStatus [DEBUG] Video Event=6:4 -> 1. \n"))) << Tail();
  ExpectLines({s.Line("DoRequest2 [Error] ret =8000503\n"),
               s.Line("DoRequest2 [Error] http_get_response failed2:ret =8000503\n"),
               s.Line("UidInvalid [DEBUG] H.264:\n"),
               s.Line("ChangeStatus [DEBUG] Video Event=6:4 -> 1. \n")});
  const std::vector<camtest::RtpNotice> asNotices = s.pNotify->RtpNotices();
  ASSERT_EQ(asNotices.size(), 2u);
  EXPECT_EQ(asNotices[1].iUid, -1);
  // Rebuilt after 30 idle rounds, with a new UID and the preset again.
  ASSERT_TRUE(s.pNotify->WaitForRtpNotices(3, kLimit));
  ASSERT_TRUE(WaitStatus(s, CAM_HTTP_STS_RUN)) << Tail();
  EXPECT_EQ(s.pNotify->RtpNotices()[2].iUid, 42);
  EXPECT_EQ(CountRequests("GET /cgi-bin/camctrl?preset=5&ch=2 HTTP/1.0"), 4);
}

INSTANTIATE_TEST_SUITE_P(Camera, Preset, ::testing::Values("127.0.0.1", "::1"),
                         [](const ::testing::TestParamInfo<const char*>& rInfo) {
                           return std::string(rInfo.param[0] == ':' ? "V6" : "V4");
                         });

// ---- I-frame interval ------------------------------------------------------------

struct Iframe {
  const char* pcAddress;
  uint16_t usType;
  int iCmdType;
  uint8_t ucStream;
  const char* pcLine;  // null: the camera type takes no such command
};

class IframeInterval : public RoadTest, public ::testing::WithParamInterface<Iframe> {};

TEST_P(IframeInterval, SentOnlyWhereTheCameraTakesIt) {
  StartCamera(CameraConfig(GetParam().pcAddress, GetParam().usType));
  StreamSetup sSetup;
  sSetup.usCameraType = GetParam().usType;
  sSetup.sCamName = "CAM";
  sSetup.iCmdType = GetParam().iCmdType;
  sSetup.ucStream = GetParam().ucStream;
  sSetup.bKeepAlive = false;  // the request thread leaves the session alone
  Stream& s = AddStream(sSetup);
  StartToRun(s);
  Camera().ClearRequests();
  EXPECT_EQ(s.r().SendCamIframInstCommand(), 0);
  EXPECT_EQ(s.Status(), CAM_HTTP_STS_RUN);
  if (GetParam().pcLine == nullptr) {
    EXPECT_TRUE(RequestLines().empty());
    EXPECT_TRUE(
        m_capture.Contains(s.Line("CmdSet_H264_IframInst [ERROR] Unknown Camera Type enum#[" +
                                  std::to_string(GetParam().usType) + "]\n")));
  } else {
    EXPECT_EQ(RequestLines(),
              std::vector<std::string>{"GET " + std::string(GetParam().pcLine) + " HTTP/1.0"});
    // A failed exchange raises the error event.
    camsim::Fault sFault;
    sFault.status = 500;
    const std::string sLine = GetParam().pcLine;
    Camera().SetFault(sLine.substr(0, sLine.find('?')), sFault);
    EXPECT_EQ(s.r().SendCamIframInstCommand(), 0);
    EXPECT_EQ(s.Status(), CAM_HTTP_STS_ERROR);
    ExpectLines({s.Line("DoRequest [Error] ret =8000500\n"),
                 s.Line("SendCamIframInstCommandExec [Error] camera session failed\n"),
                 s.Line("ChangeStatus [DEBUG] Video Event=6:4 -> 1. \n")});
    Camera().ClearFaults();
  }
}

std::vector<Iframe> IframeRows() {
  std::vector<Iframe> asOut;
  for (const char* pcAddress : {"127.0.0.1", "::1"}) {
    asOut.push_back(
        {pcAddress, 9, CAM_REQUESTER_CMD_H264_RTP, 1, "/cgi-bin/h264_I_interval?stream=1"});
    asOut.push_back(
        {pcAddress, 30, CAM_REQUESTER_CMD_H264_RTP, 2, "/cgi-bin/h264_I_interval?stream=2"});
    asOut.push_back({pcAddress, 7, CAM_REQUESTER_CMD_MPEG4_RTP, 1, "/cgi-bin/mpeg4_I_interval"});
    asOut.push_back(
        {pcAddress, 7, CAM_REQUESTER_CMD_MPEG4_RTP, 2, "/cgi-bin/mpeg4_I_interval?stream=2"});
    asOut.push_back({pcAddress, 7, CAM_REQUESTER_CMD_H264_RTP, 1, nullptr});
  }
  return asOut;
}

INSTANTIATE_TEST_SUITE_P(Camera, IframeInterval, ::testing::ValuesIn(IframeRows()),
                         [](const ::testing::TestParamInfo<Iframe>& rInfo) {
                           return std::string(rInfo.param.pcAddress[0] == ':' ? "V6_" : "V4_") +
                                  "Type" + std::to_string(rInfo.param.usType) +
                                  (rInfo.param.iCmdType == 0 ? "_H264" : "_Mpeg4") + "_Stream" +
                                  std::to_string(rInfo.param.ucStream);
                         });

}  // namespace
}  // namespace rtptest
