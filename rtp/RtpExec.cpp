// CCamRequester_Cgi_Kobu_Rtp: the Exec workers. Each is one ExchangeSpec run
// by the shared exchange; what is the RTP requester's own is here: which
// builder each worker takes, the twelve-argument stream notification of the
// set-up and of a forgotten UID.
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamConstants.h"
#include "CamExchange.h"
#include "CamNotify.h"
#include "RtpPolicy.h"

using Rtp = CCamRequester_Cgi_Kobu_Rtp;
using rtpses::kRtpPolicy;

namespace rtpses {

namespace {

using camses::AddressLine;
using camses::ExchangeSpec;
using camses::OpenFailLine;

constexpr int kStart = 1;
constexpr int kStop = 0;

// The distribution line of the command type; a play-back type is refused
// before anything is sent.
int BuildDistribution(CCamRequester& rReq, const CamRequesterFields& rF, char* pcCgi,
                      int iStartStop, const char* pcName) {
  switch (rF.iCmdType) {
    case CAM_REQUESTER_CMD_H264_RTP:
      return rReq.CmdSet_H264Distribute(pcCgi, iStartStop);
    case CAM_REQUESTER_CMD_G726_RTP:
      return rReq.CmdSet_AudioDistribute(pcCgi, iStartStop);
    case CAM_REQUESTER_CMD_MPEG4_RTP:
      return rReq.CmdSet_Mpeg4Distribute(pcCgi, iStartStop);
    default:
      break;
  }
  const char* pcWord = camses::RuleFor(kRtpPolicy, rF.iCmdType).pcNoDeliveryWord;
  if (pcWord != nullptr) rReq.CamReqCOM_printf("%s [Error] iCmdType:%s\n", pcName, pcWord);
  return -1;
}

int BuildStart(CCamRequester& rReq, const CamRequesterFields& rF, char* pcCgi) {
  return BuildDistribution(rReq, rF, pcCgi, kStart, "StreamStartCommandExec");
}

int BuildStop(CCamRequester& rReq, const CamRequesterFields& rF, char* pcCgi) {
  return BuildDistribution(rReq, rF, pcCgi, kStop, "StreamStopCommandExec");
}

int BuildKeepAlive(CCamRequester& rReq, const CamRequesterFields&, char* pcCgi) {
  return rReq.CmdSet_KeepAlive(pcCgi);
}

int BuildIframe(CCamRequester& rReq, const CamRequesterFields& rF, char* pcCgi) {
  if (rF.iCmdType == CAM_REQUESTER_CMD_H264_RTP) return rReq.CmdSet_H264_IframInst(pcCgi);
  return rReq.CmdSet_IframInst(pcCgi);
}

int BuildPreset(CCamRequester& rReq, const CamRequesterFields&, char* pcCgi) {
  return rReq.CmdSet_CamPreset(pcCgi);
}

// Fields: name, builder, result and text of a refusal, AddHeader, DoRequest2,
// buffer before authentication, credentials printed, UidInvalid after a failed
// open, a recorder's result then, open-failure line, address line, line after
// a failed request, reply check, line after a complete exchange.
const ExchangeSpec kStartSpec = {"StreamStartCommandExec",
                                 BuildStart,
                                 -1,
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

const ExchangeSpec kStopSpec = {"StreamStopCommandExec",
                                BuildStop,
                                -1,
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
                                     nullptr,
                                     camses::ParseKeepAliveReply,
                                     "SendKeepAliveCommandExec OUT!!!!!. \n"};

// A failed play-back keep-alive never forgets the UID. It goes out on
// every 30th call only.
const ExchangeSpec kPlayBackKeepAliveSpec = {"SendPBKeepAliveCommandExec",
                                             BuildKeepAlive,
                                             0,
                                             nullptr,
                                             true,
                                             false,
                                             false,
                                             false,
                                             false,
                                             -1,
                                             OpenFailLine::kOpenCommandExec,
                                             AddressLine::kLineWord,
                                             nullptr,
                                             camses::ParsePlayBackKeepAliveReply,
                                             nullptr,
                                             kPBKeepAliveTicks};

const ExchangeSpec kIframeSpec = {"SendCamIframInstCommandExec",
                                  BuildIframe,
                                  0,
                                  nullptr,
                                  true,
                                  false,
                                  true,
                                  false,
                                  true,
                                  -1,
                                  OpenFailLine::kOpenCommandExec,
                                  AddressLine::kLineWord,
                                  "SendCamIframInstCommandExec [Error] camera session failed\n",
                                  nullptr,
                                  nullptr};

// A preset answered with a 4xx status still counts as moved (DoRequest2).
const ExchangeSpec kPresetSpec = {"SendCamPresetCommandExec",
                                  BuildPreset,
                                  -1,
                                  "SendCamPresetCommandExec [Error] CGI failed\n",
                                  true,
                                  true,
                                  true,
                                  false,
                                  true,
                                  -1,
                                  OpenFailLine::kOpenCommandExec,
                                  AddressLine::kLineWord,
                                  nullptr,
                                  nullptr,
                                  nullptr};

// The upper layer's RTP stream notification. A stream that is gone is told
// with UID -1, the current session and zero delivery values.
void NotifyRtpStream(CCamRequesterNotify& rUpper, const CamRequesterFields& rF, int iUid,
                     const void* pvSession, bool bGone) {
  rUpper.NotifyRtpStream(iUid, pvSession, rF.iRtpPort, rF.cIpAddr, rF.iPos, rF.iCmdType,
                         rF.usSelectChNo, bGone ? 0 : rF.iAudioBitrate, bGone ? 0 : rF.iAudioEnable,
                         rF.cMultiAddr, bGone ? 0 : rF.iUniPort, bGone ? 0 : rF.iAudioInPort);
}

}  // namespace

void ForgetRtpUid(CCamRequester& rReq, CamRequesterFields& rF) {
  rF.iUid = -1;
  CCamRequesterNotify* pUpper = camses::UpperLayer(rF);
  if (pUpper == nullptr) {
    rReq.CamReqCOM_printf("UidInvalid [Error] p_notify_to_upper=NULL\n");
    return;
  }
  NotifyRtpStream(*pUpper, rF, -1, rF.psSession, true);
}

}  // namespace rtpses

int Rtp::SetupSessionCommandExec() {
  camses::SessionInfoCopy sInfo;
  const int iResult = camses::RequestUid(*this, *this, kRtpPolicy, sInfo);
  if (iResult != 0) return iResult;
  const camses::SetupKind eKind = camses::RuleFor(kRtpPolicy, iCmdType).eSetup;
  if (eKind != camses::SetupKind::kLive && eKind != camses::SetupKind::kPlayBack) {
    CamReqCOM_printf("SetupSessionCommandExec [Error] iCmdType=%d\n", iCmdType);
    m_KELCtrlFlag = 0;
    return 0;
  }
  CamReqCOM_printf("SetupSessionCommandExec [DEBUG] p_notify_to_upper:%p \n",
                   static_cast<void*>(p_notify_to_upper));
  if (eKind == camses::SetupKind::kPlayBack) camses::PrintPlayBackSession(*this, sInfo);
  CCamRequesterNotify* pUpper = camses::UpperLayer(*this);
  if (pUpper == nullptr) {
    CamReqCOM_printf("SetupSessionCommandExec [Error] p_notify_to_upper=NULL\n");
  } else {
    rtpses::NotifyRtpStream(*pUpper, *this, iUid, sInfo.bTaken ? sInfo.aucHead : nullptr, false);
  }
  // A completed set-up ends the wait for a UID from outside.
  m_KELCtrlFlag = 0;
  return 0;
}

int Rtp::KelSetupSessionCommandExec(char* pcReply) {
  return camses::RecorderLogin(*this, *this, kRtpPolicy, pcReply);
}

int Rtp::StreamStartCommandExec() {
  return camses::RunExchange(*this, *this, kRtpPolicy, rtpses::kStartSpec);
}

int Rtp::StreamStopCommandExec() {
  return camses::RunStopExchange(*this, *this, kRtpPolicy, rtpses::kStopSpec);
}

int Rtp::KelStreamStopCommandExec(char* pcReply) {
  return camses::RecorderLogout(*this, *this, kRtpPolicy, pcReply);
}

int Rtp::SendKeepAliveCommandExec() {
  return camses::RunKeepAlive(*this, *this, kRtpPolicy, rtpses::kKeepAliveSpec);
}

int Rtp::SendPBKeepAliveCommandExec() {
  return camses::RunPlayBackKeepAlive(*this, *this, kRtpPolicy, rtpses::kPlayBackKeepAliveSpec);
}

int Rtp::SendCamPresetCommandExec() {
  return camses::RunExchange(*this, *this, kRtpPolicy, rtpses::kPresetSpec);
}

int Rtp::SendCamIframInstCommandExec() {
  return camses::RunExchange(*this, *this, kRtpPolicy, rtpses::kIframeSpec);
}
