// CCamRequester_Cgi_Kobu_Http: the parameters and information queries. The
// behaviour is the one both requesters share; this file holds what is the
// HTTP requester's own: its kinds, its command types and their words, its
// own null-record checks and the words of its recorder query.
#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CamParameters.h"

namespace {

using Http = CCamRequester_Cgi_Kobu_Http;

// Words of the command types 0..3, one 6-character cell each.
constexpr char kTypeWords[][6] = {"jpeg", "audio", "play", "error"};

constexpr campar::CamParamTraits kHttpTraits = [] {
  campar::CamParamTraits t{};
  t.pcClassName = "CCamRequester_Cgi_Kobu_Http";
  t.bSetterChecksNull = true;  // the setters refuse a null record themselves ("invalid param")
  t.iHighestCmdType = CAM_REQUESTER_CMD_JPEG_PLAY;
  t.iInvalidCmdType = CAM_REQUESTER_CMD_HTTP_INVALID;
  t.pcTypeWords = kTypeWords[0];
  t.uTypeWordCell = sizeof(kTypeWords[0]);
  t.pcPrefixFormat = "H:%s";
  t.bComparesFrameAndResolution = true;  // a JPEG stream is also told by frame rate and resolution
  t.bPrintsKelInfoOut = true;            // SetParameterKelInfo reports the stored values
  t.sKelInfo.pcIpUnmatch = "GetInfoKelInfo [DEBUG] IP unmach [Param:%s]!=[Setup:%s]\n";
  t.sKelInfo.pcPortUnmatch = "GetInfoKelInfo [DEBUG] PORT# unmach [Param:%d]!=[Setup:%d]\n";
  t.sKelInfo.pcModelUnmatch =
      "GetInfoKelInfo [DEBUG] MODEL unmach [Param:%s(%d)]!=[Setup:%s(%d)]\n";
  t.sKelInfo.pcNullRecord = "GetInfoKelInfo [Error] pParam invalid\n";
  return t;
}();

// The parameter kinds of the HTTP requester; 2 and 21 are not among them.
constexpr campar::SetterEntry<Http> kSetters[] = {
    {CAM_PARAM_IPADDRESS, &Http::SetParameterIpAddress},
    {CAM_PARAM_HTTPPORT, &Http::SetParameterHttpPort},
    {CAM_PARAM_CMDTYPE, &Http::SetParameterCmdType},
    {CAM_PARAM_UID, &Http::SetParameterUid},
    {CAM_PARAM_CALLBACK, &Http::SetParameterCallback},
    {CAM_PARAM_AUTH, &Http::SetParameterAuth},
    {CAM_PARAM_PROXY, &Http::SetParameterProxy},
    {CAM_PARAM_FRATE, &Http::SetParameterFrate},
    {CAM_PARAM_RESOLUTION, &Http::SetParameterResolution},
    {CAM_PARAM_CAMTYPE, &Http::SetParameterCamType},
    {CAM_PARAM_PRESET, &Http::SetParameterPreset},
    {CAM_PARAM_SELCH, &Http::SetParameterSelCh},
    {CAM_PARAM_SCREENPOS, &Http::SetParameterScreenPos},
    {CAM_PARAM_KELINFO, &Http::SetParameterKelInfo},
    {CAM_PARAM_SAMEUIDGROUP_KEL, &Http::SetParameterSameUIDGroup_KEL},
    {CAM_PARAM_CTRLFLAG_KEL, &Http::SetCtrlFlag_KEL},
    {CAM_PARAM_KEEPALIVEFLAG_KEL, &Http::SetKeepAliveFlag_KEL},
    {CAM_PARAM_CHANGESTATUS_KEL, &Http::ChangeStatus_KEL},
    {CAM_PARAM_PLAYMODE, &Http::SetParameterPlayMode},
    {CAM_PARAM_STATUSCHANGE, &Http::SetParameterStatusChange},
    {CAM_PARAM_CAMNO, &Http::SetParameterCamNo},
    {CAM_PARAM_HTTPERROR, &Http::SetParameterHttpError},
    {CAM_PARAM_DEBUGINFO, &Http::SetParameterDebugInfo},
};

}  // namespace

