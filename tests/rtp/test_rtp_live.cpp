// The road of one live H.264 or MPEG-4 request on a camera, on both
// loopbacks and with every delivery the camera can report: the status from
// IDLE to RUN and back, the notification's twelve arguments, the UID
// message, the lines the camera received and the lines printed.
#include <string>
#include <vector>

#include "RtpRoad.h"

namespace rtptest {
namespace {

enum class Delivery { kMulti, kMultiV6, kMultiBadV6, kUni, kUniManual };

struct Codec {
  int iCmdType;
  const char* pcGetUid;     // the set-up line
  const char* pcPath;       // the start/stop path
  const char* pcKeepAlive;  // the keep-alive line
  const char* pcUidInvalid;
};

const Codec kH264{CAM_REQUESTER_CMD_H264_RTP, "/cgi-bin/getuid?FILE=2&vcodec=h264", "/cgi-bin/h264",
                  "/cgi-bin/keep_alive?mode=h264&protocol=rtp&UID=41&page=N&stream=1",
                  "UidInvalid [DEBUG] H.264:\n"};
const Codec kMpeg4{CAM_REQUESTER_CMD_MPEG4_RTP, "/cgi-bin/getuid?FILE=2&vcodec=mpeg-4",
                   "/cgi-bin/mpeg4",
                   "/cgi-bin/keep_alive?mode=mpeg4&protocol=rtp&UID=41&page=N&stream=1",
                   "UidInvalid [DEBUG] MPEG4:\n"};

struct Road {
  const char* pcAddress;
  const Codec* psCodec;
  Delivery eDelivery;
};

std::string Name(const ::testing::TestParamInfo<Road>& rInfo) {
  static const char* const kDeliveries[] = {"Multi", "MultiV6", "MultiBadV6", "Uni", "UniManual"};
  return std::string(rInfo.param.pcAddress[0] == ':' ? "V6_" : "V4_") +
         (rInfo.param.psCodec == &kH264 ? "H264_" : "Mpeg4_") +
         kDeliveries[static_cast<int>(rInfo.param.eDelivery)];
}

class LiveRoad : public RoadTest, public ::testing::WithParamInterface<Road> {
 protected:
  bool V6() const { return GetParam().pcAddress[0] == ':'; }
  std::string Family() const { return V6() ? "AF_INET6" : "AF_INET"; }
  const char* DeliveryWord() const {
    switch (GetParam().eDelivery) {
      case Delivery::kUni:
        return "uni";
      case Delivery::kUniManual:
        return "uni_manual";
      default:
        return "multi";
    }
  }
  bool Multicast() const {
    return GetParam().eDelivery == Delivery::kMulti || GetParam().eDelivery == Delivery::kMultiV6 ||
           GetParam().eDelivery == Delivery::kMultiBadV6;
  }
  // The receive port: the camera's multicast port replaces the own one.
  int Port() const { return Multicast() ? 5004 : 5500; }
  std::string MultiAddr() const {
    if (GetParam().eDelivery == Delivery::kMultiV6) return "ff15::1234";
    return Multicast() ? "239.10.20.30" : "";
  }
  // The lines that the parse of the set-up reply prints for the delivery.
  std::vector<std::string> DeliveryLines(const Stream& s) const {
    switch (GetParam().eDelivery) {
      case Delivery::kMulti:
        return {s.Line("GetMultiUniSetup [Error] SerachString iMultiAddv6=\n"),
                s.Line("GetMultiUniSetup [DEBUG] USE iMultiAdd1-4 =239.10.20.30\n")};
      case Delivery::kMultiV6:
        return {s.Line("GetMultiUniSetup [DEBUG] USE iMultiAddv6 =ff15::1234\n")};
      case Delivery::kMultiBadV6:
        return {s.Line("GetMultiUniSetup [DEBUG] USE iMultiAdd1-4 =239.10.20.30\n")};
      default:
        return {s.Line("GetMultiUniSetup [DEBUG] sa_family=" + Family() + " \n")};
    }
  }
  camsim::DeviceConfig Config() const {
    camsim::DeviceConfig sConfig = CameraConfig(GetParam().pcAddress, 7);
    sConfig.values.delivery = DeliveryWord();
    if (GetParam().eDelivery == Delivery::kMultiV6) sConfig.values.multiAddressV6 = "ff15::1234";
    if (GetParam().eDelivery == Delivery::kMultiBadV6) sConfig.values.multiAddressV6 = "ff15::12g4";
    return sConfig;
  }
};

TEST_P(LiveRoad, StartKeepAliveStop) {
  const Codec& c = *GetParam().psCodec;
  const std::string sAddr = GetParam().pcAddress;
  StartCamera(Config());
  const std::string sPort = std::to_string(Camera().Port());
  StreamSetup sSetup;
  sSetup.iCmdType = c.iCmdType;
  Stream& s = AddStream(sSetup);

  StartToRun(s);
  // One keep-alive right after the start, the next after 300 idle rounds.
  ASSERT_TRUE(WaitForRequest("GET /cgi-bin/keep_alive", 2)) << Tail();
  StopToIdle(s);

  const std::string sMyPort = std::to_string(Port());
  const std::string sStart =
      std::string(c.pcPath) + "?connect=start&protocol=rtp&my_port=" + sMyPort + "&UID=41&stream=1";
  const std::string sStop =
      std::string(c.pcPath) + "?connect=stop&protocol=rtp&my_port=" + sMyPort + "&UID=41&stream=1";

  // The camera's record: set-up, start, keep-alives, stop; nothing else.
  const std::vector<std::string> asRequests = RequestLines();
  ASSERT_GE(asRequests.size(), 5u);
  EXPECT_EQ(asRequests[0], "GET " + std::string(c.pcGetUid) + " HTTP/1.0");
  EXPECT_EQ(asRequests[1], "GET " + sStart + " HTTP/1.0");
  for (size_t i = 2; i + 1 < asRequests.size(); ++i) {
    EXPECT_EQ(asRequests[i], "GET " + std::string(c.pcKeepAlive) + " HTTP/1.0") << i;
  }
  EXPECT_EQ(asRequests.back(), "GET " + sStop + " HTTP/1.0");

  // Headers: start and keep-alive name the camera in Host (an IPv6 address
  // in brackets); the stop names it as the address stands.
  const std::vector<camsim::RequestRecord> asRecords = Camera().Requests();
  const std::string sHost = V6() ? "[" + sAddr + "]" : sAddr;
  for (size_t i = 1; i < asRecords.size(); ++i) {
    const bool bStop = i + 1 == asRecords.size();
    EXPECT_EQ(asRecords[i].Header("Connection"), "Keep-Alive") << asRecords[i].requestLine;
    EXPECT_EQ(asRecords[i].Header("Host"), bStop ? sAddr : sHost) << asRecords[i].requestLine;
  }
  for (const camsim::RequestRecord& r : asRecords) {
    EXPECT_EQ(r.peer.rfind(V6() ? "[::1]:" : "127.0.0.1:", 0), 0u) << r.peer;
  }

  // The print, in order.
  const std::string sIpLine = "IP:" + sAddr + " PORT:" + sPort + " CamType:CAM07[7] Pos:1 ";
  std::vector<std::string> asExpected = {
      s.Line("ChangeStatus [DEBUG] Video Event=0:0 -> 2. \n"),
      s.Line("CmdSet_SessionCmmand [DEBUG] Cmd[" + std::string(c.pcGetUid) + "]\n"),
      s.Line("CCamRequester_Cgi_Kobu_Rtp::OpenSessionCommandExec [DEBUG] Proxy Disable\n"),
      s.Line("SetupSessionCommandExec [DEBUG] RTP: " + sIpLine + "\n"),
      s.Line("SetupSessionCommandExec [DEBUG] cgi=" + std::string(c.pcGetUid) + ". \n"),
      s.Line("CheckCamInfo_RcvData [DEBUG] uid=41 aBitrate=24 aEnable=1 IP:" + sAddr +
             " ScreenPos:1\n"),
      s.Line("CheckCamInfo_RcvData [DEBUG] SerachString sDelivery=" + std::string(DeliveryWord()) +
             "\n"),
      s.Line("GetSelfAddress [DEBUG] My sa_family=" + Family() + " \n"),
      s.Line("GetSelfAddress [DEBUG] My Address =" + sAddr + "\n")};
  for (const std::string& sLine : DeliveryLines(s)) asExpected.push_back(sLine);
  const std::vector<std::string> asRun = {
      s.Line("ChangeStatus [DEBUG] Video Event=2:2 -> 3. \n"),
      s.Line("CCamRequester_Cgi_Kobu_Rtp::SetupSessionCommand [DEBUG] ConnectErrorReset\n"),
      s.Line("StreamStartCommandExec [DEBUG] RTP: " + sIpLine + "\n"),
      s.Line("StreamStartCommandExec [DEBUG] cgi=" + sStart + ". \n"),
      s.Line("ChangeStatus [DEBUG] Video Event=4:3 -> 4. \n"),
      s.Line("SendKeepAliveCommandExec IN!!!!!. \n"),
      s.Line("SendKeepAliveCommandExec [DEBUG] RTP: " + sIpLine + "\n"),
      s.Line("SendKeepAliveCommandExec [DEBUG] cgi=" + std::string(c.pcKeepAlive) + ". \n"),
      s.Line("SendKeepAliveCommandExec OUT!!!!!. \n"),
      s.Line("SendKeepAliveCommandExec IN!!!!!. \n"),
      s.Line("SendKeepAliveCommandExec OUT!!!!!. \n"),
      s.Line("ChangeStatus [DEBUG] Video Event=1:4 -> 5. \n"),
      s.Line("StreamStopCommandExec [DEBUG] RTP: IP:" + sAddr + " PORT:" + sPort +
             " CamType:CAM07[7] Pos:1 uid_logout:41\n"),
      s.Line("StreamStopCommandExec [DEBUG] cgi=" + sStop + ". \n"),
      // Keep-alive is on, so the stop tries the recorder logout, which a
      // camera refuses.
      s.Line("KelStreamStopCommandExec [ERROR] usCameraType = 7\n"),
      s.Line("KelStreamStopCommandExec [ERROR] KelStreamStopCommandExec NG\n"),
      s.Line("ChangeStatus [DEBUG] Video Event=8:5 -> 0. \n")};
  asExpected.insert(asExpected.end(), asRun.begin(), asRun.end());
  ExpectLines(asExpected);
  if (V6()) {
    EXPECT_TRUE(m_capture.Contains("AddHeader [DEBUG] setaddress=[::1]\n"));
  }
  if (GetParam().eDelivery == Delivery::kMultiBadV6) {
    EXPECT_FALSE(m_capture.Contains("SerachString iMultiAddv6=")) << Tail();
  }
  EXPECT_FALSE(m_capture.Contains(c.pcUidInvalid));

  // The upper layer heard of the stream once, during the set-up.
  const std::vector<camtest::RtpNotice> asNotices = s.pNotify->RtpNotices();
  ASSERT_EQ(asNotices.size(), 1u);
  const camtest::RtpNotice& n = asNotices[0];
  EXPECT_EQ(n.iUid, 41);
  EXPECT_TRUE(n.bSessionInfo);
  EXPECT_EQ(n.usSessionPort, Camera().Port());
  EXPECT_EQ(n.iRtpPort, Port());
  EXPECT_EQ(n.sIpAddr, sAddr);
  EXPECT_EQ(n.iPos, 1);
  EXPECT_EQ(n.iCmdType, c.iCmdType);
  EXPECT_EQ(n.iSelectChNo, 0);
  EXPECT_EQ(n.iAudioBitrate, 24);
  EXPECT_EQ(n.iAudioEnable, 1);
  EXPECT_EQ(n.sMultiAddr, MultiAddr());
  if (GetParam().eDelivery == Delivery::kUniManual) {
    EXPECT_EQ(n.iUniPort, 6100);
    EXPECT_EQ(n.iAudioInPort, 7200);
  }
  EXPECT_EQ(n.iStatusAtCall, CAM_HTTP_STS_SETUP);
  EXPECT_TRUE(s.pNotify->SessionNotices().empty());
  EXPECT_TRUE(s.pNotify->HandleNotices().empty());

  // Other processes heard of one successful UID request.
  int32_t aiPayload[3] = {};
  ASSERT_TRUE(m_pUidReceiver->Next(aiPayload));
  EXPECT_EQ(aiPayload[0], 0);  // position 1
  EXPECT_EQ(aiPayload[1], 3);  // camera number of kind 22
  EXPECT_EQ(aiPayload[2], 0);  // success
  EXPECT_FALSE(m_pUidReceiver->Next(aiPayload));
  EXPECT_TRUE(m_capture.Contains("GETUID:SndMsg_GetUID [DEBUG] POS[1] CAM[3] SUCCESS"));
  EXPECT_TRUE(m_alarms.Reports().empty());
}

std::vector<Road> Roads() {
  std::vector<Road> asRoads;
  for (const char* pcAddress : {"127.0.0.1", "::1"}) {
    for (const Codec* psCodec : {&kH264, &kMpeg4}) {
      for (Delivery e : {Delivery::kMulti, Delivery::kMultiV6, Delivery::kMultiBadV6,
                         Delivery::kUni, Delivery::kUniManual}) {
        asRoads.push_back({pcAddress, psCodec, e});
      }
    }
  }
  return asRoads;
}

INSTANTIATE_TEST_SUITE_P(Camera7, LiveRoad, ::testing::ValuesIn(Roads()), Name);

// The second stream and a channel reach every line of the road.
class SecondStream : public RoadTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(SecondStream, ChannelAndStreamInEveryLine) {
  StartCamera(CameraConfig(GetParam(), 7));
  StreamSetup sSetup;
  sSetup.iCmdType = CAM_REQUESTER_CMD_MPEG4_RTP;
  sSetup.usSelectChNo = 3;
  sSetup.ucStream = 2;
  Stream& s = AddStream(sSetup);
  StartToRun(s);
  StopToIdle(s);
  EXPECT_EQ(CollapsedRequestLines(),
            (std::vector<std::string>{
                "GET /cgi-bin/getuid?FILE=2&vcodec=mpeg-4_2&ch=3 HTTP/1.0",
                "GET /cgi-bin/mpeg4?connect=start&protocol=rtp&my_port=5004&ch=3&UID=41&stream=2 "
                "HTTP/1.0",
                "GET /cgi-bin/keep_alive?mode=mpeg4_2&protocol=rtp&ch=3&UID=41&page=N&stream=2 "
                "HTTP/1.0",
                "GET /cgi-bin/mpeg4?connect=stop&protocol=rtp&my_port=5004&ch=3&UID=41&stream=2 "
                "HTTP/1.0"}));
  const std::vector<camtest::RtpNotice> asNotices = s.pNotify->RtpNotices();
  ASSERT_EQ(asNotices.size(), 1u);
  EXPECT_EQ(asNotices[0].iSelectChNo, 3);
  EXPECT_EQ(asNotices[0].iCmdType, CAM_REQUESTER_CMD_MPEG4_RTP);
}

// With keep-alive off, START ends with the stream start and the stop tries
// no logout.
TEST_P(SecondStream, KeepAliveOffSendsNoKeepAlive) {
  StartCamera(CameraConfig(GetParam(), 7));
  StreamSetup sSetup;
  sSetup.bKeepAlive = false;
  Stream& s = AddStream(sSetup);
  StartToRun(s);
  // Two stream checks (150 idle rounds each) pass without a keep-alive.
  ASSERT_TRUE(s.pNotify->WaitForStateQueries(2, kLimit));
  StopToIdle(s);
  EXPECT_EQ(
      RequestLines(),
      (std::vector<std::string>{
          "GET /cgi-bin/getuid?FILE=2&vcodec=h264 HTTP/1.0",
          "GET /cgi-bin/h264?connect=start&protocol=rtp&my_port=5004&UID=41&stream=1 HTTP/1.0",
          "GET /cgi-bin/h264?connect=stop&protocol=rtp&my_port=5004&UID=41&stream=1 "
          "HTTP/1.0"}));
  EXPECT_TRUE(
      m_capture.Contains(s.Line("KelStreamStopCommandExec [DEBUG] KEL Logout CGI Command No!!\n")))
      << Tail();
  // The stream check of a camera asks the upper layer with the camera and
  // command types.
  for (const auto& q : s.pNotify->StateQueries()) {
    EXPECT_EQ(q.first, 7);
    EXPECT_EQ(q.second, CAM_REQUESTER_CMD_H264_RTP);
  }
}

// A second start after a stop keeps the UID: no new UID request, the upper
// layer is told again, and delivery starts on the same UID.
TEST_P(SecondStream, StartAfterStopReusesTheUid) {
  StartCamera(CameraConfig(GetParam(), 7));
  Stream& s = AddStream(StreamSetup());
  StartToRun(s);
  StopToIdle(s);
  StartToRun(s);
  StopToIdle(s);
  EXPECT_EQ(CountRequests("GET /cgi-bin/getuid"), 1);
  EXPECT_EQ(CountRequests("GET /cgi-bin/h264?connect=start&protocol=rtp&my_port=5004&UID=41&"), 2);
  EXPECT_EQ(CountRequests("GET /cgi-bin/h264?connect=stop&protocol=rtp&my_port=5004&UID=41&"), 2);
  const std::vector<camtest::RtpNotice> asNotices = s.pNotify->RtpNotices();
  ASSERT_EQ(asNotices.size(), 2u);
  EXPECT_EQ(asNotices[1].iUid, 41);
  EXPECT_FALSE(asNotices[1].bSessionInfo);  // no exchange this time
  EXPECT_EQ(asNotices[1].iRtpPort, 5004);
  EXPECT_EQ(asNotices[1].sMultiAddr, "239.10.20.30");
}

// A camera that asks for credentials: every exchange answers its challenge;
// a wrong password fails the set-up with the camera's 401.
TEST_P(SecondStream, DigestCameraWithRightAndWrongPassword) {
  camsim::DeviceConfig sConfig = CameraConfig(GetParam(), 7);
  sConfig.auth = camsim::AuthMode::kDigestSha256;
  StartCamera(sConfig);
  StreamSetup sSetup;
  sSetup.sUser = "operator";
  sSetup.sPassword = "s3cret!";
  Stream& s = AddStream(sSetup);
  StartToRun(s);
  StopToIdle(s);
  // Each request goes once without and once with the answer to the challenge.
  const std::vector<camsim::RequestRecord> asRecords = Camera().Requests();
  ASSERT_EQ(asRecords.size(), 8u);
  for (size_t i = 0; i < asRecords.size(); i += 2) {
    EXPECT_EQ(asRecords[i].status, 401) << asRecords[i].requestLine;
    EXPECT_EQ(asRecords[i + 1].status, 200) << asRecords[i + 1].requestLine;
    EXPECT_EQ(asRecords[i + 1].Header("Authorization").rfind("Digest ", 0), 0u);
  }

  sSetup.sPassword = "s3cret?";
  sSetup.iPos = 2;
  Stream& w = AddStream(sSetup);
  w.r().RequestStart();
  ASSERT_TRUE(m_capture.WaitFor(w.Line("ChangeStatus [DEBUG] Video Event=3:2 -> 1. \n"))) << Tail();
  ExpectLines({w.Line("DoRequest [Error] ret =8000401\n"),
               w.Line("DoRequest [Error] http_get_response failed2:ret =8000401\n"),
               w.Line("UidInvalid [DEBUG] H.264:\n"),
               w.Line("SetupSessionCommandExec [Error] DoRequest failed\n"),
               w.Line("ChangeStatus [DEBUG] Video Event=3:2 -> 1. \n")});
}

INSTANTIATE_TEST_SUITE_P(Camera7, SecondStream, ::testing::Values("127.0.0.1", "::1"),
                         [](const ::testing::TestParamInfo<const char*>& rInfo) {
                           return std::string(rInfo.param[0] == ':' ? "V6" : "V4");
                         });

}  // namespace
}  // namespace rtptest
