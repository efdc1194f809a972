// The upper layer of the HTTP requester tests: a notification object that
// reads a handed-over push on a reader thread of its own with the platform's
// push reader, counts whole JPEG pictures or audio bytes, and lets go of the
// handle (stops and joins the reader) before it returns from the null
// notification, as the device's media process does.
#ifndef PUSH_READER_NOTIFY_H
#define PUSH_READER_NOTIFY_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "CamRequesterParam.h"
#include "kxhttp.h"

namespace httptest {

// A part that holds one whole JPEG picture: SOI first, EOI last.
bool IsWholeJpeg(const unsigned char* pucData, size_t ulLength);

class PushReaderNotify : public CCamRequesterNotify {
 public:
  enum class Media { kJpeg, kAudio };

  struct SessionInfo {
    int iUid;
    bool bRecord;       // a session-information record came with it
    std::string sHost;  // read back from the record
    unsigned uPort;
    int iPos;
    int iCmdType;
  };

  // One call of NotifyCamRequesterHandle.
  struct HandleEvent {
    int iUid;
    HTTP_SESSION* psHandle;  // null: withdrawn
    // Withdrawals only: the handle was still an open session (its socket
    // alive) when it was taken back, i.e. the requester had not closed it.
    bool bOpenWhenWithdrawn;
    // Hand-overs only: no earlier handle was still held.
    bool bNothingHeld;
    // Withdrawals only: a handle had been handed over and not yet taken
    // back (whether or not it was being read). A requester being destroyed
    // may take back a push it never handed over.
    bool bHanded = false;
  };

  explicit PushReaderNotify(Media eMedia = Media::kJpeg) : m_eMedia(eMedia) {}
  ~PushReaderNotify() { StopReading(); }
  PushReaderNotify(const PushReaderNotify&) = delete;
  PushReaderNotify& operator=(const PushReaderNotify&) = delete;

  void NotifyRtpStream(int, const void*, int, const char*, int, int, int, int, int, const char*,
                       int, int) override {
    ++m_iRtpNotifications;
  }
  void NotifySessionInfo(int iUid, const void* pSessionInfo, int iPos, int iCmdType) override;
  int GetStreamState(unsigned short, int) override {
    ++m_iStateQueries;
    return m_iStreamState.load();
  }
  void NotifyCamRequesterHandle(int iUid, HTTP_SESSION* psHandle) override;

  // The upper layer lets go of the push it reads, as before it destroys the
  // requester (the requester tells nothing while it is being destroyed).
  void StopReading();
  // Stops reading and reads no handle handed over from now on (the upper
  // layer is about to destroy the requester); Attach undoes it.
  void Detach();
  void Attach() { m_bDetached = false; }

  // ---- what the tests read ------------------------------------------------
  std::vector<SessionInfo> SessionInfos() const;
  std::vector<HandleEvent> HandleEvents() const;
  int HandOvers() const;
  int Withdrawals() const;
  uint64_t Pictures() const { return m_ulPictures.load(); }
  uint64_t PicturesOfCurrentHandle() const { return m_ulPicturesNow.load(); }
  uint64_t BadParts() const { return m_ulBadParts.load(); }
  uint64_t AudioBytes() const { return m_ulAudioBytes.load(); }
  // Result of the read that ended a push (the camera closed it...), 0 = none.
  uint32_t EndCode() const { return m_ulEndCode.load(); }
  int Ends() const { return m_iEnds.load(); }
  bool Reading() const;
  int RtpNotifications() const { return m_iRtpNotifications.load(); }
  int StateQueries() const { return m_iStateQueries.load(); }

  // Waits with a deadline.
  bool WaitForPictures(uint64_t ulCount, std::chrono::milliseconds tLimit) const;
  bool WaitForPicturesOfCurrentHandle(uint64_t ulCount, std::chrono::milliseconds tLimit) const;
  bool WaitForAudioBytes(uint64_t ulCount, std::chrono::milliseconds tLimit) const;
  bool WaitForHandOvers(int iCount, std::chrono::milliseconds tLimit) const;
  bool WaitForWithdrawals(int iCount, std::chrono::milliseconds tLimit) const;
  bool WaitForSessionInfos(size_t ulCount, std::chrono::milliseconds tLimit) const;
  bool WaitForEnd(std::chrono::milliseconds tLimit) const;

  // Answer of the stream-state query (0 arriving, 1 stopped, other).
  std::atomic<int> m_iStreamState{0};

 private:
  void ReadLoop(HTTP_SESSION* psHandle);
  bool ReadOnce(HTTP_SESSION* psHandle);
  bool WaitFor(const std::function<bool()>& fnDone, std::chrono::milliseconds tLimit) const;
  void Changed();

  const Media m_eMedia;
  mutable std::mutex m_mutex;
  mutable std::condition_variable m_changed;
  std::vector<SessionInfo> m_infos;
  std::vector<HandleEvent> m_events;
  HTTP_SESSION* m_psHeld = nullptr;    // the handle the reader reads
  HTTP_SESSION* m_psHanded = nullptr;  // the handle handed over and not yet taken back
  std::thread m_reader;
  std::atomic<bool> m_bStop{false};
  std::atomic<bool> m_bDetached{false};

  std::atomic<uint64_t> m_ulPictures{0};
  std::atomic<uint64_t> m_ulPicturesNow{0};
  std::atomic<uint64_t> m_ulBadParts{0};
  std::atomic<uint64_t> m_ulAudioBytes{0};
  std::atomic<uint32_t> m_ulEndCode{0};
  std::atomic<int> m_iEnds{0};
  std::atomic<int> m_iRtpNotifications{0};
  std::atomic<int> m_iStateQueries{0};
};

}  // namespace httptest

#endif
