// A JPEG push through a real forwarding proxy on loopback, and past it for a
// camera on the exception list.
#include "CamChildServer.h"
#include "HttpRig.h"
#include "HttpRoads.h"

namespace httptest {
namespace {

class ProxyRoadTest : public HttpRequesterTest {
 protected:
  void SetUp() override {
    HttpRequesterTest::SetUp();
    CAMTEST_REQUIRE_PROGRAM(sProgram, "tinyproxy");
    ASSERT_TRUE(camtest::StartTinyproxy(proxy, dir, sProgram))
        << "tinyproxy did not start: " << dir.read("tinyproxy.log");
    usProxyPort = proxy.port();
  }
  void TearDown() override {
    proxy.stop();
    HttpRequesterTest::TearDown();
  }
  void UseProxy(HttpRig& rRig, const char* pcException) {
    auto psProxy = std::make_unique<CAM_PROXY_PARAM>();
    std::memset(psProxy.get(), 0, sizeof(CAM_PROXY_PARAM));
    psProxy->enable = 1;
    std::strcpy(psProxy->host, "127.0.0.1");
    psProxy->port = usProxyPort;
    if (pcException != nullptr) std::strcpy(psProxy->except[39], pcException);
    ASSERT_EQ(rRig.req->SetParameter(CAM_PARAM_PROXY, psProxy.get(), sizeof(CAM_PROXY_PARAM)), 0);
  }
  // Runs START until ten pictures are read, then STOP.
  void RunOnePush(HttpRig& rRig, camtest::PrintCapture& rCapture) {
    rRig.req->RequestStart();
    ASSERT_TRUE(rRig.WaitForStatus(CAM_HTTP_STS_RUN)) << rCapture.All();
    ASSERT_TRUE(rRig.notify.WaitForPictures(10, seconds(10))) << rCapture.All();
    rRig.req->RequestStop();
    ASSERT_TRUE(rRig.WaitForStatus(CAM_HTTP_STS_IDLE)) << rCapture.All();
    EXPECT_TRUE(rRig.notify.HandleEvents().back().bOpenWhenWithdrawn);
  }

  camtest::TempDir dir;
  camtest::ChildServer proxy;
  unsigned short usProxyPort = 0;
};

TEST_F(ProxyRoadTest, EveryExchangeAndThePushGoThroughTheProxy) {
  RigOptions sOptions;
  sOptions.usFrate = 11;
  HttpRig rig(sOptions);
  camtest::PrintCapture capture;
  rig.Configure();
  UseProxy(rig, "10.0.0.*");
  RunOnePush(rig, capture);
  const auto asRecords = rig.device->Requests();
  ASSERT_GE(asRecords.size(), 3u);
  for (const auto& r : asRecords) {
    EXPECT_NE(r.Header("Via").find("tinyproxy"), std::string::npos) << r.requestLine;
  }
  const std::string sCamera = "127.0.0.1:" + std::to_string(rig.device->Port());
  EXPECT_TRUE(capture.Contains(
      "CCamRequester_Cgi_Kobu_Http::OpenSessionCommandExec [DEBUG] Proxy use [127.0.0.1:" +
      std::to_string(usProxyPort) + "]->[" + sCamera + "]\n"));
  // The proxy's own log names the requests it forwarded.
  const std::string sLog = dir.read("tinyproxy.log");
  EXPECT_NE(sLog.find("/cgi-bin/getuid"), std::string::npos) << sLog;
  EXPECT_NE(sLog.find("/cgi-bin/jpeg?connect=start"), std::string::npos) << sLog;
  EXPECT_NE(sLog.find("/cgi-bin/jpeg?connect=stop"), std::string::npos) << sLog;
}

TEST_F(ProxyRoadTest, CameraOnTheExceptionListIsReachedDirectly) {
  HttpRig rig(RigOptions{});
  camtest::PrintCapture capture;
  rig.Configure();
  UseProxy(rig, "127.0.0.*");
  RunOnePush(rig, capture);
  for (const auto& r : rig.device->Requests()) {
    EXPECT_EQ(r.Header("Via"), "") << r.requestLine;
  }
  EXPECT_TRUE(capture.Contains("CheckProxyExcept [DEBUG] Proxy Except[40] = [127.0.0.*]\r\n"));
  EXPECT_TRUE(
      capture.Contains("CCamRequester_Cgi_Kobu_Http::OpenSessionCommandExec [DEBUG] Proxy "
                       "not use [127.0.0.1:" +
                       std::to_string(rig.device->Port()) + "]\n"));
  EXPECT_EQ(dir.read("tinyproxy.log").find("/cgi-bin/"), std::string::npos);
}

}  // namespace
}  // namespace httptest
