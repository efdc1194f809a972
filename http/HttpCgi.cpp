// CCamRequester_Cgi_Kobu_Http: the CGI command builders and the reply
// scanners. The lines and the scanning rules live in cgi/; this class adds
// only what is its own: no preset bound, its refusal texts.
#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CamCgiCommon.h"
#include "CamHttpCommands.h"
#include "CamReplyScan.h"
#include "CamSessionSocket.h"

namespace {

// Camera type 13 takes any preset over this requester.
constexpr cgi::PresetPolicy kHttpPresetPolicy = {
    -1, "CmdSet_CamPreset [ERROR] Unknown Camera Type enum#[%d]\n"};

constexpr const char* kLogOutWrongType = "CmdSet_KelLogOut [ERROR] usCameraType = %d\n";

}  // namespace

int CCamRequester_Cgi_Kobu_Http::CmdSet_QuillonUidUtilRelease(char* pcDst) {
  return cgi::HttpQuillonUidRelease(*this, *this, pcDst);
}

int CCamRequester_Cgi_Kobu_Http::SearchNumber(char* pcText, char* pcKey, int* piValue) {
  return cgi::ScanNumber(*this, *this, pcText, pcKey, piValue);
}

int CCamRequester_Cgi_Kobu_Http::SerachString(char* pcText, char* pcKey, char* pcStopChars,
                                              char* pcOut, int iOutSize) {
  return cgi::ScanString(*this, pcText, pcKey, pcStopChars, pcOut, iOutSize);
}

int CCamRequester_Cgi_Kobu_Http::CheckCamInfo_RcvData(char* pcText) {
  return cgi::CheckCamInfoReply(*this, *this, pcText, camtr::SelfAddressOf(psSession));
}

int CCamRequester_Cgi_Kobu_Http::CheckKeepAlive_RcvData(char* pcText) {
  return cgi::CheckKeepAliveReply(*this, *this, pcText);
}

int CCamRequester_Cgi_Kobu_Http::CheckPlayMode_RcvData(char* pcText) {
  return cgi::CheckPlayModeReply(*this, *this, pcText);
}

int CCamRequester_Cgi_Kobu_Http::CheckAudioBitrate(char* pcText, char* pcKey, int* piValue) {
  return cgi::CheckAudioBitrateValue(*this, pcText, pcKey, piValue);
}

int CCamRequester_Cgi_Kobu_Http::CheckAudioEnable(char* pcText, char* pcKey, int* piValue) {
  return cgi::CheckAudioEnableValue(*this, *this, pcText, pcKey, piValue);
}

int CCamRequester_Cgi_Kobu_Http::CheckKelStrKey(char* pcText, char* pcKey) {
  return cgi::CheckRecorderKey(*this, *this, pcText, pcKey);
}

int CCamRequester_Cgi_Kobu_Http::CheckDelivery(char* pcText, char* pcKey, char* pcOut,
                                               int iOutSize) {
  return cgi::CheckDeliveryMode(*this, *this, pcText, pcKey, pcOut, iOutSize);
}

int CCamRequester_Cgi_Kobu_Http::GetMultiUniSetup(char* pcText) {
  return cgi::SetupMultiUni(*this, *this, pcText, camtr::PeerAddressOf(psSession));
}

int CCamRequester_Cgi_Kobu_Http::GetSelfAddress(sockaddr_storage* psAddr) {
  return cgi::StoreSelfAddress(*this, *this, psAddr);
}

int CCamRequester_Cgi_Kobu_Http::CmdSet_SessionCmmand(char* pcDst) {
  return cgi::HttpSessionCommand(*this, *this, pcDst);
}

int CCamRequester_Cgi_Kobu_Http::CmdSet_KeepAlive(char* pcDst) {
  return cgi::HttpKeepAliveCommand(*this, *this, pcDst);
}

int CCamRequester_Cgi_Kobu_Http::CmdSet_JpegDistribute(char* pcDst, int iStartStop) {
  return cgi::HttpJpegDistribute(*this, *this, pcDst, iStartStop);
}

int CCamRequester_Cgi_Kobu_Http::CmdSet_AudioDistribute(char* pcDst, int iStartStop) {
  return cgi::HttpAudioDistribute(*this, *this, pcDst, iStartStop);
}

int CCamRequester_Cgi_Kobu_Http::CmdSet_CamPreset(char* pcDst) {
  return cgi::BuildCamPreset(*this, *this, pcDst, kHttpPresetPolicy);
}

int CCamRequester_Cgi_Kobu_Http::CmdSet_KelLogIn(char* pcDst) {
  return cgi::BuildKelLogIn(*this, *this, pcDst);
}

int CCamRequester_Cgi_Kobu_Http::CmdSet_KelLogOut(char* pcDst) {
  return cgi::BuildKelLogOut(*this, *this, pcDst, kLogOutWrongType);
}

char* CCamRequester_Cgi_Kobu_Http::ChangeData_KelEncrypt(char* pcKey, char* pcData, char* pcOut) {
  return cgi::KelEncrypt64(pcKey, pcData, pcOut);
}
