// Authentication as the camera asks for it: Basic, and Digest with MD5 and
// SHA-256, each answered on a new connection after the 401.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <nettle/base64.h>
#include <sys/socket.h>
#include <unistd.h>

#include "digest_check.h"
#include "http_fixture.h"

using namespace httptest;

namespace {

const char kUser[] = "admin";
const char kPassword[] = "pa:ss w\"rd";
const char kRealm[] = "camera@127.0.0.1";
const char kNonce[] = "dcd98b7102dd2f0e8b11d0f600bfb0c093";
const char kOpaque[] = "5ccc069c403ebaf9f0171e9517f40e41";

std::string base64(const std::string& text) {
  std::string out(BASE64_ENCODE_RAW_LENGTH(text.size()), '\0');
  base64_encode_raw(&out[0], text.size(), reinterpret_cast<const uint8_t*>(text.data()));
  return out;
}

// First connection: the challenge. Second: 200 only for a right answer.
void script_digest(ScriptedServer& server, const std::string& algorithm, const std::string& uri) {
  server.add([&server, algorithm](Connection& c) {
    server.record(c.read_head());
    c.send(response("HTTP/1.0 401 Unauthorized", "denied",
                    {"WWW-Authenticate: Digest realm=\"" + std::string(kRealm) +
                     "\", qop=\"auth,auth-int\", algorithm=" + algorithm + ", nonce=\"" + kNonce +
                     "\", opaque=\"" + kOpaque + "\""}));
  });
  server.add([&server, algorithm, uri](Connection& c) {
    std::string head = c.read_head();
    server.record(head);
    auto p = digest_parameters(header_value(head, "Authorization"));
    std::string expected = digest_response(algorithm, kUser, kRealm, kPassword, "GET", uri, kNonce,
                                           p["nc"], p["cnonce"]);
    bool good = p["username"] == kUser && p["realm"] == kRealm && p["nonce"] == kNonce &&
                p["uri"] == uri && p["qop"] == "auth" && p["nc"] == "00000001" &&
                p["cnonce"].size() >= 8 && p["opaque"] == kOpaque && p["algorithm"] == algorithm &&
                p["response"] == expected;
    c.send(good ? response("HTTP/1.0 200 OK", "welcome")
                : response("HTTP/1.0 401 Unauthorized", "",
                           {"WWW-Authenticate: Digest realm=\"r\", nonce=\"again\", qop=auth"}));
  });
}

}  // namespace

// The test's own arithmetic against the worked example of RFC 7616 3.9.1.
TEST(DigestArithmetic, MatchesTheRfcExample) {
  const char* nonce = "7ypf/xlj9XXwfDPEoM4URrv/xwf94BcCAzFZH4GiTo0v";
  const char* cnonce = "f2/wE4q74E6zIJEtWaHKaf5wv/H5QzzpXusqGemxURZJ";
  EXPECT_EQ("8ca523f5e9506fed4657c9700eebdbec",
            digest_response("MD5", "Mufasa", "http-auth@example.org", "Circle of Life", "GET",
                            "/dir/index.html", nonce, "00000001", cnonce));
  EXPECT_EQ("753927fa0e85d155564e2e272a28d1802ca10daf4496794697cf8db5856cb6c1",
            digest_response("SHA-256", "Mufasa", "http-auth@example.org", "Circle of Life", "GET",
                            "/dir/index.html", nonce, "00000001", cnonce));
}

class DigestTest : public HttpClientTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(DigestTest, ChallengeIsAnsweredOnANewConnection) {
  ScriptedServer server("127.0.0.1");
  script_digest(server, GetParam(), "/cgi-bin/camctrl?uid=3");
  int before = camtest::OpenFdCount();
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  EXPECT_EQ(HTTP_RESULT_OK, http_set_auth(session, kUser, kPassword));
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, get(session, "/cgi-bin/camctrl?uid=3", buffer));
  EXPECT_EQ("welcome", buffer.text());
  EXPECT_EQ(0, http_close_session(session));
  ASSERT_TRUE(server.wait_idle());
  EXPECT_EQ(2, server.accepted());
  // Credentials are never sent before the camera asks for them.
  EXPECT_EQ("", header_value(server.requests()[0], "Authorization"));
  EXPECT_EQ(before, camtest::SettledFdCount(before));
}

INSTANTIATE_TEST_SUITE_P(Algorithms, DigestTest, ::testing::Values("MD5", "SHA-256"));

TEST_F(HttpClientTest, DigestOverIpv6) {
  ScriptedServer server("::1");
  script_digest(server, "SHA-256", "/x");
  HTTP_SESSION* session = open_session("::1", server.port());
  ASSERT_NE(nullptr, session);
  EXPECT_EQ(HTTP_RESULT_OK, http_set_auth(session, kUser, kPassword));
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, get(session, "/x", buffer));
  EXPECT_EQ(0, http_close_session(session));
}

