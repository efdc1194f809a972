// Parts of a multipart/x-mixed-replace body (JPEG server push).
#include <algorithm>
#include <cstring>

#include "kxhttp_internal.h"

namespace kxhttp {
namespace {

// A part larger than this is a broken stream, not a picture.
constexpr uint64_t kMaxPartBytes = 16 * 1024 * 1024;
constexpr char kBoundaryKey[] = "boundary=";

std::string lower_copy(const std::string& text) {
  std::string result = text;
  std::transform(result.begin(), result.end(), result.begin(), [](char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return result;
}

// Removes the empty lines that separate a part's body from the next
// delimiter. False while only line ends are buffered.
bool skip_line_ends(std::string& pending) {
  size_t skip = pending.find_first_not_of("\r\n");
  if (skip == std::string::npos) {
    pending.clear();
    return false;
  }
  pending.erase(0, skip);
  return true;
}

}  // namespace

std::string boundary_from_content_type(const std::string& contentType) {
  size_t key = lower_copy(contentType).find(kBoundaryKey);
  if (key == std::string::npos) return std::string();
  std::string value = contentType.substr(key + sizeof kBoundaryKey - 1);
  if (!value.empty() && value[0] == '"') {
    size_t close = value.find('"', 1);
    value = value.substr(1, close == std::string::npos ? std::string::npos : close - 1);
  } else {
    value = value.substr(0, value.find_first_of("; \t\r\n"));
  }
  // Some cameras put the delimiter's "--" into the parameter already.
  if (value.compare(0, 2, "--") == 0) value.erase(0, 2);
  return value;
}

uint32_t MultipartReader::skip_delimiter(InputBuffer& input, Deadline deadline) {
  for (;;) {
    if (skip_line_ends(input.pending)) {
      std::string& pending = input.pending;
      size_t compared = std::min(pending.size(), delimiter_.size());
      // Without a delimiter the part's headers come at once: tolerated.
      if (pending.compare(0, compared, delimiter_, 0, compared) != 0) return 0;
      size_t end = pending.find('\n', delimiter_.size());
      if (pending.size() >= delimiter_.size() + 2) {
        bool closing = pending.compare(delimiter_.size(), 2, "--") == 0;
        if (closing) {
          finished_ = true;
          return HTTP_ERR_CLOSED;
        }
      }
      if (end != std::string::npos) {
        pending.erase(0, end + 1);
        return 0;
      }
      if (pending.size() > 4096) return HTTP_ERR_PROTOCOL;
    }
    ReadStatus status = input.fill(deadline);
    if (status != ReadStatus::kOk) return code_for_read_status(status);
  }
}

uint32_t MultipartReader::read_part_headers(InputBuffer& input, Deadline deadline,
                                            std::vector<Header>& headers) {
  for (;;) {
    size_t consumed = 0;
    headers.clear();
    HeadParse result = parse_header_block(input.pending, 0, headers, consumed);
    if (result == HeadParse::kBad) return HTTP_ERR_PROTOCOL;
    if (result == HeadParse::kComplete) {
      input.pending.erase(0, consumed);
      return 0;
    }
    ReadStatus status = input.fill(deadline);
    if (status != ReadStatus::kOk) return code_for_read_status(status);
  }
}

uint32_t MultipartReader::read_sized_body(InputBuffer& input, Deadline deadline, uint64_t length) {
  if (length > kMaxPartBytes) return HTTP_ERR_PROTOCOL;
  while (input.pending.size() < length) {
    ReadStatus status = input.fill(deadline);
    if (status != ReadStatus::kOk) return code_for_read_status(status);
  }
  data_.assign(input.pending.begin(), input.pending.begin() + static_cast<long>(length));
  input.pending.erase(0, static_cast<size_t>(length));
  return 0;
}

uint32_t MultipartReader::read_delimited_body(InputBuffer& input, Deadline deadline) {
  const std::string marker = "\n" + delimiter_;
  size_t searchFrom = 0;
  for (;;) {
    std::string& pending = input.pending;
    size_t end = std::string::npos;
    if (pending.compare(0, delimiter_.size(), delimiter_) == 0) {
      end = 0;  // an empty body right before the next delimiter
    } else {
      size_t found = pending.find(marker, searchFrom);
      if (found != std::string::npos)
        end = (found > 0 && pending[found - 1] == '\r') ? found - 1 : found;
    }
    if (end != std::string::npos) {
      data_.assign(pending.begin(), pending.begin() + static_cast<long>(end));
      pending.erase(0, end);
      return 0;
    }
    if (pending.size() > kMaxPartBytes) return HTTP_ERR_PROTOCOL;
    searchFrom = pending.size() > marker.size() ? pending.size() - marker.size() : 0;
    ReadStatus status = input.fill(deadline);
    if (status != ReadStatus::kOk) return code_for_read_status(status);
  }
}

uint32_t MultipartReader::next_part(InputBuffer& input, Deadline deadline) {
  contentType_.clear();
  data_.clear();
  if (finished_) return HTTP_ERR_CLOSED;
  uint32_t code = skip_delimiter(input, deadline);
  if (code != 0) return code;
  std::vector<Header> headers;
  code = read_part_headers(input, deadline, headers);
  if (code != 0) return code;
  if (const std::string* type = find_header(headers, "Content-Type")) contentType_ = *type;
  const std::string* length = find_header(headers, "Content-Length");
  if (length == nullptr) return read_delimited_body(input, deadline);
  std::string digits = *length;
  if (digits.empty() || digits.size() > 15 ||
      digits.find_first_not_of("0123456789") != std::string::npos) {
    return HTTP_ERR_PROTOCOL;
  }
  return read_sized_body(input, deadline, std::stoull(digits));
}

}  // namespace kxhttp
