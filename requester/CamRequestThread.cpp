// The request thread: takes the upper layer's requests from its queue one at
// a time, turns each into a fixed sequence of session commands, and in its
// idle rounds sends keep-alives, watches the stream and rebuilds a failed
// session.
#include <pthread.h>
#include <sys/time.h>

#include "CCamRequester.h"
#include "CamConstants.h"
#include "CamHeldFormat.h"
#include "CamScoped.h"
#include "kxcom.h"

namespace {

constexpr suseconds_t kReceiveWaitUsec = 100000;  // the heartbeat of all idle work

using SessionStep = int (CCamRequester::*)();

// One step of a sequence; bCheckFirst: stop the sequence here when the
// thread is being stopped.
struct Step {
  bool bCheckFirst;
  SessionStep pfnStep;
};

enum class Wanted { kNone, kLiveOn, kLiveOff, kPlayBackOn, kPlayBackOff };

struct Dispatch {
  const char* pcLine;   // null: undefined code
  int iSplitId;         // time-measurement id, 0 = none
  Wanted eWanted;       // request flag set before the steps
  int iEvent;           // ChangeStatus event raised first (checked), -1 = none
  Step asSteps[4];      // steps after the event, until the first null
  bool bKeepAliveTail;  // keep-alive right after a started stream
  bool bCheckAtEnd;     // one more check before the time measurement ends
};

constexpr const char* kStartLine = "RequestThreadMain [DEBUG] START command TINDEX=%x\n";
constexpr const char* kStopLine = "RequestThreadMain [DEBUG] STOP command TINDEX=%x\n";

// Whether a step first checks that the thread is not being stopped.
constexpr bool kCheckFirst = true;
constexpr bool kRunAnyway = false;

// Indexed by the queue command code; code 2 is not used and reads as undefined.
// clang-format off
const Dispatch kDispatchTable[] = {
    /* 0 START */
    {kStartLine, 1, Wanted::kLiveOn, CAM_HTTP_EVT_START,
     {{kCheckFirst, &CCamRequester::OpenSessionCommand},
      {kCheckFirst, &CCamRequester::SetupSessionCommand},
      {kCheckFirst, &CCamRequester::SendCamPresetCommand},
      {kCheckFirst, &CCamRequester::StreamStartCommand}},
     /*bKeepAliveTail=*/true, /*bCheckAtEnd=*/false},
    /* 1 STOP */
    {kStopLine, 2, Wanted::kLiveOff, CAM_HTTP_EVT_STOP,
     {{kCheckFirst, &CCamRequester::StreamStopCommand}},
     /*bKeepAliveTail=*/false, /*bCheckAtEnd=*/false},
    /* 2 */
    {nullptr, 0, Wanted::kNone, -1, {},
     /*bKeepAliveTail=*/false, /*bCheckAtEnd=*/false},
    /* 3 Dummy: only wakes the thread */
    {"RequestThreadMain [DEBUG] Dummy command TINDEX=%x\n", 0, Wanted::kNone, -1, {},
     /*bKeepAliveTail=*/false, /*bCheckAtEnd=*/false},
    /* 4 PRESET: runs even when the thread is being stopped */
    {"RequestThreadMain [DEBUG] PRESET command TINDEX=%x\n", 0, Wanted::kNone, -1,
     {{kRunAnyway, &CCamRequester::SendCamPresetCommand}},
     /*bKeepAliveTail=*/false, /*bCheckAtEnd=*/false},
    /* 5 play-back start: setting the session up is the whole start */
    {kStartLine, 13, Wanted::kPlayBackOn, CAM_HTTP_EVT_START,
     {{kCheckFirst, &CCamRequester::OpenSessionCommand},
      {kCheckFirst, &CCamRequester::SetupSessionCommand}},
     /*bKeepAliveTail=*/false, /*bCheckAtEnd=*/true},
    /* 6 play-back stop */
    {kStopLine, 14, Wanted::kPlayBackOff, CAM_HTTP_EVT_STOP,
     {{kCheckFirst, &CCamRequester::KelStreamStopCommand}},
     /*bKeepAliveTail=*/false, /*bCheckAtEnd=*/false},
};
// clang-format on
constexpr int kDispatchCount = sizeof(kDispatchTable) / sizeof(kDispatchTable[0]);

}  // namespace

