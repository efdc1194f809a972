// Prints the device ABI of the requester's public classes as text, one fact
// a line: the table slot of every virtual operation of CCamRequester and of
// the notification class, the offset and width of every field of
// CCamRequester, and the sizes of the parameter records. abi/check-abi.sh
// compares the lines with the committed baseline, so that a moved, added or
// removed operation or field cannot land unnoticed.
//
// It needs only the headers: under the Itanium C++ ABI a pointer to a
// virtual member function holds 1 + the byte offset of its slot, and a
// pointer to a data member holds the member's offset.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "CCamRequester.h"
#include "CamRequesterParam.h"

namespace {

template <typename Pmf>
long SlotOf(Pmf pfn) {
  static_assert(sizeof(Pmf) == 2 * sizeof(void*), "Itanium member-function pointer");
  uintptr_t auWords[2];
  std::memcpy(auWords, &pfn, sizeof(auWords));
  return static_cast<long>((auWords[0] - 1) / sizeof(void*));
}

template <typename Pdm>
long OffsetOf(Pdm pdm) {
  static_assert(sizeof(Pdm) == sizeof(ptrdiff_t), "Itanium data-member pointer");
  ptrdiff_t iOffset;
  std::memcpy(&iOffset, &pdm, sizeof(iOffset));
  return static_cast<long>(iOffset);
}

}  // namespace

