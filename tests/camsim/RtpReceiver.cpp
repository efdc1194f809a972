#include "RtpReceiver.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <sstream>

namespace camsim_test {

namespace {

constexpr int kReceiveBuffer = 4 << 20;
constexpr uint8_t kFuA = 28;

int RemainingMs(std::chrono::steady_clock::time_point deadline) {
  auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now()).count();
  return left < 0 ? 0 : static_cast<int>(left);
}

uint32_t Word(const std::string& bytes, size_t at) {
  uint32_t value = 0;
  for (size_t i = 0; i < 4; ++i) value = (value << 8) | static_cast<uint8_t>(bytes[at + i]);
  return value;
}

}  // namespace

bool ParseRtp(const std::string& datagram, RtpPacket* packet) {
  if (datagram.size() < 12) return false;
  auto first = static_cast<uint8_t>(datagram[0]);
  auto second = static_cast<uint8_t>(datagram[1]);
  packet->version = first >> 6;
  packet->padding = (first & 0x20) != 0;
  packet->extension = (first & 0x10) != 0;
  packet->csrcCount = first & 0x0F;
  packet->marker = (second & 0x80) != 0;
  packet->payloadType = second & 0x7F;
  packet->sequence = static_cast<uint16_t>((static_cast<uint8_t>(datagram[2]) << 8) |
                                           static_cast<uint8_t>(datagram[3]));
  packet->timestamp = Word(datagram, 4);
  packet->ssrc = Word(datagram, 8);
  size_t header = 12 + 4 * static_cast<size_t>(packet->csrcCount);
  packet->payload = datagram.size() > header ? datagram.substr(header) : "";
  return true;
}

UdpReceiver::~UdpReceiver() {
  if (fd_ >= 0) close(fd_);
}