// ---- posting side (the upper layer's thread) -------------------------------

int CCamRequester::PostRequest(int iCode, const char* pcName, bool bAlwaysPrintOut) {
  KXCOM_MSGBUF* psBuf = KXCOM_CreateMsgBuf_Asy(iCode, 0, 0);
  if (psBuf == nullptr) {
    COM_printf("%s [ERROR] Not Buffer Created. NG. \n", pcName);
  } else if (_COM_MsgSndMain(kRequestModule, iChildThreadIndex, psBuf) != KXCOM_LIB_OK) {
    COM_printf("%s [ERROR] Message Send NG [!= KXCOM_LIB_OK]\n", pcName);
    KXCOM_FreeMsgBuf_Asy(psBuf);
  }
  if (psBuf != nullptr || bAlwaysPrintOut) {
    COM_printf("%s [DEBUG] OUT=%x.%p \n", pcName, iChildThreadIndex.load(),
               static_cast<void*>(psBuf));
  }
  return psBuf != nullptr ? 0 : -1;
}

int CCamRequester::RequestStart() {
  PostRequest(CAM_REQ_CMD_START, "RequestStart", true);
  return 0;
}

int CCamRequester::RequestStop() {
  PostRequest(CAM_REQ_CMD_STOP, "RequestStop", true);
  return 0;
}

int CCamRequester::RequestPBStart() {
  PostRequest(CAM_REQ_CMD_PBSTART, "RequestPBStart", true);
  return 0;
}

int CCamRequester::RequestPBStop() {
  PostRequest(CAM_REQ_CMD_PBSTOP, "RequestPBStop", true);
  return 0;
}

int CCamRequester::RequestPresetPosition() {
  return PostRequest(CAM_REQ_CMD_PRESET, "RequestPresetPosition", false);
}

// Nothing in the library asks for a retry; iStartRetry and Retrymutex stay
// for a later caller that sets the flag under the lock.
int CCamRequester::RequestStartRetry() {
  return 0;
}

// ---- thread side -----------------------------------------------------------

void* CCamRequester::RequestThreadMainEntry(void* pvObject) {
  static_cast<CCamRequester*>(pvObject)->RequestThreadMain();
  return nullptr;
}

void CCamRequester::SignalThreadReady() {
  pthread_mutex_lock(&ThreadWaitmutex);
  bThreadReady = 1;
  pthread_cond_signal(&cThreadReadyCond);
  pthread_mutex_unlock(&ThreadWaitmutex);
}

int CCamRequester::RequestThreadMain() {
  COM_printf("RequestThreadMain[DEBUG]ChildThread START!! TINDEX=%x\n", iChildThreadIndex.load());
  bThreadLoop = 1;
  iMsgQueId = KXCOM_InitMsg_Asy(kRequestModule, iChildThreadIndex);
  if (iMsgQueId < 0) {
    COM_printf("RequestThreadMain[Error]COM_MsgInit fail=%d!!\n", iMsgQueId);
    SignalThreadReady();
    return 0;
  }
  SignalThreadReady();
  COM_printf("RequestThreadMain [DEBUG] COM_MsgInit() success=%d. \n", iMsgQueId);

  while (bThreadLoop != 0) {
    struct timeval sWait = {0, kReceiveWaitUsec};
    KXCOM_MSGBUF* psMsg = _COM_MsgRcvMain(0, sWait, iMsgQueId);
    if (psMsg != nullptr) {
      DispatchMessage(static_cast<int>(psMsg->ulCode));
      COM_printf("RequestThreadMain [DEBUG] COM_MsgBufFree=%p\n", static_cast<void*>(psMsg));
      if (KXCOM_FreeMsgBuf_Asy(psMsg) != KXCOM_LIB_OK) {
        COM_printf("RequestThreadMain [ERROR] MemFree Error\n");
      }
      // Idle work is never done in a round that received a message.
      continue;
    }
    RunIdleRound();
  }
  ExitThread();
  return 0;
}

