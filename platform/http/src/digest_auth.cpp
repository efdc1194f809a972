// Answers to the camera's WWW-Authenticate challenges: Basic, and Digest
// with MD5 or SHA-256 (qop=auth). Hashes come from the system's nettle.
#include <nettle/base64.h>
#include <nettle/md5.h>
#include <nettle/sha2.h>
#include <sys/random.h>

#include <algorithm>
#include <cstring>

#include "kxhttp_internal.h"

namespace kxhttp {
namespace {

std::string to_hex(const uint8_t* bytes, size_t length) {
  static const char kHex[] = "0123456789abcdef";
  std::string text;
  for (size_t i = 0; i < length; ++i) {
    text += kHex[bytes[i] >> 4];
    text += kHex[bytes[i] & 0x0f];
  }
  return text;
}

std::string md5_hex(const std::string& text) {
  md5_ctx context;
  uint8_t digest[MD5_DIGEST_SIZE];
  md5_init(&context);
  md5_update(&context, text.size(), reinterpret_cast<const uint8_t*>(text.data()));
  md5_digest(&context, sizeof digest, digest);
  return to_hex(digest, sizeof digest);
}

std::string sha256_hex(const std::string& text) {
  sha256_ctx context;
  uint8_t digest[SHA256_DIGEST_SIZE];
  sha256_init(&context);
  sha256_update(&context, text.size(), reinterpret_cast<const uint8_t*>(text.data()));
  sha256_digest(&context, sizeof digest, digest);
  return to_hex(digest, sizeof digest);
}

struct AlgorithmEntry {
  const char* name;
  const char* hash;
  bool session;
};
// The Digest algorithms this client answers.
constexpr AlgorithmEntry kAlgorithms[] = {
    {"MD5", "MD5", false},
    {"MD5-sess", "MD5", true},
    {"SHA-256", "SHA-256", false},
    {"SHA-256-sess", "SHA-256", true},
};

const AlgorithmEntry* find_algorithm(const std::string& name) {
  for (const AlgorithmEntry& entry : kAlgorithms) {
    if (equals_ignore_case(name, entry.name)) return &entry;
  }
  return nullptr;
}

// A challenge as written: its scheme and its name=value parameters.
struct Parameter {
  std::string name;
  std::string value;
};
struct ChallengeText {
  std::string scheme;
  std::vector<Parameter> parameters;
};

size_t skip_blanks(const std::string& text, size_t position) {
  while (position < text.size() && (text[position] == ' ' || text[position] == '\t')) ++position;
  return position;
}

size_t token_end(const std::string& text, size_t position) {
  while (position < text.size() && is_token_char(text[position])) ++position;
  return position;
}

// Position after the comma that ends the list element at position, or
// the end of the text.
size_t skip_element(const std::string& text, size_t position) {
  return std::min(after_separator(text, position, ','), text.size());
}

// The quoted string at position (the opening quote); position ends after it.
std::string quoted_string(const std::string& text, size_t& position) {
  std::string value;
  for (++position; position < text.size() && text[position] != '"'; ++position) {
    if (text[position] == '\\' && position + 1 < text.size()) ++position;
    value += text[position];
  }
  ++position;
  return value;
}

// Reads name = value (a token or a quoted string) at position. False when
// the text there is something else, such as a scheme or a token68 ("a==").
bool read_parameter(const std::string& text, size_t& position, Parameter& parameter) {
  size_t nameEnd = token_end(text, position);
  size_t equals = skip_blanks(text, nameEnd);
  if (nameEnd == position || equals >= text.size() || text[equals] != '=') return false;
  size_t valueStart = skip_blanks(text, equals + 1);
  if (valueStart >= text.size() || text[valueStart] == '=' || text[valueStart] == ',') {
    return false;
  }
  parameter.name = text.substr(position, nameEnd - position);
  if (text[valueStart] == '"') {
    position = valueStart;
    parameter.value = quoted_string(text, position);
  } else {
    position = token_end(text, valueStart);
    parameter.value = text.substr(valueStart, position - valueStart);
  }
  return true;
}

// A field value is a comma-separated list in which a scheme token begins a
// new challenge and every name=value element belongs to the challenge
// before it; a token68 after a scheme is passed over.
std::vector<ChallengeText> parse_challenges(const std::string& value) {
  std::vector<ChallengeText> challenges;
  size_t position = 0;
  while (position < value.size()) {
    position = skip_blanks(value, position);
    Parameter parameter;
    if (!challenges.empty() && read_parameter(value, position, parameter)) {
      challenges.back().parameters.push_back(parameter);
    } else if (size_t schemeEnd = token_end(value, position); schemeEnd != position) {
      challenges.push_back(ChallengeText{value.substr(position, schemeEnd - position), {}});
      position = skip_blanks(value, schemeEnd);
      if (read_parameter(value, position, parameter)) {
        challenges.back().parameters.push_back(parameter);
      }
    }
    position = skip_element(value, position);
  }
  return challenges;
}

bool has_qop_auth(const std::string& list) {
  size_t position = 0;
  while (position <= list.size()) {
    size_t end = list.find(',', position);
    if (end == std::string::npos) end = list.size();
    std::string item = list.substr(position, end - position);
    size_t first = item.find_first_not_of(" \t");
    size_t last = item.find_last_not_of(" \t");
    if (first != std::string::npos &&
        equals_ignore_case(item.substr(first, last - first + 1), "auth")) {
      return true;
    }
    position = end + 1;
  }
  return false;
}

Challenge digest_challenge(const std::vector<Parameter>& parameters) {
  Challenge challenge;
  challenge.scheme = Challenge::Scheme::kDigest;
  challenge.algorithm = "MD5";
  for (const Parameter& parameter : parameters) {
    const std::string& name = parameter.name;
    if (equals_ignore_case(name, "realm")) challenge.realm = parameter.value;
    if (equals_ignore_case(name, "nonce")) challenge.nonce = parameter.value;
    if (equals_ignore_case(name, "opaque")) challenge.opaque = parameter.value;
    if (equals_ignore_case(name, "algorithm")) challenge.algorithm = parameter.value;
    if (equals_ignore_case(name, "qop")) {
      challenge.qopGiven = true;
      challenge.qopAuth = has_qop_auth(parameter.value);
    }
  }
  return challenge;
}

Challenge challenge_of(const ChallengeText& text) {
  if (equals_ignore_case(text.scheme, "Digest")) return digest_challenge(text.parameters);
  Challenge challenge;
  if (equals_ignore_case(text.scheme, "Basic")) challenge.scheme = Challenge::Scheme::kBasic;
  return challenge;
}

// Rank of an answerable challenge; 0 when it cannot be answered.
int rank(const Challenge& challenge) {
  if (challenge.scheme == Challenge::Scheme::kBasic) return 1;
  if (challenge.scheme != Challenge::Scheme::kDigest || challenge.nonce.empty()) return 0;
  if (challenge.qopGiven && !challenge.qopAuth) return 0;
  const AlgorithmEntry* entry = find_algorithm(challenge.algorithm);
  if (entry == nullptr) return 0;
  return std::strcmp(entry->hash, "SHA-256") == 0 ? 3 : 2;
}

std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result + "\"";
}

}  // namespace