#define SLOT(name) std::printf("slot CCamRequester %3ld %s\n", SlotOf(&CCamRequester::name), #name)
#define NOTIFY_SLOT(name) \
  std::printf("slot CCamRequesterNotify %3ld %s\n", SlotOf(&CCamRequesterNotify::name), #name)
#define FIELD(name)                                                                 \
  std::printf("field CCamRequester %4ld %3zu %s\n", OffsetOf(&CCamRequester::name), \
              sizeof(static_cast<CCamRequester*>(nullptr)->name), #name)
#define SIZE(type) std::printf("size %s %zu\n", #type, sizeof(type))

int main() {
  // Slots 0 and 1 are the destructors; abi/check-abi.sh reads the table's
  // length from the shared object.
  SLOT(Initialize);
  SLOT(EnableKeepAlive);
  SLOT(DiableKeepAlive);
  SLOT(EnablePBKeepAlive);
  SLOT(DiablePBKeepAlive);
  SLOT(GetKeepAlive);
  SLOT(GetPBKeepAlive);
  SLOT(RequestStart);
  SLOT(RequestStop);
  SLOT(RequestStartRetry);
  SLOT(RequestPresetPosition);
  SLOT(RequestPBStart);
  SLOT(RequestPBStop);
  SLOT(InitSessionCommand);
  SLOT(CleanUpSessionCommand);
  SLOT(OpenSessionCommand);
  SLOT(SetupSessionCommand);
  SLOT(CloseSessionCommand);
  SLOT(SendCamPresetCommand);
  SLOT(StreamStartCommand);
  SLOT(StreamStopCommand);
  SLOT(KelStreamStopCommand);
  SLOT(SendKeepAliveCommand);
  SLOT(SendPBKeepAliveCommand);
  SLOT(SendKeepAliveCommandForAudio);
  SLOT(SetParameter);
  SLOT(ChangeStatus);
  SLOT(GetInfo);
  SLOT(KeepStreamStartCmd);
  SLOT(SetKelInfoFlagCheck);
  SLOT(SetKeeAliveCount);
  SLOT(SendCamIframInstCommand);
  SLOT(StopChildThread);
  SLOT(ThisIsAudio);
  SLOT(SetCameraNumber);
  SLOT(ConnectError);
  SLOT(ConnectErrorReset);
  SLOT(ConnectErrorInitialize);
  SLOT(PlayModeStop);
  SLOT(SndMsg_GetUID);
  SLOT(GetChildThreadIndex);
  SLOT(OpenSessionCommandExec);
  SLOT(SetupSessionCommandExec);
  SLOT(KelSetupSessionCommandExec);
  SLOT(StreamStartCommandExec);
  SLOT(QuillonChgModeCommandExec);
  SLOT(StreamStopCommandExec);
  SLOT(KelStreamStopCommandExec);
  SLOT(CloseSessionPush);
  SLOT(SendKeepAliveCommandExec);
  SLOT(SendPBKeepAliveCommandExec);
  SLOT(SendCamPresetCommandExec);
  SLOT(SetKelInfoFlagCheckExec);
  SLOT(QuillonUidUtilRelease);
  SLOT(CmdSet_QuillonUidUtilRelease);
  SLOT(SearchNumber);
  SLOT(SerachString);
  SLOT(SendCamIframInstCommandExec);
  SLOT(SetCtrlFlag_KEL);
  SLOT(GetCtrlFlag_KEL);
  SLOT(GetParameterSameUIDGroup_KEL);
  SLOT(SetKeepAliveFlag_KEL);
  SLOT(GetKeepAliveFlag_KEL);
  SLOT(ChangeStatus_KEL);
  SLOT(GetInfoKelInfo);
  SLOT(GetInfoCamInfo);
  SLOT(CheckCamInfo_RcvData);
  SLOT(CheckKeepAlive_RcvData);
  SLOT(CheckPlayMode_RcvData);
  SLOT(CheckAudioBitrate);
  SLOT(CheckAudioEnable);
  SLOT(CheckKelStrKey);
  SLOT(CheckDelivery);
  SLOT(GetMultiUniSetup);
  SLOT(GetSelfAddress);
  SLOT(UidInvalid);
  SLOT(SetUrl);
  SLOT(AddHeader);
  SLOT(DoRequest);
  SLOT(DoRequest2);
  SLOT(JudgeExceptAddress);
  SLOT(CheckProxyExcept);
  SLOT(CmdSet_SessionCmmand);
  SLOT(CmdSet_KeepAlive);
  SLOT(CmdSet_JpegDistribute);
  SLOT(CmdSet_AudioDistribute);
  SLOT(CmdSet_CamPreset);
  SLOT(CmdSet_KelLogIn);
  SLOT(CmdSet_KelLogOut);
  SLOT(ChangeData_KelEncrypt);
  SLOT(CheckStreamStart);
  SLOT(CmdSet_IframInst);
  SLOT(CmdSet_H264_IframInst);
  SLOT(CmdSet_Mpeg4Distribute);
  SLOT(CmdSet_H264Distribute);
  SLOT(SetParameterIpAddress);
  SLOT(SetParameterHttpPort);
  SLOT(SetParameterCmdType);
  SLOT(SetParameterUid);
  SLOT(SetParameterCallback);
  SLOT(SetParameterAuth);
  SLOT(SetParameterProxy);
  SLOT(SetParameterFrate);
  SLOT(SetParameterResolution);
  SLOT(SetParameterCamType);
  SLOT(SetParameterPreset);
  SLOT(SetParameterSelCh);
  SLOT(SetParameterScreenPos);
  SLOT(SetParameterKelInfo);
  SLOT(SetParameterSameUIDGroup_KEL);
  SLOT(SetParameterPlayMode);
  SLOT(SetParameterStatusChange);
  SLOT(SetParameterDebugInfo);
  SLOT(SetParameterHttpError);
  SLOT(SetParameterCamNo);
  SLOT(CamReqCOM_printf);
  NOTIFY_SLOT(NotifyRtpStream);
  NOTIFY_SLOT(NotifySessionInfo);
  NOTIFY_SLOT(GetStreamState);
  NOTIFY_SLOT(NotifyCamRequesterHandle);
  FIELD(iChildThreadIndex);
  FIELD(iCamNo);
  FIELD(iConnectStatus);
  FIELD(iStartRetry);
  FIELD(iLastUidResult);
  FIELD(m_iErrorCount);
  FIELD(m_fErrorStat);
  FIELD(iCameraNumber);
  FIELD(bAudio);
  FIELD(tChildThread);
  FIELD(bThreadCreated);
  FIELD(bKeepAlive);
  FIELD(bPBKeepAlive);
  FIELD(bStartReq);
  FIELD(bPBStartReq);
  FIELD(iMsgQueId);
  FIELD(iRestartCount);
  FIELD(ThreadWaitmutex);
  FIELD(cThreadReadyCond);
  FIELD(Retrymutex);
  FIELD(bThreadLoop);
  FIELD(bThreadReady);
  SIZE(void*);
  SIZE(CCamRequester);
  SIZE(CAM_UIDMSG);
  SIZE(CAM_UID_PARAM);
  SIZE(CAM_AUTH_PARAM);
  SIZE(CAM_PROXY_PARAM);
  SIZE(CAM_TYPE_PARAM);
  SIZE(CAM_KEL_INFO);
  SIZE(CAM_CAMINFO_PARAM);
  SIZE(HTTP_SESSION);
  SIZE(_InetBuffer);
  return 0;
}
