// Test support shared by the test groups: captures every text that reaches
// COM_printf, and waits on conditions with deadlines instead of sleeping. The
// deadlines are widened by TimeScale() (CamTestTiming.h).
#ifndef CAM_TEST_SUPPORT_H
#define CAM_TEST_SUPPORT_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "CamTestTiming.h"

namespace camtest {

// Installs itself as the COM_printf sink for its lifetime and keeps every
// text in order. One at a time per process.
class PrintCapture {
 public:
  PrintCapture();
  ~PrintCapture();
  PrintCapture(const PrintCapture&) = delete;
  PrintCapture& operator=(const PrintCapture&) = delete;

  std::vector<std::string> Lines() const;  // every text, in order
  std::string All() const;                 // all texts joined
  void Clear();
  // Number of texts equal to sText.
  int Count(const std::string& sText) const;
  // Number of texts containing sPart.
  int CountContaining(const std::string& sPart) const;
  bool Contains(const std::string& sPart) const { return CountContaining(sPart) > 0; }
  // Waits until some text contains sPart; false after the deadline
  // (tLimit, scaled).
  bool WaitFor(const std::string& sPart,
               std::chrono::milliseconds tLimit = std::chrono::seconds(10)) const;
  // Waits until at least iCount texts contain sPart.
  bool WaitForCount(const std::string& sPart, int iCount,
                    std::chrono::milliseconds tLimit = std::chrono::seconds(10)) const;

 private:
  static void Sink(const char* pcText, void* pvContext);
  mutable std::mutex m_mutex;
  mutable std::condition_variable m_changed;
  std::vector<std::string> m_lines;
};

// Polls fnCondition until it holds or the deadline (tLimit, scaled) passes.
// For state that has no notification of its own (a status word, a counter).
bool WaitUntil(const std::function<bool()>& fnCondition,
               std::chrono::milliseconds tLimit = std::chrono::seconds(10));

// Number of open file descriptors of this process.
int OpenFdCount();

// The number of open descriptors once it is back at iExpected, or the last
// count when the deadline (tLimit, scaled) passes first. A thread that is
// still ending when a test counts may hold a descriptor for a moment (the
// sanitizers probe memory through a pipe), which is not one the code under
// test left open; a leaked descriptor stays, and the count still differs.
int SettledFdCount(int iExpected, std::chrono::milliseconds tLimit = std::chrono::seconds(2));

}  // namespace camtest

#endif
