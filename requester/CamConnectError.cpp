// Connection-error accounting and the messages to other processes: repeated
// failures of one position are raised once as an alarm and cleared once, and
// each UID attempt whose outcome changed is reported with an IPC message.
#include <cstring>

#include "CCamRequester.h"
#include "almsnd.h"
#include "kxcom.h"

namespace {

constexpr int kFirstPosition = 1;
constexpr int kLastPosition = 6;
constexpr int kFirstCameraNumber = 1;
constexpr int kLastCameraNumber = 262;
constexpr int kUidFailed = -2;  // result of a set-up that got no UID

bool IsCountedPosition(int iPos) {
  return iPos >= kFirstPosition && iPos <= kLastPosition;
}

}  // namespace

int CCamRequester::ConnectErrorInitialize() {
  m_iErrorCount = 0;
  m_fErrorStat = 0;
  iCameraNumber = 0;
  bAudio = 0;
  return 0;
}

int CCamRequester::SetCameraNumber(int iNumber) {
  CamReqCOM_printf("SetCameraNumber [DEBUG] CAM[%d]", iNumber);
  const bool bValid = iNumber >= kFirstCameraNumber && iNumber <= kLastCameraNumber;
  iCameraNumber = bValid ? iNumber : 0;
  return 0;
}

int CCamRequester::ThisIsAudio() {
  bAudio = 1;
  return 0;
}

int CCamRequester::ConnectError(int iPos, char* pcAddress, int iThreshold) {
  if (!IsCountedPosition(iPos)) return 0;
  ++m_iErrorCount;
  CamReqCOM_printf("[CCamR::ConnectError] m_iErrorCount = [%d] m_fErrorStat = [%d]\n",
                   m_iErrorCount, m_fErrorStat);
  // Reported once per failure period, however many failures follow.
  if (m_iErrorCount >= iThreshold && m_fErrorStat != 1) {
    CamReqCOM_printf("[CCamR::ConnectError] ERROR ON iPos =[%d], cIpAddr=[%s]", iPos, pcAddress);
    const int iCode = bAudio != 0 ? CAM_ALARM_AUDIO_ERROR_ON : CAM_ALARM_VIDEO_ERROR_ON;
    ALMSND_AsyErrReport(iCode, iCameraNumber, pcAddress, iPos, 0);
    m_fErrorStat = 1;
  }
  return 0;
}

int CCamRequester::ConnectErrorReset(int iPos, char* pcAddress) {
  if (!IsCountedPosition(iPos)) return 0;
  m_iErrorCount = 0;
  if (m_fErrorStat == 1) {
    m_fErrorStat = 0;
    CamReqCOM_printf("[CCamR::ConnectErrorReset] ERROR OFF iPos =[%d], cIpAddr=[%s]", iPos,
                     pcAddress);
    const int iCode = bAudio != 0 ? CAM_ALARM_AUDIO_ERROR_OFF : CAM_ALARM_VIDEO_ERROR_OFF;
    ALMSND_AsyErrReport(iCode, iCameraNumber, pcAddress, iPos, 0);
  }
  return 0;
}

int CCamRequester::PlayModeStop(int iPos, char* pcAddress, int iPlayMode) {
  (void)iPos;
  (void)pcAddress;
  (void)iPlayMode;
  return 0;
}

int CCamRequester::SndMsg_GetUID(int iResult, int iPos) {
  KXCOM_MSGBUF* psBuf = COM_MsgBufCreate(CAM_UIDMSG_ID, 0, 0);
  if (psBuf == nullptr) {
    CamReqCOM_printf("SndMsg_GetUID [ERROR] COM_MsgBufCreate().\n");
    return -1;
  }
  void* pvPayload = _COM_STR_PTR(psBuf, sizeof(CAM_UIDMSG));
  if (pvPayload == nullptr) {
    CamReqCOM_printf("SndMsg_GetUID [ERROR] KXCOM_GetMsgPtr_Asy().\n");
    KXCOM_FreeMsgBuf_Asy(psBuf);
    return -1;
  }
  const int32_t iFlag = (iResult == kUidFailed) ? 1 : 0;
  const CAM_UIDMSG sMsg = {iPos - 1, iCamNo, iFlag};
  std::memcpy(pvPayload, &sMsg, sizeof(sMsg));
  if (iFlag == 1) {
    CamReqCOM_printf("GETUID:SndMsg_GetUID [DEBUG] POS[%d] CAM[%d] ERROR", iPos, iCamNo);
  } else {
    CamReqCOM_printf("GETUID:SndMsg_GetUID [DEBUG] POS[%d] CAM[%d] SUCCESS", iPos, iCamNo);
  }
  // Only changes are reported; the initial 10 lets the first one through.
  if (iFlag == iLastUidResult) {
    KXCOM_FreeMsgBuf_Asy(psBuf);
    return 0;
  }
  iLastUidResult = iFlag;
  const int iRet = COM_MsgSnd(CAM_UIDMSG_DESTINATION, 0, psBuf);
  if (iRet != KXCOM_LIB_OK) {
    CamReqCOM_printf("SndMsg_GetUID [ERROR] COM_MsgSnd(). Code=[0x%08x]\n",
                     static_cast<unsigned>(iRet));
    KXCOM_FreeMsgBuf_Asy(psBuf);
  }
  return 0;
}
