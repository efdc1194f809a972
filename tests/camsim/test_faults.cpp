// Every fault a device can be told to show, and clearing it again.
#include <unistd.h>

#include "Fixture.h"

namespace camsim_test {
namespace {

constexpr char kGetUid[] = "/cgi-bin/getuid?FILE=2&vcodec=h264";

class FaultTest : public DeviceTest {
 protected:
  void SetUp() override { Use(7); }
  void SetFault(const std::string& path, const std::string& text) {
    camsim::Fault fault;
    std::string error;
    ASSERT_TRUE(camsim::ParseFault(text, &fault, &error)) << error;
    device_->SetFault(path, fault);
  }
};

TEST_F(FaultTest, StatusCodesAndClearing) {
  for (int status : {401, 404, 500, 503}) {
    SetFault("/cgi-bin/getuid", "status=" + std::to_string(status));
    Response reply = Fetch(kGetUid);
    EXPECT_EQ(reply.status, status);
    EXPECT_EQ(reply.Line("UID="), "");
    if (status == 401) {
      EXPECT_FALSE(reply.Header("WWW-Authenticate").empty());
    }
  }
  EXPECT_EQ(Fetch("/cgi-bin/mpeg4_I_interval").status, 200) << "other paths are untouched";
  device_->ClearFault("/cgi-bin/getuid");
  EXPECT_EQ(Fetch(kGetUid).status, 200);
}

TEST_F(FaultTest, EveryPathAndClearAll) {
  SetFault(camsim::kEveryPath, "status=500");
  SetFault("/cgi-bin/h264_I_interval", "status=404");
  EXPECT_EQ(Fetch(kGetUid).status, 500);
  EXPECT_EQ(Fetch("/cgi-bin/h264_I_interval").status, 404) << "a path's own fault wins";
  device_->ClearFaults();
  EXPECT_EQ(Fetch(kGetUid).status, 200);
  EXPECT_EQ(Fetch("/cgi-bin/h264_I_interval").status, 200);
}

TEST_F(FaultTest, TimesLimitsTheFault) {
  SetFault("/cgi-bin/getuid", "status=503,times=2");
  EXPECT_EQ(Fetch(kGetUid).status, 503);
  EXPECT_EQ(Fetch(kGetUid).status, 503);
  EXPECT_EQ(Fetch(kGetUid).status, 200);
}

TEST_F(FaultTest, DelayHoldsTheAnswerBack) {
  SetFault("/cgi-bin/getuid", "delay=300");
  auto start = std::chrono::steady_clock::now();
  Response reply = Fetch(kGetUid);
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(300));
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.Line("UID="), "1");
}

TEST_F(FaultTest, NoAnswerHoldsTheConnectionOpen) {
  SetFault("/cgi-bin/getuid", "noanswer");
  int fd = Connect(address_, device_->Port());
  ASSERT_GE(fd, 0);
  SendText(fd, std::string("GET ") + kGetUid + " HTTP/1.0\r\n\r\n");
  ASSERT_TRUE(device_->WaitForRequests(1, kDeadline));
  bool closed = true;
  std::string got = ReadUntilClose(fd, milliseconds(300), &closed);
  EXPECT_TRUE(got.empty());
  EXPECT_FALSE(closed);
  EXPECT_EQ(device_->OpenConnections(), 1u);
  close(fd);
  EXPECT_TRUE(device_->WaitForOpenConnections(0, kDeadline)) << "the client's close ends it";
}

TEST_F(FaultTest, CloseMidHeader) {
  SetFault("/cgi-bin/getuid", "close-header");
  Response reply = Fetch(kGetUid);
  EXPECT_TRUE(reply.closed);
  EXPECT_FALSE(reply.complete);
  EXPECT_EQ(reply.raw.rfind("HTTP/1.", 0), 0u);
}

TEST_F(FaultTest, CloseMidBody) {
  SetFault("/cgi-bin/getuid", "close-body");
  Response reply = Fetch(kGetUid);
  ASSERT_TRUE(reply.complete);
  EXPECT_TRUE(reply.closed);
  EXPECT_LT(reply.body.size(),
            static_cast<size_t>(std::atoi(reply.Header("Content-Length").c_str())));
}

TEST_F(FaultTest, CloseMidPicture) {
  SetFault("/cgi-bin/jpeg", "close-body");
  std::string uid = std::to_string(CameraUid());
  PushReader push;
  ASSERT_TRUE(push.Open(address_, device_->Port(), "/cgi-bin/jpeg?connect=start&UID=" + uid));
  std::string picture;
  EXPECT_FALSE(push.NextPart(&picture, kDeadline));
  EXPECT_FALSE(push.data.empty()) << "part of a picture came before the close";
}

