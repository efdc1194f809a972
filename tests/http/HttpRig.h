// An HTTP requester driven through its public interface against a simulated
// camera or recorder on loopback, with the upper layer's push reader.
#ifndef HTTP_RIG_H
#define HTTP_RIG_H

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <memory>
#include <string>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CamTestSupport.h"
#include "CamTypes.h"
#include "Device.h"
#include "PushReaderNotify.h"
#include "kxcom.h"
#include "kxhttp.h"

namespace httptest {

using std::chrono::milliseconds;
using std::chrono::seconds;

// One idle round of the request thread takes about 100 ms / this.
constexpr int kWaitDivisor = 100;

// Every requester of the process needs a queue address of its own.
inline long NextIndex() {
  static std::atomic<long> lIndex{100};
  return lIndex++;
}

template <typename T>
void SetParam(CCamRequester& rReq, long lKind, const T& value) {
  ASSERT_EQ(rReq.SetParameter(lKind, &value, sizeof(value)), 0) << "kind " << lKind;
}

inline std::unique_ptr<camsim::Device> StartDevice(int iModel,
                                                   const std::string& sAddress = "127.0.0.1") {
  camsim::DeviceConfig sConfig;
  sConfig.address = sAddress;
  sConfig.model = iModel;
  std::string sError;
  auto pDevice = camsim::Device::Start(sConfig, &sError);
  EXPECT_NE(pDevice, nullptr) << sError;
  return pDevice;
}

// What a test wants of the requester before it is initialised.
struct RigOptions {
  int iModel = CAM_REQUESTER_CAMTYPE_CAM07;
  int iCmdType = CAM_REQUESTER_CMD_JPEG_HTTP;
  uint16_t usFrate = 0;
  uint16_t usResolution = 0;
  bool bKeepAlive = true;
  int iPos = 1;
  std::string sAddress = "127.0.0.1";
};

class HttpRig {
 public:
  explicit HttpRig(const RigOptions& sOptions)
      : m_sOptions(sOptions),
        notify(sOptions.iCmdType == CAM_REQUESTER_CMD_G726_HTTP ? PushReaderNotify::Media::kAudio
                                                                : PushReaderNotify::Media::kJpeg) {
    device = StartDevice(sOptions.iModel, sOptions.sAddress);
    req = std::make_unique<CCamRequester_Cgi_Kobu_Http>();
  }
  ~HttpRig() { Destroy(); }

  // Parameters through SetParameter, then Initialize.
  void Configure() {
    ASSERT_NE(device, nullptr);
    const std::string& sAddr = m_sOptions.sAddress;
    ASSERT_EQ(req->SetParameter(CAM_PARAM_IPADDRESS, sAddr.c_str(), static_cast<int>(sAddr.size())),
              0);
    SetParam(*req, CAM_PARAM_HTTPPORT, int32_t{device->Port()});
    SetParam(*req, CAM_PARAM_CMDTYPE, int32_t{m_sOptions.iCmdType});
    CAM_TYPE_PARAM sType = {};
    sType.usCameraNumber = 1;
    sType.usCameraType = static_cast<uint16_t>(m_sOptions.iModel);
    std::snprintf(sType.CamName, sizeof(sType.CamName), "MODEL%d", m_sOptions.iModel);
    SetParam(*req, CAM_PARAM_CAMTYPE, sType);
    SetParam(*req, CAM_PARAM_SCREENPOS, int32_t{m_sOptions.iPos});
    if (m_sOptions.usFrate != 0) SetParam(*req, CAM_PARAM_FRATE, m_sOptions.usFrate);
    if (m_sOptions.usResolution != 0) {
      SetParam(*req, CAM_PARAM_RESOLUTION, m_sOptions.usResolution);
    }
    notify.Attach();
    ASSERT_EQ(req->SetParameter(CAM_PARAM_CALLBACK, &notify, 0), 0);
    ASSERT_EQ(req->Initialize(NextIndex()), 0);
    if (m_sOptions.bKeepAlive) req->EnableKeepAlive();
  }

  // The credentials of the simulated device (its recorder login too).
  void SetDeviceCredentials() {
    CAM_AUTH_PARAM sAuth = {};
    std::strcpy(sAuth.cUserName, "admin");
    std::strcpy(sAuth.cPassword, "password");
    SetParam(*req, CAM_PARAM_AUTH, sAuth);
  }

  bool WaitForStatus(int iStatus, milliseconds tLimit = seconds(10)) {
    return camtest::WaitUntil([&] { return req->iConnectStatus == iStatus; }, tLimit);
  }

  // STOP until the status is IDLE: a requester that keeps rebuilding a
  // failing session may be caught in SETUP or READY, where STOP changes
  // nothing. Bounded in count and time.
  bool StopUntilIdle() {
    for (int i = 0; i < 50; ++i) {
      req->RequestStop();
      if (WaitForStatus(CAM_HTTP_STS_IDLE, milliseconds(200))) return true;
    }
    return false;
  }

  // Asks the request thread for one start retry, as a caller of the retry
  // must: under Retrymutex.
  void AskForStartRetry() {
    pthread_mutex_lock(&req->Retrymutex);
    req->iStartRetry = 1;
    pthread_mutex_unlock(&req->Retrymutex);
  }
  int StartRetryFlag() {
    pthread_mutex_lock(&req->Retrymutex);
    const int iValue = req->iStartRetry;
    pthread_mutex_unlock(&req->Retrymutex);
    return iValue;
  }

  // The upper layer stops reading and takes no more handles, then destroys
  // the requester (which still takes back a push it handed over, and tells
  // nothing else while it is being destroyed).
  void Destroy() {
    notify.Detach();
    req.reset();
  }

  RigOptions m_sOptions;
  std::unique_ptr<camsim::Device> device;
  PushReaderNotify notify;
  std::unique_ptr<CCamRequester_Cgi_Kobu_Http> req;
};

// Shared fixture: short idle rounds, and nothing left behind by a test: no
// descriptor, no message buffer.
class HttpRequesterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    KXCOM_SetWaitDivisor(kWaitDivisor);
    m_iFdsBefore = camtest::OpenFdCount();
    m_iBuffersBefore = KXCOM_LiveBufferCount();
  }
  void TearDown() override {
    EXPECT_EQ(camtest::SettledFdCount(m_iFdsBefore, seconds(5)), m_iFdsBefore)
        << "descriptors left open";
    EXPECT_TRUE(
        camtest::WaitUntil([&] { return KXCOM_LiveBufferCount() == m_iBuffersBefore; }, seconds(5)))
        << "message buffers left behind: " << KXCOM_LiveBufferCount() - m_iBuffersBefore;
    KXCOM_SetWaitDivisor(1);
  }
  int m_iFdsBefore = 0;
  int m_iBuffersBefore = 0;
};

// Requests time out after 5 s / this in the tests that wait for time-outs.
constexpr int kTimeoutDivisor = 10;

// The same fixture with the HTTP client's time-outs shortened.
class ShortTimeoutTest : public HttpRequesterTest {
 protected:
  void SetUp() override {
    HttpRequesterTest::SetUp();
    http_set_timeout_divisor(kTimeoutDivisor);
  }
  void TearDown() override {
    http_set_timeout_divisor(1);
    HttpRequesterTest::TearDown();
  }
};

// A fault of the simulated device from its text form.
inline camsim::Fault Fault(const char* pcText) {
  camsim::Fault sFault;
  std::string sError;
  EXPECT_TRUE(camsim::ParseFault(pcText, &sFault, &sError)) << sError;
  return sFault;
}

}  // namespace httptest

#endif
