// The HTTP session glue of both requesters: opening a session to the camera
// (the HTTP requester also through a proxy, unless the camera is on the
// exception list), the request line and headers, running the request and
// classifying its result, closing. Written once; each requester's virtual
// members call it with the class's differences.
#ifndef CAM_TRANSPORT_H
#define CAM_TRANSPORT_H

#include "CCamRequester.h"
#include "CamRequesterFields.h"

namespace camtr {

// What the two requesters do differently in their session glue.
struct TransportTraits {
  const char* pcClassName;       // prefix of the open lines, "CCamRequester_Cgi_Kobu_Rtp"
  bool bUsesProxy;               // proxy by `enable` and the exception list
  bool bClosesOpenSession;       // closes a session still open before opening
  bool bRejectsNullUrl;          // SetUrl refuses a null url
  bool bPrintsRetBeforeFailed2;  // one more "ret =" line before failed2
  bool bStoresResult;            // keeps the result word in m_KELCheckStreamRet
  bool bCloseShowsPush;          // the close line shows the push session too
};

extern const TransportTraits kRtpTransport;
extern const TransportTraits kHttpTransport;

// The library's arguments that never change.
constexpr int kOpenTimeoutMs = 30000;
constexpr int kRequestTimeoutSec = 5;

int OpenSessionCommandExec(CCamRequester& rReq, CamRequesterFields& rF, const TransportTraits& rT);
int CloseSessionCommand(CCamRequester& rReq, CamRequesterFields& rF, const TransportTraits& rT);
int CloseSessionPush(CCamRequester& rReq, CamRequesterFields& rF);
int SetUrl(CCamRequester& rReq, CamRequesterFields& rF, const TransportTraits& rT, char* pcUrl);
int AddHeader(CCamRequester& rReq, CamRequesterFields& rF);
// bLenient: a 4xx status passes (the preset command's DoRequest2).
int DoRequest(CCamRequester& rReq, CamRequesterFields& rF, const TransportTraits& rT,
              _InetBuffer* psBuf, bool bLenient);
int JudgeExceptAddress(const char* pcAddress, const char* pcPattern);
int CheckProxyExcept(CCamRequester& rReq, CamRequesterFields& rF);

// Classes of a request's result word, in the order they are tested.
enum class ResultClass { kSuccess, kTimeout, kOtherError, kClientServerError };
ResultClass ClassifyResult(uint32_t ulResult, bool bLenient);

}  // namespace camtr

#endif
