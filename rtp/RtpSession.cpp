// CCamRequester_Cgi_Kobu_Rtp: the session commands. The guards, the status
// engine, the tick counters and the stream check are the shared engine's;
// this file holds the RTP requester's policy: its tables, its command types
// and its words.
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamSessionGuards.h"
#include "CamStatus.h"
#include "RtpPolicy.h"

namespace rtpses {

void ForgetRtpUid(CCamRequester& rReq, CamRequesterFields& rF);

namespace {

using camses::EarlyRestartKind;
using camses::PresetKind;
using camses::SetupKind;
using camses::StreamCheckKind;
using camses::TableKind;
using camses::UidGoneKind;

}  // namespace

constexpr camses::SessionPolicy kRtpPolicy = [] {
  camses::SessionPolicy p{};
  p.pcClassName = "CCamRequester_Cgi_Kobu_Rtp";
  p.pcWireWord = "Rtp";
  p.pcLineWord = "RTP";
  p.pcStallWord = "RTP";
  p.pcStopRefusalName = "StreamStopCommandExec";
  p.pVideoTable = &camses::kRtpVideoTable;
  p.pAudioTable = &camses::kRtpAudioTable;
  // One row per command type; the rows past iCmdTypeCount are never read
  // (RuleFor answers kUndefinedCmdType).
  p.iCmdTypeCount = 5;
  // 0 H.264 live
  p.asRules[0] = camses::OpenedCmdType(
      TableKind::kVideo, SetupKind::kLive, PresetKind::kRun, StreamCheckKind::kQuery,
      EarlyRestartKind::kCheck, UidGoneKind::kNotify, "UidInvalid [DEBUG] H.264:\n", nullptr);
  // 1 G.726 audio: no set-up, no preset; a recorder's audio is not checked
  p.asRules[1] = camses::OpenedCmdType(TableKind::kAudio, SetupKind::kNone, PresetKind::kSkip,
                                       StreamCheckKind::kAudio, EarlyRestartKind::kNever,
                                       UidGoneKind::kKeep, "UidInvalid [DEBUG] G.726:\n", nullptr);
  // 2 MPEG-4 live
  p.asRules[2] = camses::OpenedCmdType(
      TableKind::kVideo, SetupKind::kLive, PresetKind::kRun, StreamCheckKind::kQuery,
      EarlyRestartKind::kCheck, UidGoneKind::kNotify, "UidInvalid [DEBUG] MPEG4:\n", nullptr);
  // 3 MPEG-4 play-back: set up only, delivered by the recorder on its own
  p.asRules[3] = camses::OpenedCmdType(
      TableKind::kVideo, SetupKind::kPlayBack, PresetKind::kUndefined, StreamCheckKind::kUndefined,
      EarlyRestartKind::kUndefined, UidGoneKind::kUndefined, nullptr, "MPEG4_PLAY");
  // 4 H.264 play-back
  p.asRules[4] = camses::OpenedCmdType(
      TableKind::kVideo, SetupKind::kPlayBack, PresetKind::kUndefined, StreamCheckKind::kUndefined,
      EarlyRestartKind::kUndefined, UidGoneKind::kUndefined, nullptr, "H264_PLAY");
  p.pcSetupResetLine =
      "CCamRequester_Cgi_Kobu_Rtp::SetupSessionCommand [DEBUG] ConnectErrorReset\n";
  p.pcStreamStopNop = nullptr;     // a stop outside STOP is silent
  p.pcStreamCheckStart = nullptr;  // the stream check has no first line
  p.pcRecorderAudioCheck = "CheckStreamStart [DEBUG] CAM_REQUESTER_CMD_G726_RTP\n";
  p.pcRecorderRequestFailed = "KelSetupSessionCommandExec [Error] DoRequest failed\n";
  p.bClosesPushOnStop = false;        // there is no push session
  p.bStopReleasesQuillonUid = false;  // no Quillon UID to release
  p.iUidLineRefusedResult = -1;       // a refused session line fails the set-up
  p.pfnUidGone = ForgetRtpUid;
  return p;
}();

}  // namespace rtpses

using Rtp = CCamRequester_Cgi_Kobu_Rtp;
using rtpses::kRtpPolicy;

int Rtp::InitSessionCommand() {
  return 0;
}

int Rtp::CleanUpSessionCommand() {
  return 0;
}

int Rtp::OpenSessionCommand() {
  return camses::OpenSession(*this, *this, kRtpPolicy);
}

int Rtp::SetupSessionCommand() {
  return camses::SetupSession(*this, *this, kRtpPolicy);
}

int Rtp::SendCamPresetCommand() {
  return camses::MoveToPreset(*this, *this, kRtpPolicy);
}

int Rtp::StreamStartCommand() {
  return camses::StartStreamWhenReady(*this);
}

int Rtp::StreamStopCommand() {
  return camses::StopStream(*this, kRtpPolicy);
}

int Rtp::KelStreamStopCommand() {
  return camses::StopRecorderStream(*this, kRtpPolicy);
}

int Rtp::SendKeepAliveCommand() {
  return camses::KeepAlive(*this);
}

int Rtp::SendPBKeepAliveCommand() {
  return camses::PlayBackKeepAlive(*this, *this);
}

int Rtp::SendKeepAliveCommandForAudio() {
  return camses::KeepAliveForAudio(*this, *this, kRtpPolicy);
}

int Rtp::ChangeStatus(int iEvent) {
  return camses::StepStatus(*this, *this, kRtpPolicy, iEvent);
}

int Rtp::KeepStreamStartCmd() {
  return camses::KeepStreamStart(*this, *this);
}

int Rtp::SetKelInfoFlagCheck() {
  return camses::EarlyRestartCheck(*this, *this, kRtpPolicy);
}

int Rtp::SetKelInfoFlagCheckExec() {
  return camses::EarlyRestartAllowed(*this);
}

int Rtp::SetKeeAliveCount(int iCount) {
  return camses::SetKeepAliveCount(*this, iCount);
}

int Rtp::SendCamIframInstCommand() {
  return camses::SendIframeInterval(*this);
}

int Rtp::UidInvalid() {
  return camses::ForgetUid(*this, *this, kRtpPolicy);
}

int Rtp::CheckStreamStart(unsigned short usCamType, int iType) {
  return camses::CheckStreamStart(*this, *this, kRtpPolicy, usCamType, iType);
}
