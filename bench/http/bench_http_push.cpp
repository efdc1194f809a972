// What a JPEG push costs through the HTTP requester, against the camera
// simulator on loopback: START to the first whole picture read by the upper
// layer from the handed-over handle (median and worst of a number of
// starts). The reading itself, against raw recv of the same bytes, is
// measured by bench_limits.
//
//   bench_http_push [STARTS]

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CamTypes.h"
#include "Device.h"
#include "PushReaderNotify.h"
#include "kxcom.h"

namespace {

using Clock = std::chrono::steady_clock;
using httptest::PushReaderNotify;

template <typename T>
void Set(CCamRequester& rReq, long lKind, const T& value) {
  rReq.SetParameter(lKind, &value, sizeof(value));
}

std::unique_ptr<CCamRequester_Cgi_Kobu_Http> MakeRequester(const camsim::Device& rDevice,
                                                           PushReaderNotify& rNotify, long lIndex) {
  auto pReq = std::make_unique<CCamRequester_Cgi_Kobu_Http>();
  pReq->SetParameter(CAM_PARAM_IPADDRESS, "127.0.0.1", 9);
  Set(*pReq, CAM_PARAM_HTTPPORT, int32_t{rDevice.Port()});
  Set(*pReq, CAM_PARAM_CMDTYPE, int32_t{CAM_REQUESTER_CMD_JPEG_HTTP});
  CAM_TYPE_PARAM sType = {};
  sType.usCameraType = CAM_REQUESTER_CAMTYPE_CAM07;
  Set(*pReq, CAM_PARAM_CAMTYPE, sType);
  pReq->SetParameter(CAM_PARAM_CALLBACK, &rNotify, 0);
  pReq->Initialize(lIndex);
  return pReq;
}

// START until the first whole picture is read from the handle, in ms.
double StartToFirstPicture(const camsim::Device& rDevice, long lIndex) {
  PushReaderNotify notify;
  auto pReq = MakeRequester(rDevice, notify, lIndex);
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

}  // namespace

int main(int argc, char** argv) {
  const int iStarts = argc > 1 ? std::max(1, std::atoi(argv[1])) : 30;
  camsim::DeviceConfig sConfig;
  sConfig.model = CAM_REQUESTER_CAMTYPE_CAM07;
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

  COM_SetPrintSink(nullptr, nullptr);
  return 0;
}
