// The rules of the session glue that need no camera: the proxy exception
// patterns, the scan of the exception list, and the result classes.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTestSupport.h"
#include "CamTransport.h"

namespace {

int Judge(const char* address, const char* pattern) {
  CCamRequester_Cgi_Kobu_Http req;
  return req.JudgeExceptAddress(const_cast<char*>(address), const_cast<char*>(pattern));
}

TEST(JudgeExceptAddress, WildcardStandsForOneWholeLabel) {
  EXPECT_EQ(Judge("192.168.0.10", "192.168.0.*"), 0);
  EXPECT_EQ(Judge("192.168.0.10", "192.168.*.10"), 0);
  EXPECT_EQ(Judge("192.168.0.10", "*.*.*.*"), 0);
}

TEST(JudgeExceptAddress, FewerOrMoreLabelsFail) {
  EXPECT_EQ(Judge("192.168.0.10", "192.168.*"), -1);
  EXPECT_EQ(Judge("192.168.0.10", "*"), -1);
  EXPECT_EQ(Judge("192.168.0.10", "192.168.0.10.5"), -1);
  // A "*" never stands for a missing label.
  EXPECT_EQ(Judge("192.168.0", "192.168.0.*"), -1);
}

TEST(JudgeExceptAddress, ExactMatchAndByteWiseCompare) {
  EXPECT_EQ(Judge("192.168.0.10", "192.168.0.10"), 0);
  EXPECT_EQ(Judge("192.168.0.10", "192.168.0.010"), -1);  // no numeric normalisation
  EXPECT_EQ(Judge("cam.example", "CAM.example"), -1);     // case matters
  EXPECT_EQ(Judge("192.168.0.10", "192.168.0.1"), -1);    // no prefix matching
}

TEST(JudgeExceptAddress, Ipv6IsOneLabel) {
  EXPECT_EQ(Judge("fe80::1", "fe80::1"), 0);
  EXPECT_EQ(Judge("fe80::1", "FE80::1"), -1);
  EXPECT_EQ(Judge("fe80::1", "fe80::2"), -1);
  // The whole address is one label, so a lone "*" stands for it.
  EXPECT_EQ(Judge("fe80::1", "*"), 0);
}

TEST(JudgeExceptAddress, EmptyTexts) {
  EXPECT_EQ(Judge("", ""), 0);
  EXPECT_EQ(Judge("", "*"), -1);
  EXPECT_EQ(Judge("10.0.0.1", ""), -1);
}

// Every line of a requester with an address carries it in its first cell,
// right-aligned in 15 characters.
class ProxyExceptTest : public ::testing::Test {
 protected:
  CCamRequester_Cgi_Kobu_Http req;
  camtest::PrintCapture capture;
  void SetUp() override { std::strcpy(req.cIpAddr, "192.168.0.10"); }
};

TEST_F(ProxyExceptTest, FortiethEntryMatchesAfterThirtyNineEmptyOnes) {
  std::strcpy(req.sProxy.except[39], "192.168.0.*");
  EXPECT_EQ(req.CheckProxyExcept(), 0);
  EXPECT_EQ(capture.Count(
                "IP:   192.168.0.10 CheckProxyExcept [DEBUG] Proxy Except[40] = [192.168.0.*]\r\n"),
            1)
      << capture.All();
}

TEST_F(ProxyExceptTest, FirstMatchingEntryWinsAndEmptyEntriesDoNotEndTheScan) {
  std::strcpy(req.sProxy.except[2], "10.*.*.*");
  std::strcpy(req.sProxy.except[7], "192.168.*.10");
  std::strcpy(req.sProxy.except[9], "192.168.0.10");
  EXPECT_EQ(req.CheckProxyExcept(), 0);
  EXPECT_EQ(capture.Count(
                "IP:   192.168.0.10 CheckProxyExcept [DEBUG] Proxy Except[8] = [192.168.*.10]\r\n"),
            1)
      << capture.All();
  EXPECT_EQ(capture.CountContaining("Proxy Except[10]"), 0);
}

TEST_F(ProxyExceptTest, NoMatchingEntry) {
  std::strcpy(req.sProxy.except[0], "192.168.1.*");
  std::strcpy(req.sProxy.except[1], "192.168.*");
  EXPECT_EQ(req.CheckProxyExcept(), -1);
  EXPECT_EQ(capture.CountContaining("Proxy Except"), 0);
}

// The result classes, in the order they are tested.
struct ResultCase {
  uint32_t ulResult;
  camtr::ResultClass eStrict;
  camtr::ResultClass eLenient;
};

TEST(ClassifyResult, TableOfResultWords) {
  using RC = camtr::ResultClass;
  const ResultCase kCases[] = {
      {0x08000200, RC::kSuccess, RC::kSuccess},
      {0x08000204, RC::kSuccess, RC::kSuccess},
      {0x08000302, RC::kSuccess, RC::kSuccess},
      {0x08000404, RC::kClientServerError, RC::kSuccess},
      {0x08000401, RC::kClientServerError, RC::kSuccess},
      {0x08000500, RC::kClientServerError, RC::kClientServerError},
      {0x08000503, RC::kClientServerError, RC::kClientServerError},
      {0x08001000, RC::kTimeout, RC::kTimeout},
      {0x08007000, RC::kTimeout, RC::kTimeout},
      {0x08003000, RC::kOtherError, RC::kOtherError},
      {0x08005000, RC::kOtherError, RC::kOtherError},
      {0x08008404, RC::kOtherError, RC::kOtherError},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(camtr::ClassifyResult(c.ulResult, false), c.eStrict) << std::hex << c.ulResult;
    EXPECT_EQ(camtr::ClassifyResult(c.ulResult, true), c.eLenient) << std::hex << c.ulResult;
  }
}

TEST(CloseSession, ClosingANullSessionIsAMultiplexClose) {
  camtest::PrintCapture capture;
  CCamRequester_Cgi_Kobu_Rtp rtp;
  EXPECT_EQ(rtp.CloseSessionCommand(), -1);
  CCamRequester_Cgi_Kobu_Http http;
  EXPECT_EQ(http.CloseSessionCommand(), -1);
  EXPECT_EQ(http.CloseSessionPush(), -1);
  EXPECT_EQ(capture.Count(" CloseSessionCommand [Error] Multiplex Close Session.\n"), 2)
      << capture.All();
  EXPECT_EQ(capture.Count(" CloseSessionPush [Error] Multiplex Close Session.\n"), 1);
}

}  // namespace
