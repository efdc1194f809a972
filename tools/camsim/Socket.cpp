#include "Socket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <mutex>

namespace camsim {

namespace {

constexpr int kBacklog = 4096;

// Rounded up, so that a wait never ends before its deadline.
int RemainingMs(std::chrono::steady_clock::time_point deadline) {
  auto left =
      std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
  return left.count() < 0 ? 0 : static_cast<int>(left.count());
}

}  // namespace

WaitResult WaitReadable(int fd, int stopFd, int timeoutMs) {
  auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  for (;;) {
    pollfd fds[2] = {{stopFd, POLLIN, 0}, {fd, POLLIN, 0}};
    int wait = timeoutMs < 0 ? -1 : RemainingMs(deadline);
    int ready = poll(fds, 2, wait);
    if (ready < 0 && errno == EINTR) continue;
    if (ready < 0) return WaitResult::kPeerClosed;
    if (fds[0].revents != 0) return WaitResult::kStopped;
    if (fds[1].revents & (POLLIN | POLLHUP | POLLERR)) return WaitResult::kReady;
    if (ready == 0 && timeoutMs >= 0 && RemainingMs(deadline) == 0) return WaitResult::kTimeout;
  }
}

WaitResult Pause(int fd, int stopFd, int timeoutMs) {
  auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  for (;;) {
    int wait = timeoutMs < 0 ? -1 : RemainingMs(deadline);
    WaitResult result = WaitReadable(fd, stopFd, wait);
    if (result != WaitResult::kReady) return result;
    char scratch[4096];
    ssize_t got = recv(fd, scratch, sizeof scratch, MSG_DONTWAIT);
    if (got == 0 || (got < 0 && errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR)) {
      return WaitResult::kPeerClosed;
    }
  }
}

bool SendAll(int fd, const char* data, size_t size) {
  while (size > 0) {
    ssize_t sent = send(fd, data, size, MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) return false;
    data += sent;
    size -= static_cast<size_t>(sent);
  }
  return true;
}

void ResetOnClose(int fd) {
  linger hard{};
  hard.l_onoff = 1;
  hard.l_linger = 0;
  setsockopt(fd, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
}

bool MakeAddress(const std::string& text, uint16_t port, sockaddr_storage* address,
                 socklen_t* length) {
  std::memset(address, 0, sizeof *address);
  auto* v4 = reinterpret_cast<sockaddr_in*>(address);
  if (inet_pton(AF_INET, text.c_str(), &v4->sin_addr) == 1) {
    v4->sin_family = AF_INET;
    v4->sin_port = htons(port);
    *length = sizeof(sockaddr_in);
    return true;
  }
  auto* v6 = reinterpret_cast<sockaddr_in6*>(address);
  if (inet_pton(AF_INET6, text.c_str(), &v6->sin6_addr) == 1) {
    v6->sin6_family = AF_INET6;
    v6->sin6_port = htons(port);
    *length = sizeof(sockaddr_in6);
    return true;
  }
  return false;
}

int OpenListener(const sockaddr_storage& address, socklen_t length, std::string* error) {
  int fd = socket(address.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) {
    *error = std::string("socket: ") + std::strerror(errno);
    return -1;
  }
  int on = 1;
  setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (address.ss_family == AF_INET6) setsockopt(fd, IPPROTO_IPV6, IPV6_V6ONLY, &on, sizeof on);
  if (bind(fd, reinterpret_cast<const sockaddr*>(&address), length) != 0 ||
      listen(fd, kBacklog) != 0) {
    *error = std::string("bind/listen: ") + std::strerror(errno);
    close(fd);
    return -1;
  }
  return fd;
}

uint16_t LocalPort(int fd) {
  sockaddr_storage address{};
  socklen_t length = sizeof address;
  if (getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) return 0;
  if (address.ss_family == AF_INET6) {
    return ntohs(reinterpret_cast<sockaddr_in6*>(&address)->sin6_port);
  }
  return ntohs(reinterpret_cast<sockaddr_in*>(&address)->sin_port);
}

std::string AddressText(const sockaddr_storage& address) {
  char text[INET6_ADDRSTRLEN] = {};
  if (address.ss_family == AF_INET6) {
    const auto* v6 = reinterpret_cast<const sockaddr_in6*>(&address);
    inet_ntop(AF_INET6, &v6->sin6_addr, text, sizeof text);
    return std::string("[") + text + "]:" + std::to_string(ntohs(v6->sin6_port));
  }
  const auto* v4 = reinterpret_cast<const sockaddr_in*>(&address);
  inet_ntop(AF_INET, &v4->sin_addr, text, sizeof text);
  return std::string(text) + ":" + std::to_string(ntohs(v4->sin_port));
}

int MakeSignalFd() {
  return eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
}

void RaiseSignalFd(int fd) {
  uint64_t one = 1;
  ssize_t written = write(fd, &one, sizeof one);
  (void)written;
}

void DrainSignalFd(int fd) {
  uint64_t value = 0;
  ssize_t got = read(fd, &value, sizeof value);
  (void)got;
}

void RaiseOpenFileLimit() {
  static std::once_flag once;
  std::call_once(once, [] {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < limit.rlim_max) {
      limit.rlim_cur = limit.rlim_max;
      setrlimit(RLIMIT_NOFILE, &limit);
    }
  });
}

}  // namespace camsim
