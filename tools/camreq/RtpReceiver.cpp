#include "RtpReceiver.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Record.h"
#include "StreamState.h"

namespace camreq {

namespace {

constexpr int kPollSliceMs = 200;
constexpr int kEvenPortTries = 64;
constexpr int kReceiveBuffer = 1 << 20;
constexpr int kH264Sps = 7;
constexpr int kH264Pps = 8;
constexpr int kH264StapA = 24;

struct SocketAddress {
  sockaddr_storage sStorage{};
  socklen_t iLength = 0;
};

// A numeric address and a port; false when the text is no address.
bool MakeAddress(const std::string& sAddress, int iPort, SocketAddress* psOut) {
  *psOut = SocketAddress{};
  auto* psV4 = reinterpret_cast<sockaddr_in*>(&psOut->sStorage);
  auto* psV6 = reinterpret_cast<sockaddr_in6*>(&psOut->sStorage);
  if (inet_pton(AF_INET, sAddress.c_str(), &psV4->sin_addr) == 1) {
    psV4->sin_family = AF_INET;
    psV4->sin_port = htons(static_cast<uint16_t>(iPort));
    psOut->iLength = sizeof(sockaddr_in);
    return true;
  }
  if (inet_pton(AF_INET6, sAddress.c_str(), &psV6->sin6_addr) == 1) {
    psV6->sin6_family = AF_INET6;
    psV6->sin6_port = htons(static_cast<uint16_t>(iPort));
    psOut->iLength = sizeof(sockaddr_in6);
    return true;
  }
  return false;
}

int BoundPort(int iFd) {
  sockaddr_storage sAddress{};
  socklen_t iLength = sizeof(sAddress);
  if (getsockname(iFd, reinterpret_cast<sockaddr*>(&sAddress), &iLength) != 0) return -1;
  if (sAddress.ss_family == AF_INET) {
    return ntohs(reinterpret_cast<sockaddr_in*>(&sAddress)->sin_port);
  }
  return ntohs(reinterpret_cast<sockaddr_in6*>(&sAddress)->sin6_port);
}

std::string Errno(const char* pcWhat) {
  return std::string(pcWhat) + ": " + std::strerror(errno);
}

bool IsLoopback(const std::string& sInterface) {
  return sInterface == "::1" || sInterface.rfind("127.", 0) == 0;
}

}  // namespace

bool RtpReceiver::Open(const std::string& sInterface, int iPort, std::string* psError) {
  SocketAddress sAddress;
  if (!MakeAddress(sInterface, 0, &sAddress)) {
    *psError = "no address: " + sInterface;
    return false;
  }
  m_sInterface = sInterface;
  m_iFamily = sAddress.sStorage.ss_family;
  m_iWakeFd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
  if (m_iWakeFd < 0) {
    *psError = Errno("eventfd");
    return false;
  }
  const int iTries = iPort == 0 ? kEvenPortTries : 1;
  for (int i = 0; i < iTries; ++i) {
    const int iFd = OpenSocket("", iPort, psError);
    if (iFd < 0) return false;
    const int iBound = BoundPort(iFd);
    // RTP takes the even port of a pair; a system-chosen odd one is tried again.
    if (iPort == 0 && iBound % 2 != 0 && i + 1 < iTries) {
      close(iFd);
      continue;
    }
    m_iFd = iFd;
    m_iFdPort = iBound;
    m_iOpenPort = iBound;
    return true;
  }
  return false;
}

int RtpReceiver::OpenSocket(const std::string& sGroup, int iPort, std::string* psError) {
  SocketAddress sBind;
  const std::string& sBindAddress = sGroup.empty() ? m_sInterface : sGroup;
  if (!MakeAddress(sBindAddress, iPort, &sBind)) {
    *psError = "no address: " + sBindAddress;
    return -1;
  }
  const int iFd = socket(sBind.sStorage.ss_family, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (iFd < 0) {
    *psError = Errno("socket");
    return -1;
  }
  const int iOn = 1;
  setsockopt(iFd, SOL_SOCKET, SO_REUSEADDR, &iOn, sizeof(iOn));
  setsockopt(iFd, SOL_SOCKET, SO_RCVBUF, &kReceiveBuffer, sizeof(kReceiveBuffer));
  if (bind(iFd, reinterpret_cast<sockaddr*>(&sBind.sStorage), sBind.iLength) != 0) {
    *psError = Errno(("bind " + sBindAddress + " port " + std::to_string(iPort)).c_str());
    close(iFd);
    return -1;
  }
  if (sGroup.empty()) return iFd;
  int iJoined = -1;
  if (sBind.sStorage.ss_family == AF_INET) {
    ip_mreq sJoin{};
    sJoin.imr_multiaddr = reinterpret_cast<sockaddr_in*>(&sBind.sStorage)->sin_addr;
    if (inet_pton(AF_INET, m_iFamily == AF_INET ? m_sInterface.c_str() : "0.0.0.0",
                  &sJoin.imr_interface) != 1) {
      sJoin.imr_interface.s_addr = htonl(INADDR_ANY);
    }
    iJoined = setsockopt(iFd, IPPROTO_IP, IP_ADD_MEMBERSHIP, &sJoin, sizeof(sJoin));
  } else {
    ipv6_mreq sJoin{};
    sJoin.ipv6mr_multiaddr = reinterpret_cast<sockaddr_in6*>(&sBind.sStorage)->sin6_addr;
    sJoin.ipv6mr_interface = IsLoopback(m_sInterface) ? if_nametoindex("lo") : 0;
    iJoined = setsockopt(iFd, IPPROTO_IPV6, IPV6_JOIN_GROUP, &sJoin, sizeof(sJoin));
  }
  if (iJoined != 0) {
    *psError = Errno(("join group " + sGroup).c_str());
    close(iFd);
    return -1;
  }
  return iFd;
}

void RtpReceiver::Start() {
  if (m_bRun.exchange(true)) return;
  m_thread = std::thread(&RtpReceiver::Loop, this);
}

void RtpReceiver::Stop() {
  if (m_bRun.exchange(false)) {
    Wake();
    m_thread.join();
  }
  if (m_iFd >= 0) close(m_iFd);
  if (m_iForwardFd >= 0) close(m_iForwardFd);
  if (m_iWakeFd >= 0) close(m_iWakeFd);
  m_iFd = m_iForwardFd = m_iWakeFd = -1;
}

void RtpReceiver::Wake() {
  if (m_iWakeFd < 0) return;
  const uint64_t ulOne = 1;
  if (write(m_iWakeFd, &ulOne, sizeof(ulOne)) < 0) {
    // A full counter still wakes the loop.
  }
}

void RtpReceiver::Follow(const std::string& sGroup, int iPort) {
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_sWantGroup = sGroup;
    m_iWantPort = iPort;
    m_bWant = true;
    ++m_ulWantGeneration;
    m_stats.bFollowing = true;
    m_stats.dFollowed = Now();
    m_stats.sGroup = sGroup;
    m_stats.iPort = iPort;
  }
  Wake();
}

void RtpReceiver::Drop() {
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_bWant = false;
    ++m_ulWantGeneration;
    m_stats.bFollowing = false;
  }
  Wake();
}

