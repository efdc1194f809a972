#include "CamTypeInfo.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>

#include "CamCgiTables.h"
#include "CamTypes.h"

namespace camreq {

namespace {

const char* SessionWord(cgi::SessionForm eForm) {
  switch (eForm) {
    case cgi::SessionForm::kNone:
      return "-";
    case cgi::SessionForm::kCamera:
      return "getuid";
    case cgi::SessionForm::kQuillon:
      return "uid.html";
    case cgi::SessionForm::kRecorder:
      return "login";
  }
  return "?";
}

const char* KeepAliveWord(cgi::KeepAliveForm eForm) {
  switch (eForm) {
    case cgi::KeepAliveForm::kNone:
      return "-";
    case cgi::KeepAliveForm::kCamera:
      return "keep_alive";
    case cgi::KeepAliveForm::kShortNoAudio:
      return "short";
    case cgi::KeepAliveForm::kQuillon:
      return "uidutil";
    case cgi::KeepAliveForm::kRecorder:
      return "status.cgi";
  }
  return "?";
}

const char* VideoWord(cgi::VideoForm eForm) {
  switch (eForm) {
    case cgi::VideoForm::kNone:
      return "-";
    case cgi::VideoForm::kCamera:
      return "camera";
    case cgi::VideoForm::kQuillon:
      return "quillon";
    case cgi::VideoForm::kRecorder:
      return "push.cgi";
    case cgi::VideoForm::kRecorderRes:
      return "push.cgi+RES";
  }
  return "?";
}

const char* AudioWord(cgi::AudioForm eForm) {
  switch (eForm) {
    case cgi::AudioForm::kNone:
      return "-";
    case cgi::AudioForm::kCamera:
      return "camera";
    case cgi::AudioForm::kRecorder:
      return "push.cgi";
  }
  return "?";
}

const char* PresetWord(cgi::PresetForm eForm) {
  switch (eForm) {
    case cgi::PresetForm::kNone:
      return "-";
    case cgi::PresetForm::kLowerCase:
      return "preset=N";
    case cgi::PresetForm::kUpperCase:
      return "PRESET=N";
  }
  return "?";
}

std::string Upper(const std::string& sText) {
  std::string sOut = sText;
  for (char& c : sOut) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return sOut;
}

void Append(std::string& rOut, const char* pcWord) {
  if (!rOut.empty()) rOut += ' ';
  rOut += pcWord;
}

}  // namespace

std::string CamTypeName(int iType) {
  char acName[16];
  switch (iType) {
    case CAM_REQUESTER_CAMTYPE_QV262:
      return "QV262";
    case CAM_REQUESTER_CAMTYPE_KE850:
      return "KE850";
    case CAM_REQUESTER_CAMTYPE_MAX:
      return "NONE";
    default:
      break;
  }
  if (iType < 0 || iType > CAM_REQUESTER_CAMTYPE_MAX) return "?";
  std::snprintf(acName, sizeof(acName),
                IsKelRecorder(static_cast<unsigned>(iType)) ? "KEL%02d" : "CAM%02d", iType);
  return acName;
}

int ParseCamType(const std::string& sText) {
  if (sText.empty()) return -1;
  bool bDigits = true;
  for (char c : sText) bDigits = bDigits && std::isdigit(static_cast<unsigned char>(c)) != 0;
  if (bDigits) {
    if (sText.size() > 3) return -1;
    const int iType = std::atoi(sText.c_str());
    return iType <= CAM_REQUESTER_CAMTYPE_KEL36 ? iType : -1;
  }
  const std::string sWanted = Upper(sText);
  for (int i = 0; i <= CAM_REQUESTER_CAMTYPE_KEL36; ++i) {
    if (CamTypeName(i) == sWanted) return i;
  }
  return -1;
}

std::string RtpCommandsOf(int iType) {
  const cgi::RtpTypeRow& rRow = cgi::RtpRow(static_cast<unsigned>(iType));
  std::string sOut;
  if (rRow.session == cgi::SessionForm::kNone) return "-";
  if (rRow.video != cgi::VideoForm::kNone) {
    Append(sOut, "h264");
    Append(sOut, "mpeg4");
  }
  if (rRow.audio != cgi::AudioForm::kNone) Append(sOut, "audio");
  if (rRow.session == cgi::SessionForm::kRecorder) {
    Append(sOut, "play");
    Append(sOut, "h264play");
  }
  return sOut.empty() ? "-" : sOut;
}

std::string HttpCommandsOf(int iType) {
  const cgi::HttpTypeRow& rRow = cgi::HttpRow(static_cast<unsigned>(iType));
  std::string sOut;
  if (rRow.session == cgi::SessionForm::kNone) return "-";
  if (rRow.jpeg != cgi::VideoForm::kNone) Append(sOut, "jpeg");
  if (rRow.audio != cgi::AudioForm::kNone) Append(sOut, "audio");
  if (rRow.session == cgi::SessionForm::kRecorder) Append(sOut, "play");
  return sOut.empty() ? "-" : sOut;
}

std::string CamTypesTable() {
  std::string sOut;
  char acLine[320];
  std::snprintf(acLine, sizeof(acLine),
                "%-4s %-6s %-8s %-10s %-12s %-9s %-10s %-12s %-9s %-9s %-8s %-22s %s\n", "type",
                "name", "session", "keep-alive", "RTP video", "RTP audio", "I-frame", "JPEG push",
                "HTTP aud", "preset", "release", "rtp commands", "http commands");
  sOut += acLine;
  for (int i = 0; i < kCamTypeCount; ++i) {
    const cgi::RtpTypeRow& rRtp = cgi::RtpRow(static_cast<unsigned>(i));
    const cgi::HttpTypeRow& rHttp = cgi::HttpRow(static_cast<unsigned>(i));
    // Both classes send the same keep-alive where both have one; the Quillon
    // cameras have it on the HTTP road only.
    const cgi::KeepAliveForm eKeepAlive =
        rRtp.keepAlive != cgi::KeepAliveForm::kNone ? rRtp.keepAlive : rHttp.keepAlive;
    std::string sIframe;
    if (rRtp.bMpeg4Iframe) Append(sIframe, "mpeg4");
    if (rRtp.bH264Iframe) sIframe += sIframe.empty() ? "h264" : ",h264";
    if (sIframe.empty()) sIframe = "-";
    std::snprintf(acLine, sizeof(acLine),
                  "%-4d %-6s %-8s %-10s %-12s %-9s %-10s %-12s %-9s %-9s %-8s %-22s %s\n", i,
                  CamTypeName(i).c_str(), SessionWord(rHttp.session), KeepAliveWord(eKeepAlive),
                  VideoWord(rRtp.video), AudioWord(rRtp.audio), sIframe.c_str(),
                  VideoWord(rHttp.jpeg), AudioWord(rHttp.audio), PresetWord(cgi::PresetOf(i)),
                  rHttp.bQuillonRelease ? "uidutil" : "-", RtpCommandsOf(i).c_str(),
                  HttpCommandsOf(i).c_str());
    sOut += acLine;
  }
  sOut +=
      "\nsession: the UID request (getuid, the Quillon uid.html, a recorder's key and login);\n"
      "keep-alive: its line (short: no channel, stream or audio); RTP video and audio, JPEG push\n"
      "and HTTP audio: the start/stop line's form; I-frame: the interval lines; preset: the\n"
      "camera's preset line; release: the UID release at a stop. '-' means no line: the\n"
      "requester skips it, or refuses the command. Type 37 (NONE) is the type that is not set.\n";
  return sOut;
}

}  // namespace camreq
