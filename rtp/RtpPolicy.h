// What the RTP requester's session code is, as data for the shared engine.
#ifndef RTP_POLICY_H
#define RTP_POLICY_H

#include "CamSessionPolicy.h"

namespace rtpses {

extern const camses::SessionPolicy kRtpPolicy;

}  // namespace rtpses

#endif
