#include "FuzzUpper.h"

#include <cstring>

#include "kxcom.h"

namespace fuzzsup {

namespace {

void Discard(const char*, void*) {}

// The push reads stop after this many parts; the peer closes after its
// bytes, so a read never waits for long.
constexpr int kPushReads = 8;
constexpr int kPushWaitMs = 1000;

}  // namespace

void QuietPrints() {
  COM_SetPrintSink(&Discard, nullptr);
}

uint32_t TouchText(const char* pcText) {
  return pcText == nullptr ? 0 : static_cast<uint32_t>(std::strlen(pcText));
}

void FuzzUpper::TouchSessionInfo(const void* pSessionInfo) {
  if (pSessionInfo == nullptr) return;
  unsigned char aucCopy[HTTP_SESSION_INFO_SIZE];
  std::memcpy(aucCopy, pSessionInfo, sizeof(aucCopy));
  m_ulTouched += aucCopy[0];
}

void FuzzUpper::NotifyRtpStream(int, const void* pSessionInfo, int, const char* cIpAddr, int, int,
                                int, int, int, const char* cMultiAddr, int, int) {
  TouchSessionInfo(pSessionInfo);
  m_ulTouched += TouchText(cIpAddr) + TouchText(cMultiAddr);
}

void FuzzUpper::NotifySessionInfo(int, const void* pSessionInfo, int, int) {
  TouchSessionInfo(pSessionInfo);
}

int FuzzUpper::GetStreamState(unsigned short, int) {
  return m_iStreamState;
}

void FuzzUpper::NotifyCamRequesterHandle(int, HTTP_SESSION* psHandle) {
  std::lock_guard<std::mutex> sLock(m_mutex);
  m_psHeld = psHandle;
}

HTTP_SESSION* FuzzUpper::Held() const {
  std::lock_guard<std::mutex> sLock(m_mutex);
  return m_psHeld;
}

void FuzzUpper::ReadHeldPush(int iCmdType) const {
  HTTP_SESSION* psPush = Held();
  if (psPush == nullptr) return;
  for (int i = 0; i < kPushReads; ++i) {
    uint32_t ulResult = 0;
    if (iCmdType == CAM_REQUESTER_CMD_G726_HTTP) {
      unsigned char aucAudio[512];
      size_t ulRead = 0;
      ulResult = http_push_read(psPush, aucAudio, sizeof(aucAudio), &ulRead, kPushWaitMs);
    } else {
      HTTP_PUSH_PART sPart{};
      ulResult = http_push_next_part(psPush, &sPart, kPushWaitMs);
    }
    if (ulResult != 0) return;
  }
}

}  // namespace fuzzsup
