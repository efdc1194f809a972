// CCamRequester_Cgi_Kobu_Rtp: the session commands and their Exec workers.
#include "CCamRequester_Cgi_Kobu_Rtp.h"

int CCamRequester_Cgi_Kobu_Rtp::InitSessionCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "InitSessionCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CleanUpSessionCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CleanUpSessionCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::OpenSessionCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "OpenSessionCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetupSessionCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetupSessionCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SendCamPresetCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SendCamPresetCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::StreamStartCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "StreamStartCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::StreamStopCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "StreamStopCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::KelStreamStopCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "KelStreamStopCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SendKeepAliveCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SendKeepAliveCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SendPBKeepAliveCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SendPBKeepAliveCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SendKeepAliveCommandForAudio() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SendKeepAliveCommandForAudio");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::ChangeStatus(int iEvent) {
  (void)iEvent;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "ChangeStatus");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::KeepStreamStartCmd() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "KeepStreamStartCmd");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetKelInfoFlagCheck() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetKelInfoFlagCheck");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetKeeAliveCount(int iCount) {
  (void)iCount;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetKeeAliveCount");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SendCamIframInstCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SendCamIframInstCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetupSessionCommandExec() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetupSessionCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::KelSetupSessionCommandExec(char* pcReply) {
  (void)pcReply;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "KelSetupSessionCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::StreamStartCommandExec() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "StreamStartCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::StreamStopCommandExec() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "StreamStopCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::KelStreamStopCommandExec(char* pcReply) {
  (void)pcReply;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "KelStreamStopCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SendKeepAliveCommandExec() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SendKeepAliveCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SendPBKeepAliveCommandExec() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SendPBKeepAliveCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SendCamPresetCommandExec() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SendCamPresetCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SetKelInfoFlagCheckExec() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SetKelInfoFlagCheckExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::SendCamIframInstCommandExec() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "SendCamIframInstCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::UidInvalid() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "UidInvalid");
  return -1;
}

int CCamRequester_Cgi_Kobu_Rtp::CheckStreamStart(unsigned short usCameraType, int iCmdType) {
  (void)usCameraType;
  (void)iCmdType;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Rtp::%s [Error] not built yet\n", "CheckStreamStart");
  return -1;
}
