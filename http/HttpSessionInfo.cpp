// CCamRequester_Cgi_Kobu_Http: what the upper layer learns of the session
// besides the push itself: the UID after a set-up (with the head of the
// session record for play-back), and UID -1 when the UID is forgotten.
#include "HttpSessionInfo.h"

#include <cstring>
#include <ctime>

#include "CCamRequester_Cgi_Kobu_Http.h"

namespace httpreq {

SessionInfoRecord::SessionInfoRecord(const HTTP_SESSION* psSession) {
  // The record's host pointer names the library's own copy of the text,
  // which goes with the session; the copy points at a text of its own so
  // that the upper layer can read it after the session was closed.
  std::memcpy(aucHead, psSession, HTTP_SESSION_INFO_SIZE);
  if (psSession->pcHost != nullptr) {
    std::strncpy(acHost, psSession->pcHost, sizeof(acHost) - 1);
  }
  char* pcHost = acHost;
  std::memcpy(aucHead, &pcHost, sizeof(pcHost));
}

const HTTP_SESSION* SessionInfoRecord::Session() const {
  return reinterpret_cast<const HTTP_SESSION*>(aucHead);
}

bool MayNotify(const CamRequesterFields& rF) {
  return rF.p_notify_to_upper != nullptr && rF.m_iDestruct != 1;
}

}  // namespace httpreq

int CCamRequester_Cgi_Kobu_Http::UidInvalid() {
  if (m_iDestruct == 1) {
    CamReqCOM_printf("UidInvalid [DEBUG] :DESTRUCT\n");
    iUid = -1;
    return 0;
  }
  switch (iCmdType) {
    case CAM_REQUESTER_CMD_JPEG_HTTP:
      CamReqCOM_printf("UidInvalid [DEBUG] JPEG:\n");
      if (iUid == -1) return 0;  // the upper layer was told already
      iUid = -1;
      if (httpreq::MayNotify(*this)) {
        p_notify_to_upper->NotifySessionInfo(-1, psSession, iPos, iCmdType);
      } else {
        CamReqCOM_printf("UidInvalid [Error] p_notify_to_upper=NULL\n");
      }
      return 0;
    case CAM_REQUESTER_CMD_G726_HTTP:
      // Audio keeps its UID: the camera still knows it.
      CamReqCOM_printf("UidInvalid [DEBUG] G.726HTTP:\n");
      return 0;
    default:
      CamReqCOM_printf("UidInvalid [Error] iCmdType=%d\n", iCmdType);
      return 0;
  }
}
