// One request on its own connection: result codes, body, time-outs and
// failures, against the scripted loopback server.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <string>
#include <thread>

#include "CamChildServer.h"
#include "http_fixture.h"

using namespace httptest;
using std::chrono::steady_clock;

namespace {

struct StatusCase {
  const char* statusLine;
  uint32_t expected;
};

// Each result class the requester tells apart.
const StatusCase kStatusCases[] = {
    {"HTTP/1.0 200 OK", 0x08000200u},        {"HTTP/1.0 204 No Content", 0x08000204u},
    {"HTTP/1.0 302 Found", 0x08000302u},     {"HTTP/1.0 401 Unauthorized", 0x08000401u},
    {"HTTP/1.0 404 Not Found", 0x08000404u}, {"HTTP/1.1 500 Internal Server Error", 0x08000500u},
};

std::string answered(ScriptedServer& server, const std::string& bytes) {
  server.add([&server, bytes](Connection& c) {
    server.record(c.read_head());
    c.send(bytes);
  });
  return bytes;
}

// The result of one GET that a camera answers with bytes and then closes;
// the body as stored in *psBody.
uint32_t CodeOfAnswer(const std::string& bytes, std::string* psBody = nullptr) {
  ScriptedServer server("127.0.0.1");
  answered(server, bytes);
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  EXPECT_NE(nullptr, session);
  if (session == nullptr) return 0;
  ReceiveBuffer buffer;
  const uint32_t code = get(session, "/x", buffer);
  if (psBody != nullptr) *psBody = buffer.text();
  EXPECT_EQ(0, http_close_session(session));
  return code;
}

}  // namespace

class ResultClassTest : public HttpClientTest, public ::testing::WithParamInterface<StatusCase> {};

TEST_P(ResultClassTest, StatusComesBackAsThreeHexDigits) {
  ScriptedServer server("127.0.0.1");
  std::string body = GetParam().expected == 0x08000204u ? "" : "uid=17\n";
  answered(server, response(GetParam().statusLine, body));
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  ReceiveBuffer buffer;
  EXPECT_EQ(GetParam().expected, get(session, "/cgi-bin/camctrl?uid=1", buffer));
  EXPECT_EQ(body, buffer.text());
  EXPECT_EQ(body.size(), buffer.record.ulLength);
  EXPECT_EQ(0, http_close_session(session));
}

INSTANTIATE_TEST_SUITE_P(Classes, ResultClassTest, ::testing::ValuesIn(kStatusCases));

