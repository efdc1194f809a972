// The client against real servers of the system on loopback: requests
// through a forwarding proxy, and Digest answered to a real web server.
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "CamChildServer.h"
#include "digest_check.h"
#include "http_fixture.h"

using namespace httptest;
using namespace camtest;

namespace {

const char kUser[] = "operator";
const char kPassword[] = "cam pass";

// A push as RFC 2046 writes it, boundary "--zz": a preamble, a sized part,
// a delimited part holding a camera-style line, the closing delimiter.
const char kRfcPush[] =
    "This is a multi-part message in MIME format.\r\n"
    "----zz\r\nContent-Type: image/jpeg\r\nContent-Length: 13\r\n\r\nfirst picture\r\n"
    "----zz\r\nContent-Type: image/jpeg\r\n\r\nsecond\r\n--zz\r\npicture\r\n"
    "----zz--\r\nepilogue\r\n";

HTTP_SESSION* open_via_proxy(const char* camera, unsigned short cameraPort, const char* proxy,
                             unsigned short proxyPort) {
  return http_open_session_to_ret(camera, cameraPort, proxy, proxyPort, 0, 30000, 0);
}

unsigned short peer_port(int fd) {
  sockaddr_storage peer{};
  socklen_t length = sizeof peer;
  if (getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &length) != 0) return 0;
  if (peer.ss_family == AF_INET6) return ntohs(reinterpret_cast<sockaddr_in6*>(&peer)->sin6_port);
  return ntohs(reinterpret_cast<sockaddr_in*>(&peer)->sin_port);
}

}  // namespace

// ---- the request as a proxy receives it ---------------------------------

TEST_F(HttpClientTest, ThroughAProxyTheRequestLineCarriesTheAbsoluteUrl) {
  ScriptedServer proxy("127.0.0.1");
  proxy.add([&proxy](Connection& c) {
    proxy.record(c.read_head());
    c.send(response("HTTP/1.0 200 OK", "via"));
  });
  HTTP_SESSION* session = open_via_proxy("127.0.0.1", 8080, "127.0.0.1", proxy.port());
  ASSERT_NE(nullptr, session);
  EXPECT_STREQ("127.0.0.1", session->pcHost);
  EXPECT_EQ(8080, session->usPort);
  EXPECT_EQ(proxy.port(), peer_port(http_session_socket(session)));
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, get(session, "/cgi-bin/camctrl?uid=4", buffer));
  EXPECT_EQ(0, http_close_session(session));
  ASSERT_TRUE(proxy.wait_idle());
  EXPECT_EQ(
      0u, proxy.requests()[0].find("GET http://127.0.0.1:8080/cgi-bin/camctrl?uid=4 HTTP/1.0\r\n"));
}

TEST_F(HttpClientTest, ThroughAProxyAnIpv6CameraIsBracketed) {
  ScriptedServer proxy("::1");
  proxy.add([&proxy](Connection& c) {
    proxy.record(c.read_head());
    c.send(response("HTTP/1.0 200 OK", "via"));
  });
  HTTP_SESSION* session = open_via_proxy("::1", 80, "::1", proxy.port());
  ASSERT_NE(nullptr, session);
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, get(session, "/a", buffer));
  EXPECT_EQ(0, http_close_session(session));
  ASSERT_TRUE(proxy.wait_idle());
  EXPECT_EQ(0u, proxy.requests()[0].find("GET http://[::1]:80/a HTTP/1.0\r\n"));
}

TEST_F(HttpClientTest, ProxyThatRefusesOpensNothing) {
  RefusingPort refusing("127.0.0.1");
  int before = camtest::OpenFdCount();
  EXPECT_EQ(nullptr, open_via_proxy("127.0.0.1", 80, "127.0.0.1", refusing.port()));
  EXPECT_EQ(nullptr, open_via_proxy("127.0.0.1", 80, "no-such-proxy.invalid", 8080));
  EXPECT_EQ(before, camtest::SettledFdCount(before));
}

// ---- a real forwarding proxy ----------------------------------------------

