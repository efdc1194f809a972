// Alarm report of the device: each report becomes one line of the device's
// print and is handed to the observer that a process installed. The lock is
// held across the observer call, so once ALMSND_SetObserver returns, the old
// observer is called no more. It is recursive so that an observer may itself
// report or change the observer without deadlocking.
#include "almsnd.h"

#include <mutex>

#include "kxcom.h"

namespace {

struct AlarmChannel {
  std::recursive_mutex mutex;
  ALMSND_Observer observer = nullptr;
  void* context = nullptr;
};

// Never destroyed: threads that still report while the process exits may use it.
AlarmChannel& TheChannel() {
  static AlarmChannel* channel = new AlarmChannel;
  return *channel;
}

}  // namespace

extern "C" {

// The address is printed as an empty text when none is given; the observer
// receives the caller's pointer unchanged (it may be null).
int ALMSND_AsyErrReport(int iCode, int iCamera, const char* pcAddress, int iPosition,
                        int /*iReserved*/) {
  AlarmChannel& channel = TheChannel();
  std::lock_guard<std::recursive_mutex> lock(channel.mutex);
  COM_printf("ALMSND_AsyErrReport code=%d camera=%d address=%s position=%d\n", iCode, iCamera,
             pcAddress != nullptr ? pcAddress : "", iPosition);
  if (channel.observer != nullptr) {
    channel.observer(iCode, iCamera, pcAddress, iPosition, channel.context);
  }
  return 0;
}

void ALMSND_SetObserver(ALMSND_Observer pfnObserver, void* pvContext) {
  AlarmChannel& channel = TheChannel();
  std::lock_guard<std::recursive_mutex> lock(channel.mutex);
  channel.observer = pfnObserver;
  channel.context = pfnObserver == nullptr ? nullptr : pvContext;
}

}  // extern "C"
