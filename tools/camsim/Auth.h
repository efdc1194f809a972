// HTTP authentication of a simulated device: Basic, or Digest with MD5 or
// SHA-256 and qop=auth. Nonces are the device's own and must come back.
#ifndef CAMSIM_AUTH_H
#define CAMSIM_AUTH_H

#include <deque>
#include <map>
#include <mutex>
#include <random>
#include <string>

#include "Config.h"

namespace camsim {

struct Credentials {
  AuthMode mode = AuthMode::kNone;
  std::string user;
  std::string password;
  std::string realm;
};

// Lower-case hex digest of text: MD5 or SHA-256 (nettle).
std::string Md5Hex(const std::string& text);
std::string Sha256Hex(const std::string& text);

// Splits the parameters of a Digest header value ("username=\"a\", nc=00000001").
std::map<std::string, std::string> ParseAuthParams(const std::string& text);

class Authenticator {
 public:
  Authenticator();

  // True when the request passes: no authentication asked, or a valid
  // Authorization header. target is the request target as sent, path the
  // target in origin form (either is accepted as the digest uri).
  bool Check(const Credentials& credentials, const std::string& method, const std::string& target,
             const std::string& originTarget, const std::string& authorization);

  // The WWW-Authenticate value for a 401; a Digest challenge carries a
  // fresh nonce that Check accepts from then on.
  std::string Challenge(const Credentials& credentials);

 private:
  bool CheckBasic(const Credentials& credentials, const std::string& value);
  bool CheckDigest(const Credentials& credentials, const std::string& method,
                   const std::string& target, const std::string& originTarget,
                   const std::string& value);
  bool KnownNonce(const std::string& nonce);
  std::string RandomHex(size_t bytes);

  std::mutex mutex_;
  std::mt19937_64 random_;
  std::deque<std::string> nonces_;  // the latest ones handed out
  std::string opaque_;
};

}  // namespace camsim

#endif
