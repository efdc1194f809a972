// The CGI lines of the RTP requester: session, I-frame intervals,
// keep-alive, and the start and stop of MPEG-4, H.264 and G.726 delivery.
// Every builder empties pcDst first, so a caller that ignores -1 sends
// nothing; refusals are printed through the requester. pcDst holds
// kLineDstSize bytes (CamCgiLine.h); a line that would not fit is refused
// too (-1, pcDst empty), never cut short.
#ifndef CAM_RTP_COMMANDS_H
#define CAM_RTP_COMMANDS_H

#include "CamCgiLine.h"

class CCamRequester;
struct CamRequesterFields;

namespace cgi {

int RtpSessionCommand(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst);
int RtpMpeg4IframeCommand(CCamRequester& rRequester, const CamRequesterFields& sFields,
                          char* pcDst);
int RtpH264IframeCommand(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst);
int RtpKeepAliveCommand(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst);
int RtpMpeg4Distribute(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                       int iStartStop);
int RtpH264Distribute(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                      int iStartStop);
int RtpAudioDistribute(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                       int iStartStop);

}  // namespace cgi

#endif
