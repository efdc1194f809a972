// The HTTP requester's sessions through a real forwarding proxy on loopback,
// and the exception list that sends a camera past it.
#include "CamChildServer.h"
#include "TransportFixture.h"
#include "kxhttp.h"

namespace transporttest {
namespace {

class ProxyTest : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    CAMTEST_REQUIRE_PROGRAM(sProgram, "tinyproxy");
    ASSERT_TRUE(camtest::StartTinyproxy(proxy, dir, sProgram))
        << "tinyproxy did not start: " << dir.read("tinyproxy.log");
    usProxyPort = proxy.port();
    pDevice = StartDevice(GetParam(), CAM_REQUESTER_CAMTYPE_CAM07);
    ASSERT_NE(pDevice, nullptr);
    Aim(http, *pDevice, CAM_REQUESTER_CAMTYPE_CAM07);
    Aim(rtp, *pDevice, CAM_REQUESTER_CAMTYPE_CAM07);
    for (CamRequesterFields* psF :
         {static_cast<CamRequesterFields*>(&http), static_cast<CamRequesterFields*>(&rtp)}) {
      psF->sProxy.enable = 1;
      std::strcpy(psF->sProxy.host, "127.0.0.1");
      psF->sProxy.port = usProxyPort;
    }
    sCell = AddressCell(GetParam());
    sCamera = std::string(GetParam()) + ":" + std::to_string(pDevice->Port());
  }
  void TearDown() override {
    if (pDevice) pDevice->Stop();
    proxy.stop();
  }
  template <typename Requester>
  int Exchange(Requester& rReq) {
    if (rReq.OpenSessionCommandExec() != 0) return -2;
    EXPECT_EQ(rReq.SetUrl(const_cast<char*>("/cgi-bin/getuid?FILE=2&vcodec=jpeg")), 0);
    EXPECT_EQ(rReq.AddHeader(), 0);
    ReplyBuffer sReply;
    const int iRet = rReq.DoRequest(&sReply.sInet);
    EXPECT_EQ(rReq.CloseSessionCommand(), 0);
    return iRet;
  }
  bool CameToCameraThroughProxy() const {
    const auto records = pDevice->Requests();
    EXPECT_EQ(records.size(), 1u);
    return !records.empty() && records[0].Header("Via").find("tinyproxy") != std::string::npos;
  }

  camtest::TempDir dir;
  camtest::ChildServer proxy;
  unsigned short usProxyPort = 0;
  std::unique_ptr<camsim::Device> pDevice;
  camtest::PrintCapture capture;
  HttpRequester http;
  RtpRequester rtp;
  std::string sCell;
  std::string sCamera;
};

TEST_P(ProxyTest, CameraNotExceptedIsReachedThroughTheProxy) {
  EXPECT_EQ(Exchange(http), 0) << capture.All() << dir.read("tinyproxy.log");
  EXPECT_EQ(capture.Count(sCell +
                          "CCamRequester_Cgi_Kobu_Http::OpenSessionCommandExec [DEBUG] "
                          "Proxy use [127.0.0.1:" +
                          std::to_string(usProxyPort) + "]->[" + sCamera + "]\n"),
            1)
      << capture.All();
  EXPECT_TRUE(CameToCameraThroughProxy());
}

TEST_P(ProxyTest, ExceptedCameraIsReachedDirectly) {
  const bool bIpv6 = std::string(GetParam()).find(':') != std::string::npos;
  // An IPv6 address is one label: only the whole address matches it.
  std::strcpy(http.sProxy.except[3], bIpv6 ? "::1" : "127.0.0.*");
  EXPECT_EQ(Exchange(http), 0) << capture.All();
  EXPECT_EQ(capture.Count(sCell + "CheckProxyExcept [DEBUG] Proxy Except[4] = [" +
                          http.sProxy.except[3] + "]\r\n"),
            1)
      << capture.All();
  EXPECT_EQ(capture.Count(sCell +
                          "CCamRequester_Cgi_Kobu_Http::OpenSessionCommandExec [DEBUG] Proxy not "
                          "use [" +
                          sCamera + "]\n"),
            1)
      << capture.All();
  EXPECT_FALSE(CameToCameraThroughProxy());
}

TEST_P(ProxyTest, EnableOtherThanOneIsDisabled) {
  http.sProxy.enable = 2;
  EXPECT_EQ(Exchange(http), 0);
  EXPECT_EQ(
      capture.Count(sCell +
                    "CCamRequester_Cgi_Kobu_Http::OpenSessionCommandExec [DEBUG] Proxy Disable\n"),
      1)
      << capture.All();
  EXPECT_FALSE(CameToCameraThroughProxy());
}

TEST_P(ProxyTest, RtpRequesterNeverUsesTheProxy) {
  EXPECT_EQ(Exchange(rtp), 0);
  EXPECT_EQ(
      capture.Count(sCell +
                    "CCamRequester_Cgi_Kobu_Rtp::OpenSessionCommandExec [DEBUG] Proxy Disable\n"),
      1)
      << capture.All();
  EXPECT_FALSE(CameToCameraThroughProxy());
}

TEST_P(ProxyTest, SessionStillOpenIsClosedWithTheWarningOfTheBranch) {
  ASSERT_EQ(http.OpenSessionCommandExec(), 0);
  ASSERT_EQ(http.OpenSessionCommandExec(), 0);
  std::strcpy(http.sProxy.except[0], GetParam());
  ASSERT_EQ(http.OpenSessionCommandExec(), 0);
  for (int iPoint : {5, 6}) {
    EXPECT_EQ(capture.Count(sCell +
                            "CCamRequester_Cgi_Kobu_Http::OpenSessionCommandExec [Error] Session "
                            "already opened!(point" +
                            std::to_string(iPoint) +
                            "). If occurs seg-fault, open and close session logic may be wrong.\n"),
              1)
        << iPoint << capture.All();
  }
  EXPECT_EQ(http.CloseSessionCommand(), 0);
}

TEST_P(ProxyTest, CameraDownBehindTheProxyIsAServerError) {
  pDevice->Stop();
  pDevice.reset();
  EXPECT_EQ(Exchange(http), -1);
  EXPECT_EQ(capture.CountContaining("DoRequest [Error] http_get_response failed2:ret =80005"), 1)
      << capture.All();
  EXPECT_EQ(http.iUidInvalidCalls, 1);
}

INSTANTIATE_TEST_SUITE_P(Loopback, ProxyTest, ::testing::Values("127.0.0.1", "::1"));

}  // namespace
}  // namespace transporttest
