// Server push: status and headers first, then the parts of a
// multipart/x-mixed-replace body, or raw audio bytes, read by the upper layer.
#include <string>

#include "http_fixture.h"

using namespace httptest;
using std::chrono::steady_clock;

namespace {

const std::string kJpegA = std::string("\xff\xd8", 2) + "picture one\r\n--not-a-boundary" +
                           std::string("\0\x01\xff\xd9", 4);
const std::string kJpegB = std::string("\xff\xd8", 2) + "picture two" + std::string("\xff\xd9", 2);

std::string push_head(const std::string& contentType) {
  return "HTTP/1.0 200 OK\r\nContent-Type: " + contentType + "\r\n\r\n";
}

std::string part(const std::string& boundaryLine, const std::string& data, bool withLength) {
  std::string text = boundaryLine + "\r\nContent-Type: image/jpeg\r\n";
  if (withLength) text += "Content-Length: " + std::to_string(data.size()) + "\r\n";
  return text + "\r\n" + data + "\r\n";
}

// Opens a session and starts a push served by the script.
HTTP_SESSION* start_push(ScriptedServer& server, const std::string& bytes, bool stayOpen) {
  server.add([bytes, stayOpen](Connection& c) {
    c.read_head();
    c.send(bytes);
    if (stayOpen) c.hang();
  });
  return open_push(server.port(), "/cgi-bin/jpeg?uid=7&mode=push");
}

// The two pictures come out as the first two parts.
void expect_both_pictures(HTTP_SESSION* session) {
  HTTP_PUSH_PART received{};
  ASSERT_EQ(0u, http_push_next_part(session, &received, 5000));
  EXPECT_STREQ("image/jpeg", received.acContentType);
  EXPECT_EQ(kJpegA, part_bytes(received));
  ASSERT_EQ(0u, http_push_next_part(session, &received, 5000));
  EXPECT_STREQ("image/jpeg", received.acContentType);
  EXPECT_EQ(kJpegB, part_bytes(received));
}

struct BoundaryCase {
  const char* name;
  const char* contentType;
  bool firstBoundary;
  bool lengths;
};

const BoundaryCase kBoundaryCases[] = {
    {"Plain", "multipart/x-mixed-replace; boundary=myboundary", true, true},
    {"Quoted", "multipart/x-mixed-replace; boundary=\"myboundary\"", true, false},
    {"WithDashes", "multipart/x-mixed-replace;boundary=--myboundary", true, true},
    {"QuotedWithDashes", "multipart/x-mixed-replace; boundary=\"--myboundary\"", true, false},
    {"FirstBoundaryMissing", "multipart/x-mixed-replace; boundary=myboundary", false, true},
    {"FirstMissingNoLength", "multipart/x-mixed-replace; boundary=myboundary", false, false},
};

}  // namespace

class BoundaryTest : public HttpClientTest, public ::testing::WithParamInterface<BoundaryCase> {};

TEST_P(BoundaryTest, PartsComeOutWithTheirBytes) {
  const BoundaryCase& c = GetParam();
  std::string body;
  if (c.firstBoundary) body += "--myboundary\r\n";
  std::string first = part("", kJpegA, c.lengths);
  body += first.substr(2);  // the part's headers follow the boundary line
  body += part("--myboundary", kJpegB, c.lengths);
  body += "--myboundary\r\n";
  ScriptedServer server("127.0.0.1");
  int before = camtest::OpenFdCount();
  HTTP_SESSION* session = start_push(server, push_head(c.contentType) + body, true);
  ASSERT_NE(nullptr, session);
  ASSERT_NO_FATAL_FAILURE(expect_both_pictures(session));
  HTTP_PUSH_PART received{};
  // No third part comes: the reader gives up after its time-out.
  auto start = steady_clock::now();
  EXPECT_EQ(HTTP_ERR_TIMEOUT, http_push_next_part(session, &received, 3000));
  EXPECT_LT(steady_clock::now() - start, std::chrono::milliseconds(3000 / kDivisor) + kLateness);
  EXPECT_GE(steady_clock::now() - start, std::chrono::milliseconds(3000 / kDivisor));
  EXPECT_EQ(0, http_close_session(session));
  ASSERT_TRUE(server.wait_idle());
  EXPECT_EQ(before, camtest::SettledFdCount(before));
}

