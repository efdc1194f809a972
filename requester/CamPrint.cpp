#include "CamPrint.h"

#include <cstdio>

#include "CCamRequester.h"
#include "CamRequesterFields.h"
#include "kxcom.h"

namespace campr {

int PrintPlain(const char* pcFormat, va_list ap) {
  char acMessage[kMessageSize] = {};
  vsnprintf(acMessage, sizeof(acMessage), pcFormat, ap);
  return COM_printf("%s", acMessage);
}

int PrintPrefixed(const CamRequesterFields& sFields, const char* pcFormat, va_list ap) {
  char acMessage[kMessageSize] = {};
  vsnprintf(acMessage, sizeof(acMessage), pcFormat, ap);
  char acAddress[kPrefixCellSize] = {};
  char acPosition[kPrefixCellSize] = {};
  char acType[kPrefixCellSize] = {};
  if (sFields.cIpAddr[0] != '\0') {
    snprintf(acAddress, sizeof(acAddress), "IP:%15.15s ", sFields.cIpAddr);
  }
  if (sFields.iPos != 0) snprintf(acPosition, sizeof(acPosition), "POS:%1.1d ", sFields.iPos);
  if (sFields.cPrintPrefix[0] != '\0') {
    snprintf(acType, sizeof(acType), "%6.6s ", sFields.cPrintPrefix);
  }
  return COM_printf("%s%s%s%s", acAddress, acPosition, acType, acMessage);
}

}  // namespace campr

int CCamRequester::CamReqCOM_printf(const char* pcFormat, ...) {
  va_list ap;
  va_start(ap, pcFormat);
  const int iRet = campr::PrintPlain(pcFormat, ap);
  va_end(ap);
  return iRet;
}
