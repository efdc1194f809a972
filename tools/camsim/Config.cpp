#include "Config.h"

namespace camsim {

namespace {

struct AuthName {
  const char* name;
  AuthMode mode;
};

constexpr AuthName kAuthNames[] = {
    {"none", AuthMode::kNone},
    {"basic", AuthMode::kBasic},
    {"digest-md5", AuthMode::kDigestMd5},
    {"digest-sha256", AuthMode::kDigestSha256},
    {"digest", AuthMode::kDigestMd5},
};

}  // namespace

const char* AuthModeName(AuthMode mode) {
  for (const AuthName& entry : kAuthNames) {
    if (entry.mode == mode) return entry.name;
  }
  return "?";
}

bool ParseAuthMode(const std::string& text, AuthMode* mode) {
  for (const AuthName& entry : kAuthNames) {
    if (text == entry.name) {
      *mode = entry.mode;
      return true;
    }
  }
  return false;
}

}  // namespace camsim
