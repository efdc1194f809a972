// camreq: drives one or more requesters as the device's media process does
// (parameters, start, keep-alive, stop) and shows what happens. It is the
// reference upper layer: see Notify.h for the notification object.
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTypeInfo.h"
#include "CamTypes.h"
#include "Embedded.h"
#include "Events.h"
#include "LogWatch.h"
#include "Options.h"
#include "Record.h"
#include "Report.h"
#include "Unit.h"
#include "kxcom.h"
#include "kxhttp.h"

namespace camreq {

namespace {

constexpr int kExitBadInput = 2;
constexpr int kExitFailed = 1;
constexpr int kEmbeddedSpeed = 10;
constexpr long kTickMs = 250;
constexpr int kMostCallsPerTick = 100;
// A stop is waited for this long (request thread rounds included).
constexpr double kStopWaitSec = 15;
// ... or until no status has moved for this long.
constexpr double kStopSettledSec = 3;
// Thread index base of Initialize: one queue per requester.
constexpr long kFirstThreadIndex = 1;

template <typename T>
int Set(CCamRequester& rReq, long lKind, const T& value) {
  return rReq.SetParameter(lKind, &value, sizeof(value));
}

void Refused(const Unit& rUnit, const std::string& sWhat) {
  throw BadInput{"the requester refused " + sWhat + " for camera type " +
                 std::to_string(rUnit.sSpec.iCamType) + " (" + CamTypeName(rUnit.sSpec.iCamType) +
                 ")"};
}

// The parameters of one requester, in the order the media process sets them.
void Configure(Unit& rUnit) {
  CCamRequester& rReq = *rUnit.pReq;
  const CameraSpec& rSpec = rUnit.sSpec;
  rReq.SetParameter(CAM_PARAM_IPADDRESS, rUnit.sAddress.c_str(),
                    static_cast<int>(rUnit.sAddress.size()));
  Set(rReq, CAM_PARAM_HTTPPORT, int32_t{rUnit.iHttpPort});
  if (rSpec.eClass == ReqClass::kRtp)
    Set(rReq, CAM_PARAM_RTPPORT, int32_t{rUnit.pNotify->RtpPort()});
  if (Set(rReq, CAM_PARAM_CMDTYPE, int32_t{rSpec.iCmdType}) != 0)
    Refused(rUnit, "the command type");
  CAM_TYPE_PARAM sType{};
  sType.usCameraNumber = static_cast<uint16_t>(rUnit.iPosition);
  sType.usCameraType = static_cast<uint16_t>(rSpec.iCamType);
  std::snprintf(sType.CamName, sizeof(sType.CamName), "%s", CamTypeName(rSpec.iCamType).c_str());
  if (Set(rReq, CAM_PARAM_CAMTYPE, sType) != 0) Refused(rUnit, "the camera type");
  rReq.SetParameter(CAM_PARAM_CALLBACK, rUnit.pNotify.get(), 0);
  CAM_AUTH_PARAM sAuth{};
  std::string sUser = rSpec.sUser;
  std::string sPassword = rSpec.sPassword;
  if (rUnit.pDevice != nullptr && sUser.empty()) {
    sUser = kEmbeddedUser;
    sPassword = kEmbeddedPassword;
  }
  std::snprintf(sAuth.cUserName, sizeof(sAuth.cUserName), "%s", sUser.c_str());
  std::snprintf(sAuth.cPassword, sizeof(sAuth.cPassword), "%s", sPassword.c_str());
  Set(rReq, CAM_PARAM_AUTH, sAuth);
  if (!rSpec.sProxyHost.empty()) {
    auto psProxy = std::make_unique<CAM_PROXY_PARAM>();
    *psProxy = CAM_PROXY_PARAM{};
    psProxy->enable = 1;
    std::snprintf(psProxy->host, sizeof(psProxy->host), "%s", rSpec.sProxyHost.c_str());
    psProxy->port = static_cast<uint16_t>(rSpec.iProxyPort);
    for (size_t i = 0; i < rSpec.asProxyExcept.size(); ++i) {
      std::snprintf(psProxy->except[i], sizeof(psProxy->except[i]), "%s",
                    rSpec.asProxyExcept[i].c_str());
    }
    rReq.SetParameter(CAM_PARAM_PROXY, psProxy.get(), sizeof(*psProxy));
  }
  if (Set(rReq, CAM_PARAM_PRESET, uint16_t(rSpec.iPreset)) != 0) {
    Refused(rUnit, "preset " + std::to_string(rSpec.iPreset));
  }
  Set(rReq, CAM_PARAM_SELCH, uint16_t(rSpec.iChannel));
  Set(rReq, CAM_PARAM_SCREENPOS, int32_t{rUnit.iPosition});
  if (rSpec.eClass == ReqClass::kRtp) Set(rReq, CAM_PARAM_STREAM, uint8_t(rSpec.iStream));
  Set(rReq, CAM_PARAM_CAMNO, int32_t{rUnit.iPosition});
}

// This side's address towards the camera: loopback for a loopback camera,
// every address otherwise.
std::string InterfaceFor(const std::string& sAddress) {
  const bool bV6 = sAddress.find(':') != std::string::npos;
  if (sAddress == "::1" || sAddress.rfind("127.", 0) == 0) return bV6 ? "::1" : "127.0.0.1";
  return bV6 ? "::" : "0.0.0.0";
}

std::string SdpPathFor(const std::string& sPath, int iPosition, bool bSeveral) {
  if (!bSeveral) return sPath;
  const size_t uSlash = sPath.rfind('/');
  const size_t uDot = sPath.rfind('.');
  const std::string sSuffix = "-" + std::to_string(iPosition);
  if (uDot == std::string::npos || (uSlash != std::string::npos && uDot < uSlash)) {
    return sPath + sSuffix;
  }
  return sPath.substr(0, uDot) + sSuffix + sPath.substr(uDot);
}

void PrepareSaveDir(const std::string& sDir) {
  if (sDir.empty()) return;
  if (mkdir(sDir.c_str(), 0777) != 0 && errno != EEXIST) {
    throw BadInput{"cannot make the frame folder '" + sDir + "': " + std::strerror(errno)};
  }
  struct stat sInfo {};
  if (stat(sDir.c_str(), &sInfo) != 0 || !S_ISDIR(sInfo.st_mode) ||
      access(sDir.c_str(), W_OK) != 0) {
    throw BadInput{"cannot write into the frame folder '" + sDir + "'"};
  }
}

// Waits for SIGINT or SIGTERM at most lMs; true when one came.
bool SignalWithin(const sigset_t& rSignals, long lMs) {
  const timespec sWait = {lMs / 1000, (lMs % 1000) * 1000000};
  return sigtimedwait(&rSignals, nullptr, &sWait) > 0;
}

class Run {
 public:
  explicit Run(const Options& rOptions) : m_rOptions(rOptions) {}
  int Go();

