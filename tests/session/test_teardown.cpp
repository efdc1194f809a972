// Destroying a requester: the wait of at most about 5 s for the session to
// come back to IDLE with its TIMEOUT line, the request thread stopped, no
// session left open, and not a word to the upper layer once destruction has
// begun. STOP, destruction and the upper layer's status change racing the
// request thread (run under the sanitizers).
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "CamTestSupport.h"
#include "CamTestTiming.h"
#include "RecordingRequester.h"
#include "SessionTestSupport.h"
#include "kxcom.h"

namespace {

constexpr int kWaitDivisor = 100;

// An upper layer that notes every call made while its requester is being
// destroyed. The requester outlives every call: its thread is joined
// before it goes away.
class WatchingUpper : public sessiontest::RecordingUpper {
 public:
  void NotifyRtpStream(int iUid, const void* pSessionInfo, int iRtpPort, const char* cIpAddr,
                       int iPos, int iCmdType, int iSelectChNo, int iAudioBitrate, int iAudioEnable,
                       const char* cMultiAddr, int iUniPort, int iAudioInPort) override {
    Check();
    RecordingUpper::NotifyRtpStream(iUid, pSessionInfo, iRtpPort, cIpAddr, iPos, iCmdType,
                                    iSelectChNo, iAudioBitrate, iAudioEnable, cMultiAddr, iUniPort,
                                    iAudioInPort);
  }
  int GetStreamState(unsigned short usCameraType, int iCmdType) override {
    Check();
    return RecordingUpper::GetStreamState(usCameraType, iCmdType);
  }
  std::atomic<CamRequesterFields*> pWatched{nullptr};
  std::atomic<int> iLateCalls{0};

 private:
  void Check() {
    CamRequesterFields* p = pWatched.load();
    if (p != nullptr && p->m_iDestruct == 1) ++iLateCalls;
  }
};

class Teardown : public ::testing::Test {
 protected:
  void SetUp() override {
    std::thread([] {}).join();  // the sanitizers' helper thread, before counting
    KXCOM_SetWaitDivisor(kWaitDivisor);
    iThreadsBefore = camtest::ThreadCount();
    iFdsBefore = camtest::OpenFdCount();
  }
  void TearDown() override {
    KXCOM_SetWaitDivisor(1);
    if (device != nullptr) {
      EXPECT_TRUE(camtest::WaitUntil([&] { return device->OpenConnections() == 0; }));
      device->Stop();
      device.reset();
    }
    EXPECT_TRUE(camtest::WaitUntil([&] { return camtest::ThreadCount() == iThreadsBefore; }))
        << "threads left behind";
    EXPECT_EQ(camtest::SettledFdCount(iFdsBefore, std::chrono::seconds(10)), iFdsBefore)
        << "descriptors left behind";
  }
  CCamRequester_Cgi_Kobu_Rtp* StartRunning(int iIndex) {
    device = sessiontest::StartDevice("127.0.0.1", 7);
    auto* pReq = new CCamRequester_Cgi_Kobu_Rtp();
    sessiontest::Aim(*pReq, *device, 0, 7, &upper);
    upper.pWatched = pReq;
    pReq->Initialize(iIndex);
    pReq->EnableKeepAlive();
    pReq->RequestStart();
    EXPECT_TRUE(camtest::WaitUntil([&] { return pReq->iConnectStatus == CAM_HTTP_STS_RUN; }));
    return pReq;
  }

  camtest::PrintCapture capture;
  WatchingUpper upper;
  std::unique_ptr<camsim::Device> device;
  int iThreadsBefore = 0;
  int iFdsBefore = 0;
};

TEST_F(Teardown, RunningRequesterWaitsAboutFiveSecondsThenStops) {
  CCamRequester_Cgi_Kobu_Rtp* pReq = StartRunning(41);
  const auto tStart = std::chrono::steady_clock::now();
  delete pReq;
  const auto tTaken = std::chrono::steady_clock::now() - tStart;
  EXPECT_GE(tTaken, std::chrono::milliseconds(5000));
  EXPECT_LT(tTaken, camtest::Scaled(std::chrono::milliseconds(15000)));
  EXPECT_EQ(capture.Count("~CCamRequester_Cgi_Kobu_Rtp [Error] TIMEOUT!!!\n"), 1);
  EXPECT_EQ(capture.Count("RequestThreadMain [DEBUG] Msg Free & Thread Delete\n"), 1);
  EXPECT_EQ(upper.iLateCalls.load(), 0);
}

TEST_F(Teardown, IdleRequesterGoesAtOnceWithoutTimeout) {
  CCamRequester_Cgi_Kobu_Rtp* pReq = StartRunning(42);
  pReq->RequestStop();
  ASSERT_TRUE(camtest::WaitUntil([&] { return pReq->iConnectStatus == CAM_HTTP_STS_IDLE; }));
  const auto tStart = std::chrono::steady_clock::now();
  delete pReq;
  EXPECT_LT(std::chrono::steady_clock::now() - tStart, camtest::Scaled(std::chrono::seconds(3)));
  EXPECT_EQ(capture.CountContaining("TIMEOUT"), 0);
}

TEST_F(Teardown, NoNotificationOnceDestructionBegan) {
  CCamRequester_Cgi_Kobu_Rtp* pReq = StartRunning(43);
  std::thread deleter([&] { delete pReq; });
  // The object lives at least until its wait ends (status RUN).
  ASSERT_TRUE(camtest::WaitUntil([&] { return pReq->m_iDestruct == 1; }));
  // The camera forgets the stream: the next keep-alive fails, the UID is
  // forgotten without a word upward, the session is rebuilt in silence.
  device->ForgetUids();
  ASSERT_TRUE(capture.WaitFor("UidInvalid [DEBUG] :DESTRUCT\n", std::chrono::seconds(4)));
  deleter.join();
  EXPECT_EQ(upper.iLateCalls.load(), 0);
  EXPECT_EQ(capture.CountContaining("UidInvalid [Error] p_notify_to_upper=NULL"), 0);
}

TEST_F(Teardown, StopDestructionAndStatusChangeRaceTheRequestThread) {
  device = sessiontest::StartDevice("127.0.0.1", 7);
  for (int iRound = 0; iRound < 4; ++iRound) {
    auto* pReq = new CCamRequester_Cgi_Kobu_Rtp();
    sessiontest::Aim(*pReq, *device, iRound % 2 == 0 ? 0 : 2, 7, &upper);
    upper.pWatched = pReq;
    pReq->Initialize(50 + iRound);
    pReq->EnableKeepAlive();
    pReq->RequestStart();
    std::thread statusChanger([&] {
      const int32_t iRun = 1;
      for (int i = 0; i < 50; ++i) pReq->SetParameter(CAM_PARAM_STATUSCHANGE, &iRun, sizeof(iRun));
    });
    std::thread stopper([&] { pReq->RequestStop(); });
    stopper.join();
    statusChanger.join();
    delete pReq;
    upper.pWatched = nullptr;
  }
  EXPECT_EQ(upper.iLateCalls.load(), 0);
}

}  // namespace
