// Stream-start tracking of both requesters: the stream-check tick, the check
// itself (the upper layer says whether the stream arrives; a recorder's
// stream that does not is asked for again, and a stall and its end are
// reported to the connection-error accounting), and the check that lets a
// failed recorder stream restart at once.
#include "CCamRequester.h"
#include "CamNotify.h"
#include "CamRequesterFields.h"
#include "CamSessionGuards.h"
#include "CamTypes.h"

namespace camses {

namespace {

constexpr const char* kCheckName = "CheckStreamStart";

// The upper layer's answer when the stream stopped (other non-zero values:
// it does not arrive, without counting as stopped).
constexpr int kStreamStopped = 1;

// Asks a recorder for its stream again; when its answer asks for a
// keep-alive, sends one at once. Returns the last Exec result.
int PushAgain(CCamRequester& rReq, CamRequesterFields& rF) {
  rReq.CamReqCOM_printf("%s [DEBUG] POS=%d PUSH CGI!\n", kCheckName, rF.iPos);
  rF.m_KELCheckStreamRet = 0;
  int iResult = rReq.StreamStartCommandExec();
  const uint32_t ulRet = rF.m_KELCheckStreamRet;
  if (iResult == 0 && (ulRet & kPushAgainKeepAliveMask) == kPushAgainKeepAliveMask) {
    rReq.CamReqCOM_printf("%s [DEBUG] POS=%d PUSH CGI! m_KELCheckStreamRet=0x%x KeepAlive Send\n",
                          kCheckName, rF.iPos, ulRet);
    rF.m_iKeepAliveCount = kKeepAliveTicks;
    iResult = rReq.SendKeepAliveCommandExec();
    if (iResult == -1) {
      rReq.UidInvalid();
      rReq.ChangeStatus(CAM_HTTP_EVT_ERROR);
    }
  }
  rF.m_KELCheckStreamRet = 0;
  return iResult;
}

}  // namespace

int KeepStreamStart(CCamRequester& rReq, CamRequesterFields& rF) {
  if (rReq.iConnectStatus != CAM_HTTP_STS_RUN) return 0;
  if (CountTick(rF.m_iStreamCheckCount, kStreamCheckTicks)) {
    rReq.CheckStreamStart(rF.usCameraType, rF.iCmdType);
  }
  return 0;
}

int CheckStreamStart(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                     unsigned short usCameraType, int iCmdType) {
  PrintText(rReq, rP.pcStreamCheckStart);
  CCamRequesterNotify* pUpper = UpperLayer(rF);
  if (pUpper == nullptr) {
    rReq.CamReqCOM_printf("CheckStreamStart [ERROR] param error [NULL]\n");
    return -1;
  }
  const StreamCheckKind eKind = RuleFor(rP, iCmdType).eStreamCheck;
  const bool bRecorder = IsKelRecorder(rF.usCameraType);
  if (eKind == StreamCheckKind::kQuery && !bRecorder) {
    return pUpper->GetStreamState(usCameraType, iCmdType);
  }
  if (eKind == StreamCheckKind::kAudio && bRecorder) {
    // A recorder's audio is not checked.
    PrintText(rReq, rP.pcRecorderAudioCheck);
    if (usCameraType == CAM_REQUESTER_CAMTYPE_KE850 ||
        usCameraType == CAM_REQUESTER_CAMTYPE_KEL36) {
      rReq.CamReqCOM_printf("CheckStreamStart [DEBUG] CAM_REQUESTER_CAMTYPE_KE850\n");
    }
    return 0;
  }
  if (eKind != StreamCheckKind::kQuery) {
    rReq.CamReqCOM_printf("%s [Error] iCmdType=%d\n", kCheckName, iCmdType);
    return -1;
  }
  const int iState = pUpper->GetStreamState(usCameraType, iCmdType);
  int iResult = iState;
  if (iState != 0) iResult = PushAgain(rReq, rF);
  // Each change of direction is reported once.
  if (rF.m_iRtpStopState == 0 && iState == kStreamStopped) {
    rReq.CamReqCOM_printf("%s %s RUN ->STOP  POS=%d \n", kCheckName, rP.pcStallWord, rF.iPos);
    rF.m_iRtpStopState = 1;
    return rReq.ConnectError(rF.iPos, rF.cIpAddr, kStallErrorThreshold);
  }
  if (rF.m_iRtpStopState == 1 && iState == 0) {
    rReq.CamReqCOM_printf("%s %s STOP -> RUN  POS=%d \n", kCheckName, rP.pcStallWord, rF.iPos);
    rF.m_iRtpStopState = 0;
    return rReq.ConnectErrorReset(rF.iPos, rF.cIpAddr);
  }
  return iResult;
}

int EarlyRestartCheck(CCamRequester& rReq, const CamRequesterFields& rF, const SessionPolicy& rP) {
  switch (RuleFor(rP, rF.iCmdType).eEarlyRestart) {
    case EarlyRestartKind::kNever:
      return -1;
    case EarlyRestartKind::kCheck:
      return rReq.SetKelInfoFlagCheckExec();
    case EarlyRestartKind::kUndefined:
      break;
  }
  rReq.CamReqCOM_printf("SetKelInfoFlagCheck [Error] Undefined iCmdType=%d\n", rF.iCmdType);
  return -1;
}

int EarlyRestartAllowed(const CamRequesterFields& rF) {
  if (!IsKelRecorder(rF.usCameraType)) return -1;
  // A controlled recorder waits for its UID to be set from outside.
  if (rF.iUid == -1 && rF.m_KELCtrlFlag == 1) return -1;
  return 0;
}

}  // namespace camses
