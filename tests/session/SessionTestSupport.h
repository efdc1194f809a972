// Support of the session tests: an upper layer that records what it is
// told, requesters whose Exec workers can be scripted, and a requester of
// each class pointed at a simulated camera.
#ifndef SESSION_TEST_SUPPORT_H
#define SESSION_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTestSupport.h"
#include "CamTypes.h"
#include "Device.h"
#include "kxcom.h"

namespace sessiontest {

// One call of the upper layer's RTP stream notification.
struct RtpNotice {
  int iUid;
  bool bSessionInfo;
  int iRtpPort;
  std::string sAddress;
  int iPos;
  int iCmdType;
  int iSelectChNo;
  int iAudioBitrate;
  int iAudioEnable;
  std::string sMultiAddr;
  int iUniPort;
  int iAudioInPort;
};

// The upper layer: keeps every notification; answers the stream-state query
// with iStreamState.
class RecordingUpper : public CCamRequesterNotify {
 public:
  void NotifyRtpStream(int iUid, const void* pSessionInfo, int iRtpPort, const char* cIpAddr,
                       int iPos, int iCmdType, int iSelectChNo, int iAudioBitrate, int iAudioEnable,
                       const char* cMultiAddr, int iUniPort, int iAudioInPort) override {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_rtp.push_back({iUid, pSessionInfo != nullptr, iRtpPort, cIpAddr ? cIpAddr : "", iPos,
                     iCmdType, iSelectChNo, iAudioBitrate, iAudioEnable,
                     cMultiAddr ? cMultiAddr : "", iUniPort, iAudioInPort});
    if (pSessionInfo != nullptr) {
      HTTP_SESSION sHead = {};
      std::memcpy(&sHead, pSessionInfo, HTTP_SESSION_INFO_SIZE);
      m_sLastHost = sHead.pcHost != nullptr ? sHead.pcHost : "";
      m_iLastPort = sHead.usPort;
    }
    ++m_iCalls;
  }
  void NotifySessionInfo(int, const void*, int, int) override { ++m_iCalls; }
  int GetStreamState(unsigned short usCameraType, int iCmdType) override {
    ++m_iQueries;
    m_iLastQueryType = usCameraType;
    m_iLastQueryCmd = iCmdType;
    ++m_iCalls;
    return iStreamState.load();
  }
  void NotifyCamRequesterHandle(int, HTTP_SESSION*) override { ++m_iCalls; }

  std::vector<RtpNotice> Rtp() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_rtp;
  }
  std::string LastHost() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_sLastHost;
  }
  int LastPort() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_iLastPort;
  }

  std::atomic<int> iStreamState{0};
  std::atomic<int> m_iCalls{0};
  std::atomic<int> m_iQueries{0};
  std::atomic<int> m_iLastQueryType{-1};
  std::atomic<int> m_iLastQueryCmd{-1};

 private:
  mutable std::mutex m_mutex;
  std::vector<RtpNotice> m_rtp;
  std::string m_sLastHost;
  int m_iLastPort = 0;
};

// A device on loopback; fails the test when it cannot start.
inline std::unique_ptr<camsim::Device> StartDevice(const std::string& sAddress, int iModel) {
  camsim::DeviceConfig sConfig;
  sConfig.address = sAddress;
  sConfig.model = iModel;
  std::string sError;
  auto pDevice = camsim::Device::Start(sConfig, &sError);
  EXPECT_NE(pDevice, nullptr) << sError;
  return pDevice;
}

// Points a requester at the device as the upper layer would, through
// SetParameter.
template <typename T>
void SetValue(CCamRequester& rReq, long lKind, const T& value) {
  ASSERT_EQ(rReq.SetParameter(lKind, &value, sizeof(value)), 0) << "kind " << lKind;
}

inline void Aim(CCamRequester& rReq, const camsim::Device& rDevice, int iCmdType,
                unsigned short usCameraType, CCamRequesterNotify* pUpper, int iPos = 1) {
  const std::string sAddress = rDevice.Address();
  ASSERT_EQ(
      rReq.SetParameter(CAM_PARAM_IPADDRESS, sAddress.c_str(), static_cast<int>(sAddress.size())),
      0);
  SetValue(rReq, CAM_PARAM_HTTPPORT, int32_t{rDevice.Port()});
  SetValue(rReq, CAM_PARAM_RTPPORT, int32_t{5004});
  SetValue(rReq, CAM_PARAM_CMDTYPE, int32_t{iCmdType});
  CAM_TYPE_PARAM sType = {};
  sType.usCameraNumber = 1;
  sType.usCameraType = usCameraType;
  std::snprintf(sType.CamName, sizeof(sType.CamName), "MODEL%d", usCameraType);
  SetValue(rReq, CAM_PARAM_CAMTYPE, sType);
  SetValue(rReq, CAM_PARAM_SCREENPOS, int32_t{iPos});
  if (pUpper != nullptr) {
    ASSERT_EQ(rReq.SetParameter(CAM_PARAM_CALLBACK, pUpper, 0), 0);
  }
}

inline void SetAuth(CCamRequester& rReq, const char* pcUser, const char* pcPassword) {
  CAM_AUTH_PARAM sAuth = {};
  std::snprintf(sAuth.cUserName, sizeof(sAuth.cUserName), "%s", pcUser);
  std::snprintf(sAuth.cPassword, sizeof(sAuth.cPassword), "%s", pcPassword);
  SetValue(rReq, CAM_PARAM_AUTH, sAuth);
}

// The message text without the requester's prefix cells: what follows the
// last cell ("IP:... ", "POS:n ", "R:h264 ") of a printed line.
inline std::string Text(const std::string& sLine, const std::string& sPrefix) {
  return sLine.rfind(sPrefix, 0) == 0 ? sLine.substr(sPrefix.size()) : sLine;
}

}  // namespace sessiontest

#endif
