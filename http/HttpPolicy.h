// What the HTTP requester's session code is, as data for the shared engine.
#ifndef HTTP_POLICY_H
#define HTTP_POLICY_H

#include "CamSessionPolicy.h"

class CCamRequester;
struct CamRequesterFields;

namespace httpses {

extern const camses::SessionPolicy kHttpPolicy;

// The HTTP requester's part of UidInvalid for live JPEG: the UID is
// forgotten and the upper layer told with the session-information
// notification, once.
void ForgetHttpUid(CCamRequester& rReq, CamRequesterFields& rF);

}  // namespace httpses

#endif
