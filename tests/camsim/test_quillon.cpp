// The Quillon cameras (camera types 6, 13 and 20).
#include "Fixture.h"

namespace camsim_test {
namespace {

class QuillonTest : public DeviceTest {
 protected:
  void SetUp() override { Use(13); }
  std::string Uid() {
    Response reply = Fetch("/cgi-bin/getuid?FILE=uid.html&PAGE=1234567");
    EXPECT_EQ(reply.status, 200);
    return reply.Line("UID=");
  }
};

TEST_F(QuillonTest, GetUidWithUidHtml) {
  EXPECT_EQ(Uid(), "1");
  EXPECT_EQ(Uid(), "2");
  EXPECT_EQ(device_->LiveUids(), (std::set<int>{1, 2}));
  EXPECT_EQ(Fetch("/cgi-bin/getuid?FILE=2&vcodec=jpeg").status, 400);
}

TEST_F(QuillonTest, PushStartsAServerPushAndStopEnds) {
  std::string uid = Uid();
  EXPECT_EQ(Fetch("/cgi-bin/syssetup?LIVEMODE=PUSH&UID=" + uid).status, 200);
  PushReader push;
  ASSERT_TRUE(push.Open(address_, device_->Port(),
                        "/cgi-bin/push?MODE=START&FRAMERATE=30&UID=" + uid + "&PAGE=99"));
  EXPECT_EQ(push.head.status, 200);
  std::string picture;
  ASSERT_TRUE(push.NextPart(&picture, kDeadline));
  EXPECT_TRUE(DecodeJpeg(picture).valid);
  ASSERT_TRUE(push.NextPart(&picture, kDeadline));
  EXPECT_EQ(Fetch("/cgi-bin/push?MODE=STOP&FRAMERATE=1&UID=" + uid + "&PAGE=100").status, 200);
  EXPECT_EQ(Fetch("/cgi-bin/push?MODE=START&UID=321&PAGE=1").status, 404);
  EXPECT_EQ(Fetch("/cgi-bin/push?MODE=PAUSE&UID=" + uid).status, 400);
}

TEST_F(QuillonTest, SysSetupWantsPushModeAndAKnownUid) {
  std::string uid = Uid();
  EXPECT_EQ(Fetch("/cgi-bin/syssetup?LIVEMODE=RTP&UID=" + uid).status, 400);
  EXPECT_EQ(Fetch("/cgi-bin/syssetup?LIVEMODE=PUSH&UID=42").status, 404);
}

TEST_F(QuillonTest, UidUtilKeepsAliveAndReleases) {
  std::string uid = Uid();
  EXPECT_EQ(Fetch("/cgi-bin/uidutil?UID=" + uid + "&UTIL=KEEPALIVE").status, 200);
  EXPECT_EQ(Fetch("/cgi-bin/uidutil?UID=" + uid + "&UTIL=RELEASE").status, 200);
  EXPECT_TRUE(device_->LiveUids().empty());
  Response again = Fetch("/cgi-bin/uidutil?UID=" + uid + "&UTIL=KEEPALIVE");
  EXPECT_EQ(again.status, 404);
  EXPECT_EQ(again.body, camsim::kUnknownUidBody);
  EXPECT_EQ(Fetch("/cgi-bin/push?MODE=START&UID=" + uid).status, 404);
}

TEST_F(QuillonTest, PresetTakesTheUpperCaseKeyFromOneToSixteen) {
  EXPECT_EQ(Fetch("/cgi-bin/camctrl?PRESET=1").status, 200);
  EXPECT_EQ(Fetch("/cgi-bin/camctrl?PRESET=16").status, 200);
  EXPECT_EQ(Fetch("/cgi-bin/camctrl?PRESET=17").status, 400);
  EXPECT_EQ(Fetch("/cgi-bin/camctrl?PRESET=40").status, 400);
  EXPECT_EQ(Fetch("/cgi-bin/camctrl?PRESET=0").status, 400);
  EXPECT_EQ(Fetch("/cgi-bin/camctrl?preset=4").status, 400);
}

TEST_F(QuillonTest, CameraOnlyPathsAreNotServed) {
  EXPECT_EQ(Fetch("/cgi-bin/jpeg?connect=start&UID=1").status, 404);
  EXPECT_EQ(Fetch("/cgi-bin/keep_alive?mode=push&protocol=http&UID=1").status, 404);
}

TEST(QuillonModels, SixThirteenAndTwentyAreQuillon) {
  for (int model : {6, 13, 20}) {
    auto device = StartDevice(model);
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(Get("127.0.0.1", device->Port(), "/cgi-bin/getuid?FILE=uid.html&PAGE=1").Line("UID="),
              "1")
        << model;
  }
}

}  // namespace
}  // namespace camsim_test
