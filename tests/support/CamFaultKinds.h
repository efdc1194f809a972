// The ways a camera misbehaves on one exchange, in the simulator's fault
// text: the rows that the fault tables of the RTP road, the fault matrix of
// every road and the soak share. A null text is a camera that refuses the
// connection (its listener closed) rather than a fault of an answer.
#ifndef CAM_FAULT_KINDS_H
#define CAM_FAULT_KINDS_H

#include <cstddef>

namespace camtest {

struct FaultKind {
  const char* pcName;
  const char* pcFault;  // camsim's fault text; null: connections refused
};

// The order is that of the RTP fault table's rows.
enum FaultKindIndex : size_t {
  kFaultRefused,
  kFaultSilent,
  kFaultSlow,
  kFaultCloseHeader,
  kFaultCloseBody,
  kFaultGarbage,
  kFaultReset,
  kFault404,
  kFault503,
  kFaultNoUid,
  kFaultDrip,
  kFaultKindCount
};

constexpr FaultKind kFaultKinds[kFaultKindCount] = {
    {"Refused", nullptr},
    {"Silent", "noanswer"},
    // Well inside the time-out of an answer, even divided by five.
    {"Slow", "delay=100"},
    {"CloseHeader", "close-header"},
    {"CloseBody", "close-body"},
    {"Garbage", "garbage"},
    {"Reset", "reset"},
    {"Status404", "status=404"},
    {"Status503", "status=503"},
    {"NoUid", "omit=UID="},
    // One byte of the body every 400 ms: the answer outlasts the time-out.
    {"Drip", "drip=400"},
};

}  // namespace camtest

#endif  // CAM_FAULT_KINDS_H
