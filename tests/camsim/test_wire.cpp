// Answers bent on the wire (reset, drip, late keys, framing of bodies and
// pushes), the limits of a device (head size and time, connections,
// record) and the refusal of an oversized head wherever its reads end.
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "Fixture.h"

namespace camsim_test {
namespace {

constexpr char kGetUid[] = "/cgi-bin/getuid?FILE=2&vcodec=h264";
constexpr char kShort[] = "/cgi-bin/mpeg4_I_interval";  // answers "OK\r\n"

// Reads until close, reset or deadline; tells whether the peer reset.
std::string ReadToEnd(int fd, bool* reset) {
  auto deadline = std::chrono::steady_clock::now() + kDeadline;
  std::string data;
  *reset = false;
  while (std::chrono::steady_clock::now() < deadline) {
    pollfd entry = {fd, POLLIN, 0};
    if (poll(&entry, 1, 100) <= 0) continue;
    char buffer[4096];
    ssize_t got = recv(fd, buffer, sizeof buffer, 0);
    if (got < 0 && errno == ECONNRESET) *reset = true;
    if (got <= 0) break;
    data.append(buffer, static_cast<size_t>(got));
  }
  return data;
}

// Undoes chunked framing; false when the last chunk is missing.
bool Unchunk(const std::string& wire, std::string* body) {
  size_t at = 0;
  body->clear();
  while (at < wire.size()) {
    size_t lineEnd = wire.find("\r\n", at);
    if (lineEnd == std::string::npos) return false;
    size_t size = std::stoul(wire.substr(at, lineEnd - at), nullptr, 16);
    if (size == 0) return wire.compare(lineEnd, 4, "\r\n\r\n") == 0;
    body->append(wire, lineEnd + 2, size);
    at = lineEnd + 2 + size + 2;
  }
  return false;
}

class WireTest : public DeviceTest {
 protected:
  void SetUp() override { Use(7); }
  int OpenWith(const std::string& target) {
    int fd = Connect(address_, device_->Port());
    SendText(fd, "GET " + target + " HTTP/1.0\r\n\r\n");
    return fd;
  }
};

TEST_F(WireTest, ResetCutsATextAnswer) {
  SetFaultText("/cgi-bin/getuid", "reset");
  int fd = OpenWith(kGetUid);
  bool reset = false;
  std::string data = ReadToEnd(fd, &reset);
  close(fd);
  EXPECT_TRUE(reset) << "the connection ends in a reset, not a close";
  if (!data.empty()) {
    EXPECT_EQ(data.rfind("HTTP/1.0 200 OK\r\n", 0), 0u);
  }
}

TEST_F(WireTest, ResetCutsAPush) {
  SetFaultText("/cgi-bin/jpeg", "reset");
  std::string uid = std::to_string(CameraUid());
  int fd = OpenWith("/cgi-bin/jpeg?connect=start&UID=" + uid);
  bool reset = false;
  ReadToEnd(fd, &reset);
  close(fd);
  EXPECT_TRUE(reset);
}

TEST_F(WireTest, PushEndsCleanlyAfterNPictures) {
  SetFaultText("/cgi-bin/jpeg", "push-end=2");
  std::string uid = std::to_string(CameraUid());
  PushReader push;
  ASSERT_TRUE(
      push.Open(address_, device_->Port(), "/cgi-bin/jpeg?connect=start&framerate=30&UID=" + uid));
  std::string picture;
  ASSERT_TRUE(push.NextPart(&picture, kDeadline));
  EXPECT_TRUE(DecodeJpeg(picture).valid);
  ASSERT_TRUE(push.NextPart(&picture, kDeadline));
  EXPECT_FALSE(push.NextPart(&picture, kDeadline)) << "no third picture";
  EXPECT_NE(push.data.find("--camsimboundary--\r\n"), std::string::npos) << "closing boundary";
  EXPECT_TRUE(device_->WaitForOpenConnections(0, kDeadline)) << "and the device closed";
}

TEST_F(WireTest, AudioEndsCleanlyAfterNChunks) {
  SetFaultText("/cgi-bin/audio", "push-end=3");
  std::string uid = std::to_string(CameraUid());
  int fd = OpenWith("/cgi-bin/audio?connect=start&protocol=http&UID=" + uid + "&page=1");
  bool reset = true;
  Response reply = ParseResponse(ReadToEnd(fd, &reset));
  close(fd);
  EXPECT_FALSE(reset);
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.body.size(), 1200u) << "three tenths of a second";
}

TEST_F(WireTest, DripSendsTheBodySlowlyAfterTheHead) {
  SetFaultText(kShort, "drip=60");
  auto start = std::chrono::steady_clock::now();
  int fd = OpenWith(kShort);
  std::string data;
  ASSERT_TRUE(ReadUntil(fd, &data, "\r\n\r\n", kDeadline));
  bool closed = false;
  data += ReadUntilClose(fd, kDeadline, &closed);
  close(fd);
  // Four body bytes, each after its own pause.
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(240));
  Response reply = ParseResponse(data);
  EXPECT_EQ(reply.body, "OK\r\n");
  EXPECT_EQ(reply.Header("Content-Length"), "4");
}

