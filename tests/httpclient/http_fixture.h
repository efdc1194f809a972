// Shared helpers of the HTTP client tests.
#ifndef HTTP_FIXTURE_H
#define HTTP_FIXTURE_H

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "CamTestSupport.h"
#include "CamTestTiming.h"
#include "kxhttp.h"
#include "scripted_server.h"

namespace httptest {

// Every test runs its time-outs ten times faster: 5 s become 500 ms.
constexpr int kDivisor = 10;
constexpr auto kScaledRequestTimeout = std::chrono::milliseconds(5000 / kDivisor);
// What a return may lag behind the time-out on a busy 2-core machine
// (more in a sanitizer build).
inline const auto kLateness = camtest::Scaled(std::chrono::milliseconds(400));

class HttpClientTest : public ::testing::Test {
 protected:
  void SetUp() override { http_set_timeout_divisor(kDivisor); }
  void TearDown() override { http_set_timeout_divisor(1); }
};

// The 2048-byte receive record as the requester fills it.
struct ReceiveBuffer {
  std::vector<char> storage = std::vector<char>(2048, '\0');
  _InetBuffer record{};
  ReceiveBuffer() {
    record.ulSize = static_cast<uint32_t>(storage.size());
    record.pcBuffer = storage.data();
  }
  std::string text() const { return std::string(storage.data()); }
};

// Opens a session to address:port as the requester does (30000 ms).
inline HTTP_SESSION* open_session(const char* address, unsigned short port) {
  return http_open_session_to_ret(address, port, nullptr, 0, 0, 30000, 0);
}

// One GET as the requester sends it; returns the result code.
inline uint32_t get(HTTP_SESSION* session, const char* url, ReceiveBuffer& buffer) {
  EXPECT_EQ(HTTP_RESULT_OK, http_set_url(session, "GET", url, "HTTP/1.0"));
  EXPECT_EQ(HTTP_RESULT_OK, http_add_header(session, "Connection", "Keep-Alive"));
  return http_do_request(session, &buffer.record, 5);
}

// A GET that must end at the request time-out, no sooner and not much
// later; its result code.
inline uint32_t get_within_timeout(HTTP_SESSION* session, const char* url, ReceiveBuffer& buffer) {
  auto start = std::chrono::steady_clock::now();
  uint32_t code = get(session, url, buffer);
  auto elapsed = std::chrono::steady_clock::now() - start;
  EXPECT_GE(elapsed, kScaledRequestTimeout);
  EXPECT_LT(elapsed, kScaledRequestTimeout + kLateness);
  return code;
}

// Opens a session to the camera on loopback and starts a push of url as
// the requester does; null when no session opens.
inline HTTP_SESSION* open_push(unsigned short port, const char* url = "/push") {
  HTTP_SESSION* session = open_session("127.0.0.1", port);
  if (session == nullptr) return nullptr;
  EXPECT_EQ(HTTP_RESULT_OK, http_set_url(session, "GET", url, "HTTP/1.0"));
  EXPECT_EQ(HTTP_RESULT_STATUS200, http_do_server_push(session, 5));
  return session;
}

// The bytes of a push part.
inline std::string part_bytes(const HTTP_PUSH_PART& part) {
  return std::string(reinterpret_cast<const char*>(part.pucData), part.ulLength);
}

inline bool is_timeout(uint32_t code) {
  return (code & 0xFFFF) == 0x1000 || (code & 0xFFFF) == 0x7000;
}

}  // namespace httptest

#endif  // HTTP_FIXTURE_H
