// A requester of each class pointed at a simulated camera on loopback, with
// the print captured and the calls of UidInvalid counted.
#ifndef TRANSPORT_FIXTURE_H
#define TRANSPORT_FIXTURE_H

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTestSupport.h"
#include "CamTypes.h"
#include "Device.h"

namespace transporttest {

// Counts UidInvalid instead of telling an upper layer.
template <typename Requester>
class CountingRequester : public Requester {
 public:
  int UidInvalid() override {
    ++iUidInvalidCalls;
    return 0;
  }
  std::atomic<int> iUidInvalidCalls{0};
};

using RtpRequester = CountingRequester<CCamRequester_Cgi_Kobu_Rtp>;
using HttpRequester = CountingRequester<CCamRequester_Cgi_Kobu_Http>;

// The first prefix cell of every line of a requester with an address.
inline std::string AddressCell(const std::string& sAddress) {
  return "IP:" + std::string(sAddress.size() < 15 ? 15 - sAddress.size() : 0, ' ') +
         sAddress.substr(0, 15) + " ";
}

// Points the requester at the device.
template <typename Requester>
void Aim(Requester& rReq, const camsim::Device& rDevice, unsigned short usCameraType) {
  std::strcpy(rReq.cIpAddr, rDevice.Address().c_str());
  rReq.iHttpPort = rDevice.Port();
  rReq.usCameraType = usCameraType;
}

inline std::unique_ptr<camsim::Device> StartDevice(
    const std::string& sAddress, int iModel, camsim::AuthMode eAuth = camsim::AuthMode::kNone) {
  camsim::DeviceConfig sConfig;
  sConfig.address = sAddress;
  sConfig.model = iModel;
  sConfig.auth = eAuth;
  std::string sError;
  auto pDevice = camsim::Device::Start(sConfig, &sError);
  EXPECT_NE(pDevice, nullptr) << sError;
  return pDevice;
}

// A receive record over a zeroed 2048-byte buffer, as the requesters make it.
struct ReplyBuffer {
  ReplyBuffer() {
    std::memset(&sInet, 0, sizeof(sInet));
    sInet.ulSize = sizeof(acData);
    sInet.pcBuffer = acData;
  }
  char acData[2048] = {};
  _InetBuffer sInet;
};

}  // namespace transporttest

#endif