TEST_F(WireTest, LateKeysStartAfterByte2047) {
  SetFaultText("/cgi-bin/getuid", "late-keys");
  Response reply = Fetch(kGetUid);
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.body.find("UID="), 2048u);
  EXPECT_EQ(reply.Line("UID="), "1");
  EXPECT_EQ(reply.Line("iMultiPort="), "5000");
  EXPECT_EQ(reply.Header("Content-Length"), std::to_string(reply.body.size()));
  SetFaultText("/cgi-bin/getuid", "late-keys=3000");
  EXPECT_EQ(Fetch(kGetUid).body.find("UID="), 3000u);
}

TEST_F(WireTest, BodyEndedByTheClose) {
  SetFaultText("/cgi-bin/getuid", "no-length");
  Response reply = Fetch(kGetUid);
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.Header("Content-Length"), "");
  EXPECT_TRUE(reply.closed);
  EXPECT_EQ(reply.Line("UID="), "1");
  EXPECT_EQ(reply.Line("aInPort="), "7000");
}

TEST_F(WireTest, ChunkedBodyWithAndWithoutItsLastChunk) {
  SetFaultText("/cgi-bin/getuid", "chunked,long-body=3000");
  Response reply = Fetch(kGetUid);
  EXPECT_EQ(reply.Header("Transfer-Encoding"), "chunked");
  EXPECT_EQ(reply.Header("Content-Length"), "");
  std::string body;
  ASSERT_TRUE(Unchunk(reply.body, &body));
  EXPECT_EQ(body.size(), 3000u);
  EXPECT_EQ(body.rfind("UID=1\r\n", 0), 0u);
  SetFaultText("/cgi-bin/getuid", "chunked-open");
  Response open = Fetch(kGetUid);
  EXPECT_EQ(open.Header("Transfer-Encoding"), "chunked");
  EXPECT_FALSE(Unchunk(open.body, &body)) << "the last chunk never comes";
  EXPECT_TRUE(open.closed);
  EXPECT_EQ(body.rfind("UID=2\r\n", 0), 0u);
}

TEST_F(WireTest, PushBoundaryQuotedAndBare) {
  std::string uid = std::to_string(CameraUid());
  std::string target = "/cgi-bin/jpeg?connect=start&framerate=30&UID=" + uid;
  SetFaultText("/cgi-bin/jpeg", "boundary-quoted,push-end=1");
  int fd = OpenWith(target);
  bool reset = false;
  Response quoted = ParseResponse(ReadToEnd(fd, &reset));
  close(fd);
  EXPECT_EQ(quoted.Header("Content-Type"), "multipart/x-mixed-replace;boundary=\"camsimboundary\"");
  EXPECT_EQ(quoted.body.rfind("--camsimboundary\r\nContent-Type: image/jpeg\r\n", 0), 0u);
  SetFaultText("/cgi-bin/jpeg", "boundary-bare,push-end=1");
  fd = OpenWith(target);
  Response bare = ParseResponse(ReadToEnd(fd, &reset));
  close(fd);
  EXPECT_EQ(bare.Header("Content-Type"), "multipart/x-mixed-replace;boundary=camsimboundary");
  EXPECT_EQ(bare.body.rfind("camsimboundary\r\nContent-Type: image/jpeg\r\n", 0), 0u);
  EXPECT_NE(bare.body.find("\r\ncamsimboundary--\r\n"), std::string::npos);
}

TEST_F(WireTest, A204FaultHasNoBody) {
  SetFaultText("/cgi-bin/getuid", "status=204");
  Response reply = Fetch(kGetUid);
  EXPECT_EQ(reply.statusLine, "HTTP/1.0 204 No Content");
  EXPECT_TRUE(reply.body.empty());
  EXPECT_EQ(reply.Header("Content-Length"), "");
}

// A head of exactly size bytes, blank line included.
std::string HeadOf(size_t size) {
  std::string head = "GET /cgi-bin/mpeg4_I_interval HTTP/1.0\r\nX-Pad: ";
  head += std::string(size - head.size() - 4, 'p');
  return head + "\r\n\r\n";
}

