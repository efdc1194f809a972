// The requesters the limits program drives: an H.264 camera over RTP on a
// simulated device, with an upper layer that wants nothing but the stream
// state "arriving" (camtest::QuietNotify).
#ifndef BENCH_LIMITS_REQUESTERS_H
#define BENCH_LIMITS_REQUESTERS_H

#include <cstdint>

#include "CCamRequester.h"
#include "CamRequesterParam.h"
#include "QuietNotify.h"

namespace limits {

// Sets the parameters of an H.264 RTP stream of a CAM07 camera at
// 127.0.0.1:usPort, before Initialize.
void ConfigureH264(CCamRequester& rReq, uint16_t usPort, CCamRequesterNotify& rUpper);

// Drops the diagnostic print of every requester: only the figures matter.
void SilencePrint();

}  // namespace limits

#endif
