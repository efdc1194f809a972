// HTTP authentication of a simulated device: Basic, or Digest with MD5 or
// SHA-256 and qop=auth. Nonces are the device's own and must come back.
#ifndef CAMSIM_AUTH_H
#define CAMSIM_AUTH_H

#include <chrono>
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
  using Clock = std::chrono::steady_clock;

  Authenticator();

  // True when the request passes: no authentication asked, or a valid
  // Authorization header. target is the request target as sent, path the
  // target in origin form (either is accepted as the digest uri).
  // A Digest answer must carry a nonce count (nc) above every count seen
  // before with that nonce; a replayed count is refused. A correct answer
  // with an expired nonce is refused with *stale set, so that the next
  // challenge says stale=true.
  bool Check(const Credentials& credentials, const std::string& method, const std::string& target,
             const std::string& originTarget, const std::string& authorization,
             bool* stale = nullptr);

  // The WWW-Authenticate value for a 401; a Digest challenge carries a
  // fresh nonce that Check accepts from then on, and stale=true when asked.
  std::string Challenge(const Credentials& credentials, bool stale = false);

  // How long a nonce is accepted after its challenge (zero: for ever).
  void SetNonceLifetime(std::chrono::milliseconds lifetime);

 private:
  struct Nonce {
    Clock::time_point issued;
    unsigned long highestCount = 0;  // highest nc accepted so far
  };

  bool CheckBasic(const Credentials& credentials, const std::string& value);
  bool CheckDigest(const Credentials& credentials, const std::string& method,
                   const std::string& target, const std::string& originTarget,
                   const std::string& value, bool* stale);
  // Takes the nonce count; false (and *stale when the nonce expired) if
  // the nonce is not one of ours, has expired, or the count was used.
  bool TakeNonceCount(const std::string& nonce, const std::string& count, bool* stale);
  std::string RandomHex(size_t bytes);

  std::mutex mutex_;
  std::mt19937_64 random_;
  std::map<std::string, Nonce> nonces_;
  std::deque<std::string> nonceOrder_;  // the latest ones handed out, oldest first
  std::chrono::milliseconds lifetime_{0};
  std::string opaque_;
};

}  // namespace camsim

#endif