TEST_F(HttpClientTest, RequestFormCarriesMethodUrlVersionAndHeaders) {
  ScriptedServer server("127.0.0.1");
  answered(server, response("HTTP/1.0 200 OK", "ok"));
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  EXPECT_EQ(HTTP_RESULT_OK, http_set_url(session, "GET", "/cgi-bin/x?a=1&b=2", "HTTP/1.0"));
  EXPECT_EQ(HTTP_RESULT_OK, http_add_header(session, "Connection", "Keep-Alive"));
  EXPECT_EQ(HTTP_RESULT_OK, http_add_header(session, "Host", "127.0.0.1"));
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, http_do_request(session, &buffer.record, 5));
  ASSERT_TRUE(server.wait_idle());
  ASSERT_EQ(1u, server.requests().size());
  EXPECT_EQ("GET /cgi-bin/x?a=1&b=2 HTTP/1.0\r\nConnection: Keep-Alive\r\nHost: 127.0.0.1\r\n\r\n",
            server.requests()[0]);
  EXPECT_EQ(200u, buffer.record.ulStatus);
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, SessionRecordBeginsWithHostAndPort) {
  ScriptedServer server("127.0.0.1");
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  EXPECT_STREQ("127.0.0.1", session->pcHost);
  EXPECT_EQ(server.port(), session->usPort);
  EXPECT_GE(sizeof(HTTP_SESSION), static_cast<size_t>(HTTP_SESSION_INFO_SIZE));
  // The requester reads the socket's own and peer address from it.
  int fd = http_session_socket(session);
  ASSERT_GE(fd, 0);
  sockaddr_in peer{};
  socklen_t length = sizeof peer;
  ASSERT_EQ(0, getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &length));
  EXPECT_EQ(server.port(), ntohs(peer.sin_port));
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, Ipv6LoopbackWorksAndHostHasBrackets) {
  ScriptedServer server("::1");
  answered(server, response("HTTP/1.0 200 OK", "v6"));
  HTTP_SESSION* session = open_session("::1", server.port());
  ASSERT_NE(nullptr, session);
  EXPECT_STREQ("::1", session->pcHost);
  EXPECT_EQ(HTTP_RESULT_OK, http_set_url(session, "GET", "/v6", "HTTP/1.0"));
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, http_do_request(session, &buffer.record, 5));
  EXPECT_EQ("v6", buffer.text());
  ASSERT_TRUE(server.wait_idle());
  // No Host set by the caller: the client names the camera, bracketed.
  EXPECT_EQ("[::1]:" + std::to_string(server.port()), header_value(server.requests()[0], "Host"));
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, RefusedConnectionOpensNothingAndLeavesNoDescriptor) {
  camtest::RefusingPort refusing4("127.0.0.1");
  camtest::RefusingPort refusing6("::1");
  int before = camtest::OpenFdCount();
  EXPECT_EQ(nullptr, open_session("127.0.0.1", refusing4.port()));
  EXPECT_EQ(nullptr, open_session("::1", refusing6.port()));
  EXPECT_EQ(before, camtest::SettledFdCount(before));
}

TEST_F(HttpClientTest, BadAddressOpensNothing) {
  EXPECT_EQ(nullptr, open_session("not-an-address", 80));
  EXPECT_EQ(nullptr, open_session("", 80));
  EXPECT_EQ(nullptr, open_session(nullptr, 80));
}

TEST_F(HttpClientTest, ConnectTimeOutWhenNobodyAccepts) {
  // A listener that never accepts, with its queue filled, drops the SYN.
  ScriptedServer server("127.0.0.1", false);
  std::vector<int> fillers;
  for (int i = 0; i < 4; ++i) {
    int fd = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(server.port());
    inet_pton(AF_INET, "127.0.0.1", &address.sin_addr);
    connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
    fillers.push_back(fd);
  }
  int before = camtest::OpenFdCount();
  auto start = steady_clock::now();
  HTTP_SESSION* session =
      http_open_session_to_ret("127.0.0.1", server.port(), nullptr, 0, 0, 3000, 0);
  auto elapsed = steady_clock::now() - start;
  EXPECT_EQ(nullptr, session);
  EXPECT_GE(elapsed, std::chrono::milliseconds(3000 / kDivisor));
  EXPECT_LT(elapsed, std::chrono::milliseconds(3000 / kDivisor) + kLateness);
  EXPECT_EQ(before, camtest::SettledFdCount(before));
  for (int fd : fillers) close(fd);
}

TEST_F(HttpClientTest, SilentCameraTimesOutOnTime) {
  ScriptedServer server("127.0.0.1");
  server.add([](Connection& c) { c.hang(); });
  int before = camtest::OpenFdCount();
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  ReceiveBuffer buffer;
  uint32_t code = get_within_timeout(session, "/silent", buffer);
  EXPECT_EQ(HTTP_ERR_TIMEOUT, code);
  EXPECT_TRUE(is_timeout(code));
  EXPECT_EQ(0, http_close_session(session));
  ASSERT_TRUE(server.wait_idle());
  EXPECT_EQ(before, camtest::SettledFdCount(before));
}

