// The abstract requester: construction, start-up of the request thread,
// stop, destruction and the keep-alive switches.
#include "CCamRequester.h"

#include <pthread.h>

#include "CamConstants.h"
#include "kxcom.h"

namespace {
// The upper layer's thread index is moved past the indices the device keeps.
constexpr long kThreadIndexOffset = 16;
}  // namespace

CCamRequester::CCamRequester()
    : iChildThreadIndex(0),
      iCamNo(0),
      iConnectStatus(0),
      iStartRetry(0),
      iLastUidResult(10),
      m_iErrorCount(0),
      m_fErrorStat(0),
      iCameraNumber(0),
      bAudio(0),
      tChildThread(),
      bThreadCreated(0),
      bKeepAlive(0),
      bPBKeepAlive(0),
      bStartReq(0),
      bPBStartReq(0),
      iMsgQueId(-1),
      iRestartCount(0),
      ThreadWaitmutex(),
      cThreadReadyCond(),
      Retrymutex(),
      bThreadLoop(0),
      bThreadReady(0) {
  pthread_mutex_init(&ThreadWaitmutex, nullptr);
  pthread_cond_init(&cThreadReadyCond, nullptr);
  pthread_mutex_init(&Retrymutex, nullptr);
  // The base's own: no derived part exists yet.
  CCamRequester::ConnectErrorInitialize();
}

CCamRequester::~CCamRequester() {
  // The base's own: the derived part is already gone.
  CCamRequester::StopChildThread();
  int ret = pthread_mutex_destroy(&ThreadWaitmutex);
  if (ret != 0) COM_printf("~CCamRequester:: [Error] ThreadWaitmutex Delete ret=%x\n", ret);
  ret = pthread_mutex_destroy(&Retrymutex);
  if (ret != 0) COM_printf("~CCamRequester:: [Error] Retrymutex Delete ret=%x\n", ret);
  // The condition variable is deliberately left as it is.
}

int CCamRequester::Initialize(long lIndex) {
  iChildThreadIndex = static_cast<uint32_t>(lIndex + kThreadIndexOffset);
  COM_printf("Initialize [DEBUG] iChildThreadIndex=%x. \n", iChildThreadIndex.load());
  if (bThreadCreated == 1) {
    COM_printf("Initialize [Error]Thread has already run!\n");
    return 0;
  }
  // Every thread gives its own ready signal: a thread started again after
  // StopChildThread must not be taken as ready by the signal of the last one.
  pthread_mutex_lock(&ThreadWaitmutex);
  bThreadReady = 0;
  pthread_mutex_unlock(&ThreadWaitmutex);
  if (pthread_create(&tChildThread, nullptr, RequestThreadMainEntry, this) == 0) {
    bThreadCreated = 1;
  } else {
    COM_printf("Initialize [Error]pthread_create Error.\n");
  }
  // Waits even after a failed creation: the caller then never returns, as
  // the device's design has it.
  pthread_mutex_lock(&ThreadWaitmutex);
  while (bThreadReady == 0) pthread_cond_wait(&cThreadReadyCond, &ThreadWaitmutex);
  pthread_mutex_unlock(&ThreadWaitmutex);
  return 0;
}

int CCamRequester::StopChildThread() {
  if (bThreadCreated == 0) {
    bThreadCreated = 0;
    return 0;
  }
  COM_printf("~CCamRequester [DEBUG] wait thread stop. \n");
  bThreadLoop = 0;
  // A Dummy message wakes a thread blocked in its receive at once; without
  // it the thread still wakes from its receive time-out.
  KXCOM_MSGBUF* psBuf = KXCOM_CreateMsgBuf_Asy(CAM_REQ_CMD_DUMMY, 0, 0);
  if (psBuf == nullptr) {
    COM_printf("%s [ERROR] Not Buffer Created. NG. \n", "StopChildThread");
  } else if (_COM_MsgSndMain(kRequestModule, iChildThreadIndex, psBuf) != KXCOM_LIB_OK) {
    COM_printf("%s [ERROR] Message Send NG [!= KXCOM_LIB_OK]\n", "StopChildThread");
    KXCOM_FreeMsgBuf_Asy(psBuf);
  }
  pthread_join(tChildThread, nullptr);
  bThreadCreated = 0;
  return 0;
}

unsigned int CCamRequester::GetChildThreadIndex() {
  return iChildThreadIndex;
}

int CCamRequester::EnableKeepAlive() {
  bKeepAlive = 1;
  return 0;
}

int CCamRequester::DiableKeepAlive() {
  bKeepAlive = 0;
  return 0;
}

int CCamRequester::EnablePBKeepAlive() {
  bPBKeepAlive = 1;
  return 0;
}

int CCamRequester::DiablePBKeepAlive() {
  bPBKeepAlive = 0;
  return 0;
}

unsigned char CCamRequester::GetKeepAlive() {
  return bKeepAlive;
}

unsigned char CCamRequester::GetPBKeepAlive() {
  return bPBKeepAlive;
}
