// The life of one requester, as the device's media process drives it:
// create, set the parameters, initialise, post START and STOP, destroy.
// Every line of the requester's log goes to standard error.
//
//   example_start_stop [CAMERA_ADDRESS [HTTP_PORT]]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTypes.h"

namespace {

// The upper layer's side of the notifications: print what arrives.
class PrintingNotify : public CCamRequesterNotify {
 public:
  void NotifyRtpStream(int iUid, const void*, int iRtpPort, const char* cIpAddr, int iPos,
                       int iCmdType, int, int, int, const char* cMultiAddr, int, int) override {
    std::printf("upper layer: RTP stream uid=%d camera=%s port=%d pos=%d type=%d multicast=%s\n",
                iUid, cIpAddr, iRtpPort, iPos, iCmdType, cMultiAddr);
  }
  void NotifySessionInfo(int iUid, const void*, int, int) override {
    std::printf("upper layer: session uid=%d\n", iUid);
  }
  int GetStreamState(unsigned short, int) override { return 0; }
  void NotifyCamRequesterHandle(int iUid, HTTP_SESSION* psHandle) override {
    std::printf("upper layer: push handle uid=%d %p\n", iUid, static_cast<void*>(psHandle));
  }
};

template <typename T>
void Set(CCamRequester& rReq, long lKind, const T& value) {
  rReq.SetParameter(lKind, &value, sizeof(value));
}

}  // namespace

int main(int argc, char** argv) {
  const char* pcAddress = argc > 1 ? argv[1] : "127.0.0.1";
  const int32_t iHttpPort = argc > 2 ? std::atoi(argv[2]) : 80;

  PrintingNotify notify;
  auto* psReq = new CCamRequester_Cgi_Kobu_Rtp();
  psReq->SetParameter(CAM_PARAM_IPADDRESS, pcAddress, static_cast<int>(std::strlen(pcAddress)));
  Set(*psReq, CAM_PARAM_HTTPPORT, iHttpPort);
  Set(*psReq, CAM_PARAM_RTPPORT, int32_t{5000});
  Set(*psReq, CAM_PARAM_CMDTYPE, int32_t{CAM_REQUESTER_CMD_H264_RTP});
  CAM_TYPE_PARAM sType = {};
  sType.usCameraNumber = 1;
  sType.usCameraType = CAM_REQUESTER_CAMTYPE_CAM07;
  std::strcpy(sType.CamName, "CAM07");
  Set(*psReq, CAM_PARAM_CAMTYPE, sType);
  Set(*psReq, CAM_PARAM_SCREENPOS, int32_t{1});
  psReq->SetParameter(CAM_PARAM_CALLBACK, &notify, 0);

  psReq->Initialize(5);
  psReq->EnableKeepAlive();
  psReq->RequestStart();
  // Let the request thread run its sequence and a few idle rounds.
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  psReq->RequestStop();
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  delete psReq;
  std::printf("requester destroyed\n");
  return 0;
}
