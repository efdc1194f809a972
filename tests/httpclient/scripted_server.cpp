#include "scripted_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

#include "CamTestTiming.h"

namespace httptest {
namespace {

using Clock = std::chrono::steady_clock;

int remaining(Clock::time_point deadline) {
  auto left = std::chrono::duration_cast<Milliseconds>(deadline - Clock::now()).count();
  return left < 0 ? 0 : static_cast<int>(left);
}

// Binds a stream socket to address:port (port 0: any free one).
int bind_loopback(const char* address, unsigned short port) {
  sockaddr_storage storage{};
  socklen_t length = 0;
  int family = std::strchr(address, ':') ? AF_INET6 : AF_INET;
  if (family == AF_INET6) {
    auto* a6 = reinterpret_cast<sockaddr_in6*>(&storage);
    a6->sin6_family = AF_INET6;
    a6->sin6_port = htons(port);
    inet_pton(AF_INET6, address, &a6->sin6_addr);
    length = sizeof *a6;
  } else {
    auto* a4 = reinterpret_cast<sockaddr_in*>(&storage);
    a4->sin_family = AF_INET;
    a4->sin_port = htons(port);
    inet_pton(AF_INET, address, &a4->sin_addr);
    length = sizeof *a4;
  }
  int fd = socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
  int one = 1;
  setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
  if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&storage), length) != 0) {
    if (fd >= 0) close(fd);
    throw std::runtime_error("cannot bind loopback socket");
  }
  return fd;
}

unsigned short bound_port(int fd) {
  sockaddr_storage storage{};
  socklen_t length = sizeof storage;
  getsockname(fd, reinterpret_cast<sockaddr*>(&storage), &length);
  if (storage.ss_family == AF_INET6)
    return ntohs(reinterpret_cast<sockaddr_in6*>(&storage)->sin6_port);
  return ntohs(reinterpret_cast<sockaddr_in*>(&storage)->sin_port);
}

}  // namespace

bool Connection::wait_stop(Milliseconds limit) {
  pollfd pfd{stopFd_, POLLIN, 0};
  return poll(&pfd, 1, static_cast<int>(limit.count())) > 0;
}

std::string Connection::read_head(Milliseconds limit) {
  std::string head;
  auto deadline = Clock::now() + camtest::Scaled(limit);
  while (head.find("\r\n\r\n") == std::string::npos) {
    pollfd pfds[2] = {{fd_, POLLIN, 0}, {stopFd_, POLLIN, 0}};
    if (poll(pfds, 2, remaining(deadline)) <= 0 || (pfds[1].revents & POLLIN)) return std::string();
    char chunk[1024];
    ssize_t n = recv(fd_, chunk, sizeof chunk, 0);
    if (n <= 0) return std::string();
    head.append(chunk, static_cast<size_t>(n));
  }
  return head;
}

void Connection::send(const std::string& bytes) {
  size_t sent = 0;
  while (sent < bytes.size()) {
    ssize_t n = ::send(fd_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (n <= 0) return;
    sent += static_cast<size_t>(n);
  }
}

void Connection::drip(const std::string& bytes, Milliseconds interval) {
  for (char c : bytes) {
    if (::send(fd_, &c, 1, MSG_NOSIGNAL) != 1) return;
    if (wait_stop(interval)) return;
  }
}

void Connection::hang() {
  for (;;) {
    pollfd pfds[2] = {{fd_, POLLIN, 0}, {stopFd_, POLLIN, 0}};
    if (poll(pfds, 2, -1) < 0 || (pfds[1].revents & POLLIN)) return;
    char chunk[256];
    if (recv(fd_, chunk, sizeof chunk, 0) <= 0) return;
  }
}

ScriptedServer::ScriptedServer(const char* address, bool accepting) {
  listenFd_ = bind_loopback(address, 0);
  listen(listenFd_, accepting ? 16 : 0);
  port_ = bound_port(listenFd_);
  stopFd_ = eventfd(0, EFD_CLOEXEC);
  if (accepting) acceptor_ = std::thread([this] { accept_loop(); });
}

ScriptedServer::~ScriptedServer() {
  stop();
  close(stopFd_);
}

void ScriptedServer::stop() {
  {
    std::lock_guard<std::mutex> guard(mutex_);
    if (stopped_) return;
    stopped_ = true;
  }
  uint64_t one = 1;
  if (write(stopFd_, &one, sizeof one) != sizeof one) return;
  if (acceptor_.joinable()) acceptor_.join();
  for (std::thread& worker : workers_) worker.join();
  close(listenFd_);
}

void ScriptedServer::add(Script script) {
  std::lock_guard<std::mutex> guard(mutex_);
  scripts_.push_back(std::move(script));
}

std::vector<std::string> ScriptedServer::requests() {
  std::lock_guard<std::mutex> guard(mutex_);
  return requests_;
}

void ScriptedServer::record(const std::string& head) {
  std::lock_guard<std::mutex> guard(mutex_);
  requests_.push_back(head);
}

int ScriptedServer::accepted() {
  std::lock_guard<std::mutex> guard(mutex_);
  return accepted_;
}

bool ScriptedServer::wait_idle(Milliseconds limit) {
  std::unique_lock<std::mutex> guard(mutex_);
  return idle_.wait_for(guard, camtest::Scaled(limit), [this] { return active_ == 0; });
}

void ScriptedServer::accept_loop() {
  for (;;) {
    pollfd pfds[2] = {{listenFd_, POLLIN, 0}, {stopFd_, POLLIN, 0}};
    if (poll(pfds, 2, -1) < 0 || (pfds[1].revents & POLLIN)) return;
    int fd = accept4(listenFd_, nullptr, nullptr, SOCK_CLOEXEC);
    if (fd < 0) continue;
    std::lock_guard<std::mutex> guard(mutex_);
    Script script;
    if (!scripts_.empty()) {
      script = scripts_[std::min<size_t>(static_cast<size_t>(accepted_), scripts_.size() - 1)];
    }
    ++accepted_;
    ++active_;
    workers_.emplace_back([this, fd, script] { serve(fd, script); });
  }
}

void ScriptedServer::serve(int fd, Script script) {
  Connection connection(fd, stopFd_);
  if (script) script(connection);
  close(fd);
  std::lock_guard<std::mutex> guard(mutex_);
  --active_;
  idle_.notify_all();
}

std::string response(const std::string& statusLine, const std::string& body,
                     const std::vector<std::string>& headers, bool withLength) {
  std::string text = statusLine + "\r\n";
  for (const std::string& header : headers) text += header + "\r\n";
  if (withLength) text += "Content-Length: " + std::to_string(body.size()) + "\r\n";
  return text + "\r\n" + body;
}

std::string header_value(const std::string& head, const std::string& name) {
  std::string needle = "\r\n" + name + ":";
  size_t found = head.find(needle);
  if (found == std::string::npos) return std::string();
  size_t start = head.find_first_not_of(' ', found + needle.size());
  size_t end = head.find("\r\n", start);
  return head.substr(start, end - start);
}

}  // namespace httptest
