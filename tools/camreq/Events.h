// What other processes of the device receive from the requesters: the
// connection-error alarms (through the alarm library's observer) and the
// UID messages (received on their queue, as the receiving process does).
#ifndef CAMREQ_EVENTS_H
#define CAMREQ_EVENTS_H

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "Record.h"

namespace camreq {

class Events {
 public:
  Events() = default;
  ~Events() { Stop(); }
  Events(const Events&) = delete;
  Events& operator=(const Events&) = delete;

  // Installs the alarm observer and binds the UID message queue; false
  // (with the observer removed) when the queue cannot be bound.
  bool Start();
  void Stop();

  std::vector<AlarmReport> Alarms() const;
  std::vector<UidMessage> UidMessages() const;

 private:
  static void Observe(int iCode, int iCamera, const char* pcAddress, int iPosition,
                      void* pvContext);
  void ReceiveLoop();

  mutable std::mutex m_mutex;
  std::vector<AlarmReport> m_alarms;
  std::vector<UidMessage> m_uids;
  int m_iQueue = -1;
  std::atomic<bool> m_bRun{false};
  std::thread m_receiver;
};

}  // namespace camreq

#endif
