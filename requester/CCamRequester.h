// The abstract requester. One object drives one camera stream: it owns the
// request thread, the thread's message queue, the keep-alive and start
// switches and the connection-error accounting; the concrete classes do the
// camera work through the virtual operations below.
//
// The class interface is part of the device's ABI: the virtual operations
// and the fields stand in this order (slots 0..117), do not reorder them.
#ifndef CCAM_REQUESTER_H
#define CCAM_REQUESTER_H

#include <pthread.h>
#include <stdint.h>
#include <sys/socket.h>

#include <atomic>

#include "CamRequesterExport.h"
#include "CamRequesterParam.h"
#include "kxhttp.h"

class CAMREQ_API CCamRequester {
 public:
  CCamRequester();

  // ---- slots 0..42 -------------------------------------------------------
  virtual ~CCamRequester() = 0;                                             // 0, 1
  virtual int Initialize(long lIndex);                                      // 2
  virtual int EnableKeepAlive();                                            // 3
  virtual int DiableKeepAlive();                                            // 4
  virtual int EnablePBKeepAlive();                                          // 5
  virtual int DiablePBKeepAlive();                                          // 6
  virtual unsigned char GetKeepAlive();                                     // 7
  virtual unsigned char GetPBKeepAlive();                                   // 8
  virtual int RequestStart();                                               // 9
  virtual int RequestStop();                                                // 10
  virtual int RequestStartRetry();                                          // 11
  virtual int RequestPresetPosition();                                      // 12
  virtual int RequestPBStart();                                             // 13
  virtual int RequestPBStop();                                              // 14
  virtual int InitSessionCommand() = 0;                                     // 15
  virtual int CleanUpSessionCommand() = 0;                                  // 16
  virtual int OpenSessionCommand() = 0;                                     // 17
  virtual int SetupSessionCommand() = 0;                                    // 18
  virtual int CloseSessionCommand() = 0;                                    // 19
  virtual int SendCamPresetCommand() = 0;                                   // 20
  virtual int StreamStartCommand() = 0;                                     // 21
  virtual int StreamStopCommand() = 0;                                      // 22
  virtual int KelStreamStopCommand() = 0;                                   // 23
  virtual int SendKeepAliveCommand() = 0;                                   // 24
  virtual int SendPBKeepAliveCommand() = 0;                                 // 25
  virtual int SendKeepAliveCommandForAudio() = 0;                           // 26
  virtual int SetParameter(long lKind, const void* pParam, int iSize) = 0;  // 27
  virtual int ChangeStatus(int iEvent) = 0;                                 // 28
  virtual int GetInfo(long lKind, void* pParam) = 0;                        // 29
  virtual int KeepStreamStartCmd() = 0;                                     // 30
  virtual int SetKelInfoFlagCheck() = 0;                                    // 31
  virtual int SetKeeAliveCount(int iCount) = 0;                             // 32
  virtual int SendCamIframInstCommand();                                    // 33
  virtual int StopChildThread();                                            // 34
  virtual int ThisIsAudio();                                                // 35
  virtual int SetCameraNumber(int iNumber);                                 // 36
  virtual int ConnectError(int iPos, char* pcAddress, int iThreshold);      // 37
  virtual int ConnectErrorReset(int iPos, char* pcAddress);                 // 38
  virtual int ConnectErrorInitialize();                                     // 39
  virtual int PlayModeStop(int iPos, char* pcAddress, int iPlayMode);       // 40
  virtual int SndMsg_GetUID(int iResult, int iPos);                         // 41
  virtual unsigned int GetChildThreadIndex();                               // 42

