#include "Notify.h"

#include <cstdio>
#include <fstream>

#include "Sdp.h"

namespace camreq {

namespace {
// A unicast stream is passed on to this port above the receive port, where
// the player of the SDP file listens (the receive port is camreq's own).
constexpr int kPlayerPortOffset = 2;

std::string Text(const char* pc) {
  return pc != nullptr && pc[0] != '\0' ? pc : "-";
}
}  // namespace

CamreqNotify::CamreqNotify(const CameraSpec& rSpec, int iPosition, const std::string& sSaveDir)
    : m_bRtp(rSpec.eClass == ReqClass::kRtp),
      m_iPosition(iPosition),
      m_iCmdType(rSpec.iCmdType),
      m_push(rSpec.iCmdType == CAM_REQUESTER_CMD_JPEG_HTTP, sSaveDir,
             "cam" + std::to_string(iPosition)) {}

CamreqNotify::~CamreqNotify() {
  Stop();
}

bool CamreqNotify::Prepare(const std::string& sInterface, int iRtpPort, std::string* psError) {
  m_sInterface = sInterface;
  return m_rtp.Open(sInterface, iRtpPort, psError);
}

void CamreqNotify::Start() {
  if (m_bRtp) m_rtp.Start();
}

void CamreqNotify::Stop() {
  m_push.LetGo(false);
  m_rtp.Stop();
}

void CamreqNotify::Note(const std::string& sText) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_notices.push_back({Now(), sText});
}

void CamreqNotify::NoteUpper(const std::string& sText) {
  Note(sText);
}

void CamreqNotify::NotifyRtpStream(int iUid, const void*, int iRtpPort, const char* cIpAddr, int,
                                   int iCmdType, int iSelectChNo, int iAudioBitrate,
                                   int iAudioEnable, const char* cMultiAddr, int iUniPort,
                                   int iAudioInPort) {
  char acText[320];
  std::snprintf(acText, sizeof(acText),
                "RTP stream uid=%d camera=%s port=%d group=%s type=%d channel=%d audio=%d/%d "
                "uni-port=%d audio-in-port=%d",
                iUid, Text(cIpAddr).c_str(), iRtpPort, Text(cMultiAddr).c_str(), iCmdType,
                iSelectChNo, iAudioEnable, iAudioBitrate, iUniPort, iAudioInPort);
  Note(acText);
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_iUid = iUid;
    if (iUid != -1) {
      ++m_iAnnouncements;
      m_iAudioEnable = iAudioEnable;
      m_iManualAudioPort = iUniPort != 0 ? iAudioInPort : 0;
    }
  }
  // Only where to listen is passed on: the receiver's thread does the rest.
  if (iUid == -1) {
    m_rtp.Drop();
    return;
  }
  // A group of the set-up reply comes with its port; a camera set up for
  // manual unicast sends to the ports of its reply; otherwise the stream
  // comes to this side's RTP port, the one the start line named.
  const std::string sGroup = cMultiAddr != nullptr ? cMultiAddr : "";
  int iPort = iRtpPort;
  if (sGroup.empty() && iUniPort != 0) {
    iPort = iCmdType == CAM_REQUESTER_CMD_G726_RTP ? iAudioInPort : iUniPort;
  }
  m_rtp.Follow(sGroup, iPort);
}

void CamreqNotify::NotifySessionInfo(int iUid, const void* pSessionInfo, int, int iCmdType) {
  std::string sText = "session uid=" + std::to_string(iUid) + " type=" + std::to_string(iCmdType);
  if (pSessionInfo != nullptr && iUid != -1) {
    const auto* psHead = static_cast<const HTTP_SESSION*>(pSessionInfo);
    sText += " host=" + Text(psHead->pcHost) + " port=" + std::to_string(psHead->usPort);
  }
  Note(sText);
  std::lock_guard<std::mutex> lock(m_mutex);
  m_iUid = iUid;
  if (iUid != -1) ++m_iAnnouncements;
}

int CamreqNotify::StreamStateNow() const {
  const double dNow = Now();
  return m_bRtp ? m_rtp.StreamState(dNow) : m_push.StreamState(dNow);
}

int CamreqNotify::GetStreamState(unsigned short, int) {
  const double dNow = Now();
  const int iAnswer = m_bRtp ? m_rtp.StreamState(dNow) : m_push.StreamState(dNow);
  std::lock_guard<std::mutex> lock(m_mutex);
  m_queries.push_back({dNow, iAnswer});
  return iAnswer;
}

void CamreqNotify::NotifyCamRequesterHandle(int iUid, HTTP_SESSION* psHandle) {
  if (psHandle == nullptr) {
    // Withdrawn: the requester closes it as soon as this returns, so the
    // reader leaves every call on it first.
    m_push.LetGo(true);
    Note("push handle withdrawn uid=" + std::to_string(iUid));
    return;
  }
  Note("push handle handed over uid=" + std::to_string(iUid));
  m_push.Take(psHandle);
}

std::vector<Notice> CamreqNotify::Notices() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_notices;
}

std::vector<StateQuery> CamreqNotify::Queries() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_queries;
}

int CamreqNotify::Uid() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_iUid;
}

int CamreqNotify::AudioEnable() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_iAudioEnable;
}

int CamreqNotify::ManualAudioPort() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_iManualAudioPort;
}

int CamreqNotify::Announcements() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_iAnnouncements;
}

std::string CamreqNotify::SdpError() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_sSdpError;
}

void CamreqNotify::SetSdpFile(const std::string& sPath) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_sSdpPath = sPath;
}

void CamreqNotify::UpdateSdp() {
  std::string sPath;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    sPath = m_sSdpPath;
  }
  if (!m_bRtp || sPath.empty()) return;
  const RtpStats sStats = m_rtp.Snapshot();
  if (!sStats.bFollowing) return;
  SdpStream sStream;
  sStream.iCmdType = m_iCmdType;
  sStream.iPayloadType = sStats.iPayloadType;
  sStream.sSps = sStats.sSps;
  sStream.sPps = sStats.sPps;
  sStream.sName = "camreq position " + std::to_string(m_iPosition);
  if (!sStats.sGroup.empty()) {
    // A player joins the group beside camreq.
    sStream.sAddress = sStats.sGroup;
    sStream.iPort = sStats.iPort;
    m_rtp.ForwardTo(0);
  } else {
    const bool bV6 = m_sInterface.find(':') != std::string::npos;
    sStream.sAddress = bV6 ? "::1" : "127.0.0.1";
    sStream.iPort = sStats.iPort + kPlayerPortOffset;
    m_rtp.ForwardTo(sStream.iPort);
  }
  const std::string sText = SdpText(sStream);
  std::lock_guard<std::mutex> lock(m_mutex);
  if (sText == m_sSdpWritten) return;
  std::ofstream sFile(sPath, std::ios::binary | std::ios::trunc);
  sFile << sText;
  sFile.close();
  if (!sFile) {
    m_sSdpError = "cannot write " + sPath;
    return;
  }
  m_sSdpWritten = sText;
  m_sSdpError.clear();
}

}  // namespace camreq
