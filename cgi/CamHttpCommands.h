// The CGI lines of the HTTP requester: session, keep-alive, JPEG and G.726
// delivery over HTTP, and the Quillon UID release. Same conventions as the
// RTP lines: pcDst emptied first, refusals printed, -1; pcDst holds
// kLineDstSize bytes (CamCgiLine.h), and a line that would not fit is
// refused (-1, pcDst empty), never cut short.
#ifndef CAM_HTTP_COMMANDS_H
#define CAM_HTTP_COMMANDS_H

#include "CamCgiLine.h"

class CCamRequester;
struct CamRequesterFields;

namespace cgi {

int HttpSessionCommand(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst);
int HttpKeepAliveCommand(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst);
int HttpJpegDistribute(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                       int iStartStop);
int HttpAudioDistribute(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                        int iStartStop);
int HttpQuillonUidRelease(CCamRequester& rRequester, const CamRequesterFields& sFields,
                          char* pcDst);

}  // namespace cgi

#endif
