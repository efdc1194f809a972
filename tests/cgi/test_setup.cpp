// The set-up parser over real loopback connections, IPv4 and IPv6: the
// requester's session is connected to a listening socket of the test, so
// getsockname and getpeername see real addresses.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTestSupport.h"
#include "kxhttp.h"

namespace {

// A listening socket on a loopback address with a port of the system's choice.
class Listener {
 public:
  explicit Listener(int family) : family_(family) {
    fd_ = socket(family, SOCK_STREAM, 0);
    if (family == AF_INET) {
      sockaddr_in a{};
      a.sin_family = AF_INET;
      a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
      ok_ = bind(fd_, reinterpret_cast<sockaddr*>(&a), sizeof(a)) == 0;
    } else {
      sockaddr_in6 a{};
      a.sin6_family = AF_INET6;
      a.sin6_addr = in6addr_loopback;
      ok_ = bind(fd_, reinterpret_cast<sockaddr*>(&a), sizeof(a)) == 0;
    }
    ok_ = ok_ && listen(fd_, 8) == 0;
    sockaddr_storage s{};
    socklen_t len = sizeof(s);
    ok_ = ok_ && getsockname(fd_, reinterpret_cast<sockaddr*>(&s), &len) == 0;
    port_ = family == AF_INET ? ntohs(reinterpret_cast<sockaddr_in*>(&s)->sin_port)
                              : ntohs(reinterpret_cast<sockaddr_in6*>(&s)->sin6_port);
  }
  ~Listener() {
    if (fd_ >= 0) close(fd_);
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  bool ok() const { return ok_; }
  unsigned short port() const { return port_; }
  const char* host() const { return family_ == AF_INET ? "127.0.0.1" : "::1"; }

 private:
  int family_;
  int fd_ = -1;
  bool ok_ = false;
  unsigned short port_ = 0;
};

struct Family {
  int family;
  const char* self;
};

template <typename T>
class Setup : public ::testing::Test {
 protected:
  camtest::PrintCapture print_;
  T r_;

  void SetUp() override { r_.usCameraType = 0; }
  void TearDown() override { CloseSession(); }

  // Connects the requester's session to a listener of the given family.
  bool Connect(Listener& l) {
    if (!l.ok()) return false;
    r_.psSession = http_open_session_to_ret(l.host(), l.port(), nullptr, 0, 0, 30000, 0);
    return r_.psSession != nullptr;
  }
  void CloseSession() {
    if (r_.psSession != nullptr) http_close_session(r_.psSession);
    r_.psSession = nullptr;
  }
  int Parse(const std::string& text) {
    std::string t = text;
    return r_.CheckCamInfo_RcvData(t.data());
  }

