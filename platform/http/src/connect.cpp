// Address resolution and the connection within a time-out.
#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "kxhttp_internal.h"

namespace kxhttp {
namespace {

struct AddrInfoFree {
  void operator()(addrinfo* info) const { freeaddrinfo(info); }
};
using AddrInfoPtr = std::unique_ptr<addrinfo, AddrInfoFree>;

AddrInfoPtr resolve(const Endpoint& endpoint) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_NUMERICSERV | (endpoint.numericOnly ? AI_NUMERICHOST : 0);
  std::string service = std::to_string(endpoint.port);
  addrinfo* result = nullptr;
  if (getaddrinfo(endpoint.host.c_str(), service.c_str(), &hints, &result) != 0) return nullptr;
  return AddrInfoPtr(result);
}

// Waits for a non-blocking connect; 0, or the code of the failure.
uint32_t wait_connected(int fd, Deadline deadline) {
  for (;;) {
    pollfd pfd{fd, POLLOUT, 0};
    int ready = poll(&pfd, 1, remaining_ms(deadline));
    if (ready < 0 && errno == EINTR) continue;
    if (ready < 0) return HTTP_ERR_CONNECT;
    if (ready == 0) {
      if (Clock::now() >= deadline) return HTTP_ERR_TIMEOUT_CONNECT;
      continue;
    }
    int error = 0;
    socklen_t length = sizeof error;
    if (getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &length) != 0 || error != 0) {
      return error == ETIMEDOUT ? HTTP_ERR_TIMEOUT_CONNECT : HTTP_ERR_CONNECT;
    }
    return 0;
  }
}

// The connect waits in the kernel, bounded by the socket's send time-out:
// one call where a non-blocking connect takes three (connect, poll and the
// error read). Every later send and receive of the session asks not to
// block by its flags, so the socket itself stays blocking.
int connect_one(const addrinfo* address, Deadline deadline, uint32_t& code) {
  int fd = socket(address->ai_family, address->ai_socktype | SOCK_CLOEXEC, address->ai_protocol);
  if (fd < 0) {
    code = HTTP_ERR_CONNECT;
    return -1;
  }
  code = 0;
  const long waitMs = remaining_ms(deadline) > 0 ? remaining_ms(deadline) : 1;
  const timeval limit{static_cast<time_t>(waitMs / 1000),
                      static_cast<suseconds_t>(waitMs % 1000 * 1000)};
  if (setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit) != 0) {
    code = HTTP_ERR_CONNECT;
  } else if (connect(fd, address->ai_addr, address->ai_addrlen) != 0) {
    // The time-out ran out (EINPROGRESS) or a signal came (EINTR): the
    // connection goes on in the background, and the deadline decides.
    code = errno == EINPROGRESS || errno == EINTR ? wait_connected(fd, deadline) : HTTP_ERR_CONNECT;
  }
  if (code != 0) {
    close(fd);
    return -1;
  }
  return fd;
}

}  // namespace

int connect_endpoint(const Endpoint& endpoint, long timeoutMs, uint32_t& code) {
  code = HTTP_ERR_CONNECT;
  AddrInfoPtr addresses = resolve(endpoint);
  if (!addresses) return -1;
  Deadline deadline = deadline_after_ms(timeoutMs);
  for (const addrinfo* address = addresses.get(); address; address = address->ai_next) {
    int fd = connect_one(address, deadline, code);
    if (fd >= 0) return fd;
    if (code == HTTP_ERR_TIMEOUT_CONNECT) break;
  }
  return -1;
}

uint32_t send_all(int fd, const std::string& bytes, Deadline deadline) {
  size_t sent = 0;
  while (sent < bytes.size()) {
    ssize_t n = send(fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (n > 0) {
      sent += static_cast<size_t>(n);
      continue;
    }
    if (n < 0 && errno == EINTR) continue;
    if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
      pollfd pfd{fd, POLLOUT, 0};
      int ready = poll(&pfd, 1, remaining_ms(deadline));
      if (ready == 0 && Clock::now() >= deadline) return HTTP_ERR_TIMEOUT;
      continue;
    }
    return HTTP_ERR_SEND;
  }
  return 0;
}

}  // namespace kxhttp
