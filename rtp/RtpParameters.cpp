// CCamRequester_Cgi_Kobu_Rtp: the parameters and information queries. The
// behaviour is the one both requesters share; this file holds what is the
// RTP requester's own: its kinds, its command types and their words, and
// the words of its recorder query.
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamParameters.h"

namespace {

using Rtp = CCamRequester_Cgi_Kobu_Rtp;

// Words of the command types 0..5, one 10-character cell each.
constexpr char kTypeWords[][10] = {"h264", "audio", "mpeg4", "play", "h264play", "error"};

constexpr campar::CamParamTraits kRtpTraits = [] {
  campar::CamParamTraits t{};
  t.pcClassName = "CCamRequester_Cgi_Kobu_Rtp";
  t.bSetterChecksNull = false;  // the dispatcher alone refuses a null record
  t.iHighestCmdType = CAM_REQUESTER_CMD_H264_PLAY;
  t.iInvalidCmdType = CAM_REQUESTER_CMD_RTP_INVALID;
  t.pcTypeWords = kTypeWords[0];
  t.uTypeWordCell = sizeof(kTypeWords[0]);
  t.pcPrefixFormat = "R:%s";
  t.bComparesFrameAndResolution = false;  // no frame rate or resolution for RTP streams
  t.bPrintsKelInfoOut = false;            // SetParameterKelInfo stores silently
  t.sKelInfo.pcIpUnmatch = "GetKelInfo [ERROR] IP unmach [Param:%s]!=[Setup:%s]\n";
  t.sKelInfo.pcPortUnmatch = "GetKelInfo [ERROR] PORT# unmach [Param%d]!=[Setup:%d]\n";
  t.sKelInfo.pcModelUnmatch = "GetKelInfo [ERROR] MODEL unmach [Param:%s(%d)]!=[Setup:%s(%d)]\n";
  t.sKelInfo.pcNullRecord = "GetKelInfo [Error] pParam invalid\n";
  return t;
}();

// The parameter kinds of the RTP requester; 8, 9 and 23 are not among them.
constexpr campar::SetterEntry<Rtp> kSetters[] = {
    {CAM_PARAM_IPADDRESS, &Rtp::SetParameterIpAddress},
    {CAM_PARAM_HTTPPORT, &Rtp::SetParameterHttpPort},
    {CAM_PARAM_RTPPORT, &Rtp::SetParameterRtpPort},
    {CAM_PARAM_CMDTYPE, &Rtp::SetParameterCmdType},
    {CAM_PARAM_UID, &Rtp::SetParameterUid},
    {CAM_PARAM_CALLBACK, &Rtp::SetParameterCallback},
    {CAM_PARAM_AUTH, &Rtp::SetParameterAuth},
    {CAM_PARAM_PROXY, &Rtp::SetParameterProxy},
    {CAM_PARAM_CAMTYPE, &Rtp::SetParameterCamType},
    {CAM_PARAM_PRESET, &Rtp::SetParameterPreset},
    {CAM_PARAM_SELCH, &Rtp::SetParameterSelCh},
    {CAM_PARAM_SCREENPOS, &Rtp::SetParameterScreenPos},
    {CAM_PARAM_KELINFO, &Rtp::SetParameterKelInfo},
    {CAM_PARAM_SAMEUIDGROUP_KEL, &Rtp::SetParameterSameUIDGroup_KEL},
    {CAM_PARAM_CTRLFLAG_KEL, &Rtp::SetCtrlFlag_KEL},
    {CAM_PARAM_KEEPALIVEFLAG_KEL, &Rtp::SetKeepAliveFlag_KEL},
    {CAM_PARAM_CHANGESTATUS_KEL, &Rtp::ChangeStatus_KEL},
    {CAM_PARAM_PLAYMODE, &Rtp::SetParameterPlayMode},
    {CAM_PARAM_STATUSCHANGE, &Rtp::SetParameterStatusChange},
    {CAM_PARAM_STREAM, &Rtp::SetParameterStream},
    {CAM_PARAM_CAMNO, &Rtp::SetParameterCamNo},
    {CAM_PARAM_DEBUGINFO, &Rtp::SetParameterDebugInfo},
};

}  // namespace