INSTANTIATE_TEST_SUITE_P(Variants, BoundaryTest, ::testing::ValuesIn(kBoundaryCases),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST_F(HttpClientTest, PushPartsArriveOneByOneFromADrippingCamera) {
  ScriptedServer server("127.0.0.1");
  std::string body =
      "--b\r\nContent-Type: image/jpeg\r\nContent-Length: 5\r\n\r\nhello\r\n"
      "--b\r\nContent-Type: image/jpeg\r\n\r\nworld\r\n--b--\r\n";
  server.add([body](Connection& c) {
    c.read_head();
    c.send(push_head("multipart/x-mixed-replace; boundary=b"));
    c.drip(body, std::chrono::milliseconds(1));
    c.hang();
  });
  HTTP_SESSION* session = open_push(server.port());
  ASSERT_NE(nullptr, session);
  HTTP_PUSH_PART received{};
  ASSERT_EQ(0u, http_push_next_part(session, &received, 5000));
  EXPECT_EQ("hello", part_bytes(received));
  ASSERT_EQ(0u, http_push_next_part(session, &received, 5000));
  EXPECT_EQ("world", part_bytes(received));
  // The closing delimiter ends the stream.
  EXPECT_EQ(HTTP_ERR_CLOSED, http_push_next_part(session, &received, 5000));
  EXPECT_EQ(0, http_close_session(session));
}

// Parts of every size, sized and delimited in turn, sent at once: many to
// one read, one over several, and parts larger than the reader's buffer,
// which must grow behind bytes already pending.
TEST_F(HttpClientTest, PushPartsOfChangingSizesComeOutWhole) {
  const size_t kSizes[] = {1,    7370, 7370, 0,      70000, 5, 200000, 65536, 65535,
                           7370, 3,    1024, 131072, 7370,  2, 300000, 7370,  65537};
  std::vector<std::string> pictures;
  std::string body;
  for (size_t i = 0; i < sizeof kSizes / sizeof kSizes[0]; ++i) {
    std::string picture(kSizes[i], '\0');
    for (size_t at = 0; at < picture.size(); ++at) {
      picture[at] = static_cast<char>((at * 31 + i * 7) % 251);
    }
    // A delimited part must not hold its own delimiter line.
    ASSERT_EQ(std::string::npos, picture.find("\n--b"));
    body += part("--b", picture, i % 2 == 0);
    pictures.push_back(picture);
  }
  body += "--b--\r\n";
  ScriptedServer server("127.0.0.1");
  HTTP_SESSION* session =
      start_push(server, push_head("multipart/x-mixed-replace; boundary=b") + body, true);
  ASSERT_NE(nullptr, session);
  for (size_t i = 0; i < pictures.size(); ++i) {
    HTTP_PUSH_PART received{};
    ASSERT_EQ(0u, http_push_next_part(session, &received, 5000)) << "part " << i;
    ASSERT_EQ(pictures[i].size(), received.ulLength) << "part " << i;
    EXPECT_TRUE(part_bytes(received) == pictures[i]) << "part " << i;
  }
  HTTP_PUSH_PART received{};
  EXPECT_EQ(HTTP_ERR_CLOSED, http_push_next_part(session, &received, 5000));
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, PushPartCutByTheCloseIsReported) {
  ScriptedServer server("127.0.0.1");
  HTTP_SESSION* session =
      start_push(server,
                 push_head("multipart/x-mixed-replace; boundary=b") +
                     "--b\r\nContent-Type: image/jpeg\r\nContent-Length: 50\r\n\r\nshort",
                 false);
  ASSERT_NE(nullptr, session);
  HTTP_PUSH_PART received{};
  EXPECT_EQ(HTTP_ERR_CLOSED, http_push_next_part(session, &received, 5000));
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, PushWithoutBoundaryIsAProtocolError) {
  ScriptedServer server("127.0.0.1");
  HTTP_SESSION* session = start_push(server, push_head("image/jpeg") + "xx", true);
  ASSERT_NE(nullptr, session);
  HTTP_PUSH_PART received{};
  EXPECT_EQ(HTTP_ERR_PROTOCOL, http_push_next_part(session, &received, 5000));
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, PushStatusIsReturnedAsTheResultCode) {
  ScriptedServer server("127.0.0.1");
  server.add([](Connection& c) {
    c.read_head();
    c.send(response("HTTP/1.0 404 Not Found", "no such stream"));
  });
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  http_set_url(session, "GET", "/push", "HTTP/1.0");
  EXPECT_EQ(0x08000404u, http_do_server_push(session, 5));
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, SilentPushTimesOut) {
  ScriptedServer server("127.0.0.1");
  server.add([](Connection& c) { c.hang(); });
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  http_set_url(session, "GET", "/push", "HTTP/1.0");
  auto start = steady_clock::now();
  EXPECT_EQ(HTTP_ERR_TIMEOUT, http_do_server_push(session, 5));
  EXPECT_LT(steady_clock::now() - start, kScaledRequestTimeout + kLateness);
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, AudioBytesAreReadRaw) {
  std::string audio;
  for (int i = 0; i < 3000; ++i) audio += static_cast<char>(i * 7);
  ScriptedServer server("127.0.0.1");
  HTTP_SESSION* session =
      start_push(server, "HTTP/1.0 200 OK\r\nContent-Type: audio/G726-32\r\n\r\n" + audio, false);
  ASSERT_NE(nullptr, session);
  std::string received;
  char chunk[500];
  size_t got = 0;
  uint32_t code = 0;
  while ((code = http_push_read(session, chunk, sizeof chunk, &got, 5000)) == 0) {
    EXPECT_LE(got, sizeof chunk);
    received.append(chunk, got);
  }
  EXPECT_EQ(HTTP_ERR_CLOSED, code);
  EXPECT_EQ(audio, received);
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, AudioReadTimesOut) {
  ScriptedServer server("127.0.0.1");
  HTTP_SESSION* session =
      start_push(server, "HTTP/1.0 200 OK\r\nContent-Type: audio/G726-32\r\n\r\n", true);
  ASSERT_NE(nullptr, session);
  char chunk[64];
  size_t got = 99;
  auto start = steady_clock::now();
  EXPECT_EQ(HTTP_ERR_TIMEOUT, http_push_read(session, chunk, sizeof chunk, &got, 2000));
  EXPECT_GE(steady_clock::now() - start, std::chrono::milliseconds(2000 / kDivisor));
  EXPECT_LT(steady_clock::now() - start, std::chrono::milliseconds(2000 / kDivisor) + kLateness);
  EXPECT_EQ(0u, got);
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, ReadersNeedAPushFirst) {
  ScriptedServer server("127.0.0.1");
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  HTTP_PUSH_PART received{};
  char chunk[8];
  size_t got = 0;
  EXPECT_EQ(HTTP_ERR_STATE, http_push_next_part(session, &received, 100));
  EXPECT_EQ(HTTP_ERR_STATE, http_push_read(session, chunk, sizeof chunk, &got, 100));
  EXPECT_EQ(0, http_close_session(session));
}

// ---- delimiter forms ------------------------------------------------------

namespace {

struct DelimiterForm {
  const char* name;
  const char* contentType;
  const char* delimiterLine;  // as it stands in the stream, before CR LF
  const char* preamble;       // text before the first delimiter
};

// RFC 2046 streams whose boundary itself begins with "--", with and
// without a preamble, next to the usual camera forms.
const DelimiterForm kDelimiterForms[] = {
    {"RfcDashedQuoted", "multipart/x-mixed-replace; boundary=\"--zz\"", "----zz", ""},
    {"RfcDashedWithBlank", "multipart/x-mixed-replace; boundary=\"--b q\"", "----b q", ""},
    {"RfcBrowserStyle", "multipart/x-mixed-replace; boundary=----WebKitFormBoundary7MA4YWxkTrZu0gW",
     "------WebKitFormBoundary7MA4YWxkTrZu0gW", ""},
    {"RfcDashedAfterPreamble", "multipart/x-mixed-replace; boundary=\"--zz\"", "----zz",
     "This is a multi-part message in MIME format.\r\n\r\nIt has two lines --zz.\r\n"},
    {"PlainAfterPreamble", "multipart/x-mixed-replace; boundary=frame", "--frame",
     "preamble without a colon\r\n"},
    {"CameraDashed", "multipart/x-mixed-replace; boundary=--zz", "--zz", ""},
    {"CameraDashedAfterPreamble", "multipart/x-mixed-replace;boundary=\"--zz\"", "--zz",
     "junk before the stream\n"},
    // The camera leaves the "--" out of its lines instead.
    {"CameraBare", "multipart/x-mixed-replace;boundary=zz", "zz", ""},
    {"CameraBareAfterPreamble", "multipart/x-mixed-replace; boundary=\"zz\"", "zz",
     "junk before the stream\r\n"},
    {"PaddingAfterDelimiter", "multipart/x-mixed-replace; boundary=\"--zz\"", "----zz \t", ""},
    {"BoundaryNotLast", "multipart/x-mixed-replace; boundary=\"--b;q\"; charset=x", "----b;q", ""},
};

// Two parts, the first sized and the second delimited, then the closing
// delimiter and an epilogue.
std::string stream_of(const DelimiterForm& form) {
  const std::string line = form.delimiterLine;
  // The closing delimiter: "--" right after the delimiter, padding after.
  const std::string closing = line.substr(0, line.find_last_not_of(" \t") + 1) + "-- ";
  return std::string(form.preamble) + line +
         "\r\nContent-Type: image/jpeg\r\nContent-Length: " + std::to_string(kJpegA.size()) +
         "\r\n\r\n" + kJpegA + "\r\n" + line + "\r\nContent-Type: image/jpeg\r\n\r\n" + kJpegB +
         "\r\n" + closing + "\r\nepilogue\r\n";
}

}  // namespace

class DelimiterFormTest : public HttpClientTest,
                          public ::testing::WithParamInterface<DelimiterForm> {};

TEST_P(DelimiterFormTest, BothPartsThenTheEnd) {
  const DelimiterForm& form = GetParam();
  ScriptedServer server("127.0.0.1");
  HTTP_SESSION* session = start_push(server, push_head(form.contentType) + stream_of(form), true);
  ASSERT_NE(nullptr, session);
  ASSERT_NO_FATAL_FAILURE(expect_both_pictures(session));
  HTTP_PUSH_PART received{};
  EXPECT_EQ(HTTP_ERR_CLOSED, http_push_next_part(session, &received, 5000));
  EXPECT_EQ(0, http_close_session(session));
}

INSTANTIATE_TEST_SUITE_P(Forms, DelimiterFormTest, ::testing::ValuesIn(kDelimiterForms),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST_F(HttpClientTest, RfcDelimitersArriveByteByByte) {
  const DelimiterForm& form = kDelimiterForms[3];
  ScriptedServer server("127.0.0.1");
  server.add([&form](Connection& c) {
    c.read_head();
    c.send(push_head(form.contentType));
    c.drip(stream_of(form), std::chrono::milliseconds(0));
    c.hang();
  });
  HTTP_SESSION* session = open_push(server.port());
  ASSERT_NE(nullptr, session);
  ASSERT_NO_FATAL_FAILURE(expect_both_pictures(session));
  HTTP_PUSH_PART received{};
  EXPECT_EQ(HTTP_ERR_CLOSED, http_push_next_part(session, &received, 5000));
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, CameraStyleLinesInsideAnRfcStreamAreData) {
  // Once "----zz" delimited, a "--zz" line is a picture's bytes.
  const std::string picture = "line one\r\n--zz\r\nline three";
  ScriptedServer server("127.0.0.1");
  HTTP_SESSION* session = start_push(server,
                                     push_head("multipart/x-mixed-replace; boundary=\"--zz\"") +
                                         "----zz\r\n\r\n" + picture + "\r\n----zz\r\n",
                                     true);
  ASSERT_NE(nullptr, session);
  HTTP_PUSH_PART received{};
  ASSERT_EQ(0u, http_push_next_part(session, &received, 5000));
  EXPECT_EQ(picture, part_bytes(received));
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, PreambleOver64KiBIsAProtocolError) {
  std::string preamble;
  while (preamble.size() <= 64 * 1024) preamble += "no delimiter on this line\r\n";
  ScriptedServer server("127.0.0.1");
  HTTP_SESSION* session =
      start_push(server, push_head("multipart/x-mixed-replace; boundary=b") + preamble, true);
  ASSERT_NE(nullptr, session);
  HTTP_PUSH_PART received{};
  EXPECT_EQ(HTTP_ERR_PROTOCOL, http_push_next_part(session, &received, 5000));
  EXPECT_EQ(0, http_close_session(session));
}

// ---- the 16 MiB part limit ------------------------------------------------

namespace {

constexpr size_t kPartLimit = 16 * 1024 * 1024;

// How the bytes of a large part reach the client.
enum class Arrival { kAtOnce, kDelimiterLater, kSmallPieces };

struct LimitCase {
  size_t size;
  bool sized;  // Content-Length given
  Arrival arrival;
};

std::string limit_case_name(const LimitCase& c) {
  static const char* const kArrivals[] = {"AtOnce", "DelimiterLater", "SmallPieces"};
  std::string extra = c.size >= kPartLimit ? std::to_string(c.size - kPartLimit)
                                           : "Minus" + std::to_string(kPartLimit - c.size);
  return std::string(c.sized ? "Sized" : "Delimited") + "Limit" +
         (c.size >= kPartLimit ? "Plus" : "") + extra + kArrivals[static_cast<int>(c.arrival)];
}

// Picture-like bytes: lines, and lines that almost delimit.
std::string large_part(size_t size) {
  std::string data(size, 'p');
  for (size_t at = 1000; at + 8 < size; at += 4096) data.replace(at, 6, "\r\n--b-");
  return data;
}

void send_in_pieces(Connection& c, const std::string& bytes, size_t piece) {
  for (size_t at = 0; at < bytes.size(); at += piece) c.send(bytes.substr(at, piece));
}

}  // namespace

class PartLimitTest : public HttpClientTest, public ::testing::WithParamInterface<LimitCase> {};

TEST_P(PartLimitTest, OnlyPartsUpTo16MiBComeOut) {
  const LimitCase& c = GetParam();
  const std::string data = large_part(c.size);
  std::string head = "--b\r\nContent-Type: image/jpeg\r\n";
  if (c.sized) head += "Content-Length: " + std::to_string(c.size) + "\r\n";
  head += "\r\n";
  const std::string tail = "\r\n--b\r\n";
  ScriptedServer server("127.0.0.1");
  server.add([&](Connection& conn) {
    conn.read_head();
    conn.send(push_head("multipart/x-mixed-replace; boundary=b") + head);
    if (c.arrival == Arrival::kSmallPieces) {
      send_in_pieces(conn, data + tail, 1021);
    } else if (c.arrival == Arrival::kDelimiterLater) {
      conn.send(data);
      conn.drip(tail, std::chrono::milliseconds(5));
    } else {
      conn.send(data + tail);
    }
    conn.hang();
  });
  HTTP_SESSION* session = open_push(server.port());
  ASSERT_NE(nullptr, session);
  // 16 MiB take seconds under the thread checker: this read has the real
  // 30 s time-out.
  http_set_timeout_divisor(1);
  HTTP_PUSH_PART received{};
  uint32_t code = http_push_next_part(session, &received, 30000);
  if (c.size <= kPartLimit) {
    ASSERT_EQ(0u, code) << std::hex << code;
    ASSERT_EQ(c.size, received.ulLength);
    EXPECT_TRUE(part_bytes(received) == data);
  } else {
    EXPECT_EQ(HTTP_ERR_PROTOCOL, code) << std::hex << code;
    EXPECT_EQ(0u, received.ulLength);
  }
  EXPECT_EQ(0, http_close_session(session));
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, PartLimitTest,
    ::testing::Values(LimitCase{kPartLimit, false, Arrival::kAtOnce},
                      LimitCase{kPartLimit, false, Arrival::kDelimiterLater},
                      LimitCase{kPartLimit, false, Arrival::kSmallPieces},
                      LimitCase{kPartLimit + 1, false, Arrival::kAtOnce},
                      LimitCase{kPartLimit + 1, false, Arrival::kDelimiterLater},
                      LimitCase{kPartLimit + 1, false, Arrival::kSmallPieces},
                      LimitCase{kPartLimit + 2, false, Arrival::kSmallPieces},
                      LimitCase{kPartLimit + 3000, false, Arrival::kAtOnce},
                      LimitCase{kPartLimit + 3000, false, Arrival::kSmallPieces},
                      LimitCase{kPartLimit, true, Arrival::kAtOnce},
                      LimitCase{kPartLimit + 1, true, Arrival::kAtOnce}),
    [](const auto& instance) { return limit_case_name(instance.param); });
