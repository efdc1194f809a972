// CCamRequester_Cgi_Kobu_Http: the parameters and information queries.
#include "CCamRequester_Cgi_Kobu_Http.h"

int CCamRequester_Cgi_Kobu_Http::SetParameter(long lKind, const void* pParam, int iSize) {
  (void)lKind;
  (void)pParam;
  (void)iSize;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameter");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::GetInfo(long lKind, void* pParam) {
  (void)lKind;
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "GetInfo");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetCtrlFlag_KEL(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetCtrlFlag_KEL");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::GetCtrlFlag_KEL(void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "GetCtrlFlag_KEL");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::GetParameterSameUIDGroup_KEL(void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "GetParameterSameUIDGroup_KEL");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetKeepAliveFlag_KEL(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetKeepAliveFlag_KEL");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::GetKeepAliveFlag_KEL(void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "GetKeepAliveFlag_KEL");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::ChangeStatus_KEL(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "ChangeStatus_KEL");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::GetInfoKelInfo(void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "GetInfoKelInfo");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::GetInfoCamInfo(void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "GetInfoCamInfo");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterIpAddress(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterIpAddress");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterHttpPort(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterHttpPort");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterCmdType(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterCmdType");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterUid(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterUid");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterCallback(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterCallback");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterAuth(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterAuth");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterProxy(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterProxy");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterFrate(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterFrate");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterResolution(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterResolution");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterCamType(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterCamType");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterPreset(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterPreset");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterSelCh(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterSelCh");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterScreenPos(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterScreenPos");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterKelInfo(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterKelInfo");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterSameUIDGroup_KEL(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterSameUIDGroup_KEL");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterPlayMode(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterPlayMode");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterStatusChange(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterStatusChange");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterDebugInfo(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterDebugInfo");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterHttpError(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterHttpError");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetParameterCamNo(const void* pParam) {
  (void)pParam;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetParameterCamNo");
  return -1;
}
