#include "CamClock.h"

#include <atomic>

namespace cgi {

namespace {
std::atomic<ClockSource> g_clockSource{&clock};
}

ClockSource SetClockSource(ClockSource fnSource) {
  return g_clockSource.exchange(fnSource != nullptr ? fnSource : &clock);
}

long PageValue() {
  const clock_t tNow = g_clockSource.load()();
  return tNow == static_cast<clock_t>(-1) ? kClockFallback : static_cast<long>(tNow);
}

}  // namespace cgi
