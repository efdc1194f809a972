// The camera exchanges of both requesters, written once. Every Exec worker
// is one ExchangeSpec (its name, builder, reply check and the few steps in
// which the workers differ) run by one of these:
//   RunExchange          the common exchange: UID check, CGI line, session,
//                        request line, headers, authentication, the zeroed
//                        2048-byte reply, request, reply check, free, close;
//   RunKeepAlive         the same on every 300th call;
//   RunPlayBackKeepAlive the same, on every call or on every Nth where the
//                        class counts them (ExchangeSpec::iPlayBackTicks);
//   RunStopExchange      the stream stop: library calls made directly, the
//                        result only classified, then the recorder logout;
//   RecorderLogin/Logout the recorder exchanges into the caller's buffer,
//                        whose session the caller closes;
//   RequestUid           the set-up's UID request up to the notification.
// The reply buffer and the session are released on every path (CamScoped.h).
#ifndef CAM_EXCHANGE_H
#define CAM_EXCHANGE_H

#include <stdint.h>

#include "CamSessionPolicy.h"
#include "kxhttp.h"

class CCamRequester;
struct CamRequesterFields;

namespace camses {

// Writes the CGI line into pcCgi (kCgiLineSize bytes): 0 = send it,
// -1 = refused, 1 = nothing to send.
using BuildFn = int (*)(CCamRequester& rReq, const CamRequesterFields& rF, char* pcCgi);
// Checks the reply; prints its own failure line (with pcName) and returns -1.
using ParseFn = int (*)(CCamRequester& rReq, const char* pcName, char* pcReply);

// The word in the line "<name> [DEBUG] <word>: IP:%s PORT:%d CamType:%s[%d] Pos:%d \n".
enum class AddressLine : uint8_t {
  kNone,      // the line is not printed
  kLineWord,  // the policy's pcLineWord ("RTP")
  kWireWord,  // the policy's pcWireWord ("Rtp")
};

// The line after a failed open.
enum class OpenFailLine : uint8_t {
  kOpenCommandExec,  // "<name> [Error] OpenSessionCommandExec failed\n"
  kWireSetup,        // "<name> [Error] <wire>::SetupSessionCommand failed\n"
};

struct ExchangeSpec {
  const char* pcName;           // the Exec's name; every line begins with it
  BuildFn pfnBuild;             // the CGI builder
  int iRefusedResult;           // the Exec's result when the builder refuses
  const char* pcRefusedText;    // printed when the builder refuses (no conversion), or null
  bool bAddsHeader;             // AddHeader after SetUrl
  bool bLenient;                // DoRequest2 (a 4xx status passes) instead of DoRequest
  bool bBufferBeforeAuth;       // the reply buffer is taken before the authentication
  bool bPrintsCredentials;      // "<name> [DEBUG] UserName:%s Password:%s\n" before it
  bool bForgetsUidOnOpenFail;   // UidInvalid after a failed open, cameras only
  int iRecorderOpenFailResult;  // the Exec's result when a recorder's open fails
  OpenFailLine eOpenFailLine;
  AddressLine eAddressLine;
  const char* pcRequestFailedText;  // printed after a failed request (no conversion), or null
  ParseFn pfnParse;                 // the reply check, or null: the reply is not read
  const char* pcDoneText;           // printed after a complete exchange (no conversion), or null
  // RunPlayBackKeepAlive: the exchange goes out on every Nth call only,
  // counted in m_iPBKeepAliveCount; 0: on every call, nothing counted.
  int iPlayBackTicks = 0;
};

// Reply checks of both classes' keep-alives.
int ParseKeepAliveReply(CCamRequester& rReq, const char* pcName, char* pcReply);
int ParsePlayBackKeepAliveReply(CCamRequester& rReq, const char* pcName, char* pcReply);

int RunExchange(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                const ExchangeSpec& rSpec);
// "SendKeepAliveCommandExec IN!!!!!. \n" and the exchange on every 300th call.
int RunKeepAlive(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                 const ExchangeSpec& rSpec);
// The exchange on every rSpec.iPlayBackTicks-th call, or on every call.
int RunPlayBackKeepAlive(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                         const ExchangeSpec& rSpec);
// Always 0 once the request went out; with bClosesPushOnStop the push
// session is closed last.
int RunStopExchange(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                    const ExchangeSpec& rSpec);

// The head of an exchange without its request: open, address and cgi lines,
// SetUrl, AddHeader, authentication. 0 with the session left open for the
// caller (the HTTP requester's server push); else the Exec's result, the
// session closed.
int PrepareRequest(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                   const ExchangeSpec& rSpec, char* pcCgi);

// The recorder login (KelSetupSessionCommandExec) into pcReply; the
// session is left open for the caller.
int RecorderLogin(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                  char* pcReply);
// An exchange of the logout's shape into pcReply: nothing is sent while
// keep-alive is off ("<name> [DEBUG] KEL Logout CGI Command No!!\n"); the
// caller's session is closed first, the exchange's own is left open for the
// caller. (The HTTP requester's Quillon UID release is one.)
int RunLogoutExchange(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                      const ExchangeSpec& rSpec, char* pcReply);
// The recorder logout (KelStreamStopCommandExec) into pcReply, of uid_logout
// (the UID when none was kept).
int RecorderLogout(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                   char* pcReply);

// The head of the session record, copied for the upper layer. The session
// is closed before the upper layer reads the copy, so the host text is
// copied too and the copy's host pointer points at it.
struct SessionInfoCopy {
  bool bLineRefused = false;  // the session line was refused: nothing was asked
  bool bTaken = false;
  alignas(HTTP_SESSION) unsigned char aucHead[HTTP_SESSION_INFO_SIZE] = {};
  char acHost[256] = {};
};

// The set-up up to the notification: a controlled recorder waits for its
// UID; without a UID the session line is sent, a recorder is logged in when
// its reply offers a key, and UID and delivery are read from the reply.
// The session head is copied into rInfo and the session closed.
// 0, -1, or -2 when the reply carries no UID.
int RequestUid(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
               SessionInfoCopy& rInfo);

// The three lines of a play-back set-up about the copied session, and the
// 10 ms pause that follows them.
void PrintPlayBackSession(CCamRequester& rReq, const SessionInfoCopy& rInfo);

}  // namespace camses

#endif
