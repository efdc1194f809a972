#include "LoginTransform.h"

#include <cstdint>

namespace camsim {

namespace {

constexpr size_t kPositions = 32;
constexpr char kHexDigits[] = "0123456789abcdef";

// Both strings are read as C strings by the requester: a NUL ends them.
std::string UpToNul(const std::string& text) {
  return text.substr(0, text.find('\0'));
}

}  // namespace

std::string LoginTransform(const std::string& key, const std::string& data) {
  const std::string mixer = UpToNul(key);
  const std::string credential = UpToNul(data);
  std::string hex;
  uint8_t previous = 0;
  for (size_t position = 0; position < kPositions; ++position) {
    uint8_t byte = position < credential.size() ? static_cast<uint8_t>(credential[position]) : 0;
    if (position > 0) byte ^= previous;
    for (char keyChar : mixer) {
      uint8_t k = static_cast<uint8_t>(keyChar);
      byte = static_cast<uint8_t>((byte ^ k) - k);
    }
    previous = byte;
    hex += kHexDigits[byte >> 4];
    hex += kHexDigits[byte & 0x0F];
  }
  return hex;
}

}  // namespace camsim
