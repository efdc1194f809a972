// CCamRequester_Cgi_Kobu_Http: the server push and its hand-over. The stream
// start asks the camera for a push on a session of its own, moves that
// session to psSessionPush and gives it to the upper layer, which reads it
// on its own threads. A start retried while a push runs first takes the old
// handle back (null notification) and closes it.
#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CamConstants.h"
#include "CamTransport.h"
#include "CamTypes.h"
#include "HttpSessionInfo.h"

namespace {

using Http = CCamRequester_Cgi_Kobu_Http;

constexpr const char kStartName[] = "StreamStartCommandExec";

// The start line of the command type; 1 with the line, -1 when the builder
// refuses, 0 when the type has no push.
int BuildStartLine(Http& rReq, char* pcCgi) {
  switch (rReq.iCmdType) {
    case CAM_REQUESTER_CMD_JPEG_HTTP:
      return rReq.CmdSet_JpegDistribute(pcCgi, 1) == -1 ? -1 : 1;
    case CAM_REQUESTER_CMD_G726_HTTP:
      return rReq.CmdSet_AudioDistribute(pcCgi, 1) == -1 ? -1 : 1;
    default:
      return 0;
  }
}

// Steps of every exchange up to the request itself: open, request line,
// headers, credentials. -1 with the session closed (or never opened).
int PreparePushRequest(Http& rReq, char* pcCgi) {
  if (rReq.OpenSessionCommandExec() == -1) {
    rReq.CamReqCOM_printf("%s [Error] OpenSessionCommandExec failed\n", kStartName);
    if (!IsKelRecorder(rReq.usCameraType)) rReq.UidInvalid();
    return -1;
  }
  rReq.CamReqCOM_printf("%s [DEBUG] Http: IP:%s PORT:%d CamType:%s[%d] Pos:%d \n", kStartName,
                        rReq.cIpAddr, rReq.iHttpPort, rReq.CamName, rReq.usCameraType, rReq.iPos);
  rReq.CamReqCOM_printf("%s [DEBUG] cgi=%s. \n", kStartName, pcCgi);
  const char* pcFailure = nullptr;
  if (rReq.SetUrl(pcCgi) == -1) {
    pcFailure = "SetUrl failed";
  } else if (rReq.AddHeader() == -1) {
    pcFailure = "AddHeader failed";
  } else if (rReq.cUserName[0] != '\0' &&
             http_set_auth(rReq.psSession, rReq.cUserName, rReq.cPassword) != HTTP_RESULT_OK) {
    pcFailure = "http_set_auth failed";
  }
  if (pcFailure == nullptr) return 0;
  rReq.CamReqCOM_printf("%s [Error] %s\n", kStartName, pcFailure);
  rReq.CloseSessionCommand();
  return -1;
}

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
  if (httpreq::MayNotify(rReq)) {
    rReq.CamReqCOM_printf(
        bJpeg ? "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n"
              : "StreamStartCommandExec [DEBUG] G726 HTTP NotifyCamRequesterHandle\n");
    rReq.p_notify_to_upper->NotifyCamRequesterHandle(rReq.iUid, rReq.psSessionPush);
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
                     iStartRetry, static_cast<void*>(psSessionPush), iChildThreadIndex.load());
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
  const int iRet = StreamStartCommandExec();
  ChangeStatus(iRet == -1 ? CAM_HTTP_EVT_RUN_FAIL : CAM_HTTP_EVT_RUN_SUCCESS);
  return 0;
}

int Http::StreamStartCommandExec() {
  if (iUid == -1) {
    CamReqCOM_printf("%s [Error]iUid == -1. \n", kStartName);
    return -1;
  }
  if (iCmdType == CAM_REQUESTER_CMD_JPEG_PLAY) {
    // Play-back pictures are not delivered as a push of this requester.
    CamReqCOM_printf("%s [Error] iCmdType:JPEG_PLAY\n", kStartName);
    return -1;
  }
  QuillonChgModeCommandExec();  // its result does not stop the start
  char acCgi[kCgiLineSize] = {};
  const int iLine = BuildStartLine(*this, acCgi);
  if (iLine != 1) return 0;  // no line: the start is skipped, not failed
  if (PreparePushRequest(*this, acCgi) == -1) return -1;

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
