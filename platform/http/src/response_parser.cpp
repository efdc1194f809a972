// Status line, headers and body of a camera's response.
#include <algorithm>
#include <cctype>
#include <cstring>

#include "kxhttp_internal.h"

namespace kxhttp {
namespace {

// A head longer than this is not a camera's answer.
constexpr size_t kMaxHeadBytes = size_t{64} * 1024;
constexpr char kHttpPrefix[] = "HTTP/";
constexpr size_t kHttpPrefixLength = sizeof kHttpPrefix - 1;

char lower(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

bool is_blank(char c) {
  return c == ' ' || c == '\t';
}

// Every header line of every part passes here: plain loops, where the
// library's searches for a set of characters cost a call a character.
std::string_view trim(std::string_view text) {
  size_t begin = 0;
  while (begin < text.size() && is_blank(text[begin])) ++begin;
  if (begin == text.size()) return std::string_view();
  // The last character that is neither blank nor CR; npos when none.
  size_t end = text.size() - 1;
  while (end != std::string_view::npos && (is_blank(text[end]) || text[end] == '\r')) --end;
  return text.substr(begin, end - begin + 1);
}

// Finds the end of the line starting at start: index of '\n', or npos.
size_t line_end(std::string_view data, size_t start) {
  return data.find('\n', start);
}

// The line without its CR LF or LF.
std::string_view line_text(std::string_view data, size_t start, size_t end) {
  size_t stop = (end > start && data[end - 1] == '\r') ? end - 1 : end;
  return data.substr(start, stop - start);
}

bool all_digits(std::string_view text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// "HTTP/d.d SSS reason": the status, or 0 when the line is not HTTP.
int parse_status_line(const std::string& line) {
  if (line.compare(0, kHttpPrefixLength, kHttpPrefix) != 0) return 0;
  size_t space = line.find(' ', kHttpPrefixLength);
  if (space == std::string::npos) return 0;
  std::string version = line.substr(kHttpPrefixLength, space - kHttpPrefixLength);
  size_t dot = version.find('.');
  if (dot == std::string::npos || !all_digits(version.substr(0, dot)) ||
      !all_digits(version.substr(dot + 1))) {
    return 0;
  }
  size_t codeStart = line.find_first_not_of(' ', space);
  if (codeStart == std::string::npos || line.size() < codeStart + 3) return 0;
  std::string code = line.substr(codeStart, 3);
  if (!all_digits(code) || code[0] == '0') return 0;
  if (line.size() > codeStart + 3 && line[codeStart + 3] != ' ') return 0;
  return std::stoi(code);
}

bool parse_content_length(const std::string& value, uint64_t& length) {
  return parse_length(trim(value), length);
}

// Takes Content-Length from the headers; false when it is malformed or
// given twice with different values.
bool apply_content_length(ResponseHead& head) {
  for (const Header& header : head.headers) {
    if (!equals_ignore_case(header.name, "Content-Length")) continue;
    uint64_t length = 0;
    if (!parse_content_length(header.value, length)) return false;
    if (head.hasContentLength && head.contentLength != length) return false;
    head.hasContentLength = true;
    head.contentLength = length;
  }
  return true;
}

// Statuses that carry no body whatever the headers say.
bool status_has_body(int status) {
  return !(status < 200 || status == 204 || status == 304);
}

// Whether the body comes in chunks: chunked is the last transfer coding
// named (RFC 9112, 6.3); it then ends with its last chunk, whatever
// Content-Length says.
bool is_chunked(const ResponseHead& head) {
  const std::string* codings = nullptr;
  for (const Header& header : head.headers) {
    if (equals_ignore_case(header.name, "Transfer-Encoding")) codings = &header.value;
  }
  if (codings == nullptr) return false;
  std::string_view text = *codings;
  size_t comma = text.rfind(',');
  return equals_ignore_case(trim(text.substr(comma == std::string_view::npos ? 0 : comma + 1)),
                            "chunked");
}

// Appends what fits of data to out, which stays zero-terminated.
void keep(std::string_view data, char* out, size_t capacity, size_t& stored) {
  size_t kept = std::min(data.size(), capacity - 1 - stored);
  if (kept > 0) std::memcpy(out + stored, data.data(), kept);
  stored += kept;
  out[stored] = '\0';
}

// Takes the next line of the body off the input, without its line end.
uint32_t read_body_line(InputBuffer& input, Deadline deadline, std::string& line) {
  for (;;) {
    size_t end = line_end(input.pending(), 0);
    if (end != std::string_view::npos) {
      line = line_text(input.pending(), 0, end);
      input.consume(end + 1);
      return 0;
    }
    if (input.size() > kMaxHeadBytes) return HTTP_ERR_PROTOCOL;
    ReadStatus status = input.fill(deadline);
    if (status != ReadStatus::kOk) return code_for_read_status(status);
  }
}

// "1a", "1A;name=value", "1a ": the size of the chunk in hexadecimal digits,
// then blanks and extensions, which are passed over.
bool parse_chunk_size(const std::string& line, uint64_t& size) {
  size_t digits = 0;
  size = 0;
  for (; digits < line.size() && std::isxdigit(static_cast<unsigned char>(line[digits]));
       ++digits) {
    if (digits == 15) return false;
    char c = lower(line[digits]);
    size = size * 16 + static_cast<uint64_t>(c <= '9' ? c - '0' : c - 'a' + 10);
  }
  size_t rest = digits;
  while (rest < line.size() && is_blank(line[rest])) ++rest;
  return digits > 0 && (rest == line.size() || line[rest] == ';');
}

// The data of the chunks, up to the last chunk and its trailer fields. A
// close after the last chunk ends the trailer fields too.
uint32_t read_chunked_body(InputBuffer& input, Deadline deadline, char* out, size_t capacity,
                           size_t& stored) {
  std::string line;
  for (;;) {
    uint32_t code = read_body_line(input, deadline, line);
    if (code != 0) return code;
    uint64_t size = 0;
    if (!parse_chunk_size(line, size)) return HTTP_ERR_PROTOCOL;
    if (size == 0) break;
    while (size > 0) {
      if (input.empty()) {
        ReadStatus status = input.fill(deadline);
        if (status != ReadStatus::kOk) return code_for_read_status(status);
      }
      size_t take = static_cast<size_t>(std::min<uint64_t>(input.size(), size));
      keep(input.pending().substr(0, take), out, capacity, stored);
      input.consume(take);
      size -= take;
    }
    code = read_body_line(input, deadline, line);
    if (code != 0) return code;
    if (!line.empty()) return HTTP_ERR_PROTOCOL;
  }
  do {
    uint32_t code = read_body_line(input, deadline, line);
    if (code == HTTP_ERR_CLOSED) return 0;
    if (code != 0) return code;
  } while (!line.empty());
  return 0;
}

}  // namespace

bool parse_length(std::string_view text, uint64_t& length) {
  if (!all_digits(text) || text.size() > 15) return false;
  length = 0;
  for (char c : text) length = length * 10 + static_cast<uint64_t>(c - '0');
  return true;
}

bool equals_ignore_case(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  if (a == b) return true;  // the usual spelling, in one compare
  for (size_t i = 0; i < a.size(); ++i) {
    if (lower(a[i]) != lower(b[i])) return false;
  }
  return true;
}

size_t after_separator(const std::string& text, size_t position, char separator) {
  bool quoted = false;
  for (; position < text.size(); ++position) {
    char c = text[position];
    if (quoted && c == '\\') {
      ++position;
    } else if (c == '"') {
      quoted = !quoted;
    } else if (c == separator && !quoted) {
      return position + 1;
    }
  }
  return std::string::npos;
}

uint32_t code_for_status(int status) {
  uint32_t hundreds = static_cast<uint32_t>(status / 100 % 10);
  uint32_t tens = static_cast<uint32_t>(status / 10 % 10);
  uint32_t ones = static_cast<uint32_t>(status % 10);
  return HTTP_RESULT_OK | (hundreds << 8) | (tens << 4) | ones;
}

HeadParse parse_header_block(std::string_view data, size_t start, std::vector<HeaderView>& headers,
                             size_t& consumed) {
  headers.clear();
  size_t position = start;
  for (;;) {
    size_t end = line_end(data, position);
    if (end == std::string_view::npos) {
      return data.size() - start > kMaxHeadBytes ? HeadParse::kBad : HeadParse::kIncomplete;
    }
    std::string_view line = line_text(data, position, end);
    position = end + 1;
    if (line.empty()) break;
    size_t colon = line.find(':');
    if (colon == std::string_view::npos || colon == 0) return HeadParse::kBad;
    headers.push_back(HeaderView{trim(line.substr(0, colon)), trim(line.substr(colon + 1))});
    if (position - start > kMaxHeadBytes) return HeadParse::kBad;
  }
  consumed = position - start;
  return HeadParse::kComplete;
}

HeadParse parse_response_head(std::string_view data, ResponseHead& head, size_t& consumed) {
  // Reject a foreign answer as soon as its first bytes show it.
  size_t compared = std::min(data.size(), kHttpPrefixLength);
  if (data.compare(0, compared, kHttpPrefix, compared) != 0) return HeadParse::kBad;
  size_t end = line_end(data, 0);
  if (end == std::string::npos) {
    return data.size() > kMaxHeadBytes ? HeadParse::kBad : HeadParse::kIncomplete;
  }
  head = ResponseHead{};
  head.status = parse_status_line(std::string(line_text(data, 0, end)));
  if (head.status == 0) return HeadParse::kBad;
  size_t blockLength = 0;
  std::vector<HeaderView> fields;
  HeadParse result = parse_header_block(data, end + 1, fields, blockLength);
  if (result != HeadParse::kComplete) return result;
  for (const HeaderView& field : fields) {
    head.headers.push_back(Header{std::string(field.name), std::string(field.value)});
  }
  if (!apply_content_length(head)) return HeadParse::kBad;
  consumed = end + 1 + blockLength;
  return HeadParse::kComplete;
}

uint32_t read_response_head(InputBuffer& input, Deadline deadline, ResponseHead& head) {
  for (;;) {
    size_t consumed = 0;
    HeadParse result = parse_response_head(input.pending(), head, consumed);
    if (result == HeadParse::kBad) return HTTP_ERR_PROTOCOL;
    if (result == HeadParse::kComplete) {
      input.consume(consumed);
      if (head.status >= 200) return 0;
      continue;  // an interim 1xx answer: the real one follows
    }
    ReadStatus status = input.fill(deadline);
    if (status != ReadStatus::kOk) return code_for_read_status(status);
  }
}

uint32_t read_response_body(InputBuffer& input, Deadline deadline, const ResponseHead& head,
                            bool headRequest, char* out, size_t capacity, size_t& stored) {
  stored = 0;
  if (capacity == 0) return HTTP_ERR_PARAM;
  out[0] = '\0';
  bool hasBody = !headRequest && status_has_body(head.status);
  if (hasBody && is_chunked(head)) return read_chunked_body(input, deadline, out, capacity, stored);
  uint64_t due = hasBody ? head.contentLength : 0;
  bool toClose = hasBody && !head.hasContentLength;
  uint64_t received = 0;
  for (;;) {
    // Keep what fits, leaving room for the terminating zero.
    size_t take = input.size();
    if (!toClose) take = static_cast<size_t>(std::min<uint64_t>(take, due - received));
    keep(input.pending().substr(0, take), out, capacity, stored);
    input.consume(take);
    received += take;
    if (!toClose && received >= due) return 0;
    ReadStatus status = input.fill(deadline);
    if (status == ReadStatus::kClosed && toClose) return 0;
    if (status != ReadStatus::kOk) return code_for_read_status(status);
  }
}

}  // namespace kxhttp
