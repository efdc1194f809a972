// The parts of camreq's upper layer on their own: reading the library's log,
// the options, the camera-type names and the SDP file.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CamChildServer.h"
#include "CamTestSupport.h"
#include "CamTypeInfo.h"
#include "Device.h"
#include "LogWatch.h"
#include "Options.h"
#include "PushReader.h"
#include "Record.h"
#include "Sdp.h"
#include "kxhttp.h"

namespace camreqtest {
namespace {

using camreq::LogWatch;
using camreq::RequesterLog;

const char kPrefix[] = "IP:      127.0.0.1 POS:1 R:h264 ";

std::string Line(const std::string& sMessage) {
  return kPrefix + sMessage;
}

TEST(CamreqLogWatch, KeepsTransitionsOfItsPositionOnly) {
  LogWatch sWatch;
  sWatch.Watch(1);
  sWatch.Take(Line("ChangeStatus [DEBUG] Video Event=0:0 -> 2. \n"), 1.0);
  sWatch.Take("IP:      127.0.0.1 POS:2 R:h264 ChangeStatus [DEBUG] Video Event=0:0 -> 2. \n", 1.5);
  sWatch.Take(Line("ChangeStatus [DEBUG] Audio Event=2:2 -> 3. \n"), 2.0);
  sWatch.Take(Line("ChangeStatus [DEBUG] Audio Event=0:1 UID=-1. \n"), 2.5);
  const RequesterLog sLog = sWatch.Snapshot(1);
  ASSERT_EQ(sLog.asTransitions.size(), 2u);
  EXPECT_EQ(sLog.asTransitions[0].iEvent, 0);
  EXPECT_EQ(sLog.asTransitions[0].iTo, 2);
  EXPECT_DOUBLE_EQ(sLog.asTransitions[1].dTime, 2.0);
  EXPECT_EQ(sLog.asTransitions[1].iFrom, 2);
  EXPECT_EQ(sLog.asTransitions[1].iTo, 3);
}

TEST(CamreqLogWatch, TimesAnExchangeFromItsLineToItsClose) {
  LogWatch sWatch;
  sWatch.Watch(1);
  sWatch.Take(Line("SetupSessionCommandExec [DEBUG] cgi=/cgi-bin/getuid?FILE=2&vcodec=h264. \n"),
              1.0);
  // The set-up reply's parser notes an optional key that is missing.
  sWatch.Take(Line("GetMultiUniSetup [Error] SerachString iMultiAddv6=\n"), 1.001);
  sWatch.Take(Line(" CloseSessionCommand [DEBUG] Session Close [psSession:0x1]\n"), 1.002);
  const RequesterLog sLog = sWatch.Snapshot(1);
  ASSERT_EQ(sLog.asCgi.size(), 1u);
  EXPECT_EQ(sLog.asCgi[0].sWorker, "SetupSessionCommandExec");
  EXPECT_EQ(sLog.asCgi[0].sLine, "/cgi-bin/getuid?FILE=2&vcodec=h264");
  EXPECT_TRUE(sLog.asCgi[0].bOk);
  EXPECT_EQ(sLog.asCgi[0].sResult, "OK");
  EXPECT_NEAR(sLog.asCgi[0].dLatencyMs, 2.0, 1e-6);
  EXPECT_EQ(sLog.iExchanges, 1);
  EXPECT_EQ(sLog.iFailures, 0);
}

TEST(CamreqLogWatch, NamesTheResultOfAFailedExchange) {
  LogWatch sWatch;
  sWatch.Watch(1);
  sWatch.Take(Line("SendKeepAliveCommandExec [DEBUG] cgi=/cgi-bin/keep_alive?UID=1. \n"), 1.0);
  sWatch.Take(Line("DoRequest [Error] http_get_response failed2:ret =8000404\n"), 1.5);
  sWatch.Take(Line(" CloseSessionCommand [DEBUG] Session Close [psSession:0x1]\n"), 1.6);
  const RequesterLog sLog = sWatch.Snapshot(1);
  ASSERT_EQ(sLog.asCgi.size(), 1u);
  EXPECT_FALSE(sLog.asCgi[0].bOk);
  EXPECT_EQ(sLog.asCgi[0].sResult, "HTTP 404");
  EXPECT_NEAR(sLog.asCgi[0].dLatencyMs, 500.0, 1e-6);
  EXPECT_EQ(sLog.iKeepAlives, 1);
  EXPECT_EQ(sLog.iFailures, 1);
}

TEST(CamreqLogWatch, KeepsAConnectionThatFailedBeforeAnyLine) {
  LogWatch sWatch;
  sWatch.Watch(1);
  sWatch.Take(Line("CCamRequester_Cgi_Kobu_Rtp::OpenSessionCommandExec [ERROR] open faild "
                   "IP:127.0.0.1  Port:1\n"),
              1.0);
  sWatch.Take(Line("SetupSessionCommandExec [Error] Rtp::SetupSessionCommand failed\n"), 1.0);
  const RequesterLog sLog = sWatch.Snapshot(1);
  ASSERT_EQ(sLog.asCgi.size(), 1u);
  EXPECT_EQ(sLog.asCgi[0].sWorker, "SetupSessionCommandExec");
  EXPECT_EQ(sLog.asCgi[0].sLine, "");
  EXPECT_EQ(sLog.asCgi[0].sResult, "no connection");
}

TEST(CamreqLogWatch, WordsOfTheFailures) {
  EXPECT_EQ(camreq::FailureWords("StreamStopCommandExec [ERROR] timeout ret=0x8007000\n"),
            "timeout");
  EXPECT_EQ(camreq::FailureWords(" SendKeepAliveCommandExec [Error] KeepAlive Failed.\n"),
            "refused (no OK in the reply)");
  EXPECT_EQ(camreq::FailureWords("DoRequest [Error] http_get_response failed3:ret =8003000\n"),
            "connection refused or lost");
  EXPECT_EQ(camreq::FailureWords(
                "StreamStartCommandExec [Error] http_get_response failed2:ret =8000503\n"),
            "HTTP 503");
}

// One GET on a session of its own; the body, empty on failure.
std::string Get(uint16_t usPort, const std::string& sPath) {
  HTTP_SESSION* psSession = http_open_session_to_ret("127.0.0.1", usPort, nullptr, 0, 0, 5000, 0);
  if (psSession == nullptr) return "";
  std::vector<char> acBuffer(2048);
  _InetBuffer sIn{};
  sIn.ulSize = static_cast<uint32_t>(acBuffer.size());
  sIn.pcBuffer = acBuffer.data();
  std::string sBody;
  if (http_set_url(psSession, "GET", sPath.c_str(), "HTTP/1.0") == HTTP_RESULT_OK &&
      http_do_request(psSession, &sIn, 5) == HTTP_RESULT_STATUS200) {
    sBody = acBuffer.data();
  }
  http_close_session(psSession);
  return sBody;
}

// A JPEG push opened as the HTTP requester opens it before the hand-over.
HTTP_SESSION* OpenPush(const camsim::Device& rDevice) {
  const std::string sUid = Get(rDevice.Port(), "/cgi-bin/getuid?FILE=2&vcodec=jpeg");
  const size_t uAt = sUid.find("UID=");
  if (uAt == std::string::npos) return nullptr;
  HTTP_SESSION* psPush =
      http_open_session_to_ret("127.0.0.1", rDevice.Port(), nullptr, 0, 0, 5000, 0);
  if (psPush == nullptr) return nullptr;
  const std::string sPath = "/cgi-bin/jpeg?connect=start&framerate=30&UID=" +
                            std::to_string(std::atoi(sUid.c_str() + uAt + 4));
  if (http_set_url(psPush, "GET", sPath.c_str(), "HTTP/1.0") != HTTP_RESULT_OK ||
      http_do_server_push(psPush, 5) != HTTP_RESULT_STATUS200) {
    http_close_session(psPush);
    return nullptr;
  }
  return psPush;
}

TEST(CamreqPushReader, HasLeftTheHandleWhenTheWithdrawalReturns) {
  camsim::DeviceConfig sConfig;
  sConfig.model = 7;
  std::string sError;
  auto pDevice = camsim::Device::Start(sConfig, &sError);
  ASSERT_NE(pDevice, nullptr) << sError;
  HTTP_SESSION* psPush = OpenPush(*pDevice);
  ASSERT_NE(psPush, nullptr);
  camreq::PushReader sReader(true, "", "test");
  sReader.Take(psPush);
  ASSERT_TRUE(camtest::WaitUntil([&] { return sReader.Snapshot().ulPictures >= 3; }));
  EXPECT_EQ(sReader.StreamState(camreq::Now()), 0);
  sReader.LetGo(true);
  // The requester closes the push as soon as the withdrawal returns: the
  // reader has left every call on it by then, so it never sees the close.
  http_close_session(psPush);
  const camreq::PushStats sAfter = sReader.Snapshot();
  EXPECT_FALSE(sAfter.bHeld);
  EXPECT_EQ(sAfter.iHandOvers, 1);
  EXPECT_EQ(sAfter.iWithdrawals, 1);
  EXPECT_EQ(sAfter.iEnds, 0);
  EXPECT_EQ(sAfter.ulBadParts, 0u);
  EXPECT_EQ(sReader.StreamState(camreq::Now()), 1);  // nothing held, nothing arrives
}

TEST(CamreqPushReader, StopsReadingAPushThatEndedButLeavesItToTheRequester) {
  camsim::DeviceConfig sConfig;
  sConfig.model = 7;
  std::string sError;
  auto pDevice = camsim::Device::Start(sConfig, &sError);
  ASSERT_NE(pDevice, nullptr) << sError;
  camsim::Fault sFault;
  ASSERT_TRUE(camsim::ParseFault("push-end=2", &sFault, &sError)) << sError;
  pDevice->SetFault("/cgi-bin/jpeg", sFault);
  HTTP_SESSION* psPush = OpenPush(*pDevice);
  ASSERT_NE(psPush, nullptr);
  camreq::PushReader sReader(true, "", "test");
  sReader.Take(psPush);
  ASSERT_TRUE(camtest::WaitUntil([&] { return sReader.Snapshot().iEnds == 1; }));
  const camreq::PushStats sEnded = sReader.Snapshot();
  EXPECT_EQ(sEnded.ulPictures, 2u);
  EXPECT_EQ(sEnded.ulEndCode, HTTP_ERR_CLOSED);
  EXPECT_TRUE(sEnded.bHeld);  // the handle is still the requester's to withdraw
  sReader.LetGo(true);
  http_close_session(psPush);
  EXPECT_EQ(sReader.Snapshot().iWithdrawals, 1);
}

TEST(CamreqOptions, DefaultsAndClassFromTheCommand) {
  camreq::Options sOptions = camreq::ParseCommandLine({});
  ASSERT_EQ(sOptions.asCameras.size(), 1u);
  EXPECT_TRUE(sOptions.asCameras[0].Embedded());
  EXPECT_EQ(sOptions.asCameras[0].eClass, camreq::ReqClass::kRtp);
  EXPECT_EQ(sOptions.asCameras[0].sCommand, "h264");
  sOptions = camreq::ParseCommandLine({"--cmd", "jpeg", "--address", "[::1]", "--keepalive=off"});
  EXPECT_EQ(sOptions.asCameras[0].eClass, camreq::ReqClass::kHttp);
  EXPECT_EQ(sOptions.asCameras[0].sAddress, "::1");
  EXPECT_FALSE(sOptions.asCameras[0].bKeepAlive);
  sOptions = camreq::ParseCommandLine({"--class", "http", "--cmd", "play"});
  EXPECT_EQ(sOptions.asCameras[0].iCmdType, 2);
  EXPECT_TRUE(sOptions.asCameras[0].PlayBack());
}

TEST(CamreqOptions, ConfigSectionsInOrderOverTheCommandLine) {
  camtest::TempDir sDir;
  sDir.write("c.ini",
             "; cameras\n[b]\ncmd = jpeg\nproxy = 127.0.0.1:3128\nproxy-except = 10.*.*.*\n"
             "[a]\ntype = KE850\nsim-fault = /cgi-bin/push.cgi:status=503,times=1\n");
  const camreq::Options sOptions =
      camreq::ParseCommandLine({"--config", sDir.path() + "/c.ini", "--user", "op"});
  ASSERT_EQ(sOptions.asCameras.size(), 2u);
  EXPECT_EQ(sOptions.asCameras[0].sLabel, "b");
  EXPECT_EQ(sOptions.asCameras[0].sProxyHost, "127.0.0.1");
  EXPECT_EQ(sOptions.asCameras[0].iProxyPort, 3128);
  EXPECT_EQ(sOptions.asCameras[0].asProxyExcept, std::vector<std::string>{"10.*.*.*"});
  EXPECT_EQ(sOptions.asCameras[1].iCamType, 34);
  EXPECT_EQ(sOptions.asCameras[1].sUser, "op");
  EXPECT_THROW(camreq::ParseCommandLine({"--sim-fault", "/x:nonsense"}), camreq::BadInput);
}

TEST(CamreqCamTypes, NamesBothWays) {
  EXPECT_EQ(camreq::ParseCamType("ke850"), 34);
  EXPECT_EQ(camreq::ParseCamType("QV262"), 21);
  EXPECT_EQ(camreq::ParseCamType("7"), 7);
  EXPECT_EQ(camreq::ParseCamType("36"), 36);
  EXPECT_EQ(camreq::ParseCamType("37"), -1);
  EXPECT_EQ(camreq::ParseCamType("CAM7"), -1);
  for (int i = 0; i <= 36; ++i) EXPECT_EQ(camreq::ParseCamType(camreq::CamTypeName(i)), i);
  EXPECT_EQ(camreq::RtpCommandsOf(6), "-");
  EXPECT_EQ(camreq::HttpCommandsOf(6), "jpeg");
  EXPECT_EQ(camreq::RtpCommandsOf(31), "h264 mpeg4 play h264play");
}

TEST(CamreqSdp, H264WithItsParameterSets) {
  EXPECT_EQ(camreq::Base64("Man"), "TWFu");
  EXPECT_EQ(camreq::Base64("Ma"), "TWE=");
  EXPECT_EQ(camreq::Base64("M"), "TQ==");
  camreq::SdpStream sStream;
  sStream.sAddress = "239.255.1.1";
  sStream.iPort = 5004;
  sStream.iPayloadType = 96;
  sStream.sSps = std::string("\x67\x42", 2);
  sStream.sPps = std::string("\x68\xce", 2);
  const std::string sText = camreq::SdpText(sStream);
  EXPECT_NE(sText.find("c=IN IP4 239.255.1.1/1\r\n"), std::string::npos) << sText;
  EXPECT_NE(sText.find("m=video 5004 RTP/AVP 96\r\n"), std::string::npos);
  EXPECT_NE(sText.find("a=rtpmap:96 H264/90000\r\n"), std::string::npos);
  EXPECT_NE(sText.find("sprop-parameter-sets=Z0I=,aM4="), std::string::npos);
}

}  // namespace
}  // namespace camreqtest
