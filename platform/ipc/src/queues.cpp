// Message queues: one per (module, index) in the process.
//
// A bind gives the queue an id that is never used again, so a receive on the
// id of an unbound queue finds nothing and returns at once. A receiver waits
// on the queue's semaphore, which counts the messages sent, so a send wakes
// it the moment the message is in. A semaphore rather than a condition: the
// request threads end most waits without a message, and a condition's
// waiter takes its mutex back as if contended, so that the unlock after it
// costs a second system call every idle round.
//
// Locks: the table lock guards the bindings and ids only; a queue's own lock
// guards its messages. A queue lock may be held while the buffer registry's
// lock is taken, never the other way round.
#include <errno.h>
#include <semaphore.h>
#include <time.h>

#include <atomic>
#include <chrono>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <unordered_map>
#include <utility>

#include "buffer_registry.h"
#include "faults.h"
#include "kxcom.h"

namespace kxcom {
namespace {

struct Queue {
  Queue() { sem_init(&arrived, 0, 0); }
  ~Queue() { sem_destroy(&arrived); }
  Queue(const Queue&) = delete;
  Queue& operator=(const Queue&) = delete;

  std::mutex mutex;
  // One count per message sent; the unbind adds one that every receiver
  // woken by it passes on.
  sem_t arrived;
  std::deque<KXCOM_MSGBUF*> messages;
  bool unbound = false;
};

using Deadline = std::chrono::steady_clock::time_point;

// Takes one count of the queue's semaphore; false when none came by the
// deadline (a deadline already passed only looks).
bool TakeCount(Queue& queue, Deadline deadline) {
  const auto since_epoch = deadline.time_since_epoch();
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(since_epoch);
  timespec until{};
  until.tv_sec = static_cast<time_t>(seconds.count());
  until.tv_nsec = static_cast<long>(
      std::chrono::duration_cast<std::chrono::nanoseconds>(since_epoch - seconds).count());
  // The steady clock is the monotonic one.
  while (sem_clockwait(&queue.arrived, CLOCK_MONOTONIC, &until) != 0) {
    if (errno != EINTR) return false;
  }
  return true;
}

// The next message, null when none came by the deadline or the queue was
// unbound.
KXCOM_MSGBUF* Receive(Queue& queue, Deadline deadline) {
  while (TakeCount(queue, deadline)) {
    std::lock_guard<std::mutex> lock(queue.mutex);
    if (queue.unbound) {
      sem_post(&queue.arrived);  // for the next receiver still waiting
      return nullptr;
    }
    // Empty: the count of a message that a COM_FreeBufEntry took.
    if (queue.messages.empty()) continue;
    KXCOM_MSGBUF* message = queue.messages.front();
    queue.messages.pop_front();
    MarkHeld(message);
    return message;
  }
  return nullptr;
}

using Address = std::pair<int, uint32_t>;

class QueueTable {
 public:
  int Bind(const Address& address) {
    std::lock_guard<std::shared_mutex> lock(mutex_);
    if (bound_.count(address) != 0) return KXCOM_ERR_BOUND;
    const int id = next_id_;
    if (id < 0) return KXCOM_ERR_NO_MEMORY;  // every id has been given out
    auto queue = std::make_shared<Queue>();
    by_id_.emplace(id, queue);
    bound_.emplace(address, id);
    ++next_id_;
    return id;
  }

  std::shared_ptr<Queue> ById(int id) {
    std::shared_lock<std::shared_mutex> lock(mutex_);
    auto it = by_id_.find(id);
    return it == by_id_.end() ? nullptr : it->second;
  }

  std::shared_ptr<Queue> ByAddress(const Address& address) {
    std::shared_lock<std::shared_mutex> lock(mutex_);
    auto it = bound_.find(address);
    return it == bound_.end() ? nullptr : by_id_.at(it->second);
  }

  // Removes the binding when id names the queue bound at address.
  int Unbind(int id, const Address& address, std::shared_ptr<Queue>* removed) {
    std::lock_guard<std::shared_mutex> lock(mutex_);
    auto id_it = by_id_.find(id);
    if (id_it == by_id_.end()) return KXCOM_ERR_DELETED;
    auto address_it = bound_.find(address);
    if (address_it == bound_.end() || address_it->second != id) return KXCOM_ERR_PARAM;
    *removed = std::move(id_it->second);
    by_id_.erase(id_it);
    bound_.erase(address_it);
    return KXCOM_LIB_OK;
  }

