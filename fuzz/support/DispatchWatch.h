// Counts the messages that request threads have finished, from their own
// diagnostic line "COM_MsgBufFree", which each thread prints after it has
// carried out a message and before it frees it. A fuzz target waits on the
// count to know that a START or a STOP has run through, with a deadline.
// Installs itself as the print sink (every other line is dropped).
#ifndef FUZZ_DISPATCH_WATCH_H
#define FUZZ_DISPATCH_WATCH_H

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace fuzzsup {

class DispatchWatch {
 public:
  DispatchWatch();
  ~DispatchWatch();
  DispatchWatch(const DispatchWatch&) = delete;
  DispatchWatch& operator=(const DispatchWatch&) = delete;

  // Messages finished so far.
  long Count();
  // Waits until more than lSeen messages have finished; false at the deadline.
  bool WaitBeyond(long lSeen, std::chrono::milliseconds tLimit);

 private:
  static void Sink(const char* pcText, void* pvContext);

  std::mutex m_mutex;
  std::condition_variable m_changed;
  long m_lCount = 0;
};

}  // namespace fuzzsup

#endif
