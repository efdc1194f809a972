// The session glue of both requesters against a simulated camera on
// loopback: opening, the request line and headers, the result classes with
// their messages, the UID verdict, closing, and nothing left behind.
#include <chrono>

#include "CamTestTiming.h"
#include "TransportFixture.h"
#include "kxhttp.h"

namespace transporttest {
namespace {

using camsim::Fault;
using camsim::FaultAction;

class TransportTest : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    iFdsBefore = camtest::OpenFdCount();
    pDevice = StartDevice(GetParam(), CAM_REQUESTER_CAMTYPE_CAM07);
    ASSERT_NE(pDevice, nullptr);
    Aim(rtp, *pDevice, CAM_REQUESTER_CAMTYPE_CAM07);
    Aim(http, *pDevice, CAM_REQUESTER_CAMTYPE_CAM07);
    sCell = AddressCell(GetParam());
  }
  void TearDown() override {
    http_set_timeout_divisor(1);
    pDevice->Stop();
    pDevice.reset();
    EXPECT_EQ(rtp.psSession, nullptr);
    EXPECT_EQ(http.psSession, nullptr);
    EXPECT_EQ(camtest::SettledFdCount(iFdsBefore), iFdsBefore) << "a descriptor was left open";
  }
  // One exchange of the requester: open, url, headers, request, close.
  template <typename Requester>
  int Exchange(Requester& rReq, bool bLenient,
               const char* pcUrl = "/cgi-bin/getuid?FILE=2&vcodec=h264") {
    EXPECT_EQ(rReq.OpenSessionCommandExec(), 0);
    EXPECT_EQ(rReq.SetUrl(const_cast<char*>(pcUrl)), 0);
    EXPECT_EQ(rReq.AddHeader(), 0);
    ReplyBuffer sReply;
    const int iRet = bLenient ? rReq.DoRequest2(&sReply.sInet) : rReq.DoRequest(&sReply.sInet);
    EXPECT_EQ(rReq.CloseSessionCommand(), 0);
    return iRet;
  }
  void FailPath(int iStatus) {
    Fault sFault;
    sFault.status = iStatus;
    pDevice->SetFault("/cgi-bin/getuid", sFault);
  }

  int iFdsBefore = 0;
  std::unique_ptr<camsim::Device> pDevice;
  camtest::PrintCapture capture;
  RtpRequester rtp;
  HttpRequester http;
  std::string sCell;
};

TEST_P(TransportTest, OpenAndCloseLines) {
  ASSERT_EQ(rtp.OpenSessionCommandExec(), 0);
  ASSERT_NE(rtp.psSession, nullptr);
  const std::string sPort = std::to_string(pDevice->Port());
  char acHandle[64];
  snprintf(acHandle, sizeof(acHandle), "%p", static_cast<void*>(rtp.psSession));
  EXPECT_EQ(
      capture.Count(sCell +
                    "CCamRequester_Cgi_Kobu_Rtp::OpenSessionCommandExec [DEBUG] Proxy Disable\n"),
      1)
      << capture.All();
  EXPECT_EQ(capture.Count(sCell +
                          "CCamRequester_Cgi_Kobu_Rtp::OpenSessionCommandExec [DEBUG] open success "
                          "psSession:0x" +
                          acHandle + ", IP:" + GetParam() + "  Port:" + sPort + "\n"),
            1)
      << capture.All();
  EXPECT_EQ(rtp.CloseSessionCommand(), 0);
  EXPECT_EQ(capture.Count(sCell + " CloseSessionCommand [DEBUG] Session Close [psSession:" +
                          acHandle + "]\n"),
            1)
      << capture.All();
}

TEST_P(TransportTest, RefusedConnectionFailsTheOpen) {
  ASSERT_TRUE(pDevice->RefuseConnections());
  const std::string sPort = std::to_string(pDevice->Port());
  EXPECT_EQ(rtp.OpenSessionCommandExec(), -1);
  EXPECT_EQ(http.OpenSessionCommandExec(), -1);
  EXPECT_EQ(rtp.psSession, nullptr);
  EXPECT_EQ(http.psSession, nullptr);
  for (const char* pcClass : {"CCamRequester_Cgi_Kobu_Rtp", "CCamRequester_Cgi_Kobu_Http"}) {
    EXPECT_EQ(capture.Count(sCell + pcClass + "::OpenSessionCommandExec [ERROR] open faild IP:" +
                            GetParam() + "  Port:" + sPort + "\n"),
              1)
        << capture.All();
  }
  // The open itself never declares the UID invalid: its callers do.
  EXPECT_EQ(rtp.iUidInvalidCalls, 0);
}

