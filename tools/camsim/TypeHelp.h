// What each camera type answers, in words, made from the type table
// (Models.cpp) so that the program's usage text can never drift from what a
// device of that type does.
#ifndef CAMSIM_TYPE_HELP_H
#define CAMSIM_TYPE_HELP_H

#include <string>

namespace camsim {

// One paragraph per group of types that answer alike, e.g.
//   "  9, 24, 26, 27 (camera): getuid; mpeg4_I_interval; h264_I_interval; ..."
// ending in a newline; types that answer nothing say "nothing".
std::string CameraTypesText();

// The types that have every bit of capability, as "32, 33, 35" (ranges of
// three or more as "0-5").
std::string TypesWith(unsigned capability);

}  // namespace camsim

#endif