TEST_F(HttpClientTest, StrongestChallengeIsChosen) {
  ScriptedServer server("127.0.0.1");
  server.add([&server](Connection& c) {
    server.record(c.read_head());
    c.send(
        response("HTTP/1.0 401 Unauthorized", "",
                 {"WWW-Authenticate: Basic realm=\"cam\"",
                  "WWW-Authenticate: Digest realm=\"cam\", nonce=\"n1\", qop=auth, algorithm=MD5",
                  "WWW-Authenticate: Digest realm=\"cam\", nonce=\"n2\", qop=auth, "
                  "algorithm=SHA-256"}));
  });
  server.add([&server](Connection& c) {
    server.record(c.read_head());
    c.send(response("HTTP/1.0 200 OK", ""));
  });
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  http_set_auth(session, "u", "p");
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, get(session, "/s", buffer));
  EXPECT_EQ(0, http_close_session(session));
  ASSERT_TRUE(server.wait_idle());
  auto p = digest_parameters(header_value(server.requests()[1], "Authorization"));
  EXPECT_EQ("SHA-256", p["algorithm"]);
  EXPECT_EQ("n2", p["nonce"]);
}

TEST_F(HttpClientTest, BasicChallengeIsAnswered) {
  ScriptedServer server("127.0.0.1");
  server.add([&server](Connection& c) {
    server.record(c.read_head());
    c.send(response("HTTP/1.0 401 Unauthorized", "", {"WWW-Authenticate: Basic realm=\"cam\""}));
  });
  server.add([&server](Connection& c) {
    std::string head = c.read_head();
    server.record(head);
    bool good = header_value(head, "Authorization") == "Basic " + base64("admin:secret");
    c.send(response(good ? "HTTP/1.0 200 OK" : "HTTP/1.0 401 Unauthorized", "in"));
  });
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  EXPECT_EQ(HTTP_RESULT_OK, http_set_auth(session, "admin", "secret"));
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, get(session, "/b", buffer));
  EXPECT_EQ("in", buffer.text());
  EXPECT_EQ(0, http_close_session(session));
  ASSERT_TRUE(server.wait_idle());
  EXPECT_EQ(2, server.accepted());
}

TEST_F(HttpClientTest, WrongPasswordEndsInTheSecond401) {
  ScriptedServer server("127.0.0.1");
  script_digest(server, "MD5", "/w");
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  http_set_auth(session, kUser, "wrong");
  ReceiveBuffer buffer;
  // A wrong answer meets a second 401, which is the result: no third try.
  EXPECT_EQ(0x08000401u, get(session, "/w", buffer));
  EXPECT_EQ(0, http_close_session(session));
  ASSERT_TRUE(server.wait_idle());
  EXPECT_EQ(2, server.accepted());
}

TEST_F(HttpClientTest, UnanswerableChallengeIsAnAuthError) {
  ScriptedServer server("127.0.0.1");
  server.add([&server](Connection& c) {
    server.record(c.read_head());
    c.send(response("HTTP/1.0 401 Unauthorized", "", {"WWW-Authenticate: Negotiate"}));
  });
  int before = camtest::OpenFdCount();
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  http_set_auth(session, "u", "p");
  ReceiveBuffer buffer;
  uint32_t code = get(session, "/n", buffer);
  EXPECT_EQ(HTTP_ERR_AUTH, code);
  EXPECT_FALSE(is_timeout(code));
  EXPECT_EQ(0, http_close_session(session));
  ASSERT_TRUE(server.wait_idle());
  EXPECT_EQ(before, camtest::SettledFdCount(before));
}

TEST_F(HttpClientTest, WithoutCredentialsThe401IsTheResult) {
  ScriptedServer server("127.0.0.1");
  server.add([](Connection& c) {
    c.read_head();
    c.send(response("HTTP/1.0 401 Unauthorized", "", {"WWW-Authenticate: Basic realm=\"x\""}));
  });
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  ReceiveBuffer buffer;
  EXPECT_EQ(0x08000401u, get(session, "/n", buffer));
  EXPECT_EQ(0, http_close_session(session));
  EXPECT_EQ(1, server.accepted());
}

