// CCamRequester_Cgi_Kobu_Rtp: the HTTP session glue.
#include "CCamRequester_Cgi_Kobu_Rtp.h"

int CCamRequester_Cgi_Kobu_Rtp::CloseSessionCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CloseSessionCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::OpenSessionCommandExec() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "OpenSessionCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetUrl(char* pcUrl) {
  (void)pcUrl;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetUrl");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::AddHeader() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "AddHeader");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::DoRequest(_InetBuffer* psBuf) {
  (void)psBuf;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "DoRequest");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::DoRequest2(_InetBuffer* psBuf) {
  (void)psBuf;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "DoRequest2");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::JudgeExceptAddress(char* pcAddress, char* pcPattern) {
  (void)pcAddress;
  (void)pcPattern;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "JudgeExceptAddress");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CheckProxyExcept() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CheckProxyExcept");
  return -1;
}
