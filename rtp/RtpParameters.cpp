// CCamRequester_Cgi_Kobu_Rtp: the parameters and information queries.
#include "CCamRequester_Cgi_Kobu_Rtp.h"

int CCamRequester_Cgi_Kobu_Rtp::SetParameter(long lKind, const void* pParam, int iSize) {
  (void)lKind;
  (void)pParam;
  (void)iSize;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameter");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::GetInfo(long lKind, void* pParam) {
  (void)lKind;
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "GetInfo");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetCtrlFlag_KEL(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetCtrlFlag_KEL");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::GetCtrlFlag_KEL(void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "GetCtrlFlag_KEL");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::GetParameterSameUIDGroup_KEL(void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "GetParameterSameUIDGroup_KEL");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetKeepAliveFlag_KEL(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetKeepAliveFlag_KEL");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::GetKeepAliveFlag_KEL(void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "GetKeepAliveFlag_KEL");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::ChangeStatus_KEL(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "ChangeStatus_KEL");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::GetInfoKelInfo(void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "GetInfoKelInfo");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::GetInfoCamInfo(void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "GetInfoCamInfo");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterIpAddress(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterIpAddress");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterHttpPort(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterHttpPort");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterCmdType(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterCmdType");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterUid(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterUid");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterCallback(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterCallback");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterAuth(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterAuth");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterProxy(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterProxy");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterCamType(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterCamType");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterPreset(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterPreset");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterSelCh(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterSelCh");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterScreenPos(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterScreenPos");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterKelInfo(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterKelInfo");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterSameUIDGroup_KEL(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterSameUIDGroup_KEL");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterPlayMode(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterPlayMode");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterStatusChange(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterStatusChange");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterDebugInfo(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterDebugInfo");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterCamNo(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterCamNo");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterRtpPort(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterRtpPort");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetParameterStream(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetParameterStream");
  return -1;
}
