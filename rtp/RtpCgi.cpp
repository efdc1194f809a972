// CCamRequester_Cgi_Kobu_Rtp: the CGI command builders and the reply scanners.
#include "CCamRequester_Cgi_Kobu_Rtp.h"

int CCamRequester_Cgi_Kobu_Rtp::SearchNumber(char* pcText, char* pcKey, int* piValue) {
  (void)pcText;
  (void)pcKey;
  (void)piValue;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SearchNumber");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SerachString(char* pcText, char* pcKey, char* pcStopChars, char* pcOut, int iOutSize) {
  (void)pcText;
  (void)pcKey;
  (void)pcStopChars;
  (void)pcOut;
  (void)iOutSize;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SerachString");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CheckCamInfo_RcvData(char* pcText) {
  (void)pcText;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CheckCamInfo_RcvData");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CheckKeepAlive_RcvData(char* pcText) {
  (void)pcText;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CheckKeepAlive_RcvData");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CheckPlayMode_RcvData(char* pcText) {
  (void)pcText;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CheckPlayMode_RcvData");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CheckAudioBitrate(char* pcText, char* pcKey, int* piValue) {
  (void)pcText;
  (void)pcKey;
  (void)piValue;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CheckAudioBitrate");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CheckAudioEnable(char* pcText, char* pcKey, int* piValue) {
  (void)pcText;
  (void)pcKey;
  (void)piValue;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CheckAudioEnable");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CheckKelStrKey(char* pcText, char* pcKey) {
  (void)pcText;
  (void)pcKey;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CheckKelStrKey");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CheckDelivery(char* pcText, char* pcKey, char* pcOut, int iOutSize) {
  (void)pcText;
  (void)pcKey;
  (void)pcOut;
  (void)iOutSize;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CheckDelivery");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::GetMultiUniSetup(char* pcText) {
  (void)pcText;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "GetMultiUniSetup");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::GetSelfAddress(sockaddr_storage* psAddr) {
  (void)psAddr;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "GetSelfAddress");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_SessionCmmand(char* pcDst) {
  (void)pcDst;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CmdSet_SessionCmmand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_KeepAlive(char* pcDst) {
  (void)pcDst;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CmdSet_KeepAlive");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_AudioDistribute(char* pcDst, int iStartStop) {
  (void)pcDst;
  (void)iStartStop;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CmdSet_AudioDistribute");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_CamPreset(char* pcDst) {
  (void)pcDst;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CmdSet_CamPreset");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_KelLogIn(char* pcDst) {
  (void)pcDst;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CmdSet_KelLogIn");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_KelLogOut(char* pcDst) {
  (void)pcDst;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CmdSet_KelLogOut");
  return -1;
}

char* CCamRequester_Cgi_Kobu_Rtp::ChangeData_KelEncrypt(char* pcKey, char* pcData, char* pcOut) {
  (void)pcKey;
  (void)pcData;
  (void)pcOut;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "ChangeData_KelEncrypt");
  return nullptr;
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_IframInst(char* pcDst) {
  (void)pcDst;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CmdSet_IframInst");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_H264_IframInst(char* pcDst) {
  (void)pcDst;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CmdSet_H264_IframInst");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_Mpeg4Distribute(char* pcDst, int iStartStop) {
  (void)pcDst;
  (void)iStartStop;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CmdSet_Mpeg4Distribute");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_H264Distribute(char* pcDst, int iStartStop) {
  (void)pcDst;
  (void)iStartStop;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CmdSet_H264Distribute");
  return -1;
}
