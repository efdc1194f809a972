// The diagnostic print of the requesters: every line of one requester is
// prefixed with its camera address, screen position and stream type, so that
// the interleaved output of many requesters can be told apart.
#ifndef CAM_PRINT_H
#define CAM_PRINT_H

#include <cstdarg>

struct CamRequesterFields;

namespace campr {

// Size of the message buffer; longer messages are cut to one less.
constexpr int kMessageSize = 256;
// Size of each of the three prefix cells.
constexpr int kPrefixCellSize = 32;

// Both take the va_list of a varargs print whose own format attribute has
// been checked at its call; the attribute here says so to the compiler.

// Formats the message and writes it through COM_printf without a prefix.
int PrintPlain(const char* pcFormat, va_list ap) __attribute__((format(printf, 1, 0)));

// Formats the message and writes it through COM_printf behind the prefix of
// the requester's address, position and stream type.
int PrintPrefixed(const CamRequesterFields& sFields, const char* pcFormat, va_list ap)
    __attribute__((format(printf, 2, 0)));

}  // namespace campr

#endif
