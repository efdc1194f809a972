#include "CamCgiCommon.h"

#include <cstring>

#include "CCamRequester.h"
#include "CamCgiTables.h"
#include "CamClock.h"
#include "CamHeldFormat.h"
#include "CamKelCrypt.h"
#include "CamRequesterFields.h"
#include "CamTypes.h"

namespace cgi {

namespace {

// Size of the scratch copy of a credential and of the transformed field.
constexpr int kCredentialScratch = 256;
// The login components hold 64 hex digits behind their key.
constexpr int kLoginSlotSize = 80;
constexpr int kKeyCopySize = 8;

int BuildPresetLowerCase(const CamRequesterFields& sFields, char* pcDst) {
  Slot sPath, sPreset, sChannel;
  FormatSlot(sPath, "%s", "/cgi-bin/camctrl");
  FormatSlot(sPreset, "preset=%d", sFields.usPresetNo);
  ChannelPart(sChannel, sFields);
  return JoinLine(pcDst, "%s?%s%s", sPath.c, sPreset.c, sChannel.c);
}

int BuildPresetUpperCase(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                         const PresetPolicy& sPolicy) {
  if (sPolicy.iUpperCaseLimit >= 0 && sFields.usPresetNo > sPolicy.iUpperCaseLimit) {
    rRequester.CamReqCOM_printf("CmdSet_CamPreset [ERROR] Param error preset#[%d > 16]\n",
                                sFields.usPresetNo);
    return -1;
  }
  Slot sPath, sPreset;
  FormatSlot(sPath, "%s", "/cgi-bin/camctrl");
  FormatSlot(sPreset, "PRESET=%d", sFields.usPresetNo);
  return JoinLine(pcDst, "%s?%s", sPath.c, sPreset.c);
}

// A terminated copy of the recorder key, whatever its 7 bytes hold.
void CopyKey(const CamRequesterFields& sFields, char (&acKey)[kKeyCopySize]) {
  memset(acKey, 0, sizeof(acKey));
  memcpy(acKey, sFields.strKey, sizeof(sFields.strKey));
}

// Transforms one 64-byte credential field into 64 hex digits.
void TransformCredential(CCamRequester& rRequester, char* pcKey, const char* pcCredential,
                         char* pcHex) {
  char acScratch[kCredentialScratch] = {};
  memcpy(acScratch, pcCredential, CAM_TEXT_SIZE);
  rRequester.ChangeData_KelEncrypt(pcKey, acScratch, pcHex);
  pcHex[kKelCryptTextSize - 1] = '\0';
}

}  // namespace

void ChannelPart(Slot& sSlot, const CamRequesterFields& sFields) {
  if (sFields.usSelectChNo != 0) FormatSlot(sSlot, "&ch=%d", sFields.usSelectChNo);
}

void StreamPart(Slot& sSlot, const CamRequesterFields& sFields) {
  if (sFields.cStream == 1 || sFields.cStream == 2)
    FormatSlot(sSlot, "&stream=%d", sFields.cStream);
}

int BuildRecorderSession(char* pcDst) {
  return JoinLine(pcDst, "%s", "/cgi-bin/start.cgi?UID=-1");
}

int BuildRecorderKeepAlive(const CamRequesterFields& sFields, char* pcDst) {
  Slot sPath;
  FormatSlot(sPath, "%s", "/cgi-bin/status.cgi");
  return JoinLine(pcDst, "%s?UID=%d&HTML=as_status.html", sPath.c, sFields.iUid.load());
}

int RefuseQv262AudioKeepAlive(CCamRequester& rRequester) {
  rRequester.CamReqCOM_printf("CmdSet_KeepAlive [ERROR] QV262 unsupport keepalive [audio] \n");
  return -1;
}

int RefuseKeepAliveType(CCamRequester& rRequester, const CamRequesterFields& sFields) {
  rRequester.CamReqCOM_printf("CmdSet_KeepAlive [ERROR] Unknown Camera Type enum#[%d]\n",
                              sFields.usCameraType);
  return -1;
}

int BuildCamPreset(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                   const PresetPolicy& sPolicy) {
  pcDst[0] = '\0';
  if (sFields.usPresetNo == 0) return 1;  // nothing to send
  switch (PresetOf(sFields.usCameraType)) {
    case PresetForm::kLowerCase:
      return BuildPresetLowerCase(sFields, pcDst);
    case PresetForm::kUpperCase:
      return BuildPresetUpperCase(rRequester, sFields, pcDst, sPolicy);
    case PresetForm::kNone:
      break;
  }
  camfmt::PrintHeld(rRequester, sPolicy.pcRefusal, sFields.usCameraType);
  return -1;
}

char* KelEncrypt64(char* pcKey, char* pcData, char* pcOut) {
  return KelEncrypt(pcKey, pcData, pcOut);
}

int BuildKelLogIn(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst) {
  pcDst[0] = '\0';
  if (!IsKelRecorder(sFields.usCameraType)) return -1;
  char acKey[kKeyCopySize];
  CopyKey(sFields, acKey);
  char acUserHex[kKelCryptTextSize] = {};
  char acPassHex[kKelCryptTextSize] = {};
  TransformCredential(rRequester, acKey, sFields.cUserName, acUserHex);
  TransformCredential(rRequester, acKey, sFields.cPassword, acPassHex);
  const long lTemp = PageValue();
  char acPath[kLoginSlotSize] = {}, acUser[kLoginSlotSize] = {}, acPass[kLoginSlotSize] = {};
  char acKeyPart[kLoginSlotSize] = {}, acTemp[kLoginSlotSize] = {};
  FormatText(acPath, sizeof(acPath), "%s", "/cgi-bin/ulogin.cgi");
  FormatText(acUser, sizeof(acUser), "USER=%s", acUserHex);
  FormatText(acPass, sizeof(acPass), "PASS=%s", acPassHex);
  FormatText(acKeyPart, sizeof(acKeyPart), "KEY=%s", acKey);
  FormatText(acTemp, sizeof(acTemp), "TEMP=%ld", lTemp);
  return JoinLine(pcDst, "%s?%s&%s&%s&%s", acPath, acUser, acPass, acKeyPart, acTemp);
}

int BuildKelLogOut(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                   const char* pcWrongType) {
  pcDst[0] = '\0';
  if (!IsKelRecorder(sFields.usCameraType)) {
    camfmt::PrintHeld(rRequester, pcWrongType, sFields.usCameraType);
    return -1;
  }
  Slot sPath, sUid;
  FormatSlot(sPath, "%s", "/cgi-bin/logout.cgi");
  FormatSlot(sUid, "UID=%d", sFields.uid_logout);
  return JoinLine(pcDst, "%s?%s", sPath.c, sUid.c);
}

const char* ConnectWord(int iStartStop) {
  return iStartStop == 1 ? "connect=start" : "connect=stop";
}

const char* RecorderCommandWord(int iStartStop) {
  return iStartStop == 1 ? "CMD=START" : "CMD=STOP";
}

int AudioDistribute(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                    int iStartStop, AudioForm eForm, AudioLineFn pfnCamera,
                    AudioLineFn pfnRecorder) {
  pcDst[0] = '\0';
  if (iStartStop > 1) {
    rRequester.CamReqCOM_printf("CmdSet_AudioDistribute [ERROR] Param Error iStartStop [%d]\n",
                                iStartStop);
    return -1;
  }
  rRequester.CamReqCOM_printf("CmdSet_AudioDistribute [DEBUG] Camera Type = %d \n",
                              sFields.usCameraType);
  const long lPage = PageValue();
  switch (eForm) {
    case AudioForm::kCamera:
      return pfnCamera(sFields, pcDst, iStartStop, lPage);
    case AudioForm::kRecorder:
      return pfnRecorder(sFields, pcDst, iStartStop, lPage);
    case AudioForm::kNone:
      break;
  }
  rRequester.CamReqCOM_printf("CmdSet_AudioDistribute [ERROR] Unknown Camera Type enum#[%d]\n",
                              sFields.usCameraType);
  return -1;
}

}  // namespace cgi