  // Runs fn for IPv4 and IPv6, each with a fresh connection.
  template <typename F>
  void ForBothFamilies(F fn) {
    for (const Family& f : {Family{AF_INET, "127.0.0.1"}, Family{AF_INET6, "::1"}}) {
      Listener l(f.family);
      ASSERT_TRUE(Connect(l)) << f.self;
      print_.Clear();
      fn(f);
      CloseSession();
    }
  }
};

using Requesters = ::testing::Types<CCamRequester_Cgi_Kobu_Rtp, CCamRequester_Cgi_Kobu_Http>;
TYPED_TEST_SUITE(Setup, Requesters);

const char kMulticastReply[] =
    "UID=12\naBitrate=32\naEnable=in\nsDelivery=multi\niMultiAdd1=239\niMultiAdd2=1\n"
    "iMultiAdd3=2\niMultiAdd4=4\niMultiPort=5000\n";

TYPED_TEST(Setup, MulticastWithIpv4Octets) {
  this->ForBothFamilies([this](const Family& f) {
    this->r_.iRtpPort = 4000;
    EXPECT_EQ(this->Parse(kMulticastReply), 0) << f.self;
    EXPECT_EQ(this->r_.iUid.load(), 12);
    EXPECT_EQ(this->r_.iAudioBitrate, 32);
    EXPECT_EQ(this->r_.iAudioEnable, 100);
    EXPECT_STREQ(this->r_.sDelivery, "multi");
    EXPECT_EQ(this->r_.ucMulticast, 1);
    EXPECT_STREQ(this->r_.cMultiAddr, "239.1.2.4");
    EXPECT_EQ(this->r_.iRtpPort, 5000);
    EXPECT_STREQ(this->r_.cSelfAddr, f.self);
    EXPECT_EQ(this->r_.iSelfFamily, f.family);
    EXPECT_EQ(this->print_.Count(std::string("GetSelfAddress [DEBUG] My sa_family=") +
                                 (f.family == AF_INET ? "AF_INET" : "AF_INET6") + " \n"),
              1);
    EXPECT_EQ(
        this->print_.Count(std::string("GetSelfAddress [DEBUG] My Address =") + f.self + "\n"), 1);
    EXPECT_EQ(this->print_.Count("GetMultiUniSetup [Error] SerachString iMultiAddv6=\n"), 1);
    EXPECT_EQ(this->print_.Count("GetMultiUniSetup [DEBUG] USE iMultiAdd1-4 =239.1.2.4\n"), 1);
  });
}

TYPED_TEST(Setup, ValidIpv6GroupWinsOverTheOctets) {
  this->ForBothFamilies([this](const Family& f) {
    EXPECT_EQ(this->Parse(std::string(kMulticastReply) + "iMultiAddv6=ff15::1:2\n"), 0) << f.self;
    EXPECT_STREQ(this->r_.cMultiAddr, "ff15::1:2");
    EXPECT_EQ(this->print_.Count("GetMultiUniSetup [DEBUG] USE iMultiAddv6 =ff15::1:2\n"), 1);
    EXPECT_FALSE(this->print_.Contains("USE iMultiAdd1-4"));
  });
}

TYPED_TEST(Setup, InvalidIpv6GroupFallsBackToTheOctets) {
  this->ForBothFamilies([this](const Family& f) {
    EXPECT_EQ(this->Parse(std::string(kMulticastReply) + "iMultiAddv6=ff15::zz\n"), 0) << f.self;
    EXPECT_STREQ(this->r_.cMultiAddr, "239.1.2.4");
    EXPECT_FALSE(this->print_.Contains("SerachString iMultiAddv6"));
    EXPECT_EQ(this->print_.Count("GetMultiUniSetup [DEBUG] USE iMultiAdd1-4 =239.1.2.4\n"), 1);
  });
}

TYPED_TEST(Setup, MissingOctetIsZeroAndReadingGoesOn) {
  this->ForBothFamilies([this](const Family& f) {
    EXPECT_EQ(this->Parse("UID=1\nsDelivery=multi\niMultiAdd1=239\niMultiAdd2=9\n"
                          "iMultiAdd4=7\niMultiPort=6002\n"),
              0)
        << f.self;
    EXPECT_STREQ(this->r_.cMultiAddr, "239.9.0.7");
    EXPECT_EQ(this->print_.Count("GetMultiUniSetup [Error] SearchNumber iMultiAdd3=0\n"), 1);
    EXPECT_EQ(this->r_.iRtpPort, 6002);
  });
}

TYPED_TEST(Setup, MulticastWithoutPortFails) {
  this->ForBothFamilies([this](const Family& f) {
    this->r_.iRtpPort = 4000;
    EXPECT_EQ(this->Parse("UID=1\nsDelivery=multi\niMultiAdd1=239\n"), -1) << f.self;
    EXPECT_EQ(this->print_.Count("GetMultiUniSetup [Error] SearchNumber iMultiPort=4000\n"), 1);
    EXPECT_EQ(this->r_.iRtpPort, 4000);
  });
}

TYPED_TEST(Setup, UnicastStoresThePeerFamily) {
  this->ForBothFamilies([this](const Family& f) {
    strcpy(this->r_.cMultiAddr, "old");
    this->r_.ucMulticast = 1;
    EXPECT_EQ(this->Parse("UID=5\naBitrate=16\naEnable=0\nsDelivery=uni\n"), 0) << f.self;
    EXPECT_EQ(this->r_.ucMulticast, 0);
    EXPECT_STREQ(this->r_.cMultiAddr, "");
    EXPECT_EQ(this->r_.iPeerFamily, f.family);
    EXPECT_STREQ(this->r_.cSelfAddr, f.self);
    EXPECT_EQ(this->print_.Count(std::string("GetMultiUniSetup [DEBUG] sa_family=") +
                                 (f.family == AF_INET ? "AF_INET" : "AF_INET6") + " \n"),
              1);
  });
}

TYPED_TEST(Setup, UniManualWithAudioInPort) {
  this->ForBothFamilies([this](const Family& f) {
    EXPECT_EQ(this->Parse("UID=5\nsDelivery=uni_manual\niUniPort=6000\naInPort=6100\n"), 0)
        << f.self;
    EXPECT_EQ(this->r_.iUniPort, 6000);
    EXPECT_EQ(this->r_.iAudioInPort, 6100);
    EXPECT_EQ(this->r_.iPeerFamily, f.family);
  });
}

TYPED_TEST(Setup, UniManualWithoutAudioInPortTakesUniPortPlus1000) {
  this->ForBothFamilies([this](const Family& f) {
    EXPECT_EQ(this->Parse("UID=5\nsDelivery=uni_manual\niUniPort=6000\n"), 0) << f.self;
    EXPECT_EQ(this->r_.iAudioInPort, 7000);
    EXPECT_EQ(this->print_.Count("GetMultiUniSetup [Error] SearchNumber aInPort=7000\n"), 1);
  });
}

TYPED_TEST(Setup, UniManualWithoutUniPortFails) {
  this->ForBothFamilies([this](const Family& f) {
    this->r_.iUniPort = 11;
    EXPECT_EQ(this->Parse("UID=5\nsDelivery=uni_manual\n"), -1) << f.self;
    EXPECT_EQ(this->print_.Count("GetMultiUniSetup [Error] SearchNumber iUniPort=11\n"), 1);
  });
}

TYPED_TEST(Setup, RecorderIsUnicastWhateverItsReplySays) {
  this->r_.usCameraType = 31;
  this->ForBothFamilies([this](const Family& f) {
    EXPECT_EQ(this->Parse(kMulticastReply), 0) << f.self;
    EXPECT_STREQ(this->r_.sDelivery, "uni");
    EXPECT_EQ(this->r_.ucMulticast, 0);
    EXPECT_EQ(this->r_.iAudioBitrate, 32);
    EXPECT_EQ(this->r_.iAudioEnable, 1);
    EXPECT_EQ(this->r_.iPeerFamily, f.family);
  });
}

TYPED_TEST(Setup, SelfAddressOfAnotherFamilyIsRefused) {
  sockaddr_storage s{};
  s.ss_family = AF_UNIX;
  EXPECT_EQ(this->r_.GetSelfAddress(&s), -1);
  EXPECT_EQ(
      this->print_.Count("GetSelfAddress [Error] My sa_family=" + std::to_string(AF_UNIX) + " \n"),
      1);
}

TYPED_TEST(Setup, SelfAddressConvertsBothFamilies) {
  sockaddr_storage s{};
  auto* v4 = reinterpret_cast<sockaddr_in*>(&s);
  v4->sin_family = AF_INET;
  inet_pton(AF_INET, "127.0.0.1", &v4->sin_addr);
  EXPECT_EQ(this->r_.GetSelfAddress(&s), 0);
  EXPECT_STREQ(this->r_.cSelfAddr, "127.0.0.1");
  s = sockaddr_storage{};
  auto* v6 = reinterpret_cast<sockaddr_in6*>(&s);
  v6->sin6_family = AF_INET6;
  v6->sin6_addr = in6addr_loopback;
  EXPECT_EQ(this->r_.GetSelfAddress(&s), 0);
  EXPECT_STREQ(this->r_.cSelfAddr, "::1");
  EXPECT_EQ(this->r_.iSelfFamily, AF_INET6);
}

// The parser reaches the own address and the delivery set-up through the
// virtual members.
template <typename Base>
class Counting : public Base {
 public:
  int iSelf = 0, iMultiUni = 0;
  int GetSelfAddress(sockaddr_storage* a) override {
    ++iSelf;
    return Base::GetSelfAddress(a);
  }
  int GetMultiUniSetup(char* t) override {
    ++iMultiUni;
    return Base::GetMultiUniSetup(t);
  }
};

TYPED_TEST(Setup, ParserCallsTheVirtualMembers) {
  Listener l(AF_INET);
  ASSERT_TRUE(l.ok());
  Counting<TypeParam> c;
  c.usCameraType = 0;
  c.psSession = http_open_session_to_ret(l.host(), l.port(), nullptr, 0, 0, 30000, 0);
  ASSERT_NE(c.psSession, nullptr);
  char text[] = "UID=5\nsDelivery=uni\n";
  EXPECT_EQ(c.CheckCamInfo_RcvData(text), 0);
  EXPECT_EQ(c.iSelf, 1);
  EXPECT_EQ(c.iMultiUni, 1);
  http_close_session(c.psSession);
  c.psSession = nullptr;
}

}  // namespace