TEST_F(WireTest, HeadsAbove16KiBAreRefusedWhereverAReadEnds) {
  for (size_t size : {size_t{16384}, size_t{16385}, size_t{16400}, size_t{18000}, size_t{20480},
                      size_t{20481}, size_t{30000}}) {
    int fd = Connect(address_, device_->Port());
    ASSERT_GE(fd, 0);
    ASSERT_TRUE(SendText(fd, HeadOf(size)));
    bool closed = false;
    Response reply = ParseResponse(ReadUntilClose(fd, kDeadline, &closed));
    close(fd);
    EXPECT_EQ(reply.status, size <= 16384 ? 200 : 431) << size;
  }
}

TEST(DeviceLimits, IncompleteHeadGets408AfterTheTimeOut) {
  camsim::DeviceConfig config;
  config.headTimeoutMs = 200;
  std::string error;
  auto device = camsim::Device::Start(config, &error);
  ASSERT_NE(device, nullptr) << error;
  auto start = std::chrono::steady_clock::now();
  int fd = Connect("127.0.0.1", device->Port());
  SendText(fd, "GET /cgi-bin/getuid?FILE=2&vcodec=h264 HTTP/1.0\r\nHost: x\r\n");
  bool closed = false;
  Response reply = ParseResponse(ReadUntilClose(fd, kDeadline, &closed));
  close(fd);
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(200));
  EXPECT_EQ(reply.status, 408);
  EXPECT_EQ(reply.body, "ERROR=408\r\n");
  EXPECT_TRUE(closed);
  ASSERT_EQ(device->RequestCount(), 1u);
  EXPECT_EQ(device->Requests()[0].status, 408);
  // A connection that sends nothing is answered alike but not recorded.
  fd = Connect("127.0.0.1", device->Port());
  EXPECT_EQ(ParseResponse(ReadUntilClose(fd, kDeadline, &closed)).status, 408);
  close(fd);
  EXPECT_EQ(device->RequestCount(), 1u);
}

TEST(DeviceLimits, ConnectionsBeyondTheCapGet503) {
  camsim::DeviceConfig config;
  config.maxConnections = 2;
  std::string error;
  auto device = camsim::Device::Start(config, &error);
  ASSERT_NE(device, nullptr) << error;
  camsim::Fault hold;
  hold.action = camsim::FaultAction::kNoAnswer;
  device->SetFault("/cgi-bin/mpeg4_I_interval", hold);
  int held[2];
  for (int& fd : held) {
    fd = Connect("127.0.0.1", device->Port());
    SendText(fd, "GET /cgi-bin/mpeg4_I_interval HTTP/1.0\r\n\r\n");
  }
  ASSERT_TRUE(device->WaitForRequests(2, kDeadline));
  Response busy = Get("127.0.0.1", device->Port(), "/cgi-bin/getuid?FILE=2&vcodec=h264");
  EXPECT_EQ(busy.status, 503);
  EXPECT_EQ(busy.body, "ERROR=BUSY\n");
  EXPECT_EQ(device->ConnectionsTurnedAway(), 1u);
  EXPECT_EQ(device->RequestCount(), 2u) << "a turned-away request is not read";
  for (int fd : held) close(fd);
  ASSERT_TRUE(device->WaitForOpenConnections(0, kDeadline));
  EXPECT_EQ(Get("127.0.0.1", device->Port(), "/cgi-bin/getuid?FILE=2&vcodec=h264").status, 200);
}

TEST(DeviceLimits, TheRecordKeepsTheLastN) {
  camsim::DeviceConfig config;
  config.recordLimit = 3;
  std::string error;
  auto device = camsim::Device::Start(config, &error);
  ASSERT_NE(device, nullptr) << error;
  for (int i = 1; i <= 5; ++i) {
    Get("127.0.0.1", device->Port(), "/cgi-bin/mpeg4_I_interval?ch=" + std::to_string(i));
  }
  EXPECT_EQ(device->RequestCount(), 5u);
  EXPECT_TRUE(device->WaitForRequests(5, kDeadline));
  auto records = device->Requests();
  ASSERT_EQ(records.size(), 3u);
  for (size_t i = 0; i < records.size(); ++i) {
    EXPECT_EQ(records[i].sequence, i + 3);
    EXPECT_EQ(records[i].Param("ch"), std::to_string(i + 3));
    EXPECT_EQ(records[i].status, 200);
  }
  device->ClearRequests();
  EXPECT_EQ(device->RequestCount(), 0u);
  Get("127.0.0.1", device->Port(), "/cgi-bin/mpeg4_I_interval");
  ASSERT_EQ(device->Requests().size(), 1u);
  EXPECT_EQ(device->Requests()[0].sequence, 6u) << "sequence numbers go on";
}

}  // namespace
}  // namespace camsim_test
