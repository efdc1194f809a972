// The camera dialect (camera types 0 to 30 other than the Quillon ones).
#include <unistd.h>

#include "Fixture.h"

namespace camsim_test {
namespace {

class CameraTest : public DeviceTest {
 protected:
  void SetUp() override { Use(7); }
};

TEST_F(CameraTest, GetUidAnswersEveryReplyKeyWithDefaults) {
  Response reply = Fetch("/cgi-bin/getuid?FILE=2&vcodec=h264");
  ASSERT_TRUE(reply.complete);
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.Line("UID="), "1");
  EXPECT_EQ(reply.Line("aBitrate="), "32");
  EXPECT_EQ(reply.Line("aEnable="), "1");
  EXPECT_EQ(reply.Line("sDelivery="), "multi");
  EXPECT_EQ(reply.Line("iMultiAdd1="), "239");
  EXPECT_EQ(reply.Line("iMultiAdd2="), "1");
  EXPECT_EQ(reply.Line("iMultiAdd3="), "2");
  EXPECT_EQ(reply.Line("iMultiAdd4="), "4");
  EXPECT_EQ(reply.Line("iMultiPort="), "5000");
  EXPECT_EQ(reply.Line("iUniPort="), "6000");
  EXPECT_EQ(reply.Line("aInPort="), "7000");
  bool found = true;
  reply.Line("iMultiAddv6=", &found);
  EXPECT_FALSE(found) << "no IPv6 group unless one is set";
}

TEST_F(CameraTest, GetUidValuesAreSettable) {
  camsim::ReplyValues values = device_->Values();
  values.firstUid = 40;
  values.audioBitrate = 64;
  values.audioEnable = "in";
  values.delivery = "uni_manual";
  values.multiAddress = {225, 9, 8, 7};
  values.multiAddressV6 = "ff15::1234";
  values.multiPort = 5100;
  values.uniPort = 6100;
  values.audioInPort = 7100;
  device_->SetValues(values);
  Response reply = Fetch("/cgi-bin/getuid?FILE=2&vcodec=mpeg-4_2&ch=3");
  EXPECT_EQ(reply.Line("UID="), "40");
  EXPECT_EQ(reply.Line("aBitrate="), "64");
  EXPECT_EQ(reply.Line("aEnable="), "in");
  EXPECT_EQ(reply.Line("sDelivery="), "uni_manual");
  EXPECT_EQ(reply.Line("iMultiAdd1="), "225");
  EXPECT_EQ(reply.Line("iMultiAdd4="), "7");
  EXPECT_EQ(reply.Line("iMultiAddv6="), "ff15::1234");
  EXPECT_EQ(reply.Line("iMultiPort="), "5100");
  EXPECT_EQ(reply.Line("iUniPort="), "6100");
  EXPECT_EQ(reply.Line("aInPort="), "7100");
  EXPECT_EQ(Fetch("/cgi-bin/getuid?FILE=2&vcodec=audio").Line("UID="), "41");
}

TEST_F(CameraTest, GetUidRefusesAnUnknownCodecOrFile) {
  EXPECT_EQ(Fetch("/cgi-bin/getuid?FILE=2&vcodec=mjpeg").status, 400);
  EXPECT_EQ(Fetch("/cgi-bin/getuid?FILE=uid.html").status, 400);
  EXPECT_TRUE(device_->LiveUids().empty());
}

TEST_F(CameraTest, KeepAliveChecksTheUid) {
  int uid = CameraUid();
  std::string known = "/cgi-bin/keep_alive?mode=h264&protocol=rtp&UID=" + std::to_string(uid) +
                      "&page=1234567&stream=1";
  EXPECT_EQ(Fetch(known).status, 200);
  Response unknown = Fetch("/cgi-bin/keep_alive?mode=jpeg&protocol=http&UID=999&page=1");
  EXPECT_EQ(unknown.status, 404);
  EXPECT_EQ(unknown.body, camsim::kUnknownUidBody);
}

TEST_F(CameraTest, MediaPathsStartAndStopOnlyKnownUids) {
  std::string uid = std::to_string(CameraUid());
  for (std::string media : {"h264", "mpeg4", "audio"}) {
    for (std::string connect : {"start", "stop"}) {
      std::string line =
          "/cgi-bin/" + media + "?connect=" + connect + "&protocol=rtp&my_port=5000&UID=";
      EXPECT_EQ(Fetch(line + uid).status, 200) << media << " " << connect;
      EXPECT_EQ(Fetch(line + "77").status, 404) << media << " " << connect;
    }
  }
  EXPECT_EQ(Fetch("/cgi-bin/h264?connect=pause&UID=" + uid).status, 400);
}

TEST_F(CameraTest, IFrameIntervalIsAnsweredAndTheOthersRefused) {
  EXPECT_EQ(Fetch("/cgi-bin/mpeg4_I_interval?ch=1").status, 200);
  EXPECT_EQ(Fetch("/cgi-bin/mpeg4_I_interval").status, 200);
  EXPECT_EQ(Fetch("/cgi-bin/mpeg4_I_interval?stream=2").status, 200);
  Response h264 = Fetch("/cgi-bin/h264_I_interval?stream=0");
  EXPECT_EQ(h264.status, 404) << "type 7 has no H.264 I-interval";
  EXPECT_EQ(h264.body, camsim::kNotFoundBody);
  EXPECT_EQ(Fetch("/cgi-bin/camctrl?preset=3").status, 404) << "type 7 has no preset";
}

TEST(CameraPreset, LowerCaseKeyFromOne) {
  auto device = StartDevice(11);
  ASSERT_NE(device, nullptr);
  auto fetch = [&](const std::string& target) {
    return Get("127.0.0.1", device->Port(), target).status;
  };
  EXPECT_EQ(fetch("/cgi-bin/camctrl?preset=17&ch=2"), 200);
  EXPECT_EQ(fetch("/cgi-bin/camctrl?preset=1"), 200);
  EXPECT_EQ(fetch("/cgi-bin/camctrl?preset=0"), 400);
  EXPECT_EQ(fetch("/cgi-bin/camctrl?preset=3&ch=x"), 400);
  EXPECT_EQ(fetch("/cgi-bin/camctrl?PRESET=3"), 400) << "cameras take the lower-case key";
}

TEST(CameraH264Interval, WantsTheStreamNumber) {
  auto device = StartDevice(9);
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(Get("127.0.0.1", device->Port(), "/cgi-bin/h264_I_interval?stream=0").status, 200);
  EXPECT_EQ(Get("127.0.0.1", device->Port(), "/cgi-bin/h264_I_interval").status, 400);
}

TEST_F(CameraTest, JpegPushSendsValidPicturesOfTheAskedSize) {
  std::string uid = std::to_string(CameraUid());
  PushReader push;
  ASSERT_TRUE(push.Open(address_, device_->Port(),
                        "/cgi-bin/jpeg?connect=start&framerate=30&resolution=320&UID=" + uid));
  EXPECT_EQ(push.head.status, 200);
  EXPECT_EQ(push.head.Header("Content-Type").rfind("multipart/x-mixed-replace", 0), 0u);
  ASSERT_FALSE(push.boundary.empty());
  for (int i = 0; i < 3; ++i) {
    std::string picture;
    ASSERT_TRUE(push.NextPart(&picture, kDeadline));
    Picture decoded = DecodeJpeg(picture);
    ASSERT_TRUE(decoded.valid);
    EXPECT_EQ(decoded.width, 320);
    EXPECT_EQ(decoded.height, 240);
    EXPECT_NEAR(decoded.minGray, 128, 1);
    EXPECT_NEAR(decoded.maxGray, 128, 1);
  }
}

TEST_F(CameraTest, JpegPushFollowsTheFrameRate) {
  std::string uid = std::to_string(CameraUid());
  PushReader push;
  auto start = std::chrono::steady_clock::now();
  ASSERT_TRUE(
      push.Open(address_, device_->Port(), "/cgi-bin/jpeg?connect=start&framerate=5&UID=" + uid));
  std::string picture;
  for (int i = 0; i < 4; ++i) ASSERT_TRUE(push.NextPart(&picture, kDeadline));
  auto took = std::chrono::steady_clock::now() - start;
  // The first picture goes at once, the fourth three intervals of 200 ms
  // after it; it cannot come earlier, and a wrong rate would be far later.
  EXPECT_GE(took, milliseconds(600));
  EXPECT_LE(took, milliseconds(3000));
  Picture decoded = DecodeJpeg(picture);
  EXPECT_TRUE(decoded.valid);
  EXPECT_EQ(decoded.width, 16);
  EXPECT_EQ(decoded.height, 16);
}

TEST_F(CameraTest, JpegStopAndUnknownUid) {
  std::string uid = std::to_string(CameraUid());
  EXPECT_EQ(Fetch("/cgi-bin/jpeg?connect=stop&UID=" + uid).status, 200);
  EXPECT_EQ(Fetch("/cgi-bin/jpeg?connect=start&UID=5555").status, 404);
}

TEST_F(CameraTest, AudioOverHttpIsAByteStream) {
  std::string uid = std::to_string(CameraUid());
  int fd = Connect(address_, device_->Port());
  ASSERT_GE(fd, 0);
  SendText(fd, "GET /cgi-bin/audio?connect=start&protocol=http&mode=in&UID=" + uid +
                   "&page=1 HTTP/1.0\r\n\r\n");
  std::string data;
  ASSERT_TRUE(ReadUntil(fd, &data, "\r\n\r\n", kDeadline));
  size_t body = data.find("\r\n\r\n") + 4;
  Response head = ParseResponse(data.substr(0, body));
  EXPECT_EQ(head.status, 200);
  EXPECT_EQ(head.Header("Content-Type").rfind("audio/", 0), 0u);
  while (data.size() < body + 1000) {
    size_t before = data.size();
    ReadUntil(fd, &data, std::string(1, '\x7f') + "never", milliseconds(200));
    ASSERT_GT(data.size(), before) << "the stream keeps coming";
  }
  close(fd);
}

TEST_F(CameraTest, QuillonPathsAreNotCameraPaths) {
  EXPECT_EQ(Fetch("/cgi-bin/push?MODE=START&UID=1").status, 404);
  EXPECT_EQ(Fetch("/cgi-bin/start.cgi?UID=-1").status, 404);
  EXPECT_EQ(Fetch("/index.html").status, 404);
}

TEST_F(CameraTest, AbsoluteFormFromAProxyIsServed) {
  std::string target = "http://192.0.2.10:80/cgi-bin/getuid?FILE=2&vcodec=jpeg";
  Response reply = Fetch(target);
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.Line("UID="), "1");
  auto record = device_->Requests().back();
  EXPECT_EQ(record.path, "/cgi-bin/getuid");
  EXPECT_EQ(record.query, "FILE=2&vcodec=jpeg");
  EXPECT_EQ(record.requestLine, "GET " + target + " HTTP/1.0");
}

