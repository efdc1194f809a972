// CCamRequester_Cgi_Kobu_Http: the session commands. The guards, the status
// engine, the tick counters and the stream check are the shared engine's;
// this file holds the HTTP requester's policy: its tables, its command types
// and its words. Its own stream start (in READY and RUN, with the retry) is
// in HttpPush.cpp.
#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CamSessionGuards.h"
#include "CamStatus.h"
#include "HttpPolicy.h"

namespace httpses {

namespace {

using camses::EarlyRestartKind;
using camses::PresetKind;
using camses::SetupKind;
using camses::StreamCheckKind;
using camses::TableKind;
using camses::UidGoneKind;

}  // namespace

constexpr camses::SessionPolicy kHttpPolicy = [] {
  camses::SessionPolicy p{};
  p.pcClassName = "CCamRequester_Cgi_Kobu_Http";
  p.pcWireWord = "Http";
  p.pcLineWord = "Http";
  p.pcStallWord = "HTTP";
  // The stop refuses play-back with the start's words.
  p.pcStopRefusalName = "StreamStartCommandExec";
  p.pVideoTable = &camses::kHttpVideoTable;
  p.pAudioTable = &camses::kHttpAudioTable;
  // One row per command type; the rows past iCmdTypeCount are never read
  // (RuleFor answers kUndefinedCmdType).
  p.iCmdTypeCount = 3;
  // 0 JPEG live: a push handed to the upper layer
  p.asRules[0] = camses::OpenedCmdType(TableKind::kVideo, SetupKind::kLive, PresetKind::kRun,
                                       StreamCheckKind::kQuery, EarlyRestartKind::kCheck,
                                       UidGoneKind::kNotify, "UidInvalid [DEBUG] JPEG:\n", nullptr);
  // 1 G.726 over HTTP: no set-up, no preset, the UID kept
  p.asRules[1] = camses::OpenedCmdType(
      TableKind::kAudio, SetupKind::kNone, PresetKind::kSkip, StreamCheckKind::kAudio,
      EarlyRestartKind::kNever, UidGoneKind::kKeep, "UidInvalid [DEBUG] G.726HTTP:\n", nullptr);
  // 2 JPEG play-back: set up only; no preset, no push
  p.asRules[2] = camses::OpenedCmdType(
      TableKind::kVideo, SetupKind::kPlayBack, PresetKind::kUndefined, StreamCheckKind::kUndefined,
      EarlyRestartKind::kUndefined, UidGoneKind::kUndefined, nullptr, "JPEG_PLAY");
  p.pcSetupResetLine = nullptr;  // the set-up's reset of the connection errors is silent
  p.pcStreamStopNop = "CCamRequester_Cgi_Kobu_Http::StreamStopCommand [DEBGU] NOP\n";
  p.pcStreamCheckStart = "CheckStreamStart [DEBUG] CheckStreamStart Start\n";
  p.pcRecorderAudioCheck = "CheckStreamStart [DEBUG] CAM_REQUESTER_CMD_G726_HTTP\n";
  p.pcRecorderRequestFailed = "KelSetupSessionCommandExec [Error] DoRequest failed\n";
  p.bClosesPushOnStop = true;        // both stops also close the push session
  p.bStopReleasesQuillonUid = true;  // the stop releases a Quillon UID
  p.iUidLineRefusedResult = 0;       // a refused session line skips the set-up
  p.pfnUidGone = ForgetHttpUid;
  return p;
}();

}  // namespace httpses

using Http = CCamRequester_Cgi_Kobu_Http;
using httpses::kHttpPolicy;

int Http::InitSessionCommand() {
  return 0;
}

int Http::CleanUpSessionCommand() {
  return 0;
}

int Http::OpenSessionCommand() {
  return camses::OpenSession(*this, *this, kHttpPolicy);
}

int Http::SetupSessionCommand() {
  return camses::SetupSession(*this, *this, kHttpPolicy);
}

int Http::SendCamPresetCommand() {
  return camses::MoveToPreset(*this, *this, kHttpPolicy);
}

int Http::StreamStopCommand() {
  return camses::StopStream(*this, kHttpPolicy);
}

int Http::KelStreamStopCommand() {
  return camses::StopRecorderStream(*this, kHttpPolicy);
}

int Http::SendKeepAliveCommand() {
  return camses::KeepAlive(*this);
}

int Http::SendPBKeepAliveCommand() {
  return camses::PlayBackKeepAlive(*this, *this);
}

int Http::SendKeepAliveCommandForAudio() {
  return camses::KeepAliveForAudio(*this, *this, kHttpPolicy);
}

int Http::ChangeStatus(int iEvent) {
  return camses::StepStatus(*this, *this, kHttpPolicy, iEvent);
}

int Http::KeepStreamStartCmd() {
  return camses::KeepStreamStart(*this, *this);
}

int Http::SetKelInfoFlagCheck() {
  return camses::EarlyRestartCheck(*this, *this, kHttpPolicy);
}

int Http::SetKeeAliveCount(int iCount) {
  return camses::SetKeepAliveCount(*this, iCount);
}

int Http::SetKelInfoFlagCheckExec() {
  return camses::EarlyRestartAllowed(*this);
}

int Http::UidInvalid() {
  return camses::ForgetUid(*this, *this, kHttpPolicy);
}

int Http::CheckStreamStart(unsigned short usCamType, int iType) {
  return camses::CheckStreamStart(*this, *this, kHttpPolicy, usCamType, iType);
}
