// The device's print: exact text to the installed sink or to standard
// error, whole texts of any length, one call at a time.
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "ipc_test_support.h"

namespace ipc_test {
namespace {

using PrintTest = IpcTest;

TEST_F(PrintTest, SinkReceivesTheFormattedText) {
  PrintCapture capture;
  const std::vector<std::string> expected = {
      "RequestThreadMain [DEBUG] START command TINDEX=1f\n",
      "SetCameraNumber [DEBUG] CAM[263]",
      "IP:    10.0.0.1 POS:1 R:h264 text",
  };
  // Like printf, the result is the number of characters written.
  EXPECT_EQ(COM_printf("RequestThreadMain [DEBUG] START command TINDEX=%x\n", 0x1f),
            static_cast<int>(expected[0].size()));
  EXPECT_EQ(COM_printf("SetCameraNumber [DEBUG] CAM[%d]", 263),
            static_cast<int>(expected[1].size()));
  EXPECT_EQ(COM_printf("%s", "IP:    10.0.0.1 POS:1 R:h264 text"),
            static_cast<int>(expected[2].size()));
  EXPECT_EQ(capture.Texts(), expected);
}

TEST_F(PrintTest, LongTextIsNotCut) {
  PrintCapture capture;
  const std::string long_text(10000, 'x');
  EXPECT_EQ(COM_printf("[%s]\n", long_text.c_str()), 10003);
  const auto texts = capture.Texts();
  ASSERT_EQ(texts.size(), 1u);
  EXPECT_EQ(texts[0], "[" + long_text + "]\n");
}

TEST_F(PrintTest, EmptyTextReachesTheSink) {
  PrintCapture capture;
  EXPECT_EQ(COM_printf("%s", ""), 0);
  EXPECT_EQ(capture.Texts(), (std::vector<std::string>{""}));
}

TEST_F(PrintTest, NullFormatIsRefused) {
  PrintCapture capture;
  // A null format is a caller's mistake; it prints nothing.
  const char* no_format = nullptr;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
  EXPECT_LT(COM_printf(no_format), 0);
#pragma GCC diagnostic pop
  EXPECT_TRUE(capture.Texts().empty());
}

TEST_F(PrintTest, WithoutSinkTheTextGoesToStandardError) {
  testing::internal::CaptureStderr();
  COM_printf("[CCamR::ConnectError] m_iErrorCount = [%d] m_fErrorStat = [%d]\n", 10, 0);
  const std::string written = testing::internal::GetCapturedStderr();
  EXPECT_EQ(written, "[CCamR::ConnectError] m_iErrorCount = [10] m_fErrorStat = [0]\n");
}

TEST_F(PrintTest, RemovingTheSinkRestoresStandardError) {
  {
    PrintCapture capture;
    COM_printf("to the sink\n");
    EXPECT_EQ(capture.Texts(), (std::vector<std::string>{"to the sink\n"}));
  }
  testing::internal::CaptureStderr();
  COM_printf("to standard error\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "to standard error\n");
}

TEST_F(PrintTest, SinkGetsItsContext) {
  struct Seen {
    std::string text;
    int calls = 0;
  } seen;
  COM_SetPrintSink(
      [](const char* text, void* context) {
        auto* s = static_cast<Seen*>(context);
        s->text = text;
        ++s->calls;
      },
      &seen);
  COM_printf("line %d\n", 7);
  COM_SetPrintSink(nullptr, nullptr);
  EXPECT_EQ(seen.calls, 1);
  EXPECT_EQ(seen.text, "line 7\n");
}

TEST_F(PrintTest, SinkThatPrintsDoesNotDeadlock) {
  static int calls = 0;
  calls = 0;
  COM_SetPrintSink(
      [](const char*, void*) {
        ++calls;
        COM_printf("from inside the sink\n");
      },
      nullptr);
  testing::internal::CaptureStderr();
  COM_printf("outer\n");
  const std::string written = testing::internal::GetCapturedStderr();
  COM_SetPrintSink(nullptr, nullptr);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(written, "from inside the sink\n");
}

TEST_F(PrintTest, LinesFromManyThreadsArriveWhole) {
  PrintCapture capture;
  constexpr int kThreads = 4;
  constexpr int kLines = 200;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t] {
      for (int i = 0; i < kLines; ++i) {
        COM_printf("RequestThreadMain [DEBUG] Dummy command TINDEX=%x line=%d\n", t, i);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  auto texts = capture.Texts();
  ASSERT_EQ(texts.size(), static_cast<size_t>(kThreads * kLines));
  std::vector<std::string> expected;
  for (int t = 0; t < kThreads; ++t) {
    for (int i = 0; i < kLines; ++i) {
      char line[128];
      std::snprintf(line, sizeof(line),
                    "RequestThreadMain [DEBUG] Dummy command TINDEX=%x line=%d\n", t, i);
      expected.emplace_back(line);
    }
  }
  std::sort(texts.begin(), texts.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(texts, expected);
}

TEST_F(PrintTest, SinkCallsNeverOverlap) {
  static std::atomic<int> inside{0};
  static std::atomic<int> overlaps{0};
  static std::atomic<int> calls{0};
  inside = 0;
  overlaps = 0;
  calls = 0;
  COM_SetPrintSink(
      [](const char*, void*) {
        if (inside.fetch_add(1) != 0) ++overlaps;
        std::this_thread::yield();
        ++calls;
        inside.fetch_sub(1);
      },
      nullptr);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([] {
      for (int i = 0; i < 300; ++i) COM_printf("x%d\n", i);
    });
  }
  for (auto& thread : threads) thread.join();
  COM_SetPrintSink(nullptr, nullptr);
  EXPECT_EQ(calls.load(), 1200);
  EXPECT_EQ(overlaps.load(), 0);
}

TEST_F(PrintTest, SinkCanBeChangedWhileOthersPrint) {
  struct Counter {
    std::atomic<int> texts{0};
    std::atomic<int> wrong{0};
  };
  const COM_PrintSink count = [](const char* text, void* context) {
    auto* counter = static_cast<Counter*>(context);
    if (std::string(text) != "busy\n") ++counter->wrong;
    ++counter->texts;
  };
  Counter counters[2];
  COM_SetPrintSink(count, &counters[0]);
  std::atomic<bool> stop{false};
  std::thread printer([&] {
    while (!stop) COM_printf("busy\n");
  });
  // Switch between two sinks (never through standard error); each one
  // starts receiving once it is installed.
  for (int round = 1; round <= 50; ++round) {
    Counter& next = counters[round % 2];
    const int before = next.texts.load();
    COM_SetPrintSink(count, &next);
    const auto deadline = Clock::now() + std::chrono::seconds(10);
    while (next.texts.load() == before && Clock::now() < deadline) std::this_thread::yield();
    if (next.texts.load() == before) {
      ADD_FAILURE() << "sink of round " << round << " received nothing";
      break;  // still join the printer below
    }
  }
  stop = true;
  printer.join();
  COM_SetPrintSink(nullptr, nullptr);
  EXPECT_EQ(counters[0].wrong.load(), 0);
  EXPECT_EQ(counters[1].wrong.load(), 0);
}

}  // namespace
}  // namespace ipc_test
