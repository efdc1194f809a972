#include "Auth.h"

#include <nettle/base64.h>
#include <nettle/md5.h>
#include <nettle/sha2.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "HttpRequest.h"

namespace camsim {

namespace {

constexpr size_t kNoncesKept = 4096;

std::string ToHex(const uint8_t* data, size_t size) {
  static const char kDigits[] = "0123456789abcdef";
  std::string out;
  for (size_t i = 0; i < size; ++i) {
    out += kDigits[data[i] >> 4];
    out += kDigits[data[i] & 15];
  }
  return out;
}

bool StartsWithWord(const std::string& value, const std::string& word, std::string* rest) {
  if (value.size() <= word.size() || !SameTextIgnoringCase(value.substr(0, word.size()), word) ||
      value[word.size()] != ' ') {
    return false;
  }
  size_t begin = value.find_first_not_of(' ', word.size());
  *rest = begin == std::string::npos ? "" : value.substr(begin);
  return true;
}

bool DecodeBase64(const std::string& text, std::string* out) {
  base64_decode_ctx context;
  base64_decode_init(&context);
  std::vector<uint8_t> buffer(BASE64_DECODE_LENGTH(text.size()) + 1);
  size_t length = buffer.size();
  if (!base64_decode_update(&context, &length, buffer.data(), text.size(), text.c_str()) ||
      !base64_decode_final(&context)) {
    return false;
  }
  out->assign(reinterpret_cast<const char*>(buffer.data()), length);
  return true;
}

std::string Quote(const std::string& text) {
  return "\"" + text + "\"";
}

}  // namespace

std::string Md5Hex(const std::string& text) {
  md5_ctx context;
  md5_init(&context);
  md5_update(&context, text.size(), reinterpret_cast<const uint8_t*>(text.data()));
  uint8_t digest[MD5_DIGEST_SIZE];
  md5_digest(&context, sizeof digest, digest);
  return ToHex(digest, sizeof digest);
}

std::string Sha256Hex(const std::string& text) {
  sha256_ctx context;
  sha256_init(&context);
  sha256_update(&context, text.size(), reinterpret_cast<const uint8_t*>(text.data()));
  uint8_t digest[SHA256_DIGEST_SIZE];
  sha256_digest(&context, sizeof digest, digest);
  return ToHex(digest, sizeof digest);
}

std::map<std::string, std::string> ParseAuthParams(const std::string& text) {
  std::map<std::string, std::string> params;
  size_t i = 0;
  while (i < text.size()) {
    while (i < text.size() && (text[i] == ' ' || text[i] == ',')) ++i;
    size_t equal = text.find('=', i);
    if (equal == std::string::npos) break;
    std::string name = text.substr(i, equal - i);
    name.erase(name.find_last_not_of(' ') + 1);
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    i = equal + 1;
    while (i < text.size() && text[i] == ' ') ++i;
    std::string value;
    if (i < text.size() && text[i] == '"') {
      for (++i; i < text.size() && text[i] != '"'; ++i) {
        if (text[i] == '\\' && i + 1 < text.size()) ++i;
        value += text[i];
      }
      ++i;
    } else {
      size_t end = text.find(',', i);
      if (end == std::string::npos) end = text.size();
      value = text.substr(i, end - i);
      value.erase(value.find_last_not_of(' ') + 1);
      i = end;
    }
    params[name] = value;
  }
  return params;
}

Authenticator::Authenticator() : random_(std::random_device{}()) {
  opaque_ = RandomHex(8);
}

std::string Authenticator::RandomHex(size_t bytes) {
  std::vector<uint8_t> data(bytes);
  for (auto& byte : data) byte = static_cast<uint8_t>(random_());
  return ToHex(data.data(), data.size());
}

bool Authenticator::Check(const Credentials& credentials, const std::string& method,
                          const std::string& target, const std::string& originTarget,
                          const std::string& authorization, bool* stale) {
  bool staleNonce = false;
  if (stale == nullptr) stale = &staleNonce;
  *stale = false;
  std::string rest;
  switch (credentials.mode) {
    case AuthMode::kNone:
      return true;
    case AuthMode::kBasic:
      return StartsWithWord(authorization, "Basic", &rest) && CheckBasic(credentials, rest);
    case AuthMode::kDigestMd5:
    case AuthMode::kDigestSha256:
      return StartsWithWord(authorization, "Digest", &rest) &&
             CheckDigest(credentials, method, target, originTarget, rest, stale);
  }
  return false;
}

bool Authenticator::CheckBasic(const Credentials& credentials, const std::string& value) {
  std::string decoded;
  return DecodeBase64(value, &decoded) && decoded == credentials.user + ":" + credentials.password;
}

void Authenticator::SetNonceLifetime(std::chrono::milliseconds lifetime) {
  std::lock_guard<std::mutex> lock(mutex_);
  lifetime_ = lifetime;
}

bool Authenticator::TakeNonceCount(const std::string& nonce, const std::string& count,
                                   bool* stale) {
  if (count.size() != 8 || count.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
    return false;
  }
  unsigned long number = std::stoul(count, nullptr, 16);
  std::lock_guard<std::mutex> lock(mutex_);
  auto found = nonces_.find(nonce);
  if (found == nonces_.end()) return false;
  if (lifetime_.count() > 0 && Clock::now() - found->second.issued > lifetime_) {
    *stale = true;
    return false;
  }
  if (number <= found->second.highestCount) return false;
  found->second.highestCount = number;
  return true;
}

bool Authenticator::CheckDigest(const Credentials& credentials, const std::string& method,
                                const std::string& target, const std::string& originTarget,
                                const std::string& value, bool* stale) {
  auto params = ParseAuthParams(value);
  bool sha256 = credentials.mode == AuthMode::kDigestSha256;
  std::string algorithm = params.count("algorithm") ? params["algorithm"] : "MD5";
  if (!SameTextIgnoringCase(algorithm, sha256 ? "SHA-256" : "MD5")) return false;
  if (params["qop"] != "auth" || params["username"] != credentials.user ||
      params["realm"] != credentials.realm || params["nc"].empty() || params["cnonce"].empty()) {
    return false;
  }
  if (params["uri"] != target && params["uri"] != originTarget) return false;
  auto hash = sha256 ? Sha256Hex : Md5Hex;
  std::string ha1 = hash(credentials.user + ":" + credentials.realm + ":" + credentials.password);
  std::string ha2 = hash(method + ":" + params["uri"]);
  std::string expected = hash(ha1 + ":" + params["nonce"] + ":" + params["nc"] + ":" +
                              params["cnonce"] + ":auth:" + ha2);
  std::string response = params["response"];
  std::transform(response.begin(), response.end(), response.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  // Only a correct answer uses up its nonce count or learns that its
  // nonce is stale: a wrong password stays a plain refusal.
  return response == expected && TakeNonceCount(params["nonce"], params["nc"], stale);
}

std::string Authenticator::Challenge(const Credentials& credentials, bool stale) {
  if (credentials.mode == AuthMode::kBasic || credentials.mode == AuthMode::kNone) {
    return "Basic realm=" + Quote(credentials.realm);
  }
  std::lock_guard<std::mutex> lock(mutex_);
  std::string nonce = RandomHex(16);
  nonces_[nonce].issued = Clock::now();
  nonceOrder_.push_back(nonce);
  if (nonceOrder_.size() > kNoncesKept) {
    nonces_.erase(nonceOrder_.front());
    nonceOrder_.pop_front();
  }
  const char* algorithm = credentials.mode == AuthMode::kDigestSha256 ? "SHA-256" : "MD5";
  return "Digest realm=" + Quote(credentials.realm) + ", qop=\"auth\", algorithm=" + algorithm +
         ", nonce=" + Quote(nonce) + ", opaque=" + Quote(opaque_) + (stale ? ", stale=true" : "");
}

}  // namespace camsim
