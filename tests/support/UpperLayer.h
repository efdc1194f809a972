// What the world outside a requester sees of it, recorded for tests: the
// upper layer's notification object, the alarm reports and the UID message
// that other processes receive. Header only; a test that includes it links
// the requester library (which brings the IPC and alarm libraries).
#ifndef CAM_UPPER_LAYER_H
#define CAM_UPPER_LAYER_H

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "CamRequesterParam.h"
#include "almsnd.h"
#include "kxcom.h"

namespace camtest {

// Keeps every alarm report while it lives.
class AlarmCapture {
 public:
  struct Report {
    int iCode;
    int iCamera;
    std::string sAddress;
    int iPosition;
  };
  AlarmCapture() { ALMSND_SetObserver(&AlarmCapture::Observe, this); }
  ~AlarmCapture() { ALMSND_SetObserver(nullptr, nullptr); }
  AlarmCapture(const AlarmCapture&) = delete;
  AlarmCapture& operator=(const AlarmCapture&) = delete;

  std::vector<Report> Reports() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_reports;
  }
  // Forgets what was reported so far: a long run keeps only what it checks.
  void Clear() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_reports.clear();
    m_reports.shrink_to_fit();
  }
  // The codes reported so far, in order.
  std::vector<int> Codes() const {
    std::vector<int> aiOut;
    for (const Report& r : Reports()) aiOut.push_back(r.iCode);
    return aiOut;
  }

 private:
  static void Observe(int iCode, int iCamera, const char* pcAddress, int iPosition,
                      void* pvContext) {
    auto* self = static_cast<AlarmCapture*>(pvContext);
    std::lock_guard<std::mutex> lock(self->m_mutex);
    self->m_reports.push_back({iCode, iCamera, pcAddress ? pcAddress : "", iPosition});
  }
  mutable std::mutex m_mutex;
  std::vector<Report> m_reports;
};

// Binds the UID message's destination as the receiving process does, and
// unbinds it (freeing what is still queued) when it goes.
class UidReceiver {
 public:
  UidReceiver() : m_iQueue(KXCOM_InitMsg_Asy(CAM_UIDMSG_DESTINATION, 0)) {}
  ~UidReceiver() {
    if (m_iQueue >= 0) KXCOM_DeleteMsgQue_Asy(m_iQueue, CAM_UIDMSG_DESTINATION, 0);
  }
  UidReceiver(const UidReceiver&) = delete;
  UidReceiver& operator=(const UidReceiver&) = delete;

  bool Bound() const { return m_iQueue >= 0; }
  // The next message's payload; false when none is queued.
  bool Next(int32_t aiPayload[3]) { return NextWithin(aiPayload, std::chrono::milliseconds(0)); }
  // The next message's payload, waiting for it at most tLimit.
  bool NextWithin(int32_t aiPayload[3], std::chrono::milliseconds tLimit) {
    const auto tEnd = std::chrono::steady_clock::now() + tLimit;
    KXCOM_MSGBUF* psMsg = _COM_MsgRcvMain(0, timeval{0, 0}, m_iQueue);
    while (psMsg == nullptr && std::chrono::steady_clock::now() < tEnd) {
      psMsg = _COM_MsgRcvMain(0, timeval{0, 10000}, m_iQueue);
    }
    if (psMsg == nullptr) return false;
    EXPECT_EQ(psMsg->ulCode, CAM_UIDMSG_ID);
    const void* pvPayload = _COM_STR_PTR(psMsg, static_cast<int>(sizeof(CAM_UIDMSG)));
    EXPECT_NE(pvPayload, nullptr);
    if (pvPayload != nullptr) std::memcpy(aiPayload, pvPayload, sizeof(CAM_UIDMSG));
    EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(psMsg), KXCOM_LIB_OK);
    return true;
  }

 private:
  int m_iQueue;
};

// One call of the RTP stream notification, with its twelve arguments and
// the requester's status at the time of the call.
struct RtpNotice {
  int iUid;
  bool bSessionInfo;             // argument 2 was not null
  unsigned short usSessionPort;  // port of the session block (0 when none)
  int iRtpPort;
  std::string sIpAddr;
  int iPos;
  int iCmdType;
  int iSelectChNo;
  int iAudioBitrate;
  int iAudioEnable;
  std::string sMultiAddr;
  int iUniPort;
  int iAudioInPort;
  int iStatusAtCall;  // -1 when no status word is watched
};

