// The builders' destination: a line is written whole into the caller's
// kLineDstSize bytes, or refused with -1 and the destination empty; it is
// never sent cut short. The widest values the fields can hold still give
// whole lines.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamCgiLine.h"
#include "CamTestSupport.h"
#include "CgiTestSupport.h"

namespace {

using cgitest::LineTest;

// A destination twice the builders' size, filled with 'x', so that a write
// past kLineDstSize or a leftover of a refused line shows.
class Join : public ::testing::Test {
 protected:
  void SetUp() override { std::memset(dst_, 'x', sizeof(dst_)); }
  bool UntouchedFrom(int iFirst) const {
    for (int i = iFirst; i < static_cast<int>(sizeof(dst_)); ++i) {
      if (dst_[i] != 'x') return false;
    }
    return true;
  }
  char dst_[2 * cgi::kLineDstSize];
};

TEST_F(Join, ALineThatFillsTheDestinationIsWrittenWhole) {
  const std::string line = "/" + std::string(cgi::kLineDstSize - 2, 'a');  // terminator fits
  EXPECT_EQ(cgi::JoinLine(dst_, "%s", line.c_str()), 0);
  EXPECT_EQ(std::string(dst_), line);
  EXPECT_TRUE(UntouchedFrom(cgi::kLineDstSize));
}

TEST_F(Join, OneByteMoreIsRefusedAndTheDestinationLeftEmpty) {
  const std::string line = "/" + std::string(cgi::kLineDstSize - 1, 'a');  // terminator does not
  EXPECT_EQ(cgi::JoinLine(dst_, "%s", line.c_str()), -1);
  EXPECT_STREQ(dst_, "");
  // Nothing of the refused line is left behind the terminator either.
  EXPECT_TRUE(UntouchedFrom(1));
}

TEST_F(Join, ComponentsThatTogetherOverflowAreRefused) {
  // Each component fits a slot; the joined line does not fit the destination.
  const std::string part(cgi::kSlotSize - 1, 'b');
  EXPECT_EQ(cgi::JoinLine(dst_, "/cgi-bin/x?%s&%s&%s&%s&%s&%s&%s&%s&%s", part.c_str(), part.c_str(),
                          part.c_str(), part.c_str(), part.c_str(), part.c_str(), part.c_str(),
                          part.c_str(), part.c_str()),
            -1);
  EXPECT_STREQ(dst_, "");
  EXPECT_TRUE(UntouchedFrom(1));
}

TEST_F(Join, ARefusalEmptiesADestinationThatHeldAnEarlierLine) {
  ASSERT_EQ(cgi::JoinLine(dst_, "%s", "/cgi-bin/keep_alive?UID=1"), 0);
  const std::string line(cgi::kLineDstSize, 'c');
  EXPECT_EQ(cgi::JoinLine(dst_, "%s", line.c_str()), -1);
  EXPECT_STREQ(dst_, "");
}

// The widest values of the fields that go into lines.
template <typename Requester>
class WidestValues : public LineTest<Requester> {
 protected:
  void SetUp() override {
    this->r_.iUid = INT_MIN;
    this->r_.iRtpPort = INT_MIN;
    this->r_.usSelectChNo = 65535;
    this->r_.cStream = 2;
    this->r_.iAudioEnable = 100;
  }
};

using Requesters = ::testing::Types<CCamRequester_Cgi_Kobu_Rtp, CCamRequester_Cgi_Kobu_Http>;
TYPED_TEST_SUITE(WidestValues, Requesters);

// The longest credentials (64 bytes each) and the longest recorder key
// (6 characters) still give the whole login line.
TYPED_TEST(WidestValues, LoginWithTheLongestCredentialsAndKeyIsWhole) {
  this->r_.usCameraType = 31;
  std::memset(this->r_.cUserName, 'u', sizeof(this->r_.cUserName));
  std::memset(this->r_.cPassword, 'p', sizeof(this->r_.cPassword));
  std::memcpy(this->r_.strKey, "abcdef", 7);
  std::memset(this->dst_, 'x', sizeof(this->dst_));
  ASSERT_EQ(this->r_.CmdSet_KelLogIn(this->dst_), 0);
  const std::string line(this->dst_);
  // Each credential is 64 hexadecimal digits, the key and TEMP come last.
  const std::string head = "/cgi-bin/ulogin.cgi?USER=";
  ASSERT_EQ(line.size(), head.size() + 64 + std::string("&PASS=").size() + 64 +
                             std::string("&KEY=abcdef&TEMP=777").size())
      << line;
  EXPECT_EQ(line.compare(0, head.size(), head), 0) << line;
  EXPECT_EQ(line.find("&PASS="), head.size() + 64) << line;
  EXPECT_EQ(line.substr(line.size() - 20), "&KEY=abcdef&TEMP=777") << line;
  EXPECT_LT(static_cast<int>(line.size()), cgi::kLineDstSize);
}

TYPED_TEST(WidestValues, LogoutWithTheWidestUidIsWhole) {
  this->r_.usCameraType = 35;
  this->r_.uid_logout = INT_MIN;
  this->ExpectLine([&] { return this->r_.CmdSet_KelLogOut(this->dst_); },
                   "/cgi-bin/logout.cgi?UID=-2147483648", "logout");
}

TYPED_TEST(WidestValues, RecorderKeepAliveWithTheWidestUidIsWhole) {
  this->r_.usCameraType = 33;
  this->ExpectLine([&] { return this->r_.CmdSet_KeepAlive(this->dst_); },
                   "/cgi-bin/status.cgi?UID=-2147483648&HTML=as_status.html", "keep-alive");
}

TEST(WidestRtpValues, AudioStartWithEveryOptionalComponentIsWhole) {
  cgitest::ClockOverride clock(&cgitest::FixedClock);
  camtest::PrintCapture print;
  CCamRequester_Cgi_Kobu_Rtp r;
  r.usCameraType = 0;
  r.iCmdType = 1;
  r.iUid = INT_MIN;
  r.iRtpPort = INT_MIN;
  r.usSelectChNo = 65535;
  r.cStream = 2;
  r.iAudioEnable = 100;
  char dst[cgi::kLineDstSize];
  ASSERT_EQ(r.CmdSet_AudioDistribute(dst, 1), 0);
  EXPECT_STREQ(dst,
               "/cgi-bin/audio?connect=start&protocol=rtp&my_port=-2147483648&ch=65535&mode=in"
               "&UID=-2147483648&page=777&stream=2");
}

TEST(WidestRtpValues, RecorderVideoStartWithTheWidestNumbersIsWhole) {
  cgitest::ClockOverride clock(&cgitest::FixedClock);
  camtest::PrintCapture print;
  CCamRequester_Cgi_Kobu_Rtp r;
  r.usCameraType = 36;
  r.iCmdType = 0;
  r.iUid = INT_MIN;
  r.iRtpPort = INT_MIN;
  r.usSelectChNo = 65535;
  char dst[cgi::kLineDstSize];
  ASSERT_EQ(r.CmdSet_H264Distribute(dst, 1), 0);
  EXPECT_STREQ(dst,
               "/cgi-bin/push.cgi?CMD=START&CAM=65535&UID=-2147483648&PORT=-2147483648"
               "&COMP=H264&RES=1");
}

TEST(WidestHttpValues, JpegStartWithEveryOptionalComponentIsWhole) {
  cgitest::ClockOverride clock(&cgitest::FixedClock);
  camtest::PrintCapture print;
  CCamRequester_Cgi_Kobu_Http r;
  r.usCameraType = 0;
  r.iCmdType = 0;
  r.iUid = INT_MIN;
  r.usSelectChNo = 65535;
  r.usFrate = 3;
  r.usResolution = 4;
  char dst[cgi::kLineDstSize];
  ASSERT_EQ(r.CmdSet_JpegDistribute(dst, 1), 0);
  EXPECT_STREQ(dst,
               "/cgi-bin/jpeg?connect=start&framerate=0.33&resolution=1280&ch=65535"
               "&UID=-2147483648");
}

}  // namespace
