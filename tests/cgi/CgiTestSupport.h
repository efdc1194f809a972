// Shared pieces of the CGI tests: a fixed clock, requester objects without a
// thread, and a check that a refusal printed its message and left dst empty.
#ifndef CGI_TEST_SUPPORT_H
#define CGI_TEST_SUPPORT_H

#include <ctime>
#include <string>

#include "CamClock.h"

namespace cgitest {

constexpr long kFixedClock = 777;

inline clock_t FixedClock() {
  return static_cast<clock_t>(kFixedClock);
}
inline clock_t FailingClock() {
  return static_cast<clock_t>(-1);
}

// Installs a clock source for the lifetime of the object.
class ClockOverride {
 public:
  explicit ClockOverride(cgi::ClockSource fnSource) : m_previous(cgi::SetClockSource(fnSource)) {}
  ~ClockOverride() { cgi::SetClockSource(m_previous); }
  ClockOverride(const ClockOverride&) = delete;
  ClockOverride& operator=(const ClockOverride&) = delete;

 private:
  cgi::ClockSource m_previous;
};

inline std::string Repeat(const std::string& sPart, int iCount) {
  std::string s;
  for (int i = 0; i < iCount; ++i) s += sPart;
  return s;
}

}  // namespace cgitest

#endif
