#include "Fault.h"

#include <cstdlib>

#include "HttpRequest.h"

namespace camsim {

namespace {

bool ReadNumber(const std::string& text, long low, long high, long* value) {
  if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) return false;
  if (text.size() > 9) return false;
  *value = std::atol(text.c_str());
  return *value >= low && *value <= high;
}

struct FaultWord {
  const char* name;
  bool (*apply)(const std::string& value, bool hasValue, Fault* fault);
};

bool ApplyStatus(const std::string& value, bool, Fault* fault) {
  long status = 0;
  if (!ReadNumber(value, 100, 999, &status)) return false;
  fault->status = static_cast<int>(status);
  return true;
}

bool ApplyDelay(const std::string& value, bool, Fault* fault) {
  long delay = 0;
  if (!ReadNumber(value, 0, 3600000, &delay)) return false;
  fault->delayMs = static_cast<int>(delay);
  return true;
}

bool ApplyAction(FaultAction action, bool hasValue, Fault* fault) {
  if (hasValue) return false;
  fault->action = action;
  return true;
}

bool ApplyNoAnswer(const std::string&, bool has, Fault* f) {
  return ApplyAction(FaultAction::kNoAnswer, has, f);
}
bool ApplyCloseHeader(const std::string&, bool has, Fault* f) {
  return ApplyAction(FaultAction::kCloseMidHeader, has, f);
}
bool ApplyCloseBody(const std::string&, bool has, Fault* f) {
  return ApplyAction(FaultAction::kCloseMidBody, has, f);
}
bool ApplyGarbage(const std::string&, bool has, Fault* f) {
  return ApplyAction(FaultAction::kGarbage, has, f);
}

bool ApplyLongBody(const std::string& value, bool hasValue, Fault* fault) {
  long bytes = kDefaultLongBody;
  if (hasValue && !ReadNumber(value, 2049, 100000000, &bytes)) return false;
  fault->longBodyBytes = static_cast<size_t>(bytes);
  return true;
}

bool ApplyOmit(const std::string& value, bool hasValue, Fault* fault) {
  if (!hasValue || value.empty()) return false;
  fault->omitKey = value;
  return true;
}

bool ApplyPushStall(const std::string& value, bool hasValue, Fault* fault) {
  long frames = 1;
  if (hasValue && !ReadNumber(value, 0, 1000000, &frames)) return false;
  fault->action = FaultAction::kPushStall;
  fault->framesBeforeStall = static_cast<int>(frames);
  return true;
}

bool ApplyTimes(const std::string& value, bool, Fault* fault) {
  long times = 0;
  if (!ReadNumber(value, 0, 1000000000, &times)) return false;
  fault->times = static_cast<int>(times);
  return true;
}

bool ApplyReset(const std::string&, bool has, Fault* f) {
  return ApplyAction(FaultAction::kReset, has, f);
}

bool ApplyPushEnd(const std::string& value, bool hasValue, Fault* fault) {
  long frames = 1;
  if (hasValue && !ReadNumber(value, 0, 1000000, &frames)) return false;
  fault->action = FaultAction::kPushEnd;
  fault->framesBeforeStall = static_cast<int>(frames);
  return true;
}

bool ApplyLateKeys(const std::string& value, bool hasValue, Fault* fault) {
  long at = kDefaultLateKeys;
  if (hasValue && !ReadNumber(value, 1, 100000000, &at)) return false;
  fault->lateKeysAt = static_cast<size_t>(at);
  return true;
}

bool ApplyDrip(const std::string& value, bool, Fault* fault) {
  long ms = 0;
  if (!ReadNumber(value, 1, 60000, &ms)) return false;
  fault->dripMs = static_cast<int>(ms);
  return true;
}

bool ApplyFraming(BodyFraming framing, bool hasValue, Fault* fault) {
  if (hasValue) return false;
  fault->framing = framing;
  return true;
}

bool ApplyNoLength(const std::string&, bool has, Fault* f) {
  return ApplyFraming(BodyFraming::kUntilClose, has, f);
}
bool ApplyChunked(const std::string&, bool has, Fault* f) {
  return ApplyFraming(BodyFraming::kChunked, has, f);
}
bool ApplyChunkedOpen(const std::string&, bool has, Fault* f) {
  return ApplyFraming(BodyFraming::kChunkedUnterminated, has, f);
}

bool ApplyBoundaryQuoted(const std::string&, bool hasValue, Fault* fault) {
  fault->boundaryQuoted = true;
  return !hasValue;
}

bool ApplyBoundaryBare(const std::string&, bool hasValue, Fault* fault) {
  fault->boundaryBare = true;
  return !hasValue;
}

bool ApplyWhen(const std::string& value, bool, Fault* fault) {
  size_t equal = value.find('=');
  if (equal == std::string::npos || equal == 0) return false;
  fault->when.emplace_back(value.substr(0, equal), value.substr(equal + 1));
  return true;
}

bool ApplyUid(const std::string& value, bool, Fault* fault) {
  long uid = 0;
  if (!ReadNumber(value, 0, 2000000000, &uid)) return false;
  fault->when.emplace_back("UID", value);
  return true;
}

bool ApplyRtpStall(const std::string& value, bool hasValue, Fault* fault) {
  long frames = 1;
  if (hasValue && !ReadNumber(value, 0, 1000000, &frames)) return false;
  fault->rtpStallAfter = static_cast<int>(frames);
  return true;
}

bool ApplyRtpResume(const std::string& value, bool, Fault* fault) {
  long ms = 0;
  if (!ReadNumber(value, 1, 3600000, &ms)) return false;
  fault->rtpResumeMs = static_cast<int>(ms);
  return true;
}

bool ApplyRtpEnd(const std::string& value, bool hasValue, Fault* fault) {
  long frames = 1;
  if (hasValue && !ReadNumber(value, 0, 1000000, &frames)) return false;
  fault->rtpEndAfter = static_cast<int>(frames);
  return true;
}

constexpr FaultWord kFaultWords[] = {
    {"status", ApplyStatus},
    {"delay", ApplyDelay},
    {"noanswer", ApplyNoAnswer},
    {"close-header", ApplyCloseHeader},
    {"close-body", ApplyCloseBody},
    {"garbage", ApplyGarbage},
    {"reset", ApplyReset},
    {"long-body", ApplyLongBody},
    {"late-keys", ApplyLateKeys},
    {"omit", ApplyOmit},
    {"push-stall", ApplyPushStall},
    {"push-end", ApplyPushEnd},
    {"drip", ApplyDrip},
    {"no-length", ApplyNoLength},
    {"chunked", ApplyChunked},
    {"chunked-open", ApplyChunkedOpen},
    {"boundary-quoted", ApplyBoundaryQuoted},
    {"boundary-bare", ApplyBoundaryBare},
    {"when", ApplyWhen},
    {"uid", ApplyUid},
    {"times", ApplyTimes},
    {"rtp-stall", ApplyRtpStall},
    {"rtp-resume", ApplyRtpResume},
    {"rtp-end", ApplyRtpEnd},
};

bool ApplyItem(const std::string& item, Fault* fault) {
  size_t equal = item.find('=');
  std::string name = item.substr(0, equal);
  bool hasValue = equal != std::string::npos;
  std::string value = hasValue ? item.substr(equal + 1) : "";
  for (const FaultWord& word : kFaultWords) {
    if (name == word.name) return word.apply(value, hasValue, fault);
  }
  return false;
}

}  // namespace

bool ParseFault(const std::string& text, Fault* fault, std::string* error) {
  Fault parsed;
  size_t start = 0;
  if (text.empty()) {
    *error = "empty fault";
    return false;
  }
  while (start <= text.size()) {
    size_t end = text.find(',', start);
    if (end == std::string::npos) end = text.size();
    std::string item = text.substr(start, end - start);
    if (!ApplyItem(item, &parsed)) {
      *error = "bad fault item \"" + item + "\"";
      return false;
    }
    start = end + 1;
  }
  if (parsed.rtpResumeMs > 0 && parsed.rtpStallAfter < 0) {
    *error = "rtp-resume needs rtp-stall";
    return false;
  }
  *fault = parsed;
  return true;
}

bool FaultMeets(const Fault& fault, const std::string& query) {
  for (const auto& condition : fault.when) {
    bool found = false;
    if (QueryValue(query, condition.first, &found) != condition.second || !found) return false;
  }
  return true;
}

}  // namespace camsim
