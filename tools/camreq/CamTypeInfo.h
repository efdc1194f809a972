// Camera types as camreq names and lists them: the enumerator names of
// requester/CamTypes.h and, from the library's own CGI tables, which lines
// each type is sent.
#ifndef CAMREQ_CAM_TYPE_INFO_H
#define CAMREQ_CAM_TYPE_INFO_H

#include <string>

namespace camreq {

// "CAM07", "QV262", "KE850"...; "NONE" for 37, the type that is not set.
std::string CamTypeName(int iType);

// A type given as a number 0..36 or a name (any case); -1 when neither.
int ParseCamType(const std::string& sText);

// The command words (h264 mpeg4 audio play h264play, jpeg audio play) that
// the tables give a line for, per requester class, joined by blanks.
std::string RtpCommandsOf(int iType);
std::string HttpCommandsOf(int iType);

// The whole "camreq types" table: one row for each of the 38 types.
std::string CamTypesTable();

}  // namespace camreq

#endif
