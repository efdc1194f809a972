// Misbehaviour that a device can be told to show on a path.
#ifndef CAMSIM_FAULT_H
#define CAMSIM_FAULT_H

#include <cstddef>
#include <string>

namespace camsim {

enum class FaultAction {
  kNone,
  kNoAnswer,        // read the request, answer nothing, hold the connection
  kCloseMidHeader,  // send part of the status line and headers, then close
  kCloseMidBody,    // send the headers and half the body (or picture), then close
  kGarbage,         // answer with bytes that are not HTTP, then close
  kPushStall,       // a push sends framesBeforeStall pictures, then nothing more
};

struct Fault {
  int status = 0;   // answer with this status instead of the normal reply
  int delayMs = 0;  // wait this long before answering
  FaultAction action = FaultAction::kNone;
  std::string omitKey;        // leave out every reply line starting with this key
  size_t longBodyBytes = 0;   // pad the reply body to this many bytes
  int framesBeforeStall = 1;  // for kPushStall
  int times = 0;              // 0: until cleared, else only the next N requests
};

// Reads the text form used on the command line, items joined by ",":
// "status=503", "delay=200", "noanswer", "close-header", "close-body",
// "garbage", "long-body" or "long-body=N", "omit=KEY", "push-stall" or
// "push-stall=N", "times=N". Returns false and sets *error otherwise.
bool ParseFault(const std::string& text, Fault* fault, std::string* error);

// The bytes a kGarbage answer sends.
constexpr char kGarbageBytes[] = "\x01\x02\x03 this is no answer of a web server \xff\xfe\r\n\r\n";
constexpr size_t kDefaultLongBody = 4096;

}  // namespace camsim

#endif
