// Shared pieces of the parameter tests: the two requester classes with what
// tells them apart, a subclass that records the session operations the
// setters raise, a notification object, and a readable picture of every
// parameter field so that a test can say "this changed, nothing else".
#ifndef PARAM_TEST_SUPPORT_H
#define PARAM_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTestSupport.h"
#include "QuietNotify.h"

namespace paramtest {

// The RTP requester as the upper layer sees it.
struct RtpClass {
  using Class = CCamRequester_Cgi_Kobu_Rtp;
  static constexpr const char* kName = "CCamRequester_Cgi_Kobu_Rtp";
  static constexpr int kHighestCmdType = 4;
  static constexpr int kInvalidCmdType = 5;
  static constexpr bool kSetterChecksNull = false;
  static constexpr bool kComparesFrameAndResolution = false;
  static std::string PrefixOf(const std::string& sWord) { return "R:" + sWord; }
  static std::vector<std::string> Words() {
    return {"h264", "audio", "mpeg4", "play", "h264play", "error"};
  }
  static std::vector<long> UndefinedKinds() { return {8, 9, 23}; }
};

// The HTTP requester as the upper layer sees it.
struct HttpClass {
  using Class = CCamRequester_Cgi_Kobu_Http;
  static constexpr const char* kName = "CCamRequester_Cgi_Kobu_Http";
  static constexpr int kHighestCmdType = 2;
  static constexpr int kInvalidCmdType = 3;
  static constexpr bool kSetterChecksNull = true;
  static constexpr bool kComparesFrameAndResolution = true;
  static std::string PrefixOf(const std::string& sWord) { return "H:" + sWord; }
  static std::vector<std::string> Words() { return {"jpeg", "audio", "play", "error"}; }
  static std::vector<long> UndefinedKinds() { return {2, 21}; }
};

using BothClasses = ::testing::Types<RtpClass, HttpClass>;

// Records the session operations that the parameter interface raises on the
// caller's thread (their bodies belong to the session code).
template <class Requester>
class Recording : public Requester {
 public:
  int ChangeStatus(int iEvent) override {
    events.push_back(iEvent);
    return 0;
  }
  int UidInvalid() override {
    ++uidInvalidCalls;
    return 0;
  }
  std::vector<int> events;
  int uidInvalidCalls = 0;
};

using camtest::QuietNotify;

// Every field the parameter interface can touch, by name.
using State = std::map<std::string, std::string>;

inline std::string Text(const char* pcText, size_t uSize) {
  return std::string(pcText, strnlen(pcText, uSize));
}

template <class Requester>
State Capture(Requester& obj) {
  State s;
  const CCamRequester& base = obj;
  const CamRequesterFields& f = obj;
  s["iCamNo"] = std::to_string(base.iCamNo);
  s["iConnectStatus"] = std::to_string(base.iConnectStatus.load());
  s["iCameraNumber"] = std::to_string(base.iCameraNumber);
  s["bAudio"] = std::to_string(base.bAudio.load());
  s["bKeepAlive"] = std::to_string(base.bKeepAlive.load());
  s["bPBKeepAlive"] = std::to_string(base.bPBKeepAlive.load());
  s["iLastUidResult"] = std::to_string(base.iLastUidResult);
  s["m_iErrorCount"] = std::to_string(base.m_iErrorCount);
  s["m_fErrorStat"] = std::to_string(base.m_fErrorStat);
  s["p_notify_to_upper"] = std::to_string(reinterpret_cast<uintptr_t>(f.p_notify_to_upper));
  s["cIpAddr"] = Text(f.cIpAddr, sizeof(f.cIpAddr));
  s["iHttpPort"] = std::to_string(f.iHttpPort);
  s["iCmdType"] = std::to_string(f.iCmdType);
  s["iRtpPort"] = std::to_string(f.iRtpPort);
  s["iUid"] = std::to_string(f.iUid.load());
  s["iAudioBitrate"] = std::to_string(f.iAudioBitrate);
  s["iAudioEnable"] = std::to_string(f.iAudioEnable);
  s["cUserName"] = Text(f.cUserName, sizeof(f.cUserName));
  s["cPassword"] = Text(f.cPassword, sizeof(f.cPassword));
  s["sProxy.enable"] = std::to_string(f.sProxy.enable);
  s["sProxy.host"] = Text(f.sProxy.host, sizeof(f.sProxy.host));
  s["sProxy.port"] = std::to_string(f.sProxy.port);
  std::string sExcept;
  for (const auto& acPattern : f.sProxy.except) sExcept += Text(acPattern, sizeof(acPattern)) + "|";
  s["sProxy.except"] = sExcept;
  s["usCameraType"] = std::to_string(f.usCameraType);
  s["CamName"] = Text(f.CamName, sizeof(f.CamName));
  s["usPresetNo"] = std::to_string(f.usPresetNo);
  s["usSelectChNo"] = std::to_string(f.usSelectChNo);
  s["iPos"] = std::to_string(f.iPos);
  s["usFrate"] = std::to_string(f.usFrate);
  s["usResolution"] = std::to_string(f.usResolution);
  s["m_VOGPlayMode"] = std::to_string(f.m_VOGPlayMode);
  s["cStream"] = std::to_string(f.cStream);
  s["cPrintPrefix"] = Text(f.cPrintPrefix, sizeof(f.cPrintPrefix));
  s["cSelfAddr"] = Text(f.cSelfAddr, sizeof(f.cSelfAddr));
  s["iSelfFamily"] = std::to_string(f.iSelfFamily);
  s["ucMulticast"] = std::to_string(f.ucMulticast);
  s["cMultiAddr"] = Text(f.cMultiAddr, sizeof(f.cMultiAddr));
  s["iPeerFamily"] = std::to_string(f.iPeerFamily);
  s["iUniPort"] = std::to_string(f.iUniPort);
  s["iAudioInPort"] = std::to_string(f.iAudioInPort);
  s["usKelReserved"] = std::to_string(f.usKelReserved);
  s["ucKelReserved"] = std::to_string(f.ucKelReserved);
  s["m_KELSameUIDGroup"] = std::to_string(f.m_KELSameUIDGroup);
  s["m_KELCtrlFlag"] = std::to_string(f.m_KELCtrlFlag.load());
  s["m_iDestruct"] = std::to_string(f.m_iDestruct.load());
  return s;
}

// The fixture of the tests that run on both classes: a fresh requester that
// was never initialised (no thread), and every printed text.
template <class ClassInfo>
class BothRequesters : public ::testing::Test {
 protected:
  using Requester = Recording<typename ClassInfo::Class>;