  // ---- slots 43..116: defaults that only log that they were called -------
  virtual int OpenSessionCommandExec();                               // 43
  virtual int SetupSessionCommandExec();                              // 44
  virtual int KelSetupSessionCommandExec(char* pcReply);              // 45
  virtual int StreamStartCommandExec();                               // 46
  virtual int QuillonChgModeCommandExec();                            // 47
  virtual int StreamStopCommandExec();                                // 48
  virtual int KelStreamStopCommandExec(char* pcReply);                // 49
  virtual int CloseSessionPush();                                     // 50
  virtual int SendKeepAliveCommandExec();                             // 51
  virtual int SendPBKeepAliveCommandExec();                           // 52
  virtual int SendCamPresetCommandExec();                             // 53
  virtual int SetKelInfoFlagCheckExec();                              // 54
  virtual int QuillonUidUtilRelease(char* pcReply);                   // 55
  virtual int CmdSet_QuillonUidUtilRelease(char* pcDst);              // 56
  virtual int SearchNumber(char* pcText, char* pcKey, int* piValue);  // 57
  virtual int SerachString(char* pcText, char* pcKey, char* pcStopChars, char* pcOut,
                           int iOutSize);                                           // 58
  virtual int SendCamIframInstCommandExec();                                        // 59
  virtual int SetCtrlFlag_KEL(const void* pParam);                                  // 60
  virtual int GetCtrlFlag_KEL(void* pParam);                                        // 61
  virtual int GetParameterSameUIDGroup_KEL(void* pParam);                           // 62
  virtual int SetKeepAliveFlag_KEL(const void* pParam);                             // 63
  virtual int GetKeepAliveFlag_KEL(void* pParam);                                   // 64
  virtual int ChangeStatus_KEL(const void* pParam);                                 // 65
  virtual int GetInfoKelInfo(void* pParam);                                         // 66
  virtual int GetInfoCamInfo(void* pParam);                                         // 67
  virtual int CheckCamInfo_RcvData(char* pcText);                                   // 68
  virtual int CheckKeepAlive_RcvData(char* pcText);                                 // 69
  virtual int CheckPlayMode_RcvData(char* pcText);                                  // 70
  virtual int CheckAudioBitrate(char* pcText, char* pcKey, int* piValue);           // 71
  virtual int CheckAudioEnable(char* pcText, char* pcKey, int* piValue);            // 72
  virtual int CheckKelStrKey(char* pcText, char* pcKey);                            // 73
  virtual int CheckDelivery(char* pcText, char* pcKey, char* pcOut, int iOutSize);  // 74
  virtual int GetMultiUniSetup(char* pcText);                                       // 75
  virtual int GetSelfAddress(sockaddr_storage* psAddr);                             // 76
  virtual int UidInvalid();                                                         // 77
  virtual int SetUrl(char* pcUrl);                                                  // 78
  virtual int AddHeader();                                                          // 79
  virtual int DoRequest(_InetBuffer* psBuf);                                        // 80
  virtual int DoRequest2(_InetBuffer* psBuf);                                       // 81
  virtual int JudgeExceptAddress(char* pcAddress, char* pcPattern);                 // 82
  virtual int CheckProxyExcept();                                                   // 83
  virtual int CmdSet_SessionCmmand(char* pcDst);                                    // 84
  virtual int CmdSet_KeepAlive(char* pcDst);                                        // 85
  virtual int CmdSet_JpegDistribute(char* pcDst, int iStartStop);                   // 86
  virtual int CmdSet_AudioDistribute(char* pcDst, int iStartStop);                  // 87
  virtual int CmdSet_CamPreset(char* pcDst);                                        // 88
  virtual int CmdSet_KelLogIn(char* pcDst);                                         // 89
  virtual int CmdSet_KelLogOut(char* pcDst);                                        // 90
  virtual char* ChangeData_KelEncrypt(char* pcKey, char* pcData, char* pcOut);      // 91
  virtual int CheckStreamStart(unsigned short usCameraType, int iCmdType);          // 92
  virtual int CmdSet_IframInst(char* pcDst);                                        // 93
  virtual int CmdSet_H264_IframInst(char* pcDst);                                   // 94
  virtual int CmdSet_Mpeg4Distribute(char* pcDst, int iStartStop);                  // 95
  virtual int CmdSet_H264Distribute(char* pcDst, int iStartStop);                   // 96
  virtual int SetParameterIpAddress(const void* pParam);                            // 97
  virtual int SetParameterHttpPort(const void* pParam);                             // 98
  virtual int SetParameterCmdType(const void* pParam);                              // 99
  virtual int SetParameterUid(const void* pParam);                                  // 100
  virtual int SetParameterCallback(const void* pParam);                             // 101
  virtual int SetParameterAuth(const void* pParam);                                 // 102
  virtual int SetParameterProxy(const void* pParam);                                // 103
  virtual int SetParameterFrate(const void* pParam);                                // 104
  virtual int SetParameterResolution(const void* pParam);                           // 105
  virtual int SetParameterCamType(const void* pParam);                              // 106
  virtual int SetParameterPreset(const void* pParam);                               // 107
  virtual int SetParameterSelCh(const void* pParam);                                // 108
  virtual int SetParameterScreenPos(const void* pParam);                            // 109
  virtual int SetParameterKelInfo(const void* pParam);                              // 110
  virtual int SetParameterSameUIDGroup_KEL(const void* pParam);                     // 111
  virtual int SetParameterPlayMode(const void* pParam);                             // 112
  virtual int SetParameterStatusChange(const void* pParam);                         // 113
  virtual int SetParameterDebugInfo(const void* pParam);                            // 114
  virtual int SetParameterHttpError(const void* pParam);                            // 115
  virtual int SetParameterCamNo(const void* pParam);                                // 116

