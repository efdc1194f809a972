// A plain socket client for the simulator's tests: it writes request bytes
// by hand and reads the answer itself, sharing nothing with the requester's
// HTTP client or with the simulator's own parsing.
#ifndef CAMSIM_TEST_CLIENT_H
#define CAMSIM_TEST_CLIENT_H

#include <chrono>
#include <cstdint>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace camsim_test {

using std::chrono::milliseconds;

constexpr milliseconds kDeadline{5000};

// Checks condition every few milliseconds until it holds or the deadline
// passes; returns its last value.
template <typename Condition>
bool WaitFor(Condition condition, milliseconds timeout = kDeadline) {
  auto deadline = std::chrono::steady_clock::now() + timeout;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    std::this_thread::sleep_for(milliseconds(5));
  }
  return true;
}

struct Response {
  bool complete = false;  // a status line and the blank line after the headers came
  std::string statusLine;
  int status = 0;
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;
  std::string raw;
  bool closed = false;  // the server closed the connection

  std::string Header(const std::string& name) const;
  // Value after "key" at the start of a body line ("" and false if no line).
  std::string Line(const std::string& key, bool* found = nullptr) const;
};

// Connects to address (IPv4 or IPv6 text) and port; -1 when refused.
int Connect(const std::string& address, uint16_t port);
bool SendText(int fd, const std::string& text);
// Reads until the server closes or the deadline passes.
std::string ReadUntilClose(int fd, milliseconds timeout, bool* closed);
// Reads until text holds needle (appending), the server closes or the deadline passes.
bool ReadUntil(int fd, std::string* text, const std::string& needle, milliseconds timeout);
Response ParseResponse(const std::string& raw);

// One GET: connects, sends, reads to the close, parses. extraHeaders are
// complete lines ending in CR LF.
Response Get(const std::string& address, uint16_t port, const std::string& target,
             const std::string& extraHeaders = "", const std::string& version = "HTTP/1.0");

// A server push read part by part.
struct PushReader {
  int fd = -1;
  std::string data;
  std::string boundary;
  Response head;
  ~PushReader();
  // Sends the request and reads the head; false if no complete head came.
  bool Open(const std::string& address, uint16_t port, const std::string& target);
  // Reads the next part's body; false at close or deadline.
  bool NextPart(std::string* body, milliseconds timeout);
};

// Hex digests computed with nettle.
std::string Md5(const std::string& text);
std::string Sha256(const std::string& text);
std::string Base64(const std::string& text);
// Parameters of a WWW-Authenticate or Authorization value, unquoted.
std::string AuthParam(const std::string& header, const std::string& name);

struct Picture {
  bool valid = false;
  int width = 0;
  int height = 0;
  int minGray = 255;
  int maxGray = 0;
};
// Decodes a JPEG with libjpeg.
Picture DecodeJpeg(const std::string& jpeg);

}  // namespace camsim_test

#endif
