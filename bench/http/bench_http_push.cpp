// What a JPEG push costs through the HTTP requester, against the camera
// simulator on loopback:
//   1. START to the first whole picture read by the upper layer from the
//      handed-over handle (median and worst of a number of starts);
//   2. pictures a second read through the handle with the platform's push
//      reader, against raw recv of the same push on a plain socket, and the
//      ratio of the two.
//
//   bench_http_push [STARTS [SECONDS]]
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CamTypes.h"
#include "Device.h"
#include "PushReaderNotify.h"
#include "kxcom.h"

namespace {

using Clock = std::chrono::steady_clock;
using httptest::PushReaderNotify;

constexpr uint16_t kResolution1280 = 4;  // pictures of 1280x960

template <typename T>
void Set(CCamRequester& rReq, long lKind, const T& value) {
  rReq.SetParameter(lKind, &value, sizeof(value));
}

std::unique_ptr<CCamRequester_Cgi_Kobu_Http> MakeRequester(const camsim::Device& rDevice,
                                                           PushReaderNotify& rNotify, long lIndex,
                                                           uint16_t usResolution) {
  auto pReq = std::make_unique<CCamRequester_Cgi_Kobu_Http>();
  pReq->SetParameter(CAM_PARAM_IPADDRESS, "127.0.0.1", 9);
  Set(*pReq, CAM_PARAM_HTTPPORT, int32_t{rDevice.Port()});
  Set(*pReq, CAM_PARAM_CMDTYPE, int32_t{CAM_REQUESTER_CMD_JPEG_HTTP});
  CAM_TYPE_PARAM sType = {};
  sType.usCameraType = CAM_REQUESTER_CAMTYPE_CAM07;
  Set(*pReq, CAM_PARAM_CAMTYPE, sType);
  if (usResolution != 0) Set(*pReq, CAM_PARAM_RESOLUTION, usResolution);
  pReq->SetParameter(CAM_PARAM_CALLBACK, &rNotify, 0);
  pReq->Initialize(lIndex);
  return pReq;
}

// START until the first whole picture is read from the handle, in ms.
double StartToFirstPicture(const camsim::Device& rDevice, long lIndex) {
  PushReaderNotify notify;
  auto pReq = MakeRequester(rDevice, notify, lIndex, 0);
  const auto tStart = Clock::now();
  pReq->RequestStart();
  const bool bGot = notify.WaitForPictures(1, std::chrono::seconds(10));
  const double dMs = std::chrono::duration<double, std::milli>(Clock::now() - tStart).count();
  pReq->RequestStop();
  notify.WaitForWithdrawals(1, std::chrono::seconds(10));
  notify.Detach();
  pReq.reset();
  return bGot ? dMs : -1.0;
}

// Pictures a second through the handle, over dSeconds of a running push.
double RateThroughHandle(const camsim::Device& rDevice, double dSeconds) {
  PushReaderNotify notify;
  auto pReq = MakeRequester(rDevice, notify, 900, kResolution1280);
  pReq->RequestStart();
  if (!notify.WaitForPictures(1, std::chrono::seconds(10))) return -1.0;
  const uint64_t ulBefore = notify.Pictures();
  const auto tStart = Clock::now();
  std::this_thread::sleep_for(std::chrono::duration<double>(dSeconds));
  const uint64_t ulAfter = notify.Pictures();
  const double dElapsed = std::chrono::duration<double>(Clock::now() - tStart).count();
  pReq->RequestStop();
  notify.WaitForWithdrawals(1, std::chrono::seconds(10));
  notify.Detach();
  pReq.reset();
  return static_cast<double>(ulAfter - ulBefore) / dElapsed;
}

// The same push line on a plain socket; pictures counted by their boundary.
double RateRawRecv(const camsim::Device& rDevice, double dSeconds, int iUid) {
  sockaddr_in sAddr{};
  sAddr.sin_family = AF_INET;
  sAddr.sin_port = htons(rDevice.Port());
  sAddr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const int iFd = socket(AF_INET, SOCK_STREAM, 0);
  if (iFd < 0 || connect(iFd, reinterpret_cast<sockaddr*>(&sAddr), sizeof(sAddr)) != 0) {
    if (iFd >= 0) close(iFd);
    return -1.0;
  }
  const std::string sRequest =
      "GET /cgi-bin/jpeg?connect=start&resolution=1280&UID=" + std::to_string(iUid) +
      " HTTP/1.0\r\nConnection: Keep-Alive\r\nHost: 127.0.0.1\r\n\r\n";
  send(iFd, sRequest.data(), sRequest.size(), MSG_NOSIGNAL);
  timeval sWait = {0, 100000};
  setsockopt(iFd, SOL_SOCKET, SO_RCVTIMEO, &sWait, sizeof(sWait));
  const std::string sBoundary = "--camsimboundary";
  std::string sCarry;
  std::vector<char> acBuf(1 << 16);
  uint64_t ulParts = 0;
  bool bCounting = false;
  uint64_t ulAtStart = 0;
  auto tStart = Clock::now();
  const auto tLimit = Clock::now() + std::chrono::duration<double>(dSeconds + 10.0);
  while (Clock::now() < tLimit) {
    const ssize_t lRead = recv(iFd, acBuf.data(), acBuf.size(), 0);
    if (lRead == 0) break;
    if (lRead > 0) {
      sCarry.append(acBuf.data(), static_cast<size_t>(lRead));
      size_t ulAt = 0;
      while ((ulAt = sCarry.find(sBoundary)) != std::string::npos) {
        ++ulParts;
        sCarry.erase(0, ulAt + sBoundary.size());
      }
      if (sCarry.size() > sBoundary.size()) sCarry.erase(0, sCarry.size() - sBoundary.size());
    }
    if (!bCounting && ulParts >= 2) {
      bCounting = true;
      ulAtStart = ulParts;
      tStart = Clock::now();
    }
    if (bCounting && std::chrono::duration<double>(Clock::now() - tStart).count() >= dSeconds) {
      break;
    }
  }
  const double dElapsed = std::chrono::duration<double>(Clock::now() - tStart).count();
  close(iFd);
  return bCounting ? static_cast<double>(ulParts - ulAtStart) / dElapsed : -1.0;
}

int IssueUid(const camsim::Device& rDevice) {
  HTTP_SESSION* psSession =
      http_open_session_to_ret("127.0.0.1", rDevice.Port(), nullptr, 0, 0, 5000, 0);
  if (psSession == nullptr) return -1;
  http_set_url(psSession, "GET", "/cgi-bin/getuid?FILE=2&vcodec=jpeg", "HTTP/1.0");
  char acBody[2048] = {};
  _InetBuffer sBuf = {};
  sBuf.ulSize = sizeof(acBody);
  sBuf.pcBuffer = acBody;
  http_do_request(psSession, &sBuf, 5);
  http_close_session(psSession);
  const char* pcUid = std::strstr(acBody, "UID=");
  return pcUid != nullptr ? std::atoi(pcUid + 4) : -1;
}

}  // namespace

