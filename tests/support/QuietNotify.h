// A notification object of the upper layer that does nothing and answers the
// stream-state query with "arriving". Header only, without GoogleTest: the
// benchmarks use it too.
#ifndef CAM_QUIET_NOTIFY_H
#define CAM_QUIET_NOTIFY_H

#include "CamRequesterParam.h"

namespace camtest {

class QuietNotify : public CCamRequesterNotify {
 public:
  void NotifyRtpStream(int, const void*, int, const char*, int, int, int, int, int, const char*,
                       int, int) override {}
  void NotifySessionInfo(int, const void*, int, int) override {}
  int GetStreamState(unsigned short, int) override { return 0; }
  void NotifyCamRequesterHandle(int, HTTP_SESSION*) override {}
};

}  // namespace camtest

#endif
