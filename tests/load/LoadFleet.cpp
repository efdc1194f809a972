#include "LoadFleet.h"

#include <dirent.h>
#include <malloc.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <thread>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTestSupport.h"
#include "CamTypes.h"
#include "HttpRig.h"
#include "kxcom.h"
#include "kxhttp.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// The sanitizers' allocator keeps its own count of the heap in use. GCC does
// not ship the header that declares it, the runtime has it all the same.
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#define LOAD_SANITIZER_HEAP 1
#endif

namespace loadtest {

namespace {

int CountEntries(const char* pcDir) {
  DIR* psDir = opendir(pcDir);
  if (psDir == nullptr) return -1;
  int iCount = 0;
  while (const dirent* psEntry = readdir(psDir)) iCount += psEntry->d_name[0] != '.' ? 1 : 0;
  closedir(psDir);
  return iCount;
}

long long HeapInUse() {
#ifdef LOAD_SANITIZER_HEAP
  return static_cast<long long>(__sanitizer_get_current_allocated_bytes());
#else
  const struct mallinfo2 sInfo = mallinfo2();
  return static_cast<long long>(sInfo.uordblks + sInfo.hblkhd);
#endif
}

struct DeviceSpec {
  int iModel;
  const char* pcName;
};
// Indexed by Dev.
constexpr DeviceSpec kDevices[] = {{CAM_REQUESTER_CAMTYPE_CAM07, "CAM07"},
                                   {CAM_REQUESTER_CAMTYPE_CAM09, "CAM09"},
                                   {CAM_REQUESTER_CAMTYPE_CAM13, "CAM13"},
                                   {CAM_REQUESTER_CAMTYPE_KE850, "KE850"}};

// The request that keeps a UID alive on each device, and where its UID is.
bool IsKeepAlive(Dev e, const camsim::RequestRecord& r) {
  switch (e) {
    case Dev::kQuillon:
      return r.path == "/cgi-bin/uidutil" && r.Param("UTIL") == "KEEPALIVE";
    case Dev::kRecorder:
      return r.path == "/cgi-bin/status.cgi";
    default:
      return r.path == "/cgi-bin/keep_alive";
  }
}

// The message layer remembers the addresses of the last 4096 buffers freed,
// to tell a second free from a foreign pointer. That memory fills over the
// first cycles of a fleet and then stays; filled before the baseline, it
// is no rise of the heap from cycle to cycle.
// The buffers are all made before any is freed, so that their addresses
// differ as those of a fleet's messages do.
void FillFreedBufferMemory() {
  std::vector<KXCOM_MSGBUF*> apBuffers(2 * 4096);
  for (KXCOM_MSGBUF*& psBuf : apBuffers) psBuf = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
  for (KXCOM_MSGBUF* psBuf : apBuffers) {
    if (psBuf != nullptr) KXCOM_FreeMsgBuf_Asy(psBuf);
  }
}

}  // namespace

const FleetRoad kFleetRoads[6] = {
    {"RtpH264Camera", Dev::kCamera, false, CAM_REQUESTER_CMD_H264_RTP},
    {"RtpMpeg4Camera", Dev::kMpeg4Camera, false, CAM_REQUESTER_CMD_MPEG4_RTP},
    {"RtpH264Recorder", Dev::kRecorder, false, CAM_REQUESTER_CMD_H264_RTP},
    {"JpegCamera", Dev::kCamera, true, CAM_REQUESTER_CMD_JPEG_HTTP},
    {"JpegQuillon", Dev::kQuillon, true, CAM_REQUESTER_CMD_JPEG_HTTP},
    {"JpegRecorder", Dev::kRecorder, true, CAM_REQUESTER_CMD_JPEG_HTTP},
};

std::vector<std::string> PathsOf(Dev eDevice) {
  switch (eDevice) {
    case Dev::kQuillon:
      return {"/cgi-bin/getuid", "/cgi-bin/syssetup", "/cgi-bin/push", "/cgi-bin/uidutil"};
    case Dev::kRecorder:
      return {"/cgi-bin/start.cgi", "/cgi-bin/ulogin.cgi", "/cgi-bin/push.cgi",
              "/cgi-bin/status.cgi", "/cgi-bin/logout.cgi"};
    default:
      return {"/cgi-bin/getuid", "/cgi-bin/h264", "/cgi-bin/mpeg4", "/cgi-bin/jpeg",
              "/cgi-bin/keep_alive"};
  }
}

Resources Snapshot() {
  Resources s;
  s.iFds = camtest::OpenFdCount();
  s.iThreads = CountEntries("/proc/self/task");
  s.iBuffers = KXCOM_LiveBufferCount();
  s.llHeap = HeapInUse();
  return s;
}

Resources SettledSnapshot() {
  // The time kxhttp.h gives a closed session's part, and a margin.
  std::this_thread::sleep_for(std::chrono::milliseconds(10500));
  const int fdListen = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in sAddress{};
  sAddress.sin_family = AF_INET;
  sAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t ulLength = sizeof(sAddress);
  const bool bListening =
      fdListen >= 0 && bind(fdListen, reinterpret_cast<sockaddr*>(&sAddress), ulLength) == 0 &&
      listen(fdListen, 1) == 0 &&
      getsockname(fdListen, reinterpret_cast<sockaddr*>(&sAddress), &ulLength) == 0;
  HTTP_SESSION* psSession =
      bListening
          ? http_open_session_to_ret("127.0.0.1", ntohs(sAddress.sin_port), nullptr, 0, 0, 1000, 0)
          : nullptr;
  EXPECT_NE(psSession, nullptr) << "no session to the loopback listener";
  if (psSession != nullptr) http_close_session(psSession);
  if (fdListen >= 0) close(fdListen);
  return Snapshot();
}

std::string Describe(const Resources& s) {
  char ac[160];
  snprintf(ac, sizeof(ac), "fds %d, threads %d, message buffers %d, heap %lld KiB", s.iFds,
           s.iThreads, s.iBuffers, s.llHeap / 1024);
  return ac;
}

void RaiseFileLimit() {
  rlimit sLimit{};
  if (getrlimit(RLIMIT_NOFILE, &sLimit) == 0 && sLimit.rlim_cur < sLimit.rlim_max) {
    sLimit.rlim_cur = sLimit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &sLimit);
  }
}

