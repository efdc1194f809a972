#include "CamLifecycle.h"

#include <ctime>

#include "CCamRequester.h"
#include "kxcom.h"

namespace campr {

void WaitForIdleStatus(CCamRequester& rRequester, const char* pcTimeoutLine) {
  int iSteps = 0;
  // The request thread closes the session when it ends, which is how the
  // status returns to 0 while we wait here.
  while (rRequester.iConnectStatus != 0) {
    const struct timespec sStep = {0, kDestructStepNs};
    nanosleep(&sStep, nullptr);
    ++iSteps;
    if (iSteps > kDestructStepLimit) {
      COM_printf("%s", pcTimeoutLine);
      break;
    }
  }
}

}  // namespace campr
