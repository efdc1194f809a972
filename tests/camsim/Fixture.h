// Starts one simulated device on an ephemeral loopback port for a test.
#ifndef CAMSIM_TEST_FIXTURE_H
#define CAMSIM_TEST_FIXTURE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Device.h"
#include "Fault.h"
#include "LoginTransform.h"
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

// The key in a recorder's start.cgi reply ("" when there is none).
inline std::string RecorderKey(const Response& start) {
  const std::string mark = "strKey = \"";
  size_t at = start.body.find(mark);
  if (at == std::string::npos) return "";
  size_t begin = at + mark.size();
  size_t end = start.body.find('"', begin);
  return end == std::string::npos ? "" : start.body.substr(begin, end - begin);
}

// A recorder login as the requester makes it: start.cgi for a key, then
// ulogin.cgi with the credentials transformed by camsim's own transform.
inline Response RecorderLogin(const std::string& address, uint16_t port,
                              const std::string& user = "admin",
                              const std::string& password = "password") {
  std::string key = RecorderKey(Get(address, port, "/cgi-bin/start.cgi?UID=-1"));
  return Get(address, port,
             "/cgi-bin/ulogin.cgi?USER=" + camsim::LoginTransform(key, user) + "&PASS=" +
                 camsim::LoginTransform(key, password) + "&KEY=" + key + "&TEMP=1234567");
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

  // The UID of a recorder login with the default credentials ("" if none).
  std::string RecorderUid() { return RecorderLogin(address_, device_->Port()).Line("UID="); }
  // A fault in its text form: SetFaultText replaces the path's faults,
  // AddFaultText appends to them.
  void SetFaultText(const std::string& path, const std::string& text) {
    camsim::Fault fault;
    std::string error;
    ASSERT_TRUE(camsim::ParseFault(text, &fault, &error)) << error;
    device_->SetFault(path, fault);
  }
  void AddFaultText(const std::string& path, const std::string& text) {
    camsim::Fault fault;
    std::string error;
    ASSERT_TRUE(camsim::ParseFault(text, &fault, &error)) << error;
    device_->AddFault(path, fault);
  }

  std::string address_;
  std::unique_ptr<camsim::Device> device_;
};

}  // namespace camsim_test

#endif
