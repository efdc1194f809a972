// What every exchange gives back: the reply buffer, the session (through
// the virtual CloseSessionCommand) and the retry lock, on every path.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamScoped.h"
#include "CamTestSupport.h"

namespace {

class CountingClose : public CCamRequester_Cgi_Kobu_Rtp {
 public:
  int CloseSessionCommand() override {
    ++iCloses;
    return 0;
  }
  int iCloses = 0;
};

TEST(ReplyBuffer, IsZeroedAndSized) {
  camses::ReplyBuffer sReply;
  ASSERT_TRUE(sReply.Allocate());
  ASSERT_NE(sReply.Data(), nullptr);
  for (int i = 0; i < kReplyBufferSize; ++i) ASSERT_EQ(sReply.Data()[i], 0) << i;
  EXPECT_EQ(sReply.Record()->ulSize, 2048u);
  EXPECT_EQ(sReply.Record()->pcBuffer, sReply.Data());
  EXPECT_EQ(sReply.Record()->ulReserved, 0u);
  EXPECT_EQ(sReply.Record()->ulLength, 0u);
  EXPECT_EQ(sReply.Record()->ulStatus, 0u);
  EXPECT_EQ(sReply.Record()->ulReserved2, 0u);
}

TEST(ReplyBuffer, FreedEarlyAndAtTheEndOnce) {
  // The sanitizers' leak and double-free checks watch these.
  camses::ReplyBuffer sReply;
  ASSERT_TRUE(sReply.Allocate());
  sReply.Free();
  EXPECT_EQ(sReply.Data(), nullptr);
  EXPECT_EQ(sReply.Record()->pcBuffer, nullptr);
  {
    camses::ReplyBuffer sOther;
    ASSERT_TRUE(sOther.Allocate());
  }
}

TEST(ReplyBuffer, InjectedShortageFailsTheNextAllocationsOnly) {
  camses::FailNextReplyAllocations(2);
  camses::ReplyBuffer a, b, c;
  EXPECT_FALSE(a.Allocate());
  EXPECT_EQ(a.Data(), nullptr);
  EXPECT_FALSE(b.Allocate());
  EXPECT_TRUE(c.Allocate());
  camses::FailNextReplyAllocations(0);
}

TEST(ReplyBuffer, BorrowedBufferIsZeroedAndKept) {
  std::vector<char> acCaller(kReplyBufferSize, 'x');
  {
    camses::ReplyBuffer sReply(acCaller.data());
    camses::FailNextReplyAllocations(1);  // a borrowed buffer allocates nothing
    ASSERT_TRUE(sReply.Allocate());
    camses::FailNextReplyAllocations(0);
    EXPECT_EQ(sReply.Record()->pcBuffer, acCaller.data());
    EXPECT_EQ(sReply.Record()->ulSize, 2048u);
  }
  for (char c : acCaller) ASSERT_EQ(c, 0);
}

TEST(SessionScope, ClosesThroughTheVirtualMemberOnEveryPath) {
  CountingClose req;
  { camses::SessionScope sScope(req); }
  EXPECT_EQ(req.iCloses, 0) << "a scope never armed closes nothing";
  {
    camses::SessionScope sScope(req);
    sScope.Arm();
  }
  EXPECT_EQ(req.iCloses, 1);
  {
    camses::SessionScope sScope(req);
    sScope.Arm();
    sScope.Close();
    EXPECT_EQ(req.iCloses, 2);
  }
  EXPECT_EQ(req.iCloses, 2) << "closed once, not again at the end";
  {
    camses::SessionScope sScope(req);
    sScope.Arm();
    sScope.Release();
  }
  EXPECT_EQ(req.iCloses, 2) << "a released session is the caller's";
  auto fnEarlyReturn = [&](bool bFail) {
    camses::SessionScope sScope(req);
    sScope.Arm();
    if (bFail) return -1;
    return 0;
  };
  fnEarlyReturn(true);
  fnEarlyReturn(false);
  EXPECT_EQ(req.iCloses, 4);
}

TEST(SessionScope, ClosesTheRealSessionAndForgetsIt) {
  camtest::PrintCapture capture;
  CCamRequester_Cgi_Kobu_Rtp req;
  {
    camses::SessionScope sScope(req);
    sScope.Arm();
  }
  // No session was open: the close says so.
  EXPECT_EQ(capture.Lines(),
            std::vector<std::string>{" CloseSessionCommand [Error] Multiplex Close Session.\n"});
}

TEST(RetryLock, HoldsRetrymutexForItsLifetime) {
  CCamRequester_Cgi_Kobu_Rtp req;
  {
    camses::RetryLock sLock(req.Retrymutex);
    std::atomic<int> iTry{-1};
    std::thread other([&] { iTry = pthread_mutex_trylock(&req.Retrymutex); });
    other.join();
    EXPECT_NE(iTry.load(), 0) << "another thread got the lock";
  }
  EXPECT_EQ(pthread_mutex_trylock(&req.Retrymutex), 0);
  pthread_mutex_unlock(&req.Retrymutex);
}

}  // namespace