PrintCounter::PrintCounter() {
  COM_SetPrintSink(&PrintCounter::Sink, this);
}

PrintCounter::~PrintCounter() {
  COM_SetPrintSink(nullptr, nullptr);
}

void PrintCounter::Sink(const char*, void* pvContext) {
  ++static_cast<PrintCounter*>(pvContext)->m_ulCount;
}

Fleet::Fleet(int iMembers, int iWaitDivisor, int iHttpDivisor) : m_iMembers(iMembers) {
  RaiseFileLimit();
#ifndef LOAD_SANITIZER_HEAP
  // One arena: the heap in use is then what the program holds, without the
  // headers and tops of the arenas that the allocator adds as threads
  // contend (which grow over the first cycles and would pass for a leak).
  mallopt(M_ARENA_MAX, 1);
#endif
  FillFreedBufferMemory();
  KXCOM_SetWaitDivisor(iWaitDivisor);
  http_set_timeout_divisor(iHttpDivisor);
  m_pUids = std::make_unique<camtest::UidReceiver>();
  m_bStarted = m_pUids->Bound();
  EXPECT_TRUE(m_bStarted) << "the UID message's destination could not be bound";
}

Fleet::~Fleet() {
  Destroy();
  StopDevices();
  m_pUids.reset();
  http_set_timeout_divisor(1);
  KXCOM_SetWaitDivisor(1);
}

void Fleet::StartDevices() {
  for (const DeviceSpec& sSpec : kDevices) {
    camsim::DeviceConfig sConfig;
    sConfig.address = "127.0.0.1";
    sConfig.model = sSpec.iModel;
    // The record is read by no check: a short one keeps the heap steady.
    sConfig.recordLimit = 64;
    std::string sError;
    auto pDevice = camsim::Device::Start(sConfig, &sError);
    if (!pDevice) {
      ADD_FAILURE() << "camsim did not start: " << sError;
      return;
    }
    m_apDevices.push_back(std::move(pDevice));
    ObserveKeepAlives(static_cast<Dev>(m_apDevices.size() - 1));
  }
}

