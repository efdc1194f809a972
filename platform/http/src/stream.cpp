// Deadline-bounded reading from sockets and from memory.
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>

#include "kxhttp_internal.h"

namespace kxhttp {
namespace {

// The only library-wide state: tests shorten every time-out with it.
std::atomic<int> g_timeoutDivisor{1};

}  // namespace

}  // namespace kxhttp

extern "C" void http_set_timeout_divisor(int iDivisor) {
  kxhttp::g_timeoutDivisor.store(iDivisor < 1 ? 1 : iDivisor, std::memory_order_relaxed);
}

namespace kxhttp {

long scaled_timeout_ms(long timeoutMs) {
  if (timeoutMs <= 0) return 0;
  return timeoutMs / g_timeoutDivisor.load(std::memory_order_relaxed);
}

Deadline deadline_after_ms(long timeoutMs) {
  return Clock::now() + std::chrono::milliseconds(timeoutMs);
}

int remaining_ms(Deadline deadline) {
  auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
  if (left.count() <= 0) return 0;
  // Round up so that a poll never wakes just before the deadline.
  return static_cast<int>(std::min<long long>(left.count() + 1, 1 << 30));
}

ReadStatus SocketSource::read_some(char* buf, size_t capacity, Deadline deadline, size_t& got) {
  got = 0;
  // Bytes already waiting are taken at once: the wait is only for a socket
  // that has none (a push that comes fast is read without a poll a read).
  // The deadline still holds for a peer that never stops sending.
  if (Clock::now() >= deadline) return ReadStatus::kTimeout;
  ssize_t first = recv(fd_, buf, capacity, MSG_DONTWAIT);
  if (first > 0) {
    got = static_cast<size_t>(first);
    return ReadStatus::kOk;
  }
  if (first == 0) return ReadStatus::kClosed;
  if (errno != EINTR && errno != EAGAIN && errno != EWOULDBLOCK) return ReadStatus::kError;
  for (;;) {
    pollfd pfd{fd_, POLLIN, 0};
    int wait = remaining_ms(deadline);
    if (wait == 0 && Clock::now() >= deadline) return ReadStatus::kTimeout;
    int ready = poll(&pfd, 1, wait);
    if (ready < 0) {
      if (errno == EINTR) continue;
      return ReadStatus::kError;
    }
    if (ready == 0) {
      if (Clock::now() >= deadline) return ReadStatus::kTimeout;
      continue;
    }
    ssize_t n = recv(fd_, buf, capacity, MSG_DONTWAIT);
    if (n > 0) {
      got = static_cast<size_t>(n);
      return ReadStatus::kOk;
    }
    if (n == 0) return ReadStatus::kClosed;
    if (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK) continue;
    return ReadStatus::kError;
  }
}

ReadStatus MemorySource::read_some(char* buf, size_t capacity, Deadline, size_t& got) {
  got = 0;
  if (offset_ >= size_) return ReadStatus::kClosed;
  got = std::min({capacity, step_, size_ - offset_});
  std::memcpy(buf, data_ + offset_, got);
  offset_ += got;
  return ReadStatus::kOk;
}

void InputBuffer::make_room(size_t count) {
  if (capacity_ - end_ >= count) return;
  const size_t pendingBytes = size();
  if (capacity_ - pendingBytes >= count) {
    // What is pending goes to the front: it is what a read brought beyond
    // the bytes consumed, seldom more than one part.
    if (pendingBytes > 0) std::memmove(block_.get(), block_.get() + begin_, pendingBytes);
  } else {
    // Doubling keeps a long part that is searched for its end from being
    // copied once a read.
    const size_t capacity = std::max({capacity_ * 2, pendingBytes + count, 2 * readBytes_});
    std::unique_ptr<char[]> block(new char[capacity]);
    if (pendingBytes > 0) std::memcpy(block.get(), block_.get() + begin_, pendingBytes);
    block_ = std::move(block);
    capacity_ = capacity;
  }
  begin_ = 0;
  end_ = pendingBytes;
}

ReadStatus InputBuffer::read_at_most(size_t count, Deadline deadline) {
  size_t got = 0;
  ReadStatus status =
      source->read_some(block_.get() + end_, std::min(count, capacity_ - end_), deadline, got);
  if (status == ReadStatus::kOk) end_ += got;
  return status;
}

ReadStatus InputBuffer::fill(Deadline deadline) {
  make_room(readBytes_);
  return read_at_most(readBytes_, deadline);
}

ReadStatus InputBuffer::fill_toward(size_t total, Deadline deadline) {
  const size_t rest = total > size() ? total - size() : 1;
  make_room(rest);
  return read_at_most(std::max(rest, readBytes_), deadline);
}

uint32_t code_for_read_status(ReadStatus status) {
  switch (status) {
    case ReadStatus::kTimeout:
      return HTTP_ERR_TIMEOUT;
    case ReadStatus::kClosed:
      return HTTP_ERR_CLOSED;
    case ReadStatus::kError:
      return HTTP_ERR_CONNECT;
    case ReadStatus::kOk:
      break;
  }
  return 0;
}

}  // namespace kxhttp
