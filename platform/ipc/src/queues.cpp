// Message queues: one per (module, index) in the process.
//
// A bind gives the queue an id that is never used again, so a receive on the
// id of an unbound queue finds nothing and returns at once. A receiver waits
// on the queue's condition, so a send wakes it the moment the message is in.
//
// Locks: the table lock guards the bindings and ids only; a queue's own lock
// guards its messages. A queue lock may be held while the buffer registry's
// lock is taken, never the other way round.
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <unordered_map>
#include <utility>

#include "buffer_registry.h"
#include "faults.h"
#include "kxcom.h"

namespace kxcom {
namespace {

struct Queue {
  std::mutex mutex;
  std::condition_variable arrived;
  std::deque<KXCOM_MSGBUF*> messages;
  bool unbound = false;
};

using Address = std::pair<int, uint32_t>;

class QueueTable {
 public:
  int Bind(const Address& address) {
    std::lock_guard<std::mutex> lock(mutex_);
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
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = by_id_.find(id);
    return it == by_id_.end() ? nullptr : it->second;
  }

  std::shared_ptr<Queue> ByAddress(const Address& address) {
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = bound_.find(address);
    return it == bound_.end() ? nullptr : by_id_.at(it->second);
  }

  // Removes the binding when id names the queue bound at address.
  int Unbind(int id, const Address& address, std::shared_ptr<Queue>* removed) {
    std::lock_guard<std::mutex> lock(mutex_);
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
  std::mutex mutex_;
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
  queue->arrived.notify_one();
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
  const auto deadline = std::chrono::steady_clock::now() + kxcom::WaitOf(sWait);
  std::unique_lock<std::mutex> lock(queue->mutex);
  const bool ready = queue->arrived.wait_until(
      lock, deadline, [&queue] { return queue->unbound || !queue->messages.empty(); });
  if (!ready || queue->unbound) return nullptr;
  KXCOM_MSGBUF* message = queue->messages.front();
  queue->messages.pop_front();
  kxcom::MarkHeld(message);
  return message;
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
  queue->arrived.notify_all();
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