class RealProxyTest : public HttpClientTest {
 protected:
  void SetUp() override {
    HttpClientTest::SetUp();
    CAMTEST_REQUIRE_PROGRAM(program, "tinyproxy");
    const auto configure = [&](unsigned short port) {
      dir_.write("tinyproxy.conf", "Port " + std::to_string(port) +
                                       "\nListen 127.0.0.1\nTimeout 30\nMaxClients 20\n"
                                       "Allow 127.0.0.1\nDisableViaHeader Yes\nLogLevel Info\n");
      return std::vector<std::string>{program, "-d", "-c", dir_.path() + "/tinyproxy.conf"};
    };
    ASSERT_TRUE(proxy_.start(configure, dir_.path() + "/tinyproxy.log", "127.0.0.1"))
        << "tinyproxy did not start: " << dir_.read("tinyproxy.log");
    proxyPort_ = proxy_.port();
  }
  void TearDown() override {
    proxy_.stop();
    HttpClientTest::TearDown();
  }

  TempDir dir_;
  ChildServer proxy_;
  unsigned short proxyPort_ = 0;
};

TEST_F(RealProxyTest, RequestReachesTheCameraThroughTheProxy) {
  ScriptedServer camera("127.0.0.1");
  camera.add([&camera](Connection& c) {
    camera.record(c.read_head());
    c.send(response("HTTP/1.0 200 OK", "uid=21\n"));
  });
  int before = camtest::OpenFdCount();
  // The proxy is named, not numbered: its name is resolved.
  HTTP_SESSION* session = open_via_proxy("127.0.0.1", camera.port(), "localhost", proxyPort_);
  ASSERT_NE(nullptr, session);
  EXPECT_EQ(proxyPort_, peer_port(http_session_socket(session)));
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, get(session, "/cgi-bin/camctrl?uid=21", buffer));
  EXPECT_EQ("uid=21\n", buffer.text());
  EXPECT_EQ(0, http_close_session(session));
  ASSERT_TRUE(camera.wait_idle());
  ASSERT_EQ(1u, camera.requests().size());
  EXPECT_EQ(0u, camera.requests()[0].find("GET /cgi-bin/camctrl?uid=21 HTTP/1."));
  EXPECT_EQ(before, camtest::SettledFdCount(before));
}

TEST_F(RealProxyTest, DigestIsAnsweredThroughTheProxy) {
  ScriptedServer camera("127.0.0.1");
  const std::string realm = "cam", nonce = "abc123";
  camera.add([&camera, realm, nonce](Connection& c) {
    camera.record(c.read_head());
    c.send(response("HTTP/1.0 401 Unauthorized", "",
                    {"WWW-Authenticate: Digest realm=\"" + realm + "\", nonce=\"" + nonce +
                     "\", qop=\"auth\", algorithm=SHA-256"}));
  });
  camera.add([&camera, realm, nonce](Connection& c) {
    std::string head = c.read_head();
    camera.record(head);
    auto p = digest_parameters(header_value(head, "Authorization"));
    bool good = p["response"] == digest_response("SHA-256", kUser, realm, kPassword, "GET",
                                                 "/ptz?preset=2", nonce, p["nc"], p["cnonce"]);
    c.send(response(good ? "HTTP/1.0 200 OK" : "HTTP/1.0 403 Forbidden", "moved"));
  });
  HTTP_SESSION* session = open_via_proxy("127.0.0.1", camera.port(), "127.0.0.1", proxyPort_);
  ASSERT_NE(nullptr, session);
  http_set_auth(session, kUser, kPassword);
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, get(session, "/ptz?preset=2", buffer));
  EXPECT_EQ("moved", buffer.text());
  // The answer went through the proxy as well.
  EXPECT_EQ(proxyPort_, peer_port(http_session_socket(session)));
  EXPECT_EQ(0, http_close_session(session));
  ASSERT_TRUE(camera.wait_idle());
  EXPECT_EQ(2, camera.accepted());
}

TEST_F(RealProxyTest, CameraThatIsDownGivesTheProxysError) {
  RefusingPort camera("127.0.0.1");
  HTTP_SESSION* session = open_via_proxy("127.0.0.1", camera.port(), "127.0.0.1", proxyPort_);
  ASSERT_NE(nullptr, session);
  ReceiveBuffer buffer;
  uint32_t code = get(session, "/x", buffer);
  // The proxy answers with a server error of its own.
  EXPECT_EQ(0x500u, code & 0x500) << std::hex << code;
  EXPECT_EQ(0, http_close_session(session));
}

