// Many pushes at once, a clean stop with connections open, and the record.
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

#include "Fixture.h"

namespace camsim_test {
namespace {

constexpr int kPushes = 300;

struct PushClient {
  int fd = -1;
  std::string data;
  bool closed = false;
};

size_t CountParts(const std::string& data) {
  size_t count = 0;
  for (size_t at = data.find("Content-Type: image/jpeg"); at != std::string::npos;
       at = data.find("Content-Type: image/jpeg", at + 1)) {
    ++count;
  }
  return count;
}

// Reads every client until each has what `done` wants or the deadline passes.
template <typename Done>
bool PollAll(std::vector<PushClient>& clients, milliseconds timeout, Done done) {
  auto deadline = std::chrono::steady_clock::now() + timeout;
  for (;;) {
    std::vector<pollfd> fds;
    std::vector<PushClient*> waiting;
    for (auto& client : clients) {
      if (!done(client) && !client.closed) {
        fds.push_back({client.fd, POLLIN, 0});
        waiting.push_back(&client);
      }
    }
    if (waiting.empty()) {
      for (auto& client : clients) {
        if (!done(client)) return false;
      }
      return true;
    }
    auto left =
        std::chrono::duration_cast<milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) return false;
    if (poll(fds.data(), fds.size(), static_cast<int>(left.count())) <= 0) continue;
    for (size_t i = 0; i < fds.size(); ++i) {
      if (fds[i].revents == 0) continue;
      char buffer[16384];
      ssize_t got = recv(fds[i].fd, buffer, sizeof buffer, 0);
      if (got <= 0) {
        waiting[i]->closed = true;
      } else {
        waiting[i]->data.append(buffer, static_cast<size_t>(got));
      }
    }
  }
}

class LoadTest : public DeviceTest {
 protected:
  void SetUp() override { Use(7); }

  std::vector<PushClient> OpenPushes(int count) {
    std::string uid = std::to_string(CameraUid());
    std::vector<PushClient> clients(count);
    for (auto& client : clients) {
      client.fd = Connect(address_, device_->Port());
      EXPECT_GE(client.fd, 0) << "a connection was refused";
      if (client.fd < 0) continue;
      SendText(client.fd, "GET /cgi-bin/jpeg?connect=start&framerate=10&UID=" + uid +
                              " HTTP/1.0\r\nConnection: Keep-Alive\r\n\r\n");
    }
    return clients;
  }

  void CloseAll(std::vector<PushClient>& clients) {
    for (auto& client : clients) {
      if (client.fd >= 0) close(client.fd);
    }
  }
};

TEST_F(LoadTest, ThreeHundredPushesAllReceiveParts) {
  auto clients = OpenPushes(kPushes);
  bool all = PollAll(clients, milliseconds(20000),
                     [](const PushClient& client) { return CountParts(client.data) >= 2; });
  int short_of_parts = 0;
  for (auto& client : clients) short_of_parts += CountParts(client.data) >= 2 ? 0 : 1;
  EXPECT_TRUE(all);
  EXPECT_EQ(short_of_parts, 0);
  EXPECT_EQ(device_->OpenConnections(), static_cast<size_t>(kPushes));
  for (auto& client : clients) {
    EXPECT_EQ(client.data.rfind("HTTP/1.0 200 OK\r\n", 0), 0u);
  }
  CloseAll(clients);
  EXPECT_TRUE(device_->WaitForOpenConnections(0, milliseconds(10000)));
}

TEST_F(LoadTest, StopsCleanlyWithConnectionsOpen) {
  auto clients = OpenPushes(50);
  ASSERT_TRUE(PollAll(clients, milliseconds(10000),
                      [](const PushClient& client) { return CountParts(client.data) >= 1; }));
  // A connection that has sent nothing yet, one held by a fault and the pushes.
  int idle = Connect(address_, device_->Port());
  camsim::Fault hold;
  hold.action = camsim::FaultAction::kNoAnswer;
  device_->SetFault("/cgi-bin/mpeg4_I_interval", hold);
  int held = Connect(address_, device_->Port());
  SendText(held, "GET /cgi-bin/mpeg4_I_interval HTTP/1.0\r\n\r\n");
  ASSERT_TRUE(device_->WaitForOpenConnections(52, kDeadline));
  auto start = std::chrono::steady_clock::now();
  device_->Stop();
  EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(3000));
  EXPECT_EQ(device_->OpenConnections(), 0u);
  EXPECT_TRUE(PollAll(clients, kDeadline, [](const PushClient& client) { return client.closed; }))
      << "every client sees the close";
  bool closed = false;
  ReadUntilClose(idle, kDeadline, &closed);
  EXPECT_TRUE(closed);
  ReadUntilClose(held, kDeadline, &closed);
  EXPECT_TRUE(closed);
  EXPECT_LT(Connect(address_, device_->Port()), 0) << "the listener is gone";
  close(idle);
  close(held);
  CloseAll(clients);
  device_->Stop();  // a second stop does nothing
}

