// CCamRequester_Cgi_Kobu_Rtp: the concrete requester for MPEG-4, H.264 and G.726 streams that the
// camera delivers over RTP. The request thread of CCamRequester calls the session commands; each
// command is a guard over iConnectStatus that calls an Exec worker.
#ifndef CCAMREQUESTER_CGI_KOBU_RTP_H
#define CCAMREQUESTER_CGI_KOBU_RTP_H

#include "CCamRequester.h"
#include "CamRequesterFields.h"

class CAMREQ_API CCamRequester_Cgi_Kobu_Rtp : public virtual CCamRequester,
                                              public CamRequesterFields {
 public:
  CCamRequester_Cgi_Kobu_Rtp();
  ~CCamRequester_Cgi_Kobu_Rtp() override;

  // ---- session (RtpSession.cpp)
  int InitSessionCommand() override;
  int CleanUpSessionCommand() override;
  int OpenSessionCommand() override;
  int SetupSessionCommand() override;
  int SendCamPresetCommand() override;
  int StreamStartCommand() override;
  int StreamStopCommand() override;
  int KelStreamStopCommand() override;
  int SendKeepAliveCommand() override;
  int SendPBKeepAliveCommand() override;
  int SendKeepAliveCommandForAudio() override;
  int ChangeStatus(int iEvent) override;
  int KeepStreamStartCmd() override;
  int SetKelInfoFlagCheck() override;
  int SetKeeAliveCount(int iCount) override;
  int SendCamIframInstCommand() override;
  int SetupSessionCommandExec() override;
  int KelSetupSessionCommandExec(char* pcReply) override;
  int StreamStartCommandExec() override;
  int StreamStopCommandExec() override;
  int KelStreamStopCommandExec(char* pcReply) override;
  int SendKeepAliveCommandExec() override;
  int SendPBKeepAliveCommandExec() override;
  int SendCamPresetCommandExec() override;
  int SetKelInfoFlagCheckExec() override;
  int SendCamIframInstCommandExec() override;
  int UidInvalid() override;
  int CheckStreamStart(unsigned short usCameraType, int iCmdType) override;

  // ---- transport (RtpTransport.cpp)
  int CloseSessionCommand() override;
  int OpenSessionCommandExec() override;
  int SetUrl(char* pcUrl) override;
  int AddHeader() override;
  int DoRequest(_InetBuffer* psBuf) override;
  int DoRequest2(_InetBuffer* psBuf) override;
  int JudgeExceptAddress(char* pcAddress, char* pcPattern) override;
  int CheckProxyExcept() override;

  // ---- cgi (RtpCgi.cpp)
  int SearchNumber(char* pcText, char* pcKey, int* piValue) override;
  int SerachString(char* pcText, char* pcKey, char* pcStopChars, char* pcOut,
                   int iOutSize) override;
  int CheckCamInfo_RcvData(char* pcText) override;
  int CheckKeepAlive_RcvData(char* pcText) override;
  int CheckPlayMode_RcvData(char* pcText) override;
  int CheckAudioBitrate(char* pcText, char* pcKey, int* piValue) override;
  int CheckAudioEnable(char* pcText, char* pcKey, int* piValue) override;
  int CheckKelStrKey(char* pcText, char* pcKey) override;
  int CheckDelivery(char* pcText, char* pcKey, char* pcOut, int iOutSize) override;
  int GetMultiUniSetup(char* pcText) override;
  int GetSelfAddress(sockaddr_storage* psAddr) override;
  int CmdSet_SessionCmmand(char* pcDst) override;
  int CmdSet_KeepAlive(char* pcDst) override;
  int CmdSet_AudioDistribute(char* pcDst, int iStartStop) override;
  int CmdSet_CamPreset(char* pcDst) override;
  int CmdSet_KelLogIn(char* pcDst) override;
  int CmdSet_KelLogOut(char* pcDst) override;
  char* ChangeData_KelEncrypt(char* pcKey, char* pcData, char* pcOut) override;
  int CmdSet_IframInst(char* pcDst) override;
  int CmdSet_H264_IframInst(char* pcDst) override;
  int CmdSet_Mpeg4Distribute(char* pcDst, int iStartStop) override;
  int CmdSet_H264Distribute(char* pcDst, int iStartStop) override;

  // ---- parameters (RtpParameters.cpp)
  int SetParameter(long lKind, const void* pParam, int iSize) override;
  int GetInfo(long lKind, void* pParam) override;
  int SetCtrlFlag_KEL(const void* pParam) override;
  int GetCtrlFlag_KEL(void* pParam) override;
  int GetParameterSameUIDGroup_KEL(void* pParam) override;
  int SetKeepAliveFlag_KEL(const void* pParam) override;
  int GetKeepAliveFlag_KEL(void* pParam) override;
  int ChangeStatus_KEL(const void* pParam) override;
  int GetInfoKelInfo(void* pParam) override;
  int GetInfoCamInfo(void* pParam) override;
  int SetParameterIpAddress(const void* pParam) override;
  int SetParameterHttpPort(const void* pParam) override;
  int SetParameterCmdType(const void* pParam) override;
  int SetParameterUid(const void* pParam) override;
  int SetParameterCallback(const void* pParam) override;
  int SetParameterAuth(const void* pParam) override;
  int SetParameterProxy(const void* pParam) override;
  int SetParameterCamType(const void* pParam) override;
  int SetParameterPreset(const void* pParam) override;
  int SetParameterSelCh(const void* pParam) override;
  int SetParameterScreenPos(const void* pParam) override;
  int SetParameterKelInfo(const void* pParam) override;
  int SetParameterSameUIDGroup_KEL(const void* pParam) override;
  int SetParameterPlayMode(const void* pParam) override;
  int SetParameterStatusChange(const void* pParam) override;
  int SetParameterDebugInfo(const void* pParam) override;
  int SetParameterCamNo(const void* pParam) override;
  virtual int SetParameterRtpPort(const void* pParam);
  virtual int SetParameterStream(const void* pParam);

  int CamReqCOM_printf(const char* pcFormat, ...) override __attribute__((format(printf, 2, 3)));
};

#endif
