// The idle-round cadence of a running stream, measured on a real request
// thread against a simulated camera with the IPC wait shortened: one
// keep-alive on every 300th idle round (the first at once after the start),
// one stream check on every 150th idle round in RUN.
#include <gtest/gtest.h>

#include <atomic>

#include "CamTestSupport.h"
#include "SessionTestSupport.h"
#include "kxcom.h"

namespace {

constexpr int kWaitDivisor = 100;  // an idle round takes about a millisecond

// Counts the thread's calls in RUN; stops its thread before its own part
// goes away.
class CountingRtp : public CCamRequester_Cgi_Kobu_Rtp {
 public:
  ~CountingRtp() override {
    StopChildThread();
    iConnectStatus = 0;
  }
  int SendKeepAliveCommand() override {
    if (iConnectStatus == CAM_HTTP_STS_RUN) ++iKeepAliveCallsInRun;
    return CCamRequester_Cgi_Kobu_Rtp::SendKeepAliveCommand();
  }
  int KeepStreamStartCmd() override {
    if (iConnectStatus == CAM_HTTP_STS_RUN) ++iStreamTicksInRun;
    return CCamRequester_Cgi_Kobu_Rtp::KeepStreamStartCmd();
  }
  int CheckStreamStart(unsigned short usCamType, int iType) override {
    ++iStreamChecks;
    return CCamRequester_Cgi_Kobu_Rtp::CheckStreamStart(usCamType, iType);
  }
  std::atomic<int> iKeepAliveCallsInRun{0};
  std::atomic<int> iStreamTicksInRun{0};
  std::atomic<int> iStreamChecks{0};
};

int KeepAlives(const camsim::Device& rDevice) {
  int n = 0;
  for (const auto& r : rDevice.Requests()) n += r.path == "/cgi-bin/keep_alive";
  return n;
}

TEST(Cadence, OneKeepAlivePer300IdleRoundsAndOneStreamCheckPer150InRun) {
  KXCOM_SetWaitDivisor(kWaitDivisor);
  auto device = sessiontest::StartDevice("127.0.0.1", 7);
  ASSERT_NE(device, nullptr);
  sessiontest::RecordingUpper upper;
  {
    CountingRtp req;
    sessiontest::Aim(req, *device, 0, 7, &upper);
    req.Initialize(31);
    req.EnableKeepAlive();
    req.RequestStart();
    ASSERT_TRUE(camtest::WaitUntil([&] { return req.iKeepAliveCallsInRun >= 1000; },
                                   std::chrono::seconds(60)));
    // The thread stops after the round it is in; the counts are then final.
    req.StopChildThread();
    EXPECT_EQ(req.iConnectStatus.load(), CAM_HTTP_STS_RUN);
    const int iCalls = req.iKeepAliveCallsInRun;
    const int iTicks = req.iStreamTicksInRun;
    // The first call after the start sends (its count was set to 300).
    EXPECT_EQ(KeepAlives(*device), 1 + (iCalls - 1) / 300) << iCalls << " calls";
    EXPECT_EQ(req.iStreamChecks.load(), iTicks / 150) << iTicks << " rounds";
    EXPECT_GE(req.iStreamChecks.load(), 6);
    // The stream arrives: the camera was asked once per check.
    EXPECT_EQ(upper.m_iQueries.load(), req.iStreamChecks.load());
  }
  KXCOM_SetWaitDivisor(1);
}

TEST(Cadence, KeepAliveOffSendsNoneAfterTheStart) {
  KXCOM_SetWaitDivisor(kWaitDivisor);
  auto device = sessiontest::StartDevice("127.0.0.1", 7);
  ASSERT_NE(device, nullptr);
  sessiontest::RecordingUpper upper;
  {
    CountingRtp req;
    sessiontest::Aim(req, *device, 2, 7, &upper);
    req.Initialize(32);
    req.RequestStart();
    ASSERT_TRUE(
        camtest::WaitUntil([&] { return req.iStreamTicksInRun >= 700; }, std::chrono::seconds(60)));
    req.StopChildThread();
    EXPECT_EQ(req.iKeepAliveCallsInRun.load(), 0);
    EXPECT_EQ(KeepAlives(*device), 0);
    EXPECT_EQ(req.iStreamChecks.load(), req.iStreamTicksInRun.load() / 150);
  }
  KXCOM_SetWaitDivisor(1);
}

}  // namespace