RtpStats RtpReceiver::Snapshot() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_stats;
}

int RtpReceiver::StreamState(double dNow) const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return StreamStateAt(m_stats.bFollowing, m_stats.dFollowed, m_stats.dLast, dNow);
}

// Moves the socket to the place last announced (on the loop's thread).
void RtpReceiver::Apply() {
  std::string sGroup;
  int iPort = 0;
  bool bWant = false;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_ulAppliedGeneration == m_ulWantGeneration) return;
    m_ulAppliedGeneration = m_ulWantGeneration;
    sGroup = m_sWantGroup;
    iPort = m_iWantPort;
    bWant = m_bWant;
  }
  if (!bWant) {
    // The prepared unicast socket stays for a later start; a group is left.
    if (!m_sFdGroup.empty() && m_iFd >= 0) {
      close(m_iFd);
      m_iFd = -1;
    }
    return;
  }
  if (m_iFd >= 0 && sGroup == m_sFdGroup && iPort == m_iFdPort) return;
  if (m_iFd >= 0) close(m_iFd);
  std::string sError;
  m_iFd = OpenSocket(sGroup, iPort, &sError);
  m_sFdGroup = sGroup;
  m_iFdPort = iPort;
  m_iLastSeq = -1;
  std::lock_guard<std::mutex> lock(m_mutex);
  m_stats.sError = m_iFd < 0 ? sError : "";
}

void RtpReceiver::Loop() {
  while (m_bRun) {
    Apply();
    pollfd asFds[2] = {{m_iWakeFd, POLLIN, 0}, {m_iFd, POLLIN, 0}};
    const nfds_t uCount = m_iFd >= 0 ? 2 : 1;
    if (poll(asFds, uCount, kPollSliceMs) <= 0) continue;
    if (asFds[0].revents & POLLIN) {
      uint64_t ulCount = 0;
      if (read(m_iWakeFd, &ulCount, sizeof(ulCount)) < 0) {
        // Nothing to read: another wake took it.
      }
    }
    if (uCount == 2 && (asFds[1].revents & POLLIN)) ReceiveAll(m_iFd);
  }
}

