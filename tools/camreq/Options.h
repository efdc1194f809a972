// camreq's command line and its config file: what to drive and how to
// report it. Every value is checked here, so that a bad one ends the
// program with one clear line before any requester exists.
#ifndef CAMREQ_OPTIONS_H
#define CAMREQ_OPTIONS_H

#include <string>
#include <vector>

namespace camreq {

enum class ReqClass { kRtp, kHttp };

// One requester: the camera it drives and the parameters it is given.
struct CameraSpec {
  std::string sLabel;  // config section name, or "camera"
  ReqClass eClass = ReqClass::kRtp;
  bool bClassGiven = false;
  std::string sCommand;  // h264 mpeg4 audio play h264play jpeg; empty: by class
  int iCmdType = 0;      // the requester's iCmdType, from class and command
  int iCamType = 7;      // 0..36
  std::string sAddress;  // numeric IPv4/IPv6; empty: an embedded camsim device
  int iHttpPort = 0;     // 0: 80, or the embedded device's port
  int iRtpPort = 0;      // 0: camreq picks a free even port
  std::string sUser;
  std::string sPassword;
  std::string sProxyHost;  // empty: no proxy
  int iProxyPort = 0;
  std::vector<std::string> asProxyExcept;
  int iPreset = 0;
  int iChannel = 0;
  int iStream = 1;
  bool bKeepAlive = true;
  // Audio has no set-up of its own: it runs on the UID of the camera's video
  // session. Given here, or taken from the requester at iUidFrom (an index
  // of Options::asCameras) once that one has it.
  int iUid = -1;
  int iUidFrom = -1;
  // Embedded device only: faults ("PATH:FAULT", as camsim --fault) and the
  // delivery its set-up reply names (multi, uni, uni_manual).
  std::vector<std::string> asSimFaults;
  std::string sSimDelivery = "uni";

  bool Embedded() const { return sAddress.empty(); }
  bool PlayBack() const;
  bool Audio() const;
  // "rtp", "http"; the command word as the requester prints it.
  const char* ClassWord() const { return eClass == ReqClass::kRtp ? "rtp" : "http"; }
};

struct Options {
  bool bHelp = false;
  bool bTypes = false;    // "camreq types"
  double dDuration = 10;  // seconds of running; 0: until Ctrl-C or SIGTERM
  int iRoundDivisor = 0;  // idle round of 100 ms divided by this; 0: 10 embedded, else 1
  bool bLog = false;
  bool bQuiet = false;  // no live status lines
  std::string sSaveFrames;
  std::string sJson;
  std::string sSdp;
  std::string sConfig;
  std::vector<CameraSpec> asCameras;
};

// Thrown for bad input; the message is the one line camreq prints.
struct BadInput {
  std::string sMessage;
};

// Parses argv (without the program name) and the config file it names.
// Throws BadInput.
Options ParseCommandLine(const std::vector<std::string>& asArgs);

std::string UsageText();

// The checks shared by the command line and the config file. Each throws
// BadInput naming sWhat.
int ParsePort(const std::string& sWhat, const std::string& sText, int iLowest);
std::string ParseAddress(const std::string& sText);

}  // namespace camreq

#endif
