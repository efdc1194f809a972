// A whole requester exchange against a camera on loopback that answers
// every request with the fuzzer's bytes. A requester of either class is set
// up as the upper layer does it, started (live START, or play-back START for
// the play-back command types) and stopped through its request thread; the
// upper layer reads a handed-over push in between. After the stop every CGI
// session must be closed; once the thread has ended, the push too, and the
// upper layer must hold it no more.
//   byte 0: bit 0 the class (RTP, HTTP); bit 1 the camera on ::1 instead of
//   127.0.0.1; bit 2 credentials set; bit 3 a proxy (the same peer) for the
//   HTTP class, bit 4 with the camera on its exception list; byte 1: camera type (mod 38); byte 2:
//   command type (mod the class's count, the invalid one included); byte 3:
//   the stream state the upper layer reports (mod 3), the preset (above);
//   the rest: the replies of the requests in order, separated by
//   "#next-reply#" (the last one answers every later request).
#include <netinet/in.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTestSupport.h"
#include "CamTypes.h"
#include "FuzzUpper.h"
#include "LoopbackPeer.h"

namespace {

constexpr size_t kControlBytes = 4;
constexpr char kSeparator[] = "#next-reply#";
// Every exchange is answered at once and ends with the peer's close; this
// bound only turns a requester that hangs into a finding.
constexpr std::chrono::milliseconds kDispatchLimit(15000);
// The request thread prints this after it has carried out a message, before
// it frees it.
constexpr char kMessageDone[] = "RequestThreadMain [DEBUG] COM_MsgBufFree=";

std::vector<std::string> Replies(const uint8_t* pucData, size_t uSize) {
  const std::string sAll(reinterpret_cast<const char*>(pucData), uSize);
  std::vector<std::string> asReplies;
  size_t uAt = 0;
  for (;;) {
    const size_t uNext = sAll.find(kSeparator, uAt);
    asReplies.push_back(sAll.substr(uAt, uNext - uAt));
    if (uNext == std::string::npos) return asReplies;
    uAt = uNext + sizeof(kSeparator) - 1;
  }
}

fuzzsup::LoopbackPeer& PeerFor(bool bV6) {
  static fuzzsup::LoopbackPeer sV4(AF_INET);
  static fuzzsup::LoopbackPeer sV6(AF_INET6);
  return bV6 && sV6.Listening() ? sV6 : sV4;
}

struct Road {
  int (CCamRequester::*pfnStart)();
  int (CCamRequester::*pfnStop)();
  bool bUpperReportsRun;  // the media process reports a play-back running
};
constexpr Road kLive = {&CCamRequester::RequestStart, &CCamRequester::RequestStop, false};
constexpr Road kPlayBack = {&CCamRequester::RequestPBStart, &CCamRequester::RequestPBStop, true};

// The peer stands in for the proxy too: it answers whatever request line
// comes, the absolute one of a proxied request included.
void SetProxy(CCamRequester& rReq, const fuzzsup::LoopbackPeer& rPeer, bool bExcepted) {
  std::unique_ptr<CAM_PROXY_PARAM> psProxy(new CAM_PROXY_PARAM());
  psProxy->enable = 1;
  std::snprintf(psProxy->host, sizeof(psProxy->host), "%s", rPeer.Address());
  psProxy->port = rPeer.Port();
  if (bExcepted)
    std::snprintf(psProxy->except[0], sizeof(psProxy->except[0]), "%s", rPeer.Address());
  rReq.SetParameter(CAM_PARAM_PROXY, psProxy.get(), sizeof(CAM_PROXY_PARAM));
}

void SetUp(CCamRequester& rReq, fuzzsup::FuzzUpper& rUpper, const fuzzsup::LoopbackPeer& rPeer,
           const uint8_t* pucControl, int32_t iCmdType) {
  char acAddress[CAM_TEXT_SIZE];
  std::snprintf(acAddress, sizeof(acAddress), "%s", rPeer.Address());
  const int32_t iPort = rPeer.Port();
  const int32_t iPos = 1;
  CAM_TYPE_PARAM sType{};
  sType.usCameraNumber = 1;
  sType.usCameraType = static_cast<uint16_t>(pucControl[1] % (CAM_REQUESTER_CAMTYPE_MAX + 1));
  std::snprintf(sType.CamName, sizeof(sType.CamName), "FUZZ%u", sType.usCameraType);
  const uint16_t usPreset = static_cast<uint16_t>(pucControl[3] >> 2);
  rReq.SetParameter(CAM_PARAM_IPADDRESS, acAddress, 0);
  rReq.SetParameter(CAM_PARAM_HTTPPORT, &iPort, sizeof(iPort));
  rReq.SetParameter(CAM_PARAM_CAMTYPE, &sType, sizeof(sType));
  rReq.SetParameter(CAM_PARAM_CMDTYPE, &iCmdType, sizeof(iCmdType));
  rReq.SetParameter(CAM_PARAM_SCREENPOS, &iPos, sizeof(iPos));
  rReq.SetParameter(CAM_PARAM_PRESET, &usPreset, sizeof(usPreset));
  rReq.SetParameter(CAM_PARAM_CALLBACK, &rUpper, 0);
  if ((pucControl[0] & 4) != 0) {
    CAM_AUTH_PARAM sAuth{};
    std::snprintf(sAuth.cUserName, sizeof(sAuth.cUserName), "admin");
    std::snprintf(sAuth.cPassword, sizeof(sAuth.cPassword), "secret");
    rReq.SetParameter(CAM_PARAM_AUTH, &sAuth, sizeof(sAuth));
  }
  // Audio (type 1 in both classes) takes the UID of the camera's video
  // session from the upper layer.
  if (iCmdType == CAM_REQUESTER_CMD_G726_RTP) {
    CAM_UID_PARAM sUid{};
    sUid.iUid = 1;
    sUid.iAudioEnable = 1;
    rReq.SetParameter(CAM_PARAM_UID, &sUid, sizeof(sUid));
  }
  if ((pucControl[0] & 8) != 0) SetProxy(rReq, rPeer, (pucControl[0] & 16) != 0);
  rUpper.SetStreamState(pucControl[3] % 3);
}

// Posts one request and waits until the request thread has carried it out:
// the iDone-th message of this requester.
void RunThrough(CCamRequester& rReq, int (CCamRequester::*pfnRequest)(), int iDone,
                const camtest::PrintCapture& rCapture) {
  (rReq.*pfnRequest)();
  if (!rCapture.WaitForCount(kMessageDone, iDone, kDispatchLimit)) abort();
}

template <typename T>
void Exchange(const uint8_t* pucControl, int32_t iCmdType, bool bPlayBack,
              camtest::PrintCapture& rCapture) {
  rCapture.Clear();
  fuzzsup::FuzzUpper sUpper;
  const fuzzsup::LoopbackPeer& rPeer = PeerFor((pucControl[0] & 2) != 0);
  T sReq;
  SetUp(sReq, sUpper, rPeer, pucControl, iCmdType);
  const Road& rRoad = bPlayBack ? kPlayBack : kLive;
  sReq.Initialize(0);
  sReq.EnableKeepAlive();
  RunThrough(sReq, rRoad.pfnStart, 1, rCapture);
  sUpper.ReadHeldPush(iCmdType);
  if (rRoad.bUpperReportsRun) {
    const int32_t iRunning = 1;
    sReq.SetParameter(CAM_PARAM_STATUSCHANGE, &iRunning, sizeof(iRunning));
  }
  RunThrough(sReq, rRoad.pfnStop, 2, rCapture);
  // Read before the thread ends, whose exit closes whatever is left: every
  // exchange closed its own session. (After a stop the idle rounds touch no
  // session: they rebuild one only from ERROR, which a stop never leaves.)
  if (sReq.psSession != nullptr) abort();
  // A push survives failed exchanges and a stop that finds no running
  // stream (a keep-alive failure puts the status in ERROR); the thread's exit
  // closes it, and takes it back from the upper layer first.
  sReq.StopChildThread();
  if (sReq.psSessionPush != nullptr || sUpper.Held() != nullptr) abort();
  const int32_t iStatus = sReq.iConnectStatus;
  if (iStatus < CAM_HTTP_STS_IDLE || iStatus > CAM_HTTP_STS_STOP) abort();
  // The thread is gone, so nothing would bring the status back to idle
  // while the destructor waits for it.
  sReq.iConnectStatus = CAM_HTTP_STS_IDLE;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static camtest::PrintCapture* psCapture = new camtest::PrintCapture();
  if (size < kControlBytes) return 0;
  PeerFor(false).Serve(Replies(data + kControlBytes, size - kControlBytes));
  PeerFor(true).Serve(Replies(data + kControlBytes, size - kControlBytes));
  if (data[0] % 2 == 0) {
    const int32_t iCmdType = data[2] % (CAM_REQUESTER_CMD_RTP_INVALID + 1);
    const bool bPlayBack =
        iCmdType == CAM_REQUESTER_CMD_MPEG4_PLAY || iCmdType == CAM_REQUESTER_CMD_H264_PLAY;
    Exchange<CCamRequester_Cgi_Kobu_Rtp>(data, iCmdType, bPlayBack, *psCapture);
  } else {
    const int32_t iCmdType = data[2] % (CAM_REQUESTER_CMD_HTTP_INVALID + 1);
    Exchange<CCamRequester_Cgi_Kobu_Http>(data, iCmdType, iCmdType == CAM_REQUESTER_CMD_JPEG_PLAY,
                                          *psCapture);
  }
  return 0;
}