 private:
  // Every receive and send looks its queue up here: the request threads of
  // a device wake together at the end of their idle rounds, and lookups
  // must not queue behind each other then.
  std::shared_mutex mutex_;
  std::map<Address, int> bound_;
  std::unordered_map<int, std::shared_ptr<Queue>> by_id_;
  int next_id_ = 0;
};

// Never destroyed: threads that still run while the process exits may use it.
QueueTable& TheTable() {
  static QueueTable* table = new QueueTable;
  return *table;
}

std::atomic<int> g_wait_divisor{1};

// Takes every message out of a queue; the caller frees them.
std::deque<KXCOM_MSGBUF*> TakeAll(Queue& queue, bool unbind) {
  std::deque<KXCOM_MSGBUF*> taken;
  std::lock_guard<std::mutex> lock(queue.mutex);
  taken.swap(queue.messages);
  if (unbind) queue.unbound = true;
  return taken;
}

void FreeAll(const std::deque<KXCOM_MSGBUF*>& messages) {
  for (KXCOM_MSGBUF* message : messages) FreeQueued(message);
}

int Send(const Address& address, KXCOM_MSGBUF* psBuf) {
  const int usable = CheckHeld(psBuf);
  if (usable != KXCOM_LIB_OK) return usable;
  if (TakeFault(KXCOM_FAULT_SEND)) return KXCOM_ERR_NO_MEMORY;
  std::shared_ptr<Queue> queue = TheTable().ByAddress(address);
  if (!queue) return KXCOM_ERR_NO_QUEUE;
  {
    std::lock_guard<std::mutex> lock(queue->mutex);
    if (queue->unbound) return KXCOM_ERR_NO_QUEUE;
    try {
      queue->messages.push_back(psBuf);
    } catch (const std::bad_alloc&) {
      return KXCOM_ERR_NO_MEMORY;
    }
    const int handed = MarkQueued(psBuf);
    if (handed != KXCOM_LIB_OK) {
      // Another thread freed or sent it since the check above.
      queue->messages.pop_back();
      return handed;
    }
  }
  sem_post(&queue->arrived);
  return KXCOM_LIB_OK;
}

// The wait of one receive, cut by the divisor. Negative waits count as none;
// very long ones are held to about three years so the deadline cannot overflow.
std::chrono::microseconds WaitOf(const struct timeval& sWait) {
  constexpr long long kMaxSeconds = 100000000;
  long long seconds = sWait.tv_sec < 0 ? 0 : static_cast<long long>(sWait.tv_sec);
  if (seconds > kMaxSeconds) seconds = kMaxSeconds;
  long long micros = sWait.tv_usec < 0 ? 0 : static_cast<long long>(sWait.tv_usec);
  micros += seconds * 1000000LL;
  return std::chrono::microseconds(micros / g_wait_divisor.load(std::memory_order_relaxed));
}

}  // namespace
}  // namespace kxcom

extern "C" {

int KXCOM_InitMsg_Asy(int iModule, uint32_t ulIndex) {
  try {
    return kxcom::TheTable().Bind({iModule, ulIndex});
  } catch (const std::bad_alloc&) {
    return KXCOM_ERR_NO_MEMORY;
  }
}

int _COM_MsgSndMain(int iModule, uint32_t ulIndex, KXCOM_MSGBUF* psBuf) {
  return kxcom::Send({iModule, ulIndex}, psBuf);
}

int COM_MsgSnd(int iDestination, int /*iReserved*/, KXCOM_MSGBUF* psBuf) {
  return kxcom::Send({iDestination, 0}, psBuf);
}

// iFlag is accepted for the device's call form; every receive here is the
// bounded one (a wait of zero only looks).
KXCOM_MSGBUF* _COM_MsgRcvMain(int /*iFlag*/, struct timeval sWait, int iQueueId) {
  std::shared_ptr<kxcom::Queue> queue = kxcom::TheTable().ById(iQueueId);
  if (!queue) return nullptr;
  return kxcom::Receive(*queue, std::chrono::steady_clock::now() + kxcom::WaitOf(sWait));
}

int COM_FreeBufEntry(int iModule, uint32_t ulIndex) {
  std::shared_ptr<kxcom::Queue> queue = kxcom::TheTable().ByAddress({iModule, ulIndex});
  if (!queue) return KXCOM_ERR_NO_QUEUE;
  kxcom::FreeAll(kxcom::TakeAll(*queue, false));
  return KXCOM_LIB_OK;
}

int KXCOM_DeleteMsgQue_Asy(int iQueueId, int iModule, uint32_t ulIndex) {
  std::shared_ptr<kxcom::Queue> queue;
  const int result = kxcom::TheTable().Unbind(iQueueId, {iModule, ulIndex}, &queue);
  if (result != KXCOM_LIB_OK) return result;
  kxcom::FreeAll(kxcom::TakeAll(*queue, true));
  // Receivers still waiting on this queue return null now.
  sem_post(&queue->arrived);
  return KXCOM_LIB_OK;
}

// Nothing is kept per thread here, so there is nothing to end.
int KXCOM_DestroyMsg_Asy(void) {
  return KXCOM_LIB_OK;
}

void KXCOM_SetWaitDivisor(int iDivisor) {
  kxcom::g_wait_divisor.store(iDivisor < 1 ? 1 : iDivisor, std::memory_order_relaxed);
}

int KXCOM_GetWaitDivisor(void) {
  return kxcom::g_wait_divisor.load(std::memory_order_relaxed);
}

}  // extern "C"
