// Costs of the simulator as the tests see them: one CGI exchange on a fresh
// connection, and opening many JPEG pushes until each has sent a picture.
#include <benchmark/benchmark.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "Device.h"
#include "Loopback.h"

namespace {

using limits::ConnectLoopback;

void SendLine(int fd, const std::string& target) {
  std::string request = "GET " + target + " HTTP/1.0\r\nConnection: Keep-Alive\r\n\r\n";
  if (send(fd, request.data(), request.size(), MSG_NOSIGNAL) < 0) return;
}

std::unique_ptr<camsim::Device> Start(int model) {
  camsim::DeviceConfig config;
  config.model = model;
  std::string error;
  return camsim::Device::Start(config, &error);
}

void BM_GetUidExchange(benchmark::State& state) {
  auto device = Start(7);
  char buffer[4096];
  for (auto _ : state) {
    int fd = ConnectLoopback(device->Port());
    SendLine(fd, "/cgi-bin/getuid?FILE=2&vcodec=h264");
    while (recv(fd, buffer, sizeof buffer, 0) > 0) {
    }
    close(fd);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_GetUidExchange)->UseRealTime();

// Opens state.range(0) pushes and waits until every one has sent the
// start of its first picture.
void BM_OpenPushes(benchmark::State& state) {
  auto device = Start(7);
  const int count = static_cast<int>(state.range(0));
  char buffer[16384];
  for (auto _ : state) {
    device->ForgetUids();
    int fd = ConnectLoopback(device->Port());
    SendLine(fd, "/cgi-bin/getuid?FILE=2&vcodec=jpeg");
    std::string reply;
    for (ssize_t got; (got = recv(fd, buffer, sizeof buffer, 0)) > 0;) reply.append(buffer, got);
    close(fd);
    std::string uid = reply.substr(reply.find("UID=") + 4);
    uid = uid.substr(0, uid.find('\r'));
    std::vector<int> fds(count);
    std::vector<std::string> data(count);
    for (int i = 0; i < count; ++i) {
      fds[i] = ConnectLoopback(device->Port());
      SendLine(fds[i], "/cgi-bin/jpeg?connect=start&framerate=30&UID=" + uid);
    }
    int waiting = count;
    while (waiting > 0) {
      std::vector<pollfd> polls;
      std::vector<int> which;
      for (int i = 0; i < count; ++i) {
        if (data[i].find("image/jpeg") == std::string::npos) {
          polls.push_back({fds[i], POLLIN, 0});
          which.push_back(i);
        }
      }
      waiting = static_cast<int>(polls.size());
      if (waiting == 0 || poll(polls.data(), polls.size(), 5000) <= 0) break;
      for (size_t p = 0; p < polls.size(); ++p) {
        if (polls[p].revents == 0) continue;
        ssize_t got = recv(polls[p].fd, buffer, sizeof buffer, 0);
        if (got > 0) data[which[p]].append(buffer, static_cast<size_t>(got));
      }
    }
    for (int fd_open : fds) close(fd_open);
    device->WaitForOpenConnections(0, std::chrono::seconds(10));
  }
  state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_OpenPushes)->Arg(300)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
