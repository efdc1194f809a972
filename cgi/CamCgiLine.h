// Composition of one CGI command line: every component is formatted into a
// zeroed slot of its own, then the slots are joined with one final format.
// An optional component that does not apply stays empty, so the joining
// format needs no branch; optional components carry their own "&".
#ifndef CAM_CGI_LINE_H
#define CAM_CGI_LINE_H

#include <cstddef>

#include "CamConstants.h"

namespace cgi {

// Destination size of every line builder (CamRtpCommands.h,
// CamHttpCommands.h, CamCgiCommon.h): the caller's pcDst holds this many
// bytes, the terminator included. A line that would not fit is refused
// with -1 and pcDst empty; it is never sent cut short. (The number itself
// is kCgiLineSize, which the Exec workers size their buffers with.)
constexpr int kLineDstSize = kCgiLineSize;

// Size of one component slot. The components are table cells and numbers,
// all far shorter; only the joined line can grow past its destination.
constexpr int kSlotSize = 64;

struct Slot {
  char c[kSlotSize] = {};
};

// Formats one component into its slot.
int FormatSlot(Slot& sSlot, const char* pcFormat, ...) __attribute__((format(printf, 2, 3)));
// The same into a field of iSize bytes (the wider fields of the login line).
int FormatText(char* pcText, size_t iSize, const char* pcFormat, ...)
    __attribute__((format(printf, 3, 4)));

// Formats the line into pcDst (kLineDstSize bytes): 0, or -1 with pcDst
// empty when the line does not fit.
int JoinLine(char* pcDst, const char* pcFormat, ...) __attribute__((format(printf, 2, 3)));

}  // namespace cgi

#endif
