// What every exchange must give back, held by objects that give it back on
// every path: the reply buffer, the HTTP session of the exchange, and the
// lock of the start-retry step.
#ifndef CAM_SCOPED_H
#define CAM_SCOPED_H

#include <pthread.h>

#include "CamConstants.h"
#include "kxhttp.h"

class CCamRequester;

namespace camses {

// A zeroed 2048-byte reply buffer and the receive record that points at it.
// Either allocated (and freed on every path), or borrowed from a caller that
// owns it (the recorder exchanges write into the caller's buffer).
class ReplyBuffer {
 public:
  ReplyBuffer();
  // Borrows pcCaller (kReplyBufferSize bytes); the caller keeps it.
  explicit ReplyBuffer(char* pcCaller);
  ~ReplyBuffer();
  ReplyBuffer(const ReplyBuffer&) = delete;
  ReplyBuffer& operator=(const ReplyBuffer&) = delete;

  // Allocates the zeroed buffer (a borrowed one is zeroed); false when
  // memory is short.
  bool Allocate();
  // Frees an allocated buffer now (the destructor then has nothing to do).
  void Free();
  char* Data() const { return m_pcData; }
  _InetBuffer* Record() { return &m_sRecord; }

 private:
  void Point();

  char* m_pcData = nullptr;
  bool m_bOwned = true;
  _InetBuffer m_sRecord;
};

// Makes the next iTimes allocations of a reply buffer fail, so that tests
// reach the "memory allocate failed" paths. 0 clears it.
void FailNextReplyAllocations(int iTimes);

// The HTTP session of one exchange: once armed, it is closed when the scope
// ends, on every path, through the requester's virtual CloseSessionCommand.
class SessionScope {
 public:
  explicit SessionScope(CCamRequester& rReq) : m_rReq(rReq) {}
  ~SessionScope();
  SessionScope(const SessionScope&) = delete;
  SessionScope& operator=(const SessionScope&) = delete;

  void Arm() { m_bArmed = true; }
  // Leaves the session open for the caller (the recorder exchanges).
  void Release() { m_bArmed = false; }
  // Closes now; the end of the scope then closes nothing.
  void Close();

 private:
  CCamRequester& m_rReq;
  bool m_bArmed = false;
};

// Holds Retrymutex for its lifetime.
class RetryLock {
 public:
  explicit RetryLock(pthread_mutex_t& rMutex) : m_rMutex(rMutex) { pthread_mutex_lock(&m_rMutex); }
  ~RetryLock() { pthread_mutex_unlock(&m_rMutex); }
  RetryLock(const RetryLock&) = delete;
  RetryLock& operator=(const RetryLock&) = delete;

 private:
  pthread_mutex_t& m_rMutex;
};

}  // namespace camses

#endif
