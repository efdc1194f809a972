// Shared fixture of the requester tests: short receive waits, and a check
// that every test leaves no message buffer and no thread behind.
#ifndef REQUESTER_TEST_BASE_H
#define REQUESTER_TEST_BASE_H

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "CamTestSupport.h"
#include "RecordingRequester.h"
#include "UpperLayer.h"
#include "almsnd.h"
#include "kxcom.h"

namespace camtest {

// Queue module of the request threads.
constexpr int kRequestModule = 42;
// The upper layer's index becomes the thread index plus this.
constexpr long kIndexOffset = 16;
// 100 ms / 100: one idle round takes about a millisecond.
constexpr int kWaitDivisor = 100;

class RequesterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // A sanitizer starts a helper thread of its own with the first thread
    // of the process; start and end one thread before counting.
    static const bool bWarmedUp = [] {
      std::thread([] {}).join();
      return true;
    }();
    (void)bWarmedUp;
    KXCOM_SetWaitDivisor(kWaitDivisor);
    m_iBuffersBefore = KXCOM_LiveBufferCount();
    m_iThreadsBefore = ThreadCount();
  }
  void TearDown() override {
    EXPECT_EQ(KXCOM_LiveBufferCount(), m_iBuffersBefore) << "message buffers left behind";
    EXPECT_TRUE(WaitUntil([&] { return ThreadCount() == m_iThreadsBefore; }))
        << "threads left behind: " << ThreadCount() - m_iThreadsBefore;
    KXCOM_SetWaitDivisor(1);
  }

  int m_iBuffersBefore = 0;
  int m_iThreadsBefore = 0;
};

// The texts of the request thread itself, in order.
inline std::vector<std::string> ThreadLines(const PrintCapture& rCapture) {
  std::vector<std::string> asOut;
  for (const std::string& s : rCapture.Lines()) {
    if (s.rfind("RequestThreadMain", 0) == 0) asOut.push_back(s);
  }
  return asOut;
}

// Texts that begin with sHead, in order.
inline std::vector<std::string> LinesStartingWith(const PrintCapture& rCapture,
                                                  const std::string& sHead) {
  std::vector<std::string> asOut;
  for (const std::string& s : rCapture.Lines()) {
    if (s.rfind(sHead, 0) == 0) asOut.push_back(s);
  }
  return asOut;
}

// Posts a raw command code to a request thread, as the upper layer's
// Request operations do; returns the send result.
inline int PostCode(unsigned uIndex, int iCode) {
  KXCOM_MSGBUF* psBuf = KXCOM_CreateMsgBuf_Asy(iCode, 0, 0);
  if (psBuf == nullptr) return KXCOM_ERR_NO_MEMORY;
  const int iRet = _COM_MsgSndMain(kRequestModule, uIndex, psBuf);
  if (iRet != KXCOM_LIB_OK) KXCOM_FreeMsgBuf_Asy(psBuf);
  return iRet;
}

inline std::string Hex(unsigned uValue) {
  char ac[32];
  snprintf(ac, sizeof(ac), "%x", uValue);
  return ac;
}

// A print sink that runs an action on the printing thread the first time a
// text containing sPattern is printed, and keeps every text. Stands in for
// PrintCapture (one sink at a time) where a test must act at the exact
// moment a line is printed, e.g. between the dispatch line and the first step.
class LineAction {
 public:
  LineAction(std::string sPattern, std::function<void()> fnAction)
      : m_sPattern(std::move(sPattern)), m_fnAction(std::move(fnAction)) {
    COM_SetPrintSink(&LineAction::Sink, this);
  }
  ~LineAction() { COM_SetPrintSink(nullptr, nullptr); }
  LineAction(const LineAction&) = delete;
  LineAction& operator=(const LineAction&) = delete;

  std::vector<std::string> Lines() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_lines;
  }
  bool Fired() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_bFired;
  }

 private:
  static void Sink(const char* pcText, void* pvContext) {
    auto* self = static_cast<LineAction*>(pvContext);
    bool bRun = false;
    {
      std::lock_guard<std::mutex> lock(self->m_mutex);
      self->m_lines.emplace_back(pcText);
      if (!self->m_bFired && self->m_lines.back().find(self->m_sPattern) != std::string::npos) {
        self->m_bFired = true;
        bRun = true;
      }
    }
    if (bRun) self->m_fnAction();
  }
  const std::string m_sPattern;
  const std::function<void()> m_fnAction;
  mutable std::mutex m_mutex;
  std::vector<std::string> m_lines;
  bool m_bFired = false;
};

// Asks the request thread for one start retry and waits until it was served:
// a marker that at least one whole idle round has run, since the retry
// step comes last in an idle round.
inline bool MarkIdleRound(RecordingRequester& rRequester) {
  const int iBefore = rRequester.CountOf("StreamStartCommand");
  pthread_mutex_lock(&rRequester.Retrymutex);
  rRequester.iStartRetry = 1;
  pthread_mutex_unlock(&rRequester.Retrymutex);
  return rRequester.WaitForCount("StreamStartCommand", iBefore + 1);
}

// Reads iStartRetry under its lock, as any other thread must.
inline int StartRetryFlag(CCamRequester& rRequester) {
  pthread_mutex_lock(&rRequester.Retrymutex);
  const int iValue = rRequester.iStartRetry;
  pthread_mutex_unlock(&rRequester.Retrymutex);
  return iValue;
}

// A list of calls built from repeated parts, for expected sequences.
inline std::vector<std::string> Repeat(const std::vector<std::string>& asPart, int iTimes) {
  std::vector<std::string> asOut;
  for (int i = 0; i < iTimes; ++i) asOut.insert(asOut.end(), asPart.begin(), asPart.end());
  return asOut;
}

inline std::vector<std::string> Concat(std::vector<std::string> asA,
                                       const std::vector<std::string>& asB) {
  asA.insert(asA.end(), asB.begin(), asB.end());
  return asA;
}

// The first iCount entries of a list (all of it when shorter).
inline std::vector<std::string> Head(const std::vector<std::string>& asList, size_t uCount) {
  return std::vector<std::string>(asList.begin(), asList.begin() + std::min(uCount, asList.size()));
}

}  // namespace camtest

#endif