TEST_F(HttpClientTest, DrippingAnswerIsBoundedByTheWholeTimeOut) {
  ScriptedServer server("127.0.0.1");
  server.add([](Connection& c) {
    c.read_head();
    c.drip(response("HTTP/1.0 200 OK", std::string(4000, 'x')), std::chrono::milliseconds(20));
  });
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_ERR_TIMEOUT, get_within_timeout(session, "/drip", buffer));
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, LongBodyIsCutToEndInZeroInsideTheBuffer) {
  ScriptedServer server("127.0.0.1");
  std::string body;
  for (int i = 0; i < 3000; ++i) body += static_cast<char>('a' + i % 26);
  answered(server, response("HTTP/1.0 200 OK", body));
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, get(session, "/long", buffer));
  EXPECT_EQ('\0', buffer.storage[2047]);
  EXPECT_EQ(body.substr(0, 2047), buffer.text());
  EXPECT_EQ(2047u, buffer.record.ulLength);
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, BodyWithoutLengthIsReadToTheClose) {
  ScriptedServer server("127.0.0.1");
  answered(server,
           response("HTTP/1.0 200 OK", "uid=5\nmode=1\n", {"Content-Type: text/plain"}, false));
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, get(session, "/nolength", buffer));
  EXPECT_EQ("uid=5\nmode=1\n", buffer.text());
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, ContentLengthIsHonouredWhenTheServerStaysOpen) {
  ScriptedServer server("127.0.0.1");
  server.add([](Connection& c) {
    c.read_head();
    c.send(response("HTTP/1.0 200 OK", "abc") + "trailing bytes not part of the body");
    c.hang();
  });
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  ReceiveBuffer buffer;
  auto start = steady_clock::now();
  EXPECT_EQ(HTTP_RESULT_STATUS200, get(session, "/length", buffer));
  EXPECT_LT(steady_clock::now() - start, kScaledRequestTimeout);
  EXPECT_EQ("abc", buffer.text());
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, StatusLineThatIsNotHttpIsAProtocolError) {
  ScriptedServer server("127.0.0.1");
  answered(server, "SSH-2.0-OpenServer\r\n");
  int before = camtest::OpenFdCount();
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  ReceiveBuffer buffer;
  uint32_t code = get(session, "/x", buffer);
  EXPECT_EQ(HTTP_ERR_PROTOCOL, code);
  EXPECT_NE(0u, code & 0xF000);
  EXPECT_FALSE(is_timeout(code));
  EXPECT_EQ(0, http_close_session(session));
  ASSERT_TRUE(server.wait_idle());
  EXPECT_EQ(before, camtest::SettledFdCount(before));
}

TEST_F(HttpClientTest, CloseInTheMiddleOfTheBodyIsReported) {
  ScriptedServer server("127.0.0.1");
  answered(server, "HTTP/1.0 200 OK\r\nContent-Length: 100\r\n\r\nonly a part");
  int before = camtest::OpenFdCount();
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  ReceiveBuffer buffer;
  uint32_t code = get(session, "/x", buffer);
  EXPECT_EQ(HTTP_ERR_CLOSED, code);
  EXPECT_FALSE(is_timeout(code));
  EXPECT_EQ("only a part", buffer.text());
  EXPECT_EQ(0, http_close_session(session));
  ASSERT_TRUE(server.wait_idle());
  EXPECT_EQ(before, camtest::SettledFdCount(before));
}

TEST_F(HttpClientTest, CloseInTheMiddleOfTheHeadIsReported) {
  EXPECT_EQ(HTTP_ERR_CLOSED, CodeOfAnswer("HTTP/1.0 200 OK\r\nContent-Le"));
}

