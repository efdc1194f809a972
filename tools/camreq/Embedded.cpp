#include "Embedded.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "Fault.h"

namespace camreq {

namespace {
constexpr int kPortTries = 64;
}  // namespace

int FreeUdpPort(const std::string& sAddress) {
  for (int i = 0; i < kPortTries; ++i) {
    const int iFd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (iFd < 0) return 0;
    sockaddr_in sBind{};
    sBind.sin_family = AF_INET;
    inet_pton(AF_INET, sAddress.c_str(), &sBind.sin_addr);
    socklen_t iLength = sizeof(sBind);
    int iPort = 0;
    if (bind(iFd, reinterpret_cast<sockaddr*>(&sBind), sizeof(sBind)) == 0 &&
        getsockname(iFd, reinterpret_cast<sockaddr*>(&sBind), &iLength) == 0) {
      iPort = ntohs(sBind.sin_port);
    }
    close(iFd);
    if (iPort != 0 && iPort % 2 == 0) return iPort;
  }
  return 0;
}

std::unique_ptr<camsim::Device> StartEmbedded(const CameraSpec& rSpec, int iPosition,
                                              std::string* psError) {
  camsim::DeviceConfig sConfig;
  sConfig.address = "127.0.0.1";
  sConfig.model = rSpec.iCamType;
  sConfig.user = rSpec.sUser.empty() ? kEmbeddedUser : rSpec.sUser;
  sConfig.password = rSpec.sUser.empty() ? kEmbeddedPassword : rSpec.sPassword;
  sConfig.values.delivery = rSpec.sSimDelivery;
  // A group and port of this run's own, so that other streams on the
  // machine's loopback do not mix with it.
  const int iPid = static_cast<int>(getpid());
  sConfig.values.multiAddress = {239, 255, 1 + iPid % 250, iPosition};
  const int iMultiPort = FreeUdpPort("127.0.0.1");
  if (iMultiPort != 0) sConfig.values.multiPort = iMultiPort;
  if (rSpec.sSimDelivery == "uni_manual") {
    const int iUniPort = FreeUdpPort("127.0.0.1");
    if (iUniPort != 0) {
      sConfig.values.uniPort = iUniPort;
      sConfig.values.audioInPort = iUniPort + 2;
    }
  }
  auto pDevice = camsim::Device::Start(sConfig, psError);
  if (pDevice == nullptr) return nullptr;
  for (const std::string& sFault : rSpec.asSimFaults) {
    const size_t uColon = sFault.find(':');
    camsim::Fault sParsed;
    std::string sError;
    camsim::ParseFault(sFault.substr(uColon + 1), &sParsed, &sError);
    pDevice->AddFault(sFault.substr(0, uColon), sParsed);
  }
  return pDevice;
}

}  // namespace camreq