TEST_P(TransportTest, SuccessClassesPassAndTheRtpRequesterKeepsTheResultWord) {
  EXPECT_EQ(Exchange(rtp, false), 0);
  EXPECT_EQ(rtp.m_KELCheckStreamRet, 0x08000200u);
  for (int iStatus : {204, 302}) {
    FailPath(iStatus);
    EXPECT_EQ(Exchange(rtp, false), 0) << iStatus;
    EXPECT_EQ(rtp.m_KELCheckStreamRet,
              0x08000000u | ((iStatus / 100) << 8) | (((iStatus / 10) % 10) << 4) | (iStatus % 10));
    EXPECT_EQ(Exchange(http, false), 0) << iStatus;
  }
  // The HTTP requester's request operations keep no result word.
  EXPECT_EQ(http.m_KELCheckStreamRet, 0u);
  EXPECT_EQ(rtp.iUidInvalidCalls + http.iUidInvalidCalls, 0);
}

TEST_P(TransportTest, NotFoundFailsDoRequestButPassesDoRequest2) {
  FailPath(404);
  EXPECT_EQ(Exchange(rtp, false), -1);
  EXPECT_EQ(capture.Count(sCell + "DoRequest [Error] ret =8000404\n"), 1) << capture.All();
  EXPECT_EQ(capture.Count(sCell + "DoRequest [Error] http_get_response failed2:ret =8000404\n"), 1);
  EXPECT_EQ(rtp.iUidInvalidCalls, 1);
  EXPECT_EQ(Exchange(rtp, true), 0);
  EXPECT_EQ(rtp.iUidInvalidCalls, 1);

  capture.Clear();
  EXPECT_EQ(Exchange(http, false), -1);
  // The HTTP requester has no extra "ret =" line.
  EXPECT_EQ(capture.CountContaining("DoRequest [Error] ret ="), 0) << capture.All();
  EXPECT_EQ(capture.Count(sCell + "DoRequest [Error] http_get_response failed2:ret =8000404\n"), 1);
  EXPECT_EQ(http.iUidInvalidCalls, 1);
  EXPECT_EQ(Exchange(http, true), 0);
}

TEST_P(TransportTest, ServerErrorFailsBoth) {
  FailPath(500);
  EXPECT_EQ(Exchange(rtp, true), -1);
  EXPECT_EQ(capture.Count(sCell + "DoRequest2 [Error] ret =8000500\n"), 1) << capture.All();
  EXPECT_EQ(capture.Count(sCell + "DoRequest2 [Error] http_get_response failed2:ret =8000500\n"),
            1);
  EXPECT_EQ(Exchange(http, false), -1);
  EXPECT_EQ(rtp.iUidInvalidCalls, 1);
  EXPECT_EQ(http.iUidInvalidCalls, 1);
}

TEST_P(TransportTest, UnauthorizedIsAClientError) {
  pDevice->SetAuth(camsim::AuthMode::kBasic, "admin", "secret");
  EXPECT_EQ(Exchange(http, false), -1);
  EXPECT_EQ(capture.Count(sCell + "DoRequest [Error] http_get_response failed2:ret =8000401\n"), 1)
      << capture.All();
}

TEST_P(TransportTest, CredentialsAnswerDigest) {
  pDevice->SetAuth(camsim::AuthMode::kDigestSha256, "admin", "secret");
  ASSERT_EQ(rtp.OpenSessionCommandExec(), 0);
  ASSERT_EQ(rtp.SetUrl(const_cast<char*>("/cgi-bin/getuid?FILE=2&vcodec=h264")), 0);
  ASSERT_EQ(rtp.AddHeader(), 0);
  ASSERT_EQ(http_set_auth(rtp.psSession, "admin", "secret"), HTTP_RESULT_OK);
  ReplyBuffer sReply;
  EXPECT_EQ(rtp.DoRequest(&sReply.sInet), 0) << capture.All();
  EXPECT_EQ(rtp.CloseSessionCommand(), 0);
}

