#include "CamScoped.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "CCamRequester.h"

namespace camses {

namespace {
std::atomic<int> g_iFailAllocations{0};

// True when a test asked this allocation to fail.
bool TakeInjectedFailure() {
  int iLeft = g_iFailAllocations.load();
  while (iLeft > 0) {
    if (g_iFailAllocations.compare_exchange_weak(iLeft, iLeft - 1)) return true;
  }
  return false;
}
}  // namespace

void FailNextReplyAllocations(int iTimes) {
  g_iFailAllocations = iTimes > 0 ? iTimes : 0;
}

ReplyBuffer::ReplyBuffer() {
  Point();
}

ReplyBuffer::ReplyBuffer(char* pcCaller) : m_pcData(pcCaller), m_bOwned(false) {
  Point();
}

ReplyBuffer::~ReplyBuffer() {
  Free();
}

void ReplyBuffer::Point() {
  std::memset(&m_sRecord, 0, sizeof(m_sRecord));
  m_sRecord.ulSize = kReplyBufferSize;
  m_sRecord.pcBuffer = m_pcData;
}

bool ReplyBuffer::Allocate() {
  if (!m_bOwned) {
    if (m_pcData == nullptr) return false;
    std::memset(m_pcData, 0, kReplyBufferSize);
    return true;
  }
  if (m_pcData == nullptr && !TakeInjectedFailure()) {
    m_pcData = static_cast<char*>(std::calloc(kReplyBufferSize, 1));
  }
  Point();
  return m_pcData != nullptr;
}

void ReplyBuffer::Free() {
  if (m_bOwned) std::free(m_pcData);
  m_pcData = nullptr;
  Point();
}

SessionScope::~SessionScope() {
  if (m_bArmed) m_rReq.CloseSessionCommand();
}

void SessionScope::Close() {
  if (!m_bArmed) return;
  m_bArmed = false;
  m_rReq.CloseSessionCommand();
}

}  // namespace camses
