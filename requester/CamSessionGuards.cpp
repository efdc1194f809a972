#include "CamSessionGuards.h"

#include "CCamRequester.h"
#include "CamRequesterFields.h"
#include "CamScoped.h"
#include "CamTypes.h"

namespace camses {

namespace {

bool InStatus(const CCamRequester& rReq, int iStatus) {
  return rReq.iConnectStatus == iStatus;
}

}  // namespace

void PrintText(CCamRequester& rReq, const char* pcText) {
  if (pcText != nullptr) rReq.CamReqCOM_printf("%s", pcText);
}

bool CountTick(int32_t& riCount, int iPeriod) {
  const int32_t iNext = riCount + 1;
  if (iNext < iPeriod) {
    riCount = iNext;
    return false;
  }
  riCount = 0;
  return true;
}

int OpenSession(CCamRequester& rReq, const CamRequesterFields& rF, const SessionPolicy& rP) {
  // Opens nothing: every Exec opens a session of its own.
  if (RuleFor(rP, rF.iCmdType).bOpens) return 0;
  rReq.CamReqCOM_printf("OpenSessionCommand [Error] Undefined iCmdType=%d\n", rF.iCmdType);
  return -1;
}

int SetupSession(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP) {
  const SetupKind eKind = RuleFor(rP, rF.iCmdType).eSetup;
  if (eKind == SetupKind::kNone) return 0;
  if (eKind == SetupKind::kUndefined) {
    rReq.CamReqCOM_printf("SetupSessionCommand [Error] Undefined iCmdType=%d\n", rF.iCmdType);
    return -1;
  }
  if (!InStatus(rReq, CAM_HTTP_STS_SETUP)) {
    rReq.CamReqCOM_printf("SetupSessionCommand [DEBUG] NOP iConnectStatus=%d\n",
                          rReq.iConnectStatus.load());
    return 0;
  }
  const int iResult = rReq.SetupSessionCommandExec();
  // Other processes learn of every attempt.
  rReq.SndMsg_GetUID(iResult, rF.iPos);
  const bool bLive = eKind == SetupKind::kLive;
  if (iResult != -1 && iResult != -2) {
    rReq.ChangeStatus(CAM_HTTP_EVT_SETUP_SUCCESS);
    PrintText(rReq, rP.pcSetupResetLine);
    if (bLive) rReq.ConnectErrorReset(rF.iPos, rF.cIpAddr);
    return 0;
  }
  // A controlled recorder's owner decides what a failed set-up means.
  if (rF.m_KELCtrlFlag == 1) return -1;
  rReq.ChangeStatus(CAM_HTTP_EVT_SETUP_FAIL);
  rReq.CamReqCOM_printf("%s::SetupSessionCommand [ERROR] open faild IP:%s  Port:%d\n",
                        rP.pcClassName, rF.cIpAddr, rF.iHttpPort);
  if (bLive) rReq.ConnectError(rF.iPos, rF.cIpAddr, kSetupErrorThreshold);
  return -1;
}

int MoveToPreset(CCamRequester& rReq, const CamRequesterFields& rF, const SessionPolicy& rP) {
  switch (RuleFor(rP, rF.iCmdType).ePreset) {
    case PresetKind::kSkip:
      return 0;
    case PresetKind::kRun:
      if (InStatus(rReq, CAM_HTTP_STS_ERROR)) return 0;
      if (rReq.SendCamPresetCommandExec() == -1) rReq.ChangeStatus(CAM_HTTP_EVT_ERROR);
      return 0;
    case PresetKind::kUndefined:
      break;
  }
  rReq.CamReqCOM_printf("SendCamPresetCommand [Error] Undefined iCmdType=%d\n", rF.iCmdType);
  return -1;
}

int RequestStreamStart(CCamRequester& rReq) {
  const int iResult = rReq.StreamStartCommandExec();
  rReq.ChangeStatus(iResult != -1 ? CAM_HTTP_EVT_RUN_SUCCESS : CAM_HTTP_EVT_RUN_FAIL);
  return 0;
}

int StartStreamWhenReady(CCamRequester& rReq) {
  if (!InStatus(rReq, CAM_HTTP_STS_READY)) {
    rReq.CamReqCOM_printf("StreamStartCommand [DEBUG] NOP iConnectStatus=%d\n",
                          rReq.iConnectStatus.load());
    return 0;
  }
  return RequestStreamStart(rReq);
}

int SendIframeInterval(CCamRequester& rReq) {
  // In any status and for any type.
  if (rReq.SendCamIframInstCommandExec() == -1) rReq.ChangeStatus(CAM_HTTP_EVT_ERROR);
  return 0;
}

int KeepAlive(CCamRequester& rReq) {
  if (!InStatus(rReq, CAM_HTTP_STS_RUN)) return 0;
  if (rReq.SendKeepAliveCommandExec() == -1) {
    // The upper layer hears that the stream is gone before the status drops.
    rReq.UidInvalid();
    rReq.ChangeStatus(CAM_HTTP_EVT_ERROR);
  }
  return 0;
}

int KeepAliveForAudio(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP) {
  if (!InStatus(rReq, CAM_HTTP_STS_RUN)) return 0;
  if (RuleFor(rP, rF.iCmdType).eTable != TableKind::kAudio) {
    rReq.CamReqCOM_printf("SendKeepAliveCommandForAudio [Error] Cmd Type Not G726\n");
    return -1;
  }
  if (IsKelRecorder(rF.usCameraType)) {
    rReq.CamReqCOM_printf("SendKeepAliveCommandForAudio [Error] KE Series\n");
    return -1;
  }
  // The count at its limit makes the Exec send at once.
  rF.m_iKeepAliveCount = kKeepAliveTicks;
  if (rReq.SendKeepAliveCommandExec() == -1) {
    rReq.UidInvalid();
    rReq.ChangeStatus(CAM_HTTP_EVT_ERROR);
  }
  return 0;
}

int PlayBackKeepAlive(CCamRequester& rReq, CamRequesterFields& rF) {
  if (!InStatus(rReq, CAM_HTTP_STS_RUN)) return 0;
  if (rReq.SendPBKeepAliveCommandExec() == -1) {
    rReq.PlayModeStop(rF.iPos, rF.cIpAddr, rF.m_VOGPlayMode);
    rReq.ChangeStatus(CAM_HTTP_EVT_ERROR);
  }
  return 0;
}

int StopStream(CCamRequester& rReq, const SessionPolicy& rP) {
  if (!InStatus(rReq, CAM_HTTP_STS_STOP)) {
    PrintText(rReq, rP.pcStreamStopNop);
    return 0;
  }
  // A stop never fails once it was asked for.
  rReq.StreamStopCommandExec();
  rReq.ChangeStatus(CAM_HTTP_EVT_STOP_DONE);
  return 0;
}

int StopRecorderStream(CCamRequester& rReq, const SessionPolicy& rP) {
  if (!InStatus(rReq, CAM_HTTP_STS_STOP)) {
    rReq.CamReqCOM_printf("%s::KelStreamStopCommand [DEBGU] NOP\n", rP.pcClassName);
    return 0;
  }
  ReplyBuffer sReply;
  if (!sReply.Allocate()) {
    // The status stays at STOP.
    rReq.CamReqCOM_printf("KelStreamStopCommand [Error] memory allocate failed\n");
    rReq.CloseSessionCommand();
    return -1;
  }
  rReq.KelStreamStopCommandExec(sReply.Data());
  rReq.ChangeStatus(CAM_HTTP_EVT_STOP_DONE);
  rReq.CamReqCOM_printf("KelStreamStopCommand [DEBUG] free=%p\n",
                        static_cast<void*>(sReply.Data()));
  sReply.Free();
  rReq.CloseSessionCommand();
  if (rP.bClosesPushOnStop) rReq.CloseSessionPush();
  return 0;
}

int ForgetUid(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP) {
  if (rF.m_iDestruct == 1) {
    rReq.CamReqCOM_printf("UidInvalid [DEBUG] :DESTRUCT\n");
    rF.iUid = -1;
    return 0;
  }
  const CmdTypeRule& rRule = RuleFor(rP, rF.iCmdType);
  switch (rRule.eUidGone) {
    case UidGoneKind::kKeep:
      PrintText(rReq, rRule.pcUidLine);
      return 0;
    case UidGoneKind::kNotify:
      PrintText(rReq, rRule.pcUidLine);
      if (rP.pfnUidGone != nullptr) rP.pfnUidGone(rReq, rF);
      return 0;
    case UidGoneKind::kUndefined:
      break;
  }
  rReq.CamReqCOM_printf("UidInvalid [Error] iCmdType=%d\n", rF.iCmdType);
  return -1;
}

int SetKeepAliveCount(CamRequesterFields& rF, int iCount) {
  rF.m_iKeepAliveCount = iCount;
  return 0;
}

}  // namespace camses