bool UdpReceiver::Open(const std::string& address) {
  sockaddr_storage storage{};
  socklen_t length = 0;
  auto* v4 = reinterpret_cast<sockaddr_in*>(&storage);
  auto* v6 = reinterpret_cast<sockaddr_in6*>(&storage);
  if (inet_pton(AF_INET, address.c_str(), &v4->sin_addr) == 1) {
    v4->sin_family = AF_INET;
    length = sizeof *v4;
  } else if (inet_pton(AF_INET6, address.c_str(), &v6->sin6_addr) == 1) {
    v6->sin6_family = AF_INET6;
    length = sizeof *v6;
  } else {
    return false;
  }
  fd_ = socket(storage.ss_family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (fd_ < 0) return false;
  setsockopt(fd_, SOL_SOCKET, SO_RCVBUF, &kReceiveBuffer, sizeof kReceiveBuffer);
  if (bind(fd_, reinterpret_cast<sockaddr*>(&storage), length) != 0) return false;
  length = sizeof storage;
  if (getsockname(fd_, reinterpret_cast<sockaddr*>(&storage), &length) != 0) return false;
  port_ = ntohs(storage.ss_family == AF_INET6 ? v6->sin6_port : v4->sin_port);
  return true;
}

bool UdpReceiver::JoinOnLoopback(const std::string& group) {
  if (!Open(group)) return false;
  ip_mreq request{};
  inet_pton(AF_INET, group.c_str(), &request.imr_multiaddr);
  request.imr_interface.s_addr = htonl(INADDR_LOOPBACK);
  return setsockopt(fd_, IPPROTO_IP, IP_ADD_MEMBERSHIP, &request, sizeof request) == 0;
}

std::string UdpReceiver::Destination(const std::string& address) const {
  bool v6 = address.find(':') != std::string::npos;
  return (v6 ? "[" + address + "]" : address) + ":" + std::to_string(port_);
}

bool UdpReceiver::Next(RtpPacket* packet, milliseconds timeout) {
  auto deadline = std::chrono::steady_clock::now() + timeout;
  for (;;) {
    pollfd wait = {fd_, POLLIN, 0};
    if (poll(&wait, 1, RemainingMs(deadline)) <= 0) return false;
    char buffer[65536];
    sockaddr_storage from{};
    socklen_t length = sizeof from;
    ssize_t got =
        recvfrom(fd_, buffer, sizeof buffer, 0, reinterpret_cast<sockaddr*>(&from), &length);
    if (got < 0) continue;
    if (!ParseRtp(std::string(buffer, static_cast<size_t>(got)), packet)) continue;
    char text[INET6_ADDRSTRLEN] = "";
    if (from.ss_family == AF_INET) {
      inet_ntop(AF_INET, &reinterpret_cast<sockaddr_in*>(&from)->sin_addr, text, sizeof text);
    } else {
      inet_ntop(AF_INET6, &reinterpret_cast<sockaddr_in6*>(&from)->sin6_addr, text, sizeof text);
    }
    packet->source = text;
    packet->arrived = std::chrono::steady_clock::now();
    return true;
  }
}

std::vector<RtpPacket> UdpReceiver::Frames(size_t frames, milliseconds timeout) {
  auto deadline = std::chrono::steady_clock::now() + timeout;
  std::vector<RtpPacket> packets;
  size_t seen = 0;
  RtpPacket packet;
  while (seen < frames && Next(&packet, milliseconds(RemainingMs(deadline)))) {
    packets.push_back(packet);
    if (packet.marker) ++seen;
  }
  return packets;
}

std::vector<RtpPacket> UdpReceiver::Packets(size_t count, milliseconds timeout) {
  auto deadline = std::chrono::steady_clock::now() + timeout;
  std::vector<RtpPacket> packets;
  RtpPacket packet;
  while (packets.size() < count && Next(&packet, milliseconds(RemainingMs(deadline)))) {
    packets.push_back(packet);
  }
  return packets;
}

bool UdpReceiver::Quiet(milliseconds quiet, milliseconds timeout, size_t* drained) {
  auto deadline = std::chrono::steady_clock::now() + timeout;
  size_t count = 0;
  RtpPacket packet;
  bool calm = false;
  while (std::chrono::steady_clock::now() < deadline) {
    if (!Next(&packet, quiet)) {
      calm = true;
      break;
    }
    ++count;
  }
  if (drained != nullptr) *drained = count;
  return calm;
}

bool H264Assembler::Fail(const std::string& why) {
  if (error_.empty()) error_ = why;
  return false;
}

bool H264Assembler::Add(const RtpPacket& packet) {
  if (haveLast_ && static_cast<uint16_t>(lastSequence_ + 1) != packet.sequence) {
    return Fail("a packet is missing before sequence " + std::to_string(packet.sequence));
  }
  haveLast_ = true;
  lastSequence_ = packet.sequence;
  const std::string& payload = packet.payload;
  if (payload.empty()) return Fail("empty payload");
  auto indicator = static_cast<uint8_t>(payload[0]);
  if ((indicator & 0x80) != 0) return Fail("forbidden bit set");
  uint8_t type = indicator & 0x1F;
  if (type == kFuA) {
    if (payload.size() < 3) return Fail("short FU-A");
    auto header = static_cast<uint8_t>(payload[1]);
    bool start = (header & 0x80) != 0;
    bool end = (header & 0x40) != 0;
    if ((header & 0x20) != 0) return Fail("FU reserved bit set");
    if (start == inFragment_) return Fail(start ? "FU start inside a unit" : "FU without start");
    if (start) {
      fragment_.assign(1, static_cast<char>((indicator & 0xE0) | (header & 0x1F)));
      inFragment_ = true;
    } else if (static_cast<uint8_t>(fragment_[0] & 0x1F) != (header & 0x1F)) {
      return Fail("FU type changed inside a unit");
    }
    fragment_.append(payload, 2, std::string::npos);
    if (end) {
      current_.push_back(fragment_);
      inFragment_ = false;
      ++fragmented_;
    }
  } else if (type >= 1 && type <= 23) {
    if (inFragment_) return Fail("single unit inside a fragmented one");
    current_.push_back(payload);
    ++single_;
  } else {
    return Fail("unexpected packet type " + std::to_string(type));
  }
  if (packet.marker) {
    if (inFragment_) return Fail("marker inside a fragmented unit");
    units_.push_back(current_);
    current_.clear();
  }
  return true;
}

int NalType(const std::string& nal) {
  return nal.empty() ? -1 : static_cast<uint8_t>(nal[0]) & 0x1F;
}

std::string MediaFile(const std::string& name) {
  std::ifstream file(std::string(CAMSIM_MEDIA_DIR) + "/" + name, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

std::vector<std::string> AnnexBUnits(const std::string& stream) {
  std::vector<std::string> units;
  const std::string mark("\0\0\1", 3);
  size_t at = stream.find(mark);
  while (at != std::string::npos) {
    size_t begin = at + 3;
    size_t next = stream.find(mark, begin);
    size_t end = next == std::string::npos ? stream.size() : next;
    while (end > begin && stream[end - 1] == '\0') --end;
    units.push_back(stream.substr(begin, end - begin));
    at = next;
  }
  return units;
}

}  // namespace camsim_test