// A program that takes the server's port between the probe and the server's
// own bind: the server fails to bind, and is started again on a fresh port.
TEST(ChildServerTest, ServerWhosePortWasTakenStartsOnAnother) {
  CAMTEST_REQUIRE_PROGRAM(program, "tinyproxy");
  TempDir dir;
  ChildServer proxy;
  std::vector<unsigned short> tried;
  int taker = -1;
  const auto configure = [&](unsigned short port) {
    tried.push_back(port);
    if (tried.size() == 1) {
      taker = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
      sockaddr_in address{};
      address.sin_family = AF_INET;
      address.sin_port = htons(port);
      address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
      EXPECT_EQ(0, bind(taker, reinterpret_cast<sockaddr*>(&address), sizeof address));
      EXPECT_EQ(0, listen(taker, 4));
    }
    dir.write("tinyproxy.conf", "Port " + std::to_string(port) +
                                    "\nListen 127.0.0.1\nAllow 127.0.0.1\nLogLevel Info\n");
    return std::vector<std::string>{program, "-d", "-c", dir.path() + "/tinyproxy.conf"};
  };
  EXPECT_TRUE(proxy.start(configure, dir.path() + "/tinyproxy.log", "127.0.0.1"))
      << dir.read("tinyproxy.log");
  ASSERT_EQ(2u, tried.size());
  EXPECT_NE(tried[0], tried[1]);
  EXPECT_EQ(tried[1], proxy.port());
  proxy.stop();
  EXPECT_EQ(0, proxy.port());
  close(taker);
}

// ---- a real web server with Digest ---------------------------------------

class RealWebServerTest : public HttpClientTest, public ::testing::WithParamInterface<const char*> {
 protected:
  void SetUp() override {
    HttpClientTest::SetUp();
    CAMTEST_REQUIRE_PROGRAM(program, "lighttpd");
    address_ = GetParam();
    const std::string root = dir_.path();
    const std::string bind =
        std::strchr(address_, ':') ? "[" + std::string(address_) + "]" : address_;
    dir_.write("www/secret/status.txt", "md5-protected");
    dir_.write("www/sha/status.txt", "sha256-protected");
    dir_.write("www/both/status.txt", "strongest-protected");
    dir_.write("www/push/rfc.mjpg", kRfcPush);
    dir_.write("htdigest",
               std::string(kUser) + ":cam-md5:" +
                   hash_hex("MD5", std::string(kUser) + ":cam-md5:" + kPassword) + "\n" + kUser +
                   ":cam-sha:" + hash_hex("SHA-256", std::string(kUser) + ":cam-sha:" + kPassword) +
                   "\n" + kUser + ":cam-both:" +
                   hash_hex("SHA-256", std::string(kUser) + ":cam-both:" + kPassword) + "\n");
    const auto configure = [&](unsigned short port) {
      dir_.write(
          "lighttpd.conf",
          "server.document-root = \"" + root +
              "/www\"\n"
              "server.port = " +
              std::to_string(port) +
              "\n"
              "server.bind = \"" +
              bind +
              "\"\n"
              "server.errorlog = \"" +
              root +
              "/error.log\"\n"
              "server.modules = (\"mod_auth\", \"mod_authn_file\")\n"
              "auth.backend = \"htdigest\"\n"
              "auth.backend.htdigest.userfile = \"" +
              root +
              "/htdigest\"\n"
              "auth.require = (\n"
              "  \"/secret/\" => (\"method\" => \"digest\", \"realm\" => \"cam-md5\",\n"
              "                   \"algorithm\" => \"MD5\", \"require\" => \"valid-user\"),\n"
              "  \"/sha/\" => (\"method\" => \"digest\", \"realm\" => \"cam-sha\",\n"
              "                \"algorithm\" => \"SHA-256\", \"require\" => \"valid-user\"),\n"
              // Two challenges; only the SHA-256 answer can be checked.
              "  \"/both/\" => (\"method\" => \"digest\", \"realm\" => \"cam-both\",\n"
              "                \"algorithm\" => \"MD5|SHA-256\", \"require\" => \"valid-user\"))\n"
              "mimetype.assign = (\".mjpg\" => "
              "\"multipart/x-mixed-replace; boundary=\\\"--zz\\\"\")\n");
      return std::vector<std::string>{program, "-D", "-f", root + "/lighttpd.conf"};
    };
    ASSERT_TRUE(server_.start(configure, root + "/lighttpd.log", address_))
        << "lighttpd did not start: " << dir_.read("lighttpd.log") << dir_.read("error.log");
    port_ = server_.port();
  }
  void TearDown() override {
    server_.stop();
    HttpClientTest::TearDown();
  }

  uint32_t fetch(const char* path, const char* password, ReceiveBuffer& buffer) {
    HTTP_SESSION* session = open_session(address_, port_);
    EXPECT_NE(nullptr, session);
    if (session == nullptr) return 0;
    if (password != nullptr) {
      EXPECT_EQ(HTTP_RESULT_OK, http_set_auth(session, kUser, password));
    }
    uint32_t code = get(session, path, buffer);
    EXPECT_EQ(0, http_close_session(session));
    return code;
  }

