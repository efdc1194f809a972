#include "Events.h"

#include <cstring>

#include "CamRequesterParam.h"
#include "almsnd.h"
#include "kxcom.h"

namespace camreq {

namespace {
// One receive waits at most this long, so that a stop is seen soon.
constexpr long kReceiveSliceUs = 100000;
}  // namespace

bool Events::Start() {
  ALMSND_SetObserver(&Events::Observe, this);
  m_iQueue = KXCOM_InitMsg_Asy(CAM_UIDMSG_DESTINATION, 0);
  if (m_iQueue < 0) {
    ALMSND_SetObserver(nullptr, nullptr);
    return false;
  }
  m_bRun = true;
  m_receiver = std::thread(&Events::ReceiveLoop, this);
  return true;
}

void Events::Stop() {
  if (m_bRun.exchange(false)) {
    ALMSND_SetObserver(nullptr, nullptr);
    // Unbinding ends a receive that waits; the loop then sees the flag.
    KXCOM_DeleteMsgQue_Asy(m_iQueue, CAM_UIDMSG_DESTINATION, 0);
    m_receiver.join();
    m_iQueue = -1;
  }
}

std::vector<AlarmReport> Events::Alarms() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_alarms;
}

std::vector<UidMessage> Events::UidMessages() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_uids;
}

void Events::Observe(int iCode, int iCamera, const char* pcAddress, int iPosition,
                     void* pvContext) {
  auto* self = static_cast<Events*>(pvContext);
  std::lock_guard<std::mutex> lock(self->m_mutex);
  self->m_alarms.push_back(
      {Now(), iCode, iCamera, pcAddress != nullptr ? pcAddress : "", iPosition});
}

void Events::ReceiveLoop() {
  while (m_bRun) {
    KXCOM_MSGBUF* psMsg = _COM_MsgRcvMain(0, timeval{0, kReceiveSliceUs}, m_iQueue);
    if (psMsg == nullptr) continue;
    if (psMsg->ulCode == CAM_UIDMSG_ID) {
      const void* pvPayload = _COM_STR_PTR(psMsg, static_cast<int>(sizeof(CAM_UIDMSG)));
      if (pvPayload != nullptr) {
        CAM_UIDMSG sMsg;
        std::memcpy(&sMsg, pvPayload, sizeof(sMsg));
        std::lock_guard<std::mutex> lock(m_mutex);
        m_uids.push_back({Now(), sMsg.iPos + 1, sMsg.iCamNo, sMsg.iResult});
      }
    }
    KXCOM_FreeMsgBuf_Asy(psMsg);
  }
}

}  // namespace camreq
