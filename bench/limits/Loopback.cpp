// Plain sockets on loopback, with nothing between the caller and the system.
#include "Loopback.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <utility>

namespace limits {

namespace {

sockaddr_in LoopbackAddress(uint16_t usPort) {
  sockaddr_in sAddress{};
  sAddress.sin_family = AF_INET;
  sAddress.sin_port = htons(usPort);
  sAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return sAddress;
}

bool SendAll(int iFd, const char* pcData, size_t ulSize) {
  while (ulSize > 0) {
    const ssize_t lSent = send(iFd, pcData, ulSize, MSG_NOSIGNAL);
    if (lSent <= 0) return false;
    pcData += lSent;
    ulSize -= static_cast<size_t>(lSent);
  }
  return true;
}

// Reads until the blank line that ends a request head; false at a close first.
bool ReadHead(int iFd) {
  char acHead[4096];
  size_t ulHave = 0;
  for (;;) {
    const ssize_t lRead = recv(iFd, acHead + ulHave, sizeof acHead - 1 - ulHave, 0);
    if (lRead <= 0) return false;
    ulHave += static_cast<size_t>(lRead);
    acHead[ulHave] = '\0';
    if (std::strstr(acHead, "\r\n\r\n") != nullptr) return true;
    if (ulHave == sizeof acHead - 1) return false;
  }
}

}  // namespace

std::string GetRequest(const std::string& sTarget) {
  return "GET " + sTarget + " HTTP/1.0\r\nConnection: Keep-Alive\r\nHost: 127.0.0.1\r\n\r\n";
}

int ConnectLoopback(uint16_t usPort) {
  const sockaddr_in sAddress = LoopbackAddress(usPort);
  const int iFd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (iFd >= 0 &&
      connect(iFd, reinterpret_cast<const sockaddr*>(&sAddress), sizeof sAddress) != 0) {
    close(iFd);
    return -1;
  }
  return iFd;
}

long RawExchange(uint16_t usPort, const std::string& sRequest, char* pcBuffer, size_t ulSize) {
  const int iFd = ConnectLoopback(usPort);
  if (iFd < 0) return -1;
  long lTotal = 0;
  bool bOk = SendAll(iFd, sRequest.data(), sRequest.size());
  for (ssize_t lRead = 1; bOk && lRead > 0;) {
    const size_t ulAt = static_cast<size_t>(lTotal) < ulSize ? static_cast<size_t>(lTotal) : 0;
    lRead = recv(iFd, pcBuffer + ulAt, ulSize - ulAt, 0);
    if (lRead < 0) bOk = false;
    if (lRead > 0) lTotal += lRead;
  }
  close(iFd);
  return bOk ? lTotal : -1;
}

FixedAnswerServer::FixedAnswerServer(std::string sAnswer) : m_sAnswer(std::move(sAnswer)) {
  m_iListenFd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in sAddress = LoopbackAddress(0);
  socklen_t uLength = sizeof sAddress;
  if (bind(m_iListenFd, reinterpret_cast<sockaddr*>(&sAddress), sizeof sAddress) != 0 ||
      listen(m_iListenFd, 64) != 0 ||
      getsockname(m_iListenFd, reinterpret_cast<sockaddr*>(&sAddress), &uLength) != 0) {
    return;  // Port() stays 0: every exchange then fails and says so
  }
  m_usPort = ntohs(sAddress.sin_port);
  m_iStopFd = eventfd(0, EFD_CLOEXEC);
  m_thread = std::thread([this] { Run(); });
}

FixedAnswerServer::~FixedAnswerServer() {
  const uint64_t ulOne = 1;
  if (m_thread.joinable() && write(m_iStopFd, &ulOne, sizeof ulOne) == sizeof ulOne) {
    m_thread.join();
  }
  close(m_iListenFd);
  if (m_iStopFd >= 0) close(m_iStopFd);
}

void FixedAnswerServer::Run() {
  for (;;) {
    pollfd asPoll[2] = {{m_iListenFd, POLLIN, 0}, {m_iStopFd, POLLIN, 0}};
    if (poll(asPoll, 2, -1) < 0 || (asPoll[1].revents & POLLIN) != 0) return;
    const int iFd = accept4(m_iListenFd, nullptr, nullptr, SOCK_CLOEXEC);
    if (iFd < 0) continue;
    if (ReadHead(iFd)) SendAll(iFd, m_sAnswer.data(), m_sAnswer.size());
    close(iFd);
  }
}

}  // namespace limits
