// The session commands of both requesters: each is a guard over
// iConnectStatus that calls the class's Exec worker (through the virtual
// table) and turns its result into a status event. Written once; each
// class's member calls these with its SessionPolicy. The tick counters, the
// stream check and the early-restart check are here too.
#ifndef CAM_SESSION_GUARDS_H
#define CAM_SESSION_GUARDS_H

#include "CamConstants.h"
#include "CamSessionPolicy.h"

class CCamRequester;
struct CamRequesterFields;

namespace camses {

constexpr int kSetupErrorThreshold = 10;  // set-up failures before the alarm
constexpr int kStallErrorThreshold = 1;   // a recorder's stall is reported at once
// Result bits of a start request that ask for a keep-alive at once (0x204).
constexpr unsigned kPushAgainKeepAliveMask = 0x204;

// Prints a text that carries no conversion (a message held as data); null
// prints nothing.
void PrintText(CCamRequester& rReq, const char* pcText);

// Adds one call to riCount; true on every iPeriod-th call, which also resets
// it. A count set to iPeriod or more makes the next call true.
bool CountTick(int32_t& riCount, int iPeriod);

// ---- guards ------------------------------------------------------------------

int OpenSession(CCamRequester& rReq, const CamRequesterFields& rF, const SessionPolicy& rP);
int SetupSession(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP);
int MoveToPreset(CCamRequester& rReq, const CamRequesterFields& rF, const SessionPolicy& rP);
// The stream start proper: StreamStartCommandExec, then RUN_SUCCESS or
// RUN_FAIL. Returns 0.
int RequestStreamStart(CCamRequester& rReq);
// StreamStartCommand that acts in READY only.
int StartStreamWhenReady(CCamRequester& rReq);
int SendIframeInterval(CCamRequester& rReq);
int KeepAlive(CCamRequester& rReq);
int KeepAliveForAudio(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP);
int PlayBackKeepAlive(CCamRequester& rReq, CamRequesterFields& rF);
int StopStream(CCamRequester& rReq, const SessionPolicy& rP);
int StopRecorderStream(CCamRequester& rReq, const SessionPolicy& rP);
int ForgetUid(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP);
int SetKeepAliveCount(CamRequesterFields& rF, int iCount);

// ---- stream-start tracking (CamStreamCheck.cpp) ------------------------------

int KeepStreamStart(CCamRequester& rReq, CamRequesterFields& rF);
int CheckStreamStart(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                     unsigned short usCameraType, int iCmdType);
int EarlyRestartCheck(CCamRequester& rReq, const CamRequesterFields& rF, const SessionPolicy& rP);
int EarlyRestartAllowed(const CamRequesterFields& rF);

}  // namespace camses

#endif
