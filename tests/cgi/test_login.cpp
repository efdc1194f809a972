// Recorder login and logout of both requesters for every camera type, and
// the credential transform through the virtual ChangeData_KelEncrypt, with
// vectors computed by hand from the transform's rule.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTestSupport.h"
#include "CgiTestSupport.h"

namespace {

using cgitest::ClockOverride;
using cgitest::FixedClock;
using cgitest::Repeat;

template <typename T>
struct Traits;
template <>
struct Traits<CCamRequester_Cgi_Kobu_Rtp> {
  static constexpr const char* kLogOutRefusal = "KelStreamStopCommandExec [ERROR] usCameraType = ";
};
template <>
struct Traits<CCamRequester_Cgi_Kobu_Http> {
  static constexpr const char* kLogOutRefusal = "CmdSet_KelLogOut [ERROR] usCameraType = ";
};

bool IsRecorder(int type) {
  return type >= 31 && type <= 36;
}

template <typename T>
class KelLogin : public ::testing::Test {
 protected:
  ClockOverride clock_{&FixedClock};
  camtest::PrintCapture print_;
  T r_;
  char dst_[1024];

  void SetCredentials(const char* user, const char* password, const char* key) {
    memset(r_.cUserName, 0, sizeof(r_.cUserName));
    memset(r_.cPassword, 0, sizeof(r_.cPassword));
    memset(r_.strKey, 0, sizeof(r_.strKey));
    snprintf(r_.cUserName, sizeof(r_.cUserName), "%s", user);
    snprintf(r_.cPassword, sizeof(r_.cPassword), "%s", password);
    snprintf(r_.strKey, sizeof(r_.strKey), "%s", key);
  }