TEST_P(TransportTest, CameraThatNeverAnswersTimesOut) {
  Fault sFault;
  sFault.action = FaultAction::kNoAnswer;
  pDevice->SetFault("/cgi-bin/getuid", sFault);
  // The 5 s request time-out, shortened tenfold.
  http_set_timeout_divisor(10);
  const auto tStart = std::chrono::steady_clock::now();
  EXPECT_EQ(Exchange(rtp, false), -1);
  const auto tElapsed = std::chrono::steady_clock::now() - tStart;
  EXPECT_GE(tElapsed, std::chrono::milliseconds(400));
  EXPECT_LT(tElapsed, camtest::Scaled(std::chrono::seconds(3)));
  EXPECT_EQ(capture.CountContaining("DoRequest [Error] http_get_response failed1:ret =8007000\n"),
            1)
      << capture.All();
  EXPECT_EQ(rtp.iUidInvalidCalls, 1);
}

TEST_P(TransportTest, AnswerThatIsNotHttpIsAnOtherError) {
  Fault sFault;
  sFault.action = FaultAction::kGarbage;
  pDevice->SetFault("/cgi-bin/getuid", sFault);
  EXPECT_EQ(Exchange(http, false), -1);
  EXPECT_EQ(capture.CountContaining("DoRequest [Error] http_get_response failed3:ret =800"), 1)
      << capture.All();
  EXPECT_EQ(http.iUidInvalidCalls, 1);
}

TEST_P(TransportTest, ClosedInTheMiddleOfTheBody) {
  Fault sFault;
  sFault.action = FaultAction::kCloseMidBody;
  pDevice->SetFault("/cgi-bin/getuid", sFault);
  EXPECT_EQ(Exchange(rtp, false), -1);
  EXPECT_EQ(capture.CountContaining("DoRequest [Error] http_get_response failed3:ret =800"), 1)
      << capture.All();
}

TEST_P(TransportTest, RecorderFailureKeepsTheUidAndAnInvalidTypeDoesNot) {
  FailPath(500);
  rtp.usCameraType = CAM_REQUESTER_CAMTYPE_KEL33;
  EXPECT_EQ(Exchange(rtp, false), -1);
  EXPECT_EQ(rtp.iUidInvalidCalls, 0);
  rtp.usCameraType = CAM_REQUESTER_CAMTYPE_MAX;
  EXPECT_EQ(Exchange(rtp, false), -1);
  EXPECT_EQ(rtp.iUidInvalidCalls, 1);
}

TEST_P(TransportTest, HostHeaderIsTheAddressBracketedForIpv6WithoutPort) {
  EXPECT_EQ(Exchange(rtp, false, "/cgi-bin/getuid?FILE=2&vcodec=mpeg-4"), 0);
  const auto records = pDevice->Requests();
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].requestLine, "GET /cgi-bin/getuid?FILE=2&vcodec=mpeg-4 HTTP/1.0");
  EXPECT_EQ(records[0].Header("Connection"), "Keep-Alive");
  const std::string sAddress = GetParam();
  const bool bIpv6 = sAddress.find(':') != std::string::npos;
  EXPECT_EQ(records[0].Header("Host"), bIpv6 ? "[" + sAddress + "]" : sAddress);
  EXPECT_EQ(capture.Count(sCell + "AddHeader [DEBUG] setaddress=[" + sAddress + "]\n"),
            bIpv6 ? 1 : 0)
      << capture.All();
}

TEST_P(TransportTest, HttpRequesterClosesASessionStillOpen) {
  ASSERT_EQ(http.OpenSessionCommandExec(), 0);
  HTTP_SESSION* psFirst = http.psSession;
  ASSERT_EQ(http.OpenSessionCommandExec(), 0);
  EXPECT_NE(http.psSession, nullptr);
  EXPECT_EQ(
      capture.Count(sCell + "CCamRequester_Cgi_Kobu_Http::OpenSessionCommandExec [Error] Session "
                            "already opened!(point7). If occurs seg-fault, open and close session "
                            "logic may be wrong.\n"),
      1)
      << capture.All();
  char acFirst[64];
  snprintf(acFirst, sizeof(acFirst), "%p", static_cast<void*>(psFirst));
  EXPECT_EQ(capture.Count(sCell + " CloseSessionCommand [DEBUG] Session Close [psSessionPush:" +
                          "(nil)][psSession:" + acFirst + "]\n"),
            1)
      << capture.All();
  EXPECT_EQ(http.CloseSessionCommand(), 0);
}

