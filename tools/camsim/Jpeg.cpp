#include "Jpeg.h"

#include <cstdint>
#include <cstdlib>

namespace camsim {

namespace {

// The usual luminance DC table: code lengths 1..16 and the categories.
constexpr uint8_t kDcBits[16] = {0, 1, 5, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0};
constexpr uint8_t kDcValues[12] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
// A flat picture has no AC coefficient: the table only needs end-of-block
// (code "0") and one more symbol so that no code is all ones.
constexpr uint8_t kAcBits[16] = {1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
constexpr uint8_t kAcValues[2] = {0x00, 0x01};

struct Code {
  uint32_t bits;
  int length;
};

// Canonical Huffman code of the DC category, from the table above.
Code DcCode(int category) {
  uint32_t code = 0;
  int index = 0;
  for (int length = 1; length <= 16; ++length) {
    for (int n = 0; n < kDcBits[length - 1]; ++n, ++index, ++code) {
      if (kDcValues[index] == category) return {code, length};
    }
    code <<= 1;
  }
  return {0, 0};
}

class BitWriter {
 public:
  explicit BitWriter(std::string* out) : out_(out) {}
  void Put(uint32_t bits, int length) {
    for (int i = length - 1; i >= 0; --i) PutBit((bits >> i) & 1);
  }
  void Flush() {
    while (used_ != 0) PutBit(1);
  }

 private:
  void PutBit(uint32_t bit) {
    current_ = static_cast<uint8_t>((current_ << 1) | bit);
    if (++used_ == 8) {
      out_->push_back(static_cast<char>(current_));
      if (current_ == 0xFF) out_->push_back('\0');
      used_ = 0;
      current_ = 0;
    }
  }
  std::string* out_;
  uint8_t current_ = 0;
  int used_ = 0;
};

void PutWord(std::string* out, int value) {
  out->push_back(static_cast<char>((value >> 8) & 0xFF));
  out->push_back(static_cast<char>(value & 0xFF));
}

void PutBytes(std::string* out, const uint8_t* data, size_t size) {
  out->append(reinterpret_cast<const char*>(data), size);
}

void PutHeaders(std::string* out, int width, int height) {
  static const uint8_t kStart[] = {0xFF, 0xD8, 0xFF, 0xE0, 0x00, 0x10, 'J',  'F',  'I',  'F',
                                   0x00, 0x01, 0x01, 0x00, 0x00, 0x01, 0x00, 0x01, 0x00, 0x00};
  PutBytes(out, kStart, sizeof kStart);
  static const uint8_t kQuantHead[] = {0xFF, 0xDB, 0x00, 0x43, 0x00};
  PutBytes(out, kQuantHead, sizeof kQuantHead);
  out->append(64, '\x01');  // step 1 for every coefficient
  static const uint8_t kFrameHead[] = {0xFF, 0xC0, 0x00, 0x0B, 0x08};
  PutBytes(out, kFrameHead, sizeof kFrameHead);
  PutWord(out, height);
  PutWord(out, width);
  static const uint8_t kComponent[] = {0x01, 0x01, 0x11, 0x00};
  PutBytes(out, kComponent, sizeof kComponent);
  static const uint8_t kDcHead[] = {0xFF, 0xC4, 0x00, 2 + 1 + 16 + sizeof kDcValues, 0x00};
  PutBytes(out, kDcHead, sizeof kDcHead);
  PutBytes(out, kDcBits, sizeof kDcBits);
  PutBytes(out, kDcValues, sizeof kDcValues);
  static const uint8_t kAcHead[] = {0xFF, 0xC4, 0x00, 2 + 1 + 16 + sizeof kAcValues, 0x10};
  PutBytes(out, kAcHead, sizeof kAcHead);
  PutBytes(out, kAcBits, sizeof kAcBits);
  PutBytes(out, kAcValues, sizeof kAcValues);
  static const uint8_t kScanHead[] = {0xFF, 0xDA, 0x00, 0x08, 0x01, 0x01, 0x00, 0x00, 0x3F, 0x00};
  PutBytes(out, kScanHead, sizeof kScanHead);
}

struct ResolutionSize {
  const char* resolution;
  PictureSize size;
};

constexpr ResolutionSize kResolutions[] = {
    {"320", {320, 240}},
    {"640", {640, 480}},
    {"768", {768, 576}},
    {"1280", {1280, 960}},
};

constexpr PictureSize kDefaultSize = {16, 16};

}  // namespace

std::string MakeGrayJpeg(int width, int height, int gray) {
  std::string out;
  PutHeaders(&out, width, height);
  // The DC of a flat 8x8 block is 8 * (level - 128); every block after the
  // first differs by zero.
  int dc = 8 * (gray - 128);
  int magnitude = std::abs(dc);
  int category = 0;
  while ((1 << category) <= magnitude) ++category;
  uint32_t extra =
      dc >= 0 ? static_cast<uint32_t>(dc) : static_cast<uint32_t>(dc + (1 << category) - 1);
  BitWriter writer(&out);
  long blocks = static_cast<long>((width + 7) / 8) * ((height + 7) / 8);
  Code end = {0, 1};
  for (long block = 0; block < blocks; ++block) {
    if (block == 0) {
      Code first = DcCode(category);
      writer.Put(first.bits, first.length);
      writer.Put(extra, category);
    } else {
      Code zero = DcCode(0);
      writer.Put(zero.bits, zero.length);
    }
    writer.Put(end.bits, end.length);
  }
  writer.Flush();
  out.push_back(static_cast<char>(0xFF));
  out.push_back(static_cast<char>(0xD9));
  return out;
}

PictureSize SizeForResolution(const std::string& resolution) {
  for (const ResolutionSize& entry : kResolutions) {
    if (resolution == entry.resolution) return entry.size;
  }
  return kDefaultSize;
}

}  // namespace camsim
