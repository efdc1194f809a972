// Shared pieces of the CGI tests: a fixed clock, requester objects without a
// thread, and a check that a refusal printed its message and left dst empty.
#ifndef CGI_TEST_SUPPORT_H
#define CGI_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <cstring>
#include <ctime>
#include <string>

#include "CamClock.h"
#include "CamTestSupport.h"

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

// The refusal message of a builder for a camera type it does not serve.
inline std::string Unknown(const std::string& sOperation, int iType) {
  return sOperation + " [ERROR] Unknown Camera Type enum#[" + std::to_string(iType) + "]\n";
}

// A requester of one class under a fixed clock, with the checks every line
// test makes: a built line, or a refusal with its message and dst empty.
template <typename Requester>
class LineTest : public ::testing::Test {
 protected:
  template <typename F>
  void ExpectRefusal(F fnBuild, const std::string& sMessage, const std::string& sWhere) {
    print_.Clear();
    std::memset(dst_, 'x', sizeof(dst_));
    EXPECT_EQ(fnBuild(), -1) << sWhere;
    EXPECT_STREQ(dst_, "") << sWhere;
    EXPECT_EQ(print_.Count(sMessage), 1) << sWhere << " expected message " << sMessage;
  }

  template <typename F>
  void ExpectLine(F fnBuild, const std::string& sLine, const std::string& sWhere) {
    std::memset(dst_, 'x', sizeof(dst_));
    EXPECT_EQ(fnBuild(), 0) << sWhere;
    EXPECT_EQ(std::string(dst_), sLine) << sWhere;
  }

  ClockOverride clock_{&FixedClock};
  camtest::PrintCapture print_;
  Requester r_;
  char dst_[1024];
};

}  // namespace cgitest

#endif
