// Starts one simulated device on an ephemeral loopback port for a test.
#ifndef CAMSIM_TEST_FIXTURE_H
#define CAMSIM_TEST_FIXTURE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Device.h"
#include "TestClient.h"

namespace camsim_test {

inline std::unique_ptr<camsim::Device> StartDevice(
    int model, const std::string& address = "127.0.0.1",
    camsim::AuthMode auth = camsim::AuthMode::kNone) {
  camsim::DeviceConfig config;
  config.address = address;
  config.model = model;
  config.auth = auth;
  std::string error;
  auto device = camsim::Device::Start(config, &error);
  EXPECT_NE(device, nullptr) << error;
  return device;
}

class DeviceTest : public ::testing::Test {
 protected:
  void Use(int model, const std::string& address = "127.0.0.1",
           camsim::AuthMode auth = camsim::AuthMode::kNone) {
    address_ = address;
    device_ = StartDevice(model, address, auth);
    ASSERT_NE(device_, nullptr);
  }
  Response Fetch(const std::string& target, const std::string& headers = "") {
    return Get(address_, device_->Port(), target, headers);
  }
  // Issues a UID through the session command of the model's family.
  int CameraUid() {
    Response reply = Fetch("/cgi-bin/getuid?FILE=2&vcodec=h264");
    EXPECT_EQ(reply.status, 200);
    return std::atoi(reply.Line("UID=").c_str());
  }

  std::string address_;
  std::unique_ptr<camsim::Device> device_;
};

}  // namespace camsim_test

#endif
