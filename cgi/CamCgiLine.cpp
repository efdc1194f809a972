#include "CamCgiLine.h"

#include <cstdarg>
#include <cstdio>

namespace cgi {

int FormatSlot(Slot& sSlot, const char* pcFormat, ...) {
  va_list ap;
  va_start(ap, pcFormat);
  const int iRet = vsnprintf(sSlot.c, sizeof(sSlot.c), pcFormat, ap);
  va_end(ap);
  return iRet;
}

int FormatText(char* pcText, size_t iSize, const char* pcFormat, ...) {
  va_list ap;
  va_start(ap, pcFormat);
  const int iRet = vsnprintf(pcText, iSize, pcFormat, ap);
  va_end(ap);
  return iRet;
}

int JoinLine(char* pcDst, const char* pcFormat, ...) {
  va_list ap;
  va_start(ap, pcFormat);
  const int iRet = vsnprintf(pcDst, kCgiLineSize, pcFormat, ap);
  va_end(ap);
  return iRet;
}

}  // namespace cgi
