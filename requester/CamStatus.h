// The status engine of both requesters: the four fixed tables that turn
// (status, event) into the next status, and the one step function that
// applies them to iConnectStatus.
#ifndef CAM_STATUS_H
#define CAM_STATUS_H

#include "CamSessionPolicy.h"

class CCamRequester;
struct CamRequesterFields;

namespace camses {

extern const StatusTable kRtpVideoTable;
extern const StatusTable kRtpAudioTable;
extern const StatusTable kHttpVideoTable;
extern const StatusTable kHttpAudioTable;

// ChangeStatus of both classes. The table is chosen by the command type's
// rule. An audio requester in ERROR without a UID stays in ERROR on START.
// The step is one compare-and-swap on iConnectStatus, so that the upper
// layer's thread (SetParameterStatusChange) and the request thread never
// lose each other's event. Returns 0, or -1 for a type without a table.
int StepStatus(CCamRequester& rReq, const CamRequesterFields& rF, const SessionPolicy& rP,
               int iEvent);

}  // namespace camses

#endif