TEST_F(CameraTest, AnswersHttp11AndRefusesOtherMethods) {
  Response reply = Get(address_, device_->Port(), "/cgi-bin/mpeg4_I_interval", "", "HTTP/1.1");
  EXPECT_EQ(reply.statusLine, "HTTP/1.1 200 OK");
  EXPECT_TRUE(reply.closed);
  int fd = Connect(address_, device_->Port());
  SendText(fd, "POST /cgi-bin/getuid HTTP/1.0\r\nContent-Length: 0\r\n\r\n");
  bool closed = false;
  EXPECT_EQ(ParseResponse(ReadUntilClose(fd, kDeadline, &closed)).status, 405);
  close(fd);
  fd = Connect(address_, device_->Port());
  SendText(fd, "HELLO\r\n\r\n");
  EXPECT_EQ(ParseResponse(ReadUntilClose(fd, kDeadline, &closed)).status, 400);
  close(fd);
  fd = Connect(address_, device_->Port());
  SendText(fd, "GET /cgi-bin/getuid HTTP/1.0\r\nX-Long: " + std::string(20000, 'a'));
  EXPECT_EQ(ParseResponse(ReadUntilClose(fd, kDeadline, &closed)).status, 431);
  close(fd);
}

TEST(CameraIpv6, ServesOnTheIpv6Loopback) {
  auto device = StartDevice(24, "::1");
  ASSERT_NE(device, nullptr);
  Response reply = Get("::1", device->Port(), "/cgi-bin/getuid?FILE=2&vcodec=h264");
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.Line("UID="), "1");
  auto records = device->Requests();
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].peer.rfind("[::1]:", 0), 0u);
  EXPECT_EQ(Get("127.0.0.1", device->Port(), "/").status, 0) << "IPv6 only";
}

TEST(CameraModels, EveryCameraTypeWithASessionSpeaksTheCameraDialect) {
  for (int model = 0; model <= 30; ++model) {
    if (model == 6 || model == 13 || model == 20) continue;                 // Quillon
    if (model == 8 || model == 19 || model == 23 || model == 29) continue;  // no command
    auto device = StartDevice(model);
    ASSERT_NE(device, nullptr);
    Response reply = Get("127.0.0.1", device->Port(), "/cgi-bin/getuid?FILE=2&vcodec=h264");
    EXPECT_EQ(reply.Line("UID="), "1") << "camera type " << model;
  }
}

}  // namespace
}  // namespace camsim_test
