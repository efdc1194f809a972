// One cycle of the fleet as the media process lives it: every requester
// created and started, all in RUN within a bound, kept alive, stopped, all
// in IDLE within a bound, destroyed; then every UID message and alarm
// accounted for and the process back to what it held before.
#ifndef LOAD_CYCLE_H
#define LOAD_CYCLE_H

#include <chrono>
#include <functional>
#include <string>

#include "LoadFleet.h"

namespace loadtest {

struct CycleResult {
  long lToRunMs = 0;   // START of all until all were in RUN
  long lToIdleMs = 0;  // STOP of all until all were in IDLE
  Resources sAfter;    // once everything was destroyed
};

// fnWhileRunning runs once all are in RUN and kept alive (a soak injects
// faults there); the fleet is healed after it and must be in RUN again
// within the bound. bFaults: the cycle met faults, so a member may have
// sent more than one UID message and raised alarms (each cleared again).
CycleResult RunCycle(Fleet& rFleet, const Resources& sBaseline,
                     const std::function<void()>& fnWhileRunning, bool bFaults);

}  // namespace loadtest

#endif  // LOAD_CYCLE_H
