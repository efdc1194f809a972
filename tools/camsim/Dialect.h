// The three CGI dialects: what a camera, a Quillon camera and a KEL recorder
// answer to each path. Pure request-to-reply logic; the device sends it.
#ifndef CAMSIM_DIALECT_H
#define CAMSIM_DIALECT_H

#include <string>

#include "Config.h"
#include "Jpeg.h"
#include "Media.h"
#include "RtpSender.h"
#include "Sessions.h"

namespace camsim {

enum class BodyKind {
  kText,         // a text body of key=value lines
  kJpegPush,     // multipart/x-mixed-replace of JPEG pictures, until closed
  kAudioStream,  // a G.726 byte stream, until closed
};

enum class RtpAction { kNone, kStart, kStop };

// What an accepted start or stop line of the RTP road asks of the device's
// RTP sender; the device carries it out when the answer is 2xx.
struct RtpOrder {
  RtpAction action = RtpAction::kNone;
  RtpStreamKey key;
  MediaCodec codec = MediaCodec::kH264;
  int port = 0;           // my_port= of a camera, PORT= of a recorder
  bool recorder = false;  // a recorder sends to that port whatever its delivery
};

struct Reply {
  int status = 200;
  std::string body;
  BodyKind kind = BodyKind::kText;
  double frameRate = 0;         // pictures per second of a push
  PictureSize size = {16, 16};  // picture size of a push
  RtpOrder rtp;                 // a stream to start or stop
};

// What a dialect handler may read and change; the caller holds the lock
// that guards sessions.
struct DeviceState {
  int model = 0;
  unsigned capabilities = 0;  // of the model; Answer fills it in
  ReplyValues values;
  std::string user;
  std::string password;
  Sessions* sessions = nullptr;
};

// The reply to a GET of path with the given query.
Reply Answer(DeviceState& state, const std::string& path, const std::string& query);

// Reply bodies of refusals, so that tests and users can tell them apart.
extern const char kUnknownUidBody[];   // a UID that was never issued or was released
extern const char kBadParamBody[];     // a missing or malformed parameter
extern const char kNotFoundBody[];     // a line this model does not serve
extern const char kLoginFailedBody[];  // recorder login with wrong credentials or key

// Text of the status line for a code ("Not Found"); "Status" if unknown.
const char* ReasonPhrase(int status);

}  // namespace camsim

#endif
