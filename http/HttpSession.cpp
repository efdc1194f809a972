// CCamRequester_Cgi_Kobu_Http: the session commands and their Exec workers.
#include "CCamRequester_Cgi_Kobu_Http.h"

int CCamRequester_Cgi_Kobu_Http::InitSessionCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "InitSessionCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::CleanUpSessionCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "CleanUpSessionCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::OpenSessionCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "OpenSessionCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetupSessionCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "SetupSessionCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SendCamPresetCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "SendCamPresetCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::StreamStopCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "StreamStopCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::KelStreamStopCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "KelStreamStopCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SendKeepAliveCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "SendKeepAliveCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SendPBKeepAliveCommand() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "SendPBKeepAliveCommand");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SendKeepAliveCommandForAudio() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "SendKeepAliveCommandForAudio");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::ChangeStatus(int iEvent) {
  (void)iEvent;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "ChangeStatus");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::KeepStreamStartCmd() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "KeepStreamStartCmd");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetKelInfoFlagCheck() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "SetKelInfoFlagCheck");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetKeeAliveCount(int iCount) {
  (void)iCount;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "SetKeeAliveCount");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetupSessionCommandExec() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "SetupSessionCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::KelSetupSessionCommandExec(char* pcReply) {
  (void)pcReply;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "KelSetupSessionCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::QuillonChgModeCommandExec() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "QuillonChgModeCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::StreamStopCommandExec() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "StreamStopCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::KelStreamStopCommandExec(char* pcReply) {
  (void)pcReply;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "KelStreamStopCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SendKeepAliveCommandExec() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "SendKeepAliveCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SendPBKeepAliveCommandExec() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "SendPBKeepAliveCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SendCamPresetCommandExec() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "SendCamPresetCommandExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::SetKelInfoFlagCheckExec() {
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "SetKelInfoFlagCheckExec");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::QuillonUidUtilRelease(char* pcReply) {
  (void)pcReply;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n",
                   "QuillonUidUtilRelease");
  return -1;
}

int CCamRequester_Cgi_Kobu_Http::CheckStreamStart(unsigned short usCameraType, int iCmdType) {
  (void)usCameraType;
  (void)iCmdType;
  CamReqCOM_printf("CCamRequester_Cgi_Kobu_Http::%s [Error] not built yet\n", "CheckStreamStart");
  return -1;
}
