// Misbehaviour that a device can be told to show on a path.
#ifndef CAMSIM_FAULT_H
#define CAMSIM_FAULT_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace camsim {

enum class FaultAction {
  kNone,
  kNoAnswer,        // read the request, answer nothing, hold the connection
  kCloseMidHeader,  // send part of the status line and headers, then close
  kCloseMidBody,    // send the headers and half the body (or picture), then close
  kGarbage,         // answer with bytes that are not HTTP, then close
  kPushStall,       // a push sends framesBeforeStall pictures, then nothing more
  kPushEnd,         // a push sends framesBeforeStall pictures, the closing boundary, and closes
  kReset,           // send the headers and half the body (or picture), then reset (RST)
};

// How a text body is framed on the wire.
enum class BodyFraming {
  kLength,              // Content-Length (the normal answer)
  kUntilClose,          // no Content-Length: the close ends the body
  kChunked,             // Transfer-Encoding: chunked, with the last chunk
  kChunkedUnterminated  // chunked, but the connection closes before the last chunk
};

struct Fault {
  int status = 0;   // answer with this status instead of the normal reply
  int delayMs = 0;  // wait this long before answering
  FaultAction action = FaultAction::kNone;
  std::string omitKey;        // leave out every reply line starting with this key
  size_t longBodyBytes = 0;   // pad the reply body to this many bytes
  int framesBeforeStall = 1;  // for kPushStall and kPushEnd
  int times = 0;              // 0: until cleared, else only the next N requests

  // Only requests whose query holds every one of these key=value pairs
  // (e.g. {"CMD", "START"}, {"UID", "3"}) meet the fault; empty: all.
  std::vector<std::pair<std::string, std::string>> when;
  size_t lateKeysAt = 0;  // filler lines first, so the first key starts at this byte
  int dripMs = 0;         // send a text body one byte every dripMs after the head
  BodyFraming framing = BodyFraming::kLength;
  bool boundaryQuoted = false;  // push: boundary="..." in the Content-Type
  bool boundaryBare = false;    // push: parts start with the boundary without "--"
  // The RTP stream that a start line meeting the fault begins (the answer
  // itself is the normal one): it stalls after rtpStallAfter frames, while
  // HTTP answers as before, and resumes by itself rtpResumeMs later (0: on
  // a resume or a new start only); or it ends for good after rtpEndAfter
  // frames, as when a recorder's push ends. -1: never.
  int rtpStallAfter = -1;
  int rtpResumeMs = 0;
  int rtpEndAfter = -1;
};

// Reads the text form used on the command line, items joined by ",":
// "status=503", "delay=200", "noanswer", "close-header", "close-body",
// "garbage", "reset", "long-body[=N]", "late-keys[=N]", "omit=KEY",
// "push-stall[=N]", "push-end[=N]", "drip=MS", "no-length", "chunked",
// "chunked-open", "boundary-quoted", "boundary-bare", "when=KEY=VALUE",
// "uid=N", "times=N", "rtp-stall[=N]", "rtp-resume=MS" (with rtp-stall),
// "rtp-end[=N]". Returns false and sets *error otherwise.
bool ParseFault(const std::string& text, Fault* fault, std::string* error);

// True when the query (text after "?") meets the fault's conditions.
bool FaultMeets(const Fault& fault, const std::string& query);

// The bytes a kGarbage answer sends.
constexpr char kGarbageBytes[] = "\x01\x02\x03 this is no answer of a web server \xff\xfe\r\n\r\n";
constexpr size_t kDefaultLongBody = 4096;
// A late-keys fault without a size puts the keys after the first 2048
// bytes, beyond the requester's reply buffer.
constexpr size_t kDefaultLateKeys = 2048;

}  // namespace camsim

#endif