int main(int argc, char** argv) {
  const int iStarts = argc > 1 ? std::max(1, std::atoi(argv[1])) : 30;
  const double dSeconds = argc > 2 ? std::max(0.5, std::atof(argv[2])) : 3.0;
  camsim::DeviceConfig sConfig;
  sConfig.model = CAM_REQUESTER_CAMTYPE_CAM07;
  sConfig.values.frameRate = 100.0;  // the simulator's fastest pace
  std::string sError;
  auto pDevice = camsim::Device::Start(sConfig, &sError);
  if (pDevice == nullptr) {
    std::fprintf(stderr, "camsim: %s\n", sError.c_str());
    return 1;
  }
  // Silence the requester's diagnostic print: only the figures matter here.
  COM_SetPrintSink([](const char*, void*) {}, nullptr);

  std::vector<double> adMs;
  for (int i = 0; i < iStarts; ++i) {
    const double dMs = StartToFirstPicture(*pDevice, 200 + i);
    if (dMs >= 0) adMs.push_back(dMs);
  }
  std::sort(adMs.begin(), adMs.end());
  if (adMs.empty()) {
    std::printf("start to first picture: no picture\n");
    return 1;
  }
  std::printf(
      "start to first whole JPEG through the handle: %zu starts, median %.2f ms, "
      "min %.2f ms, max %.2f ms\n",
      adMs.size(), adMs[adMs.size() / 2], adMs.front(), adMs.back());

  const double dHandle = RateThroughHandle(*pDevice, dSeconds);
  const double dRaw = RateRawRecv(*pDevice, dSeconds, IssueUid(*pDevice));
  std::printf(
      "pictures/s (1280x960, simulator pace 100/s): through the handle %.1f, raw recv "
      "%.1f, ratio handle/raw %.3f\n",
      dHandle, dRaw, dRaw > 0 ? dHandle / dRaw : 0.0);
  COM_SetPrintSink(nullptr, nullptr);
  return 0;
}