std::string hex_digest(const std::string& algorithm, const std::string& text) {
  return algorithm == "SHA-256" ? sha256_hex(text) : md5_hex(text);
}

Challenge choose_challenge(const std::vector<Header>& headers) {
  Challenge best;
  for (const Header& header : headers) {
    if (!equals_ignore_case(header.name, "WWW-Authenticate")) continue;
    for (const ChallengeText& text : parse_challenges(header.value)) {
      Challenge candidate = challenge_of(text);
      if (rank(candidate) > rank(best)) best = candidate;
    }
  }
  return best;
}

std::string basic_authorization(const std::string& user, const std::string& password) {
  std::string plain = user + ":" + password;
  std::string encoded(BASE64_ENCODE_RAW_LENGTH(plain.size()), '\0');
  base64_encode_raw(reinterpret_cast<char*>(&encoded[0]), plain.size(),
                    reinterpret_cast<const uint8_t*>(plain.data()));
  return "Basic " + encoded;
}

std::string digest_authorization(const Challenge& challenge, const std::string& user,
                                 const std::string& password, const std::string& method,
                                 const std::string& uri, const std::string& cnonce) {
  const AlgorithmEntry* entry = find_algorithm(challenge.algorithm);
  if (entry == nullptr) return std::string();
  const std::string hash = entry->hash;
  std::string ha1 = hex_digest(hash, user + ":" + challenge.realm + ":" + password);
  if (entry->session) ha1 = hex_digest(hash, ha1 + ":" + challenge.nonce + ":" + cnonce);
  std::string ha2 = hex_digest(hash, method + ":" + uri);
  const std::string nc = "00000001";
  std::string response =
      challenge.qopAuth
          ? hex_digest(hash, ha1 + ":" + challenge.nonce + ":" + nc + ":" + cnonce + ":auth:" + ha2)
          : hex_digest(hash, ha1 + ":" + challenge.nonce + ":" + ha2);
  std::string value = "Digest username=" + quoted(user) + ", realm=" + quoted(challenge.realm) +
                      ", nonce=" + quoted(challenge.nonce) + ", uri=" + quoted(uri) +
                      ", algorithm=" + entry->name + ", response=" + quoted(response);
  if (challenge.qopAuth) value += ", qop=auth, nc=" + nc + ", cnonce=" + quoted(cnonce);
  if (!challenge.opaque.empty()) value += ", opaque=" + quoted(challenge.opaque);
  return value;
}

std::string random_cnonce() {
  uint8_t bytes[16] = {};
  size_t filled = 0;
  while (filled < sizeof bytes) {
    ssize_t n = getrandom(bytes + filled, sizeof bytes - filled, 0);
    if (n <= 0) break;
    filled += static_cast<size_t>(n);
  }
  return to_hex(bytes, sizeof bytes);
}

}  // namespace kxhttp
