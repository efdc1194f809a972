// Every fault a device can be told to show, and clearing it again.
#include <unistd.h>

#include "Fixture.h"

namespace camsim_test {
namespace {

constexpr char kGetUid[] = "/cgi-bin/getuid?FILE=2&vcodec=h264";

class FaultTest : public DeviceTest {
 protected:
  void SetUp() override { Use(7); }
};

TEST_F(FaultTest, StatusCodesAndClearing) {
  for (int status : {401, 404, 500, 503}) {
    SetFaultText("/cgi-bin/getuid", "status=" + std::to_string(status));
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
  SetFaultText(camsim::kEveryPath, "status=500");
  SetFaultText("/cgi-bin/mpeg4_I_interval", "status=404");
  EXPECT_EQ(Fetch(kGetUid).status, 500);
  EXPECT_EQ(Fetch("/cgi-bin/mpeg4_I_interval").status, 404) << "a path's own fault wins";
  device_->ClearFaults();
  EXPECT_EQ(Fetch(kGetUid).status, 200);
  EXPECT_EQ(Fetch("/cgi-bin/mpeg4_I_interval").status, 200);
}

TEST_F(FaultTest, TimesLimitsTheFault) {
  SetFaultText("/cgi-bin/getuid", "status=503,times=2");
  EXPECT_EQ(Fetch(kGetUid).status, 503);
  EXPECT_EQ(Fetch(kGetUid).status, 503);
  EXPECT_EQ(Fetch(kGetUid).status, 200);
}

TEST_F(FaultTest, DelayHoldsTheAnswerBack) {
  SetFaultText("/cgi-bin/getuid", "delay=300");
  auto start = std::chrono::steady_clock::now();
  Response reply = Fetch(kGetUid);
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(300));
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.Line("UID="), "1");
}

TEST_F(FaultTest, NoAnswerHoldsTheConnectionOpen) {
  SetFaultText("/cgi-bin/getuid", "noanswer");
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
  SetFaultText("/cgi-bin/getuid", "close-header");
  Response reply = Fetch(kGetUid);
  EXPECT_TRUE(reply.closed);
  EXPECT_FALSE(reply.complete);
  EXPECT_EQ(reply.raw.rfind("HTTP/1.", 0), 0u);
}

TEST_F(FaultTest, CloseMidBody) {
  SetFaultText("/cgi-bin/getuid", "close-body");
  Response reply = Fetch(kGetUid);
  ASSERT_TRUE(reply.complete);
  EXPECT_TRUE(reply.closed);
  EXPECT_LT(reply.body.size(),
            static_cast<size_t>(std::atoi(reply.Header("Content-Length").c_str())));
}

TEST_F(FaultTest, CloseMidPicture) {
  SetFaultText("/cgi-bin/jpeg", "close-body");
  std::string uid = std::to_string(CameraUid());
  PushReader push;
  ASSERT_TRUE(push.Open(address_, device_->Port(), "/cgi-bin/jpeg?connect=start&UID=" + uid));
  std::string picture;
  EXPECT_FALSE(push.NextPart(&picture, kDeadline));
  EXPECT_FALSE(push.data.empty()) << "part of a picture came before the close";
}

TEST_F(FaultTest, GarbageIsNotHttp) {
  SetFaultText("/cgi-bin/getuid", "garbage");
  Response reply = Fetch(kGetUid);
  EXPECT_TRUE(reply.closed);
  EXPECT_FALSE(reply.raw.empty());
  EXPECT_NE(reply.raw.rfind("HTTP/", 0), 0u);
}

TEST_F(FaultTest, LongBodyKeepsTheKeysAndExceeds2048Bytes) {
  SetFaultText("/cgi-bin/getuid", "long-body");
  Response reply = Fetch(kGetUid);
  EXPECT_EQ(reply.status, 200);
  EXPECT_GT(reply.body.size(), 2048u);
  EXPECT_EQ(reply.body.size(),
            static_cast<size_t>(std::atoi(reply.Header("Content-Length").c_str())));
  EXPECT_EQ(reply.Line("UID="), "1");
  SetFaultText("/cgi-bin/getuid", "long-body=10000");
  EXPECT_EQ(Fetch(kGetUid).body.size(), 10000u);
}

TEST_F(FaultTest, OmitLeavesAKeyOut) {
  SetFaultText("/cgi-bin/getuid", "omit=aEnable=");
  Response reply = Fetch(kGetUid);
  bool found = true;
  reply.Line("aEnable=", &found);
  EXPECT_FALSE(found);
  EXPECT_EQ(reply.Line("aBitrate="), "32");
  SetFaultText("/cgi-bin/getuid", "omit=UID=");
  reply = Fetch(kGetUid);
  reply.Line("UID=", &found);
  EXPECT_FALSE(found);
  EXPECT_EQ(reply.Line("sDelivery="), "multi");
}

TEST_F(FaultTest, PushStallStopsSendingPictures) {
  SetFaultText("/cgi-bin/jpeg", "push-stall=2");
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
  SetFaultText("/cgi-bin/audio", "push-stall=2");
  int fd = Connect(address_, device_->Port());
  SendText(fd, line);
  bool closed = true;
  std::string stalled = ReadUntilClose(fd, milliseconds(600), &closed);
  EXPECT_FALSE(closed);
  Response head = ParseResponse(stalled);
  EXPECT_EQ(head.status, 200);
  EXPECT_EQ(head.body.size(), 800u) << "two tenths of a second of audio, then nothing";
  close(fd);
  SetFaultText("/cgi-bin/audio", "close-body");
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
  EXPECT_EQ(Get("127.0.0.1", device->Port(), "/cgi-bin/mpeg4_I_interval").status, 200);
}

TEST_F(FaultTest, ForgottenUidsAreRefused) {
  int uid = CameraUid();
  device_->ForgetUids();
  EXPECT_EQ(Fetch("/cgi-bin/keep_alive?mode=h264&protocol=rtp&UID=" + std::to_string(uid)).status,
            404);
}

}  // namespace
}  // namespace camsim_test

