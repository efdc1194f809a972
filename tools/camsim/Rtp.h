// RTP as a device sends it (RFC 3550): the fixed header, the payload type
// and clock of each codec, and the cutting of one frame into packets
// (H.264 by RFC 6184, MPEG-4 Visual by RFC 3016, G.726 by RFC 3551).
#ifndef CAMSIM_RTP_H
#define CAMSIM_RTP_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Media.h"

namespace camsim {

struct RtpCodecInfo {
  const char* name;      // "h264", "mpeg4", "g726"
  const char* encoding;  // the rtpmap encoding name: "H264", "MP4V-ES", "G726-32"
  const char* media;     // the SDP media: "video" or "audio"
  int payloadType;       // 96, 96, 97 (dynamic)
  int clockRate;         // 90000, 90000, 8000
};

const RtpCodecInfo& CodecInfo(MediaCodec codec);

constexpr size_t kRtpHeaderBytes = 12;
// Largest payload of one packet; larger NAL units go as FU-A fragments,
// larger VOPs in several packets.
constexpr size_t kMaxRtpPayload = 1400;

struct RtpPayload {
  std::string bytes;
  bool marker = false;  // the last packet of a frame (video) / the first of a talk-spurt (audio)
};

// The payloads that carry one frame, in order. Video: the marker is set on
// the last one. Audio: the marker is left to the caller.
std::vector<RtpPayload> Packetize(MediaCodec codec, const MediaFrame& frame);

// The 12 bytes of the fixed header: version 2, no padding, extension or
// contributing sources.
std::string RtpHeader(bool marker, int payloadType, uint16_t sequence, uint32_t timestamp,
                      uint32_t ssrc);

}  // namespace camsim

#endif