void RtpReceiver::ReceiveAll(int iFd) {
  unsigned char aucPacket[65536];
  while (true) {
    const ssize_t lRead = recv(iFd, aucPacket, sizeof(aucPacket), 0);
    if (lRead < 0) return;  // EAGAIN: all taken
    bool bCounting = false;
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      bCounting = m_bWant;
    }
    if (!bCounting) continue;  // before an announcement or after the stream went
    Count(aucPacket, static_cast<size_t>(lRead), Now());
    Forward(aucPacket, static_cast<size_t>(lRead));
  }
}

void RtpReceiver::Count(const unsigned char* pucData, size_t ulLength, double dNow) {
  std::lock_guard<std::mutex> lock(m_mutex);
  // RFC 3550: version 2 in the first two bits, a 12-byte fixed header.
  if (ulLength < 12 || (pucData[0] >> 6) != 2) {
    ++m_stats.ulOther;
    return;
  }
  const size_t ulCsrc = pucData[0] & 0x0Fu;
  size_t ulHeader = 12 + 4 * ulCsrc;
  if ((pucData[0] & 0x10u) != 0 && ulLength >= ulHeader + 4) {  // header extension
    ulHeader += 4 + 4 * ((static_cast<size_t>(pucData[ulHeader + 2]) << 8) | pucData[ulHeader + 3]);
  }
  if (ulHeader > ulLength) {
    ++m_stats.ulOther;
    return;
  }
  if (m_stats.dLast >= 0 && dNow - m_stats.dLast > kSilenceSec) {
    m_stats.asGaps.emplace_back(m_stats.dLast, dNow - m_stats.dLast);
  }
  ++m_stats.ulPackets;
  m_stats.ulBytes += ulLength;
  if (m_stats.dFirst < 0) m_stats.dFirst = dNow;
  m_stats.dLast = dNow;
  m_stats.iPayloadType = pucData[1] & 0x7F;
  if ((pucData[1] & 0x80u) != 0) ++m_stats.ulFrames;
  const uint32_t ulSsrc = (static_cast<uint32_t>(pucData[8]) << 24) |
                          (static_cast<uint32_t>(pucData[9]) << 16) |
                          (static_cast<uint32_t>(pucData[10]) << 8) | pucData[11];
  const int iSeq = (pucData[2] << 8) | pucData[3];
  if (ulSsrc != m_stats.ulSsrc) m_iLastSeq = -1;  // a new source starts its own count
  m_stats.ulSsrc = ulSsrc;
  if (m_iLastSeq >= 0) {
    const int iStep = (iSeq - m_iLastSeq) & 0xFFFF;
    if (iStep > 1 && iStep < 0x8000) m_stats.ulLost += static_cast<uint64_t>(iStep - 1);
    if (iStep == 0 || iStep >= 0x8000) return;  // a repeat or a late packet
  }
  m_iLastSeq = iSeq;
  // H.264 (RFC 6184): keep the parameter sets for the SDP file.
  const unsigned char* pucPayload = pucData + ulHeader;
  const size_t ulPayload = ulLength - ulHeader;
  if (ulPayload < 1) return;
  const int iNal = pucPayload[0] & 0x1F;
  if (iNal == kH264Sps) m_stats.sSps.assign(reinterpret_cast<const char*>(pucPayload), ulPayload);
  if (iNal == kH264Pps) m_stats.sPps.assign(reinterpret_cast<const char*>(pucPayload), ulPayload);
  if (iNal == kH264StapA) {
    size_t ulAt = 1;
    while (ulAt + 2 <= ulPayload) {
      const size_t ulSize = (static_cast<size_t>(pucPayload[ulAt]) << 8) | pucPayload[ulAt + 1];
      ulAt += 2;
      if (ulSize == 0 || ulAt + ulSize > ulPayload) break;
      const int iInner = pucPayload[ulAt] & 0x1F;
      const char* pcUnit = reinterpret_cast<const char*>(pucPayload + ulAt);
      if (iInner == kH264Sps) m_stats.sSps.assign(pcUnit, ulSize);
      if (iInner == kH264Pps) m_stats.sPps.assign(pcUnit, ulSize);
      ulAt += ulSize;
    }
  }
}

void RtpReceiver::Forward(const unsigned char* pucData, size_t ulLength) {
  const int iPort = m_iForwardPort.load();
  if (iPort <= 0) return;
  SocketAddress sTo;
  MakeAddress(m_iFamily == AF_INET6 ? "::1" : "127.0.0.1", iPort, &sTo);
  if (m_iForwardFd < 0) {
    m_iForwardFd = socket(sTo.sStorage.ss_family, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (m_iForwardFd < 0) return;
  }
  // Nobody listening is no error of ours: the datagram is dropped.
  sendto(m_iForwardFd, pucData, ulLength, 0, reinterpret_cast<sockaddr*>(&sTo.sStorage),
         sTo.iLength);
}

}  // namespace camreq
