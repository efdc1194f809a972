#include "CamCgiLine.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

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
  // Joined aside first, so that a refused line leaves no part of itself in
  // the caller's buffer.
  char acLine[kLineDstSize];
  va_list ap;
  va_start(ap, pcFormat);
  const int iLength = vsnprintf(acLine, sizeof(acLine), pcFormat, ap);
  va_end(ap);
  if (iLength < 0 || iLength >= kLineDstSize) {
    pcDst[0] = '\0';
    return -1;
  }
  memcpy(pcDst, acLine, static_cast<size_t>(iLength) + 1);
  return 0;
}

}  // namespace cgi
