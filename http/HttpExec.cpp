// CCamRequester_Cgi_Kobu_Http: the Exec workers other than the push start.
// Each is one ExchangeSpec run by the shared exchange; what is the HTTP
// requester's own is here: its builders, the Quillon mode change and UID
// release, and the session-information notification of the set-up.
#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CamCgiLine.h"
#include "CamExchange.h"
#include "CamNotify.h"
#include "CamTypes.h"
#include "HttpPolicy.h"

using Http = CCamRequester_Cgi_Kobu_Http;
using httpses::kHttpPolicy;

namespace httpses {

namespace {

using camses::AddressLine;
using camses::ExchangeSpec;
using camses::OpenFailLine;

constexpr int kStop = 0;

// The stop line of the command type; play-back is refused by the stop itself.
int BuildStop(CCamRequester& rReq, const CamRequesterFields& rF, char* pcCgi) {
  switch (rF.iCmdType) {
    case CAM_REQUESTER_CMD_JPEG_HTTP:
      return rReq.CmdSet_JpegDistribute(pcCgi, kStop);
    case CAM_REQUESTER_CMD_G726_HTTP:
      return rReq.CmdSet_AudioDistribute(pcCgi, kStop);
    default:
      return -1;
  }
}

int BuildPreset(CCamRequester& rReq, const CamRequesterFields&, char* pcCgi) {
  return rReq.CmdSet_CamPreset(pcCgi);
}

int BuildKeepAlive(CCamRequester& rReq, const CamRequesterFields&, char* pcCgi) {
  return rReq.CmdSet_KeepAlive(pcCgi);
}

// Only the Quillon cameras have a push live mode to switch to; for the
// others there is nothing to send.
int BuildLiveModePush(CCamRequester&, const CamRequesterFields& rF, char* pcCgi) {
  if (!IsQuillonCamera(rF.usCameraType)) return 1;
  if (rF.iCmdType != CAM_REQUESTER_CMD_JPEG_HTTP) return 1;
  return cgi::JoinLine(pcCgi, "/cgi-bin/syssetup?LIVEMODE=PUSH&UID=%d", rF.iUid.load()) < 0 ? -1
                                                                                            : 0;
}

int BuildUidRelease(CCamRequester& rReq, const CamRequesterFields&, char* pcCgi) {
  return rReq.CmdSet_QuillonUidUtilRelease(pcCgi);
}

// Fields: name, builder, result and text of a refusal, AddHeader, DoRequest2,
// buffer before authentication, credentials printed, UidInvalid after a failed
// open, a recorder's result then, open-failure line, address line, line after
// a failed request, reply check, line after a complete exchange (and, for the
// play-back keep-alive, the calls per exchange).
const ExchangeSpec kStopSpec = {"StreamStopCommandExec",
                                BuildStop,
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

const ExchangeSpec kLiveModeSpec = {"QuillonChgModeCommandExec",
                                    BuildLiveModePush,
                                    0,
                                    nullptr,
                                    false,
                                    false,
                                    false,
                                    false,
                                    true,
                                    -1,
                                    OpenFailLine::kWireSetup,
                                    AddressLine::kLineWord,
                                    "QuillonChgModeCommandExec [Error] DoRequest failed\n",
                                    nullptr,
                                    nullptr};

const ExchangeSpec kUidReleaseSpec = {"QuillonUidUtilRelease",
                                      BuildUidRelease,
                                      -1,
                                      "QuillonUidUtilRelease [ERROR] QuillonUidUtilRelease NG\n",
                                      false,
                                      false,
                                      false,
                                      false,
                                      true,
                                      -1,
                                      OpenFailLine::kWireSetup,
                                      AddressLine::kNone,
                                      nullptr,
                                      nullptr,
                                      nullptr};

// A refused line counts as done; a recorder that cannot be reached is left
// to its own keep-alive logic.
const ExchangeSpec kKeepAliveSpec = {"SendKeepAliveCommandExec",
                                     BuildKeepAlive,
                                     0,
                                     nullptr,
                                     true,
                                     false,
                                     false,
                                     false,
                                     true,
                                     0,
                                     OpenFailLine::kOpenCommandExec,
                                     AddressLine::kLineWord,
                                     "SendKeepAliveCommandExec [Error] DoRequest failed\n",
                                     camses::ParseKeepAliveReply,
                                     "SendKeepAliveCommandExec OUT!!!!!. \n"};

// A failed play-back keep-alive of a camera forgets its UID like any exchange.
// Unlike the RTP requester's it counts no calls: every call sends.
const ExchangeSpec kPlayBackKeepAliveSpec = {
    "SendPBKeepAliveCommandExec",
    BuildKeepAlive,
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
    "SendPBKeepAliveCommandExec [Error] DoRequest failed\n",
    camses::ParsePlayBackKeepAliveReply,
    nullptr,
    0};

// A preset answered with a 4xx status still counts as moved (DoRequest2).
const ExchangeSpec kPresetSpec = {"SendCamPresetCommandExec",
                                  BuildPreset,
                                  -1,
                                  "SendCamPresetCommandExec [Error] CGI failed\n",
                                  true,
                                  true,
                                  false,
                                  true,
                                  true,
                                  -1,
                                  OpenFailLine::kOpenCommandExec,
                                  AddressLine::kLineWord,
                                  "SendCamPresetCommandExec [Error] DoRequest failed\n",
                                  nullptr,
                                  nullptr};

// The session-information notification, or its NULL line.
void NotifySessionInfo(CCamRequester& rReq, const CamRequesterFields& rF, int iUid,
                       const void* pvRecord, const char* pcNullLine) {
  CCamRequesterNotify* pUpper = camses::UpperLayer(rF);
  if (pUpper == nullptr) {
    rReq.CamReqCOM_printf("%s", pcNullLine);
    return;
  }
  pUpper->NotifySessionInfo(iUid, pvRecord, rF.iPos, rF.iCmdType);
}

}  // namespace

void ForgetHttpUid(CCamRequester& rReq, CamRequesterFields& rF) {
  // Told once: a UID already forgotten has nothing more to say.
  if (rF.iUid == -1) return;
  rF.iUid = -1;
  NotifySessionInfo(rReq, rF, -1, rF.psSession, "UidInvalid [Error] p_notify_to_upper=NULL\n");
}

}  // namespace httpses

int Http::SetupSessionCommandExec() {
  camses::SessionInfoCopy sInfo;
  const int iResult = camses::RequestUid(*this, *this, kHttpPolicy, sInfo);
  if (iResult != 0 || sInfo.bLineRefused) return iResult;
  const void* pvRecord = nullptr;
  switch (iCmdType) {
    case CAM_REQUESTER_CMD_G726_HTTP:
      // Audio's UID is its own matter: nothing to tell.
      m_KELCtrlFlag = 0;
      return 0;
    case CAM_REQUESTER_CMD_JPEG_PLAY:
      CamReqCOM_printf("SetupSessionCommandExec [DEBUG] p_notify_to_upper:%p \n",
                       static_cast<void*>(p_notify_to_upper));
      camses::PrintPlayBackSession(*this, sInfo);
      if (sInfo.bTaken) pvRecord = sInfo.aucHead;
      break;
    case CAM_REQUESTER_CMD_JPEG_HTTP:
      CamReqCOM_printf("SetupSessionCommandExec [DEBUG] p_notify_to_upper:%p \n",
                       static_cast<void*>(p_notify_to_upper));
      break;
    default:
      CamReqCOM_printf("SetupSessionCommandExec [Error] iCmdType=%d\n", iCmdType);
      m_KELCtrlFlag = 0;
      return 0;
  }
  httpses::NotifySessionInfo(*this, *this, iUid, pvRecord,
                             "SetupSessionCommandExec [Error] p_notify_to_upper=NULL\n");
  // A completed set-up ends the wait for a UID from outside.
  m_KELCtrlFlag = 0;
  return 0;
}

int Http::KelSetupSessionCommandExec(char* pcReply) {
  return camses::RecorderLogin(*this, *this, kHttpPolicy, pcReply);
}

int Http::QuillonChgModeCommandExec() {
  if (!IsQuillonCamera(usCameraType)) return 0;
  if (iUid == -1) {
    CamReqCOM_printf("QuillonChgModeCommandExec [Error]iUid == -1. \n");
    return -1;
  }
  return camses::RunExchange(*this, *this, kHttpPolicy, httpses::kLiveModeSpec);
}

int Http::StreamStopCommandExec() {
  return camses::RunStopExchange(*this, *this, kHttpPolicy, httpses::kStopSpec);
}

int Http::KelStreamStopCommandExec(char* pcReply) {
  return camses::RecorderLogout(*this, *this, kHttpPolicy, pcReply);
}

int Http::QuillonUidUtilRelease(char* pcReply) {
  return camses::RunLogoutExchange(*this, *this, kHttpPolicy, httpses::kUidReleaseSpec, pcReply);
}

int Http::SendKeepAliveCommandExec() {
  return camses::RunKeepAlive(*this, *this, kHttpPolicy, httpses::kKeepAliveSpec);
}

int Http::SendPBKeepAliveCommandExec() {
  return camses::RunPlayBackKeepAlive(*this, *this, kHttpPolicy, httpses::kPlayBackKeepAliveSpec);
}

int Http::SendCamPresetCommandExec() {
  return camses::RunExchange(*this, *this, kHttpPolicy, httpses::kPresetSpec);
}
