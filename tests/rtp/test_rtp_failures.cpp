// The failure roads: a camera that is down when the stream starts, a camera
// that stops answering keep-alives, and a recorder stream that stalls.
#include <chrono>
#include <string>
#include <vector>

#include "RtpRoad.h"

namespace rtptest {
namespace {

using Clock = std::chrono::steady_clock;

class FailureRoad : public RoadTest, public ::testing::WithParamInterface<const char*> {
 protected:
  std::string Addr() const { return GetParam(); }
  std::string ErrorCount(int i) const {
    return "[CCamR::ConnectError] m_iErrorCount = [" + std::to_string(i) + "]";
  }
};

TEST_P(FailureRoad, CameraDownAtStartCountsRestartsAndRecovers) {
  camsim::DeviceConfig sConfig = CameraConfig(GetParam(), 7);
  sConfig.startRefusing = true;
  StartCamera(sConfig);
  const std::string sPort = std::to_string(Camera().Port());
  Stream& s = AddStream(StreamSetup());
  s.r().RequestStart();

  ASSERT_TRUE(m_capture.WaitFor(ErrorCount(1))) << Tail();
  const Clock::time_point tFirst = Clock::now();
  EXPECT_EQ(s.Status(), CAM_HTTP_STS_ERROR);
  ExpectLines(
      {s.Line("ChangeStatus [DEBUG] Video Event=0:0 -> 2. \n"),
       s.Line("CCamRequester_Cgi_Kobu_Rtp::OpenSessionCommandExec [ERROR] open faild IP:" + Addr() +
              "  Port:" + sPort + "\n"),
       s.Line("SetupSessionCommandExec [Error] Rtp::SetupSessionCommand failed\n"),
       s.Line("UidInvalid [DEBUG] H.264:\n"),
       s.Line("ChangeStatus [DEBUG] Video Event=3:2 -> 1. \n"),
       s.Line("CCamRequester_Cgi_Kobu_Rtp::SetupSessionCommand [ERROR] open faild IP:" + Addr() +
              "  Port:" + sPort + "\n")});

  // The tenth failure in a row raises the alarm, once.
  ASSERT_TRUE(m_capture.WaitFor(ErrorCount(11))) << Tail();
  const Clock::time_point tEleventh = Clock::now();
  ASSERT_EQ(m_alarms.Reports().size(), 1u);
  const camtest::AlarmCapture::Report sOn = m_alarms.Reports()[0];
  EXPECT_EQ(sOn.iCode, 2);
  EXPECT_EQ(sOn.iCamera, 12);
  EXPECT_EQ(sOn.sAddress, Addr());
  EXPECT_EQ(sOn.iPosition, 1);
  EXPECT_TRUE(
      m_capture.Contains("[CCamR::ConnectError] ERROR ON iPos =[1], cIpAddr=[" + Addr() + "]"));
  // Each rebuild waits 30 idle rounds of at least a millisecond each.
  EXPECT_GE(std::chrono::duration_cast<milliseconds>(tEleventh - tFirst).count(), 10 * 30 * 2 / 3);
  EXPECT_GE(m_capture.Count("RequestThreadMain [DEBUG] RESTART TINDEX=" + s.Tindex() + "\n"), 10);
  // The camera never answered: no request reached it.
  EXPECT_EQ(Camera().RequestCount(), 0u);

  // Every failed open told the upper layer that the stream is gone.
  for (const camtest::RtpNotice& n : s.pNotify->RtpNotices()) {
    EXPECT_EQ(n.iUid, -1);
    EXPECT_FALSE(n.bSessionInfo);
    EXPECT_EQ(n.iAudioBitrate, 0);
    EXPECT_EQ(n.iAudioEnable, 0);
    EXPECT_EQ(n.iUniPort, 0);
    EXPECT_EQ(n.iAudioInPort, 0);
    EXPECT_EQ(n.iRtpPort, 5500);
    EXPECT_EQ(n.sIpAddr, Addr());
  }

  // The camera comes back: the next rebuild runs, and the alarm goes off.
  ASSERT_TRUE(Camera().AcceptConnections());
  ASSERT_TRUE(WaitStatus(s, CAM_HTTP_STS_RUN)) << Tail();
  ASSERT_TRUE(camtest::WaitUntil([&] { return m_alarms.Reports().size() == 2u; }));
  EXPECT_EQ(m_alarms.Codes(), (std::vector<int>{2, 39}));
  EXPECT_TRUE(m_capture.Contains("[CCamR::ConnectErrorReset] ERROR OFF iPos =[1], cIpAddr=[" +
                                 Addr() + "]"));
  const std::vector<camtest::RtpNotice> asNotices = s.pNotify->RtpNotices();
  ASSERT_FALSE(asNotices.empty());
  EXPECT_EQ(asNotices.back().iUid, 41);
  // One count per failed set-up, no more, and one UID -1 each.
  const int iFailures = m_capture.Count(s.Line("ChangeStatus [DEBUG] Video Event=3:2 -> 1. \n"));
  EXPECT_EQ(m_capture.CountContaining("[CCamR::ConnectError] m_iErrorCount = ["), iFailures);
  EXPECT_EQ(static_cast<int>(asNotices.size()), iFailures + 1);
  ExpectLines({"RequestThreadMain [DEBUG] RESTART TINDEX=" + s.Tindex() + "\n",
               s.Line("ChangeStatus [DEBUG] Video Event=1:1 -> 0. \n"),
               s.Line("ChangeStatus [DEBUG] Video Event=0:0 -> 2. \n"),
               s.Line("ChangeStatus [DEBUG] Video Event=2:2 -> 3. \n"),
               s.Line("ChangeStatus [DEBUG] Video Event=4:3 -> 4. \n")});

  // A failed open is not a failed UID request (only a missing UID is), so
  // other processes heard one success and nothing after.
  int32_t aiPayload[3] = {};
  ASSERT_TRUE(m_pUidReceiver->Next(aiPayload));
  EXPECT_EQ(aiPayload[2], 0);
  EXPECT_FALSE(m_pUidReceiver->Next(aiPayload));
  StopToIdle(s);
}

TEST_P(FailureRoad, KeepAliveUnansweredForgetsUidAndRebuilds) {
  StartCamera(CameraConfig(GetParam(), 7));
  Stream& s = AddStream(StreamSetup());
  StartToRun(s);
  // The camera restarts and forgets the UID: the next keep-alive is refused.
  Camera().ForgetUids();
  ASSERT_TRUE(m_capture.WaitFor(s.Line("ChangeStatus [DEBUG] Video Event=6:4 -> 1. \n"))) << Tail();
  ExpectLines({s.Line("DoRequest [Error] ret =8000404\n"),
               s.Line("DoRequest [Error] http_get_response failed2:ret =8000404\n"),
               s.Line("UidInvalid [DEBUG] H.264:\n"), s.Line("UidInvalid [DEBUG] H.264:\n"),
               s.Line("ChangeStatus [DEBUG] Video Event=6:4 -> 1. \n")});
  std::vector<camtest::RtpNotice> asNotices = s.pNotify->RtpNotices();
  ASSERT_EQ(asNotices.size(), 3u);
  // Told twice, both times before the status left RUN.
  for (size_t i = 1; i < 3; ++i) {
    const camtest::RtpNotice& n = asNotices[i];
    EXPECT_EQ(n.iUid, -1) << i;
    EXPECT_EQ(n.iStatusAtCall, CAM_HTTP_STS_RUN) << i;
    EXPECT_EQ(n.iRtpPort, 5004) << i;
    EXPECT_EQ(n.sIpAddr, Addr()) << i;
    EXPECT_EQ(n.iPos, 1) << i;
    EXPECT_EQ(n.iCmdType, CAM_REQUESTER_CMD_H264_RTP) << i;
    EXPECT_EQ(n.iAudioBitrate, 0) << i;
    EXPECT_EQ(n.iAudioEnable, 0) << i;
    EXPECT_EQ(n.iUniPort, 0) << i;
    EXPECT_EQ(n.iAudioInPort, 0) << i;
  }
  // The second comes after the exchange closed its session.
  EXPECT_FALSE(asNotices[2].bSessionInfo);

  // Rebuilt after 30 idle rounds: a new UID, RUN again.
  ASSERT_TRUE(s.pNotify->WaitForRtpNotices(4, kLimit)) << Tail();
  ASSERT_TRUE(WaitStatus(s, CAM_HTTP_STS_RUN)) << Tail();
  asNotices = s.pNotify->RtpNotices();
  EXPECT_EQ(asNotices[3].iUid, 42);
  ASSERT_TRUE(WaitForRequest("GET /cgi-bin/keep_alive?mode=h264&protocol=rtp&UID=42&page=N"));
  const std::vector<std::string> asLines = RequestLines();
  ExpectInOrder(
      asLines,
      {"GET /cgi-bin/keep_alive?mode=h264&protocol=rtp&UID=41&page=N&stream=1 HTTP/1.0",
       "GET /cgi-bin/getuid?FILE=2&vcodec=h264 HTTP/1.0",
       "GET /cgi-bin/h264?connect=start&protocol=rtp&my_port=5004&UID=42&stream=1 HTTP/1.0",
       "GET /cgi-bin/keep_alive?mode=h264&protocol=rtp&UID=42&page=N&stream=1 HTTP/1.0"});
  EXPECT_TRUE(m_alarms.Reports().empty());
  StopToIdle(s);
}

INSTANTIATE_TEST_SUITE_P(Camera7, FailureRoad, ::testing::Values("127.0.0.1", "::1"),
                         [](const ::testing::TestParamInfo<const char*>& rInfo) {
                           return std::string(rInfo.param[0] == ':' ? "V6" : "V4");
                         });

// ---- a recorder stream that stalls ------------------------------------------------

class RecorderStall : public RoadTest, public ::testing::WithParamInterface<const char*> {
 protected:
  Stream& Run() {
    StartCamera(CameraConfig(GetParam(), 34));
    StreamSetup sSetup;
    sSetup.usCameraType = 34;
    sSetup.sCamName = "KE850";
    sSetup.sUser = "operator";
    sSetup.sPassword = "s3cret!";
    Stream& s = AddStream(sSetup);
    StartToRun(s);
    return s;
  }
  static constexpr const char* kPush = "GET /cgi-bin/push.cgi?CMD=START";
};

TEST_P(RecorderStall, StopIsCountedOnceAndTheReturnResetsIt) {
  Stream& s = Run();
  const std::string sAddr = GetParam();
  s.pNotify->SetStreamState(1);
  ASSERT_TRUE(m_capture.WaitFor(s.Line("CheckStreamStart RTP RUN ->STOP  POS=1 \n"))) << Tail();
  // Threshold 1: the first stop raises the alarm.
  ASSERT_TRUE(camtest::WaitUntil([&] { return !m_alarms.Reports().empty(); }));
  EXPECT_EQ(m_alarms.Codes(), std::vector<int>{2});
  ExpectLines({s.Line("CheckStreamStart [DEBUG] POS=1 PUSH CGI!\n"),
               s.Line("StreamStartCommandExec [DEBUG] cgi=/cgi-bin/push.cgi?CMD=START&CAM=0&"
                      "UID=41&PORT=5500&COMP=H264. \n"),
               s.Line("CheckStreamStart RTP RUN ->STOP  POS=1 \n")});
  // The start is pushed again on every check while the stream stays away,
  // with no new report; a plain 200 sends no keep-alive with it.
  ASSERT_TRUE(WaitForRequest(kPush, 3)) << Tail();
  EXPECT_EQ(m_capture.Count(s.Line("CheckStreamStart RTP RUN ->STOP  POS=1 \n")), 1);
  EXPECT_EQ(m_alarms.Reports().size(), 1u);
  EXPECT_FALSE(m_capture.Contains("KeepAlive Send"));
  EXPECT_EQ(s.Status(), CAM_HTTP_STS_RUN);

  s.pNotify->SetStreamState(0);
  ASSERT_TRUE(m_capture.WaitFor(s.Line("CheckStreamStart RTP STOP -> RUN  POS=1 \n"))) << Tail();
  ASSERT_TRUE(camtest::WaitUntil([&] { return m_alarms.Reports().size() == 2u; }));
  EXPECT_EQ(m_alarms.Codes(), (std::vector<int>{2, 39}));
  const int iPushes = CountRequests(kPush);

  // Any other non-zero answer pushes again without counting.
  const size_t uQueries = s.pNotify->StateQueries().size();
  const int iErrors = m_capture.CountContaining("[CCamR::ConnectError] m_iErrorCount");
  s.pNotify->SetStreamState(2);
  ASSERT_TRUE(WaitForRequest(kPush, iPushes + 2)) << Tail();
  EXPECT_EQ(m_capture.CountContaining("[CCamR::ConnectError] m_iErrorCount"), iErrors);
  EXPECT_EQ(m_capture.Count(s.Line("CheckStreamStart RTP RUN ->STOP  POS=1 \n")), 1);
  EXPECT_EQ(m_alarms.Reports().size(), 2u);
  EXPECT_GT(s.pNotify->StateQueries().size(), uQueries);
  for (const auto& q : s.pNotify->StateQueries()) {
    EXPECT_EQ(q.first, 34);
    EXPECT_EQ(q.second, CAM_REQUESTER_CMD_H264_RTP);
  }
  s.pNotify->SetStreamState(0);
}

TEST_P(RecorderStall, PushAnsweredWith204SendsKeepAliveAtOnce) {
  Stream& s = Run();
  camsim::Fault sNoContent;
  sNoContent.status = 204;
  Camera().SetFault("/cgi-bin/push.cgi", sNoContent);
  const int iStatus = CountRequests("GET /cgi-bin/status.cgi");
  s.pNotify->SetStreamState(1);
  ASSERT_TRUE(m_capture.WaitFor(s.Line(
      "CheckStreamStart [DEBUG] POS=1 PUSH CGI! m_KELCheckStreamRet=0x8000204 KeepAlive Send\n")))
      << Tail();
  s.pNotify->SetStreamState(0);
  ASSERT_TRUE(WaitForRequest("GET /cgi-bin/status.cgi", iStatus + 1));
  // The keep-alive follows the pushed start directly.
  const std::vector<std::string> asLines = RequestLines();
  size_t uPush = 0;
  for (size_t i = 0; i < asLines.size(); ++i) {
    if (i > 2 && asLines[i].rfind(kPush, 0) == 0) {
      uPush = i;
      break;
    }
  }
  ASSERT_GT(uPush, 0u);
  ASSERT_LT(uPush + 1, asLines.size());
  EXPECT_EQ(asLines[uPush + 1], "GET /cgi-bin/status.cgi?UID=41&HTML=as_status.html HTTP/1.0");
  EXPECT_EQ(s.Status(), CAM_HTTP_STS_RUN);
  Camera().ClearFaults();
}

TEST_P(RecorderStall, FailedForcedKeepAliveForgetsUidAndRebuildsAtOnce) {
  Stream& s = Run();
  camsim::Fault sNoContent;
  sNoContent.status = 204;
  sNoContent.times = 1;
  Camera().SetFault("/cgi-bin/push.cgi", sNoContent);
  camsim::Fault sDown;
  sDown.status = 503;
  sDown.times = 1;
  Camera().SetFault("/cgi-bin/status.cgi", sDown);
  s.pNotify->SetStreamState(1);
  ASSERT_TRUE(m_capture.WaitFor(s.Line("ChangeStatus [DEBUG] Video Event=6:4 -> 1. \n"))) << Tail();
  s.pNotify->SetStreamState(0);
  ASSERT_TRUE(m_capture.WaitFor("RequestThreadMain [DEBUG] RESTART TINDEX=" + s.Tindex() + "\n"))
      << Tail();
  // The check comes at the 150th idle round, the periodic keep-alive at the
  // 300th: the forced one meets the refusal.
  ExpectLines({s.Line("CheckStreamStart [DEBUG] POS=1 PUSH CGI! m_KELCheckStreamRet=0x8000204 "
                      "KeepAlive Send\n"),
               s.Line("DoRequest [Error] ret =8000503\n"), s.Line("UidInvalid [DEBUG] H.264:\n"),
               s.Line("ChangeStatus [DEBUG] Video Event=6:4 -> 1. \n"),
               "RequestThreadMain [DEBUG] RESTART TINDEX=" + s.Tindex() + "\n"});
  const std::vector<camtest::RtpNotice> asNotices = s.pNotify->RtpNotices();
  ASSERT_GE(asNotices.size(), 2u);
  EXPECT_EQ(asNotices[1].iUid, -1);
  // A recorder's video is rebuilt on the next idle round: a new login.
  ASSERT_TRUE(WaitForRequest("GET /cgi-bin/ulogin.cgi", 2)) << Tail();
  ASSERT_TRUE(WaitStatus(s, CAM_HTTP_STS_RUN));
}

INSTANTIATE_TEST_SUITE_P(Kel34, RecorderStall, ::testing::Values("127.0.0.1", "::1"),
                         [](const ::testing::TestParamInfo<const char*>& rInfo) {
                           return std::string(rInfo.param[0] == ':' ? "V6" : "V4");
                         });

}  // namespace
}  // namespace rtptest
