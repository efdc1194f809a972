// Parts of a multipart/x-mixed-replace body (JPEG server push).
#include <algorithm>
#include <cstring>

#include "kxhttp_internal.h"

namespace kxhttp {
namespace {

// A part larger than this is a broken stream, not a picture.
constexpr uint64_t kMaxPartBytes = uint64_t{16} * 1024 * 1024;
// Text before the first delimiter longer than this is no push.
constexpr size_t kMaxPreambleBytes = size_t{64} * 1024;
// Blanks after a delimiter, before its line end, that are still padding.
constexpr size_t kMaxPaddingBytes = 1024;

using LineKind = MultipartReader::LineKind;

bool is_padding(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

// Removes the empty lines that separate a part's body from the next
// delimiter. False while only line ends are buffered.
bool skip_line_ends(InputBuffer& input) {
  std::string_view pending = input.pending();
  size_t skip = 0;
  while (skip < pending.size() && (pending[skip] == '\r' || pending[skip] == '\n')) ++skip;
  if (skip == pending.size()) {
    input.clear();
    return false;
  }
  input.consume(skip);
  return true;
}

// A delimiter line is the delimiter, optional blanks and the line end; the
// closing one has "--" right after the delimiter.
LineKind delimiter_line(std::string_view data, size_t start, const std::string& delimiter) {
  size_t available = data.size() - start;
  size_t compared = std::min(available, delimiter.size());
  if (data.compare(start, compared, delimiter, 0, compared) != 0) return LineKind::kOther;
  size_t rest = start + delimiter.size();
  if (available < delimiter.size() || rest == data.size()) return LineKind::kNeedMore;
  if (data[rest] == '-') {
    if (rest + 1 == data.size()) return LineKind::kNeedMore;
    return data[rest + 1] == '-' ? LineKind::kClosing : LineKind::kOther;
  }
  size_t stop = std::min(data.size(), rest + kMaxPaddingBytes);
  for (size_t i = rest; i < stop; ++i) {
    if (data[i] == '\n') return LineKind::kDelimiter;
    if (!is_padding(data[i])) return LineKind::kOther;
  }
  return stop == data.size() ? LineKind::kNeedMore : LineKind::kOther;
}

// "Name: value": a token right before a colon.
bool is_header_line(std::string_view data, size_t end) {
  size_t colon = data.find(':');
  if (colon == 0 || colon >= end) return false;
  return std::all_of(data.begin(), data.begin() + static_cast<long>(colon), is_token_char);
}

// Reads a parameter value at position: a quoted string (backslash escapes
// one character) or a token.
std::string parameter_value(const std::string& text, size_t position) {
  std::string value;
  if (position < text.size() && text[position] == '"') {
    for (++position; position < text.size() && text[position] != '"'; ++position) {
      if (text[position] == '\\' && position + 1 < text.size()) ++position;
      value += text[position];
    }
    return value;
  }
  size_t end = text.find_first_of("; \t\r\n", position);
  return text.substr(position, end == std::string::npos ? std::string::npos : end - position);
}

}  // namespace

std::string boundary_from_content_type(const std::string& contentType) {
  static const char kBoundary[] = "boundary";
  for (size_t position = after_separator(contentType, 0, ';'); position != std::string::npos;
       position = after_separator(contentType, position, ';')) {
    size_t nameStart = contentType.find_first_not_of(" \t", position);
    if (nameStart == std::string::npos) break;
    size_t equals = contentType.find('=', nameStart);
    if (equals == std::string::npos) break;
    std::string name = contentType.substr(nameStart, equals - nameStart);
    name.erase(name.find_last_not_of(" \t") + 1);
    if (!equals_ignore_case(name, kBoundary)) continue;
    size_t valueStart = contentType.find_first_not_of(" \t", equals + 1);
    return valueStart == std::string::npos ? std::string()
                                           : parameter_value(contentType, valueStart);
  }
  return std::string();
}

MultipartReader::MultipartReader(const std::string& boundary) {
  delimiters_.push_back("--" + boundary);
  // Many cameras put the delimiter's "--" into the parameter already, and
  // some leave it out of their lines: either way a line of the boundary
  // alone delimits too.
  if (boundary != "--") delimiters_.push_back(boundary);
}

LineKind MultipartReader::classify_line(std::string_view data, size_t start,
                                        size_t& matched) const {
  LineKind result = LineKind::kOther;
  for (size_t i = 0; i < delimiters_.size(); ++i) {
    LineKind kind = delimiter_line(data, start, delimiters_[i]);
    if (kind == LineKind::kDelimiter || kind == LineKind::kClosing) {
      matched = i;
      return kind;
    }
    if (kind == LineKind::kNeedMore) result = kind;
  }
  return result;
}

void MultipartReader::keep_delimiter(size_t matched) {
  if (delimiters_.size() > 1) delimiters_ = {delimiters_[matched]};
}

// A line before the first delimiter that is no part header is preamble.
uint32_t MultipartReader::skip_preamble_line(InputBuffer& input) {
  std::string_view pending = input.pending();
  size_t end = pending.find('\n');
  if (end == std::string_view::npos) {
    return preambleBytes_ + pending.size() > kMaxPreambleBytes ? HTTP_ERR_PROTOCOL : 0;
  }
  if (is_header_line(pending, end)) {
    started_ = true;  // the first part's headers came without a delimiter
    return 0;
  }
  preambleBytes_ += end + 1;
  input.consume(end + 1);
  return preambleBytes_ > kMaxPreambleBytes ? HTTP_ERR_PROTOCOL : 0;
}

uint32_t MultipartReader::skip_delimiter(InputBuffer& input, Deadline deadline) {
  for (;;) {
    if (skip_line_ends(input)) {
      size_t matched = 0;
      LineKind kind = classify_line(input.pending(), 0, matched);
      if (kind == LineKind::kClosing) {
        finished_ = true;
        return HTTP_ERR_CLOSED;
      }
      if (kind == LineKind::kDelimiter) {
        keep_delimiter(matched);
        input.consume(input.pending().find('\n') + 1);
        started_ = true;
        return 0;
      }
      // Part headers without a delimiter before them: tolerated.
      if (kind == LineKind::kOther && started_) return 0;
      if (kind == LineKind::kOther) {
        size_t before = input.size();
        uint32_t code = skip_preamble_line(input);
        if (code != 0 || started_) return code;
        if (input.size() != before) continue;
      }
    }
    ReadStatus status = input.fill(deadline);
    if (status != ReadStatus::kOk) return code_for_read_status(status);
  }
}

uint32_t MultipartReader::read_part_headers(InputBuffer& input, Deadline deadline) {
  for (;;) {
    size_t consumed = 0;
    HeadParse result = parse_header_block(input.pending(), 0, headers_, consumed);
    if (result == HeadParse::kBad) return HTTP_ERR_PROTOCOL;
    if (result == HeadParse::kComplete) {
      // The views stay valid: consuming moves no byte.
      input.consume(consumed);
      return 0;
    }
    ReadStatus status = input.fill(deadline);
    if (status != ReadStatus::kOk) return code_for_read_status(status);
  }
}

uint32_t MultipartReader::take_body(InputBuffer& input, size_t end) {
  if (end > kMaxPartBytes) return HTTP_ERR_PROTOCOL;
  // Byte pointers of one type, so that the copy is one block copy rather
  // than a conversion byte by byte; the storage keeps its room from the
  // part before.
  const auto* bytes = reinterpret_cast<const unsigned char*>(input.pending().data());
  data_->assign(bytes, bytes + end);
  input.consume(end);
  return 0;
}

uint32_t MultipartReader::read_sized_body(InputBuffer& input, Deadline deadline, uint64_t length) {
  if (length > kMaxPartBytes) return HTTP_ERR_PROTOCOL;
  const size_t size = static_cast<size_t>(length);
  // What does not come in time stays pending, as if read in pieces.
  while (input.size() < size) {
    ReadStatus status = input.fill_toward(size, deadline);
    if (status != ReadStatus::kOk) return code_for_read_status(status);
  }
  return take_body(input, size);
}

// The body ends before the line end in front of the next delimiter line.
// Each line is looked at once: lineStart is the line in question,
// scanFrom where the search for its end goes on after more bytes came.
uint32_t MultipartReader::read_delimited_body(InputBuffer& input, Deadline deadline) {
  size_t lineStart = 0;
  size_t scanFrom = 0;
  for (;;) {
    LineKind kind = LineKind::kOther;
    std::string_view pending = input.pending();
    for (;;) {
      size_t matched = 0;
      kind = classify_line(pending, lineStart, matched);
      if (kind == LineKind::kDelimiter || kind == LineKind::kClosing) {
        keep_delimiter(matched);
        size_t end = lineStart == 0 ? 0 : lineStart - 1;
        if (end > 0 && pending[end - 1] == '\r') --end;
        return take_body(input, end);
      }
      if (kind == LineKind::kNeedMore) break;
      size_t newline = pending.find('\n', std::max(scanFrom, lineStart));
      if (newline == std::string_view::npos) {
        scanFrom = pending.size();
        break;
      }
      lineStart = scanFrom = newline + 1;
    }
    // The part cannot end before the line end of the line in question.
    size_t earliestEnd = kind == LineKind::kNeedMore ? lineStart : scanFrom;
    if (earliestEnd > kMaxPartBytes + 2) return HTTP_ERR_PROTOCOL;
    ReadStatus status = input.fill(deadline);
    if (status != ReadStatus::kOk) return code_for_read_status(status);
  }
}

uint32_t MultipartReader::next_part(InputBuffer& input, Deadline deadline) {
  contentType_.clear();
  data_->clear();
  if (finished_) return HTTP_ERR_CLOSED;
  uint32_t code = skip_delimiter(input, deadline);
  if (code != 0) return code;
  code = read_part_headers(input, deadline);
  if (code != 0) return code;
  if (const std::string_view* type = find_header(headers_, "Content-Type")) contentType_ = *type;
  const std::string_view* lengthText = find_header(headers_, "Content-Length");
  if (lengthText == nullptr) return read_delimited_body(input, deadline);
  uint64_t length = 0;
  if (!parse_length(*lengthText, length)) return HTTP_ERR_PROTOCOL;
  return read_sized_body(input, deadline, length);
}

}  // namespace kxhttp
