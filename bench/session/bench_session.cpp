// What a START costs: the time from RequestStart until an H.264 requester
// reaches RUN against a simulated camera (keep-alive off, the print going
// nowhere), next to the floor of the same work, two plain-socket exchanges
// (the UID request and the start request) with the same server in the same
// run. Prints p50 and p99 of both and their ratio.
//
//   bench_session [ROUNDS]      (default 300)
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTypes.h"
#include "Device.h"
#include "kxcom.h"

namespace {

using Clock = std::chrono::steady_clock;

// Tells the bench the moment the status changes.
class SignallingRtp : public CCamRequester_Cgi_Kobu_Rtp {
 public:
  ~SignallingRtp() override { StopChildThread(); }
  int ChangeStatus(int iEvent) override {
    const int iRet = CCamRequester_Cgi_Kobu_Rtp::ChangeStatus(iEvent);
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_tChanged = Clock::now();
    }
    m_changed.notify_all();
    return iRet;
  }
  // Waits until the status is iStatus; the time it was reached, or false.
  bool WaitStatus(int iStatus, Clock::time_point* ptReached) {
    std::unique_lock<std::mutex> lock(m_mutex);
    const bool bOk = m_changed.wait_for(lock, std::chrono::seconds(10),
                                        [&] { return iConnectStatus == iStatus; });
    *ptReached = m_tChanged;
    return bOk;
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  Clock::time_point m_tChanged;
};

class QuietUpper : public CCamRequesterNotify {
 public:
  void NotifyRtpStream(int, const void*, int, const char*, int, int, int, int, int, const char*,
                       int, int) override {}
  void NotifySessionInfo(int, const void*, int, int) override {}
  int GetStreamState(unsigned short, int) override { return 0; }
  void NotifyCamRequesterHandle(int, HTTP_SESSION*) override {}
};

void Discard(const char*, void*) {}

// One GET on a fresh loopback connection, read to the close; false on failure.
bool RawExchange(uint16_t usPort, const std::string& sTarget, std::string* psBody) {
  sockaddr_in sAddress{};
  sAddress.sin_family = AF_INET;
  sAddress.sin_port = htons(usPort);
  sAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const int fd = socket(AF_INET, SOCK_STREAM, 0);
  if (fd < 0) return false;
  if (connect(fd, reinterpret_cast<sockaddr*>(&sAddress), sizeof sAddress) != 0) {
    close(fd);
    return false;
  }
  const std::string sRequest =
      "GET " + sTarget + " HTTP/1.0\r\nConnection: Keep-Alive\r\nHost: 127.0.0.1\r\n\r\n";
  bool bOk = send(fd, sRequest.data(), sRequest.size(), MSG_NOSIGNAL) ==
             static_cast<ssize_t>(sRequest.size());
  char acBuffer[4096];
  psBody->clear();
  ssize_t n = 0;
  while (bOk && (n = recv(fd, acBuffer, sizeof acBuffer, 0)) > 0) psBody->append(acBuffer, n);
  close(fd);
  return bOk && psBody->find(" 200 ") != std::string::npos;
}

double Percentile(std::vector<double> adValues, double dFraction) {
  std::sort(adValues.begin(), adValues.end());
  const size_t uIndex = static_cast<size_t>(dFraction * static_cast<double>(adValues.size() - 1));
  return adValues[uIndex];
}

double Micros(Clock::duration d) {
  return std::chrono::duration<double, std::micro>(d).count();
}

// Runs the rounds; the requester is gone (its thread stopped) on return.
bool Measure(uint16_t usPort, QuietUpper& upper, int iRounds, std::vector<double>* padStart,
             std::vector<double>* padRaw) {
  SignallingRtp req;
  const std::string sAddress = "127.0.0.1";
  req.SetParameter(CAM_PARAM_IPADDRESS, sAddress.c_str(), static_cast<int>(sAddress.size()));
  const int32_t iPort = usPort, iRtpPort = 5000, iType = CAM_REQUESTER_CMD_H264_RTP, iPos = 1;
  req.SetParameter(CAM_PARAM_HTTPPORT, &iPort, sizeof iPort);
  req.SetParameter(CAM_PARAM_RTPPORT, &iRtpPort, sizeof iRtpPort);
  req.SetParameter(CAM_PARAM_CMDTYPE, &iType, sizeof iType);
  CAM_TYPE_PARAM sType = {};
  sType.usCameraNumber = 1;
  sType.usCameraType = CAM_REQUESTER_CAMTYPE_CAM07;
  req.SetParameter(CAM_PARAM_CAMTYPE, &sType, sizeof sType);
  req.SetParameter(CAM_PARAM_SCREENPOS, &iPos, sizeof iPos);
  req.SetParameter(CAM_PARAM_CALLBACK, &upper, 0);
  req.Initialize(7);

  std::string sBody;
  for (int i = 0; i < iRounds; ++i) {
    // The requester's road: START -> RUN, then back to IDLE untimed.
    Clock::time_point tRun;
    const Clock::time_point t0 = Clock::now();
    req.RequestStart();
    if (!req.WaitStatus(CAM_HTTP_STS_RUN, &tRun)) {
      return false;
    }
    padStart->push_back(Micros(tRun - t0));
    Clock::time_point tIdle;
    req.RequestStop();
    if (!req.WaitStatus(CAM_HTTP_STS_IDLE, &tIdle)) return false;
    req.iUid = -1;  // the next START asks for a UID again

    // The floor: the same two requests on plain sockets.
    const Clock::time_point t1 = Clock::now();
    if (!RawExchange(usPort, "/cgi-bin/getuid?FILE=2&vcodec=h264", &sBody)) return false;
    const size_t uUid = sBody.find("UID=");
    const std::string sUid =
        uUid == std::string::npos
            ? "1"
            : sBody.substr(uUid + 4, sBody.find_first_of("\r\n", uUid) - uUid - 4);
    if (!RawExchange(
            usPort,
            "/cgi-bin/h264?connect=start&protocol=rtp&my_port=5000&UID=" + sUid + "&stream=1",
            &sBody)) {
      return false;
    }
    padRaw->push_back(Micros(Clock::now() - t1));
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const int iRounds = argc > 1 ? std::max(10, std::atoi(argv[1])) : 300;
  camsim::DeviceConfig sConfig;
  sConfig.model = CAM_REQUESTER_CAMTYPE_CAM07;
  std::string sError;
  auto pDevice = camsim::Device::Start(sConfig, &sError);
  if (pDevice == nullptr) {
    std::fprintf(stderr, "camsim: %s\n", sError.c_str());
    return 1;
  }
  const uint16_t usPort = pDevice->Port();
  COM_SetPrintSink(Discard, nullptr);

  QuietUpper upper;
  std::vector<double> adStart, adRaw;
  if (!Measure(usPort, upper, iRounds, &adStart, &adRaw)) {
    COM_SetPrintSink(nullptr, nullptr);
    std::fprintf(stderr, "a round failed\n");
    return 1;
  }
  COM_SetPrintSink(nullptr, nullptr);
  const double dStart50 = Percentile(adStart, 0.50), dStart99 = Percentile(adStart, 0.99);
  const double dRaw50 = Percentile(adRaw, 0.50), dRaw99 = Percentile(adRaw, 0.99);
  std::printf("rounds: %d\n", iRounds);
  std::printf("requester START->RUN     p50 %8.1f us   p99 %8.1f us\n", dStart50, dStart99);
  std::printf("two raw-socket exchanges p50 %8.1f us   p99 %8.1f us\n", dRaw50, dRaw99);
  std::printf("ratio requester / raw    p50 %8.2f      p99 %8.2f\n", dStart50 / dRaw50,
              dStart99 / dRaw99);
  return 0;
}