  TempDir dir_;
  ChildServer server_;
  const char* address_ = "127.0.0.1";
  unsigned short port_ = 0;
};

TEST_P(RealWebServerTest, DigestMd5) {
  int before = camtest::OpenFdCount();
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, fetch("/secret/status.txt", kPassword, buffer));
  EXPECT_EQ("md5-protected", buffer.text());
  EXPECT_EQ(before, camtest::SettledFdCount(before));
}

TEST_P(RealWebServerTest, DigestSha256) {
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, fetch("/sha/status.txt", kPassword, buffer));
  EXPECT_EQ("sha256-protected", buffer.text());
}

TEST_P(RealWebServerTest, StrongestOfTheOfferedChallengesIsAnswered) {
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, fetch("/both/status.txt", kPassword, buffer));
  EXPECT_EQ("strongest-protected", buffer.text());
}

TEST_P(RealWebServerTest, RfcPushWithAPreambleFromAFile) {
  HTTP_SESSION* session = open_session(address_, port_);
  ASSERT_NE(nullptr, session);
  http_set_url(session, "GET", "/push/rfc.mjpg", "HTTP/1.0");
  ASSERT_EQ(HTTP_RESULT_STATUS200, http_do_server_push(session, 5));
  HTTP_PUSH_PART part{};
  ASSERT_EQ(0u, http_push_next_part(session, &part, 5000));
  EXPECT_STREQ("image/jpeg", part.acContentType);
  EXPECT_EQ("first picture", part_bytes(part));
  ASSERT_EQ(0u, http_push_next_part(session, &part, 5000));
  EXPECT_EQ("second\r\n--zz\r\npicture", part_bytes(part));
  EXPECT_EQ(HTTP_ERR_CLOSED, http_push_next_part(session, &part, 5000));
  EXPECT_EQ(0, http_close_session(session));
}

TEST_P(RealWebServerTest, WrongPasswordIsRefused) {
  // The server holds back its refusal of bad credentials for about a
  // second: this one exchange runs with the real 5 s time-out.
  http_set_timeout_divisor(1);
  ReceiveBuffer buffer;
  EXPECT_EQ(0x08000401u, fetch("/secret/status.txt", "not the password", buffer));
}

TEST_P(RealWebServerTest, NoCredentialsGetsThe401) {
  ReceiveBuffer buffer;
  EXPECT_EQ(0x08000401u, fetch("/secret/status.txt", nullptr, buffer));
}

TEST_P(RealWebServerTest, MissingFileIs404) {
  ReceiveBuffer buffer;
  EXPECT_EQ(0x08000404u, fetch("/nothing-here.txt", nullptr, buffer));
}

INSTANTIATE_TEST_SUITE_P(Loopback, RealWebServerTest, ::testing::Values("127.0.0.1", "::1"),
                         [](const auto& instance) {
                           return std::string(instance.index == 0 ? "Ipv4" : "Ipv6");
                         });

TEST_F(HttpClientTest, ThroughAProxyTheAuthenticationAnswerGoesThroughTheProxyToo) {
  ScriptedServer proxy("127.0.0.1");
  proxy.add([&proxy](Connection& c) {
    proxy.record(c.read_head());
    c.send(response("HTTP/1.0 401 Unauthorized", "", {"WWW-Authenticate: Basic realm=\"cam\""}));
  });
  proxy.add([&proxy](Connection& c) {
    proxy.record(c.read_head());
    c.send(response("HTTP/1.0 200 OK", "in"));
  });
  HTTP_SESSION* session = open_via_proxy("127.0.0.1", 8080, "127.0.0.1", proxy.port());
  ASSERT_NE(nullptr, session);
  http_set_auth(session, kUser, kPassword);
  ReceiveBuffer buffer;
  EXPECT_EQ(HTTP_RESULT_STATUS200, get(session, "/cgi-bin/x", buffer));
  EXPECT_EQ(0, http_close_session(session));
  ASSERT_TRUE(proxy.wait_idle());
  ASSERT_EQ(2u, proxy.requests().size());
  EXPECT_EQ(0u, proxy.requests()[1].find("GET http://127.0.0.1:8080/cgi-bin/x HTTP/1.0\r\n"));
  EXPECT_NE("", header_value(proxy.requests()[1], "Authorization"));
}
