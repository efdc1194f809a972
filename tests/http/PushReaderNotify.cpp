#include "PushReaderNotify.h"

#include <fcntl.h>

#include <functional>

namespace httptest {

namespace {
// Short enough that a withdrawal waits little for the reader.
constexpr int kReadSliceMs = 100;
}  // namespace

bool IsWholeJpeg(const unsigned char* pucData, size_t ulLength) {
  return ulLength >= 4 && pucData[0] == 0xFF && pucData[1] == 0xD8 &&
         pucData[ulLength - 2] == 0xFF && pucData[ulLength - 1] == 0xD9;
}

void PushReaderNotify::NotifySessionInfo(int iUid, const void* pSessionInfo, int iPos,
                                         int iCmdType) {
  SessionInfo sInfo{iUid, pSessionInfo != nullptr, "", 0, iPos, iCmdType};
  if (pSessionInfo != nullptr && iUid != -1) {
    // The record begins as the library's session record: host text, port.
    const auto* psHead = static_cast<const HTTP_SESSION*>(pSessionInfo);
    if (psHead->pcHost != nullptr) sInfo.sHost = psHead->pcHost;
    sInfo.uPort = psHead->usPort;
  }
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_infos.push_back(sInfo);
  }
  Changed();
}

void PushReaderNotify::NotifyCamRequesterHandle(int iUid, HTTP_SESSION* psHandle) {
  if (psHandle == nullptr) {
    HTTP_SESSION* psOld = nullptr;
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      psOld = m_psHanded;
      m_psHanded = nullptr;
    }
    StopReading();
    // Still ours until we return: the socket of the session must be alive.
    bool bOpen = false;
    if (psOld != nullptr) {
      const int iFd = http_session_socket(psOld);
      bOpen = iFd >= 0 && fcntl(iFd, F_GETFD) != -1;
    }
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_events.push_back({iUid, nullptr, bOpen, false, psOld != nullptr});
    }
    Changed();
    return;
  }
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_events.push_back({iUid, psHandle, false, m_psHeld == nullptr});
    m_psHanded = psHandle;
  }
  StopReading();  // a hand-over over a held handle is recorded above
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_bDetached) return;
    m_psHeld = psHandle;
    m_bStop = false;
    m_ulPicturesNow = 0;
    m_reader = std::thread(&PushReaderNotify::ReadLoop, this, psHandle);
  }
  Changed();
}

void PushReaderNotify::StopReading() {
  std::thread reader;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_bStop = true;
    reader = std::move(m_reader);
  }
  if (reader.joinable()) reader.join();
  std::lock_guard<std::mutex> lock(m_mutex);
  m_psHeld = nullptr;
}

void PushReaderNotify::Detach() {
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_bDetached = true;
  }
  StopReading();
}

void PushReaderNotify::ReadLoop(HTTP_SESSION* psHandle) {
  // Bounded by the stop flag, checked at least every read slice.
  while (!m_bStop.load()) {
    if (!ReadOnce(psHandle)) break;
  }
}

// One read; false once the push ended.
bool PushReaderNotify::ReadOnce(HTTP_SESSION* psHandle) {
  uint32_t ulRet = 0;
  if (m_eMedia == Media::kJpeg) {
    HTTP_PUSH_PART sPart{};
    ulRet = http_push_next_part(psHandle, &sPart, kReadSliceMs);
    if (ulRet == 0) {
      if (IsWholeJpeg(sPart.pucData, sPart.ulLength)) {
        ++m_ulPictures;
        ++m_ulPicturesNow;
      } else {
        ++m_ulBadParts;
      }
      Changed();
      return true;
    }
  } else {
    unsigned char aucData[4096];
    size_t ulRead = 0;
    ulRet = http_push_read(psHandle, aucData, sizeof(aucData), &ulRead, kReadSliceMs);
    if (ulRet == 0) {
      m_ulAudioBytes += ulRead;
      Changed();
      return true;
    }
  }
  if (ulRet == HTTP_ERR_TIMEOUT) return true;
  m_ulEndCode = ulRet;
  ++m_iEnds;
  Changed();
  return false;
}

std::vector<PushReaderNotify::SessionInfo> PushReaderNotify::SessionInfos() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_infos;
}

std::vector<PushReaderNotify::HandleEvent> PushReaderNotify::HandleEvents() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_events;
}

int PushReaderNotify::HandOvers() const {
  int n = 0;
  for (const auto& e : HandleEvents()) n += e.psHandle != nullptr ? 1 : 0;
  return n;
}

int PushReaderNotify::Withdrawals() const {
  int n = 0;
  for (const auto& e : HandleEvents()) n += e.psHandle == nullptr ? 1 : 0;
  return n;
}

bool PushReaderNotify::Reading() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_psHeld != nullptr;
}

void PushReaderNotify::Changed() {
  { std::lock_guard<std::mutex> lock(m_mutex); }
  m_changed.notify_all();
}

bool PushReaderNotify::WaitFor(const std::function<bool()>& fnDone,
                               std::chrono::milliseconds tLimit) const {
  std::unique_lock<std::mutex> lock(m_mutex);
  const auto tEnd = std::chrono::steady_clock::now() + tLimit;
  // Counters change without the lock held; wake at least every 20 ms.
  while (!fnDone()) {
    if (std::chrono::steady_clock::now() >= tEnd) return false;
    m_changed.wait_for(lock, std::chrono::milliseconds(20));
  }
  return true;
}

bool PushReaderNotify::WaitForPictures(uint64_t ulCount, std::chrono::milliseconds tLimit) const {
  return WaitFor([&] { return m_ulPictures.load() >= ulCount; }, tLimit);
}

bool PushReaderNotify::WaitForPicturesOfCurrentHandle(uint64_t ulCount,
                                                      std::chrono::milliseconds tLimit) const {
  return WaitFor([&] { return m_psHeld != nullptr && m_ulPicturesNow.load() >= ulCount; }, tLimit);
}

bool PushReaderNotify::WaitForAudioBytes(uint64_t ulCount, std::chrono::milliseconds tLimit) const {
  return WaitFor([&] { return m_ulAudioBytes.load() >= ulCount; }, tLimit);
}

bool PushReaderNotify::WaitForHandOvers(int iCount, std::chrono::milliseconds tLimit) const {
  return WaitFor(
      [&] {
        int n = 0;
        for (const auto& e : m_events) n += e.psHandle != nullptr ? 1 : 0;
        return n >= iCount;
      },
      tLimit);
}

bool PushReaderNotify::WaitForWithdrawals(int iCount, std::chrono::milliseconds tLimit) const {
  return WaitFor(
      [&] {
        int n = 0;
        for (const auto& e : m_events) n += e.psHandle == nullptr ? 1 : 0;
        return n >= iCount;
      },
      tLimit);
}

bool PushReaderNotify::WaitForSessionInfos(size_t ulCount, std::chrono::milliseconds tLimit) const {
  return WaitFor([&] { return m_infos.size() >= ulCount; }, tLimit);
}

bool PushReaderNotify::WaitForEnd(std::chrono::milliseconds tLimit) const {
  return WaitFor([&] { return m_iEnds.load() > 0; }, tLimit);
}

}  // namespace httptest
