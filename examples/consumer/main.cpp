// A program of the device's media process, cut down to what it does with the
// requester library: it builds against the installed package alone (the
// public headers and the CCamRequester::CCamRequester target, or
// pkg-config's ccamrequester), and drives one camera through both roads.
//
//   consumer CAMERA_ADDRESS HTTP_PORT [CAMERA_TYPE]
//
// 1. An H.264 stream over RTP: START, the RTP stream notification with the
//    camera's UID, RUN, STOP, IDLE.
// 2. A JPEG stream by HTTP server push: START, the push handle handed over
//    with NotifyCamRequesterHandle(uid, handle), RUN, STOP, the handle
//    withdrawn with NotifyCamRequesterHandle(uid, null), IDLE.
// Exit status 0 when both roads went as described, 1 otherwise, 2 on bad
// arguments. The requester's own log goes to standard error.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <thread>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTypes.h"

namespace {

// The upper layer's notification object. Each operation runs on the request
// thread of the requester that calls it; it only records and prints.
class ConsumerNotify : public CCamRequesterNotify {
 public:
  void NotifyRtpStream(int iUid, const void*, int iRtpPort, const char* cIpAddr, int iPos,
                       int iCmdType, int, int, int, const char* cMultiAddr, int, int) override {
    std::printf("notify: RTP stream uid=%d camera=%s port=%d pos=%d type=%d group=%s\n", iUid,
                cIpAddr, iRtpPort, iPos, iCmdType, cMultiAddr);
    std::fflush(stdout);
    if (iUid >= 0) iRtpUid = iUid;
  }
  void NotifySessionInfo(int iUid, const void*, int iPos, int iCmdType) override {
    std::printf("notify: session uid=%d pos=%d type=%d\n", iUid, iPos, iCmdType);
    std::fflush(stdout);
  }
  // The media arrive (this program does not read them, so it says so).
  int GetStreamState(unsigned short, int) override { return 0; }
  void NotifyCamRequesterHandle(int iUid, HTTP_SESSION* psHandle) override {
    std::printf("notify: push handle uid=%d %s\n", iUid,
                psHandle != nullptr ? "handed over" : "withdrawn");
    std::fflush(stdout);
    if (psHandle != nullptr) {
      iHandlesGiven++;
    } else {
      iHandlesWithdrawn++;
    }
  }

  std::atomic<int> iRtpUid{-1};
  std::atomic<int> iHandlesGiven{0};
  std::atomic<int> iHandlesWithdrawn{0};
};

template <typename T>
void Set(CCamRequester& rReq, long lKind, const T& value) {
  rReq.SetParameter(lKind, &value, sizeof(value));
}

bool WaitUntil(const std::function<bool()>& fnCondition) {
  const auto tEnd = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!fnCondition()) {
    if (std::chrono::steady_clock::now() > tEnd) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

bool Check(bool bOk, const char* pcWhat) {
  std::printf("%s %s\n", bOk ? "ok:  " : "FAIL:", pcWhat);
  std::fflush(stdout);
  return bOk;
}

void SetCamera(CCamRequester& rReq, ConsumerNotify& rNotify, const char* pcAddress,
               int32_t iHttpPort, uint16_t usCamType, int32_t iCmdType) {
  rReq.SetParameter(CAM_PARAM_IPADDRESS, pcAddress, static_cast<int>(std::strlen(pcAddress)));
  Set(rReq, CAM_PARAM_HTTPPORT, iHttpPort);
  Set(rReq, CAM_PARAM_CMDTYPE, iCmdType);
  CAM_TYPE_PARAM sType = {};
  sType.usCameraNumber = 1;
  sType.usCameraType = usCamType;
  std::snprintf(sType.CamName, sizeof(sType.CamName), "CAM%02u", static_cast<unsigned>(usCamType));
  Set(rReq, CAM_PARAM_CAMTYPE, sType);
  Set(rReq, CAM_PARAM_SCREENPOS, int32_t{1});
  rReq.SetParameter(CAM_PARAM_CALLBACK, &rNotify, 0);
}

bool RtpRoad(const char* pcAddress, int32_t iHttpPort, uint16_t usCamType) {
  ConsumerNotify notify;
  CCamRequester* psReq = new CCamRequester_Cgi_Kobu_Rtp();
  SetCamera(*psReq, notify, pcAddress, iHttpPort, usCamType, CAM_REQUESTER_CMD_H264_RTP);
  Set(*psReq, CAM_PARAM_RTPPORT, int32_t{5000});
  bool bOk = Check(psReq->Initialize(1) == 0, "RTP requester initialised");
  psReq->RequestStart();
  bOk &= Check(WaitUntil([&] { return psReq->iConnectStatus == CAM_HTTP_STS_RUN; }),
               "RTP: START reached RUN");
  bOk &= Check(notify.iRtpUid >= 0, "RTP: the stream notification carried the UID");
  psReq->RequestStop();
  bOk &= Check(WaitUntil([&] { return psReq->iConnectStatus == CAM_HTTP_STS_IDLE; }),
               "RTP: STOP reached IDLE");
  delete psReq;  // waits for the session to close and stops the request thread
  return bOk;
}

bool PushRoad(const char* pcAddress, int32_t iHttpPort, uint16_t usCamType) {
  ConsumerNotify notify;
  CCamRequester* psReq = new CCamRequester_Cgi_Kobu_Http();
  SetCamera(*psReq, notify, pcAddress, iHttpPort, usCamType, CAM_REQUESTER_CMD_JPEG_HTTP);
  bool bOk = Check(psReq->Initialize(2) == 0, "HTTP requester initialised");
  psReq->RequestStart();
  bOk &= Check(WaitUntil([&] { return psReq->iConnectStatus == CAM_HTTP_STS_RUN; }),
               "push: START reached RUN");
  bOk &= Check(notify.iHandlesGiven == 1, "push: the handle was handed over");
  psReq->RequestStop();
  bOk &= Check(WaitUntil([&] { return psReq->iConnectStatus == CAM_HTTP_STS_IDLE; }),
               "push: STOP reached IDLE");
  bOk &= Check(notify.iHandlesWithdrawn >= 1, "push: the handle was withdrawn");
  delete psReq;
  return bOk;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3 || argc > 4) {
    std::fprintf(stderr, "usage: %s CAMERA_ADDRESS HTTP_PORT [CAMERA_TYPE]\n", argv[0]);
    return 2;
  }
  const char* pcAddress = argv[1];
  const long lPort = std::strtol(argv[2], nullptr, 10);
  const long lType =
      argc > 3 ? std::strtol(argv[3], nullptr, 10) : static_cast<long>(CAM_REQUESTER_CAMTYPE_CAM07);
  if (lPort < 1 || lPort > 65535 || lType < 0 || lType > 36) {
    std::fprintf(stderr, "%s: bad port or camera type\n", argv[0]);
    return 2;
  }
  const bool bRtp = RtpRoad(pcAddress, static_cast<int32_t>(lPort), static_cast<uint16_t>(lType));
  const bool bPush = PushRoad(pcAddress, static_cast<int32_t>(lPort), static_cast<uint16_t>(lType));
  std::printf("%s\n", bRtp && bPush ? "consumer: both roads ok" : "consumer: FAILED");
  return bRtp && bPush ? 0 : 1;
}