TEST_F(FaultTest, GarbageIsNotHttp) {
  SetFault("/cgi-bin/getuid", "garbage");
  Response reply = Fetch(kGetUid);
  EXPECT_TRUE(reply.closed);
  EXPECT_FALSE(reply.raw.empty());
  EXPECT_NE(reply.raw.rfind("HTTP/", 0), 0u);
}

TEST_F(FaultTest, LongBodyKeepsTheKeysAndExceeds2048Bytes) {
  SetFault("/cgi-bin/getuid", "long-body");
  Response reply = Fetch(kGetUid);
  EXPECT_EQ(reply.status, 200);
  EXPECT_GT(reply.body.size(), 2048u);
  EXPECT_EQ(reply.body.size(),
            static_cast<size_t>(std::atoi(reply.Header("Content-Length").c_str())));
  EXPECT_EQ(reply.Line("UID="), "1");
  SetFault("/cgi-bin/getuid", "long-body=10000");
  EXPECT_EQ(Fetch(kGetUid).body.size(), 10000u);
}

TEST_F(FaultTest, OmitLeavesAKeyOut) {
  SetFault("/cgi-bin/getuid", "omit=aEnable=");
  Response reply = Fetch(kGetUid);
  bool found = true;
  reply.Line("aEnable=", &found);
  EXPECT_FALSE(found);
  EXPECT_EQ(reply.Line("aBitrate="), "32");
  SetFault("/cgi-bin/getuid", "omit=UID=");
  reply = Fetch(kGetUid);
  reply.Line("UID=", &found);
  EXPECT_FALSE(found);
  EXPECT_EQ(reply.Line("sDelivery="), "multi");
}

TEST_F(FaultTest, PushStallStopsSendingPictures) {
  SetFault("/cgi-bin/jpeg", "push-stall=2");
  std::string uid = std::to_string(CameraUid());
  PushReader push;
  ASSERT_TRUE(
      push.Open(address_, device_->Port(), "/cgi-bin/jpeg?connect=start&framerate=30&UID=" + uid));
  std::string picture;
  EXPECT_TRUE(push.NextPart(&picture, kDeadline));
  EXPECT_TRUE(push.NextPart(&picture, kDeadline));
  EXPECT_FALSE(push.NextPart(&picture, milliseconds(400)));
  EXPECT_EQ(device_->OpenConnections(), 1u) << "the connection stays open";
}

TEST_F(FaultTest, AudioStreamStallsAndClosesMidway) {
  std::string uid = std::to_string(CameraUid());
  const std::string line =
      "GET /cgi-bin/audio?connect=start&protocol=http&UID=" + uid + "&page=1 HTTP/1.0\r\n\r\n";
  SetFault("/cgi-bin/audio", "push-stall=2");
  int fd = Connect(address_, device_->Port());
  SendText(fd, line);
  bool closed = true;
  std::string stalled = ReadUntilClose(fd, milliseconds(600), &closed);
  EXPECT_FALSE(closed);
  Response head = ParseResponse(stalled);
  EXPECT_EQ(head.status, 200);
  EXPECT_EQ(head.body.size(), 800u) << "two tenths of a second of audio, then nothing";
  close(fd);
  SetFault("/cgi-bin/audio", "close-body");
  fd = Connect(address_, device_->Port());
  SendText(fd, line);
  Response cut = ParseResponse(ReadUntilClose(fd, kDeadline, &closed));
  EXPECT_TRUE(closed);
  EXPECT_EQ(cut.status, 200);
  EXPECT_EQ(cut.body.size(), 200u) << "half of the first tenth";
  close(fd);
}

TEST_F(FaultTest, RefusingConnectionsClosesTheListener) {
  uint16_t port = device_->Port();
  EXPECT_TRUE(device_->RefuseConnections());
  EXPECT_FALSE(device_->Listening());
  EXPECT_LT(Connect(address_, port), 0);
  std::string error;
  ASSERT_TRUE(device_->AcceptConnections(&error)) << error;
  EXPECT_EQ(device_->Port(), port);
  EXPECT_EQ(Fetch(kGetUid).status, 200);
}

TEST(FaultStart, StartingRefusedKeepsThePort) {
  camsim::DeviceConfig config;
  config.startRefusing = true;
  std::string error;
  auto device = camsim::Device::Start(config, &error);
  ASSERT_NE(device, nullptr) << error;
  EXPECT_NE(device->Port(), 0);
  EXPECT_LT(Connect("127.0.0.1", device->Port()), 0);
  ASSERT_TRUE(device->AcceptConnections(&error)) << error;
  EXPECT_EQ(Get("127.0.0.1", device->Port(), "/cgi-bin/h264_I_interval?stream=1").status, 200);
}

TEST_F(FaultTest, ForgottenUidsAreRefused) {
  int uid = CameraUid();
  device_->ForgetUids();
  EXPECT_EQ(Fetch("/cgi-bin/keep_alive?mode=h264&protocol=rtp&UID=" + std::to_string(uid)).status,
            404);
}

}  // namespace
}  // namespace camsim_test
