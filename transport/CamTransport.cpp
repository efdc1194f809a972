#include "CamTransport.h"

#include <arpa/inet.h>

#include <cstdio>
#include <cstring>

#include "CamNotify.h"
#include "CamTypes.h"
#include "kxhttp.h"

namespace camtr {

constexpr TransportTraits kRtpTransport = [] {
  TransportTraits t{};
  t.pcClassName = "CCamRequester_Cgi_Kobu_Rtp";
  t.bUsesProxy = false;              // always straight to the camera
  t.bClosesOpenSession = false;      // an open session is left as it is
  t.bRejectsNullUrl = false;         // a null url goes to the library as it is
  t.bPrintsRetBeforeFailed2 = true;  // "ret =" before failed2
  t.bStoresResult = true;            // m_KELCheckStreamRet keeps the result word
  t.bCloseShowsPush = false;         // there is no push session
  return t;
}();

constexpr TransportTraits kHttpTransport = [] {
  TransportTraits t{};
  t.pcClassName = "CCamRequester_Cgi_Kobu_Http";
  t.bUsesProxy = true;                // through the proxy unless the camera is an exception
  t.bClosesOpenSession = true;        // a session still open is closed first
  t.bRejectsNullUrl = true;           // SetUrl refuses a null url
  t.bPrintsRetBeforeFailed2 = false;  // failed2 alone
  t.bStoresResult = false;            // the result word is not kept
  t.bCloseShowsPush = true;           // the close line shows the push session too
  return t;
}();

namespace {

constexpr uint32_t kStatusMask = 0x500;
constexpr size_t kLabelSize = 256;
constexpr size_t kHostFieldSize = 68;

// A failed exchange makes the UID invalid, except for a KEL recorder.
void ForgetUidUnlessRecorder(CCamRequester& rReq, const CamRequesterFields& rF) {
  if (!IsKelRecorder(rF.usCameraType)) rReq.UidInvalid();
}

// Copies the label at *ppcText (up to the next "." or the end) into
// acLabel and steps past the "."; at the end of the text the label is empty.
void NextLabel(const char** ppcText, char (&acLabel)[kLabelSize]) {
  const char* pcStart = *ppcText;
  const char* pcDot = std::strchr(pcStart, '.');
  size_t ulLength = pcDot != nullptr ? static_cast<size_t>(pcDot - pcStart) : std::strlen(pcStart);
  if (ulLength >= kLabelSize) ulLength = kLabelSize - 1;
  std::memcpy(acLabel, pcStart, ulLength);
  acLabel[ulLength] = '\0';
  *ppcText = pcDot != nullptr ? pcDot + 1 : pcStart + std::strlen(pcStart);
}

}  // namespace

ResultClass ClassifyResult(uint32_t ulResult, bool bLenient) {
  if (ulResult == HTTP_RESULT_STATUS200) return ResultClass::kSuccess;
  const uint32_t ulLow = ulResult & 0xFFFF;
  if (ulLow == 0x1000 || ulLow == 0x7000) return ResultClass::kTimeout;
  if ((ulResult & 0xF000) != 0) return ResultClass::kOtherError;
  const uint32_t ulStatus = ulResult & kStatusMask;
  const bool bFails = bLenient ? ulStatus == 0x500 : (ulStatus == 0x400 || ulStatus == 0x500);
  return bFails ? ResultClass::kClientServerError : ResultClass::kSuccess;
}

int OpenSessionCommandExec(CCamRequester& rReq, CamRequesterFields& rF, const TransportTraits& rT) {
  const char* pcProxyHost = nullptr;
  unsigned short usProxyPort = 0;
  int iPoint = 7;  // which branch warns about a session still open
  if (rT.bUsesProxy && rF.sProxy.enable == 1) {
    if (rReq.CheckProxyExcept() == -1) {
      rReq.CamReqCOM_printf("%s::OpenSessionCommandExec [DEBUG] Proxy use [%s:%d]->[%s:%d]\n",
                            rT.pcClassName, rF.sProxy.host, rF.sProxy.port, rF.cIpAddr,
                            rF.iHttpPort);
      pcProxyHost = rF.sProxy.host;
      usProxyPort = rF.sProxy.port;
      iPoint = 5;
    } else {
      rReq.CamReqCOM_printf("%s::OpenSessionCommandExec [DEBUG] Proxy not use [%s:%d]\n",
                            rT.pcClassName, rF.cIpAddr, rF.iHttpPort);
      iPoint = 6;
    }
  } else {
    rReq.CamReqCOM_printf("%s::OpenSessionCommandExec [DEBUG] Proxy Disable\n", rT.pcClassName);
  }
  if (rT.bClosesOpenSession && rF.psSession != nullptr) {
    rReq.CamReqCOM_printf(
        "%s::OpenSessionCommandExec [Error] Session already opened!(point%d). If occurs "
        "seg-fault, open and close session logic may be wrong.\n",
        rT.pcClassName, iPoint);
    rReq.CloseSessionCommand();
  }
  rF.psSession = http_open_session_to_ret(rF.cIpAddr, static_cast<unsigned short>(rF.iHttpPort),
                                          pcProxyHost, usProxyPort, 0, kOpenTimeoutMs, 0);
  if (rF.psSession == nullptr) {
    rReq.CamReqCOM_printf("%s::OpenSessionCommandExec [ERROR] open faild IP:%s  Port:%d\n",
                          rT.pcClassName, rF.cIpAddr, rF.iHttpPort);
    return -1;
  }
  rReq.CamReqCOM_printf(
      "%s::OpenSessionCommandExec [DEBUG] open success psSession:0x%p, IP:%s  Port:%d\n",
      rT.pcClassName, static_cast<void*>(rF.psSession), rF.cIpAddr, rF.iHttpPort);
  return 0;
}

int CloseSessionCommand(CCamRequester& rReq, CamRequesterFields& rF, const TransportTraits& rT) {
  if (rF.psSession == nullptr) {
    rReq.CamReqCOM_printf(" %s [Error] Multiplex Close Session.\n", "CloseSessionCommand");
    return -1;
  }
  if (rT.bCloseShowsPush) {
    rReq.CamReqCOM_printf(" %s [DEBUG] Session Close [psSessionPush:%p][psSession:%p]\n",
                          "CloseSessionCommand", static_cast<void*>(rF.psSessionPush),
                          static_cast<void*>(rF.psSession));
  } else {
    rReq.CamReqCOM_printf(" %s [DEBUG] Session Close [psSession:%p]\n", "CloseSessionCommand",
                          static_cast<void*>(rF.psSession));
  }
  if (http_close_session(rF.psSession) != 0) {
    rReq.CamReqCOM_printf("CloseSessionCommand [ERROR] close error\n");
  }
  // Forgotten whatever the library says: there is no retry of a close.
  rF.psSession = nullptr;
  return 0;
}

int CloseSessionPush(CCamRequester& rReq, CamRequesterFields& rF) {
  if (rF.psSessionPush == nullptr) {
    rReq.CamReqCOM_printf(" %s [Error] Multiplex Close Session.\n", "CloseSessionPush");
    return -1;
  }
  rReq.CamReqCOM_printf(" %s [DEBUG] Server Push Close [psSessionPush:%p][psSession:%p]\n",
                        "CloseSessionPush", static_cast<void*>(rF.psSessionPush),
                        static_cast<void*>(rF.psSession));
  if (rF.iCmdType == CAM_REQUESTER_CMD_JPEG_HTTP || rF.iCmdType == CAM_REQUESTER_CMD_G726_HTTP) {
    // The upper layer lets go of the handle before it is closed. While the
    // requester is being destroyed it is told nothing: a reader still on the
    // push then sees the session end (the client never reads a closed one).
    if (CCamRequesterNotify* pUpper = camses::UpperLayer(rF)) {
      pUpper->NotifyCamRequesterHandle(rF.iUid, nullptr);
    } else if (rF.iCmdType == CAM_REQUESTER_CMD_JPEG_HTTP) {
      rReq.CamReqCOM_printf("StreamStartCommandExec [Error] JPEG p_notify_to_upper=NULL\n");
    } else {
      rReq.CamReqCOM_printf("StreamStartCommandExec [Error] G.726 p_notify_to_upper=NULL\n");
    }
  }
  if (http_close_session(rF.psSessionPush) != 0) {
    rReq.CamReqCOM_printf("CloseSessionPush [ERROR] close error\n");
  }
  rF.psSessionPush = nullptr;
  return 0;
}

int SetUrl(CCamRequester& rReq, CamRequesterFields& rF, const TransportTraits& rT, char* pcUrl) {
  if (rT.bRejectsNullUrl && pcUrl == nullptr) {
    rReq.CamReqCOM_printf("SetUrl [Error] invalid param\n");
    return -1;
  }
  const uint32_t ulRet = http_set_url(rF.psSession, "GET", pcUrl, "HTTP/1.0");
  if (ulRet != HTTP_RESULT_OK) {
    rReq.CamReqCOM_printf("SetUrl [Error] http_set_url failed:ret =%x\n", ulRet);
    ForgetUidUnlessRecorder(rReq, rF);
    return -1;
  }
  return 0;
}

int AddHeader(CCamRequester& rReq, CamRequesterFields& rF) {
  http_add_header(rF.psSession, "Connection", "Keep-Alive");
  // An IPv6 camera is named in square brackets; the port is never added.
  const char* pcHost = rF.cIpAddr;
  char acBracketed[kHostFieldSize] = {};
  unsigned char aucAddr[sizeof(struct in6_addr)];
  if (inet_pton(AF_INET6, rF.cIpAddr, aucAddr) >= 1) {
    snprintf(acBracketed, sizeof(acBracketed), "[%s]", rF.cIpAddr);
    rReq.CamReqCOM_printf("AddHeader [DEBUG] setaddress=%s\n", acBracketed);
    pcHost = acBracketed;
  }
  const uint32_t ulRet = http_add_header(rF.psSession, "Host", pcHost);
  if (ulRet != HTTP_RESULT_OK) {
    rReq.CamReqCOM_printf("AddHeader [Error] http_add_header failed:ret =%x\n", ulRet);
    ForgetUidUnlessRecorder(rReq, rF);
    return -1;
  }
  return 0;
}

int DoRequest(CCamRequester& rReq, CamRequesterFields& rF, const TransportTraits& rT,
              _InetBuffer* psBuf, bool bLenient) {
  const char* pcName = bLenient ? "DoRequest2" : "DoRequest";
  const uint32_t ulRet = http_do_request(rF.psSession, psBuf, kRequestTimeoutSec);
  switch (ClassifyResult(ulRet, bLenient)) {
    case ResultClass::kSuccess:
      if (rT.bStoresResult) rF.m_KELCheckStreamRet = ulRet;
      return 0;
    case ResultClass::kTimeout:
      rReq.CamReqCOM_printf("%s [Error] http_get_response failed1:ret =%x\n", pcName, ulRet);
      break;
    case ResultClass::kOtherError:
      rReq.CamReqCOM_printf("%s [Error] http_get_response failed3:ret =%x\n", pcName, ulRet);
      break;
    case ResultClass::kClientServerError:
      if (rT.bPrintsRetBeforeFailed2) rReq.CamReqCOM_printf("%s [Error] ret =%x\n", pcName, ulRet);
      rReq.CamReqCOM_printf("%s [Error] http_get_response failed2:ret =%x\n", pcName, ulRet);
      break;
  }
  ForgetUidUnlessRecorder(rReq, rF);
  return -1;
}

int JudgeExceptAddress(const char* pcAddress, const char* pcPattern) {
  const char* pcA = pcAddress != nullptr ? pcAddress : "";
  const char* pcP = pcPattern != nullptr ? pcPattern : "";
  char acAddressLabel[kLabelSize];
  char acPatternLabel[kLabelSize];
  for (;;) {
    NextLabel(&pcA, acAddressLabel);
    NextLabel(&pcP, acPatternLabel);
    // Both ended together: a match. The address label is tested before the
    // "*", so a "*" never stands for a missing label.
    if (acAddressLabel[0] == '\0') return acPatternLabel[0] == '\0' ? 0 : -1;
    if (std::strcmp(acPatternLabel, "*") == 0) continue;
    if (std::strcmp(acAddressLabel, acPatternLabel) != 0) return -1;
  }
}

int CheckProxyExcept(CCamRequester& rReq, CamRequesterFields& rF) {
  for (int i = 0; i < CAM_PROXY_EXCEPT_COUNT; ++i) {
    char* pcEntry = rF.sProxy.except[i];
    if (pcEntry[0] == '\0') continue;
    if (rReq.JudgeExceptAddress(rF.cIpAddr, pcEntry) == 0) {
      rReq.CamReqCOM_printf("CheckProxyExcept [DEBUG] Proxy Except[%d] = [%s]\r\n", i + 1, pcEntry);
      return 0;
    }
  }
  return -1;
}

}  // namespace camtr
