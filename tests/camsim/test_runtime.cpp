// Changes while a device runs: UIDs forgotten or expired, recorder status
// values, the answer to a recorder's push start.
#include "Fixture.h"

namespace camsim_test {
namespace {

constexpr char kKeepAlive[] = "/cgi-bin/keep_alive?mode=h264&protocol=rtp&page=1&UID=";

class RuntimeTest : public DeviceTest {
 protected:
  bool Alive(int uid) { return device_->LiveUids().count(uid) != 0; }
};

TEST_F(RuntimeTest, ForgettingOneUid) {
  Use(7);
  int first = CameraUid();
  int second = CameraUid();
  EXPECT_TRUE(device_->ForgetUid(first));
  EXPECT_FALSE(device_->ForgetUid(first)) << "already forgotten";
  EXPECT_EQ(Fetch(kKeepAlive + std::to_string(first)).status, 404);
  EXPECT_EQ(Fetch(kKeepAlive + std::to_string(second)).status, 200);
}

TEST_F(RuntimeTest, ForgettingEveryUidIsARestart) {
  Use(13);
  Response uid = Fetch("/cgi-bin/getuid?FILE=uid.html&PAGE=1");
  device_->ForgetUids();
  Response keepAlive = Fetch("/cgi-bin/uidutil?UID=" + uid.Line("UID=") + "&UTIL=KEEPALIVE");
  EXPECT_EQ(keepAlive.status, 404);
  EXPECT_EQ(keepAlive.body, camsim::kUnknownUidBody);
}

TEST_F(RuntimeTest, AUidWithoutKeepAliveExpires) {
  Use(7);
  constexpr milliseconds kExpiry{400};
  device_->SetUidExpiry(kExpiry);
  auto issued = std::chrono::steady_clock::now();
  int kept = CameraUid();
  int idle = CameraUid();
  // Keep one UID alive with keep-alives far more often than the expiry
  // until the other one lapses.
  auto deadline = issued + kDeadline;
  while (Alive(idle) && std::chrono::steady_clock::now() < deadline) {
    ASSERT_EQ(Fetch(kKeepAlive + std::to_string(kept)).status, 200);
  }
  EXPECT_FALSE(Alive(idle));
  EXPECT_GE(std::chrono::steady_clock::now() - issued, kExpiry) << "not before its time";
  EXPECT_TRUE(Alive(kept));
  EXPECT_EQ(Fetch(kKeepAlive + std::to_string(idle)).status, 404);
  // Without keep-alives the other goes too; turning expiry off keeps the next.
  EXPECT_TRUE(WaitFor([&] { return !Alive(kept); }));
  device_->SetUidExpiry(milliseconds(0));
  int lasting = CameraUid();
  EXPECT_EQ(Fetch(kKeepAlive + std::to_string(lasting)).status, 200);
  EXPECT_TRUE(Alive(lasting));
}

TEST_F(RuntimeTest, RecorderStatusKeepsTheUidAlive) {
  Use(31);
  std::string uid = RecorderUid();
  ASSERT_FALSE(uid.empty());
  device_->SetUidExpiry(milliseconds(300));
  auto start = std::chrono::steady_clock::now();
  // Status requests refresh it for longer than the expiry.
  while (std::chrono::steady_clock::now() - start < milliseconds(700)) {
    ASSERT_EQ(Fetch("/cgi-bin/status.cgi?UID=" + uid + "&HTML=as_status.html").status, 200);
  }
  EXPECT_TRUE(WaitFor([&] { return device_->LiveUids().empty(); }));
}

TEST_F(RuntimeTest, PlayModeAndFileNameChangeWhileRunning) {
  Use(35);
  std::string uid = RecorderUid();
  ASSERT_FALSE(uid.empty());
  std::string status = "/cgi-bin/status.cgi?UID=" + uid + "&HTML=as_status.html";
  EXPECT_EQ(Fetch(status).Line("PLAY_MODE="), "0");
  device_->SetPlayMode(5);
  device_->SetFileName("=CH02_0007.DAT");
  Response changed = Fetch(status);
  EXPECT_EQ(changed.Line("PLAY_MODE="), "5");
  EXPECT_EQ(changed.Line("FILENAME"), "=CH02_0007.DAT");
  EXPECT_EQ(device_->Values().playMode, 5);
}

TEST_F(RuntimeTest, PushStartAnsweredWith204CarriesNoBody) {
  Use(34);
  std::string uid = RecorderUid();
  ASSERT_FALSE(uid.empty());
  device_->SetPushStartStatus(204);
  std::string start = "/cgi-bin/push.cgi?CMD=START&CAM=1&UID=" + uid + "&PORT=6000&COMP=H264";
  Response reply = Fetch(start);
  EXPECT_EQ(reply.statusLine, "HTTP/1.0 204 No Content");
  EXPECT_TRUE(reply.body.empty());
  EXPECT_EQ(reply.Header("Content-Length"), "");
  EXPECT_TRUE(reply.closed);
  Response jpeg = Fetch("/cgi-bin/push.cgi?CMD=START&CAM=1&UID=" + uid + "&COMP=JPEG");
  EXPECT_EQ(jpeg.status, 204) << "a push over HTTP is answered alike";
  EXPECT_TRUE(jpeg.body.empty());
  std::string stop = "/cgi-bin/push.cgi?CMD=STOP&CAM=1&UID=" + uid + "&PORT=6000&COMP=H264";
  EXPECT_EQ(Fetch(stop).status, 200) << "a stop is not a start";
  EXPECT_EQ(Fetch(stop).body, "OK\r\n");
  device_->SetPushStartStatus(0);
  EXPECT_EQ(Fetch(start).status, 200);
}

TEST_F(RuntimeTest, PushStartStatusIsAReplyValue) {
  camsim::DeviceConfig config;
  config.model = 36;
  config.values.pushStartStatus = 202;
  std::string error;
  device_ = camsim::Device::Start(config, &error);
  ASSERT_NE(device_, nullptr) << error;
  address_ = "127.0.0.1";
  std::string uid = RecorderUid();
  Response reply =
      Fetch("/cgi-bin/push.cgi?CMD=START&CAM=0&UID=" + uid + "&PORT=6000&COMP=H264&RES=1");
  EXPECT_EQ(reply.status, 202);
  EXPECT_EQ(reply.body, "OK\r\n");
}

}  // namespace
}  // namespace camsim_test