void Fleet::StopDevices() {
  for (auto& pDevice : m_apDevices) {
    pDevice->SetObserver(nullptr);
    pDevice->Stop();
  }
  m_apDevices.clear();
}

void Fleet::ObserveKeepAlives(Dev e) {
  m_apDevices.back()->SetObserver([this, e](const camsim::RequestRecord& r) {
    if (!IsKeepAlive(e, r)) return;
    std::lock_guard<std::mutex> lock(m_mutex);
    ++m_kept[e][std::atoi(r.Param("UID").c_str())];
  });
}

void Fleet::Create() {
  m_asMembers.resize(static_cast<size_t>(m_iMembers));
  for (int i = 0; i < m_iMembers; ++i) {
    Member& m = m_asMembers[static_cast<size_t>(i)];
    m.iNumber = i + 1;
    m.psRoad = &kFleetRoads[static_cast<size_t>(i) % 6];
    const Dev eDev = m.psRoad->eDevice;
    const camsim::Device& rDevice = Device(eDev);
    CCamRequesterNotify* pNotify = nullptr;
    if (m.psRoad->bHttp) {
      auto pReq = std::make_unique<CCamRequester_Cgi_Kobu_Http>();
      m.pFields = pReq.get();
      m.pReq = std::move(pReq);
      m.pPushNotify = std::make_unique<httptest::PushReaderNotify>();
      pNotify = m.pPushNotify.get();
    } else {
      auto pReq = std::make_unique<CCamRequester_Cgi_Kobu_Rtp>();
      m.pFields = pReq.get();
      m.pReq = std::move(pReq);
      m.pRtpNotify = std::make_unique<camtest::NotifyRecorder>();
      m.pRtpNotify->Watch(&m.pReq->iConnectStatus);
      pNotify = m.pRtpNotify.get();
      // A port of its own: a recorder sends its stream there.
      httptest::SetParam(*m.pReq, CAM_PARAM_RTPPORT, int32_t{30000 + 2 * i});
    }
    CCamRequester& r = *m.pReq;
    EXPECT_EQ(r.SetParameter(CAM_PARAM_IPADDRESS, rDevice.Address().c_str(), 0), 0);
    httptest::SetParam(r, CAM_PARAM_HTTPPORT, int32_t{rDevice.Port()});
    httptest::SetParam(r, CAM_PARAM_CMDTYPE, int32_t{m.psRoad->iCmdType});
    CAM_TYPE_PARAM sType{};
    sType.usCameraNumber = static_cast<uint16_t>(m.iNumber);
    sType.usCameraType = static_cast<uint16_t>(kDevices[static_cast<size_t>(eDev)].iModel);
    snprintf(sType.CamName, sizeof(sType.CamName), "%s",
             kDevices[static_cast<size_t>(eDev)].pcName);
    httptest::SetParam(r, CAM_PARAM_CAMTYPE, sType);
    httptest::SetParam(r, CAM_PARAM_SCREENPOS, int32_t{m.iPos()});
    httptest::SetParam(r, CAM_PARAM_CAMNO, int32_t{m.iNumber});
    if (eDev == Dev::kRecorder) {
      CAM_AUTH_PARAM sAuth{};
      snprintf(sAuth.cUserName, sizeof(sAuth.cUserName), "admin");
      snprintf(sAuth.cPassword, sizeof(sAuth.cPassword), "password");
      httptest::SetParam(r, CAM_PARAM_AUTH, sAuth);
    }
    EXPECT_EQ(r.SetParameter(CAM_PARAM_CALLBACK, pNotify, 0), 0);
    r.EnableKeepAlive();
    EXPECT_EQ(r.Initialize(m_lNextIndex++), 0) << "member " << m.iNumber;
  }
}

void Fleet::StartAll() {
  for (Member& m : m_asMembers) m.pReq->RequestStart();
}

