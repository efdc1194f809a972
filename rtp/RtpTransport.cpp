// CCamRequester_Cgi_Kobu_Rtp: the HTTP session glue, with this class's differences.
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTransport.h"

int CCamRequester_Cgi_Kobu_Rtp::OpenSessionCommandExec() {
  return camtr::OpenSessionCommandExec(*this, *this, camtr::kRtpTransport);
}

int CCamRequester_Cgi_Kobu_Rtp::CloseSessionCommand() {
  return camtr::CloseSessionCommand(*this, *this, camtr::kRtpTransport);
}

int CCamRequester_Cgi_Kobu_Rtp::SetUrl(char* pcUrl) {
  return camtr::SetUrl(*this, *this, camtr::kRtpTransport, pcUrl);
}

int CCamRequester_Cgi_Kobu_Rtp::AddHeader() {
  return camtr::AddHeader(*this, *this);
}

int CCamRequester_Cgi_Kobu_Rtp::DoRequest(_InetBuffer* psBuf) {
  return camtr::DoRequest(*this, *this, camtr::kRtpTransport, psBuf, false);
}

int CCamRequester_Cgi_Kobu_Rtp::DoRequest2(_InetBuffer* psBuf) {
  return camtr::DoRequest(*this, *this, camtr::kRtpTransport, psBuf, true);
}

int CCamRequester_Cgi_Kobu_Rtp::JudgeExceptAddress(char* pcAddress, char* pcPattern) {
  return camtr::JudgeExceptAddress(pcAddress, pcPattern);
}

int CCamRequester_Cgi_Kobu_Rtp::CheckProxyExcept() {
  return camtr::CheckProxyExcept(*this, *this);
}
