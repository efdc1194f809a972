// Internal pieces of the HTTP client, one concern per source file. The
// parser and the multipart reader work on any byte source, so that they can
// be driven from a memory buffer as well as from a socket.
#ifndef KXHTTP_INTERNAL_H
#define KXHTTP_INTERNAL_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kxhttp.h"

namespace kxhttp {

using Clock = std::chrono::steady_clock;
using Deadline = Clock::time_point;

// ---- time ----------------------------------------------------------------

// A time-out in milliseconds after the library-wide divisor is applied.
long scaled_timeout_ms(long timeoutMs);
Deadline deadline_after_ms(long timeoutMs);
// Milliseconds left until the deadline, never negative.
int remaining_ms(Deadline deadline);

// ---- byte sources --------------------------------------------------------

enum class ReadStatus { kOk, kClosed, kTimeout, kError };

class ByteSource {
 public:
  virtual ~ByteSource() = default;
  // Reads at least one byte before the deadline into buf.
  virtual ReadStatus read_some(char* buf, size_t capacity, Deadline deadline, size_t& got) = 0;
};

// Reads from a connected socket with poll.
class SocketSource : public ByteSource {
 public:
  explicit SocketSource(int fd) : fd_(fd) {}
  ReadStatus read_some(char* buf, size_t capacity, Deadline deadline, size_t& got) override;

 private:
  int fd_;
};

// Hands out a memory buffer in small steps, then reports the close.
class MemorySource : public ByteSource {
 public:
  MemorySource(const uint8_t* data, size_t size, size_t step)
      : data_(data), size_(size), step_(step == 0 ? 1 : step) {}
  ReadStatus read_some(char* buf, size_t capacity, Deadline deadline, size_t& got) override;

 private:
  const uint8_t* data_;
  size_t size_;
  size_t step_;
  size_t offset_ = 0;
};

// Bytes received but not yet consumed, in front of a source, in one block.
// Consuming only moves an offset: the consumed space is taken back, by
// moving what is still pending to the front, only when a read needs the
// room. So a push of many small parts, many to a read, costs no copy of
// the bytes behind each part.
class InputBuffer {
 public:
  // What one read asks the source for: an answer to a request is short, a
  // push comes without pause, and the fewer reads take it the better.
  static constexpr size_t kRequestReadBytes = 4096;
  static constexpr size_t kPushReadBytes = size_t{64} * 1024;

  ByteSource* source = nullptr;

  void set_read_bytes(size_t bytes) { readBytes_ = bytes; }
  std::string_view pending() const {
    return std::string_view(block_.get() + begin_, end_ - begin_);
  }
  size_t size() const { return end_ - begin_; }
  bool empty() const { return begin_ == end_; }
  void consume(size_t count) { begin_ += count; }
  void clear() { begin_ = end_ = 0; }
  // Reads more bytes from the source behind the pending ones.
  ReadStatus fill(Deadline deadline);
  // Reads towards total pending bytes in one piece: the room for all of
  // them is made first, so that they never move again. A long rest is read
  // to its end and no further, so that what follows has little to move; a
  // short one takes as much as fill.
  ReadStatus fill_toward(size_t total, Deadline deadline);

 private:
  // At least count bytes of room behind the pending bytes.
  void make_room(size_t count);
  ReadStatus read_at_most(size_t count, Deadline deadline);

  std::unique_ptr<char[]> block_;
  size_t capacity_ = 0;
  size_t begin_ = 0;  // the first pending byte
  size_t end_ = 0;    // behind the last pending byte
  size_t readBytes_ = kRequestReadBytes;
};

// Result code for a read that ended without the bytes that were due.
uint32_t code_for_read_status(ReadStatus status);

// ---- response ------------------------------------------------------------

struct Header {
  std::string name;
  std::string value;
};

// A header as it lies in the received bytes, valid while they are.
struct HeaderView {
  std::string_view name;
  std::string_view value;
};

struct ResponseHead {
  int status = 0;
  std::vector<Header> headers;
  bool hasContentLength = false;
  uint64_t contentLength = 0;
};

// Position after the next separator at or after position that is not
// inside a quoted string (a backslash there escapes one character), or
// npos when none follows.
size_t after_separator(const std::string& text, size_t position, char separator);

bool equals_ignore_case(std::string_view a, std::string_view b);

// Case-insensitive lookup of the first header of that name: its value, or
// null when absent.
template <typename Field>
auto find_header(const std::vector<Field>& headers, std::string_view name)
    -> decltype(&headers.front().value) {
  for (const Field& header : headers) {
    if (equals_ignore_case(header.name, name)) return &header.value;
  }
  return nullptr;
}

// A Content-Length value: decimal digits alone, at most 15 of them.
bool parse_length(std::string_view text, uint64_t& length);

// The status as the library reports it: 0x08000000 | three hex digits.
uint32_t code_for_status(int status);

enum class HeadParse { kIncomplete, kComplete, kBad };

// Parses a status line and headers at the front of data. On kComplete,
// consumed is the length of the head including its empty line.
HeadParse parse_response_head(std::string_view data, ResponseHead& head, size_t& consumed);

// Parses "Name: value" lines of a head block (status line excluded) ending
// at an empty line into headers, which it empties first: views into data,
// so that a part's head costs no copy. kBad for a line without colon.
HeadParse parse_header_block(std::string_view data, size_t start, std::vector<HeaderView>& headers,
                             size_t& consumed);

// Reads a response head (skipping interim 1xx heads). 0 or a result code.
uint32_t read_response_head(InputBuffer& input, Deadline deadline, ResponseHead& head);

// Reads the body into out (capacity bytes, always zero-terminated inside):
// the data of its chunks when it comes in chunks, else as long as
// Content-Length says, else up to the close. 0 or a result code.
uint32_t read_response_body(InputBuffer& input, Deadline deadline, const ResponseHead& head,
                            bool headRequest, char* out, size_t capacity, size_t& stored);

// ---- multipart -----------------------------------------------------------

// Boundary parameter of a Content-Type value, quoted or not, as given
// (a leading "--" is kept). Empty when the value has none.
std::string boundary_from_content_type(const std::string& contentType);

// Reads the parts of a multipart body. A delimiter line is "--" and the
// boundary as given, or the boundary alone (the camera styles: the "--" in
// the parameter, or in neither). The first delimiter line met decides
// which of the two the stream uses.
class MultipartReader {
 public:
  explicit MultipartReader(const std::string& boundary);
  // Reads the next part into the reader's own storage, which every part
  // reuses. 0 or a result code.
  uint32_t next_part(InputBuffer& input, Deadline deadline);
  const std::string& content_type() const { return contentType_; }
  const std::vector<unsigned char>& data() const { return *data_; }
  // The storage, for a caller who must keep the last part readable after
  // the reader has gone. Holding it keeps no more than the largest part:
  // a part handed out in the input buffer would keep the whole buffer.
  const std::shared_ptr<std::vector<unsigned char>>& storage() const { return data_; }

