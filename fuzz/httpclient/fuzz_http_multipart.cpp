// Feeds arbitrary bytes to the multipart reader: the first line is the
// push's Content-Type, the rest its body, arriving in small pieces.
#include <cstdlib>
#include <cstring>
#include <string>

#include "kxhttp_internal.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace kxhttp;
  const uint8_t* newline = static_cast<const uint8_t*>(std::memchr(data, '\n', size));
  if (newline == nullptr) return 0;
  std::string contentType(reinterpret_cast<const char*>(data), newline - data);
  std::string boundary = boundary_from_content_type(contentType);
  if (boundary.empty()) return 0;
  size_t offset = static_cast<size_t>(newline - data) + 1;
  MemorySource source(data + offset, size - offset, size % 13 + 1);
  InputBuffer input;
  input.source = &source;
  MultipartReader reader(boundary);
  Deadline deadline = Clock::now() + std::chrono::seconds(5);
  size_t total = 0;
  for (int part = 0; part < 256; ++part) {
    if (reader.next_part(input, deadline) != 0) break;
    total += reader.data().size();
    // Parts never hold more than what arrived.
    if (total > size) std::abort();
  }
  return 0;
}