TEST_F(HttpClientTest, BadCallsReturnErrorsWithAnF000Bit) {
  ScriptedServer server("127.0.0.1");
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  ReceiveBuffer buffer;
  // No URL set yet: the request is out of order.
  EXPECT_EQ(HTTP_ERR_STATE, http_do_request(session, &buffer.record, 5));
  const uint32_t failures[] = {
      http_set_url(nullptr, "GET", "/", "HTTP/1.0"),
      http_set_url(session, "GET", nullptr, "HTTP/1.0"),
      http_set_url(session, "GET", "/a b", "HTTP/1.0"),
      http_set_url(session, "G ET", "/", "HTTP/1.0"),
      http_add_header(session, "Host", "a\r\nInjected: 1"),
      http_add_header(session, "Bad Name", "x"),
      http_add_header(nullptr, "Host", "x"),
      http_set_auth(session, nullptr, "x"),
      http_set_auth(nullptr, "u", "p"),
      http_do_request(nullptr, &buffer.record, 5),
      http_do_request(session, nullptr, 5),
      http_do_server_push(nullptr, 5),
  };
  for (uint32_t code : failures) {
    EXPECT_NE(0u, code & 0xF000) << std::hex << code;
    EXPECT_FALSE(is_timeout(code)) << std::hex << code;
  }
  EXPECT_EQ(-1, http_close_session(nullptr));
  EXPECT_EQ(-1, http_session_socket(nullptr));
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, SessionsOnManyThreadsAtOnce) {
  ScriptedServer server("127.0.0.1");
  server.add([&server](Connection& c) {
    std::string head = c.read_head();
    server.record(head);
    std::string path = head.substr(4, head.find(' ', 4) - 4);
    c.send(response("HTTP/1.0 200 OK", path));
  });
  std::vector<std::thread> threads;
  std::atomic<int> good{0};
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&server, &good, t] {
      for (int i = 0; i < 10; ++i) {
        HTTP_SESSION* session = open_session("127.0.0.1", server.port());
        if (session == nullptr) continue;
        std::string path = "/t" + std::to_string(t) + "/" + std::to_string(i);
        ReceiveBuffer buffer;
        http_set_url(session, "GET", path.c_str(), "HTTP/1.0");
        if (http_do_request(session, &buffer.record, 5) == HTTP_RESULT_STATUS200 &&
            buffer.text() == path) {
          ++good;
        }
        http_close_session(session);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(40, good.load());
}

TEST_F(HttpClientTest, SecondRequestOnASessionGoesOnANewConnection) {
  ScriptedServer server("127.0.0.1");
  answered(server, response("HTTP/1.0 200 OK", "again"));
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  ReceiveBuffer first, second;
  EXPECT_EQ(HTTP_RESULT_STATUS200, get(session, "/one", first));
  EXPECT_EQ(HTTP_RESULT_STATUS200, http_do_request(session, &second.record, 5));
  EXPECT_EQ("again", second.text());
  EXPECT_EQ(0, http_close_session(session));
  ASSERT_TRUE(server.wait_idle());
  EXPECT_EQ(2, server.accepted());
}

TEST_F(HttpClientTest, InterimAnswerIsPassedOver) {
  ScriptedServer server("127.0.0.1");
  answered(server, "HTTP/1.1 100 Continue\r\n\r\n" + response("HTTP/1.1 404 Not Found", "none"));
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  ReceiveBuffer buffer;
  EXPECT_EQ(0x08000404u, get(session, "/x", buffer));
  EXPECT_EQ("none", buffer.text());
  EXPECT_EQ(0, http_close_session(session));
}

// Answers whose body cannot be delimited: the length or a chunk size is
// not a number.
TEST_F(HttpClientTest, BodyThatCannotBeDelimitedIsAProtocolError) {
  const char* const kAnswers[] = {
      "HTTP/1.0 200 OK\r\nContent-Length: 12abc\r\n\r\nbody",
      "HTTP/1.0 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nUID=12\r\n0\r\n\r\n",
  };
  for (const char* pcAnswer : kAnswers) {
    EXPECT_EQ(HTTP_ERR_PROTOCOL, CodeOfAnswer(pcAnswer)) << pcAnswer;
  }
}

// A camera that answers in chunks (Transfer-Encoding: chunked): the body is
// the chunks' data, joined, whatever the chunk sizes, extensions and
// trailer fields; the last chunk ends it, not the close.
TEST_F(HttpClientTest, ChunkedBodyIsTheChunksJoined) {
  ScriptedServer server("127.0.0.1");
  server.add([](Connection& c) {
    c.read_head();
    c.send(
        "HTTP/1.0 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
        "5\r\nUID=1\r\n"
        "A;name=value\r\n2\r\niMultiP\r\n"
        "a \r\nort=5000\r\n\r\n"
        "0\r\nTrailer-Field: x\r\n\r\n");
    c.hang();
  });
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  ReceiveBuffer buffer;
  auto start = steady_clock::now();
  EXPECT_EQ(HTTP_RESULT_STATUS200, get(session, "/cgi-bin/getuid", buffer));
  EXPECT_LT(steady_clock::now() - start, kScaledRequestTimeout);
  EXPECT_EQ("UID=12\r\niMultiPort=5000\r\n", buffer.text());
  EXPECT_EQ(25u, buffer.record.ulLength);
  EXPECT_EQ(0, http_close_session(session));
}

// Chunks beyond the buffer are read to their last chunk; the body is cut as
// a long one is.
TEST_F(HttpClientTest, LongChunkedBodyIsCutToEndInZeroInsideTheBuffer) {
  ScriptedServer server("127.0.0.1");
  std::string body;
  for (int i = 0; i < 3000; ++i) body += static_cast<char>('a' + i % 26);
  std::string wire = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
  for (size_t at = 0; at < body.size(); at += 100) {
    char size[16];
    snprintf(size, sizeof size, "%zx\r\n", std::min<size_t>(100, body.size() - at));
    wire += size + body.substr(at, 100) + "\r\n";
  }
  wire += "0\r\n\r\n";
  server.add([wire](Connection& c) {
    c.read_head();
    c.send(wire);
    c.hang();
  });
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, get(session, "/long", buffer));
  EXPECT_EQ(body.substr(0, 2047), buffer.text());
  EXPECT_EQ(2047u, buffer.record.ulLength);
  EXPECT_EQ(0, http_close_session(session));
}