TEST_F(LoadTest, RecordKeepsEveryRequestInOrder) {
  auto before = std::chrono::system_clock::now();
  Fetch("/cgi-bin/getuid?FILE=2&vcodec=h264", "Authorization: Basic eA==\r\nX-Test: one\r\n");
  Fetch("/cgi-bin/keep_alive?mode=h264&protocol=rtp&UID=1&page=5");
  Fetch("/cgi-bin/nothing");
  auto after = std::chrono::system_clock::now();
  auto records = device_->Requests();
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(records[0].requestLine, "GET /cgi-bin/getuid?FILE=2&vcodec=h264 HTTP/1.0");
  EXPECT_EQ(records[0].Header("x-test"), "one");
  EXPECT_EQ(records[0].Header("Host"), "127.0.0.1");
  ASSERT_EQ(records[0].headers.size(), 3u);
  EXPECT_EQ(records[0].headers[0].first, "Host");
  EXPECT_EQ(records[0].headers[1].first, "Authorization");
  EXPECT_EQ(records[0].Param("vcodec"), "h264");
  EXPECT_EQ(records[0].status, 200);
  EXPECT_EQ(records[1].path, "/cgi-bin/keep_alive");
  EXPECT_EQ(records[1].Param("page"), "5");
  EXPECT_EQ(records[2].status, 404);
  for (size_t i = 0; i < records.size(); ++i) {
    EXPECT_EQ(records[i].peer.rfind("127.0.0.1:", 0), 0u);
    EXPECT_GE(records[i].received, before);
    EXPECT_LE(records[i].received, after);
    if (i > 0) {
      EXPECT_GE(records[i].received, records[i - 1].received);
    }
  }
  device_->ClearRequests();
  EXPECT_EQ(device_->RequestCount(), 0u);
}

TEST_F(LoadTest, ObserverSeesEveryRequest) {
  std::mutex mutex;
  std::vector<std::string> seen;
  device_->SetObserver([&](const camsim::RequestRecord& record) {
    std::lock_guard<std::mutex> lock(mutex);
    seen.push_back(record.path);
  });
  Fetch("/cgi-bin/h264_I_interval?stream=1");
  Fetch("/cgi-bin/mpeg4_I_interval");
  device_->SetObserver(nullptr);
  std::lock_guard<std::mutex> lock(mutex);
  EXPECT_EQ(seen,
            (std::vector<std::string>{"/cgi-bin/h264_I_interval", "/cgi-bin/mpeg4_I_interval"}));
}

TEST(Devices, SeveralDevicesEachOnItsOwnPort) {
  auto camera = StartDevice(7);
  auto recorder = StartDevice(31, "::1");
  auto quillon = StartDevice(6);
  ASSERT_TRUE(camera && recorder && quillon);
  EXPECT_NE(camera->Port(), quillon->Port());
  EXPECT_EQ(Get("127.0.0.1", camera->Port(), "/cgi-bin/getuid?FILE=2&vcodec=h264").status, 200);
  EXPECT_EQ(Get("::1", recorder->Port(), "/cgi-bin/start.cgi?UID=-1").status, 200);
  EXPECT_EQ(Get("127.0.0.1", quillon->Port(), "/cgi-bin/getuid?FILE=uid.html").status, 200);
  EXPECT_EQ(camera->RequestCount(), 1u);
  EXPECT_EQ(recorder->RequestCount(), 1u);
}

}  // namespace
}  // namespace camsim_test
