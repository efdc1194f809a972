// Default bodies of the base: a concrete class that does not serve an
// operation keeps one of these, which only logs that it was called.
#include "CCamRequester.h"

int CCamRequester::SendCamIframInstCommand() {
  CamReqCOM_printf("call CCamRequester::%s", "SendCamIframInstCommand");
  return 0;
}

int CCamRequester::OpenSessionCommandExec() {
  CamReqCOM_printf("call CCamRequester::%s", "OpenSessionCommandExec");
  return 0;
}

int CCamRequester::SetupSessionCommandExec() {
  CamReqCOM_printf("call CCamRequester::%s", "SetupSessionCommandExec");
  return 0;
}

int CCamRequester::KelSetupSessionCommandExec(char* pcReply) {
  (void)pcReply;
  CamReqCOM_printf("call CCamRequester::%s", "KelSetupSessionCommandExec");
  return 0;
}

int CCamRequester::StreamStartCommandExec() {
  CamReqCOM_printf("call CCamRequester::%s", "StreamStartCommandExec");
  return 0;
}

int CCamRequester::QuillonChgModeCommandExec() {
  CamReqCOM_printf("call CCamRequester::%s", "QuillonChgModeCommandExec");
  return 0;
}

int CCamRequester::StreamStopCommandExec() {
  CamReqCOM_printf("call CCamRequester::%s", "StreamStopCommandExec");
  return 0;
}

int CCamRequester::KelStreamStopCommandExec(char* pcReply) {
  (void)pcReply;
  CamReqCOM_printf("call CCamRequester::%s", "KelStreamStopCommandExec");
  return 0;
}

int CCamRequester::CloseSessionPush() {
  CamReqCOM_printf("call CCamRequester::%s", "CloseSessionPush");
  return 0;
}

int CCamRequester::SendKeepAliveCommandExec() {
  CamReqCOM_printf("call CCamRequester::%s", "SendKeepAliveCommandExec");
  return 0;
}

int CCamRequester::SendPBKeepAliveCommandExec() {
  CamReqCOM_printf("call CCamRequester::%s", "SendPBKeepAliveCommandExec");
  return 0;
}

int CCamRequester::SendCamPresetCommandExec() {
  CamReqCOM_printf("call CCamRequester::%s", "SendCamPresetCommandExec");
  return 0;
}

int CCamRequester::SetKelInfoFlagCheckExec() {
  CamReqCOM_printf("call CCamRequester::%s", "SetKelInfoFlagCheckExec");
  return 0;
}

int CCamRequester::QuillonUidUtilRelease(char* pcReply) {
  (void)pcReply;
  CamReqCOM_printf("call CCamRequester::%s", "QuillonUidUtilRelease");
  return 0;
}

int CCamRequester::CmdSet_QuillonUidUtilRelease(char* pcDst) {
  (void)pcDst;
  CamReqCOM_printf("call CCamRequester::%s", "CmdSet_QuillonUidUtilRelease");
  return 0;
}

int CCamRequester::SearchNumber(char* pcText, char* pcKey, int* piValue) {
  (void)pcText;
  (void)pcKey;
  (void)piValue;
  CamReqCOM_printf("call CCamRequester::%s", "SearchNumber");
  return 0;
}

int CCamRequester::SerachString(char* pcText, char* pcKey, char* pcStopChars, char* pcOut,
                                int iOutSize) {
  (void)pcText;
  (void)pcKey;
  (void)pcStopChars;
  (void)pcOut;
  (void)iOutSize;
  CamReqCOM_printf("call CCamRequester::%s", "SerachString");
  return 0;
}

int CCamRequester::SendCamIframInstCommandExec() {
  CamReqCOM_printf("call CCamRequester::%s", "SendCamIframInstCommandExec");
  return 0;
}

int CCamRequester::SetCtrlFlag_KEL(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetCtrlFlag_KEL");
  return 0;
}

int CCamRequester::GetCtrlFlag_KEL(void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "GetCtrlFlag_KEL");
  return 0;
}

int CCamRequester::GetParameterSameUIDGroup_KEL(void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "GetParameterSameUIDGroup_KEL");
  return 0;
}

int CCamRequester::SetKeepAliveFlag_KEL(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetKeepAliveFlag_KEL");
  return 0;
}

int CCamRequester::GetKeepAliveFlag_KEL(void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "GetKeepAliveFlag_KEL");
  return 0;
}

