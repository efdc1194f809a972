// The life of one requester, as the device's media process drives it:
// create, set the parameters, initialise, post START, let it run with a
// keep-alive, post STOP, destroy. Every line of the requester's log goes to
// standard error; the upper layer's side and the road are on standard output.
//
//   example_start_stop                          against a simulated camera
//   example_start_stop CAMERA_ADDRESS HTTP_PORT against a camera of type 7
//
// The idle rounds of the request thread are shortened tenfold, so that the
// keep-alive that a camera gets every 30 s comes every 3 s here.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTypes.h"
#include "Device.h"
#include "kxcom.h"

namespace {

constexpr int kWaitDivisor = 10;  // one idle round: 10 ms instead of 100 ms

// The upper layer's side of the notifications: print what arrives.
class PrintingNotify : public CCamRequesterNotify {
 public:
  void NotifyRtpStream(int iUid, const void*, int iRtpPort, const char* cIpAddr, int iPos,
                       int iCmdType, int, int, int, const char* cMultiAddr, int, int) override {
    std::printf("upper layer: RTP stream uid=%d camera=%s port=%d pos=%d type=%d multicast=%s\n",
                iUid, cIpAddr, iRtpPort, iPos, iCmdType, cMultiAddr);
    std::fflush(stdout);
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

// Polls until the condition holds; false after the deadline.
bool WaitUntil(const std::function<bool()>& fnCondition, std::chrono::milliseconds tLimit) {
  const auto tEnd = std::chrono::steady_clock::now() + tLimit;
  while (!fnCondition()) {
    if (std::chrono::steady_clock::now() > tEnd) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

const char* StatusName(int iStatus) {
  static const char* const kNames[] = {"IDLE", "ERROR", "SETUP", "READY", "RUN", "STOP"};
  return iStatus >= 0 && iStatus < 6 ? kNames[iStatus] : "?";
}

void Road(const CCamRequester& rReq, const char* pcStep) {
  std::printf("road: %-28s status %d %s\n", pcStep, rReq.iConnectStatus.load(),
              StatusName(rReq.iConnectStatus.load()));
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  std::unique_ptr<camsim::Device> pDevice;
  std::string sAddress = "127.0.0.1";
  int32_t iHttpPort = 0;
  if (argc > 2) {
    sAddress = argv[1];
    iHttpPort = std::atoi(argv[2]);
  } else {
    camsim::DeviceConfig sConfig;
    sConfig.address = sAddress;
    sConfig.model = CAM_REQUESTER_CAMTYPE_CAM07;
    std::string sError;
    pDevice = camsim::Device::Start(sConfig, &sError);
    if (pDevice == nullptr) {
      std::fprintf(stderr, "camsim: %s\n", sError.c_str());
      return 1;
    }
    iHttpPort = pDevice->Port();
    std::printf("camsim: camera of type 7 on %s port %d\n", sAddress.c_str(), iHttpPort);
  }
  KXCOM_SetWaitDivisor(kWaitDivisor);

  PrintingNotify notify;
  auto* psReq = new CCamRequester_Cgi_Kobu_Rtp();
  psReq->SetParameter(CAM_PARAM_IPADDRESS, sAddress.c_str(), static_cast<int>(sAddress.size()));
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
  Road(*psReq, "created");
  psReq->RequestStart();
  const bool bRun = WaitUntil([&] { return psReq->iConnectStatus == CAM_HTTP_STS_RUN; },
                              std::chrono::seconds(10));
  Road(*psReq, bRun ? "START done" : "START did not reach RUN");
  int iExit = bRun ? 0 : 1;
  if (bRun && pDevice != nullptr) {
    // The start sends one keep-alive at once; the idle rounds send the next.
    const auto fnKeepAlives = [&] {
      int iCount = 0;
      for (const auto& sRecord : pDevice->Requests())
        iCount += sRecord.path == "/cgi-bin/keep_alive";
      return iCount;
    };
    const bool bKept = WaitUntil([&] { return fnKeepAlives() >= 2; }, std::chrono::seconds(10));
    Road(*psReq, bKept ? "idle keep-alive sent" : "no idle keep-alive");
    if (!bKept) iExit = 1;
  }
  psReq->RequestStop();
  const bool bIdle = WaitUntil([&] { return psReq->iConnectStatus == CAM_HTTP_STS_IDLE; },
                               std::chrono::seconds(10));
  Road(*psReq, bIdle ? "STOP done" : "STOP did not reach IDLE");
  if (!bIdle) iExit = 1;
  delete psReq;
  std::printf("requester destroyed\n");
  if (pDevice != nullptr) {
    std::printf("camsim saw:\n");
    for (const auto& sRecord : pDevice->Requests()) {
      std::printf("  %d %s\n", sRecord.status, sRecord.requestLine.c_str());
    }
  }
  return iExit;
}