void CCamRequester::DispatchMessage(int iCode) {
  if (iCode < 0 || iCode >= kDispatchCount || kDispatchTable[iCode].pcLine == nullptr) {
    COM_printf("RequestThreadMain [Error] Undefined command=%d\n", iCode);
    return;
  }
  const Dispatch& sEntry = kDispatchTable[iCode];
  COM_SPLIT_TIME sRec = {0, 0};
  if (sEntry.iSplitId != 0) COM_SplitTime_Start(sEntry.iSplitId, &sRec);
  camfmt::ComPrintHeld(sEntry.pcLine, iChildThreadIndex.load());

  switch (sEntry.eWanted) {
    case Wanted::kLiveOn:
      bStartReq = 1;
      break;
    case Wanted::kLiveOff:
      bStartReq = 0;
      break;
    case Wanted::kPlayBackOn:
      bPBStartReq = 1;
      break;
    case Wanted::kPlayBackOff:
      bPBStartReq = 0;
      break;
    case Wanted::kNone:
      break;
  }

  if (sEntry.iEvent >= 0) {
    if (bThreadLoop == 0) return;
    ChangeStatus(sEntry.iEvent);
  }
  for (const Step& sStep : sEntry.asSteps) {
    if (sStep.pfnStep == nullptr) break;
    if (sStep.bCheckFirst && bThreadLoop == 0) return;
    (this->*sStep.pfnStep)();
  }
  if (sEntry.bKeepAliveTail && bKeepAlive == 1 && bStartReq == 1) {
    if (bThreadLoop == 0) return;
    SetKeeAliveCount(kKeepAliveTicks);
    SendKeepAliveCommand();
  }
  if (sEntry.bCheckAtEnd && bThreadLoop == 0) return;
  if (sEntry.iSplitId != 0) {
    COM_SPLIT_TIME sCopy = sRec;
    COM_SplitTime_End(sEntry.iSplitId, &sCopy);
  }
}

void CCamRequester::RunIdleRound() {
  if (bKeepAlive == 1 && bStartReq == 1) {
    if (bThreadLoop == 0) return;
    SendKeepAliveCommand();
  }
  if (bStartReq == 1) {
    if (bThreadLoop == 0) return;
    KeepStreamStartCmd();
  }
  if (iConnectStatus == CAM_HTTP_STS_ERROR) {
    ++iRestartCount;
    // The recorder check may ask for the rebuild before the 30th round.
    if (iRestartCount >= kRestartRounds || SetKelInfoFlagCheck() == 0) {
      if (!RunRestart()) return;
    }
  } else {
    iRestartCount = 0;
  }
  RunRetryStep();
}

// Rebuilds the session; false when the thread is being stopped.
bool CCamRequester::RunRestart() {
  COM_printf("RequestThreadMain [DEBUG] RESTART TINDEX=%x\n", iChildThreadIndex.load());
  // A restart always resumes the live stream, whatever was running.
  bStartReq = 1;
  iRestartCount = 0;
  if (bThreadLoop == 0) return false;
  ChangeStatus(CAM_HTTP_EVT_STOP);
  StreamStopCommand();
  ChangeStatus(CAM_HTTP_EVT_START);
  OpenSessionCommand();
  if (bThreadLoop == 0) return false;
  SetupSessionCommand();
  if (bThreadLoop == 0) return false;
  SendCamPresetCommand();
  if (bThreadLoop == 0) return false;
  StreamStartCommand();
  if (bKeepAlive == 1 && bStartReq == 1) {
    if (bThreadLoop == 0) return false;
    SetKeeAliveCount(kKeepAliveTicks);
    SendKeepAliveCommand();
  }
  return true;
}

// Serves a start retry under Retrymutex; false when the thread is being stopped.
bool CCamRequester::RunRetryStep() {
  if (bThreadLoop == 0) return false;
  camses::RetryLock sLock(Retrymutex);
  if (iStartRetry == 1) {
    StreamStartCommand();
    if (bKeepAlive == 1 && bStartReq == 1) {
      if (bThreadLoop == 0) return false;
      SetKeeAliveCount(kKeepAliveTicks);
      SendKeepAliveCommand();
    }
    iStartRetry = 0;
  }
  return true;
}

void CCamRequester::ExitThread() {
  COM_printf("RequestThreadMain [DEBUG] Msg Free & Thread Delete\n");
  // Messages still queued are not handled.
  COM_FreeBufEntry(kRequestModule, iChildThreadIndex);
  KXCOM_DeleteMsgQue_Asy(iMsgQueId, kRequestModule, iChildThreadIndex);
  KXCOM_DestroyMsg_Asy();
  CloseSessionCommand();
  CloseSessionPush();
}
