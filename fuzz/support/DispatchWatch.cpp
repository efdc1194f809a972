#include "DispatchWatch.h"

#include <cstring>

#include "kxcom.h"

namespace fuzzsup {

DispatchWatch::DispatchWatch() {
  COM_SetPrintSink(&DispatchWatch::Sink, this);
}

DispatchWatch::~DispatchWatch() {
  COM_SetPrintSink(nullptr, nullptr);
}

void DispatchWatch::Sink(const char* pcText, void* pvContext) {
  if (std::strstr(pcText, "RequestThreadMain [DEBUG] COM_MsgBufFree=") == nullptr) return;
  auto* self = static_cast<DispatchWatch*>(pvContext);
  std::lock_guard<std::mutex> sLock(self->m_mutex);
  ++self->m_lCount;
  self->m_changed.notify_all();
}

long DispatchWatch::Count() {
  std::lock_guard<std::mutex> sLock(m_mutex);
  return m_lCount;
}

bool DispatchWatch::WaitBeyond(long lSeen, std::chrono::milliseconds tLimit) {
  std::unique_lock<std::mutex> sLock(m_mutex);
  return m_changed.wait_for(sLock, tLimit, [&] { return m_lCount > lSeen; });
}

}  // namespace fuzzsup
