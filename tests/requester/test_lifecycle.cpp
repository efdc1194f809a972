// Construction, Initialize, StopChildThread and destruction in every phase.
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "RequesterTestBase.h"

namespace camtest {
namespace {

using Calls = std::vector<std::string>;
const Calls kThreadEnd = {"CloseSessionCommand", "CloseSessionPush"};

class LifecycleTest : public RequesterTest {};

// Keeps the calls of a requester beyond its lifetime.
struct CallLog {
  void Add(const std::string& s) {
    std::lock_guard<std::mutex> lock(mutex);
    asCalls.push_back(s);
  }
  Calls Get() {
    std::lock_guard<std::mutex> lock(mutex);
    return asCalls;
  }
  std::mutex mutex;
  Calls asCalls;
};

TEST_F(LifecycleTest, ConstructionClearsEveryFlag) {
  PrintCapture capture;
  RecordingRequester requester;
  EXPECT_EQ(requester.iCamNo, 0);
  EXPECT_EQ(requester.iConnectStatus.load(), 0);
  EXPECT_EQ(requester.iStartRetry, 0);
  EXPECT_EQ(requester.iLastUidResult, 10);
  EXPECT_EQ(requester.m_iErrorCount, 0);
  EXPECT_EQ(requester.m_fErrorStat, 0);
  EXPECT_EQ(requester.iCameraNumber, 0);
  EXPECT_EQ(requester.bAudio.load(), 0);
  EXPECT_EQ(requester.bThreadCreated, 0);
  EXPECT_EQ(requester.bKeepAlive.load(), 0);
  EXPECT_EQ(requester.bPBKeepAlive.load(), 0);
  EXPECT_EQ(requester.bStartReq.load(), 0);
  EXPECT_EQ(requester.bPBStartReq.load(), 0);
  EXPECT_EQ(requester.iRestartCount, 0);
  EXPECT_EQ(requester.bThreadLoop.load(), 0);
  EXPECT_EQ(requester.bThreadReady, 0);
  // The mutexes are ready for use.
  EXPECT_EQ(pthread_mutex_trylock(&requester.Retrymutex), 0);
  pthread_mutex_unlock(&requester.Retrymutex);
  EXPECT_EQ(pthread_mutex_trylock(&requester.ThreadWaitmutex), 0);
  pthread_mutex_unlock(&requester.ThreadWaitmutex);
  EXPECT_TRUE(capture.Lines().empty()) << "construction logs nothing";
}

TEST_F(LifecycleTest, InitializeStartsTheThreadAtIndexPlus16) {
  PrintCapture capture;
  RecordingRequester requester;
  const int iThreads = ThreadCount();
  EXPECT_EQ(requester.Initialize(5), 0);
  EXPECT_EQ(requester.GetChildThreadIndex(), 21u);
  EXPECT_EQ(requester.bThreadCreated, 1);
  EXPECT_EQ(requester.bThreadLoop.load(), 1);
  EXPECT_EQ(ThreadCount(), iThreads + 1);
  // Initialize returns only once the thread has bound its queue.
  const Calls asLines = capture.Lines();
  ASSERT_GE(asLines.size(), 2u);
  EXPECT_EQ(asLines[0], "Initialize [DEBUG] iChildThreadIndex=15. \n");
  EXPECT_EQ(asLines[1], "RequestThreadMain[DEBUG]ChildThread START!! TINDEX=15\n");
  ASSERT_TRUE(capture.WaitFor("COM_MsgInit() success="));
  EXPECT_EQ(capture.Count("RequestThreadMain [DEBUG] COM_MsgInit() success=" +
                          std::to_string(requester.iMsgQueId) + ". \n"),
            1);
}

TEST_F(LifecycleTest, InitializeTwiceStartsNoSecondThreadButTakesTheNewIndex) {
  PrintCapture capture;
  int iQueueId = -1;
  {
    RecordingRequester requester;
    requester.Initialize(5);
    const int iThreads = ThreadCount();
    capture.Clear();
    EXPECT_EQ(requester.Initialize(7), 0);
    EXPECT_EQ(capture.Lines(), Calls({"Initialize [DEBUG] iChildThreadIndex=17. \n",
                                      "Initialize [Error]Thread has already run!\n"}));
    EXPECT_EQ(requester.GetChildThreadIndex(), 23u);
    EXPECT_EQ(ThreadCount(), iThreads);
    iQueueId = requester.iMsgQueId;
    capture.Clear();
  }
  // The wake-up went to the new index, where no queue is bound; the thread
  // still ended from its receive time-out.
  EXPECT_EQ(capture.Count("StopChildThread [ERROR] Message Send NG [!= KXCOM_LIB_OK]\n"), 1);
  EXPECT_EQ(capture.Count("RequestThreadMain [DEBUG] Msg Free & Thread Delete\n"), 1);
  // Its exit named the new index too, so the queue at the first one is ours to unbind.
  KXCOM_DeleteMsgQue_Asy(iQueueId, kRequestModule, 21);
}

TEST_F(LifecycleTest, StopChildThreadEndsTheThreadAndASecondCallDoesNothing) {
  PrintCapture capture;
  RecordingRequester requester;
  requester.Initialize(50);
  const int iThreads = ThreadCount();
  capture.Clear();
  EXPECT_EQ(requester.StopChildThread(), 0);
  EXPECT_EQ(requester.bThreadCreated, 0);
  EXPECT_EQ(requester.bThreadLoop.load(), 0);
  EXPECT_TRUE(WaitUntil([&] { return ThreadCount() == iThreads - 1; }));
  const Calls asLines = capture.Lines();
  ASSERT_FALSE(asLines.empty());
  EXPECT_EQ(asLines.front(), "~CCamRequester [DEBUG] wait thread stop. \n");
  EXPECT_EQ(asLines.back(), "RequestThreadMain [DEBUG] Msg Free & Thread Delete\n");
  EXPECT_EQ(requester.Calls(), kThreadEnd);

  capture.Clear();
  EXPECT_EQ(requester.StopChildThread(), 0);
  EXPECT_TRUE(capture.Lines().empty());
  EXPECT_EQ(requester.Calls(), kThreadEnd);
}

TEST_F(LifecycleTest, StopChildThreadWithoutAThreadDoesNothing) {
  PrintCapture capture;
  RecordingRequester requester;
  EXPECT_EQ(requester.StopChildThread(), 0);
  EXPECT_EQ(requester.bThreadCreated, 0);
  EXPECT_TRUE(capture.Lines().empty());
  EXPECT_TRUE(requester.Calls().empty());
}

TEST_F(LifecycleTest, ThreadCanBeStartedAgainAfterAStop) {
  RecordingRequester requester;
  requester.Initialize(51);
  requester.StopChildThread();
  requester.ClearCalls();
  requester.Initialize(51);
  requester.RequestPresetPosition();
  ASSERT_TRUE(requester.WaitForCount("SendCamPresetCommand", 1));
  requester.StopChildThread();
  EXPECT_EQ(requester.Calls(), Concat({"SendCamPresetCommand"}, kThreadEnd));
}

TEST_F(LifecycleTest, QueueBindingFailureEndsTheThreadAtOnceAndStillReleasesInitialize) {
  // Someone else already holds the thread's address.
  const int iForeignQueue = KXCOM_InitMsg_Asy(kRequestModule, 57 + kIndexOffset);
  ASSERT_GE(iForeignQueue, 0);
  PrintCapture capture;
  {
    RecordingRequester requester;
    EXPECT_EQ(requester.Initialize(57), 0);
    EXPECT_EQ(requester.iMsgQueId, KXCOM_ERR_BOUND);
    ASSERT_TRUE(WaitUntil([&] { return ThreadCount() == m_iThreadsBefore; }));
    EXPECT_EQ(ThreadLines(capture),
              Calls({"RequestThreadMain[DEBUG]ChildThread START!! TINDEX=49\n",
                     "RequestThreadMain[Error]COM_MsgInit fail=" + std::to_string(KXCOM_ERR_BOUND) +
                         "!!\n"}));
    EXPECT_TRUE(requester.Calls().empty());
  }
  // The thread ended without its exit step.
  EXPECT_EQ(capture.CountContaining("Msg Free & Thread Delete"), 0);
  // The wake-up of the stop reached the foreign queue; it is the owner's to free.
  COM_FreeBufEntry(kRequestModule, 57 + kIndexOffset);
  EXPECT_EQ(KXCOM_DeleteMsgQue_Asy(iForeignQueue, kRequestModule, 57 + kIndexOffset), KXCOM_LIB_OK);
}

// ---- destruction in every phase ---------------------------------------------

TEST_F(LifecycleTest, DestroyingANeverInitialisedRequesterSendsNothing) {
  PrintCapture capture;
  { RecordingRequester requester; }
  { CCamRequester_Cgi_Kobu_Rtp requester; }
  { CCamRequester_Cgi_Kobu_Http requester; }
  EXPECT_TRUE(capture.Lines().empty());
}

TEST_F(LifecycleTest, DestroyingAnIdleRequesterStopsItsThreadOnce) {
  PrintCapture capture;
  auto pLog = std::make_shared<CallLog>();
  {
    RecordingRequester requester;
    requester.SetHook(
        [pLog](RecordingRequester&, const std::string& sCall, int) { pLog->Add(sCall); });
    requester.Initialize(52);
    ASSERT_TRUE(capture.WaitFor("COM_MsgInit() success="));
  }
  EXPECT_EQ(capture.Count("~CCamRequester [DEBUG] wait thread stop. \n"), 1);
  EXPECT_EQ(capture.Count("RequestThreadMain [DEBUG] Msg Free & Thread Delete\n"), 1);
  EXPECT_EQ(pLog->Get(), kThreadEnd);
}

TEST_F(LifecycleTest, DestroyingARequesterInTheMiddleOfASequenceCutsItShort) {
  PrintCapture capture;
  auto pLog = std::make_shared<CallLog>();
  Gate gate;
  auto pRequester = std::make_unique<RecordingRequester>();
  pRequester->SetHook([pLog, &gate](RecordingRequester& rSelf, const std::string& sCall, int) {
    pLog->Add(sCall);
    if (sCall == "SetupSessionCommand") {
      gate.Enter();
      // A long camera exchange: it ends when the thread is told to stop.
      WaitUntil([&] { return rSelf.bThreadLoop == 0; });
    }
  });
  pRequester->EnableKeepAlive();
  pRequester->Initialize(53);
  pRequester->RequestStart();
  ASSERT_TRUE(gate.WaitEntered());
  pRequester.reset();
  EXPECT_EQ(pLog->Get(),
            Concat({"ChangeStatus(0)", "OpenSessionCommand", "SetupSessionCommand"}, kThreadEnd));
  EXPECT_EQ(capture.Count("~CCamRequester [DEBUG] wait thread stop. \n"), 1);
  // The wake-up was still queued when the thread ended: freed unhandled.
  EXPECT_EQ(capture.CountContaining("Dummy command"), 0);
}

// ---- the concrete classes' destructors ----------------------------------------

template <typename T>
class ConcreteLifecycleTest : public RequesterTest {};

template <typename T>
const char* TimeoutLine();
template <>
const char* TimeoutLine<CCamRequester_Cgi_Kobu_Rtp>() {
  return "~CCamRequester_Cgi_Kobu_Rtp [Error] TIMEOUT!!!\n";
}
template <>
const char* TimeoutLine<CCamRequester_Cgi_Kobu_Http>() {
  return "~CCamRequester_Cgi_Kobu_Http [Error] TIMEOUT!!!\n";
}

using ConcreteTypes = ::testing::Types<CCamRequester_Cgi_Kobu_Rtp, CCamRequester_Cgi_Kobu_Http>;
TYPED_TEST_SUITE(ConcreteLifecycleTest, ConcreteTypes);

TYPED_TEST(ConcreteLifecycleTest, ConstructionSetsTheDestructFlagToZero) {
  TypeParam requester;
  EXPECT_EQ(requester.m_iDestruct.load(), 0);
  EXPECT_EQ(requester.iLastUidResult, 10);
}

TYPED_TEST(ConcreteLifecycleTest, DestroyingAnIdleRequesterStopsItsThreadOnce) {
  PrintCapture capture;
  {
    TypeParam requester;
    requester.Initialize(54);
    ASSERT_TRUE(capture.WaitFor("COM_MsgInit() success="));
  }
  EXPECT_EQ(capture.Count("~CCamRequester [DEBUG] wait thread stop. \n"), 1);
  EXPECT_EQ(capture.Count("RequestThreadMain [DEBUG] Msg Free & Thread Delete\n"), 1);
  EXPECT_EQ(capture.CountContaining("TIMEOUT"), 0);
}

TYPED_TEST(ConcreteLifecycleTest, DestructorWaitsForTheStatusToReturnToIdle) {
  PrintCapture capture;
  auto pRequester = std::make_unique<TypeParam>();
  TypeParam* pRaw = pRequester.get();
  pRaw->Initialize(55);
  ASSERT_TRUE(capture.WaitFor("COM_MsgInit() success="));
  pRaw->iConnectStatus = CAM_HTTP_STS_RUN;
  std::thread destroyer([&] { pRequester.reset(); });
  // The destructor marks the object first, then waits with the thread still running.
  EXPECT_TRUE(WaitUntil([&] { return pRaw->m_iDestruct == 1; }));
  EXPECT_EQ(capture.CountContaining("wait thread stop"), 0);
  pRaw->iConnectStatus = CAM_HTTP_STS_IDLE;  // the session closed
  destroyer.join();
  EXPECT_EQ(capture.Count("~CCamRequester [DEBUG] wait thread stop. \n"), 1);
  EXPECT_EQ(capture.CountContaining("TIMEOUT"), 0);
}

TYPED_TEST(ConcreteLifecycleTest, DestructorGivesUpAfterAbout5sWithOneTimeoutLine) {
  PrintCapture capture;
  const auto tStart = std::chrono::steady_clock::now();
  {
    TypeParam requester;
    requester.Initialize(56);
    ASSERT_TRUE(capture.WaitFor("COM_MsgInit() success="));
    requester.iConnectStatus = CAM_HTTP_STS_READY;  // never returns to idle
  }
  const auto tTaken = std::chrono::steady_clock::now() - tStart;
  // 501 sleeps of at least 10 ms each.
  EXPECT_GE(tTaken, std::chrono::milliseconds(5010));
  EXPECT_EQ(capture.Count(TimeoutLine<TypeParam>()), 1);
  const Calls asLines = capture.Lines();
  const auto itTimeout = std::find(asLines.begin(), asLines.end(), TimeoutLine<TypeParam>());
  const auto itStop =
      std::find(asLines.begin(), asLines.end(), "~CCamRequester [DEBUG] wait thread stop. \n");
  ASSERT_NE(itStop, asLines.end());
  EXPECT_LT(itTimeout, itStop) << "the thread is stopped after the wait";
  EXPECT_EQ(capture.Count("~CCamRequester [DEBUG] wait thread stop. \n"), 1);
}

}  // namespace
}  // namespace camtest
