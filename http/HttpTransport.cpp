// CCamRequester_Cgi_Kobu_Http: the HTTP session glue.
#include "CCamRequester_Cgi_Kobu_Http.h"

int CCamRequester_Cgi_Kobu_Http::CloseSessionCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "CloseSessionCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::OpenSessionCommandExec() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "OpenSessionCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::CloseSessionPush() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "CloseSessionPush");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetUrl(char* pcUrl) {
  (void)pcUrl;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetUrl");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::AddHeader() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "AddHeader");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::DoRequest(_InetBuffer* psBuf) {
  (void)psBuf;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "DoRequest");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::DoRequest2(_InetBuffer* psBuf) {
  (void)psBuf;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "DoRequest2");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::JudgeExceptAddress(char* pcAddress, char* pcPattern) {
  (void)pcAddress;
  (void)pcPattern;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "JudgeExceptAddress");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::CheckProxyExcept() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "CheckProxyExcept");
  return -1;
}