TEST_F(HttpClientTest, RetryConnectionThatTimesOutIsAConnectTimeOut) {
  // The listener answers the first connection by hand, then its accept
  // queue is filled so that the retry's connect cannot complete.
  ScriptedServer server("127.0.0.1", false);
  HTTP_SESSION* session =
      http_open_session_to_ret("127.0.0.1", server.port(), nullptr, 0, 0, 3000, 0);
  ASSERT_NE(nullptr, session);
  int first = accept4(server.listen_fd(), nullptr, nullptr, SOCK_CLOEXEC);
  ASSERT_GE(first, 0);
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
  std::string challenge =
      response("HTTP/1.0 401 Unauthorized", "", {"WWW-Authenticate: Basic realm=\"x\""});
  ASSERT_EQ(static_cast<ssize_t>(challenge.size()),
            send(first, challenge.data(), challenge.size(), MSG_NOSIGNAL));
  http_set_auth(session, "u", "p");
  ReceiveBuffer buffer;
  uint32_t code = get(session, "/r", buffer);
  EXPECT_EQ(HTTP_ERR_TIMEOUT_CONNECT, code);
  EXPECT_TRUE(is_timeout(code));
  EXPECT_EQ(0, http_close_session(session));
  close(first);
  for (int fd : fillers) close(fd);
}

// ---- several challenges in one field --------------------------------------

namespace {

struct FieldCase {
  const char* name;
  const char* field;      // the one WWW-Authenticate value
  const char* algorithm;  // what must be answered; "Basic" for Basic
  const char* realm;
  const char* nonce;
};

// RFC 9110 11.6.1: a scheme token begins a new challenge; quoted strings
// may hold commas.
const FieldCase kFieldCases[] = {
    {"BasicThenDigestMd5",
     "Basic realm=\"x\", Digest realm=\"x\", nonce=\"n-md5\", algorithm=MD5, qop=\"auth\"", "MD5",
     "x", "n-md5"},
    {"DigestSha256ThenMd5",
     "Digest realm=\"r\", nonce=\"n-sha\", algorithm=SHA-256, qop=\"auth\", "
     "Digest realm=\"r\", nonce=\"n-md5\", algorithm=MD5, qop=\"auth\"",
     "SHA-256", "r", "n-sha"},
    {"DigestMd5ThenSha256",
     "Digest realm=\"r\", nonce=\"n-md5\", algorithm=MD5, qop=\"auth\", "
     "Digest realm=\"r\", nonce=\"n-sha\", algorithm=SHA-256, qop=\"auth\"",
     "SHA-256", "r", "n-sha"},
    {"CommasInsideQuotes",
     "Negotiate abc==, Digest realm=\"cams, floor 2\", nonce=\"a,b\", qop=\"auth,auth-int\", "
     "algorithm=SHA-256, Basic realm=\"x\"",
     "SHA-256", "cams, floor 2", "a,b"},
    {"ParametersOfALaterSchemeStayThere",
     "Digest realm=\"r\", nonce=\"n1\", qop=auth, Newauth realm=\"other\", algorithm=SHA-256, "
     "nonce=\"n2\"",
     "MD5", "r", "n1"},
    {"TwoBasics", "Basic realm=\"a\", Basic realm=\"b\"", "Basic", "a", ""},
    {"LooseBlanks",
     "Basic realm = \"x\" ,Digest   realm=\"y\" , nonce = \"n\" ,algorithm = SHA-256 ,qop=auth",
     "SHA-256", "y", "n"},
};

}  // namespace

class ChallengeFieldTest : public HttpClientTest,
                           public ::testing::WithParamInterface<FieldCase> {};

TEST_P(ChallengeFieldTest, TheStrongestChallengeOfTheFieldIsAnswered) {
  const FieldCase& c = GetParam();
  ScriptedServer server("127.0.0.1");
  server.add([&server, &c](Connection& conn) {
    server.record(conn.read_head());
    conn.send(
        response("HTTP/1.0 401 Unauthorized", "", {std::string("WWW-Authenticate: ") + c.field}));
  });
  server.add([&server, &c](Connection& conn) {
    std::string head = conn.read_head();
    server.record(head);
    std::string answer = header_value(head, "Authorization");
    bool good = false;
    if (std::string(c.algorithm) == "Basic") {
      good = answer == "Basic " + base64(std::string(kUser) + ":" + kPassword);
    } else {
      auto p = digest_parameters(answer);
      good = answer.compare(0, 7, "Digest ") == 0 && p["algorithm"] == c.algorithm &&
             p["realm"] == c.realm && p["nonce"] == c.nonce && p["qop"] == "auth" &&
             p["response"] == digest_response(c.algorithm, kUser, c.realm, kPassword, "GET", "/f",
                                              c.nonce, p["nc"], p["cnonce"]);
    }
    conn.send(good ? response("HTTP/1.0 200 OK", "in") : response("HTTP/1.0 403 Forbidden", ""));
  });
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  EXPECT_EQ(HTTP_RESULT_OK, http_set_auth(session, kUser, kPassword));
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, get(session, "/f", buffer));
  EXPECT_EQ(0, http_close_session(session));
  ASSERT_TRUE(server.wait_idle());
  EXPECT_EQ(2, server.accepted());
}

INSTANTIATE_TEST_SUITE_P(Fields, ChallengeFieldTest, ::testing::ValuesIn(kFieldCases),
                         [](const auto& instance) { return std::string(instance.param.name); });