  std::string Transform(const char* key, const char* data) {
    char acKey[64] = {};
    char acData[256] = {};
    char acOut[80];
    memset(acOut, 'x', sizeof(acOut));
    snprintf(acKey, sizeof(acKey), "%s", key);
    snprintf(acData, sizeof(acData), "%s", data);
    char* pcRet = r_.ChangeData_KelEncrypt(acKey, acData, acOut);
    EXPECT_EQ(pcRet, acOut);
    return std::string(acOut);
  }
};

using Requesters = ::testing::Types<CCamRequester_Cgi_Kobu_Rtp, CCamRequester_Cgi_Kobu_Http>;
TYPED_TEST_SUITE(KelLogin, Requesters);

TYPED_TEST(KelLogin, LoginForEveryCameraType) {
  // User "A" under the empty key: 0x41, then 0 XOR 0x41 at every position.
  // Empty password: 32 zero bytes stay zero.
  this->SetCredentials("A", "", "");
  const std::string line = "/cgi-bin/ulogin.cgi?USER=" + Repeat("41", 32) +
                           "&PASS=" + Repeat("00", 32) + "&KEY=&TEMP=777";
  for (int type = 0; type <= 37; ++type) {
    this->r_.usCameraType = static_cast<uint16_t>(type);
    this->print_.Clear();
    memset(this->dst_, 'x', sizeof(this->dst_));
    if (IsRecorder(type)) {
      EXPECT_EQ(this->r_.CmdSet_KelLogIn(this->dst_), 0) << type;
      EXPECT_EQ(std::string(this->dst_), line) << type;
    } else {
      EXPECT_EQ(this->r_.CmdSet_KelLogIn(this->dst_), -1) << type;
      EXPECT_STREQ(this->dst_, "") << type;
      EXPECT_TRUE(this->print_.Lines().empty()) << type;  // refused silently
    }
  }
}

TYPED_TEST(KelLogin, LogoutForEveryCameraType) {
  this->r_.uid_logout = 9;
  for (int type = 0; type <= 37; ++type) {
    this->r_.usCameraType = static_cast<uint16_t>(type);
    this->print_.Clear();
    memset(this->dst_, 'x', sizeof(this->dst_));
    if (IsRecorder(type)) {
      EXPECT_EQ(this->r_.CmdSet_KelLogOut(this->dst_), 0) << type;
      EXPECT_EQ(std::string(this->dst_), "/cgi-bin/logout.cgi?UID=9") << type;
    } else {
      EXPECT_EQ(this->r_.CmdSet_KelLogOut(this->dst_), -1) << type;
      EXPECT_STREQ(this->dst_, "") << type;
      EXPECT_EQ(this->print_.Count(std::string(Traits<TypeParam>::kLogOutRefusal) +
                                   std::to_string(type) + "\n"),
                1)
          << type;
    }
  }
}

TYPED_TEST(KelLogin, LogoutOfCameraType12UsesTheMessageOfTheClass) {
  this->r_.usCameraType = 12;
  EXPECT_EQ(this->r_.CmdSet_KelLogOut(this->dst_), -1);
  EXPECT_EQ(this->print_.Count(std::string(Traits<TypeParam>::kLogOutRefusal) + "12\n"), 1);
}

TYPED_TEST(KelLogin, LogoutWritesTheUidToLogOutNotTheSessionUid) {
  this->r_.usCameraType = 33;
  this->r_.iUid = 5;
  this->r_.uid_logout = -1;
  ASSERT_EQ(this->r_.CmdSet_KelLogOut(this->dst_), 0);
  EXPECT_EQ(std::string(this->dst_), "/cgi-bin/logout.cgi?UID=-1");
}

TYPED_TEST(KelLogin, TransformEmptyKey) {
  EXPECT_EQ(this->Transform("", "A"), Repeat("41", 32));
}

TYPED_TEST(KelLogin, TransformOneByteKey) {
  // pos 0: (0x41^0x01)-0x01 = 0x3f; pos 1: ((0^0x3f)^0x01)-0x01 = 0x3d;
  // pos 2: 0x3b; each later position two less, position 31: 0x01.
  const std::string out = this->Transform("\x01", "A");
  ASSERT_EQ(out.size(), 64u);
  EXPECT_EQ(out.substr(0, 6), "3f3d3b");
  EXPECT_EQ(out.substr(62, 2), "01");
}

TYPED_TEST(KelLogin, TransformSixByteKey) {
  // Key "abcdef", data "A": worked by hand, position 0 gives 0x5f and
  // position 1 gives 0x59.
  const std::string out = this->Transform("abcdef", "A");
  ASSERT_EQ(out.size(), 64u);
  EXPECT_EQ(out.substr(0, 4), "5f59");
}

TYPED_TEST(KelLogin, TransformFortyCharactersEqualsTheFirstThirtyTwo) {
  const std::string forty = std::string(32, 'u') + "12345678";
  EXPECT_EQ(this->Transform("k3Y", forty.c_str()),
            this->Transform("k3Y", std::string(32, 'u').c_str()));
}

TYPED_TEST(KelLogin, TransformEmptyInput) {
  EXPECT_EQ(this->Transform("", ""), Repeat("00", 32));
  EXPECT_EQ(this->Transform("\x01", ""), Repeat("00", 32));
}

TYPED_TEST(KelLogin, LoginWithOneByteKeyAndSixByteKey) {
  this->r_.usCameraType = 31;
  this->SetCredentials("A", "", "\x01");
  ASSERT_EQ(this->r_.CmdSet_KelLogIn(this->dst_), 0);
  std::string line = this->dst_;
  EXPECT_EQ(line.substr(0, 31), "/cgi-bin/ulogin.cgi?USER=3f3d3b");
  EXPECT_NE(line.find("&PASS=" + Repeat("00", 32) + "&KEY=\x01&TEMP=777"), std::string::npos);

  this->SetCredentials("A", "A", "abcdef");
  ASSERT_EQ(this->r_.CmdSet_KelLogIn(this->dst_), 0);
  line = this->dst_;
  EXPECT_EQ(line.substr(0, 29), "/cgi-bin/ulogin.cgi?USER=5f59");
  EXPECT_EQ(line.substr(25 + 64, 10), "&PASS=5f59");
  EXPECT_EQ(line.substr(line.size() - 20), "&KEY=abcdef&TEMP=777");
  EXPECT_EQ(line.size(),
            std::string("/cgi-bin/ulogin.cgi?USER=&PASS=&KEY=abcdef&TEMP=777").size() + 128);
}

TYPED_TEST(KelLogin, LoginCutsFortyCharacterCredentialsToThirtyTwo) {
  this->r_.usCameraType = 36;
  this->SetCredentials(std::string(40, 'n').c_str(), std::string(40, 'p').c_str(), "k");
  ASSERT_EQ(this->r_.CmdSet_KelLogIn(this->dst_), 0);
  const std::string forty = this->dst_;
  this->SetCredentials(std::string(32, 'n').c_str(), std::string(32, 'p').c_str(), "k");
  ASSERT_EQ(this->r_.CmdSet_KelLogIn(this->dst_), 0);
  EXPECT_EQ(forty, std::string(this->dst_));
}

TYPED_TEST(KelLogin, LoginWithFailingClockEndsInTheFixedTemp) {
  ClockOverride failing(&cgitest::FailingClock);
  this->r_.usCameraType = 34;
  this->SetCredentials("A", "", "");
  ASSERT_EQ(this->r_.CmdSet_KelLogIn(this->dst_), 0);
  const std::string line = this->dst_;
  EXPECT_EQ(line.substr(line.size() - 18), "&KEY=&TEMP=1234567");
}

// A derived requester that replaces the transform: the login must use it.
template <typename Base>
class OwnTransform : public Base {
 public:
  int iCalls = 0;
  char* ChangeData_KelEncrypt(char* pcKey, char* pcData, char* pcOut) override {
    ++iCalls;
    (void)pcKey;
    memset(pcOut, iCalls == 1 ? 'u' : 'p', 64);
    pcOut[64] = '\0';
    (void)pcData;
    return pcOut;
  }
};

TYPED_TEST(KelLogin, LoginCallsTheTransformThroughTheVirtualTable) {
  OwnTransform<TypeParam> own;
  own.usCameraType = 35;
  memset(own.strKey, 0, sizeof(own.strKey));
  memcpy(own.strKey, "qwe", 3);
  ASSERT_EQ(own.CmdSet_KelLogIn(this->dst_), 0);
  EXPECT_EQ(own.iCalls, 2);
  EXPECT_EQ(std::string(this->dst_), "/cgi-bin/ulogin.cgi?USER=" + std::string(64, 'u') +
                                         "&PASS=" + std::string(64, 'p') + "&KEY=qwe&TEMP=777");
}

}  // namespace
