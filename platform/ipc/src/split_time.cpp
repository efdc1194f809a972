// Time measurement of the request sequences. Start stores the monotonic
// time in the record; End replaces the record with the time passed since
// then, so a caller that keeps the record can read the duration. Nothing is
// printed: the device's own measurement output is not part of this library.
#include <time.h>

#include "kxcom.h"

namespace {

constexpr long kMicrosPerSecond = 1000000;

COM_SPLIT_TIME Now() {
  struct timespec now {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return {static_cast<long>(now.tv_sec), static_cast<long>(now.tv_nsec / 1000)};
}

bool StartedBefore(const COM_SPLIT_TIME& start, const COM_SPLIT_TIME& now) {
  if (start.lSec < 0 || start.lUsec < 0 || start.lUsec >= kMicrosPerSecond) return false;
  return start.lSec < now.lSec || (start.lSec == now.lSec && start.lUsec <= now.lUsec);
}

}  // namespace

extern "C" {

void COM_SplitTime_Start(int /*iId*/, COM_SPLIT_TIME* psRec) {
  if (psRec != nullptr) *psRec = Now();
}

void COM_SplitTime_End(int /*iId*/, COM_SPLIT_TIME* psRec) {
  if (psRec == nullptr) return;
  const COM_SPLIT_TIME now = Now();
  if (!StartedBefore(*psRec, now)) {
    *psRec = {0, 0};  // not a record that Start filled: no duration to give
    return;
  }
  long seconds = now.lSec - psRec->lSec;
  long micros = now.lUsec - psRec->lUsec;
  if (micros < 0) {
    micros += kMicrosPerSecond;
    --seconds;
  }
  psRec->lSec = seconds;
  psRec->lUsec = micros;
}

}  // extern "C"
