#include "Options.h"

#include <arpa/inet.h>
#include <ini.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "CamRequesterParam.h"
#include "CamTypeInfo.h"
#include "Fault.h"

namespace camreq {

namespace {

[[noreturn]] void Bad(const std::string& sMessage) {
  throw BadInput{sMessage};
}

long ParseInteger(const std::string& sWhat, const std::string& sText, long lLowest, long lHighest) {
  errno = 0;
  char* pcEnd = nullptr;
  const long lValue = std::strtol(sText.c_str(), &pcEnd, 10);
  if (sText.empty() || *pcEnd != '\0' || errno != 0) {
    Bad(sWhat + " '" + sText + "' is not a number");
  }
  if (lValue < lLowest || lValue > lHighest) {
    Bad(sWhat + " " + sText + " is out of range (" + std::to_string(lLowest) + ".." +
        std::to_string(lHighest) + ")");
  }
  return lValue;
}

bool ParseSwitch(const std::string& sWhat, const std::string& sText) {
  if (sText == "on" || sText == "yes" || sText == "true" || sText == "1") return true;
  if (sText == "off" || sText == "no" || sText == "false" || sText == "0") return false;
  Bad(sWhat + " '" + sText + "' is neither on nor off");
}

// "HOST:PORT", "[V6]:PORT".
void ParseProxy(CameraSpec& rSpec, const std::string& sText) {
  std::string sHost;
  std::string sPort;
  if (!sText.empty() && sText[0] == '[') {
    const size_t uClose = sText.find(']');
    if (uClose == std::string::npos || uClose + 1 >= sText.size() || sText[uClose + 1] != ':') {
      Bad("proxy '" + sText + "' is not HOST:PORT");
    }
    sHost = sText.substr(1, uClose - 1);
    sPort = sText.substr(uClose + 2);
  } else {
    const size_t uColon = sText.rfind(':');
    if (uColon == std::string::npos || uColon == 0) Bad("proxy '" + sText + "' is not HOST:PORT");
    sHost = sText.substr(0, uColon);
    sPort = sText.substr(uColon + 1);
  }
  if (sHost.size() >= CAM_PROXY_HOST_SIZE) Bad("proxy host '" + sHost + "' is too long");
  rSpec.sProxyHost = sHost;
  rSpec.iProxyPort = ParsePort("proxy port", sPort, 1);
}

void CheckText(const std::string& sWhat, const std::string& sText) {
  if (sText.size() >= CAM_TEXT_SIZE) {
    Bad(sWhat + " is too long (at most " + std::to_string(CAM_TEXT_SIZE - 1) + " characters)");
  }
}

// One camera key, from "--KEY VALUE" or a config line "KEY = VALUE". False
// when the key is not a camera key.
bool ApplyCameraKey(CameraSpec& rSpec, const std::string& sKey, const std::string& sValue) {
  if (sKey == "class") {
    if (sValue == "rtp") {
      rSpec.eClass = ReqClass::kRtp;
    } else if (sValue == "http") {
      rSpec.eClass = ReqClass::kHttp;
    } else {
      Bad("unknown requester class '" + sValue + "' (rtp or http)");
    }
    rSpec.bClassGiven = true;
  } else if (sKey == "cmd" || sKey == "command") {
    static const char* const kWords[] = {"h264", "mpeg4", "audio", "play", "h264play", "jpeg"};
    bool bKnown = false;
    for (const char* pcWord : kWords) bKnown = bKnown || sValue == pcWord;
    if (!bKnown) {
      Bad("unknown command type '" + sValue + "' (h264, mpeg4, audio, play, h264play or jpeg)");
    }
    rSpec.sCommand = sValue;
  } else if (sKey == "type") {
    rSpec.iCamType = ParseCamType(sValue);
    if (rSpec.iCamType < 0) {
      Bad("unknown camera type '" + sValue +
          "' (0..36 or a name such as CAM07 or KE850; 'camreq types' lists them)");
    }
  } else if (sKey == "address") {
    rSpec.sAddress = ParseAddress(sValue);
  } else if (sKey == "http-port") {
    rSpec.iHttpPort = ParsePort("HTTP port", sValue, 1);
  } else if (sKey == "rtp-port") {
    rSpec.iRtpPort = ParsePort("RTP port", sValue, 0);
  } else if (sKey == "user") {
    CheckText("user name", sValue);
    rSpec.sUser = sValue;
  } else if (sKey == "password") {
    CheckText("password", sValue);
    rSpec.sPassword = sValue;
  } else if (sKey == "proxy") {
    ParseProxy(rSpec, sValue);
  } else if (sKey == "proxy-except") {
    if (rSpec.asProxyExcept.size() >= CAM_PROXY_EXCEPT_COUNT) {
      Bad("more than " + std::to_string(CAM_PROXY_EXCEPT_COUNT) + " proxy exception patterns");
    }
    if (sValue.size() >= CAM_PROXY_EXCEPT_SIZE) Bad("proxy exception '" + sValue + "' is too long");
    rSpec.asProxyExcept.push_back(sValue);
  } else if (sKey == "preset") {
    rSpec.iPreset = static_cast<int>(ParseInteger("preset", sValue, 0, 65535));
  } else if (sKey == "channel") {
    rSpec.iChannel = static_cast<int>(ParseInteger("channel", sValue, 0, 65535));
  } else if (sKey == "stream") {
    rSpec.iStream = static_cast<int>(ParseInteger("stream", sValue, 0, 255));
  } else if (sKey == "uid") {
    rSpec.iUid = static_cast<int>(ParseInteger("UID", sValue, 0, 0x7FFFFFFF));
  } else if (sKey == "keepalive" || sKey == "keep-alive") {
    rSpec.bKeepAlive = ParseSwitch("keep-alive", sValue);
  } else if (sKey == "sim-fault") {
    const size_t uColon = sValue.find(':');
    if (uColon == std::string::npos || sValue[0] != '/') {
      Bad("sim-fault '" + sValue + "' is not PATH:FAULT");
    }
    camsim::Fault sFault;
    std::string sError;
    if (!camsim::ParseFault(sValue.substr(uColon + 1), &sFault, &sError)) {
      Bad("bad sim-fault '" + sValue + "': " + sError);
    }
    rSpec.asSimFaults.push_back(sValue);
  } else if (sKey == "sim-delivery") {
    if (sValue != "multi" && sValue != "uni" && sValue != "uni_manual") {
      Bad("unknown sim-delivery '" + sValue + "' (multi, uni or uni_manual)");
    }
    rSpec.sSimDelivery = sValue;
  } else {
    return false;
  }
  return true;
}

// Class and command type together: the requester's iCmdType.
void Resolve(CameraSpec& rSpec) {
  const std::string sWhere = rSpec.sLabel == "camera" ? "" : " (camera '" + rSpec.sLabel + "')";
  if (!rSpec.bClassGiven) {
    rSpec.eClass = rSpec.sCommand == "jpeg" ? ReqClass::kHttp : ReqClass::kRtp;
  }
  if (rSpec.sCommand.empty()) rSpec.sCommand = rSpec.eClass == ReqClass::kRtp ? "h264" : "jpeg";
  const std::string& sCmd = rSpec.sCommand;
  if (rSpec.eClass == ReqClass::kRtp) {
    if (sCmd == "h264")
      rSpec.iCmdType = CAM_REQUESTER_CMD_H264_RTP;
    else if (sCmd == "audio")
      rSpec.iCmdType = CAM_REQUESTER_CMD_G726_RTP;
    else if (sCmd == "mpeg4")
      rSpec.iCmdType = CAM_REQUESTER_CMD_MPEG4_RTP;
    else if (sCmd == "play")
      rSpec.iCmdType = CAM_REQUESTER_CMD_MPEG4_PLAY;
    else if (sCmd == "h264play")
      rSpec.iCmdType = CAM_REQUESTER_CMD_H264_PLAY;
    else
      Bad("command type '" + sCmd + "' needs the http requester class" + sWhere);
  } else {
    if (sCmd == "jpeg")
      rSpec.iCmdType = CAM_REQUESTER_CMD_JPEG_HTTP;
    else if (sCmd == "audio")
      rSpec.iCmdType = CAM_REQUESTER_CMD_G726_HTTP;
    else if (sCmd == "play")
      rSpec.iCmdType = CAM_REQUESTER_CMD_JPEG_PLAY;
    else
      Bad("command type '" + sCmd + "' needs the rtp requester class" + sWhere);
  }
}

struct IniState {
  const CameraSpec* psDefaults;
  std::vector<CameraSpec>* pasCameras;
  std::string sError;
};

int IniHandler(void* pvUser, const char* pcSection, const char* pcName, const char* pcValue) {
  auto* psState = static_cast<IniState*>(pvUser);
  if (pcSection[0] == '\0') {
    psState->sError = std::string("'") + pcName + "' stands before any [camera] section";
    return 0;
  }
  if (psState->pasCameras->empty() || psState->pasCameras->back().sLabel != pcSection) {
    for (const CameraSpec& rSpec : *psState->pasCameras) {
      if (rSpec.sLabel == pcSection) {
        psState->sError = std::string("section [") + pcSection + "] comes twice";
        return 0;
      }
    }
    psState->pasCameras->push_back(*psState->psDefaults);
    psState->pasCameras->back().sLabel = pcSection;
  }
  try {
    if (!ApplyCameraKey(psState->pasCameras->back(), pcName, pcValue)) {
      psState->sError = std::string("unknown key '") + pcName + "'";
      return 0;
    }
  } catch (const BadInput& rBad) {
    psState->sError = rBad.sMessage;
    return 0;
  }
  return 1;
}

std::vector<CameraSpec> ReadConfig(const std::string& sPath, const CameraSpec& rDefaults) {
  {
    std::ifstream sProbe(sPath);
    if (!sProbe) {
      Bad("cannot read config file '" + sPath + "': " + std::strerror(errno));
    }
  }
  std::vector<CameraSpec> asCameras;
  IniState sState{&rDefaults, &asCameras, ""};
  const int iRet = ini_parse(sPath.c_str(), &IniHandler, &sState);
  if (iRet < 0) Bad("cannot read config file '" + sPath + "': " + std::strerror(errno));
  if (iRet > 0) {
    Bad("config file '" + sPath + "' line " + std::to_string(iRet) + ": " +
        (sState.sError.empty() ? "not a [section] or KEY = VALUE line" : sState.sError));
  }
  if (asCameras.empty()) Bad("config file '" + sPath + "' names no camera ([section] with keys)");
  return asCameras;
}

}  // namespace

bool CameraSpec::Audio() const {
  return eClass == ReqClass::kRtp ? iCmdType == CAM_REQUESTER_CMD_G726_RTP
                                  : iCmdType == CAM_REQUESTER_CMD_G726_HTTP;
}

bool CameraSpec::PlayBack() const {
  return eClass == ReqClass::kRtp
             ? (iCmdType == CAM_REQUESTER_CMD_MPEG4_PLAY || iCmdType == CAM_REQUESTER_CMD_H264_PLAY)
             : iCmdType == CAM_REQUESTER_CMD_JPEG_PLAY;
}

int ParsePort(const std::string& sWhat, const std::string& sText, int iLowest) {
  return static_cast<int>(ParseInteger(sWhat, sText, iLowest, 65535));
}

std::string ParseAddress(const std::string& sText) {
  std::string sBare = sText;
  if (sBare.size() >= 2 && sBare.front() == '[' && sBare.back() == ']') {
    sBare = sBare.substr(1, sBare.size() - 2);
  }
  unsigned char aucAddress[sizeof(in6_addr)];
  if (sBare.size() >= CAM_TEXT_SIZE || (inet_pton(AF_INET, sBare.c_str(), aucAddress) != 1 &&
                                        inet_pton(AF_INET6, sBare.c_str(), aucAddress) != 1)) {
    Bad("invalid camera address '" + sText + "' (a numeric IPv4 or IPv6 address)");
  }
  return sBare;
}

Options ParseCommandLine(const std::vector<std::string>& asArgs) {
  Options sOptions;
  CameraSpec sDefaults;
  sDefaults.sLabel = "camera";
  size_t i = 0;
  if (!asArgs.empty() && asArgs[0] == "types") {
    sOptions.bTypes = true;
    if (asArgs.size() > 1) Bad("'types' takes no further arguments");
    return sOptions;
  }
  while (i < asArgs.size()) {
    std::string sArg = asArgs[i++];
    if (sArg.rfind("--", 0) != 0) Bad("unexpected argument '" + sArg + "' (see --help)");
    std::string sKey = sArg.substr(2);
    std::string sValue;
    bool bHasValue = false;
    const size_t uEquals = sKey.find('=');
    if (uEquals != std::string::npos) {
      sValue = sKey.substr(uEquals + 1);
      sKey = sKey.substr(0, uEquals);
      bHasValue = true;
    }
    // Options without a value.
    if (sKey == "help") {
      sOptions.bHelp = true;
      continue;
    }
    if (sKey == "log" || sKey == "quiet") {
      if (bHasValue) Bad("--" + sKey + " takes no value");
      (sKey == "log" ? sOptions.bLog : sOptions.bQuiet) = true;
      continue;
    }
    if (!bHasValue) {
      if (i >= asArgs.size()) Bad("--" + sKey + " needs a value");
      sValue = asArgs[i++];
    }
    if (sKey == "duration") {
      char* pcEnd = nullptr;
      const double dValue = std::strtod(sValue.c_str(), &pcEnd);
      if (sValue.empty() || *pcEnd != '\0' || !std::isfinite(dValue) || dValue < 0 ||
          dValue > 86400) {
        Bad("duration '" + sValue + "' is not a number of seconds (0..86400)");
      }
      sOptions.dDuration = dValue;
    } else if (sKey == "speed") {
      sOptions.iRoundDivisor = static_cast<int>(ParseInteger("speed", sValue, 1, 100));
    } else if (sKey == "save-frames") {
      sOptions.sSaveFrames = sValue;
    } else if (sKey == "json") {
      sOptions.sJson = sValue;
    } else if (sKey == "sdp") {
      sOptions.sSdp = sValue;
    } else if (sKey == "config") {
      sOptions.sConfig = sValue;
    } else if (!ApplyCameraKey(sDefaults, sKey, sValue)) {
      Bad("unknown option '--" + sKey + "' (see --help)");
    }
  }
  if (sOptions.bHelp) return sOptions;
  if (sOptions.sConfig.empty()) {
    sOptions.asCameras.push_back(sDefaults);
  } else {
    sOptions.asCameras = ReadConfig(sOptions.sConfig, sDefaults);
  }
  for (CameraSpec& rSpec : sOptions.asCameras) Resolve(rSpec);
  // An audio requester without a UID gets a video requester on the same
  // camera beside it, whose UID it runs on.
  std::vector<CameraSpec> asAll;
  for (const CameraSpec& rSpec : sOptions.asCameras) {
    if (rSpec.Audio() && rSpec.iUid < 0) {
      CameraSpec sVideo = rSpec;
      sVideo.sLabel = rSpec.sLabel + "-video";
      sVideo.sCommand = rSpec.eClass == ReqClass::kRtp ? "h264" : "jpeg";
      Resolve(sVideo);
      asAll.push_back(sVideo);
      asAll.push_back(rSpec);
      asAll.back().iUidFrom = static_cast<int>(asAll.size()) - 2;
    } else {
      asAll.push_back(rSpec);
    }
  }
  sOptions.asCameras = asAll;
  constexpr size_t kMostCameras = 16;
  if (sOptions.asCameras.size() > kMostCameras) {
    Bad("more than " + std::to_string(kMostCameras) + " requesters");
  }
  return sOptions;
}

std::string UsageText() {
  return R"(camreq: drives camera requesters from the command line, as the device's media
process does, and shows what they do.

  camreq [OPTIONS]                 one requester; with no --address against a
                                   camera simulator started inside camreq
  camreq --config FILE [OPTIONS]   one requester per [section] of an INI file
  camreq types                     the 38 camera types and what each supports

Requester (also the keys of a config section, without the dashes):
  --class rtp|http          requester class (default: http for jpeg, else rtp)
  --cmd NAME                h264 mpeg4 audio play h264play (rtp), jpeg audio play
                            (http); default h264 (rtp) or jpeg (http)
  --type N|NAME             camera type 0..36 or its name (CAM07, KE850...); default 7
  --address ADDR            numeric IPv4 or IPv6 camera address; none: embedded camsim
  --http-port N             camera HTTP port (default 80, or the embedded device's)
  --rtp-port N              port to receive RTP on (default: a free even port)
  --user U --password P     credentials (HTTP authentication, recorder login)
  --proxy HOST:PORT         HTTP proxy of the http requester class (rtp goes direct)
  --proxy-except PATTERN    camera addresses reached without the proxy (repeatable)
  --preset N                preset position to move to at the start (0: none)
  --channel N               channel of a multi-channel camera (0: none)
  --stream N                stream 1 or 2 of an RTP camera (default 1)
  --keepalive on|off        keep-alive requests (default on)
  --uid N                   audio: the UID of the camera's video session (default:
                            camreq drives a video requester beside it for one)
  --sim-fault PATH:FAULT    embedded device: a camsim fault (repeatable)
  --sim-delivery MODE       embedded device: multi, uni or uni_manual (default uni)

Run and report:
  --duration S              seconds to run before the stop (default 10; 0: until
                            Ctrl-C or SIGTERM)
  --speed N                 idle rounds N times shorter (default 10 with the embedded
                            camsim, else 1): keep-alive every 30/N s, stream check
                            every 15/N s
  --log                     the library's own lines on standard error
  --quiet                   no live status lines
  --save-frames DIR         write every JPEG picture received into DIR
  --sdp FILE                write an SDP file for each RTP stream set up, for
                            ffplay -protocol_whitelist file,udp,rtp FILE (several:
                            FILE-N for position N); a unicast stream is passed on
                            to its port + 2 for the player, a group is joined by it
  --json FILE               write the summary as JSON
  --help                    this text

A play-back (play, h264play) is only set up by its requester: camreq reports it
running (as the media process does once it plays) and sends its keep-alive.

Exit status: 0 when every requester reached RUN and was back at IDLE after the
stop, 1 otherwise, 2 for bad input (one line on standard error says what).
)";
}

}  // namespace camreq
