// Alarm report: one line through the device's print per report, and the
// exact arguments to the installed observer.
#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "almsnd.h"
#include "kxcom.h"

namespace {

struct Report {
  int code;
  int camera;
  std::string address;
  bool address_given;
  int position;
  bool operator==(const Report& other) const {
    return code == other.code && camera == other.camera && address == other.address &&
           address_given == other.address_given && position == other.position;
  }
};

std::ostream& operator<<(std::ostream& out, const Report& r) {
  return out << "{" << r.code << "," << r.camera << ",\"" << r.address << "\"," << r.address_given
             << "," << r.position << "}";
}

class Recorder {
 public:
  static void Observe(int code, int camera, const char* address, int position, void* context) {
    auto* self = static_cast<Recorder*>(context);
    std::lock_guard<std::mutex> lock(self->mutex_);
    self->reports_.push_back(
        {code, camera, address != nullptr ? address : "", address != nullptr, position});
  }
  std::vector<Report> Reports() {
    std::lock_guard<std::mutex> lock(mutex_);
    return reports_;
  }

 private:
  std::mutex mutex_;
  std::vector<Report> reports_;
};

class Lines {
 public:
  Lines() { COM_SetPrintSink(&Lines::Sink, this); }
  ~Lines() { COM_SetPrintSink(nullptr, nullptr); }
  std::vector<std::string> Texts() {
    std::lock_guard<std::mutex> lock(mutex_);
    return texts_;
  }