  enum class LineKind { kNeedMore, kOther, kDelimiter, kClosing };

 private:
  // What the line starting at start is; on a delimiter, which one matched.
  LineKind classify_line(std::string_view data, size_t start, size_t& matched) const;
  // From the first delimiter on, the stream's own delimiter alone is used.
  void keep_delimiter(size_t matched);
  uint32_t skip_delimiter(InputBuffer& input, Deadline deadline);
  uint32_t skip_preamble_line(InputBuffer& input);
  uint32_t read_part_headers(InputBuffer& input, Deadline deadline);
  uint32_t read_sized_body(InputBuffer& input, Deadline deadline, uint64_t length);
  uint32_t read_delimited_body(InputBuffer& input, Deadline deadline);
  uint32_t take_body(InputBuffer& input, size_t end);

  std::vector<std::string> delimiters_;  // candidates, the longer first
  // The last part's headers, kept so that the next part reuses the room.
  std::vector<HeaderView> headers_;
  std::string contentType_;
  std::shared_ptr<std::vector<unsigned char>> data_ =
      std::make_shared<std::vector<unsigned char>>();
  size_t preambleBytes_ = 0;
  bool started_ = false;  // the first part has begun: no preamble any more
  bool finished_ = false;
};

// ---- connection ----------------------------------------------------------

struct Endpoint {
  std::string host;  // as given, brackets removed
  unsigned short port = 0;
  bool numericOnly = true;  // the camera must be an address literal
};

// Connects within timeoutMs (already scaled). Returns the socket, or -1 with
// code set to HTTP_ERR_TIMEOUT_CONNECT or HTTP_ERR_CONNECT.
int connect_endpoint(const Endpoint& endpoint, long timeoutMs, uint32_t& code);

// Sends all bytes before the deadline. 0 or a result code.
uint32_t send_all(int fd, const std::string& bytes, Deadline deadline);

// ---- request -------------------------------------------------------------

struct RequestLine {
  std::string method;
  std::string url;
  std::string version;
};

bool is_token_char(char c);
bool is_token(const char* text);
bool is_field_value(const char* text);
bool is_request_target(const char* text);

// The request target: the path as given, or through a proxy the absolute
// URL http://host:port/path with an IPv6 host in brackets.
std::string request_target(const std::string& url, const std::string& host, unsigned short port,
                           bool viaProxy);

// The whole request text. A Host header is added when the caller set none.
std::string build_request(const RequestLine& line, const std::string& target,
                          const std::vector<Header>& headers, const std::string& host,
                          unsigned short port, const std::string& authorization);

// ---- authentication ------------------------------------------------------

struct Challenge {
  enum class Scheme { kNone, kBasic, kDigest } scheme = Scheme::kNone;
  std::string realm;
  std::string nonce;
  std::string opaque;
  std::string algorithm;  // "MD5", "SHA-256", "MD5-sess", "SHA-256-sess"
  bool qopAuth = false;   // the server offers qop=auth
  bool qopGiven = false;  // the server sent a qop parameter at all
};

// Picks the strongest challenge this client can answer from all
// WWW-Authenticate values: Digest SHA-256, then Digest MD5, then Basic.
Challenge choose_challenge(const std::vector<Header>& headers);

std::string basic_authorization(const std::string& user, const std::string& password);

// The Authorization value answering a Digest challenge (nc=00000001).
// Empty when the algorithm cannot be answered.
std::string digest_authorization(const Challenge& challenge, const std::string& user,
                                 const std::string& password, const std::string& method,
                                 const std::string& uri, const std::string& cnonce);

// Hex digests through the system's hash library; "MD5" or "SHA-256".
std::string hex_digest(const std::string& algorithm, const std::string& text);

std::string random_cnonce();

}  // namespace kxhttp

#endif  // KXHTTP_INTERNAL_H
