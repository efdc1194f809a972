// CCamRequester_Cgi_Kobu_Rtp: the CGI command builders and the reply
// scanners. The lines and the scanning rules live in cgi/; this class adds
// only what is its own: its preset bound, its refusal texts.
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamCgiCommon.h"
#include "CamReplyScan.h"
#include "CamRtpCommands.h"
#include "CamSessionSocket.h"

namespace {

// Camera type 13 takes presets 1 to 16 over this requester.
constexpr cgi::PresetPolicy kRtpPresetPolicy = {
    16, "CmdSet_CamPreset [ERROR] unsupport Camera type enum#[%d]\n"};

// The logout refusal shares the text of the stream-stop execution.
constexpr const char* kLogOutWrongType = "KelStreamStopCommandExec [ERROR] usCameraType = %d\n";

}  // namespace

int CCamRequester_Cgi_Kobu_Rtp::SearchNumber(char* pcText, char* pcKey, int* piValue) {
  return cgi::ScanNumber(*this, *this, pcText, pcKey, piValue);
}

int CCamRequester_Cgi_Kobu_Rtp::SerachString(char* pcText, char* pcKey, char* pcStopChars,
                                             char* pcOut, int iOutSize) {
  return cgi::ScanString(*this, pcText, pcKey, pcStopChars, pcOut, iOutSize);
}

int CCamRequester_Cgi_Kobu_Rtp::CheckCamInfo_RcvData(char* pcText) {
  return cgi::CheckCamInfoReply(*this, *this, pcText, camtr::SelfAddressOf(psSession));
}

int CCamRequester_Cgi_Kobu_Rtp::CheckKeepAlive_RcvData(char* pcText) {
  return cgi::CheckKeepAliveReply(*this, *this, pcText);
}

int CCamRequester_Cgi_Kobu_Rtp::CheckPlayMode_RcvData(char* pcText) {
  return cgi::CheckPlayModeReply(*this, *this, pcText);
}

int CCamRequester_Cgi_Kobu_Rtp::CheckAudioBitrate(char* pcText, char* pcKey, int* piValue) {
  return cgi::CheckAudioBitrateValue(*this, pcText, pcKey, piValue);
}

int CCamRequester_Cgi_Kobu_Rtp::CheckAudioEnable(char* pcText, char* pcKey, int* piValue) {
  return cgi::CheckAudioEnableValue(*this, *this, pcText, pcKey, piValue);
}

int CCamRequester_Cgi_Kobu_Rtp::CheckKelStrKey(char* pcText, char* pcKey) {
  return cgi::CheckRecorderKey(*this, *this, pcText, pcKey);
}

int CCamRequester_Cgi_Kobu_Rtp::CheckDelivery(char* pcText, char* pcKey, char* pcOut,
                                              int iOutSize) {
  return cgi::CheckDeliveryMode(*this, *this, pcText, pcKey, pcOut, iOutSize);
}

int CCamRequester_Cgi_Kobu_Rtp::GetMultiUniSetup(char* pcText) {
  return cgi::SetupMultiUni(*this, *this, pcText, camtr::PeerAddressOf(psSession));
}

int CCamRequester_Cgi_Kobu_Rtp::GetSelfAddress(sockaddr_storage* psAddr) {
  return cgi::StoreSelfAddress(*this, *this, psAddr);
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_SessionCmmand(char* pcDst) {
  return cgi::RtpSessionCommand(*this, *this, pcDst);
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_KeepAlive(char* pcDst) {
  return cgi::RtpKeepAliveCommand(*this, *this, pcDst);
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_AudioDistribute(char* pcDst, int iStartStop) {
  return cgi::RtpAudioDistribute(*this, *this, pcDst, iStartStop);
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_CamPreset(char* pcDst) {
  return cgi::BuildCamPreset(*this, *this, pcDst, kRtpPresetPolicy);
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_KelLogIn(char* pcDst) {
  return cgi::BuildKelLogIn(*this, *this, pcDst);
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_KelLogOut(char* pcDst) {
  return cgi::BuildKelLogOut(*this, *this, pcDst, kLogOutWrongType);
}

char* CCamRequester_Cgi_Kobu_Rtp::ChangeData_KelEncrypt(char* pcKey, char* pcData, char* pcOut) {
  return cgi::KelEncrypt64(pcKey, pcData, pcOut);
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_IframInst(char* pcDst) {
  return cgi::RtpMpeg4IframeCommand(*this, *this, pcDst);
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_H264_IframInst(char* pcDst) {
  return cgi::RtpH264IframeCommand(*this, *this, pcDst);
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_Mpeg4Distribute(char* pcDst, int iStartStop) {
  return cgi::RtpMpeg4Distribute(*this, *this, pcDst, iStartStop);
}

int CCamRequester_Cgi_Kobu_Rtp::CmdSet_H264Distribute(char* pcDst, int iStartStop) {
  return cgi::RtpH264Distribute(*this, *this, pcDst, iStartStop);
}
