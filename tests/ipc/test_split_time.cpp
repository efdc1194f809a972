// Time measurement: start stores monotonic time, end turns the record into
// the time passed since.
#include <time.h>

#include <thread>

#include "CamTestTiming.h"
#include "ipc_test_support.h"

namespace ipc_test {
namespace {

using SplitTimeTest = IpcTest;

long long MicrosOf(const COM_SPLIT_TIME& rec) {
  return rec.lSec * 1000000LL + rec.lUsec;
}

long long MonotonicMicros() {
  struct timespec now {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * 1000000LL + now.tv_nsec / 1000;
}

TEST_F(SplitTimeTest, StartFillsTheRecordWithMonotonicTime) {
  COM_SPLIT_TIME rec{-1, -1};
  const long long before = MonotonicMicros();
  COM_SplitTime_Start(1, &rec);
  const long long after = MonotonicMicros();
  EXPECT_GE(rec.lUsec, 0);
  EXPECT_LT(rec.lUsec, 1000000);
  EXPECT_GE(MicrosOf(rec), before);
  EXPECT_LE(MicrosOf(rec), after);
}

TEST_F(SplitTimeTest, EndGivesTheTimePassed) {
  COM_SPLIT_TIME rec{};
  COM_SplitTime_Start(2, &rec);
  const auto start = Clock::now();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  COM_SPLIT_TIME copy = rec;
  COM_SplitTime_End(2, &copy);
  const long long measured_outside =
      std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start).count();
  EXPECT_GE(MicrosOf(copy), 20000);
  EXPECT_LE(MicrosOf(copy), measured_outside + 1000);
  EXPECT_GE(copy.lUsec, 0);
  EXPECT_LT(copy.lUsec, 1000000);
}

TEST_F(SplitTimeTest, EndBorrowsAcrossTheSecond) {
  // A start 0.9 s before a point whose microseconds are smaller.
  COM_SPLIT_TIME now{};
  COM_SplitTime_Start(13, &now);
  COM_SPLIT_TIME rec{};
  const long long start = MicrosOf(now) - 900000;
  ASSERT_GT(start, 0);
  rec.lSec = static_cast<long>(start / 1000000);
  rec.lUsec = static_cast<long>(start % 1000000);
  COM_SplitTime_End(13, &rec);
  EXPECT_GE(MicrosOf(rec), 900000);
  EXPECT_LT(MicrosOf(rec), 900000 + 1000LL * camtest::ScaledMs(5000));
  EXPECT_GE(rec.lUsec, 0);
  EXPECT_LT(rec.lUsec, 1000000);
}

TEST_F(SplitTimeTest, NothingIsPrinted) {
  PrintCapture capture;
  COM_SPLIT_TIME rec{};
  COM_SplitTime_Start(14, &rec);
  COM_SplitTime_End(14, &rec);
  EXPECT_TRUE(capture.Texts().empty());
}

TEST_F(SplitTimeTest, NullOrForeignRecordIsHarmless) {
  COM_SplitTime_Start(1, nullptr);
  COM_SplitTime_End(1, nullptr);
  COM_SPLIT_TIME garbage{-5, 7000000};
  COM_SplitTime_End(1, &garbage);
  EXPECT_EQ(garbage.lSec, 0);
  EXPECT_EQ(garbage.lUsec, 0);
  COM_SPLIT_TIME future{2000000000L, 0};
  COM_SplitTime_End(1, &future);
  EXPECT_EQ(future.lSec, 0);
  EXPECT_EQ(future.lUsec, 0);
}

}  // namespace
}  // namespace ipc_test
