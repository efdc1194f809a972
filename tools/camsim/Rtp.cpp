#include "Rtp.h"

#include <algorithm>
#include <utility>

namespace camsim {

namespace {

constexpr RtpCodecInfo kH264Info = {"h264", "H264", "video", 96, 90000};
constexpr RtpCodecInfo kMpeg4Info = {"mpeg4", "MP4V-ES", "video", 96, 90000};
constexpr RtpCodecInfo kG726Info = {"g726", "G726-32", "audio", 97, 8000};

constexpr uint8_t kFuA = 28;
constexpr uint8_t kFuStart = 0x80;
constexpr uint8_t kFuEnd = 0x40;

// One NAL unit: as it is when it fits, else FU-A fragments of its payload
// behind the indicator (F and NRI of the unit, type 28) and the FU header
// (start, end, the unit's type).
void PacketizeNal(const std::string& nal, std::vector<RtpPayload>* payloads) {
  if (nal.size() <= kMaxRtpPayload) {
    payloads->push_back(RtpPayload{nal, false});
    return;
  }
  auto header = static_cast<uint8_t>(nal[0]);
  char indicator = static_cast<char>((header & 0xE0) | kFuA);
  uint8_t type = header & 0x1F;
  const size_t room = kMaxRtpPayload - 2;
  for (size_t at = 1; at < nal.size(); at += room) {
    size_t size = std::min(room, nal.size() - at);
    uint8_t fu = type;
    if (at == 1) fu |= kFuStart;
    if (at + size == nal.size()) fu |= kFuEnd;
    RtpPayload payload;
    payload.bytes.reserve(size + 2);
    payload.bytes += indicator;
    payload.bytes += static_cast<char>(fu);
    payload.bytes.append(nal, at, size);
    payloads->push_back(std::move(payload));
  }
}

// A VOP with its headers, in pieces of at most the largest payload.
void PacketizeWhole(const std::string& unit, std::vector<RtpPayload>* payloads) {
  for (size_t at = 0; at < unit.size(); at += kMaxRtpPayload) {
    payloads->push_back(RtpPayload{unit.substr(at, kMaxRtpPayload), false});
  }
}

}  // namespace

const RtpCodecInfo& CodecInfo(MediaCodec codec) {
  switch (codec) {
    case MediaCodec::kH264:
      return kH264Info;
    case MediaCodec::kMpeg4:
      return kMpeg4Info;
    case MediaCodec::kG726:
      break;
  }
  return kG726Info;
}

std::vector<RtpPayload> Packetize(MediaCodec codec, const MediaFrame& frame) {
  std::vector<RtpPayload> payloads;
  for (const std::string& unit : frame.units) {
    if (codec == MediaCodec::kH264) {
      PacketizeNal(unit, &payloads);
    } else {
      PacketizeWhole(unit, &payloads);
    }
  }
  if (codec != MediaCodec::kG726 && !payloads.empty()) payloads.back().marker = true;
  return payloads;
}

std::string RtpHeader(bool marker, int payloadType, uint16_t sequence, uint32_t timestamp,
                      uint32_t ssrc) {
  std::string header(kRtpHeaderBytes, '\0');
  header[0] = static_cast<char>(0x80);  // version 2
  header[1] = static_cast<char>((marker ? 0x80 : 0) | (payloadType & 0x7F));
  header[2] = static_cast<char>(sequence >> 8);
  header[3] = static_cast<char>(sequence & 0xFF);
  for (int i = 0; i < 4; ++i) {
    header[4 + i] = static_cast<char>((timestamp >> (24 - 8 * i)) & 0xFF);
    header[8 + i] = static_cast<char>((ssrc >> (24 - 8 * i)) & 0xFF);
  }
  return header;
}

}  // namespace camsim