namespace camsim_test {
namespace {

// Several faults on one path, and faults met only by some requests.
class FaultChoiceTest : public DeviceTest {
 protected:
  void Add(const std::string& path, const std::string& text) { AddFaultText(path, text); }
  int Status(const std::string& target) { return Fetch(target).status; }
};

TEST_F(FaultChoiceTest, FaultsOnOnePathServeInTheOrderAdded) {
  Use(7);
  Add("/cgi-bin/getuid", "status=503,times=2");
  Add("/cgi-bin/getuid", "status=500,times=1");
  Add("/cgi-bin/getuid", "garbage,times=1");
  EXPECT_EQ(device_->FaultCount("/cgi-bin/getuid"), 3u);
  EXPECT_EQ(Status(kGetUid), 503);
  EXPECT_EQ(Status(kGetUid), 503);
  EXPECT_EQ(Status(kGetUid), 500);
  Response garbage = Fetch(kGetUid);
  EXPECT_FALSE(garbage.complete);
  EXPECT_EQ(device_->FaultCount("/cgi-bin/getuid"), 0u);
  EXPECT_EQ(Status(kGetUid), 200) << "every fault has run out";
}

TEST_F(FaultChoiceTest, SetFaultStillReplacesThePathsFaults) {
  Use(7);
  Add("/cgi-bin/getuid", "status=503");
  Add("/cgi-bin/getuid", "status=500");
  camsim::Fault only;
  only.status = 404;
  device_->SetFault("/cgi-bin/getuid", only);
  EXPECT_EQ(device_->FaultCount("/cgi-bin/getuid"), 1u);
  EXPECT_EQ(Status(kGetUid), 404);
}

TEST_F(FaultChoiceTest, AQueryKeySelectsTheRequests) {
  Use(7);
  std::string uid = std::to_string(CameraUid());
  Add("/cgi-bin/h264", "when=connect=stop,status=500");
  std::string tail = "&protocol=rtp&my_port=5000&UID=" + uid;
  EXPECT_EQ(Status("/cgi-bin/h264?connect=start" + tail), 200);
  EXPECT_EQ(Status("/cgi-bin/h264?connect=stop" + tail), 500);
  EXPECT_EQ(Status("/cgi-bin/h264?connect=start" + tail), 200);
}

TEST_F(FaultChoiceTest, ConditionsAreAllMetAndTimesCountOnlyMetRequests) {
  Use(34);
  Add("/cgi-bin/push.cgi", "when=CMD=START,when=COMP=MPEG4,status=503,times=1");
  Add("/cgi-bin/push.cgi", "when=CMD=STOP,status=500,times=1");
  std::string uid = RecorderUid();
  ASSERT_FALSE(uid.empty());
  std::string h264 = "/cgi-bin/push.cgi?CMD=START&CAM=0&UID=" + uid + "&PORT=6000&COMP=H264";
  std::string mpeg4 = "/cgi-bin/push.cgi?CMD=START&CAM=0&UID=" + uid + "&PORT=6000&COMP=MPEG4";
  std::string stop = "/cgi-bin/push.cgi?CMD=STOP&CAM=0&UID=" + uid + "&PORT=6000&COMP=MPEG4";
  EXPECT_EQ(Status(h264), 200) << "CMD=START alone does not meet both conditions";
  EXPECT_EQ(Status(mpeg4), 503);
  EXPECT_EQ(Status(mpeg4), 200) << "times=1 ran out";
  EXPECT_EQ(Status(stop), 500);
  EXPECT_EQ(Status(stop), 200);
}

TEST_F(FaultChoiceTest, AUidSelectsTheRequests) {
  Use(7);
  int first = CameraUid();
  int second = CameraUid();
  Add("/cgi-bin/keep_alive", "uid=" + std::to_string(second) + ",status=503");
  std::string line = "/cgi-bin/keep_alive?mode=h264&protocol=rtp&page=1&UID=";
  EXPECT_EQ(Status(line + std::to_string(first)), 200);
  EXPECT_EQ(Status(line + std::to_string(second)), 503);
}

TEST_F(FaultChoiceTest, QuillonReleaseAloneFails) {
  Use(20);
  Response uid = Fetch("/cgi-bin/getuid?FILE=uid.html&PAGE=1");
  std::string line = "/cgi-bin/uidutil?UID=" + uid.Line("UID=");
  Add("/cgi-bin/uidutil", "when=UTIL=RELEASE,noanswer,times=1");
  Add("/cgi-bin/uidutil", "when=UTIL=RELEASE,status=500,times=1");
  EXPECT_EQ(Status(line + "&UTIL=KEEPALIVE"), 200);
  int fd = Connect(address_, device_->Port());
  ASSERT_GE(fd, 0);
  SendText(fd, "GET " + line + "&UTIL=RELEASE HTTP/1.0\r\n\r\n");
  bool closed = true;
  EXPECT_TRUE(ReadUntilClose(fd, milliseconds(300), &closed).empty());
  EXPECT_FALSE(closed);
  close(fd);
  EXPECT_EQ(Status(line + "&UTIL=RELEASE"), 500);
  EXPECT_EQ(Status(line + "&UTIL=RELEASE"), 200);
  EXPECT_TRUE(device_->LiveUids().empty());
}

TEST_F(FaultChoiceTest, EveryPathServesWhatThePathsOwnFaultsDoNotMeet) {
  Use(7);
  Add(camsim::kEveryPath, "status=500");
  Add("/cgi-bin/mpeg4_I_interval", "when=ch=1,status=503");
  EXPECT_EQ(Status("/cgi-bin/mpeg4_I_interval?ch=1"), 503);
  EXPECT_EQ(Status("/cgi-bin/mpeg4_I_interval?ch=2"), 500);
}

}  // namespace
}  // namespace camsim_test
