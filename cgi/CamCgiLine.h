// Composition of one CGI command line: every component is formatted into a
// zeroed slot of its own, then the slots are joined with one final format.
// An optional component that does not apply stays empty, so the joining
// format needs no branch; optional components carry their own "&".
#ifndef CAM_CGI_LINE_H
#define CAM_CGI_LINE_H

#include <cstddef>

#include "CamConstants.h"

namespace cgi {

// Size of one component slot.
constexpr int kSlotSize = 64;

struct Slot {
  char c[kSlotSize] = {};
};

// Formats one component into its slot.
int FormatSlot(Slot& sSlot, const char* pcFormat, ...) __attribute__((format(printf, 2, 3)));
// The same into a field of iSize bytes (the wider fields of the login line).
int FormatText(char* pcText, size_t iSize, const char* pcFormat, ...)
    __attribute__((format(printf, 3, 4)));

// Formats the line into pcDst (kCgiLineSize bytes at most).
int JoinLine(char* pcDst, const char* pcFormat, ...) __attribute__((format(printf, 2, 3)));

}  // namespace cgi

#endif
