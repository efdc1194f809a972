// Authentication per device: Basic, Digest MD5 and Digest SHA-256 (qop=auth).
// The digest responses are computed here with nettle, from the challenge.
#include "Fixture.h"

namespace camsim_test {
namespace {

constexpr char kTarget[] = "/cgi-bin/getuid?FILE=2&vcodec=h264";

std::string DigestHeader(const Response& challenge, const std::string& user,
                         const std::string& password, const std::string& uri, bool sha256,
                         const std::string& nonceOverride = "",
                         const std::string& nc = "00000001") {
  std::string value = challenge.Header("WWW-Authenticate");
  std::string realm = AuthParam(value, "realm");
  std::string nonce = nonceOverride.empty() ? AuthParam(value, "nonce") : nonceOverride;
  auto hash = sha256 ? Sha256 : Md5;
  std::string cnonce = "0a4f113b";
  std::string ha1 = hash(user + ":" + realm + ":" + password);
  std::string ha2 = hash("GET:" + uri);
  std::string response = hash(ha1 + ":" + nonce + ":" + nc + ":" + cnonce + ":auth:" + ha2);
  return "Authorization: Digest username=\"" + user + "\", realm=\"" + realm + "\", nonce=\"" +
         nonce + "\", uri=\"" + uri + "\", algorithm=" + (sha256 ? "SHA-256" : "MD5") +
         ", qop=auth, nc=" + nc + ", cnonce=\"" + cnonce + "\", response=\"" + response +
         "\", opaque=\"" + AuthParam(value, "opaque") + "\"\r\n";
}

class AuthTest : public DeviceTest {};

TEST_F(AuthTest, BasicAcceptsTheRightPairOnly) {
  Use(7, "127.0.0.1", camsim::AuthMode::kBasic);
  Response none = Fetch(kTarget);
  EXPECT_EQ(none.status, 401);
  EXPECT_EQ(none.Header("WWW-Authenticate"), "Basic realm=\"camsim\"");
  EXPECT_EQ(Fetch(kTarget, "Authorization: Basic " + Base64("admin:password") + "\r\n").status,
            200);
  EXPECT_EQ(Fetch(kTarget, "Authorization: Basic " + Base64("admin:wrong") + "\r\n").status, 401);
  EXPECT_EQ(Fetch(kTarget, "Authorization: Basic !!notbase64\r\n").status, 401);
  EXPECT_EQ(device_->LiveUids().size(), 1u) << "refused requests issue no UID";
}

TEST_F(AuthTest, DigestMd5) {
  Use(7, "127.0.0.1", camsim::AuthMode::kDigestMd5);
  Response challenge = Fetch(kTarget);
  ASSERT_EQ(challenge.status, 401);
  std::string value = challenge.Header("WWW-Authenticate");
  EXPECT_EQ(value.rfind("Digest ", 0), 0u);
  EXPECT_EQ(AuthParam(value, "qop"), "auth");
  EXPECT_EQ(AuthParam(value, "algorithm"), "MD5");
  EXPECT_EQ(AuthParam(value, "realm"), "camsim");
  EXPECT_FALSE(AuthParam(value, "nonce").empty());
  EXPECT_EQ(Fetch(kTarget, DigestHeader(challenge, "admin", "password", kTarget, false)).status,
            200);
  EXPECT_EQ(Fetch(kTarget, DigestHeader(challenge, "admin", "nope", kTarget, false)).status, 401);
  EXPECT_EQ(Fetch(kTarget, DigestHeader(challenge, "admin", "password", kTarget, true)).status, 401)
      << "SHA-256 where MD5 was asked";
  EXPECT_EQ(Fetch(kTarget, DigestHeader(challenge, "admin", "password", kTarget, false,
                                        "00112233445566778899aabbccddeeff"))
                .status,
            401)
      << "a nonce the device never gave";
  EXPECT_EQ(Fetch(kTarget, DigestHeader(challenge, "admin", "password", "/other", false)).status,
            401)
      << "a uri other than the request's";
  EXPECT_EQ(Fetch(kTarget, "Authorization: Basic " + Base64("admin:password") + "\r\n").status,
            401);
}

TEST_F(AuthTest, DigestSha256) {
  Use(34, "127.0.0.1", camsim::AuthMode::kDigestSha256);
  const std::string target = "/cgi-bin/start.cgi?UID=-1";
  Response challenge = Fetch(target);
  ASSERT_EQ(challenge.status, 401);
  EXPECT_EQ(AuthParam(challenge.Header("WWW-Authenticate"), "algorithm"), "SHA-256");
  EXPECT_EQ(Fetch(target, DigestHeader(challenge, "admin", "password", target, true)).status, 200);
  EXPECT_EQ(Fetch(target, DigestHeader(challenge, "admin", "password", target, false)).status, 401);
  EXPECT_EQ(Fetch(target, DigestHeader(challenge, "admin", "Password", target, true)).status, 401);
}

TEST_F(AuthTest, DigestOverIpv6AndChangedCredentials) {
  Use(9, "::1", camsim::AuthMode::kDigestMd5);
  device_->SetAuth(camsim::AuthMode::kDigestMd5, "viewer", "pw");
  Response challenge = Fetch(kTarget);
  EXPECT_EQ(Fetch(kTarget, DigestHeader(challenge, "viewer", "pw", kTarget, false)).status, 200);
  EXPECT_EQ(Fetch(kTarget, DigestHeader(challenge, "admin", "password", kTarget, false)).status,
            401);
}

TEST_F(AuthTest, DigestRefusesAReplayedNonceCount) {
  Use(7, "127.0.0.1", camsim::AuthMode::kDigestMd5);
  Response challenge = Fetch(kTarget);
  std::string first = DigestHeader(challenge, "admin", "password", kTarget, false);
  EXPECT_EQ(Fetch(kTarget, first).status, 200);
  Response replay = Fetch(kTarget, first);
  EXPECT_EQ(replay.status, 401) << "the same nonce count again";
  EXPECT_EQ(AuthParam(replay.Header("WWW-Authenticate"), "stale"), "");
  EXPECT_EQ(
      Fetch(kTarget, DigestHeader(challenge, "admin", "password", kTarget, false, "", "00000003"))
          .status,
      200)
      << "a higher count";
  EXPECT_EQ(
      Fetch(kTarget, DigestHeader(challenge, "admin", "password", kTarget, false, "", "00000002"))
          .status,
      401)
      << "a lower count";
  EXPECT_EQ(
      Fetch(kTarget, DigestHeader(challenge, "admin", "password", kTarget, false, "", "zz")).status,
      401);
  EXPECT_EQ(device_->LiveUids().size(), 2u);
}

TEST_F(AuthTest, DigestNonceExpiresWithStale) {
  Use(7, "127.0.0.1", camsim::AuthMode::kDigestSha256);
  constexpr milliseconds kLifetime{150};
  device_->SetNonceLifetime(kLifetime);
  auto issued = std::chrono::steady_clock::now();
  Response challenge = Fetch(kTarget);
  EXPECT_EQ(AuthParam(challenge.Header("WWW-Authenticate"), "stale"), "");
  ASSERT_TRUE(WaitFor([&] { return std::chrono::steady_clock::now() - issued > kLifetime * 2; }));
  Response wrong = Fetch(kTarget, DigestHeader(challenge, "admin", "nope", kTarget, true));
  EXPECT_EQ(wrong.status, 401);
  EXPECT_EQ(AuthParam(wrong.Header("WWW-Authenticate"), "stale"), "")
      << "a wrong password is no stale nonce";
  Response stale = Fetch(kTarget, DigestHeader(challenge, "admin", "password", kTarget, true));
  EXPECT_EQ(stale.status, 401);
  EXPECT_EQ(AuthParam(stale.Header("WWW-Authenticate"), "stale"), "true");
  device_->SetNonceLifetime(milliseconds(0));
  EXPECT_EQ(Fetch(kTarget, DigestHeader(stale, "admin", "password", kTarget, true)).status, 200)
      << "the fresh nonce of the stale answer serves";
}

}  // namespace
}  // namespace camsim_test
