// Messages held as data: a format with conversions that sits in a policy or
// traits table (one per requester class) and is printed by the one call that
// passes the arguments it names. The compiler cannot check such a format
// against its arguments, so -Wformat-nonliteral is off here and only here;
// every other format of the library stays a checked literal. The tests compare
// the printed lines of these messages.
#ifndef CAM_HELD_FORMAT_H
#define CAM_HELD_FORMAT_H

#include <cstddef>
#include <cstdio>

#include "CCamRequester.h"
#include "kxcom.h"

namespace camfmt {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"

// rReq.CamReqCOM_printf(pcFormat, args...), through the class's virtual print.
template <typename... Args>
int PrintHeld(CCamRequester& rReq, const char* pcFormat, Args... args) {
  return rReq.CamReqCOM_printf(pcFormat, args...);
}

// COM_printf(pcFormat, args...), without the requester's prefix.
template <typename... Args>
int ComPrintHeld(const char* pcFormat, Args... args) {
  return COM_printf(pcFormat, args...);
}

// snprintf(pcDst, uSize, pcFormat, args...).
template <typename... Args>
int FormatHeld(char* pcDst, size_t uSize, const char* pcFormat, Args... args) {
  return snprintf(pcDst, uSize, pcFormat, args...);
}

#pragma GCC diagnostic pop

}  // namespace camfmt

#endif  // CAM_HELD_FORMAT_H