  // ---- slot 117 ------------------------------------------------------------
  virtual int CamReqCOM_printf(const char* pcFormat, ...)
      __attribute__((format(printf, 2, 3)));  // 117

  // The request thread's entry: calls RequestThreadMain on the object.
  static void* RequestThreadMainEntry(void* pvObject);
  int RequestThreadMain();

  // ---- fields, in this order ------------------------------------------------
  // Flags that the caller's thread and the request thread share are atomics
  // of the stated width: lock-free on/off signals without data races.
  std::atomic<uint32_t> iChildThreadIndex;  // thread identity, queue address ("TINDEX")
  int32_t iCamNo;                           // camera number of the UID message
  std::atomic<int32_t> iConnectStatus;      // session state, CAM_HTTP_STS_*
  // 1 = repeat the stream start; set and served under Retrymutex, also read
  // outside it (the HTTP requester's stream start).
  std::atomic<int32_t> iStartRetry;
  int32_t iLastUidResult;             // last flag sent in a UID message
  int32_t m_iErrorCount;              // consecutive connection errors
  uint8_t m_fErrorStat;               // 1 while an error is reported upward
  int32_t iCameraNumber;              // 1..262 for the alarm report, 0 = none
  std::atomic<uint8_t> bAudio;        // 1 when this requester carries audio
  pthread_t tChildThread;             // the request thread
  uint8_t bThreadCreated;             // 1 after the thread was created
  std::atomic<uint8_t> bKeepAlive;    // live keep-alive switch
  std::atomic<uint8_t> bPBKeepAlive;  // play-back keep-alive switch
  std::atomic<uint8_t> bStartReq;     // 1 while a live stream is wanted
  std::atomic<uint8_t> bPBStartReq;   // 1 while a play-back stream is wanted
  int32_t iMsgQueId;                  // queue id of the request thread
  int32_t iRestartCount;              // idle rounds spent in status 1
  pthread_mutex_t ThreadWaitmutex;    // start-up handshake
  pthread_cond_t cThreadReadyCond;    // signalled once when the thread is ready
  pthread_mutex_t Retrymutex;         // guards iStartRetry and the retry step
  std::atomic<uint8_t> bThreadLoop;   // 1 while the request thread is to run
  uint8_t bThreadReady;               // start-up handshake flag (ThreadWaitmutex)

 private:
  int PostRequest(int iCode, const char* pcName, bool bAlwaysPrintOut);
  void DispatchMessage(int iCode);
  void RunIdleRound();
  bool RunRestart();
  bool RunRetryStep();
  void ExitThread();
  void SignalThreadReady();
};

#endif
