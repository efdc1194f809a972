// Feeds arbitrary bytes to the multipart reader: the first line is the
// push's Content-Type, the rest its body, arriving in small pieces into a
// small receive buffer.
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

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
  // A receive buffer of a few bytes moves and grows at almost every read.
  input.set_read_bytes(size / 13 % 64 + 1);
  MultipartReader reader(boundary);
  Deadline deadline = Clock::now() + std::chrono::seconds(5);
  const std::string_view body(reinterpret_cast<const char*>(data + offset), size - offset);
  size_t total = 0;
  size_t from = 0;
  for (int part = 0; part < 256; ++part) {
    if (reader.next_part(input, deadline) != 0) break;
    total += reader.data().size();
    // Parts never hold more than what arrived.
    if (total > size) std::abort();
    // A part is bytes that came, in their order, whatever the buffer did
    // with them meanwhile.
    const std::string_view bytes(reinterpret_cast<const char*>(reader.data().data()),
                                 reader.data().size());
    size_t found = body.find(bytes, from);
    if (found == std::string_view::npos) std::abort();
    from = found + bytes.size();
  }
  return 0;
}
