// What a simulated device is: where it listens, which model it plays, how
// it authenticates and which values its replies carry.
#ifndef CAMSIM_CONFIG_H
#define CAMSIM_CONFIG_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace camsim {

enum class AuthMode { kNone, kBasic, kDigestMd5, kDigestSha256 };

const char* AuthModeName(AuthMode mode);
// "none", "basic", "digest-md5" (or "digest"), "digest-sha256"; false if unknown.
bool ParseAuthMode(const std::string& text, AuthMode* mode);

// The values a camera or recorder reports in its replies; every one can be
// changed while the device runs.
struct ReplyValues {
  int firstUid = 1;                                  // first UID handed out, then counted up
  int audioBitrate = 32;                             // "aBitrate="
  std::string audioEnable = "1";                     // "aEnable=": a number or "in"
  std::string delivery = "multi";                    // "sDelivery=": multi, uni or uni_manual
  std::array<int, 4> multiAddress = {239, 1, 2, 4};  // "iMultiAdd1=".."iMultiAdd4="
  std::string multiAddressV6;                        // "iMultiAddv6=", left out when empty
  int multiPort = 5000;                              // "iMultiPort="
  int uniPort = 6000;                                // "iUniPort="
  int audioInPort = 7000;                            // "aInPort="
  std::string fileName = "=REC0001.DAT";             // recorder status: text after "FILENAME"
  int playMode = 0;                                  // recorder status: "PLAY_MODE="
  double frameRate = 5.0;  // pictures per second when the request names none
  int gray = 128;          // gray level of the pictures pushed
  // Status of a recorder's answer to a push start (push.cgi?CMD=START):
  // 0 for the normal answer; 204 gives an empty 204, whose result word
  // carries 0x204 at the requester. Any other status answers "OK".
  int pushStartStatus = 0;
};

// Limits of a device, each documented for the program's users.
constexpr int kDefaultHeadTimeoutMs = 10000;
constexpr int kDefaultMaxConnections = 1000;
constexpr size_t kDefaultRecordLimit = 10000;
constexpr int kDefaultNonceLifetimeMs = 300000;

struct DeviceConfig {
  std::string address = "127.0.0.1";  // numeric IPv4 or IPv6 address
  uint16_t port = 0;                  // 0: the system picks one
  int model = 0;                      // camera type 0..36
  AuthMode auth = AuthMode::kNone;
  std::string user = "admin";  // HTTP authentication and recorder login
  std::string password = "password";
  std::string realm = "camsim";
  bool startRefusing = false;  // start with the listener closed
  ReplyValues values;
  // A connection whose head is not complete within this time gets 408.
  int headTimeoutMs = kDefaultHeadTimeoutMs;
  // Connections served at once (one thread each); a further one gets 503.
  int maxConnections = kDefaultMaxConnections;
  // Requests kept on the record: the last N (older ones are dropped).
  size_t recordLimit = kDefaultRecordLimit;
  // A UID without a keep-alive for this long is forgotten; 0: never.
  int uidExpiryMs = 0;
  // A Digest nonce is accepted this long after its challenge; then the
  // answer is refused with stale=true. 0: for ever.
  int nonceLifetimeMs = kDefaultNonceLifetimeMs;
};

}  // namespace camsim

#endif
