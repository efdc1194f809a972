// Message buffers: creation, payload, free, and the registry of live ones.
//
// Each buffer is one heap block: the public header followed (separately) by
// its payload. The registry maps the header's address to its block and its
// owner (the caller who holds it, or a queue). Calls that get a pointer that
// is not in the registry answer with an error and never read through it.
//
// Payload rule: the first _COM_STR_PTR on a buffer makes a zero-filled
// payload of exactly the asked size and records it in ulSize. Later calls
// with a size up to ulSize return the same address; a larger size returns
// null (the payload never moves, so pointers already handed out stay valid).
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <new>
#include <unordered_map>

#include "buffer_registry.h"
#include "faults.h"
#include "kxcom.h"

namespace kxcom {
namespace {

enum class Owner { kCaller, kQueue };

struct Block {
  KXCOM_MSGBUF header{};
  std::unique_ptr<unsigned char[]> payload;
  Owner owner = Owner::kCaller;
};

// How many freed addresses are remembered to tell a second free (or a send
// of a freed buffer) from a pointer that was never a buffer. Older ones, or
// ones reused by a newer buffer, count as unknown.
constexpr size_t kFreedMemory = 4096;

class Registry {
 public:
  std::mutex mutex;
  std::unordered_map<const KXCOM_MSGBUF*, std::unique_ptr<Block>> live;

  Block* Find(const KXCOM_MSGBUF* psBuf) {
    auto it = live.find(psBuf);
    return it == live.end() ? nullptr : it->second.get();
  }

  int ErrorForMissing(const KXCOM_MSGBUF* psBuf) const {
    if (psBuf == nullptr) return KXCOM_ERR_PARAM;
    return freed_.count(psBuf) != 0 ? KXCOM_ERR_DOUBLE_FREE : KXCOM_ERR_PARAM;
  }

  int ErrorForUse(const KXCOM_MSGBUF* psBuf) {
    Block* block = Find(psBuf);
    if (block == nullptr) return ErrorForMissing(psBuf);
    return block->owner == Owner::kQueue ? KXCOM_ERR_DOUBLE_FREE : KXCOM_LIB_OK;
  }

  void Insert(std::unique_ptr<Block> block) {
    const KXCOM_MSGBUF* key = &block->header;
    freed_.erase(key);
    live.emplace(key, std::move(block));
  }

  void Erase(const KXCOM_MSGBUF* psBuf) {
    live.erase(psBuf);
    RememberFreed(psBuf);
  }

 private:
  void RememberFreed(const KXCOM_MSGBUF* psBuf) {
    const uint64_t generation = ++generation_;
    freed_[psBuf] = generation;
    order_.emplace_back(psBuf, generation);
    if (order_.size() <= kFreedMemory) return;
    const auto oldest = order_.front();
    order_.pop_front();
    auto it = freed_.find(oldest.first);
    if (it != freed_.end() && it->second == oldest.second) freed_.erase(it);
  }

  std::unordered_map<const KXCOM_MSGBUF*, uint64_t> freed_;
  std::deque<std::pair<const KXCOM_MSGBUF*, uint64_t>> order_;
  uint64_t generation_ = 0;
};

// Never destroyed: threads that still run while the process exits may use it.
Registry& TheRegistry() {
  static Registry* registry = new Registry;
  return *registry;
}

}  // namespace

KXCOM_MSGBUF* CreateBuffer(uint32_t code) {
  try {
    auto block = std::make_unique<Block>();
    block->header.ulCode = code;
    KXCOM_MSGBUF* header = &block->header;
    Registry& registry = TheRegistry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    registry.Insert(std::move(block));
    return header;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

int CheckHeld(const KXCOM_MSGBUF* psBuf) {
  Registry& registry = TheRegistry();
  std::lock_guard<std::mutex> lock(registry.mutex);
  return registry.ErrorForUse(psBuf);
}

int MarkQueued(KXCOM_MSGBUF* psBuf) {
  Registry& registry = TheRegistry();
  std::lock_guard<std::mutex> lock(registry.mutex);
  const int result = registry.ErrorForUse(psBuf);
  if (result == KXCOM_LIB_OK) registry.Find(psBuf)->owner = Owner::kQueue;
  return result;
}

void MarkHeld(KXCOM_MSGBUF* psBuf) {
  Registry& registry = TheRegistry();
  std::lock_guard<std::mutex> lock(registry.mutex);
  Block* block = registry.Find(psBuf);
  if (block != nullptr) block->owner = Owner::kCaller;
}

void FreeQueued(KXCOM_MSGBUF* psBuf) {
  Registry& registry = TheRegistry();
  std::lock_guard<std::mutex> lock(registry.mutex);
  registry.Erase(psBuf);
}

}  // namespace kxcom

extern "C" {

KXCOM_MSGBUF* KXCOM_CreateMsgBuf_Asy(int iCode, int /*iReserved1*/, int /*iReserved2*/) {
  if (kxcom::TakeFault(KXCOM_FAULT_CREATE)) return nullptr;
  return kxcom::CreateBuffer(static_cast<uint32_t>(iCode));
}

KXCOM_MSGBUF* COM_MsgBufCreate(uint32_t ulMsgId, int /*iReserved1*/, int /*iReserved2*/) {
  if (kxcom::TakeFault(KXCOM_FAULT_CREATE)) return nullptr;
  return kxcom::CreateBuffer(ulMsgId);
}

void* _COM_STR_PTR(KXCOM_MSGBUF* psBuf, int iSize) {
  if (iSize <= 0 || kxcom::TakeFault(KXCOM_FAULT_PAYLOAD)) return nullptr;
  kxcom::Registry& registry = kxcom::TheRegistry();
  std::lock_guard<std::mutex> lock(registry.mutex);
  if (registry.ErrorForUse(psBuf) != KXCOM_LIB_OK) return nullptr;
  kxcom::Block* block = registry.Find(psBuf);
  const uint32_t size = static_cast<uint32_t>(iSize);
  if (block->payload) return size <= block->header.ulSize ? block->payload.get() : nullptr;
  block->payload.reset(new (std::nothrow) unsigned char[size]);
  if (!block->payload) return nullptr;
  std::memset(block->payload.get(), 0, size);
  block->header.ulSize = size;
  return block->payload.get();
}

int KXCOM_FreeMsgBuf_Asy(KXCOM_MSGBUF* psBuf) {
  kxcom::Registry& registry = kxcom::TheRegistry();
  std::lock_guard<std::mutex> lock(registry.mutex);
  const int result = registry.ErrorForUse(psBuf);
  if (result != KXCOM_LIB_OK) return result;
  registry.Erase(psBuf);
  return kxcom::TakeFault(KXCOM_FAULT_FREE) ? KXCOM_ERR_NO_MEMORY : KXCOM_LIB_OK;
}

int KXCOM_LiveBufferCount(void) {
  kxcom::Registry& registry = kxcom::TheRegistry();
  std::lock_guard<std::mutex> lock(registry.mutex);
  return static_cast<int>(registry.live.size());
}

}  // extern "C"
