// Helpers shared by the IPC tests: a queue bound for one test, a capture of
// the print channel, and a fixture that checks that no buffer leaks.
#ifndef TESTS_IPC_TEST_SUPPORT_H
#define TESTS_IPC_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <string>
#include <vector>

#include "kxcom.h"

namespace ipc_test {

using Clock = std::chrono::steady_clock;

inline double MillisSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

inline struct timeval Wait(long seconds, long micros) {
  struct timeval wait {};
  wait.tv_sec = seconds;
  wait.tv_usec = micros;
  return wait;
}

// The request thread's wait: 0 s and 100000 us.
inline struct timeval RequestWait() {
  return Wait(0, 100000);
}

// A queue bound at (module, index) for the life of the object.
class BoundQueue {
 public:
  BoundQueue(int module, uint32_t index)
      : module_(module), index_(index), id_(KXCOM_InitMsg_Asy(module, index)) {}
  ~BoundQueue() {
    if (id_ >= 0) KXCOM_DeleteMsgQue_Asy(id_, module_, index_);
  }
  BoundQueue(const BoundQueue&) = delete;
  BoundQueue& operator=(const BoundQueue&) = delete;

  int id() const { return id_; }
  // Unbinds now; the destructor then has nothing left to do.
  int Delete() {
    const int result = KXCOM_DeleteMsgQue_Asy(id_, module_, index_);
    id_ = -1;
    return result;
  }

 private:
  int module_;
  uint32_t index_;
  int id_;
};

// Collects every text of COM_printf while installed.
class PrintCapture {
 public:
  PrintCapture() { COM_SetPrintSink(&PrintCapture::Sink, this); }
  ~PrintCapture() { COM_SetPrintSink(nullptr, nullptr); }
  PrintCapture(const PrintCapture&) = delete;
  PrintCapture& operator=(const PrintCapture&) = delete;

  std::vector<std::string> Texts() {
    std::lock_guard<std::mutex> lock(mutex_);
    return texts_;
  }

 private:
  static void Sink(const char* text, void* context) {
    auto* self = static_cast<PrintCapture*>(context);
    std::lock_guard<std::mutex> lock(self->mutex_);
    self->texts_.emplace_back(text);
  }

  std::mutex mutex_;
  std::vector<std::string> texts_;
};

// Every test leaves the library as it found it: real-time waits, standard
// error as the print channel, and no buffer left behind.
class IpcTest : public ::testing::Test {
 protected:
  void SetUp() override { live_before_ = KXCOM_LiveBufferCount(); }
  void TearDown() override {
    KXCOM_SetWaitDivisor(1);
    COM_SetPrintSink(nullptr, nullptr);
    EXPECT_EQ(KXCOM_LiveBufferCount(), live_before_) << "message buffers leaked";
  }

 private:
  int live_before_ = 0;
};

}  // namespace ipc_test

#endif  // TESTS_IPC_TEST_SUPPORT_H