 private:
  static void Sink(const char* text, void* context) {
    auto* self = static_cast<Lines*>(context);
    std::lock_guard<std::mutex> lock(self->mutex_);
    self->texts_.emplace_back(text);
  }
  std::mutex mutex_;
  std::vector<std::string> texts_;
};

class AlarmTest : public ::testing::Test {
 protected:
  void TearDown() override {
    ALMSND_SetObserver(nullptr, nullptr);
    COM_SetPrintSink(nullptr, nullptr);
  }
};

TEST_F(AlarmTest, ObserverReceivesTheExactArguments) {
  Recorder recorder;
  ALMSND_SetObserver(&Recorder::Observe, &recorder);
  char address[] = "192.168.0.10";
  EXPECT_EQ(ALMSND_AsyErrReport(2, 17, address, 3, 0), 0);
  EXPECT_EQ(ALMSND_AsyErrReport(39, 17, address, 3, 0), 0);
  EXPECT_EQ(ALMSND_AsyErrReport(3, 262, "cam.example", 6, 0), 0);
  EXPECT_EQ(ALMSND_AsyErrReport(40, 0, "", 1, 0), 0);
  EXPECT_EQ(recorder.Reports(), (std::vector<Report>{
                                    {2, 17, "192.168.0.10", true, 3},
                                    {39, 17, "192.168.0.10", true, 3},
                                    {3, 262, "cam.example", true, 6},
                                    {40, 0, "", true, 1},
                                }));
}

TEST_F(AlarmTest, ObserverGetsTheCallersAddressPointer) {
  static const char* seen = nullptr;
  const char* address = "10.1.2.3";
  ALMSND_SetObserver([](int, int, const char* a, int, void*) { seen = a; }, nullptr);
  ALMSND_AsyErrReport(2, 1, address, 1, 0);
  EXPECT_EQ(seen, address);
}

TEST_F(AlarmTest, EachReportIsOneLineOfThePrint) {
  Lines lines;
  ALMSND_AsyErrReport(2, 17, "192.168.0.10", 3, 0);
  ALMSND_AsyErrReport(40, 5, "10.0.0.7", 6, 0);
  EXPECT_EQ(lines.Texts(),
            (std::vector<std::string>{
                "ALMSND_AsyErrReport code=2 camera=17 address=192.168.0.10 position=3\n",
                "ALMSND_AsyErrReport code=40 camera=5 address=10.0.0.7 position=6\n",
            }));
}

TEST_F(AlarmTest, ReportWithoutObserverOnlyPrints) {
  Lines lines;
  EXPECT_EQ(ALMSND_AsyErrReport(39, 4, "10.0.0.1", 2, 0), 0);
  EXPECT_EQ(lines.Texts(), (std::vector<std::string>{
                               "ALMSND_AsyErrReport code=39 camera=4 address=10.0.0.1 position=2\n",
                           }));
}

TEST_F(AlarmTest, NullAddressIsPrintedEmptyAndPassedAsNull) {
  Lines lines;
  Recorder recorder;
  ALMSND_SetObserver(&Recorder::Observe, &recorder);
  EXPECT_EQ(ALMSND_AsyErrReport(2, 0, nullptr, 1, 0), 0);
  EXPECT_EQ(lines.Texts(), (std::vector<std::string>{
                               "ALMSND_AsyErrReport code=2 camera=0 address= position=1\n",
                           }));
  EXPECT_EQ(recorder.Reports(), (std::vector<Report>{{2, 0, "", false, 1}}));
}

TEST_F(AlarmTest, RemovedObserverIsCalledNoMore) {
  Recorder recorder;
  ALMSND_SetObserver(&Recorder::Observe, &recorder);
  ALMSND_AsyErrReport(2, 1, "a", 1, 0);
  ALMSND_SetObserver(nullptr, &recorder);
  ALMSND_AsyErrReport(39, 1, "a", 1, 0);
  EXPECT_EQ(recorder.Reports(), (std::vector<Report>{{2, 1, "a", true, 1}}));
}

TEST_F(AlarmTest, ReplacedObserverTakesOver) {
  Recorder first;
  Recorder second;
  ALMSND_SetObserver(&Recorder::Observe, &first);
  ALMSND_AsyErrReport(2, 1, "a", 1, 0);
  ALMSND_SetObserver(&Recorder::Observe, &second);
  ALMSND_AsyErrReport(39, 1, "a", 1, 0);
  EXPECT_EQ(first.Reports(), (std::vector<Report>{{2, 1, "a", true, 1}}));
  EXPECT_EQ(second.Reports(), (std::vector<Report>{{39, 1, "a", true, 1}}));
}

TEST_F(AlarmTest, ObserverMayReportAndRemoveItself) {
  static int calls = 0;
  calls = 0;
  ALMSND_SetObserver(
      [](int code, int, const char*, int, void*) {
        ++calls;
        ALMSND_SetObserver(nullptr, nullptr);
        if (code == 2) ALMSND_AsyErrReport(39, 0, "", 1, 0);
      },
      nullptr);
  Lines lines;
  ALMSND_AsyErrReport(2, 0, "", 1, 0);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(lines.Texts().size(), 2u);
}

TEST_F(AlarmTest, ReportsFromManyThreadsAllArrive) {
  Recorder recorder;
  Lines lines;
  ALMSND_SetObserver(&Recorder::Observe, &recorder);
  constexpr int kThreads = 4;
  constexpr int kReports = 100;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t] {
      const std::string address = "10.0.0." + std::to_string(t + 1);
      for (int i = 0; i < kReports; ++i) {
        ALMSND_AsyErrReport(i % 2 == 0 ? 2 : 39, i, address.c_str(), t + 1, 0);
      }
    });
  }
  // Swapping the observer meanwhile is safe; it ends where it began.
  for (int i = 0; i < 20; ++i) ALMSND_SetObserver(&Recorder::Observe, &recorder);
  for (auto& thread : threads) thread.join();

  std::vector<Report> expected;
  for (int t = 0; t < kThreads; ++t) {
    for (int i = 0; i < kReports; ++i) {
      expected.push_back({i % 2 == 0 ? 2 : 39, i, "10.0.0." + std::to_string(t + 1), true, t + 1});
    }
  }
  auto reports = recorder.Reports();
  const auto by_fields = [](const Report& a, const Report& b) {
    return std::tie(a.position, a.camera, a.code) < std::tie(b.position, b.camera, b.code);
  };
  std::sort(reports.begin(), reports.end(), by_fields);
  std::sort(expected.begin(), expected.end(), by_fields);
  EXPECT_EQ(reports, expected);
  EXPECT_EQ(lines.Texts().size(), static_cast<size_t>(kThreads * kReports));
}

}  // namespace
