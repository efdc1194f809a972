// CCamRequester_Cgi_Kobu_Http: the server push and its hand-over. The stream
// start asks the camera for a push on a session of its own, moves that
// session to psSessionPush and gives it to the upper layer, which reads it
// on its own threads. A start retried while a push runs first takes the old
// handle back (null notification) and closes it.
#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CamConstants.h"
#include "CamExchange.h"
#include "CamNotify.h"
#include "CamSessionGuards.h"
#include "CamTransport.h"
#include "HttpPolicy.h"

using Http = CCamRequester_Cgi_Kobu_Http;
using httpses::kHttpPolicy;

namespace {

using camses::AddressLine;
using camses::ExchangeSpec;
using camses::OpenFailLine;

constexpr const char kStartName[] = "StreamStartCommandExec";
constexpr int kStart = 1;

// The start line of the command type; 1 (nothing to send) for a type
// without a push.
int BuildStart(CCamRequester& rReq, const CamRequesterFields& rF, char* pcCgi) {
  switch (rF.iCmdType) {
    case CAM_REQUESTER_CMD_JPEG_HTTP:
      return rReq.CmdSet_JpegDistribute(pcCgi, kStart);
    case CAM_REQUESTER_CMD_G726_HTTP:
      return rReq.CmdSet_AudioDistribute(pcCgi, kStart);
    default:
      return 1;
  }
}

// Fields: name, builder, result and text of a refusal, AddHeader, DoRequest2,
// buffer before authentication, credentials printed, UidInvalid after a failed
// open, a recorder's result then, open-failure line, address line, line after
// a failed request, reply check, line after a complete exchange. A refused
// line skips the start (0); the request is the push, made here.
const ExchangeSpec kStartSpec = {kStartName,
                                 BuildStart,
                                 0,
                                 nullptr,
                                 true,
                                 false,
                                 false,
                                 false,
                                 true,
                                 -1,
                                 OpenFailLine::kOpenCommandExec,
                                 AddressLine::kLineWord,
                                 nullptr,
                                 nullptr,
                                 nullptr};

// The push's result: true when the camera answered so that the push can be
// read. A time-out, another failure or a 4xx/5xx status is printed and false.
bool PushAccepted(Http& rReq, uint32_t ulRet) {
  if (ulRet == HTTP_RESULT_STATUS200) return true;
  rReq.CamReqCOM_printf("StreamStartCommandExec[Error]ret =%x\n", ulRet);
  switch (camtr::ClassifyResult(ulRet, false)) {
    case camtr::ResultClass::kSuccess:
      return true;
    case camtr::ResultClass::kTimeout:
      rReq.CamReqCOM_printf(" %s [Error] Network Timeout.\n", kStartName);
      return false;
    case camtr::ResultClass::kOtherError:
      rReq.CamReqCOM_printf("%s [Error] http_get_response failed3:ret =%x\n", kStartName, ulRet);
      return false;
    case camtr::ResultClass::kClientServerError:
      rReq.CamReqCOM_printf("%s [Error] http_get_response failed2:ret =%x\n", kStartName, ulRet);
      return false;
  }
  return false;
}

// Gives the push session to the upper layer.
void HandOver(Http& rReq) {
  const bool bJpeg = rReq.iCmdType == CAM_REQUESTER_CMD_JPEG_HTTP;
  if (CCamRequesterNotify* pUpper = camses::UpperLayer(rReq)) {
    rReq.CamReqCOM_printf(
        bJpeg ? "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n"
              : "StreamStartCommandExec [DEBUG] G726 HTTP NotifyCamRequesterHandle\n");
    pUpper->NotifyCamRequesterHandle(rReq.iUid, rReq.psSessionPush);
  } else {
    rReq.CamReqCOM_printf(bJpeg ? "StreamStartCommandExec [Error] JPEG p_notify_to_upper=NULL\n"
                                : "StreamStartCommandExec [Error] G.726 p_notify_to_upper=NULL\n");
  }
}

}  // namespace

int Http::StreamStartCommand() {
  const int iStatus = iConnectStatus;
  const bool bRetryWithPush = iStartRetry == 1 && psSessionPush != nullptr;
  if (iStatus == CAM_HTTP_STS_RUN && !bRetryWithPush) {
    CamReqCOM_printf("StreamStartCommand [DEBUG] iStartRetryFlag=%d psSessionPush=%p TINDEX=%x\n",
                     iStartRetry.load(), static_cast<void*>(psSessionPush),
                     iChildThreadIndex.load());
    return 0;
  }
  if (iStatus != CAM_HTTP_STS_READY && iStatus != CAM_HTTP_STS_RUN) {
    CamReqCOM_printf("StreamStartCommand [Error] NOP iConnectStatus=%d\n", iStatus);
    return 0;
  }
  if (bRetryWithPush) {
    // The upper layer lets go of the running push before a new one is asked for.
    CamReqCOM_printf("StreamStartCommand [DEBUG] CloseSessionPush(). TINDEX=%x status=%d\n",
                     iChildThreadIndex.load(), iStatus);
    CloseSessionPush();
  }
  return camses::RequestStreamStart(*this);
}

int Http::StreamStartCommandExec() {
  if (iUid == -1) {
    CamReqCOM_printf("%s [Error]iUid == -1. \n", kStartName);
    return -1;
  }
  const char* pcNoDelivery = camses::RuleFor(kHttpPolicy, iCmdType).pcNoDeliveryWord;
  if (pcNoDelivery != nullptr) {
    // Play-back pictures are not delivered as a push of this requester.
    CamReqCOM_printf("%s [Error] iCmdType:%s\n", kStartName, pcNoDelivery);
    return -1;
  }
  QuillonChgModeCommandExec();  // its result does not stop the start
  char acCgi[kCgiLineSize] = {};
  // A type without a push, or a line the builder refuses: skipped, not failed.
  if (BuildStart(*this, *this, acCgi) != 0) return 0;
  const int iPrepared = camses::PrepareRequest(*this, *this, kHttpPolicy, kStartSpec, acCgi);
  if (iPrepared != 0) return iPrepared;

  const uint32_t ulRet = http_do_server_push(psSession, camtr::kRequestTimeoutSec);
  if (!PushAccepted(*this, ulRet)) {
    CloseSessionCommand();
    return -1;
  }
  if (psSessionPush != nullptr) CloseSessionPush();
  psSessionPush = psSession;
  psSession = nullptr;
  HandOver(*this);
  m_KELCheckStreamRet = ulRet;
  return 0;
}