void Fleet::StopAll() {
  for (Member& m : m_asMembers) m.pReq->RequestStop();
}

void Fleet::Destroy() {
  for (Member& m : m_asMembers) {
    // The upper layer lets go of its reader before it destroys the requester.
    if (m.pPushNotify) m.pPushNotify->Detach();
    m.pReq.reset();
    m.pPushNotify.reset();
    m.pRtpNotify.reset();
  }
  m_asMembers.clear();
}

bool Fleet::WaitAll(int iStatus, milliseconds tLimit, std::string* psLate) {
  const bool bAll = camtest::WaitUntil(
      [&] {
        for (const Member& m : m_asMembers) {
          if (m.Status() != iStatus) return false;
        }
        return true;
      },
      tLimit);
  if (!bAll && psLate != nullptr) {
    psLate->clear();
    for (const Member& m : m_asMembers) {
      if (m.Status() == iStatus) continue;
      *psLate += " " + std::to_string(m.iNumber) + "(" + m.psRoad->pcName +
                 "):" + std::to_string(m.Status());
    }
  }
  return bAll;
}

void Fleet::ForgetKeepAlives() {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_kept.clear();
}

bool Fleet::WaitKeepAlives(milliseconds tLimit, std::string* psLate) {
  auto fnMissing = [&](std::string* psOut) {
    std::lock_guard<std::mutex> lock(m_mutex);
    bool bMissing = false;
    for (const Member& m : m_asMembers) {
      const int iUid = m.pFields->iUid.load();
      // The START ends with a keep-alive; the second comes from the idle rounds.
      if (m_kept[m.psRoad->eDevice][iUid] >= 2) continue;
      bMissing = true;
      if (psOut == nullptr) break;
      *psOut += " " + std::to_string(m.iNumber) + "(UID " + std::to_string(iUid) + ")";
    }
    return bMissing;
  };
  const bool bAll = camtest::WaitUntil([&] { return !fnMissing(nullptr); }, tLimit);
  if (!bAll && psLate != nullptr) fnMissing(psLate);
  return bAll;
}

void Fleet::Heal() {
  for (auto& pDevice : m_apDevices) {
    pDevice->ClearFaults();
    if (!pDevice->Listening()) {
      std::string sError;
      EXPECT_TRUE(pDevice->AcceptConnections(&sError)) << sError;
    }
  }
}

std::map<int, std::vector<int>> Fleet::DrainUidMessages(std::string* psStray) {
  std::map<int, std::vector<int>> aOut;
  int32_t aiPayload[3] = {};
  while (m_pUids->Next(aiPayload)) {
    // {position - 1, camera number, 1 when the camera refused the UID}
    const int iNumber = aiPayload[1];
    const bool bKnown = iNumber >= 1 && iNumber <= m_iMembers;
    if (!bKnown || aiPayload[0] != (iNumber - 1) % 6) {
      *psStray += " {" + std::to_string(aiPayload[0]) + "," + std::to_string(aiPayload[1]) + "," +
                  std::to_string(aiPayload[2]) + "}";
      continue;
    }
    aOut[iNumber].push_back(aiPayload[2]);
  }
  return aOut;
}

std::map<int, std::vector<int>> Fleet::AlarmsByCamera(std::string* psStray) const {
  std::map<int, std::vector<int>> aOut;
  const std::vector<camtest::AlarmCapture::Report> asReports = m_alarms.Reports();
  for (const camtest::AlarmCapture::Report& r : asReports) {
    const bool bKnown = r.iCamera >= 1 && r.iCamera <= m_iMembers;
    if (!bKnown || r.iPosition != (r.iCamera - 1) % 6 + 1 || r.sAddress != "127.0.0.1") {
      *psStray += " {" + std::to_string(r.iCode) + "," + std::to_string(r.iCamera) + "," +
                  r.sAddress + "," + std::to_string(r.iPosition) + "}";
      continue;
    }
    aOut[r.iCamera].push_back(r.iCode);
  }
  return aOut;
}

}  // namespace loadtest