  int Set(long lKind, const void* pParam) { return obj.SetParameter(lKind, pParam, 0); }
  template <class Value>
  int SetValue(long lKind, Value value) {
    return obj.SetParameter(lKind, &value, static_cast<int>(sizeof(value)));
  }
  // The line with which SetParameter of this class opens.
  static std::string In(long lKind) {
    return std::string(ClassInfo::kName) +
           "::SetParameter [DEBUG] IN l_param_kind:" + std::to_string(lKind) + "\n";
  }
  // Makes the object a camera or recorder of the given type, then forgets
  // what that printed.
  void SetCamType(uint16_t usType, uint16_t usNumber = 1, const char* pcName = "CAM") {
    CAM_TYPE_PARAM sType{};
    sType.usCameraNumber = usNumber;
    sType.usCameraType = usType;
    strncpy(sType.CamName, pcName, sizeof(sType.CamName) - 1);
    Set(CAM_PARAM_CAMTYPE, &sType);
    capture.Clear();
  }
  std::vector<std::string> Printed() const { return capture.Lines(); }
  State Now() { return Capture(obj); }

  camtest::PrintCapture capture;
  Requester obj;
};

using Lines = std::vector<std::string>;

// A recorder record whose leading fields are not read by the setter and
// whose session data are all set, each to a value of its own.
inline CAM_KEL_INFO SampleKelInfo() {
  CAM_KEL_INFO sInfo{};
  strcpy(sInfo.cIpAddr, "not read");
  sInfo.iHttpPort = 1;
  sInfo.usCameraType = 2;
  strcpy(sInfo.CamName, "not read");
  sInfo.iUid = 4711;
  sInfo.iAudioBitrate = 32;
  sInfo.iAudioEnable = 100;
  sInfo.iSelfFamily = 2;
  sInfo.usReserved = 0xBEEF;
  sInfo.ucMulticast = 1;
  strcpy(sInfo.cMultiAddr, "239.1.2.3");
  sInfo.ucReserved = 0x5A;
  strcpy(sInfo.cSelfAddr, "10.0.0.99");
  sInfo.iRtpPort = 6000;
  sInfo.iUniPort = 6100;
  sInfo.iAudioInPort = 7100;
  sInfo.iPeerFamily = 10;
  return sInfo;
}

}  // namespace paramtest

#endif
