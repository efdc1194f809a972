// CCamRequester_Cgi_Kobu_Http: the HTTP session glue, with this class's differences.
#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CamTransport.h"

int CCamRequester_Cgi_Kobu_Http::OpenSessionCommandExec() {
  return camtr::OpenSessionCommandExec(*this, *this, camtr::kHttpTransport);
}

int CCamRequester_Cgi_Kobu_Http::CloseSessionCommand() {
  return camtr::CloseSessionCommand(*this, *this, camtr::kHttpTransport);
}

int CCamRequester_Cgi_Kobu_Http::CloseSessionPush() {
  return camtr::CloseSessionPush(*this, *this);
}

int CCamRequester_Cgi_Kobu_Http::SetUrl(char* pcUrl) {
  return camtr::SetUrl(*this, *this, camtr::kHttpTransport, pcUrl);
}

int CCamRequester_Cgi_Kobu_Http::AddHeader() {
  return camtr::AddHeader(*this, *this);
}

int CCamRequester_Cgi_Kobu_Http::DoRequest(_InetBuffer* psBuf) {
  return camtr::DoRequest(*this, *this, camtr::kHttpTransport, psBuf, false);
}

int CCamRequester_Cgi_Kobu_Http::DoRequest2(_InetBuffer* psBuf) {
  return camtr::DoRequest(*this, *this, camtr::kHttpTransport, psBuf, true);
}

int CCamRequester_Cgi_Kobu_Http::JudgeExceptAddress(char* pcAddress, char* pcPattern) {
  return camtr::JudgeExceptAddress(pcAddress, pcPattern);
}

int CCamRequester_Cgi_Kobu_Http::CheckProxyExcept() {
  return camtr::CheckProxyExcept(*this, *this);
}