// A camera that stops in the middle of its chunks and keeps the
// connection open: the request ends at its time-out, with what came.
TEST_F(HttpClientTest, ChunkedBodyThatStopsTimesOutOnTime) {
  ScriptedServer server("127.0.0.1");
  server.add([](Connection& c) {
    c.read_head();
    c.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n6\r\nUID=12\r\n3\r\nsDe");
    c.hang();
  });
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_ERR_TIMEOUT, get_within_timeout(session, "/x", buffer));
  EXPECT_EQ("UID=12sDe", buffer.text());
  EXPECT_EQ(0, http_close_session(session));
}

// A close before the last chunk cuts the body short, as one before the
// bytes of its Content-Length does.
TEST_F(HttpClientTest, CloseBeforeTheLastChunkIsReported) {
  std::string sBody;
  EXPECT_EQ(
      HTTP_ERR_CLOSED,
      CodeOfAnswer("HTTP/1.0 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n6\r\nUID=12\r\n", &sBody));
  EXPECT_EQ("UID=12", sBody);
}

TEST_F(HttpClientTest, BareLineFeedsAreAccepted) {
  std::string sBody;
  EXPECT_EQ(HTTP_RESULT_STATUS200,
            CodeOfAnswer("HTTP/1.0 200 OK\nContent-Length: 3\n\nabc", &sBody));
  EXPECT_EQ("abc", sBody);
}

TEST_F(HttpClientTest, ServerThatClosesWithoutAnswerIsReported) {
  ScriptedServer server("127.0.0.1");
  server.add([](Connection& c) { c.read_head(); });
  int before = camtest::OpenFdCount();
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  ReceiveBuffer buffer;
  uint32_t code = get(session, "/x", buffer);
  EXPECT_NE(0u, code & 0xF000) << std::hex << code;
  EXPECT_FALSE(is_timeout(code));
  EXPECT_EQ(0, http_close_session(session));
  ASSERT_TRUE(server.wait_idle());
  EXPECT_EQ(before, camtest::SettledFdCount(before));
}
