// The parameter interface of both concrete requesters, written once over the
// requester, its fields and the constant differences of its class.
#include "CamParameters.h"

#include <stdio.h>
#include <string.h>

#include "CamHeldFormat.h"
#include "CamTypes.h"

namespace campar {

namespace {

// Highest preset number each camera type accepts; kPresetForcedZero marks the
// types without presets, whose preset is stored as 0 without complaint.
constexpr int32_t kPresetForcedZero = -1;
constexpr int32_t kNo = kPresetForcedZero;
// clang-format off
constexpr int32_t kPresetHighest[kCamTypeCount] = {
    kNo, kNo, kNo, kNo, kNo, kNo, kNo, kNo,  //  0..7
    kNo, kNo, kNo, 64,  64,  16,  256, 256,  //  8..15
    256, 256, 256, kNo, kNo, kNo, 256, kNo,  // 16..23
    kNo, 256, kNo, kNo, 256, kNo, 256, kNo,  // 24..31
    kNo, kNo, kNo, kNo, kNo, kNo             // 32..37
};
// clang-format on

constexpr uint16_t kHighestCamType = CAM_REQUESTER_CAMTYPE_KEL36;
constexpr uint16_t kHighestFrate = 11;
constexpr uint16_t kHighestResolution = 4;
// Room for one command-type word and its zero.
constexpr size_t kTypeWordLimit = 16;

// The queries of GetInfo, by information kind; the same for both classes.
constexpr int (CCamRequester::*kInfoQueries[])(void*) = {
    &CCamRequester::GetInfoKelInfo,                // 0
    &CCamRequester::GetInfoCamInfo,                // 1
    &CCamRequester::GetParameterSameUIDGroup_KEL,  // 2
    &CCamRequester::GetCtrlFlag_KEL,               // 3
    &CCamRequester::GetKeepAliveFlag_KEL,          // 4
};
constexpr long kInfoKindCount = sizeof(kInfoQueries) / sizeof(kInfoQueries[0]);

// Copies a text into a field of dstSize bytes: a longer text is cut to
// dstSize - 1 characters, the field always ends in a zero, and no byte past
// the field's size is read from the source.
void CopyText(char* pcDst, size_t uDstSize, const char* pcSrc) {
  const size_t uLength = strnlen(pcSrc, uDstSize - 1);
  memcpy(pcDst, pcSrc, uLength);
  pcDst[uLength] = '\0';
}

template <size_t N>
void CopyText(char (&acDst)[N], const char* pcSrc) {
  CopyText(acDst, N, pcSrc);
}

// The caller's text of a record, made printable even when it lacks its zero.
struct ParamText {
  explicit ParamText(const char* pcSrc) { CopyText(acText, pcSrc); }
  char acText[CAM_TEXT_SIZE];
};

// The stored text decides the length of the comparison: a caller's text that
// begins with the stored one matches, and an empty stored text matches all.
bool TextMatches(const char* pcParam, const char* pcSetup) {
  return memcmp(pcParam, pcSetup, strlen(pcSetup)) == 0;
}

int32_t ReadInt32(const void* pParam) {
  int32_t iValue = 0;
  memcpy(&iValue, pParam, sizeof(iValue));
  return iValue;
}

uint16_t ReadUint16(const void* pParam) {
  uint16_t usValue = 0;
  memcpy(&usValue, pParam, sizeof(usValue));
  return usValue;
}

void WriteInt32(void* pParam, int32_t iValue) {
  memcpy(pParam, &iValue, sizeof(iValue));
}

// The setters that the HTTP class guards itself print "invalid param"; the
// RTP class leaves the check to SetParameter and only refuses silently.
bool RefuseNullRecord(CCamRequester& requester, const CamParamTraits& traits, const void* pParam,
                      const char* pcSetterName) {
  if (pParam != nullptr) return false;
  if (traits.bSetterChecksNull) {
    requester.CamReqCOM_printf("%s [Error] invalid param\n", pcSetterName);
  }
  return true;
}

// The setters and queries that both classes guard print their own text.
bool RefuseNull(CCamRequester& requester, const void* pParam, const char* pcMessage) {
  if (pParam != nullptr) return false;
  requester.CamReqCOM_printf("%s", pcMessage);
  return true;
}

// Frame rate and resolution: an index up to its highest value, else 0.
struct BoundedIndex {
  uint16_t usHighest;
  const char* pcInvalidFormat;  // [Error] pParam invalid=%d
  const char* pcStoredFormat;   // [DEBUG] us...=%d
  const char* pcNullMessage;
};

int SetBoundedIndex(CCamRequester& requester, uint16_t& usField, const BoundedIndex& bounds,
                    const void* pParam) {
  if (RefuseNull(requester, pParam, bounds.pcNullMessage)) return -1;
  usField = ReadUint16(pParam);
  if (usField > bounds.usHighest) {
    camfmt::PrintHeld(requester, bounds.pcInvalidFormat, usField);
    usField = 0;
    return -1;
  }
  camfmt::PrintHeld(requester, bounds.pcStoredFormat, usField);
  return 0;
}

// The recorder flag family works only for a KEL recorder; any other camera
// is refused silently and keeps its values.
bool KelFlagAllowed(CCamRequester& requester, const CamRequesterFields& fields, const void* pParam,
                    const char* pcNullMessage) {
  if (RefuseNull(requester, pParam, pcNullMessage)) return false;
  return IsKelRecorder(fields.usCameraType);
}

void CopyKelSessionIn(CamRequesterFields& fields, const CAM_KEL_INFO& sInfo) {
  fields.iUid.store(sInfo.iUid);
  fields.iAudioBitrate = sInfo.iAudioBitrate;
  fields.iAudioEnable = sInfo.iAudioEnable;
  fields.iSelfFamily = sInfo.iSelfFamily;
  fields.usKelReserved = sInfo.usReserved;
  fields.ucMulticast = sInfo.ucMulticast;
  CopyText(fields.cMultiAddr, sInfo.cMultiAddr);
  fields.ucKelReserved = sInfo.ucReserved;
  CopyText(fields.cSelfAddr, sInfo.cSelfAddr);
  fields.iRtpPort = sInfo.iRtpPort;
  fields.iUniPort = sInfo.iUniPort;
  fields.iAudioInPort = sInfo.iAudioInPort;
  fields.iPeerFamily = sInfo.iPeerFamily;
}

void CopyKelSessionOut(const CamRequesterFields& fields, CAM_KEL_INFO& sInfo) {
  sInfo.iUid = fields.iUid.load();
  sInfo.iAudioBitrate = fields.iAudioBitrate;
  sInfo.iAudioEnable = fields.iAudioEnable;
  sInfo.iSelfFamily = fields.iSelfFamily;
  sInfo.usReserved = fields.usKelReserved;
  sInfo.ucMulticast = fields.ucMulticast;
  CopyText(sInfo.cMultiAddr, fields.cMultiAddr);
  sInfo.ucReserved = fields.ucKelReserved;
  CopyText(sInfo.cSelfAddr, fields.cSelfAddr);
  sInfo.iRtpPort = fields.iRtpPort;
  sInfo.iUniPort = fields.iUniPort;
  sInfo.iAudioInPort = fields.iAudioInPort;
  sInfo.iPeerFamily = fields.iPeerFamily;
}

// The checks of GetInfoCamInfo after the address, port and model.
bool CamInfoDetailsMatch(CCamRequester& requester, const CamRequesterFields& fields,
                         const CamParamTraits& traits, const CAM_CAMINFO_PARAM& sInfo) {
  if (!TextMatches(sInfo.cUserName, fields.cUserName)) {
    requester.CamReqCOM_printf("GetInfoCamInfo [DEBUG] UserName unmach [Param:%s]!=[Setup:%s]\n",
                               ParamText(sInfo.cUserName).acText, fields.cUserName);
    return false;
  }
  if (!TextMatches(sInfo.cPassword, fields.cPassword)) {
    requester.CamReqCOM_printf("GetInfoCamInfo [DEBUG] Password unmach [Param:%s]!=[Setup:%s]\n",
                               ParamText(sInfo.cPassword).acText, fields.cPassword);
    return false;
  }
  if (traits.bComparesFrameAndResolution) {
    if (sInfo.usFrate != fields.usFrate) {
      requester.CamReqCOM_printf("GetInfoCamInfo [DEBUG] Flame unmach [Param:%d]!=[Setup:%d]\n",
                                 sInfo.usFrate, fields.usFrate);
      return false;
    }
    if (sInfo.usResolution != fields.usResolution) {
      requester.CamReqCOM_printf(
          "GetInfoCamInfo [DEBUG] Resolution rate unmach [Param:%d]!=[Setup:%d]\n",
          sInfo.usResolution, fields.usResolution);
      return false;
    }
  }
  if (sInfo.usSelectChNo != fields.usSelectChNo) {
    requester.CamReqCOM_printf(
        "GetInfoCamInfo [DEBUG] SelectChNo rate unmach [Param:%d]!=[Setup:%d]\n",
        sInfo.usSelectChNo, fields.usSelectChNo);
    return false;
  }
  return true;
}

}  // namespace

// ---- dispatch ----------------------------------------------------------------

bool BeginSetParameter(CCamRequester& requester, const CamParamTraits& traits, long lKind,
                       const void* pParam) {
  requester.CamReqCOM_printf("%s::SetParameter [DEBUG] IN l_param_kind:%d\n", traits.pcClassName,
                             static_cast<int>(lKind));
  return !RefuseNull(requester, pParam, "SetParameter [Error] pParam invalid\n");
}

int UndefinedSetParameterKind(CCamRequester& requester, long lKind) {
  requester.CamReqCOM_printf("SetParameter [Error] Undefined function kind=%ld\n", lKind);
  return -1;
}

int DispatchGetInfo(CCamRequester& requester, long lKind, void* pParam) {
  if (RefuseNull(requester, pParam, "GetInfo [Error] pParam invalid\n")) return -1;
  if (lKind < 0 || lKind >= kInfoKindCount) {
    requester.CamReqCOM_printf("GetInfo [Error] Undefined function kind=%ld\n", lKind);
    return -1;
  }
  return (requester.*kInfoQueries[lKind])(pParam);
}

// ---- setters -----------------------------------------------------------------

int SetIpAddress(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
                 const void* pParam) {
  if (RefuseNullRecord(requester, traits, pParam, "SetParameterIpAddress")) return -1;
  CopyText(fields.cIpAddr, static_cast<const char*>(pParam));
  return 0;
}

int SetHttpPort(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
                const void* pParam) {
  if (RefuseNullRecord(requester, traits, pParam, "SetParameterHttpPort")) return -1;
  fields.iHttpPort = ReadInt32(pParam);
  return 0;
}

int SetRtpPort(CamRequesterFields& fields, const void* pParam) {
  if (pParam == nullptr) return -1;
  fields.iRtpPort = ReadInt32(pParam);
  return 0;
}

int SetCmdType(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
               const void* pParam) {
  if (RefuseNullRecord(requester, traits, pParam, "SetParameterCmdType")) return -1;
  fields.iCmdType = ReadInt32(pParam);
  // Compared unsigned, so a negative type is refused as well.
  if (static_cast<uint32_t>(fields.iCmdType) > static_cast<uint32_t>(traits.iHighestCmdType)) {
    requester.CamReqCOM_printf("SetParameterCmdType [Error] pParam invalid=%d\n", fields.iCmdType);
    fields.iCmdType = traits.iInvalidCmdType;
    return -1;
  }
  if (fields.iCmdType == CAM_REQUESTER_CMD_G726_RTP) requester.ThisIsAudio();
  char acWord[kTypeWordLimit] = {};
  const size_t uCell =
      traits.uTypeWordCell < kTypeWordLimit ? traits.uTypeWordCell : kTypeWordLimit - 1;
  memcpy(acWord, traits.pcTypeWords + static_cast<size_t>(fields.iCmdType) * traits.uTypeWordCell,
         uCell);
  camfmt::FormatHeld(fields.cPrintPrefix, sizeof(fields.cPrintPrefix), traits.pcPrefixFormat,
                     acWord);
  return 0;
}

int SetUid(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
           const void* pParam) {
  if (RefuseNullRecord(requester, traits, pParam, "SetParameterUid")) return -1;
  CAM_UID_PARAM sUid;
  memcpy(&sUid, pParam, sizeof(sUid));
  fields.iUid.store(sUid.iUid);
  fields.iAudioEnable = sUid.iAudioEnable;
  return 0;
}

int SetCallback(CCamRequester& requester, CamRequesterFields& fields, const void* pParam) {
  if (RefuseNull(requester, pParam, "SetParameterCallback [Error] pParam invalid\n")) return -1;
  // The record of this kind is the notification object itself.
  fields.p_notify_to_upper = static_cast<CCamRequesterNotify*>(const_cast<void*>(pParam));
  requester.CamReqCOM_printf("SetParameterCallback [DEBUG] p_notify_to_upper:%p \n",
                             static_cast<void*>(fields.p_notify_to_upper));
  return 0;
}

int SetAuth(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
            const void* pParam) {
  if (RefuseNullRecord(requester, traits, pParam, "SetParameterAuth")) return -1;
  const auto* psAuth = static_cast<const CAM_AUTH_PARAM*>(pParam);
  CopyText(fields.cUserName, psAuth->cUserName);
  CopyText(fields.cPassword, psAuth->cPassword);
  return 0;
}

int SetProxy(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
             const void* pParam) {
  if (RefuseNullRecord(requester, traits, pParam, "SetParameterProxy")) return -1;
  memcpy(&fields.sProxy, pParam, sizeof(fields.sProxy));
  // The texts of the record end in a zero within their size from here on.
  fields.sProxy.host[CAM_PROXY_HOST_SIZE - 1] = '\0';
  for (auto& acPattern : fields.sProxy.except) acPattern[CAM_PROXY_EXCEPT_SIZE - 1] = '\0';
  requester.CamReqCOM_printf("SetParameterProxy [DEBUG] OUT enable=%d host=%s port=%d \n",
                             fields.sProxy.enable, fields.sProxy.host, fields.sProxy.port);
  return 0;
}

int SetFrate(CCamRequester& requester, CamRequesterFields& fields, const void* pParam) {
  static constexpr BoundedIndex kFrate = [] {
    BoundedIndex b{};
    b.usHighest = kHighestFrate;
    b.pcInvalidFormat = "SetParameterFrate [Error] pParam invalid=%d\n";
    b.pcStoredFormat = "SetParameterFrate [DEBUG] usFrate=%d \n";
    b.pcNullMessage = "SetParameterFrate [Error] invalid param\n";
    return b;
  }();
  return SetBoundedIndex(requester, fields.usFrate, kFrate, pParam);
}

int SetResolution(CCamRequester& requester, CamRequesterFields& fields, const void* pParam) {
  static constexpr BoundedIndex kResolution = [] {
    BoundedIndex b{};
    b.usHighest = kHighestResolution;
    b.pcInvalidFormat = "SetParameterResolution [Error] pParam invalid=%d\n";
    b.pcStoredFormat = "SetParameterResolution [DEBUG] usResolution=%d \n";
    b.pcNullMessage = "SetParameterResolution [Error] invalid param\n";
    return b;
  }();
  return SetBoundedIndex(requester, fields.usResolution, kResolution, pParam);
}

int SetCamType(CCamRequester& requester, CamRequesterFields& fields, const void* pParam) {
  if (RefuseNull(requester, pParam, "SetParameterCamType [ERROR] param error [NULL]\n")) return -1;
  const auto* psType = static_cast<const CAM_TYPE_PARAM*>(pParam);
  // Name and camera number are kept even when the type is refused.
  fields.usCameraType = psType->usCameraType;
  CopyText(fields.CamName, psType->CamName);
  requester.SetCameraNumber(psType->usCameraNumber);
  if (fields.usCameraType > kHighestCamType) {
    requester.CamReqCOM_printf("SetParameterCamType [ERROR] pParam invalid=%d\n",
                               fields.usCameraType);
    fields.usCameraType = CAM_REQUESTER_CAMTYPE_MAX;
    return -1;
  }
  requester.CamReqCOM_printf("SetParameterCamType [DEBUG] CamName=%s CamType=%d \n", fields.CamName,
                             fields.usCameraType);
  return 0;
}

int SetPreset(CCamRequester& requester, CamRequesterFields& fields, const void* pParam) {
  if (RefuseNull(requester, pParam, "SetParameterPreset [ERROR] param error [NULL]\n")) return -1;
  const uint16_t usPreset = ReadUint16(pParam);
  const int32_t iHighest =
      fields.usCameraType < kCamTypeCount ? kPresetHighest[fields.usCameraType] : kPresetForcedZero;
  if (iHighest == kPresetForcedZero) {
    fields.usPresetNo = 0;
  } else if (usPreset > iHighest) {
    requester.CamReqCOM_printf("SetParameterPreset [ERROR] pParam invalid=%d\n", usPreset);
    fields.usPresetNo = 0;
    return -1;
  } else {
    fields.usPresetNo = usPreset;
  }
  requester.CamReqCOM_printf("SetParameterPreset [DEBUG] usPresetNo=%d \n", fields.usPresetNo);
  return 0;
}

int SetSelCh(CCamRequester& requester, CamRequesterFields& fields, const void* pParam) {
  if (RefuseNull(requester, pParam, "SetParameterSelCh [ERROR] param error [NULL]\n")) return -1;
  fields.usSelectChNo = ReadUint16(pParam);
  requester.CamReqCOM_printf("SetParameterSelCh [DEBUG] usSelectChNo=%d \n", fields.usSelectChNo);
  return 0;
}

int SetScreenPos(CCamRequester& requester, CamRequesterFields& fields, const void* pParam) {
  if (RefuseNull(requester, pParam, "SetParameterScreenPos [ERROR] param error [NULL]\n")) {
    return -1;
  }
  fields.iPos = ReadInt32(pParam);
  return 0;
}

int SetKelInfo(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
               const void* pParam) {
  if (RefuseNull(requester, pParam, "SetParameterKelInfo [ERROR] param error [NULL]\n")) return -1;
  if (!IsKelRecorder(fields.usCameraType)) return -1;
  CopyKelSessionIn(fields, *static_cast<const CAM_KEL_INFO*>(pParam));
  if (traits.bPrintsKelInfoOut) {
    requester.CamReqCOM_printf("SetParameterKelInfo [DEBUG] OUT iUid:%d Bitrate:%d aEnable:%d\n",
                               fields.iUid.load(), fields.iAudioBitrate, fields.iAudioEnable);
  }
  return 0;
}

int SetPlayMode(CCamRequester& requester, CamRequesterFields& fields, const void* pParam) {
  // The refusal shares the text of SetParameterStatusChange, as it always has.
  if (RefuseNull(requester, pParam, "SetParameterStatusChange [ERROR] param error [NULL]\n")) {
    return -1;
  }
  fields.m_VOGPlayMode = ReadInt32(pParam);
  return 0;
}

int SetStatusChange(CCamRequester& requester, const void* pParam) {
  if (RefuseNull(requester, pParam, "SetParameterStatusChange [ERROR] param error [NULL]\n")) {
    return -1;
  }
  if (ReadInt32(pParam) == 1) {
    requester.CamReqCOM_printf(
        "SetParameterStatusChange [DEBUG] Change Status:CAM_HTTP_EVT_RUN_SUCCESS\n");
    // Acts on the session from the caller's thread, by design.
    requester.ChangeStatus(CAM_HTTP_EVT_RUN_SUCCESS);
  } else {
    requester.CamReqCOM_printf("SetParameterStatusChange [DEBUG] NOP\n");
  }
  return 0;
}

int SetStream(CCamRequester& requester, CamRequesterFields& fields, const void* pParam) {
  if (RefuseNull(requester, pParam, "SetParameterStream [ERROR] param error [NULL]\n")) return -1;
  fields.cStream = *static_cast<const uint8_t*>(pParam);
  return 0;
}

int SetCamNo(CCamRequester& requester, const void* pParam) {
  if (pParam == nullptr) return -1;
  requester.iCamNo = ReadInt32(pParam);
  return 0;
}

int SetHttpError(CCamRequester& requester, CamRequesterFields& fields, const void* pParam) {
  requester.CamReqCOM_printf("SetParameterHttpError [DEBUG] In\n");
  if (RefuseNull(requester, pParam, "SetParameterStatusChange [ERROR] param error [NULL]\n")) {
    return -1;
  }
  // A recorder keeps its UID; it is handed out and withdrawn from outside.
  if (!IsKelRecorder(fields.usCameraType)) requester.UidInvalid();
  return 0;
}

int SetDebugInfo(CCamRequester& requester, const void* pParam) {
  if (RefuseNull(requester, pParam, "SetParameterDebugInfo [ERROR] param error [NULL]\n")) {
    return -1;
  }
  return 0;
}

// ---- queries -----------------------------------------------------------------

int GetCamInfo(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
               void* pParam) {
  if (RefuseNull(requester, pParam, "GetInfoCamInfo [Error] pParam invalid\n")) return -1;
  const auto& sInfo = *static_cast<const CAM_CAMINFO_PARAM*>(pParam);
  if (!TextMatches(sInfo.cIpAddr, fields.cIpAddr)) {
    requester.CamReqCOM_printf("GetInfoCamInfo [DEBUG] IP unmach [Param:%s]!=[Setup:%s]\n",
                               ParamText(sInfo.cIpAddr).acText, fields.cIpAddr);
    return -1;
  }
  if (sInfo.iHttpPort != fields.iHttpPort) {
    requester.CamReqCOM_printf("GetInfoCamInfo [DEBUG] PORT# unmach [Param:%d]!=[Setup:%d]\n",
                               sInfo.iHttpPort, fields.iHttpPort);
    return -1;
  }
  if (sInfo.usCameraType != fields.usCameraType) {
    requester.CamReqCOM_printf(
        "GetInfoCamInfo [DEBUG] MODEL unmach [Param:%s(%d)]!=[Setup:%s(%d)]\n",
        ParamText(sInfo.CamName).acText, sInfo.usCameraType, fields.CamName, fields.usCameraType);
    return -1;
  }
  return CamInfoDetailsMatch(requester, fields, traits, sInfo) ? 0 : -1;
}

int GetKelInfo(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
               void* pParam) {
  const KelInfoMessages& words = traits.sKelInfo;
  if (RefuseNull(requester, pParam, words.pcNullRecord)) return -1;
  auto& sInfo = *static_cast<CAM_KEL_INFO*>(pParam);
  if (!TextMatches(sInfo.cIpAddr, fields.cIpAddr)) {
    camfmt::PrintHeld(requester, words.pcIpUnmatch, ParamText(sInfo.cIpAddr).acText,
                      fields.cIpAddr);
    return -1;
  }
  if (sInfo.iHttpPort != fields.iHttpPort) {
    camfmt::PrintHeld(requester, words.pcPortUnmatch, sInfo.iHttpPort, fields.iHttpPort);
    return -1;
  }
  if (sInfo.usCameraType != fields.usCameraType) {
    camfmt::PrintHeld(requester, words.pcModelUnmatch, ParamText(sInfo.CamName).acText,
                      sInfo.usCameraType, fields.CamName, fields.usCameraType);
    return -1;
  }
  CopyKelSessionOut(fields, sInfo);
  requester.CamReqCOM_printf(
      "GetInfoKelInfo [DEBUG] Mach Model:%s IP:%s SelfAdr:%s Port:%d UID:%d aBitrate:%d "
      "aEnable:%d\n",
      fields.CamName, fields.cIpAddr, fields.cSelfAddr, fields.iHttpPort, fields.iUid.load(),
      fields.iAudioBitrate, fields.iAudioEnable);
  requester.CamReqCOM_printf("GetInfoKelInfo [DEBUG] MultAdr:%s RtpPort:%d \n", fields.cMultiAddr,
                             fields.iRtpPort);
  requester.CamReqCOM_printf(
      "GetInfoKelInfo [DEBUG] UniPort:%d aInPort:%d peer_family:%d self_family:%d\n",
      fields.iUniPort, fields.iAudioInPort, fields.iPeerFamily, fields.iSelfFamily);
  return 0;
}

// ---- recorder (KEL) flag family --------------------------------------------------

int SetCtrlFlagKel(CCamRequester& requester, CamRequesterFields& fields, const void* pParam) {
  if (!KelFlagAllowed(requester, fields, pParam, "SetCtrlFlag_KEL [ERROR] param error [NULL]\n")) {
    return -1;
  }
  fields.m_KELCtrlFlag.store(ReadInt32(pParam) != 0 ? 1 : 0);
  return 0;
}

int GetCtrlFlagKel(CCamRequester& requester, CamRequesterFields& fields, void* pParam) {
  if (!KelFlagAllowed(requester, fields, pParam, "GetCtrlFlag_KEL [ERROR] param error [NULL]\n")) {
    return -1;
  }
  WriteInt32(pParam, fields.m_KELCtrlFlag.load());
  return 0;
}

int SetSameUidGroupKel(CCamRequester& requester, CamRequesterFields& fields, const void* pParam) {
  if (!KelFlagAllowed(requester, fields, pParam,
                      "SetParameterSameUIDGroup_KEL [ERROR] param error [NULL]\n")) {
    return -1;
  }
  fields.m_KELSameUIDGroup = ReadInt32(pParam);
  return 0;
}

int GetSameUidGroupKel(CCamRequester& requester, CamRequesterFields& fields, void* pParam) {
  if (!KelFlagAllowed(requester, fields, pParam,
                      "GetParameterSameUIDGroup_KEL [ERROR] param error [NULL]\n")) {
    return -1;
  }
  WriteInt32(pParam, fields.m_KELSameUIDGroup);
  return 0;
}

int SetKeepAliveFlagKel(CCamRequester& requester, CamRequesterFields& fields, const void* pParam) {
  if (!KelFlagAllowed(requester, fields, pParam,
                      "SetKeepAliveFlag_KEL [ERROR] param error [NULL]\n")) {
    return -1;
  }
  if (ReadInt32(pParam) != 0) {
    requester.EnableKeepAlive();
  } else {
    requester.DiableKeepAlive();
  }
  return 0;
}

int GetKeepAliveFlagKel(CCamRequester& requester, CamRequesterFields& fields, void* pParam) {
  // The getter shares the setter's refusal text, as it always has.
  if (!KelFlagAllowed(requester, fields, pParam,
                      "SetKeepAliveFlag_KEL [ERROR] param error [NULL]\n")) {
    return -1;
  }
  WriteInt32(pParam, requester.GetKeepAlive());
  return 0;
}

int ChangeStatusKel(CCamRequester& requester) {
  requester.ChangeStatus(CAM_HTTP_EVT_ERROR);
  return 0;
}

}  // namespace campar