 private:
  void Build();
  void StartAll();
  void GiveUid(Unit& rUnit, int iUid, int iAudioEnable);
  void PostStart(Unit& rUnit);
  void Tick();
  void StopAll();
  int Finish();

  const Options& m_rOptions;
  // The requesters go first, while the log is still read and the events
  // still received.
  LogWatch m_log;
  Events m_events;
  Units m_units;
  std::string m_sEmbeddedLines;
  sigset_t m_signals{};
  RunInfo m_run;
  bool m_bAbort = false;
};

void Run::Build() {
  int iRtpCount = 0;
  for (const CameraSpec& rSpec : m_rOptions.asCameras) iRtpCount += rSpec.eClass == ReqClass::kRtp;
  int iPosition = 0;
  for (const CameraSpec& rSpec : m_rOptions.asCameras) {
    auto pUnit = std::make_unique<Unit>();
    Unit& rUnit = *pUnit;
    rUnit.sSpec = rSpec;
    rUnit.iPosition = ++iPosition;
    if (rSpec.iUidFrom >= 0) {
      // An audio requester on the camera of the video requester it takes the UID of.
      Unit& rVideo = *m_units[static_cast<size_t>(rSpec.iUidFrom)];
      rUnit.pUidSource = &rVideo;
      rUnit.pDevice = rVideo.pDevice;
      rUnit.sAddress = rVideo.sAddress;
      rUnit.iHttpPort = rVideo.iHttpPort;
    } else if (rSpec.Embedded()) {
      std::string sError;
      rUnit.pDevice = StartEmbedded(rSpec, rUnit.iPosition, &sError);
      if (rUnit.pDevice == nullptr) throw std::runtime_error("embedded camsim: " + sError);
      rUnit.sAddress = rUnit.pDevice->Address();
      rUnit.iHttpPort = rUnit.pDevice->Port();
      char acLine[160];
      std::snprintf(acLine, sizeof(acLine),
                    "camsim: camera type %d (%s) on %s port %d for position %d\n", rSpec.iCamType,
                    CamTypeName(rSpec.iCamType).c_str(), rUnit.sAddress.c_str(), rUnit.iHttpPort,
                    rUnit.iPosition);
      m_sEmbeddedLines += acLine;
    } else {
      rUnit.sAddress = rSpec.sAddress;
      rUnit.iHttpPort = rSpec.iHttpPort != 0 ? rSpec.iHttpPort : 80;
    }
    rUnit.pNotify = std::make_unique<CamreqNotify>(rSpec, rUnit.iPosition, m_rOptions.sSaveFrames);
    if (rSpec.eClass == ReqClass::kRtp) {
      std::string sError;
      if (!rUnit.pNotify->Prepare(InterfaceFor(rUnit.sAddress), rSpec.iRtpPort, &sError)) {
        throw std::runtime_error("cannot receive RTP: " + sError);
      }
      if (!m_rOptions.sSdp.empty()) {
        rUnit.sSdpPath = SdpPathFor(m_rOptions.sSdp, rUnit.iPosition, iRtpCount > 1);
        rUnit.pNotify->SetSdpFile(rUnit.sSdpPath);
      }
    }
    m_log.Watch(rUnit.iPosition);
    if (rSpec.eClass == ReqClass::kRtp) {
      rUnit.pReq = std::make_unique<CCamRequester_Cgi_Kobu_Rtp>();
    } else {
      rUnit.pReq = std::make_unique<CCamRequester_Cgi_Kobu_Http>();
    }
    m_units.push_back(std::move(pUnit));
    Configure(rUnit);
  }
}

void Run::StartAll() {
  long lIndex = kFirstThreadIndex;
  for (const auto& pUnit : m_units) {
    CCamRequester& rReq = *pUnit->pReq;
    pUnit->pNotify->Start();
    rReq.Initialize(lIndex++);
    // A recorder's audio runs on the UID of its video session, which logs
    // it out at the stop: the audio requester must not (no keep-alive, no
    // logout).
    if (pUnit->pUidSource != nullptr &&
        IsKelRecorder(static_cast<unsigned>(pUnit->sSpec.iCamType))) {
      pUnit->sSpec.bKeepAlive = false;
    }
    pUnit->sSpec.bKeepAlive ? rReq.EnableKeepAlive() : rReq.DiableKeepAlive();
    if (pUnit->sSpec.PlayBack()) {
      pUnit->sSpec.bKeepAlive ? rReq.EnablePBKeepAlive() : rReq.DiablePBKeepAlive();
    }
    if (pUnit->sSpec.iUid >= 0) GiveUid(*pUnit, pUnit->sSpec.iUid, 1);
    // An audio requester waiting for its video requester's UID starts later.
    if (pUnit->pUidSource == nullptr) PostStart(*pUnit);
  }
}

void Run::GiveUid(Unit& rUnit, int iUid, int iAudioEnable) {
  CAM_UID_PARAM sUid{};
  sUid.iUid = iUid;
  sUid.iAudioEnable = iAudioEnable;
  Set(*rUnit.pReq, CAM_PARAM_UID, sUid);
}

void Run::PostStart(Unit& rUnit) {
  if (rUnit.sSpec.Audio() && rUnit.pNotify->IsRtp()) {
    const int iManual =
        rUnit.pUidSource != nullptr ? rUnit.pUidSource->pNotify->ManualAudioPort() : 0;
    rUnit.pNotify->ExpectAudio(iManual != 0 ? iManual : rUnit.pNotify->RtpPort());
  }
  rUnit.sSpec.PlayBack() ? rUnit.pReq->RequestPBStart() : rUnit.pReq->RequestStart();
  rUnit.bStartPosted = true;
}

// One period of the upper layer's own thread.
void Run::Tick() {
  for (const auto& pUnit : m_units) {
    if (!pUnit->bStartPosted && pUnit->pUidSource != nullptr) {
      const int iUid = pUnit->pUidSource->pNotify->Uid();
      if (iUid != -1) {
        GiveUid(*pUnit, iUid, pUnit->pUidSource->pNotify->AudioEnable());
        pUnit->pNotify->NoteUpper("UID " + std::to_string(iUid) + " of position " +
                                  std::to_string(pUnit->pUidSource->iPosition) + " given");
        PostStart(*pUnit);
      }
    }
    pUnit->pNotify->UpdateSdp();
    // A play-back is set up only; the media process plays the recording on
    // the UID it was given and then reports the run (run success), once for
    // each set-up. camreq plays nothing itself: it reports the run as soon as
    // the set-up is announced, and counts what arrives.
    if (pUnit->sSpec.PlayBack()) {
      const int iAnnounced = pUnit->pNotify->Announcements();
      if (iAnnounced > pUnit->iPlayBackReported &&
          pUnit->pReq->iConnectStatus == CAM_HTTP_STS_READY) {
        pUnit->iPlayBackReported = iAnnounced;
        pUnit->pNotify->NoteUpper("play-back run reported (status change 1)");
        Set(*pUnit->pReq, CAM_PARAM_STATUSCHANGE, int32_t{1});
      }
      // The request thread leaves the play-back keep-alive to the upper
      // layer: the RTP requester sends on every 30th call, the HTTP one on
      // every call, so that one goes out every 30 s (shortened by --speed).
      const double dPeriod = (pUnit->pNotify->IsRtp() ? 1.0 : 30.0) / m_run.iSpeed;
      if (!pUnit->sSpec.bKeepAlive || pUnit->pReq->iConnectStatus != CAM_HTTP_STS_RUN) {
        pUnit->dNextPBKeepAlive = 0;
      } else {
        if (pUnit->dNextPBKeepAlive == 0) pUnit->dNextPBKeepAlive = Now();
        // The calls due since the last period of this thread, a few at most.
        for (int i = 0; i < kMostCallsPerTick && Now() >= pUnit->dNextPBKeepAlive; ++i) {
          pUnit->dNextPBKeepAlive += dPeriod;
          pUnit->pReq->SendPBKeepAliveCommand();
        }
      }
    }
  }
}

void Run::StopAll() {
  // Audio first, then the video whose UID it runs on.
  for (auto it = m_units.rbegin(); it != m_units.rend(); ++it) {
    Unit& rUnit = **it;
    if (!rUnit.bStartPosted) continue;
    rUnit.sSpec.PlayBack() ? rUnit.pReq->RequestPBStop() : rUnit.pReq->RequestStop();
  }
  // Each requester is back at IDLE once its stop went out. One that was
  // still setting up or starting keeps its status (a stop there sends
  // nothing), so the wait ends as well when no status has moved for a while.
  const double dEnd = Now() + kStopWaitSec;
  std::vector<int> aiLast;
  double dLastChange = Now();
  while (Now() < dEnd && !m_bAbort) {
    std::vector<int> aiNow;
    bool bAllIdle = true;
    for (const auto& pUnit : m_units) {
      aiNow.push_back(pUnit->pReq->iConnectStatus);
      bAllIdle = bAllIdle && aiNow.back() == CAM_HTTP_STS_IDLE;
    }
    if (bAllIdle) break;
    if (aiNow != aiLast) {
      aiLast = aiNow;
      dLastChange = Now();
    } else if (Now() - dLastChange > kStopSettledSec) {
      break;
    }
    if (SignalWithin(m_signals, 50)) m_bAbort = true;
  }
  for (const auto& pUnit : m_units) {
    pUnit->iFinalStatus = pUnit->pReq->iConnectStatus;
    // Nothing reads a push handle from here on, withdrawn or not: the
    // requester closes it when it goes.
    pUnit->pNotify->LetGoOfPush();
    pUnit->pReq.reset();
    pUnit->pNotify->Stop();
    if (pUnit->pDevice != nullptr) pUnit->pDevice->Stop();
  }
}

int Run::Finish() {
  m_events.Stop();
  m_log.Uninstall();
  bool bAllOk = true;
  for (const auto& pUnit : m_units) {
    bAllOk = bAllOk && UnitSucceeded(*pUnit, m_log.Snapshot(pUnit->iPosition));
  }
  m_run.iExitStatus = bAllOk ? 0 : kExitFailed;
  const nlohmann::ordered_json sSummary = SummaryJson(m_units, m_log, m_events, m_run);
  std::fputs(SummaryText(sSummary).c_str(), stdout);
  std::fflush(stdout);
  if (!m_rOptions.sJson.empty()) {
    std::ofstream sFile(m_rOptions.sJson, std::ios::trunc);
    sFile << sSummary.dump(2) << "\n";
    sFile.close();
    if (!sFile) {
      std::fprintf(stderr, "camreq: cannot write '%s'\n", m_rOptions.sJson.c_str());
      return kExitFailed;
    }
  }
  return m_run.iExitStatus;
}

int Run::Go() {
  // Ctrl-C and SIGTERM are taken by the main thread alone, as a request to
  // stop; every thread made from here on inherits the mask.
  sigemptyset(&m_signals);
  sigaddset(&m_signals, SIGINT);
  sigaddset(&m_signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &m_signals, nullptr);
  PrepareSaveDir(m_rOptions.sSaveFrames);

  bool bEmbedded = false;
  for (const CameraSpec& rSpec : m_rOptions.asCameras) bEmbedded = bEmbedded || rSpec.Embedded();
  m_run.bEmbedded = bEmbedded;
  m_run.iSpeed =
      m_rOptions.iRoundDivisor != 0 ? m_rOptions.iRoundDivisor : (bEmbedded ? kEmbeddedSpeed : 1);
  KXCOM_SetWaitDivisor(m_run.iSpeed);
  m_log.Install(m_rOptions.bLog ? stderr : nullptr);
  if (!m_events.Start()) {
    std::fprintf(stderr, "camreq: the UID message queue is taken\n");
    return kExitFailed;
  }
  try {
    Build();
  } catch (const std::runtime_error& rError) {
    std::fprintf(stderr, "camreq: %s\n", rError.what());
    m_units.clear();
    return kExitFailed;
  }
  std::fputs(m_sEmbeddedLines.c_str(), stdout);
  const bool bTerminal = isatty(STDOUT_FILENO) == 1 && !m_rOptions.bLog;
  LiveDisplay sDisplay(stdout, bTerminal);
  const double dStart = Now();
  StartAll();
  m_run.sStoppedBy = "duration";
  double dNextShow = dStart;
  const double dShowEvery = bTerminal ? 0.25 : 1.0;
  while (m_rOptions.dDuration == 0 || Now() - dStart < m_rOptions.dDuration) {
    if (SignalWithin(m_signals, kTickMs)) {
      m_run.sStoppedBy = "signal";
      break;
    }
    Tick();
    if (!m_rOptions.bQuiet && Now() >= dNextShow) {
      sDisplay.Show(m_units, m_log, Now());
      dNextShow += dShowEvery;
    }
  }
  m_run.dRan = Now() - dStart;
  if (!m_rOptions.bQuiet) sDisplay.Show(m_units, m_log, Now());
  StopAll();
  return Finish();
}

}  // namespace

}  // namespace camreq

int main(int argc, char** argv) {
  using namespace camreq;
  Options sOptions;
  try {
    sOptions = ParseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const BadInput& rBad) {
    std::fprintf(stderr, "camreq: %s\n", rBad.sMessage.c_str());
    return kExitBadInput;
  }
  if (sOptions.bHelp) {
    std::fputs(UsageText().c_str(), stdout);
    return 0;
  }
  if (sOptions.bTypes) {
    std::fputs(CamTypesTable().c_str(), stdout);
    return 0;
  }
  try {
    Run sRun(sOptions);
    return sRun.Go();
  } catch (const BadInput& rBad) {
    std::fprintf(stderr, "camreq: %s\n", rBad.sMessage.c_str());
    return kExitBadInput;
  }
}
