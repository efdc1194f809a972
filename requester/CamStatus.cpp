#include "CamStatus.h"

#include "CCamRequester.h"
#include "CamRequesterFields.h"

namespace camses {

// Every cell is deliberate, the quiet ones too: a STOP in SETUP or READY
// leaves the status alone (no stop request for a stream that never ran), and
// an error in STOP returns to IDLE rather than ERROR.
//
// rows: IDLE, ERROR, SETUP, READY, RUN, STOP; columns: the events 0..8
// (START, STOP, SETUP_SUCCESS, SETUP_FAIL, RUN_SUCCESS, RUN_FAIL, ERROR,
// RESERVED7, STOP_DONE).
const StatusTable kRtpVideoTable = {
    {2, 0, 0, 0, 0, 0, 0, 0, 0},  //
    {2, 0, 1, 1, 1, 1, 1, 1, 1},  //
    {2, 2, 3, 1, 2, 2, 1, 1, 2},  //
    {3, 3, 3, 3, 4, 1, 1, 1, 3},  //
    {4, 5, 4, 4, 4, 4, 1, 1, 4},  //
    {5, 5, 5, 5, 5, 5, 0, 0, 0},  //
};

// Audio has no set-up step: START goes straight to READY, SETUP is left on
// any event, and a START, set-up or run event while running returns to
// READY so that the stream start is requested again.
const StatusTable kRtpAudioTable = {
    {3, 0, 0, 0, 0, 0, 0, 0, 0},  //
    {3, 0, 1, 1, 1, 1, 1, 1, 1},  //
    {1, 1, 1, 1, 1, 1, 1, 1, 1},  //
    {3, 3, 3, 3, 4, 1, 1, 1, 3},  //
    {3, 5, 3, 3, 3, 3, 1, 1, 3},  //
    {5, 5, 5, 5, 5, 5, 0, 0, 0},  //
};

// Only the RUN row differs from the RTP tables: a failed restart of a
// running push ends in ERROR, and STOP_DONE while running gives READY.
const StatusTable kHttpVideoTable = {
    {2, 0, 0, 0, 0, 0, 0, 0, 0},  //
    {2, 0, 1, 1, 1, 1, 1, 1, 1},  //
    {2, 2, 3, 1, 2, 2, 1, 1, 2},  //
    {3, 3, 3, 3, 4, 1, 1, 1, 3},  //
    {4, 5, 4, 4, 4, 1, 1, 1, 3},  //
    {5, 5, 5, 5, 5, 5, 0, 0, 0},  //
};

// HTTP audio stays in RUN on START and run events.
const StatusTable kHttpAudioTable = {
    {3, 0, 0, 0, 0, 0, 0, 0, 0},  //
    {3, 0, 1, 1, 1, 1, 1, 1, 1},  //
    {1, 1, 1, 1, 1, 1, 1, 1, 1},  //
    {3, 3, 3, 3, 4, 1, 1, 1, 3},  //
    {4, 5, 4, 4, 4, 1, 1, 1, 4},  //
    {5, 5, 5, 5, 5, 5, 0, 0, 0},  //
};

namespace {

bool InRange(int iValue, int iCount) {
  return iValue >= 0 && iValue < iCount;
}

}  // namespace

int StepStatus(CCamRequester& rReq, const CamRequesterFields& rF, const SessionPolicy& rP,
               int iEvent) {
  const TableKind eTable = RuleFor(rP, rF.iCmdType).eTable;
  const StatusTable* pTable = eTable == TableKind::kVideo   ? rP.pVideoTable
                              : eTable == TableKind::kAudio ? rP.pAudioTable
                                                            : nullptr;
  // The word says "event" although it is the command type that is undefined.
  if (pTable == nullptr || !InRange(iEvent, kEventCount)) {
    rReq.CamReqCOM_printf("ChangeStatus [Error] Undefined event=%d\n", iEvent);
    return -1;
  }
  const bool bAudio = eTable == TableKind::kAudio;
  int32_t iOld = rReq.iConnectStatus.load();
  for (;;) {
    if (!InRange(iOld, kStatusCount)) {
      rReq.CamReqCOM_printf("ChangeStatus [Error] Undefined event=%d\n", iEvent);
      return -1;
    }
    // An audio requester in error with no UID does not restart on START.
    if (bAudio && iOld == CAM_HTTP_STS_ERROR && rF.iUid == -1 && iEvent == CAM_HTTP_EVT_START) {
      rReq.CamReqCOM_printf("ChangeStatus [DEBUG] Audio Event=%d:%d UID=-1. \n", iEvent, iOld);
      return 0;
    }
    const int32_t iNew = (*pTable)[iOld][iEvent];
    // On failure iOld holds the status the other thread wrote; step from it.
    if (rReq.iConnectStatus.compare_exchange_weak(iOld, iNew)) {
      if (bAudio) {
        rReq.CamReqCOM_printf("ChangeStatus [DEBUG] Audio Event=%d:%d -> %d. \n", iEvent, iOld,
                              iNew);
      } else {
        rReq.CamReqCOM_printf("ChangeStatus [DEBUG] Video Event=%d:%d -> %d. \n", iEvent, iOld,
                              iNew);
      }
      return 0;
    }
  }
}

}  // namespace camses
