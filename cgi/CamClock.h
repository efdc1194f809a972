// The clock value that page, PAGE and TEMP keys carry. Cameras only use it to
// tell repeated lines apart, so a clock() that fails is replaced by a fixed
// number. The source is one settable function so that tests can make clock()
// fail or return a known value.
#ifndef CAM_CLOCK_H
#define CAM_CLOCK_H

#include <ctime>

namespace cgi {

// Value used when the clock source returns -1.
constexpr long kClockFallback = 1234567;

using ClockSource = clock_t (*)();

// Replaces the clock source; nullptr restores clock(). Returns the previous one.
ClockSource SetClockSource(ClockSource fnSource);

// The value for "page=%ld", "PAGE=%ld" and "TEMP=%ld": the source's value,
// or kClockFallback when it returns -1.
long PageValue();

}  // namespace cgi

#endif
