// The builders and parts of lines that both requesters share: the optional
// channel and stream components, the recorder forms of the session and
// keep-alive lines, the preset line, and the recorder login and logout with
// the credential transform. Each requester's virtual member calls these with
// its own differences. The builders' pcDst holds kLineDstSize bytes
// (CamCgiLine.h); a line that would not fit is refused (-1, pcDst empty).
#ifndef CAM_CGI_COMMON_H
#define CAM_CGI_COMMON_H

#include "CamCgiLine.h"
#include "CamCgiTables.h"

class CCamRequester;
struct CamRequesterFields;

namespace cgi {

// "&ch=%d" when a channel is set, else empty.
void ChannelPart(Slot& sSlot, const CamRequesterFields& sFields);
// "&stream=%d" when the stream number is 1 or 2, else empty.
void StreamPart(Slot& sSlot, const CamRequesterFields& sFields);

// "/cgi-bin/start.cgi?UID=-1": a recorder hands out its key and UID.
int BuildRecorderSession(char* pcDst);

// "connect=start" or "connect=stop" of the camera dialect.
const char* ConnectWord(int iStartStop);
// "CMD=START" or "CMD=STOP" of the recorder dialect.
const char* RecorderCommandWord(int iStartStop);

// One line form of CmdSet_AudioDistribute.
using AudioLineFn = int (*)(const CamRequesterFields& sFields, char* pcDst, int iStartStop,
                            long lPage);
// CmdSet_AudioDistribute of both requesters: the iStartStop check, the log
// line, the page value, and the line form of the camera type (each
// requester gives its own camera and recorder lines) or the refusal.
int AudioDistribute(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                    int iStartStop, AudioForm eForm, AudioLineFn pfnCamera,
                    AudioLineFn pfnRecorder);
// "/cgi-bin/status.cgi?UID=<uid>&HTML=as_status.html".
int BuildRecorderKeepAlive(const CamRequesterFields& sFields, char* pcDst);
// The refusal of an audio keep-alive to camera type 21.
int RefuseQv262AudioKeepAlive(CCamRequester& rRequester);
// "CmdSet_KeepAlive [ERROR] Unknown Camera Type enum#[%d]\n", -1.
int RefuseKeepAliveType(CCamRequester& rRequester, const CamRequesterFields& sFields);

// What differs between the two requesters' preset builders.
struct PresetPolicy {
  int iUpperCaseLimit;    // highest preset of the upper-case form; < 0: none
  const char* pcRefusal;  // message for a camera type without presets
};
int BuildCamPreset(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                   const PresetPolicy& sPolicy);

// The credential transform; pcOut takes 65 bytes.
char* KelEncrypt64(char* pcKey, char* pcData, char* pcOut);
// "/cgi-bin/ulogin.cgi?USER=..&PASS=..&KEY=..&TEMP=..", the credentials
// transformed through rRequester.ChangeData_KelEncrypt.
int BuildKelLogIn(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst);
// "/cgi-bin/logout.cgi?UID=<uid_logout>"; a camera that is not a recorder is
// refused with pcWrongType (printed with the camera type).
int BuildKelLogOut(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                   const char* pcWrongType);

}  // namespace cgi

#endif