int Rtp::SetParameter(long lKind, const void* pParam, int iSize) {
  (void)iSize;  // the record's size is not read
  return campar::DispatchSetParameter(*this, kRtpTraits, kSetters, lKind, pParam);
}

int Rtp::GetInfo(long lKind, void* pParam) {
  return campar::DispatchGetInfo(*this, lKind, pParam);
}

int Rtp::SetCtrlFlag_KEL(const void* pParam) {
  return campar::SetCtrlFlagKel(*this, *this, pParam);
}

int Rtp::GetCtrlFlag_KEL(void* pParam) {
  return campar::GetCtrlFlagKel(*this, *this, pParam);
}

int Rtp::GetParameterSameUIDGroup_KEL(void* pParam) {
  return campar::GetSameUidGroupKel(*this, *this, pParam);
}

int Rtp::SetKeepAliveFlag_KEL(const void* pParam) {
  return campar::SetKeepAliveFlagKel(*this, *this, pParam);
}

int Rtp::GetKeepAliveFlag_KEL(void* pParam) {
  return campar::GetKeepAliveFlagKel(*this, *this, pParam);
}

int Rtp::ChangeStatus_KEL(const void* pParam) {
  (void)pParam;  // the record is not read
  return campar::ChangeStatusKel(*this);
}

int Rtp::GetInfoKelInfo(void* pParam) {
  return campar::GetKelInfo(*this, *this, kRtpTraits, pParam);
}

int Rtp::GetInfoCamInfo(void* pParam) {
  return campar::GetCamInfo(*this, *this, kRtpTraits, pParam);
}

int Rtp::SetParameterIpAddress(const void* pParam) {
  return campar::SetIpAddress(*this, *this, kRtpTraits, pParam);
}

int Rtp::SetParameterHttpPort(const void* pParam) {
  return campar::SetHttpPort(*this, *this, kRtpTraits, pParam);
}

int Rtp::SetParameterCmdType(const void* pParam) {
  return campar::SetCmdType(*this, *this, kRtpTraits, pParam);
}

int Rtp::SetParameterUid(const void* pParam) {
  return campar::SetUid(*this, *this, kRtpTraits, pParam);
}

int Rtp::SetParameterCallback(const void* pParam) {
  return campar::SetCallback(*this, *this, pParam);
}

int Rtp::SetParameterAuth(const void* pParam) {
  return campar::SetAuth(*this, *this, kRtpTraits, pParam);
}

int Rtp::SetParameterProxy(const void* pParam) {
  return campar::SetProxy(*this, *this, kRtpTraits, pParam);
}

int Rtp::SetParameterCamType(const void* pParam) {
  return campar::SetCamType(*this, *this, pParam);
}

int Rtp::SetParameterPreset(const void* pParam) {
  return campar::SetPreset(*this, *this, pParam);
}

int Rtp::SetParameterSelCh(const void* pParam) {
  return campar::SetSelCh(*this, *this, pParam);
}

int Rtp::SetParameterScreenPos(const void* pParam) {
  return campar::SetScreenPos(*this, *this, pParam);
}

int Rtp::SetParameterKelInfo(const void* pParam) {
  return campar::SetKelInfo(*this, *this, kRtpTraits, pParam);
}

int Rtp::SetParameterSameUIDGroup_KEL(const void* pParam) {
  return campar::SetSameUidGroupKel(*this, *this, pParam);
}

int Rtp::SetParameterPlayMode(const void* pParam) {
  return campar::SetPlayMode(*this, *this, pParam);
}

int Rtp::SetParameterStatusChange(const void* pParam) {
  return campar::SetStatusChange(*this, pParam);
}

int Rtp::SetParameterDebugInfo(const void* pParam) {
  return campar::SetDebugInfo(*this, pParam);
}

int Rtp::SetParameterCamNo(const void* pParam) {
  return campar::SetCamNo(*this, pParam);
}

int Rtp::SetParameterRtpPort(const void* pParam) {
  return campar::SetRtpPort(*this, pParam);
}

int Rtp::SetParameterStream(const void* pParam) {
  return campar::SetStream(*this, *this, pParam);
}
