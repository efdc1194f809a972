#include "LoopbackPeer.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace fuzzsup {

namespace {

// A request head that has not ended by then is given up: the requester
// sends its whole request at once, so only a session it left idle waits.
constexpr long long kHeadLimitMs = 10000;
constexpr size_t kHeadMax = 64 * 1024;

long long NowMs() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

int Listen(int iFamily, unsigned short& rusPort) {
  const int iFd = socket(iFamily, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (iFd < 0) return -1;
  sockaddr_storage sAddr{};
  socklen_t iLength = 0;
  if (iFamily == AF_INET6) {
    auto* psV6 = reinterpret_cast<sockaddr_in6*>(&sAddr);
    psV6->sin6_family = AF_INET6;
    psV6->sin6_addr = in6addr_loopback;
    iLength = sizeof(*psV6);
  } else {
    auto* psV4 = reinterpret_cast<sockaddr_in*>(&sAddr);
    psV4->sin_family = AF_INET;
    psV4->sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    iLength = sizeof(*psV4);
  }
  if (bind(iFd, reinterpret_cast<sockaddr*>(&sAddr), iLength) != 0 || listen(iFd, 64) != 0 ||
      getsockname(iFd, reinterpret_cast<sockaddr*>(&sAddr), &iLength) != 0) {
    close(iFd);
    return -1;
  }
  rusPort = ntohs(iFamily == AF_INET6 ? reinterpret_cast<sockaddr_in6*>(&sAddr)->sin6_port
                                      : reinterpret_cast<sockaddr_in*>(&sAddr)->sin_port);
  return iFd;
}

void SendAll(int iFd, const std::string& sBytes) {
  size_t uSent = 0;
  while (uSent < sBytes.size()) {
    const ssize_t iSent = send(iFd, sBytes.data() + uSent, sBytes.size() - uSent, MSG_NOSIGNAL);
    if (iSent <= 0) return;
    uSent += static_cast<size_t>(iSent);
  }
}

}  // namespace

LoopbackPeer::LoopbackPeer(int iFamily)
    : m_pcAddress(iFamily == AF_INET6 ? "::1" : "127.0.0.1"),
      m_iListenFd(Listen(iFamily, m_usPort)) {
  if (m_iListenFd < 0) return;
  if (pipe2(m_aiWake, O_CLOEXEC) != 0) {
    close(m_iListenFd);
    m_iListenFd = -1;
    return;
  }
  m_thread = std::thread(&LoopbackPeer::Run, this);
}

LoopbackPeer::~LoopbackPeer() {
  if (m_thread.joinable()) {
    const char cStop = 's';
    (void)!write(m_aiWake[1], &cStop, 1);
    m_thread.join();
  }
  for (const Connection& r : m_asConnections) close(r.iFd);
  for (int iFd : {m_iListenFd, m_aiWake[0], m_aiWake[1]}) {
    if (iFd >= 0) close(iFd);
  }
}

void LoopbackPeer::Serve(std::vector<std::string> asReplies) {
  std::lock_guard<std::mutex> sLock(m_mutex);
  m_asReplies = std::move(asReplies);
  m_uNext = 0;
}

std::string LoopbackPeer::NextReply() {
  std::lock_guard<std::mutex> sLock(m_mutex);
  if (m_asReplies.empty()) return std::string();
  const size_t uIndex = m_uNext < m_asReplies.size() ? m_uNext : m_asReplies.size() - 1;
  ++m_uNext;
  return m_asReplies[uIndex];
}

void LoopbackPeer::Run() {
  for (;;) {
    std::vector<pollfd> asPoll = {{m_aiWake[0], POLLIN, 0}, {m_iListenFd, POLLIN, 0}};
    for (const Connection& r : m_asConnections) asPoll.push_back({r.iFd, POLLIN, 0});
    if (poll(asPoll.data(), asPoll.size(), 100) < 0) continue;
    if (asPoll[0].revents != 0) return;
    if (asPoll[1].revents != 0) Accept();
    const long long llNow = NowMs();
    // Only the connections polled above; one accepted just now waits a round.
    for (size_t i = asPoll.size() - 2; i-- > 0;) {
      Connection& r = m_asConnections[i];
      const bool bDone = (asPoll[i + 2].revents != 0 && Read(r)) || llNow > r.llDeadlineMs;
      if (bDone) {
        close(r.iFd);
        m_asConnections.erase(m_asConnections.begin() + static_cast<long>(i));
      }
    }
  }
}

void LoopbackPeer::Accept() {
  const int iFd = accept4(m_iListenFd, nullptr, nullptr, SOCK_CLOEXEC);
  if (iFd >= 0) m_asConnections.push_back({iFd, std::string(), NowMs() + kHeadLimitMs});
}

bool LoopbackPeer::Read(Connection& rConnection) {
  char acBuf[4096];
  const ssize_t iRead = recv(rConnection.iFd, acBuf, sizeof(acBuf), MSG_DONTWAIT);
  if (iRead == 0) return true;
  if (iRead < 0) return errno != EAGAIN && errno != EINTR;
  rConnection.sHead.append(acBuf, static_cast<size_t>(iRead));
  const bool bEnded = rConnection.sHead.find("\r\n\r\n") != std::string::npos ||
                      rConnection.sHead.find("\n\n") != std::string::npos;
  if (!bEnded && rConnection.sHead.size() < kHeadMax) return false;
  Answer(rConnection.iFd);
  return true;
}

void LoopbackPeer::Answer(int iFd) {
  SendAll(iFd, NextReply());
  // The request was read whole, so closing sends no reset: the requester
  // reads the reply to its end.
  shutdown(iFd, SHUT_WR);
}

}  // namespace fuzzsup
