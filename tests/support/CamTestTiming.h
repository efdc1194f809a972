// Upper time bounds of the tests, widened where the code runs slower than a
// plain build on an idle machine. A test states the bound that holds for a
// plain build (a 5 s time-out divided by ten returns within 1 s) and passes it
// through Scaled(); lower bounds (a wait lasted at least its time-out) are
// never scaled, since a slower run only makes them truer.
//
// The factor: CAMTEST_BUILD_TIME_SCALE, which tests/support/CMakeLists.txt
// sets from CAMREQ_SANITIZE (ThreadSanitizer runs the suite about ten times
// slower, AddressSanitizer about three), or the environment variable
// CAMREQ_TEST_TIME_SCALE where it is a whole number of at least 1 (a
// slower machine, a debugger).
#ifndef CAM_TEST_TIMING_H
#define CAM_TEST_TIMING_H

#include <chrono>
#include <cstdlib>

#ifndef CAMTEST_BUILD_TIME_SCALE
#define CAMTEST_BUILD_TIME_SCALE 1
#endif

namespace camtest {

inline int TimeScale() {
  static const int iScale = [] {
    const char* pcEnv = std::getenv("CAMREQ_TEST_TIME_SCALE");
    if (pcEnv != nullptr) {
      char* pcEnd = nullptr;
      const long lValue = std::strtol(pcEnv, &pcEnd, 10);
      if (pcEnd != pcEnv && *pcEnd == '\0' && lValue >= 1 && lValue <= 1000) {
        return static_cast<int>(lValue);
      }
    }
    return CAMTEST_BUILD_TIME_SCALE;
  }();
  return iScale;
}

// tBound widened by TimeScale().
template <class Rep, class Period>
std::chrono::duration<Rep, Period> Scaled(std::chrono::duration<Rep, Period> tBound) {
  return tBound * TimeScale();
}

// A bound in milliseconds, for the tests that count in plain numbers.
inline long ScaledMs(long lBoundMs) {
  return lBoundMs * TimeScale();
}

}  // namespace camtest

#endif  // CAM_TEST_TIMING_H
