// The request thread's idle rounds: keep-alive and stream check while a live
// stream is wanted, the rebuild of a session that stays in error, and the
// start retry under Retrymutex.
#include <errno.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "RequesterTestBase.h"

namespace camtest {
namespace {

using Calls = std::vector<std::string>;

const Calls kStartSteps = {"ChangeStatus(0)", "OpenSessionCommand", "SetupSessionCommand",
                           "SendCamPresetCommand", "StreamStartCommand"};
const Calls kRestartSteps = {"ChangeStatus(1)",    "StreamStopCommand",   "ChangeStatus(0)",
                             "OpenSessionCommand", "SetupSessionCommand", "SendCamPresetCommand",
                             "StreamStartCommand"};
const Calls kKeepAliveNow = {"SetKeeAliveCount(300)", "SendKeepAliveCommand"};
const Calls kThreadEnd = {"CloseSessionCommand", "CloseSessionPush"};
const Calls kCheck = {"SetKelInfoFlagCheck"};

class IdleRoundTest : public RequesterTest {};

// After the rebuilt stream started, the status leaves error, as a real
// session's status table would take it, so that no further rebuild follows.
void RunAfterStreamStart(RecordingRequester& rSelf, const std::string& sCall) {
  if (sCall == "StreamStartCommand") rSelf.iConnectStatus = CAM_HTTP_STS_RUN;
}

TEST_F(IdleRoundTest, NothingIsSentWhileNoLiveStreamIsWanted) {
  RecordingRequester requester;
  requester.EnableKeepAlive();
  requester.EnablePBKeepAlive();
  requester.bPBStartReq = 1;  // a wanted play-back stream does not count
  requester.Initialize(30);
  ASSERT_TRUE(MarkIdleRound(requester));
  ASSERT_TRUE(MarkIdleRound(requester));
  requester.StopChildThread();
  EXPECT_EQ(requester.Calls(), Concat({"StreamStartCommand", "StreamStartCommand"}, kThreadEnd));
}

TEST_F(IdleRoundTest, KeepAliveSwitchedOnLaterIsSentFromTheNextIdleRound) {
  RecordingRequester requester;
  requester.SetHook([](RecordingRequester& rSelf, const std::string& sCall, int iNth) {
    if (sCall == "KeepStreamStartCmd" && iNth == 3) rSelf.EnableKeepAlive();
    if (sCall == "KeepStreamStartCmd" && iNth == 5) rSelf.DiableKeepAlive();
  });
  requester.Initialize(31);
  requester.RequestStart();
  ASSERT_TRUE(requester.WaitForCount("KeepStreamStartCmd", 7));
  requester.StopChildThread();

  const Calls asExpected = Concat(Concat(kStartSteps, Repeat({"KeepStreamStartCmd"}, 3)),
                                  Concat(Repeat({"SendKeepAliveCommand", "KeepStreamStartCmd"}, 2),
                                         Repeat({"KeepStreamStartCmd"}, 2)));
  EXPECT_EQ(Head(requester.Calls(), asExpected.size()), asExpected);
  EXPECT_EQ(requester.CountOf("SendKeepAliveCommand"), 2);
  EXPECT_EQ(requester.CountOf("SetKeeAliveCount(300)"), 0);
}

TEST_F(IdleRoundTest, KeepAliveSwitchesReadBack) {
  RecordingRequester requester;
  EXPECT_EQ(requester.GetKeepAlive(), 0);
  EXPECT_EQ(requester.GetPBKeepAlive(), 0);
  EXPECT_EQ(requester.EnableKeepAlive(), 0);
  EXPECT_EQ(requester.GetKeepAlive(), 1);
  EXPECT_EQ(requester.GetPBKeepAlive(), 0);
  EXPECT_EQ(requester.EnablePBKeepAlive(), 0);
  EXPECT_EQ(requester.GetPBKeepAlive(), 1);
  EXPECT_EQ(requester.DiableKeepAlive(), 0);
  EXPECT_EQ(requester.GetKeepAlive(), 0);
  EXPECT_EQ(requester.GetPBKeepAlive(), 1);
  EXPECT_EQ(requester.DiablePBKeepAlive(), 0);
  EXPECT_EQ(requester.GetPBKeepAlive(), 0);
}

// ---- rebuild of a session in error ------------------------------------------

TEST_F(IdleRoundTest, SessionInErrorIsRebuiltOnThe30thIdleRound) {
  for (bool bKeepAlive : {false, true}) {
    SCOPED_TRACE(bKeepAlive ? "keep-alive on" : "keep-alive off");
    PrintCapture capture;
    RecordingRequester requester;
    if (bKeepAlive) requester.EnableKeepAlive();
    requester.iConnectStatus = CAM_HTTP_STS_ERROR;  // stopped, but left in error
    requester.SetHook([](RecordingRequester& rSelf, const std::string& sCall, int) {
      RunAfterStreamStart(rSelf, sCall);
    });
    requester.Initialize(32);
    ASSERT_TRUE(requester.WaitForCount("KeepStreamStartCmd", 2));
    requester.StopChildThread();

    // Rounds 1..29 ask the recorder check; the 30th rebuilds without asking.
    Calls asExpected = Concat(Repeat(kCheck, 29), kRestartSteps);
    // The rebuild resumes the live stream, so its keep-alive goes out at once.
    if (bKeepAlive) asExpected = Concat(asExpected, kKeepAliveNow);
    const Calls asRound = bKeepAlive ? Calls{"SendKeepAliveCommand", "KeepStreamStartCmd"}
                                     : Calls{"KeepStreamStartCmd"};
    asExpected = Concat(asExpected, Repeat(asRound, 2));
    EXPECT_EQ(Head(requester.Calls(), asExpected.size()), asExpected);
    EXPECT_EQ(requester.CountOf("SetKelInfoFlagCheck"), 29);
    EXPECT_EQ(requester.bStartReq.load(), 1);
    EXPECT_EQ(requester.iRestartCount, 0);
    EXPECT_EQ(capture.Count("RequestThreadMain [DEBUG] RESTART TINDEX=30\n"), 1);
  }
}

TEST_F(IdleRoundTest, RecorderCheckCanAskForTheRebuildAtOnce) {
  RecordingRequester requester;
  requester.iConnectStatus = CAM_HTTP_STS_ERROR;
  requester.iKelCheckResult = 0;
  requester.SetHook([](RecordingRequester& rSelf, const std::string& sCall, int) {
    RunAfterStreamStart(rSelf, sCall);
  });
  requester.Initialize(33);
  ASSERT_TRUE(requester.WaitForCount("KeepStreamStartCmd", 1));
  requester.StopChildThread();
  const Calls asExpected = Concat(Concat(kCheck, kRestartSteps), {"KeepStreamStartCmd"});
  EXPECT_EQ(Head(requester.Calls(), asExpected.size()), asExpected);
}

TEST_F(IdleRoundTest, RecorderCheckAnsweringZeroLaterRebuildsInThatRound) {
  RecordingRequester requester;
  requester.iConnectStatus = CAM_HTTP_STS_ERROR;
  requester.SetHook([](RecordingRequester& rSelf, const std::string& sCall, int iNth) {
    if (sCall == "SetKelInfoFlagCheck" && iNth == 5) rSelf.iKelCheckResult = 0;
    RunAfterStreamStart(rSelf, sCall);
  });
  requester.Initialize(34);
  ASSERT_TRUE(requester.WaitForCount("KeepStreamStartCmd", 1));
  requester.StopChildThread();
  const Calls asExpected = Concat(Concat(Repeat(kCheck, 5), kRestartSteps), {"KeepStreamStartCmd"});
  EXPECT_EQ(Head(requester.Calls(), asExpected.size()), asExpected);
}

TEST_F(IdleRoundTest, AnotherStatusResetsTheRestartCount) {
  RecordingRequester requester;
  requester.bStartReq = 1;  // each idle round then shows itself by its stream check
  requester.iConnectStatus = CAM_HTTP_STS_ERROR;
  requester.SetHook([](RecordingRequester& rSelf, const std::string& sCall, int iNth) {
    // Round 20 leaves error, round 21 is spent in status 3, round 22 is in error again.
    if (sCall == "SetKelInfoFlagCheck" && iNth == 20) rSelf.iConnectStatus = CAM_HTTP_STS_READY;
    if (sCall == "KeepStreamStartCmd" && iNth == 22) rSelf.iConnectStatus = CAM_HTTP_STS_ERROR;
    RunAfterStreamStart(rSelf, sCall);
  });
  requester.Initialize(35);
  ASSERT_TRUE(requester.WaitForCount("StreamStartCommand", 1));
  requester.StopChildThread();

  const Calls asRound = {"KeepStreamStartCmd", "SetKelInfoFlagCheck"};
  // Counting starts afresh in round 22: 29 more checks, the rebuild in round 51.
  const Calls asExpected =
      Concat(Concat(Concat(Repeat(asRound, 20), {"KeepStreamStartCmd"}), Repeat(asRound, 29)),
             Concat({"KeepStreamStartCmd"}, kRestartSteps));
  EXPECT_EQ(Head(requester.Calls(), asExpected.size()), asExpected);
}

TEST_F(IdleRoundTest, StopOfTheThreadCutsTheRebuildShort) {
  struct RebuildDrop {
    const char* pcAtCall;  // null: at the RESTART line
    Calls asAfterChecks;
  };
  const RebuildDrop asCases[] = {
      {nullptr, {}},
      // The first four steps of a rebuild run without checks between them.
      {"ChangeStatus(1)", Head(kRestartSteps, 4)},
      {"OpenSessionCommand", Head(kRestartSteps, 4)},
      {"SetupSessionCommand", Head(kRestartSteps, 5)},
      {"SendCamPresetCommand", Head(kRestartSteps, 6)},
  };
  for (const RebuildDrop& sCase : asCases) {
    SCOPED_TRACE(sCase.pcAtCall ? sCase.pcAtCall : "RESTART line");
    RecordingRequester requester;
    requester.iConnectStatus = CAM_HTTP_STS_ERROR;
    requester.iKelCheckResult = 0;
    std::unique_ptr<LineAction> pAction;
    if (sCase.pcAtCall != nullptr) {
      const std::string sAt = sCase.pcAtCall;
      requester.SetHook([sAt](RecordingRequester& rSelf, const std::string& sCall, int iNth) {
        if (sCall == sAt && iNth == 1) rSelf.bThreadLoop = 0;
      });
    } else {
      pAction.reset(new LineAction("RESTART TINDEX", [&] { requester.bThreadLoop = 0; }));
    }
    requester.Initialize(36);
    ASSERT_TRUE(requester.WaitForCount("CloseSessionPush", 1));
    pAction.reset();
    EXPECT_EQ(requester.Calls(), Concat(Concat(kCheck, sCase.asAfterChecks), kThreadEnd));
    EXPECT_EQ(requester.bStartReq.load(), 1);
  }
}

TEST_F(IdleRoundTest, StopOfTheThreadInsideAnIdleRound) {
  // Dropped during the keep-alive: the stream check is not made.
  {
    RecordingRequester requester;
    requester.EnableKeepAlive();
    requester.bStartReq = 1;
    requester.iConnectStatus = CAM_HTTP_STS_ERROR;
    requester.SetHook([](RecordingRequester& rSelf, const std::string& sCall, int) {
      if (sCall == "SendKeepAliveCommand") rSelf.bThreadLoop = 0;
    });
    requester.Initialize(41);
    ASSERT_TRUE(requester.WaitForCount("CloseSessionPush", 1));
    EXPECT_EQ(requester.Calls(), Concat({"SendKeepAliveCommand"}, kThreadEnd));
  }
  // Dropped during the stream check: the restart count is still kept, with
  // its recorder check; a rebuild that it asks for stops at its first check.
  for (int iKelCheck : {1, 0}) {
    SCOPED_TRACE(iKelCheck);
    PrintCapture capture;
    RecordingRequester requester;
    requester.bStartReq = 1;
    requester.iConnectStatus = CAM_HTTP_STS_ERROR;
    requester.iKelCheckResult = iKelCheck;
    requester.SetHook([](RecordingRequester& rSelf, const std::string& sCall, int) {
      if (sCall == "KeepStreamStartCmd") rSelf.bThreadLoop = 0;
    });
    requester.Initialize(42);
    ASSERT_TRUE(requester.WaitForCount("CloseSessionPush", 1));
    EXPECT_EQ(requester.Calls(), Concat({"KeepStreamStartCmd", "SetKelInfoFlagCheck"}, kThreadEnd));
    EXPECT_EQ(capture.CountContaining("RESTART"), iKelCheck == 0 ? 1 : 0);
  }
}

// ---- start retry under Retrymutex --------------------------------------------

TEST_F(IdleRoundTest, RetryRunsUnderRetrymutexAndSendsAKeepAliveAtOnce) {
  Gate gate;
  std::atomic<int> iRetryLockState{-1};
  RecordingRequester requester;
  requester.EnableKeepAlive();
  requester.iConnectStatus = CAM_HTTP_STS_RUN;
  requester.SetHook([&](RecordingRequester&, const std::string& sCall, int iNth) {
    if (sCall == "StreamStartCommand" && iNth == 2) {
      gate.Enter();
      gate.WaitOpen();
    }
  });
  requester.Initialize(37);
  requester.RequestStart();
  ASSERT_TRUE(requester.WaitForCount("KeepStreamStartCmd", 2));
  pthread_mutex_lock(&requester.Retrymutex);
  requester.iStartRetry = 1;
  pthread_mutex_unlock(&requester.Retrymutex);
  ASSERT_TRUE(gate.WaitEntered());
  // The request thread holds the lock while it serves the retry, so a
  // setter of the flag would wait for the whole retry.
  iRetryLockState = pthread_mutex_trylock(&requester.Retrymutex);
  if (iRetryLockState == 0) pthread_mutex_unlock(&requester.Retrymutex);
  gate.Open();
  EXPECT_EQ(iRetryLockState.load(), EBUSY);
  // The retry's own keep-alive pair, then one more idle round.
  ASSERT_TRUE(requester.WaitForCount("SetKeeAliveCount(300)", 2));
  ASSERT_TRUE(WaitUntil([&] {
    const Calls asNow = requester.Calls();
    const auto it = std::find(asNow.rbegin(), asNow.rend(), "SetKeeAliveCount(300)");
    return it - asNow.rbegin() >= 3;
  }));
  EXPECT_EQ(StartRetryFlag(requester), 0);
  requester.StopChildThread();

  const Calls asCalls = requester.Calls();
  size_t uRetry = 0;
  int iStarts = 0;
  for (size_t u = 0; u < asCalls.size(); ++u) {
    if (asCalls[u] == "StreamStartCommand" && ++iStarts == 2) uRetry = u;
  }
  ASSERT_GE(uRetry, 2u);
  ASSERT_LT(uRetry + 4, asCalls.size());
  // The retry closes an idle round that began with keep-alive and stream check,
  // and the next round begins the same way again.
  EXPECT_EQ(Calls(asCalls.begin() + uRetry - 2, asCalls.begin() + uRetry + 5),
            Calls({"SendKeepAliveCommand", "KeepStreamStartCmd", "StreamStartCommand",
                   "SetKeeAliveCount(300)", "SendKeepAliveCommand", "SendKeepAliveCommand",
                   "KeepStreamStartCmd"}));
}

TEST_F(IdleRoundTest, RetryWithoutKeepAliveOnlyStartsTheStream) {
  for (int iCase = 0; iCase < 2; ++iCase) {
    SCOPED_TRACE(iCase == 0 ? "keep-alive off, stream wanted" : "keep-alive on, not wanted");
    RecordingRequester requester;
    if (iCase == 1) requester.EnableKeepAlive();
    requester.bStartReq = iCase == 0 ? 1 : 0;
    requester.iConnectStatus = CAM_HTTP_STS_RUN;
    requester.Initialize(38);
    ASSERT_TRUE(MarkIdleRound(requester));
    EXPECT_EQ(StartRetryFlag(requester), 0);
    requester.StopChildThread();
    Calls asCalls = requester.Calls();
    asCalls.erase(std::remove(asCalls.begin(), asCalls.end(), "KeepStreamStartCmd"), asCalls.end());
    EXPECT_EQ(asCalls, Concat({"StreamStartCommand"}, kThreadEnd));
  }
}

TEST_F(IdleRoundTest, StopOfTheThreadDuringARetryLeavesTheFlagAndFreesTheLock) {
  RecordingRequester requester;
  requester.EnableKeepAlive();
  requester.bStartReq = 1;
  requester.iConnectStatus = CAM_HTTP_STS_RUN;
  requester.SetHook([](RecordingRequester& rSelf, const std::string& sCall, int) {
    if (sCall == "StreamStartCommand") rSelf.bThreadLoop = 0;
  });
  requester.Initialize(39);
  ASSERT_TRUE(requester.WaitForCount("KeepStreamStartCmd", 1));
  pthread_mutex_lock(&requester.Retrymutex);
  requester.iStartRetry = 1;
  pthread_mutex_unlock(&requester.Retrymutex);
  ASSERT_TRUE(requester.WaitForCount("CloseSessionPush", 1));
  // The keep-alive of the retry was not sent, the flag stays for a later
  // thread, and the lock was given back.
  EXPECT_EQ(StartRetryFlag(requester), 1);
  const Calls asCalls = requester.Calls();
  ASSERT_GE(asCalls.size(), 3u);
  EXPECT_EQ(Calls(asCalls.end() - 3, asCalls.end()), Concat({"StreamStartCommand"}, kThreadEnd));
  EXPECT_EQ(requester.CountOf("SetKeeAliveCount(300)"), 0);
}

TEST_F(IdleRoundTest, StopOfTheThreadDuringARetryWithoutKeepAliveClearsTheFlag) {
  RecordingRequester requester;
  requester.iConnectStatus = CAM_HTTP_STS_RUN;
  requester.SetHook([](RecordingRequester& rSelf, const std::string& sCall, int) {
    if (sCall == "StreamStartCommand") rSelf.bThreadLoop = 0;
  });
  requester.Initialize(40);
  pthread_mutex_lock(&requester.Retrymutex);
  requester.iStartRetry = 1;
  pthread_mutex_unlock(&requester.Retrymutex);
  ASSERT_TRUE(requester.WaitForCount("CloseSessionPush", 1));
  EXPECT_EQ(StartRetryFlag(requester), 0);
  EXPECT_EQ(requester.Calls(), Concat({"StreamStartCommand"}, kThreadEnd));
}

}  // namespace
}  // namespace camtest