// Records the hand-over calls and whether the push session was still open
// when the upper layer was told to let go of it.
class HandleNotify : public CCamRequesterNotify {
 public:
  explicit HandleNotify(const CamRequesterFields& rFields) : rFields_(rFields) {}
  void NotifyRtpStream(int, const void*, int, const char*, int, int, int, int, int, const char*,
                       int, int) override {}
  void NotifySessionInfo(int, const void*, int, int) override {}
  int GetStreamState(unsigned short, int) override { return 0; }
  void NotifyCamRequesterHandle(int iUid, HTTP_SESSION* psHandle) override {
    aiUids.push_back(iUid);
    apsHandles.push_back(psHandle);
    bPushOpenWhenTold =
        rFields_.psSessionPush != nullptr && http_session_socket(rFields_.psSessionPush) >= 0;
  }
  std::vector<int> aiUids;
  std::vector<HTTP_SESSION*> apsHandles;
  bool bPushOpenWhenTold = false;

 private:
  const CamRequesterFields& rFields_;
};

TEST_P(TransportTest, PushCloseWithdrawsTheHandleFirst) {
  HandleNotify notify(http);
  http.p_notify_to_upper = &notify;
  http.iCmdType = CAM_REQUESTER_CMD_JPEG_HTTP;
  http.iUid = 42;
  ASSERT_EQ(http.OpenSessionCommandExec(), 0);
  http.psSessionPush = http.psSession;
  http.psSession = nullptr;
  EXPECT_EQ(http.CloseSessionPush(), 0);
  EXPECT_EQ(http.psSessionPush, nullptr);
  ASSERT_EQ(notify.aiUids.size(), 1u);
  EXPECT_EQ(notify.aiUids[0], 42);
  EXPECT_EQ(notify.apsHandles[0], nullptr);
  EXPECT_TRUE(notify.bPushOpenWhenTold);
  EXPECT_EQ(capture.CountContaining(" CloseSessionPush [DEBUG] Server Push Close [psSessionPush:"),
            1)
      << capture.All();
}

TEST_P(TransportTest, PushCloseWithoutUpperLayerSaysSoByType) {
  const struct {
    int iCmdType;
    const char* pcLine;
  } kCases[] = {
      {CAM_REQUESTER_CMD_JPEG_HTTP, "StreamStartCommandExec [Error] JPEG p_notify_to_upper=NULL\n"},
      {CAM_REQUESTER_CMD_G726_HTTP,
       "StreamStartCommandExec [Error] G.726 p_notify_to_upper=NULL\n"},
      {CAM_REQUESTER_CMD_JPEG_PLAY, nullptr},
  };
  for (const auto& c : kCases) {
    capture.Clear();
    http.iCmdType = c.iCmdType;
    ASSERT_EQ(http.OpenSessionCommandExec(), 0);
    http.psSessionPush = http.psSession;
    http.psSession = nullptr;
    EXPECT_EQ(http.CloseSessionPush(), 0);
    EXPECT_EQ(capture.CountContaining("p_notify_to_upper=NULL"), c.pcLine != nullptr ? 1 : 0);
    if (c.pcLine != nullptr) {
      EXPECT_EQ(capture.Count(sCell + c.pcLine), 1) << capture.All();
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Loopback, TransportTest, ::testing::Values("127.0.0.1", "::1"));

// Calls without a session: the library refuses, the glue reports and
// forgets the UID.
class NoSessionTest : public ::testing::Test {
 protected:
  camtest::PrintCapture capture;
  RtpRequester rtp;
  HttpRequester http;
};

TEST_F(NoSessionTest, SetUrlFailureForgetsTheUid) {
  EXPECT_EQ(rtp.SetUrl(const_cast<char*>("/cgi-bin/x")), -1);
  EXPECT_EQ(rtp.iUidInvalidCalls, 1);
  EXPECT_EQ(capture.CountContaining("SetUrl [Error] http_set_url failed:ret ="), 1)
      << capture.All();
}

TEST_F(NoSessionTest, NullUrlIsRefusedByTheHttpRequesterOnly) {
  EXPECT_EQ(http.SetUrl(nullptr), -1);
  EXPECT_EQ(capture.Count("SetUrl [Error] invalid param\n"), 1) << capture.All();
  EXPECT_EQ(http.iUidInvalidCalls, 0);
}

TEST_F(NoSessionTest, AddHeaderFailureForgetsTheUidUnlessRecorder) {
  EXPECT_EQ(http.AddHeader(), -1);
  EXPECT_EQ(http.iUidInvalidCalls, 1);
  EXPECT_EQ(capture.CountContaining("AddHeader [Error] http_add_header failed:ret ="), 1);
  http.usCameraType = CAM_REQUESTER_CAMTYPE_KEL31;
  EXPECT_EQ(http.AddHeader(), -1);
  EXPECT_EQ(http.iUidInvalidCalls, 1);
}

}  // namespace
}  // namespace transporttest
