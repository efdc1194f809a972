// The receiving end of the simulator's RTP, written apart from it: a UDP
// socket on loopback (or a multicast group joined on the loopback
// interface), a reading of the RTP header by hand, and the reassembly of
// H.264 access units from single NAL unit and FU-A packets.
#ifndef CAMSIM_TEST_RTP_RECEIVER_H
#define CAMSIM_TEST_RTP_RECEIVER_H

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "TestClient.h"

namespace camsim_test {

struct RtpPacket {
  int version = 0;
  bool padding = false;
  bool extension = false;
  int csrcCount = 0;
  bool marker = false;
  int payloadType = -1;
  uint16_t sequence = 0;
  uint32_t timestamp = 0;
  uint32_t ssrc = 0;
  std::string payload;
  std::string source;  // address of the sender, without the port
  std::chrono::steady_clock::time_point arrived;
};

// The fixed header and what follows it; false for fewer than 12 bytes.
bool ParseRtp(const std::string& datagram, RtpPacket* packet);

class UdpReceiver {
 public:
  UdpReceiver() = default;
  ~UdpReceiver();
  UdpReceiver(const UdpReceiver&) = delete;
  UdpReceiver& operator=(const UdpReceiver&) = delete;

  // Binds a numeric address ("127.0.0.1", "::1") on an ephemeral port.
  bool Open(const std::string& address);
  // Binds an IPv4 group on an ephemeral port and joins it on the loopback
  // interface.
  bool JoinOnLoopback(const std::string& group);
  uint16_t Port() const { return port_; }
  // "127.0.0.1:5000", "[::1]:5000", as the device names destinations.
  std::string Destination(const std::string& address) const;

  // The next packet, or false when none came within the timeout.
  bool Next(RtpPacket* packet, milliseconds timeout);
  // Packets until one with the marker bit has come frames times (video:
  // that many frames), or the deadline passed.
  std::vector<RtpPacket> Frames(size_t frames, milliseconds timeout = kDeadline);
  // Packets until count came or the deadline passed.
  std::vector<RtpPacket> Packets(size_t count, milliseconds timeout = kDeadline);
  // Reads and counts packets until none came for quiet, within timeout;
  // false when the packets never stopped.
  bool Quiet(milliseconds quiet, milliseconds timeout, size_t* drained = nullptr);

 private:
  int fd_ = -1;
  uint16_t port_ = 0;
};

// RFC 6184 depacketization: single NAL unit packets and FU-A fragments,
// grouped into access units by the marker bit.
class H264Assembler {
 public:
  // False (with error()) on a packet that breaks the rules.
  bool Add(const RtpPacket& packet);
  const std::vector<std::vector<std::string>>& AccessUnits() const { return units_; }
  const std::string& error() const { return error_; }
  size_t FragmentedUnits() const { return fragmented_; }
  size_t SingleUnits() const { return single_; }

 private:
  bool Fail(const std::string& why);

  std::vector<std::vector<std::string>> units_;
  std::vector<std::string> current_;
  std::string fragment_;
  bool inFragment_ = false;
  bool haveLast_ = false;
  uint16_t lastSequence_ = 0;
  size_t fragmented_ = 0;
  size_t single_ = 0;
  std::string error_;
};

// NAL unit type of a unit (the low five bits of its first byte).
int NalType(const std::string& nal);

// A media file of tools/camsim/media, read whole.
std::string MediaFile(const std::string& name);
// The NAL units of an Annex-B file, split at its start codes.
std::vector<std::string> AnnexBUnits(const std::string& stream);

}  // namespace camsim_test

#endif
