#include "CamKelCrypt.h"

#include <cstddef>
#include <cstdint>

namespace cgi {

char* KelEncrypt(const char* pcKey, const char* pcData, char* pcOut) {
  static const char kHex[] = "0123456789abcdef";
  const char* key = pcKey != nullptr ? pcKey : "";
  const char* data = pcData != nullptr ? pcData : "";
  bool dataEnded = false;
  uint8_t prev = 0;
  for (size_t i = 0; i < static_cast<size_t>(kKelCryptBytes); ++i) {
    uint8_t c = 0;
    if (!dataEnded) {
      c = static_cast<uint8_t>(data[i]);
      dataEnded = (c == 0);
    }
    // Each position is chained with the previous output byte, so one changed
    // character changes every later pair.
    if (i > 0) c ^= prev;
    for (const char* k = key; *k != '\0'; ++k) {
      const uint8_t kb = static_cast<uint8_t>(*k);
      c = static_cast<uint8_t>((c ^ kb) - kb);
    }
    prev = c;
    pcOut[2 * i] = kHex[prev >> 4];
    pcOut[2 * i + 1] = kHex[prev & 0x0F];
  }
  pcOut[kKelCryptTextSize - 1] = '\0';
  return pcOut;
}

}  // namespace cgi