int Http::SetParameter(long lKind, const void* pParam, int iSize) {
  (void)iSize;  // the record's size is not read
  return campar::DispatchSetParameter(*this, kHttpTraits, kSetters, lKind, pParam);
}

int Http::GetInfo(long lKind, void* pParam) {
  return campar::DispatchGetInfo(*this, lKind, pParam);
}

int Http::SetCtrlFlag_KEL(const void* pParam) {
  return campar::SetCtrlFlagKel(*this, *this, pParam);
}

int Http::GetCtrlFlag_KEL(void* pParam) {
  return campar::GetCtrlFlagKel(*this, *this, pParam);
}

int Http::GetParameterSameUIDGroup_KEL(void* pParam) {
  return campar::GetSameUidGroupKel(*this, *this, pParam);
}

int Http::SetKeepAliveFlag_KEL(const void* pParam) {
  return campar::SetKeepAliveFlagKel(*this, *this, pParam);
}

int Http::GetKeepAliveFlag_KEL(void* pParam) {
  return campar::GetKeepAliveFlagKel(*this, *this, pParam);
}

int Http::ChangeStatus_KEL(const void* pParam) {
  (void)pParam;  // the record is not read
  return campar::ChangeStatusKel(*this);
}

int Http::GetInfoKelInfo(void* pParam) {
  return campar::GetKelInfo(*this, *this, kHttpTraits, pParam);
}

int Http::GetInfoCamInfo(void* pParam) {
  return campar::GetCamInfo(*this, *this, kHttpTraits, pParam);
}

int Http::SetParameterIpAddress(const void* pParam) {
  return campar::SetIpAddress(*this, *this, kHttpTraits, pParam);
}

int Http::SetParameterHttpPort(const void* pParam) {
  return campar::SetHttpPort(*this, *this, kHttpTraits, pParam);
}

int Http::SetParameterCmdType(const void* pParam) {
  return campar::SetCmdType(*this, *this, kHttpTraits, pParam);
}

int Http::SetParameterUid(const void* pParam) {
  return campar::SetUid(*this, *this, kHttpTraits, pParam);
}

int Http::SetParameterCallback(const void* pParam) {
  return campar::SetCallback(*this, *this, pParam);
}

int Http::SetParameterAuth(const void* pParam) {
  return campar::SetAuth(*this, *this, kHttpTraits, pParam);
}

int Http::SetParameterProxy(const void* pParam) {
  return campar::SetProxy(*this, *this, kHttpTraits, pParam);
}

int Http::SetParameterFrate(const void* pParam) {
  return campar::SetFrate(*this, *this, pParam);
}

int Http::SetParameterResolution(const void* pParam) {
  return campar::SetResolution(*this, *this, pParam);
}

int Http::SetParameterCamType(const void* pParam) {
  return campar::SetCamType(*this, *this, pParam);
}

int Http::SetParameterPreset(const void* pParam) {
  return campar::SetPreset(*this, *this, pParam);
}

int Http::SetParameterSelCh(const void* pParam) {
  return campar::SetSelCh(*this, *this, pParam);
}

int Http::SetParameterScreenPos(const void* pParam) {
  return campar::SetScreenPos(*this, *this, pParam);
}

int Http::SetParameterKelInfo(const void* pParam) {
  return campar::SetKelInfo(*this, *this, kHttpTraits, pParam);
}

int Http::SetParameterSameUIDGroup_KEL(const void* pParam) {
  return campar::SetSameUidGroupKel(*this, *this, pParam);
}

int Http::SetParameterPlayMode(const void* pParam) {
  return campar::SetPlayMode(*this, *this, pParam);
}

int Http::SetParameterStatusChange(const void* pParam) {
  return campar::SetStatusChange(*this, pParam);
}

int Http::SetParameterDebugInfo(const void* pParam) {
  return campar::SetDebugInfo(*this, pParam);
}

int Http::SetParameterHttpError(const void* pParam) {
  return campar::SetHttpError(*this, *this, pParam);
}

int Http::SetParameterCamNo(const void* pParam) {
  return campar::SetCamNo(*this, pParam);
}
