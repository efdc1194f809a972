#include "Media.h"

#include <cstdint>

namespace camsim {

// The clips, from the source that Embed.cmake makes of tools/camsim/media.
extern const unsigned char kClipH264[];
extern const size_t kClipH264Size;
extern const unsigned char kClipMpeg4[];
extern const size_t kClipMpeg4Size;
extern const unsigned char kToneG726[];
extern const size_t kToneG726Size;

namespace {

constexpr int kNalSei = 6;
constexpr int kNalSps = 7;
constexpr int kNalPps = 8;
constexpr int kNalAud = 9;
constexpr int kNalIdr = 5;
constexpr int kNalSlice = 1;

constexpr unsigned char kVopStartCode = 0xB6;
constexpr unsigned char kGovStartCode = 0xB3;
constexpr unsigned char kVisualObjectSequenceStartCode = 0xB0;
constexpr unsigned char kVolStartCodeFirst = 0x20;  // video_object_layer_start_code 0x20..0x2F
constexpr unsigned char kVolStartCodeLast = 0x2F;

constexpr int kVideoTicksPerSecond = 25;
// G.726 at 32 kbit/s sent in 20 ms blocks: 160 samples of 4 bits.
constexpr int kAudioTicksPerSecond = 50;
constexpr size_t kAudioBlock = 80;

std::string Bytes(const unsigned char* data, size_t size) {
  return std::string(reinterpret_cast<const char*>(data), size);
}

int NalType(const std::string& nal) {
  return nal.empty() ? -1 : static_cast<uint8_t>(nal[0]) & 0x1F;
}

bool IsSlice(int type) {
  return type == kNalSlice || type == kNalIdr;
}

// first_mb_in_slice is the first field of a slice header; ue(v) 0 is the
// single bit 1, so a slice that opens a picture has the top bit set.
bool OpensPicture(const std::string& nal) {
  return nal.size() > 1 && (static_cast<uint8_t>(nal[1]) & 0x80) != 0;
}

// Positions of the "00 00 01" start codes in an elementary stream.
std::vector<size_t> StartCodes(const std::string& stream) {
  std::vector<size_t> found;
  for (size_t at = 0; at + 3 <= stream.size(); ++at) {
    if (stream[at] == 0 && stream[at + 1] == 0 && stream[at + 2] == 1) {
      found.push_back(at);
      at += 2;
    }
  }
  return found;
}

std::vector<MediaFrame> AudioBlocks(const std::string& sound) {
  std::vector<MediaFrame> blocks;
  for (size_t at = 0; at + kAudioBlock <= sound.size(); at += kAudioBlock) {
    MediaFrame block;
    block.units.push_back(sound.substr(at, kAudioBlock));
    block.key = true;
    blocks.push_back(block);
  }
  return blocks;
}

MediaClip MakeClip(MediaCodec codec) {
  MediaClip clip;
  switch (codec) {
    case MediaCodec::kH264:
      clip.frames = H264AccessUnits(Bytes(kClipH264, kClipH264Size));
      clip.ticksPerSecond = kVideoTicksPerSecond;
      break;
    case MediaCodec::kMpeg4:
      clip.frames = Mpeg4Frames(Bytes(kClipMpeg4, kClipMpeg4Size));
      clip.ticksPerSecond = kVideoTicksPerSecond;
      break;
    case MediaCodec::kG726:
      clip.frames = AudioBlocks(Bytes(kToneG726, kToneG726Size));
      clip.ticksPerSecond = kAudioTicksPerSecond;
      break;
  }
  // The clips are part of the library; one that does not parse is a broken build.
  if (clip.frames.empty()) clip.frames.push_back(MediaFrame{{std::string(1, '\0')}, true});
  return clip;
}

}  // namespace

const MediaClip& ClipOf(MediaCodec codec) {
  static const MediaClip h264 = MakeClip(MediaCodec::kH264);
  static const MediaClip mpeg4 = MakeClip(MediaCodec::kMpeg4);
  static const MediaClip g726 = MakeClip(MediaCodec::kG726);
  switch (codec) {
    case MediaCodec::kH264:
      return h264;
    case MediaCodec::kMpeg4:
      return mpeg4;
    case MediaCodec::kG726:
      break;
  }
  return g726;
}

std::vector<std::string> SplitAnnexB(const std::string& stream) {
  std::vector<std::string> units;
  std::vector<size_t> codes = StartCodes(stream);
  for (size_t i = 0; i < codes.size(); ++i) {
    size_t begin = codes[i] + 3;
    size_t end = i + 1 < codes.size() ? codes[i + 1] : stream.size();
    // A NAL unit never ends in a zero byte: those belong to the next start code.
    while (end > begin && stream[end - 1] == 0) --end;
    if (end > begin) units.push_back(stream.substr(begin, end - begin));
  }
  return units;
}

std::vector<MediaFrame> H264AccessUnits(const std::string& stream) {
  std::vector<MediaFrame> frames;
  MediaFrame current;
  bool hasPicture = false;
  std::string sps;
  std::string pps;
  auto finish = [&] {
    if (hasPicture) {
      bool hasSps = false;
      bool hasPps = false;
      for (const std::string& nal : current.units) {
        hasSps = hasSps || NalType(nal) == kNalSps;
        hasPps = hasPps || NalType(nal) == kNalPps;
      }
      if (current.key && !hasPps && !pps.empty()) current.units.insert(current.units.begin(), pps);
      if (current.key && !hasSps && !sps.empty()) current.units.insert(current.units.begin(), sps);
      frames.push_back(current);
    }
    current = MediaFrame();
    hasPicture = false;
  };
  for (const std::string& nal : SplitAnnexB(stream)) {
    int type = NalType(nal);
    bool opensUnit = type == kNalAud || type == kNalSps || type == kNalPps || type == kNalSei ||
                     (IsSlice(type) && OpensPicture(nal));
    if (hasPicture && opensUnit) finish();
    if (type == kNalSps) sps = nal;
    if (type == kNalPps) pps = nal;
    current.units.push_back(nal);
    if (IsSlice(type)) hasPicture = true;
    if (type == kNalIdr) current.key = true;
  }
  finish();
  return frames;
}

std::vector<MediaFrame> Mpeg4Frames(const std::string& stream) {
  std::vector<MediaFrame> frames;
  std::vector<size_t> codes = StartCodes(stream);
  std::string config;
  size_t frameBegin = codes.empty() ? stream.size() : codes[0];
  bool configHere = false;  // the frame being gathered carries the headers
  for (size_t i = 0; i < codes.size(); ++i) {
    size_t codeAt = codes[i] + 3;
    auto code = codeAt < stream.size() ? static_cast<uint8_t>(stream[codeAt]) : 0;
    if (code == kVisualObjectSequenceStartCode ||
        (code >= kVolStartCodeFirst && code <= kVolStartCodeLast)) {
      configHere = true;
    }
    if (config.empty() && configHere && (code == kVopStartCode || code == kGovStartCode)) {
      config = stream.substr(frameBegin, codes[i] - frameBegin);
    }
    if (code != kVopStartCode) continue;
    size_t end = i + 1 < codes.size() ? codes[i + 1] : stream.size();
    MediaFrame frame;
    std::string vop = stream.substr(frameBegin, end - frameBegin);
    // vop_coding_type, the first two bits after the start code: 00 is an I-VOP.
    frame.key = codeAt + 1 < stream.size() && (static_cast<uint8_t>(stream[codeAt + 1]) >> 6) == 0;
    if (frame.key && !configHere) vop = config + vop;
    frame.units.push_back(vop);
    frames.push_back(frame);
    frameBegin = end;
    configHere = false;
  }
  return frames;
}

}  // namespace camsim
