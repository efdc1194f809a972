// CCamRequester_Cgi_Kobu_Http: construction, destruction and the prefixed diagnostic print.
#include <cstdarg>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CamLifecycle.h"
#include "CamPrint.h"

namespace {
constexpr int32_t kInvalidCmdType = 3;  // until the upper layer sets the type
}

CCamRequester_Cgi_Kobu_Http::CCamRequester_Cgi_Kobu_Http() {
  iCmdType = kInvalidCmdType;
}

CCamRequester_Cgi_Kobu_Http::~CCamRequester_Cgi_Kobu_Http() {
  // Session code still running on the request thread sees this first and
  // stops notifying the upper layer.
  m_iDestruct = 1;
  campr::WaitForIdleStatus(*this, "~CCamRequester_Cgi_Kobu_Http [Error] TIMEOUT!!!\n");
  StopChildThread();
}

int CCamRequester_Cgi_Kobu_Http::CamReqCOM_printf(const char* pcFormat, ...) {
  va_list ap;
  va_start(ap, pcFormat);
  const int iRet = campr::PrintPrefixed(*this, pcFormat, ap);
  va_end(ap);
  return iRet;
}
