// camreq's notification object, the upper layer's side of one requester:
// it receives the RTP stream where the requester says it will come, reads
// the server push the requester hands over, and answers the stream-state
// query from what really arrives.
#ifndef CAMREQ_NOTIFY_H
#define CAMREQ_NOTIFY_H

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "CamRequesterParam.h"
#include "Options.h"
#include "PushReader.h"
#include "Record.h"
#include "RtpReceiver.h"

namespace camreq {

struct StateQuery {
  double dTime = 0;
  int iAnswer = 0;
};

class CamreqNotify : public CCamRequesterNotify {
 public:
  // sSaveDir: where JPEG pictures go (empty: nowhere).
  CamreqNotify(const CameraSpec& rSpec, int iPosition, const std::string& sSaveDir);
  ~CamreqNotify();
  CamreqNotify(const CamreqNotify&) = delete;
  CamreqNotify& operator=(const CamreqNotify&) = delete;

  // RTP class: opens the receive socket on this side's address for the
  // camera; its port is the requester's RTP port. False with *psError.
  bool Prepare(const std::string& sInterface, int iRtpPort, std::string* psError);
  int RtpPort() const { return m_rtp.Port(); }
  void Start();
  // Lets go of a push handle still held: nothing reads it from now on.
  void LetGoOfPush() { m_push.LetGo(false); }
  void Stop();

  // --sdp: the file for this stream; rewritten whenever what it says changes.
  void SetSdpFile(const std::string& sPath);
  void UpdateSdp();

  void NotifyRtpStream(int iUid, const void* pSessionInfo, int iRtpPort, const char* cIpAddr,
                       int iPos, int iCmdType, int iSelectChNo, int iAudioBitrate, int iAudioEnable,
                       const char* cMultiAddr, int iUniPort, int iAudioInPort) override;
  void NotifySessionInfo(int iUid, const void* pSessionInfo, int iPos, int iCmdType) override;
  int GetStreamState(unsigned short usCameraType, int iCmdType) override;
  // The same answer for camreq itself, not kept among the requester's queries.
  int StreamStateNow() const;
  void NotifyCamRequesterHandle(int iUid, HTTP_SESSION* psHandle) override;

  // A step of camreq's own as the upper layer, kept with the notifications.
  void NoteUpper(const std::string& sText);

  bool IsRtp() const { return m_bRtp; }
  RtpStats Rtp() const { return m_rtp.Snapshot(); }
  PushStats Push() const { return m_push.Snapshot(); }
  std::vector<Notice> Notices() const;
  std::vector<StateQuery> Queries() const;
  int Uid() const;
  // The audio enable of the last RTP stream notification (1 when none came).
  int AudioEnable() const;
  // The audio port of a manual unicast set-up (aInPort=), 0 for the others.
  int ManualAudioPort() const;
  // Audio over RTP has no notification of its own: camreq listens where the
  // stream will come when it posts the start.
  void ExpectAudio(int iPort) { m_rtp.Follow("", iPort); }
  // Counts the set-ups announced (RTP stream or session information with a
  // UID); a play-back run is reported once for each.
  int Announcements() const;
  std::string SdpError() const;

 private:
  void Note(const std::string& sText);

  const bool m_bRtp;
  const int m_iPosition;
  const int m_iCmdType;
  RtpReceiver m_rtp;
  PushReader m_push;
  mutable std::mutex m_mutex;
  std::vector<Notice> m_notices;
  std::vector<StateQuery> m_queries;
  int m_iUid = -1;
  int m_iAudioEnable = 1;
  int m_iManualAudioPort = 0;
  int m_iAnnouncements = 0;
  std::string m_sSdpPath;
  std::string m_sSdpWritten;
  std::string m_sSdpError;
  std::string m_sInterface;
};

}  // namespace camreq

#endif
