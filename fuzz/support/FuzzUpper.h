// What the fuzz targets need of the world above a requester: its prints
// silenced, and a notification object that records what it is handed and
// touches every byte it is pointed at, so that a stale or short record is
// caught by the address sanitizer.
#ifndef FUZZ_UPPER_H
#define FUZZ_UPPER_H

#include <atomic>
#include <cstdint>
#include <mutex>

#include "CamRequesterParam.h"

namespace fuzzsup {

// Sends the library's diagnostic prints nowhere (they cost more than the
// code under test).
void QuietPrints();

// Reads a text handed upward to its end; a text without its zero runs into
// the sanitizer.
uint32_t TouchText(const char* pcText);

class FuzzUpper final : public CCamRequesterNotify {
 public:
  void NotifyRtpStream(int iUid, const void* pSessionInfo, int iRtpPort, const char* cIpAddr,
                       int iPos, int iCmdType, int iSelectChNo, int iAudioBitrate, int iAudioEnable,
                       const char* cMultiAddr, int iUniPort, int iAudioInPort) override;
  void NotifySessionInfo(int iUid, const void* pSessionInfo, int iPos, int iCmdType) override;
  int GetStreamState(unsigned short usCameraType, int iCmdType) override;
  void NotifyCamRequesterHandle(int iUid, HTTP_SESSION* psHandle) override;

  // The push session handed over and not yet withdrawn, or null.
  HTTP_SESSION* Held() const;
  // Reads the held push to its end (the peer's bytes) as the upper layer would.
  void ReadHeldPush(int iCmdType) const;
  void SetStreamState(int iState) { m_iStreamState = iState; }

 private:
  void TouchSessionInfo(const void* pSessionInfo);

  // The request thread hands the push over; the upper layer's thread reads it.
  mutable std::mutex m_mutex;
  HTTP_SESSION* m_psHeld = nullptr;
  std::atomic<int> m_iStreamState{0};
  std::atomic<uint32_t> m_ulTouched{0};
};

}  // namespace fuzzsup

#endif
