#include "RtpRoad.h"

#include <cctype>

namespace rtptest {

namespace {

// The upper layer's indexes; every requester of the process gets its own.
std::atomic<long> g_lNextIndex{200};

// The print prefix of a command type, as "R:%s" with the type's word.
std::string TypePrefix(int iCmdType) {
  static const char* const kWords[] = {"h264", "audio", "mpeg4", "play", "h264play"};
  if (iCmdType < 0 || iCmdType > 4) return "";
  return std::string("R:") + kWords[iCmdType];
}

// "IP:%15.15s ", "POS:%1.1d ", "%6.6s ": what every line of a requester
// begins with.
std::string LinePrefix(const std::string& sAddress, int iPos, int iCmdType) {
  char acCells[3][32] = {};
  if (!sAddress.empty()) snprintf(acCells[0], sizeof(acCells[0]), "IP:%15.15s ", sAddress.c_str());
  if (iPos != 0) snprintf(acCells[1], sizeof(acCells[1]), "POS:%1.1d ", iPos);
  const std::string sType = TypePrefix(iCmdType);
  if (!sType.empty()) snprintf(acCells[2], sizeof(acCells[2]), "%6.6s ", sType.c_str());
  return std::string(acCells[0]) + acCells[1] + acCells[2];
}

template <typename T>
void Set(Requester& rReq, long lKind, const T& rValue) {
  EXPECT_EQ(rReq.SetParameter(lKind, &rValue, static_cast<int>(sizeof(T))), 0)
      << "parameter kind " << lKind;
}

}  // namespace

std::string Stream::Tindex() const {
  char ac[32];
  snprintf(ac, sizeof(ac), "%x", static_cast<unsigned>(lIndex + 16));
  return ac;
}

camsim::DeviceConfig CameraConfig(const std::string& sAddress, int iModel) {
  camsim::DeviceConfig sConfig;
  sConfig.address = sAddress;
  sConfig.model = iModel;
  sConfig.user = "operator";
  sConfig.password = "s3cret!";
  sConfig.values.firstUid = 41;
  sConfig.values.audioBitrate = 24;
  sConfig.values.audioEnable = "1";
  sConfig.values.delivery = "multi";
  sConfig.values.multiAddress = {239, 10, 20, 30};
  sConfig.values.multiPort = 5004;
  sConfig.values.uniPort = 6100;
  sConfig.values.audioInPort = 7200;
  sConfig.values.playMode = 0;
  return sConfig;
}

namespace {
// Replaces the digits after every sKey with N.
std::string DigitsToN(const std::string& sLine, const std::string& sKey) {
  std::string sOut;
  size_t uFrom = 0;
  for (size_t uAt = sLine.find(sKey); uAt != std::string::npos; uAt = sLine.find(sKey, uFrom)) {
    size_t uEnd = uAt + sKey.size();
    while (uEnd < sLine.size() && std::isdigit(static_cast<unsigned char>(sLine[uEnd]))) ++uEnd;
    sOut += sLine.substr(uFrom, uAt + sKey.size() - uFrom);
    sOut += uEnd > uAt + sKey.size() ? "N" : "";
    uFrom = uEnd;
  }
  return sOut + sLine.substr(uFrom);
}
}  // namespace

std::string Normalized(const std::string& sLine) {
  return DigitsToN(DigitsToN(sLine, "page="), "TEMP=");
}

void ExpectInOrder(const std::vector<std::string>& asLines,
                   const std::vector<std::string>& asExpected, const std::string& sWhere) {
  size_t uAt = 0;
  for (const std::string& sWant : asExpected) {
    size_t uFound = uAt;
    while (uFound < asLines.size() && asLines[uFound] != sWant) ++uFound;
    if (uFound == asLines.size()) {
      // The lines from the last match on, where the expected one was due.
      std::string sAll;
      for (size_t i = uAt; i < asLines.size() && i < uAt + 120; ++i) {
        sAll += "  " + asLines[i] + (asLines[i].empty() || asLines[i].back() != '\n' ? "\n" : "");
      }
      ADD_FAILURE() << sWhere << "\nmissing, or not in this order: [" << sWant
                    << "]\nlines from the last match on:\n"
                    << sAll;
      return;
    }
    uAt = uFound + 1;
  }
}

void RoadTest::SetUp() {
  // A sanitizer starts a helper thread with the first thread of the process.
  std::thread([] {}).join();
  KXCOM_SetWaitDivisor(kWaitDivisor);
  http_set_timeout_divisor(kHttpDivisor);
  m_iFdsBefore = camtest::OpenFdCount();
  m_iBuffersBefore = KXCOM_LiveBufferCount();
  m_pUidReceiver = std::make_unique<camtest::UidReceiver>();
  ASSERT_TRUE(m_pUidReceiver->Bound());
}

void RoadTest::TearDown() {
  for (auto& pStream : m_apStreams) EndStream(*pStream);
  m_apStreams.clear();
  if (m_pDevice) m_pDevice->Stop();
  m_pDevice.reset();
  m_pUidReceiver.reset();
  EXPECT_EQ(KXCOM_LiveBufferCount(), m_iBuffersBefore) << "message buffers left behind";
  EXPECT_EQ(camtest::SettledFdCount(m_iFdsBefore), m_iFdsBefore) << "file descriptors left open";
  http_set_timeout_divisor(1);
  KXCOM_SetWaitDivisor(1);
}

void RoadTest::EndStream(Stream& rStream) {
  // The destructor waits for IDLE; a stream is brought there first, as the
  // upper layer does. A restart in between may need a second stop.
  for (int i = 0; i < 3 && rStream.Status() != CAM_HTTP_STS_IDLE; ++i) {
    if (m_pDevice) m_pDevice->ClearFaults();
    rStream.r().RequestStop();
    WaitStatus(rStream, CAM_HTTP_STS_IDLE, milliseconds(3000));
  }
  EXPECT_EQ(rStream.Status(), CAM_HTTP_STS_IDLE) << "a stream could not be brought to IDLE";
  rStream.pRequester.reset();
  rStream.pNotify.reset();
}

camsim::Device& RoadTest::StartCamera(const camsim::DeviceConfig& sConfig) {
  std::string sError;
  m_pDevice = camsim::Device::Start(sConfig, &sError);
  if (!m_pDevice) {
    ADD_FAILURE() << "camsim did not start: " << sError;
    throw std::runtime_error("camsim did not start");
  }
  return *m_pDevice;
}

Stream& RoadTest::AddStream(const StreamSetup& sSetup) {
  auto pStream = std::make_unique<Stream>();
  pStream->sSetup = sSetup;
  pStream->pNotify = std::make_unique<camtest::NotifyRecorder>();
  pStream->pRequester = std::make_unique<Requester>();
  pStream->lIndex = g_lNextIndex++;
  Requester& rReq = *pStream->pRequester;
  pStream->pNotify->Watch(&rReq.iConnectStatus);

  const std::string& sAddress = m_pDevice->Address();
  EXPECT_EQ(rReq.SetParameter(CAM_PARAM_IPADDRESS, sAddress.c_str(), 0), 0);
  Set(rReq, CAM_PARAM_HTTPPORT, static_cast<int32_t>(m_pDevice->Port()));
  Set(rReq, CAM_PARAM_RTPPORT, static_cast<int32_t>(sSetup.iRtpPort));
  Set(rReq, CAM_PARAM_CMDTYPE, static_cast<int32_t>(sSetup.iCmdType));
  CAM_TYPE_PARAM sType{};
  sType.usCameraNumber = sSetup.usCameraNumber;
  sType.usCameraType = sSetup.usCameraType;
  snprintf(sType.CamName, sizeof(sType.CamName), "%s", sSetup.sCamName.c_str());
  Set(rReq, CAM_PARAM_CAMTYPE, sType);
  Set(rReq, CAM_PARAM_PRESET, sSetup.usPreset);
  Set(rReq, CAM_PARAM_SELCH, sSetup.usSelectChNo);
  Set(rReq, CAM_PARAM_STREAM, sSetup.ucStream);
  Set(rReq, CAM_PARAM_SCREENPOS, static_cast<int32_t>(sSetup.iPos));
  Set(rReq, CAM_PARAM_CAMNO, static_cast<int32_t>(sSetup.iCamNo));
  Set(rReq, CAM_PARAM_PLAYMODE, static_cast<int32_t>(sSetup.iPlayMode));
  if (!sSetup.sUser.empty()) {
    CAM_AUTH_PARAM sAuth{};
    snprintf(sAuth.cUserName, sizeof(sAuth.cUserName), "%s", sSetup.sUser.c_str());
    snprintf(sAuth.cPassword, sizeof(sAuth.cPassword), "%s", sSetup.sPassword.c_str());
    Set(rReq, CAM_PARAM_AUTH, sAuth);
  }
  if (sSetup.iUid != -1) {
    CAM_UID_PARAM sUid{};
    sUid.iUid = sSetup.iUid;
    sUid.iAudioEnable = sSetup.iAudioEnable;
    Set(rReq, CAM_PARAM_UID, sUid);
  }
  EXPECT_EQ(rReq.SetParameter(CAM_PARAM_CALLBACK,
                              static_cast<CCamRequesterNotify*>(pStream->pNotify.get()), 0),
            0);
  if (sSetup.bKeepAlive) rReq.EnableKeepAlive();
  pStream->sPrefix = LinePrefix(sAddress, sSetup.iPos, sSetup.iCmdType);
  EXPECT_EQ(rReq.Initialize(pStream->lIndex), 0);
  m_apStreams.push_back(std::move(pStream));
  return *m_apStreams.back();
}

std::vector<std::string> RoadTest::RequestLines() const {
  std::vector<std::string> asOut;
  for (const camsim::RequestRecord& r : m_pDevice->Requests()) {
    asOut.push_back(Normalized(r.requestLine));
  }
  return asOut;
}

std::vector<std::string> RoadTest::CollapsedRequestLines(const std::string& sSkip) const {
  std::vector<std::string> asOut;
  for (const std::string& sLine : RequestLines()) {
    if (!sSkip.empty() && sLine.find(sSkip) != std::string::npos) continue;
    if (asOut.empty() || asOut.back() != sLine) asOut.push_back(sLine);
  }
  return asOut;
}

int RoadTest::CountRequests(const std::string& sHead) const {
  int iCount = 0;
  for (const std::string& s : RequestLines()) iCount += s.rfind(sHead, 0) == 0 ? 1 : 0;
  return iCount;
}

bool RoadTest::WaitForRequest(const std::string& sHead, int iCount, milliseconds tLimit) const {
  return camtest::WaitUntil([&] { return CountRequests(sHead) >= iCount; }, tLimit);
}

std::vector<std::string> RoadTest::Lines() const {
  std::vector<std::string> asOut;
  for (const std::string& s : m_capture.Lines()) asOut.push_back(Normalized(s));
  return asOut;
}

std::string RoadTest::Tail(size_t uCount) const {
  const std::vector<std::string> asLines = m_capture.Lines();
  std::string sOut = "last lines printed:\n";
  for (size_t i = asLines.size() > uCount ? asLines.size() - uCount : 0; i < asLines.size(); ++i) {
    sOut += "  " + asLines[i];
    if (asLines[i].empty() || asLines[i].back() != '\n') sOut += "\n";
  }
  return sOut;
}

void RoadTest::ExpectLines(const std::vector<std::string>& asExpected, const std::string& sWhere) {
  if (!asExpected.empty()) {
    camtest::WaitUntil([&] {
      for (const std::string& sLine : Lines()) {
        if (sLine == asExpected.back()) return true;
      }
      return false;
    });
  }
  ExpectInOrder(Lines(), asExpected, sWhere);
}

bool RoadTest::WaitStatus(const Stream& rStream, int iStatus, milliseconds tLimit) const {
  return camtest::WaitUntil([&] { return rStream.Status() == iStatus; }, tLimit);
}

void RoadTest::StartToRun(Stream& rStream) {
  const int iKeepAlives = m_capture.CountContaining("SendKeepAliveCommandExec OUT!!!!!. \n");
  rStream.r().RequestStart();
  ASSERT_TRUE(WaitStatus(rStream, CAM_HTTP_STS_RUN))
      << "no RUN; status " << rStream.Status() << "\n"
      << Tail();
  if (rStream.sSetup.bKeepAlive) {
    ASSERT_TRUE(
        m_capture.WaitForCount("SendKeepAliveCommandExec OUT!!!!!. \n", iKeepAlives + 1, kLimit))
        << Tail();
  }
}

void RoadTest::StopToIdle(Stream& rStream) {
  rStream.r().RequestStop();
  ASSERT_TRUE(WaitStatus(rStream, CAM_HTTP_STS_IDLE))
      << "no IDLE; status " << rStream.Status() << "\n"
      << Tail();
}

}  // namespace rtptest
