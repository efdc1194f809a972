// The test's own Digest arithmetic (RFC 7616), to check what the client
// sends. Hashes from nettle, computed here independently of the client.
#ifndef DIGEST_CHECK_H
#define DIGEST_CHECK_H

#include <nettle/md5.h>
#include <nettle/sha2.h>

#include <map>
#include <string>

namespace httptest {

inline std::string hex(const uint8_t* bytes, size_t length) {
  static const char kHex[] = "0123456789abcdef";
  std::string text;
  for (size_t i = 0; i < length; ++i) {
    text += kHex[bytes[i] >> 4];
    text += kHex[bytes[i] & 15];
  }
  return text;
}

inline std::string hash_hex(const std::string& algorithm, const std::string& text) {
  const auto* data = reinterpret_cast<const uint8_t*>(text.data());
  if (algorithm == "SHA-256") {
    sha256_ctx context;
    uint8_t digest[SHA256_DIGEST_SIZE];
    sha256_init(&context);
    sha256_update(&context, text.size(), data);
    sha256_digest(&context, sizeof digest, digest);
    return hex(digest, sizeof digest);
  }
  md5_ctx context;
  uint8_t digest[MD5_DIGEST_SIZE];
  md5_init(&context);
  md5_update(&context, text.size(), data);
  md5_digest(&context, sizeof digest, digest);
  return hex(digest, sizeof digest);
}

// response = H(H(user:realm:password):nonce:nc:cnonce:qop:H(method:uri))
inline std::string digest_response(const std::string& algorithm, const std::string& user,
                                   const std::string& realm, const std::string& password,
                                   const std::string& method, const std::string& uri,
                                   const std::string& nonce, const std::string& nc,
                                   const std::string& cnonce) {
  std::string ha1 = hash_hex(algorithm, user + ":" + realm + ":" + password);
  std::string ha2 = hash_hex(algorithm, method + ":" + uri);
  return hash_hex(algorithm, ha1 + ":" + nonce + ":" + nc + ":" + cnonce + ":auth:" + ha2);
}

// Parameters of an "Authorization: Digest a=b, c=\"d\"" value.
inline std::map<std::string, std::string> digest_parameters(const std::string& value) {
  std::map<std::string, std::string> result;
  size_t position = value.find(' ');
  while (position != std::string::npos && position < value.size()) {
    position = value.find_first_not_of(" ,", position);
    if (position == std::string::npos) break;
    size_t equals = value.find('=', position);
    if (equals == std::string::npos) break;
    std::string name = value.substr(position, equals - position);
    std::string item;
    position = equals + 1;
    if (value[position] == '"') {
      size_t close = value.find('"', position + 1);
      item = value.substr(position + 1, close - position - 1);
      position = close + 1;
    } else {
      size_t end = value.find(',', position);
      item = value.substr(position, end == std::string::npos ? std::string::npos : end - position);
      position = end;
    }
    result[name] = item;
  }
  return result;
}

}  // namespace httptest

#endif  // DIGEST_CHECK_H