int CCamRequester::ChangeStatus_KEL(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "ChangeStatus_KEL");
  return 0;
}

int CCamRequester::GetInfoKelInfo(void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "GetInfoKelInfo");
  return 0;
}

int CCamRequester::GetInfoCamInfo(void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "GetInfoCamInfo");
  return 0;
}

int CCamRequester::CheckCamInfo_RcvData(char* pcText) {
  (void)pcText;
  CamReqCOM_printf("call CCamRequester::%s", "CheckCamInfo_RcvData");
  return 0;
}

int CCamRequester::CheckKeepAlive_RcvData(char* pcText) {
  (void)pcText;
  CamReqCOM_printf("call CCamRequester::%s", "CheckKeepAlive_RcvData");
  return 0;
}

int CCamRequester::CheckPlayMode_RcvData(char* pcText) {
  (void)pcText;
  CamReqCOM_printf("call CCamRequester::%s", "CheckPlayMode_RcvData");
  return 0;
}

int CCamRequester::CheckAudioBitrate(char* pcText, char* pcKey, int* piValue) {
  (void)pcText;
  (void)pcKey;
  (void)piValue;
  CamReqCOM_printf("call CCamRequester::%s", "CheckAudioBitrate");
  return 0;
}

int CCamRequester::CheckAudioEnable(char* pcText, char* pcKey, int* piValue) {
  (void)pcText;
  (void)pcKey;
  (void)piValue;
  CamReqCOM_printf("call CCamRequester::%s", "CheckAudioEnable");
  return 0;
}

int CCamRequester::CheckKelStrKey(char* pcText, char* pcKey) {
  (void)pcText;
  (void)pcKey;
  CamReqCOM_printf("call CCamRequester::%s", "CheckKelStrKey");
  return 0;
}

int CCamRequester::CheckDelivery(char* pcText, char* pcKey, char* pcOut, int iOutSize) {
  (void)pcText;
  (void)pcKey;
  (void)pcOut;
  (void)iOutSize;
  CamReqCOM_printf("call CCamRequester::%s", "CheckDelivery");
  return 0;
}

int CCamRequester::GetMultiUniSetup(char* pcText) {
  (void)pcText;
  CamReqCOM_printf("call CCamRequester::%s", "GetMultiUniSetup");
  return 0;
}

int CCamRequester::GetSelfAddress(sockaddr_storage* psAddr) {
  (void)psAddr;
  CamReqCOM_printf("call CCamRequester::%s", "GetSelfAddress");
  return 0;
}

int CCamRequester::UidInvalid() {
  CamReqCOM_printf("call CCamRequester::%s", "UidInvalid");
  return 0;
}

int CCamRequester::SetUrl(char* pcUrl) {
  (void)pcUrl;
  CamReqCOM_printf("call CCamRequester::%s", "SetUrl");
  return 0;
}

int CCamRequester::AddHeader() {
  CamReqCOM_printf("call CCamRequester::%s", "AddHeader");
  return 0;
}

int CCamRequester::DoRequest(_InetBuffer* psBuf) {
  (void)psBuf;
  CamReqCOM_printf("call CCamRequester::%s", "DoRequest");
  return 0;
}

int CCamRequester::DoRequest2(_InetBuffer* psBuf) {
  (void)psBuf;
  CamReqCOM_printf("call CCamRequester::%s", "DoRequest2");
  return 0;
}

int CCamRequester::JudgeExceptAddress(char* pcAddress, char* pcPattern) {
  (void)pcAddress;
  (void)pcPattern;
  CamReqCOM_printf("call CCamRequester::%s", "JudgeExceptAddress");
  return 0;
}

int CCamRequester::CheckProxyExcept() {
  CamReqCOM_printf("call CCamRequester::%s", "CheckProxyExcept");
  return 0;
}

int CCamRequester::CmdSet_SessionCmmand(char* pcDst) {
  (void)pcDst;
  CamReqCOM_printf("call CCamRequester::%s", "CmdSet_SessionCmmand");
  return 0;
}

int CCamRequester::CmdSet_KeepAlive(char* pcDst) {
  (void)pcDst;
  CamReqCOM_printf("call CCamRequester::%s", "CmdSet_KeepAlive");
  return 0;
}

