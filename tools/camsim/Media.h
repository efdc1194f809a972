// The media a device sends over RTP: short clips kept in the library
// (tools/camsim/media, made once by make-media.sh), cut into the frames
// that go out one per tick and looped for as long as a stream runs.
#ifndef CAMSIM_MEDIA_H
#define CAMSIM_MEDIA_H

#include <cstddef>
#include <string>
#include <vector>

namespace camsim {

enum class MediaCodec { kH264, kMpeg4, kG726 };

// One frame of a clip: what one tick of a stream sends.
struct MediaFrame {
  // H.264: the NAL units of one access unit, without start codes.
  // MPEG-4: one unit, a VOP with the headers in front of it.
  // G.726: one unit, 20 ms of sound (80 bytes).
  std::vector<std::string> units;
  bool key = false;  // an IDR access unit or an I-VOP (audio: every block)
};

struct MediaClip {
  std::vector<MediaFrame> frames;  // never empty
  int ticksPerSecond = 25;         // frames a second
};

// The clips, parsed once on first use.
const MediaClip& ClipOf(MediaCodec codec);

// The NAL units of an Annex-B byte stream, without start codes and the
// zero bytes before them.
std::vector<std::string> SplitAnnexB(const std::string& stream);

// An H.264 byte stream grouped into access units. An IDR access unit
// without SPS and PPS of its own gets the latest ones put in front.
std::vector<MediaFrame> H264AccessUnits(const std::string& stream);

// An MPEG-4 Visual elementary stream cut after each VOP; the headers up to
// the first VOP (visual object sequence, visual object, video object layer)
// are put in front of every I-VOP that lacks them.
std::vector<MediaFrame> Mpeg4Frames(const std::string& stream);

}  // namespace camsim

#endif