// One call of the session-information notification or of the hand-over.
struct SessionNotice {
  int iUid;
  bool bSessionInfo;  // record (or handle) not null
  int iPos;           // session information only
  int iCmdType;       // session information only
  int iStatusAtCall;
};

// The upper layer's notification object: records every call with its
// arguments and answers the stream-state query as the test says.
class NotifyRecorder : public CCamRequesterNotify {
 public:
  NotifyRecorder() = default;
  NotifyRecorder(const NotifyRecorder&) = delete;
  NotifyRecorder& operator=(const NotifyRecorder&) = delete;

  // The status word to sample at every call (the requester's iConnectStatus).
  void Watch(const std::atomic<int32_t>* piStatus) { m_piStatus.store(piStatus); }
  // The answer of the stream-state query from now on.
  void SetStreamState(int iAnswer) { m_iStreamState.store(iAnswer); }

  void NotifyRtpStream(int iUid, const void* pSessionInfo, int iRtpPort, const char* cIpAddr,
                       int iPos, int iCmdType, int iSelectChNo, int iAudioBitrate, int iAudioEnable,
                       const char* cMultiAddr, int iUniPort, int iAudioInPort) override {
    RtpNotice s{iUid,
                pSessionInfo != nullptr,
                0,
                iRtpPort,
                Text(cIpAddr),
                iPos,
                iCmdType,
                iSelectChNo,
                iAudioBitrate,
                iAudioEnable,
                Text(cMultiAddr),
                iUniPort,
                iAudioInPort,
                Status()};
    if (pSessionInfo != nullptr) {
      // The block is the head of the session record; only its port is read
      // (the host text it points to belongs to a session already closed).
      std::memcpy(&s.usSessionPort,
                  static_cast<const char*>(pSessionInfo) + offsetof(HTTP_SESSION, usPort),
                  sizeof(s.usSessionPort));
    }
    Add([&] { m_asRtp.push_back(s); });
  }
  void NotifySessionInfo(int iUid, const void* pSessionInfo, int iPos, int iCmdType) override {
    Add([&] { m_asSession.push_back({iUid, pSessionInfo != nullptr, iPos, iCmdType, Status()}); });
  }
  int GetStreamState(unsigned short usCameraType, int iCmdType) override {
    Add([&] { m_asQueries.emplace_back(usCameraType, iCmdType); });
    return m_iStreamState.load();
  }
  void NotifyCamRequesterHandle(int iUid, HTTP_SESSION* psHandle) override {
    Add([&] { m_asHandle.push_back({iUid, psHandle != nullptr, 0, 0, Status()}); });
  }

  std::vector<RtpNotice> RtpNotices() const { return Get(m_asRtp); }
  std::vector<SessionNotice> SessionNotices() const { return Get(m_asSession); }
  std::vector<SessionNotice> HandleNotices() const { return Get(m_asHandle); }
  std::vector<std::pair<unsigned short, int>> StateQueries() const { return Get(m_asQueries); }

  bool WaitForRtpNotices(size_t uCount, std::chrono::milliseconds tLimit) const {
    return WaitFor([&] { return m_asRtp.size() >= uCount; }, tLimit);
  }
  bool WaitForStateQueries(size_t uCount, std::chrono::milliseconds tLimit) const {
    return WaitFor([&] { return m_asQueries.size() >= uCount; }, tLimit);
  }

 private:
  static std::string Text(const char* pc) { return pc != nullptr ? pc : "(null)"; }
  int Status() const {
    const std::atomic<int32_t>* piStatus = m_piStatus.load();
    return piStatus != nullptr ? piStatus->load() : -1;
  }
  template <typename F>
  void Add(F fnAdd) {
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      fnAdd();
    }
    m_changed.notify_all();
  }
  template <typename T>
  T Get(const T& rList) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return rList;
  }
  template <typename F>
  bool WaitFor(F fnDone, std::chrono::milliseconds tLimit) const {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, tLimit, fnDone);
  }

  std::atomic<const std::atomic<int32_t>*> m_piStatus{nullptr};
  std::atomic<int> m_iStreamState{0};
  mutable std::mutex m_mutex;
  mutable std::condition_variable m_changed;
  std::vector<RtpNotice> m_asRtp;
  std::vector<SessionNotice> m_asSession;
  std::vector<SessionNotice> m_asHandle;
  std::vector<std::pair<unsigned short, int>> m_asQueries;
};

}  // namespace camtest

#endif