int CCamRequester::CmdSet_JpegDistribute(char* pcDst, int iStartStop) {
  (void)pcDst;
  (void)iStartStop;
  CamReqCOM_printf("call CCamRequester::%s", "CmdSet_JpegDistribute");
  return 0;
}

int CCamRequester::CmdSet_AudioDistribute(char* pcDst, int iStartStop) {
  (void)pcDst;
  (void)iStartStop;
  CamReqCOM_printf("call CCamRequester::%s", "CmdSet_AudioDistribute");
  return 0;
}

int CCamRequester::CmdSet_CamPreset(char* pcDst) {
  (void)pcDst;
  CamReqCOM_printf("call CCamRequester::%s", "CmdSet_CamPreset");
  return 0;
}

int CCamRequester::CmdSet_KelLogIn(char* pcDst) {
  (void)pcDst;
  CamReqCOM_printf("call CCamRequester::%s", "CmdSet_KelLogIn");
  return 0;
}

int CCamRequester::CmdSet_KelLogOut(char* pcDst) {
  (void)pcDst;
  CamReqCOM_printf("call CCamRequester::%s", "CmdSet_KelLogOut");
  return 0;
}

char* CCamRequester::ChangeData_KelEncrypt(char* pcKey, char* pcData, char* pcOut) {
  (void)pcKey;
  (void)pcData;
  (void)pcOut;
  CamReqCOM_printf("call CCamRequester::%s", "ChangeData_KelEncrypt");
  return nullptr;
}

int CCamRequester::CheckStreamStart(unsigned short usCameraType, int iCmdType) {
  (void)usCameraType;
  (void)iCmdType;
  CamReqCOM_printf("call CCamRequester::%s", "CheckStreamStart");
  return 0;
}

int CCamRequester::CmdSet_IframInst(char* pcDst) {
  (void)pcDst;
  CamReqCOM_printf("call CCamRequester::%s", "CmdSet_IframInst");
  return 0;
}

int CCamRequester::CmdSet_H264_IframInst(char* pcDst) {
  (void)pcDst;
  CamReqCOM_printf("call CCamRequester::%s", "CmdSet_H264_IframInst");
  return 0;
}

int CCamRequester::CmdSet_Mpeg4Distribute(char* pcDst, int iStartStop) {
  (void)pcDst;
  (void)iStartStop;
  CamReqCOM_printf("call CCamRequester::%s", "CmdSet_Mpeg4Distribute");
  return 0;
}

int CCamRequester::CmdSet_H264Distribute(char* pcDst, int iStartStop) {
  (void)pcDst;
  (void)iStartStop;
  CamReqCOM_printf("call CCamRequester::%s", "CmdSet_H264Distribute");
  return 0;
}

int CCamRequester::SetParameterIpAddress(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterIpAddress");
  return 0;
}

int CCamRequester::SetParameterHttpPort(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterHttpPort");
  return 0;
}

int CCamRequester::SetParameterCmdType(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterCmdType");
  return 0;
}

int CCamRequester::SetParameterUid(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterUid");
  return 0;
}

int CCamRequester::SetParameterCallback(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterCallback");
  return 0;
}

int CCamRequester::SetParameterAuth(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterAuth");
  return 0;
}

int CCamRequester::SetParameterProxy(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterProxy");
  return 0;
}

int CCamRequester::SetParameterFrate(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterFrate");
  return 0;
}

int CCamRequester::SetParameterResolution(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterResolution");
  return 0;
}

int CCamRequester::SetParameterCamType(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterCamType");
  return 0;
}

int CCamRequester::SetParameterPreset(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterPreset");
  return 0;
}

int CCamRequester::SetParameterSelCh(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterSelCh");
  return 0;
}

int CCamRequester::SetParameterScreenPos(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterScreenPos");
  return 0;
}

int CCamRequester::SetParameterKelInfo(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterKelInfo");
  return 0;
}

int CCamRequester::SetParameterSameUIDGroup_KEL(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterSameUIDGroup_KEL");
  return 0;
}

int CCamRequester::SetParameterPlayMode(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterPlayMode");
  return 0;
}

int CCamRequester::SetParameterStatusChange(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterStatusChange");
  return 0;
}

int CCamRequester::SetParameterDebugInfo(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterDebugInfo");
  return 0;
}

int CCamRequester::SetParameterHttpError(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterHttpError");
  return 0;
}

int CCamRequester::SetParameterCamNo(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("call CCamRequester::%s", "SetParameterCamNo");
  return 0;
}
