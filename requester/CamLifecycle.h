// Teardown shared by both concrete requesters.
#ifndef CAM_LIFECYCLE_H
#define CAM_LIFECYCLE_H

class CCamRequester;

namespace campr {

// Step and limit of the destructor's wait for the session to close.
constexpr long kDestructStepNs = 10000000;  // 10 ms
constexpr int kDestructStepLimit = 500;     // gives up after the 501st step

// Waits until iConnectStatus is 0, 10 ms a step; after the 501st step prints
// pcTimeoutLine through COM_printf and gives up.
void WaitForIdleStatus(CCamRequester& rRequester, const char* pcTimeoutLine);

}  // namespace campr

#endif
