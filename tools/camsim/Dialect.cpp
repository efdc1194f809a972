#include "Dialect.h"

#include <cstdlib>
#include <string>

#include "CamKelCrypt.h"
#include "HttpRequest.h"
#include "Models.h"

namespace camsim {

const char kUnknownUidBody[] = "ERROR=UNKNOWN_UID\r\n";
const char kBadParamBody[] = "ERROR=BAD_PARAM\r\n";
const char kNotFoundBody[] = "ERROR=NOT_FOUND\r\n";
const char kLoginFailedBody[] = "LOGIN=NG\r\n";

namespace {

constexpr double kMinFrameRate = 0.05;
constexpr double kMaxFrameRate = 100.0;

using Handler = Reply (*)(DeviceState&, const std::string& query);

Reply Text(const std::string& body) {
  Reply reply;
  reply.body = body;
  return reply;
}

Reply Refuse(int status, const char* body) {
  Reply reply;
  reply.status = status;
  reply.body = body;
  return reply;
}

Reply Ok() {
  return Text("OK\r\n");
}

bool ReadInt(const std::string& text, int* value) {
  if (text.empty() || text.size() > 10) return false;
  size_t start = text[0] == '-' ? 1 : 0;
  if (start == text.size() || text.find_first_not_of("0123456789", start) != std::string::npos) {
    return false;
  }
  *value = static_cast<int>(std::atol(text.c_str()));
  return true;
}

// The UID named by the request, if the device knows it.
bool KnownUid(DeviceState& state, const std::string& query, const char* key, int* uid) {
  return ReadInt(QueryValue(query, key), uid) && state.sessions->Known(*uid);
}

bool OneOf(const std::string& value, std::initializer_list<const char*> choices) {
  for (const char* choice : choices) {
    if (value == choice) return true;
  }
  return false;
}

double FrameRate(const std::string& text, double fallback) {
  if (text.empty()) return fallback;
  char* end = nullptr;
  double rate = std::strtod(text.c_str(), &end);
  if (end == text.c_str() || *end != '\0' || !(rate > 0)) return fallback;
  if (rate < kMinFrameRate) return kMinFrameRate;
  return rate > kMaxFrameRate ? kMaxFrameRate : rate;
}

Reply Push(const DeviceState& state, const std::string& rate, const std::string& resolution) {
  Reply reply;
  reply.kind = BodyKind::kJpegPush;
  reply.frameRate = FrameRate(rate, state.values.frameRate);
  reply.size = SizeForResolution(resolution);
  return reply;
}

Reply AudioStream() {
  Reply reply;
  reply.kind = BodyKind::kAudioStream;
  return reply;
}

std::string CameraInfo(int uid, const ReplyValues& values) {
  std::string body = "UID=" + std::to_string(uid) + "\r\n";
  body += "aBitrate=" + std::to_string(values.audioBitrate) + "\r\n";
  body += "aEnable=" + values.audioEnable + "\r\n";
  body += "sDelivery=" + values.delivery + "\r\n";
  for (int i = 0; i < 4; ++i) {
    body +=
        "iMultiAdd" + std::to_string(i + 1) + "=" + std::to_string(values.multiAddress[i]) + "\r\n";
  }
  if (!values.multiAddressV6.empty()) body += "iMultiAddv6=" + values.multiAddressV6 + "\r\n";
  body += "iMultiPort=" + std::to_string(values.multiPort) + "\r\n";
  body += "iUniPort=" + std::to_string(values.uniPort) + "\r\n";
  body += "aInPort=" + std::to_string(values.audioInPort) + "\r\n";
  return body;
}

// --- cameras ---------------------------------------------------------------

Reply CameraGetUid(DeviceState& state, const std::string& query) {
  std::string codec = QueryValue(query, "vcodec");
  if (codec.size() > 2 && codec.compare(codec.size() - 2, 2, "_2") == 0) {
    codec.resize(codec.size() - 2);
  }
  if (QueryValue(query, "FILE") != "2" || !OneOf(codec, {"h264", "mpeg-4", "audio", "jpeg"})) {
    return Refuse(400, kBadParamBody);
  }
  return Text(CameraInfo(state.sessions->IssueUid(), state.values));
}

Reply CameraKeepAlive(DeviceState& state, const std::string& query) {
  int uid = 0;
  if (!OneOf(QueryValue(query, "protocol"), {"rtp", "http"})) return Refuse(400, kBadParamBody);
  if (!KnownUid(state, query, "UID", &uid)) return Refuse(404, kUnknownUidBody);
  return Ok();
}

// h264, mpeg4 and audio over RTP; audio over HTTP streams.
Reply CameraMedia(DeviceState& state, const std::string& query, bool audio) {
  int uid = 0;
  std::string connect = QueryValue(query, "connect");
  if (!OneOf(connect, {"start", "stop"})) return Refuse(400, kBadParamBody);
  if (!KnownUid(state, query, "UID", &uid)) return Refuse(404, kUnknownUidBody);
  if (audio && connect == "start" && QueryValue(query, "protocol") == "http") {
    return AudioStream();
  }
  return Ok();
}

Reply CameraVideo(DeviceState& state, const std::string& query) {
  return CameraMedia(state, query, false);
}

Reply CameraAudio(DeviceState& state, const std::string& query) {
  return CameraMedia(state, query, true);
}

Reply CameraIInterval(DeviceState&, const std::string&) {
  return Ok();
}

Reply Preset(const std::string& query, const char* key) {
  int preset = 0;
  if (!ReadInt(QueryValue(query, key), &preset) || preset < 1) return Refuse(400, kBadParamBody);
  return Ok();
}

Reply CameraPreset(DeviceState&, const std::string& query) {
  return Preset(query, "preset");
}

Reply CameraJpeg(DeviceState& state, const std::string& query) {
  int uid = 0;
  std::string connect = QueryValue(query, "connect");
  if (!OneOf(connect, {"start", "stop"})) return Refuse(400, kBadParamBody);
  if (!KnownUid(state, query, "UID", &uid)) return Refuse(404, kUnknownUidBody);
  if (connect == "stop") return Ok();
  return Push(state, QueryValue(query, "framerate"), QueryValue(query, "resolution"));
}

// --- Quillon cameras -------------------------------------------------------

Reply QuillonGetUid(DeviceState& state, const std::string& query) {
  if (QueryValue(query, "FILE") != "uid.html") return Refuse(400, kBadParamBody);
  return Text("UID=" + std::to_string(state.sessions->IssueUid()) + "\r\n");
}

Reply QuillonPush(DeviceState& state, const std::string& query) {
  int uid = 0;
  std::string mode = QueryValue(query, "MODE");
  if (!OneOf(mode, {"START", "STOP"})) return Refuse(400, kBadParamBody);
  if (!KnownUid(state, query, "UID", &uid)) return Refuse(404, kUnknownUidBody);
  if (mode == "STOP") return Ok();
  return Push(state, QueryValue(query, "FRAMERATE"), "");
}

Reply QuillonSysSetup(DeviceState& state, const std::string& query) {
  int uid = 0;
  if (QueryValue(query, "LIVEMODE") != "PUSH") return Refuse(400, kBadParamBody);
  if (!KnownUid(state, query, "UID", &uid)) return Refuse(404, kUnknownUidBody);
  return Ok();
}

Reply QuillonUidUtil(DeviceState& state, const std::string& query) {
  int uid = 0;
  std::string util = QueryValue(query, "UTIL");
  if (!OneOf(util, {"KEEPALIVE", "RELEASE"})) return Refuse(400, kBadParamBody);
  if (!KnownUid(state, query, "UID", &uid)) return Refuse(404, kUnknownUidBody);
  if (util == "RELEASE") state.sessions->Release(uid);
  return Ok();
}

Reply QuillonPreset(DeviceState&, const std::string& query) {
  return Preset(query, "PRESET");
}

// --- KEL recorders ---------------------------------------------------------

Reply RecorderStart(DeviceState& state, const std::string&) {
  return Text("strKey = \"" + state.sessions->OfferKey() + "\";\r\n");
}

std::string Transformed(const std::string& key, const std::string& data) {
  char out[cgi::kKelCryptTextSize] = {};
  cgi::KelEncrypt(key.c_str(), data.c_str(), out);
  return out;
}

Reply RecorderLogin(DeviceState& state, const std::string& query) {
  bool keyGiven = false;
  std::string key = QueryValue(query, "KEY", &keyGiven);
  if (!keyGiven) key = state.sessions->LatestKey();
  if (!state.sessions->TakeKey(key) || QueryValue(query, "USER") != Transformed(key, state.user) ||
      QueryValue(query, "PASS") != Transformed(key, state.password)) {
    return Refuse(403, kLoginFailedBody);
  }
  return Text("UID=" + std::to_string(state.sessions->IssueUid()) + "\r\nLOGIN=OK\r\n");
}

Reply RecorderPush(DeviceState& state, const std::string& query) {
  int uid = 0;
  std::string command = QueryValue(query, "CMD");
  std::string compression = QueryValue(query, "COMP");
  if (!OneOf(command, {"START", "STOP"}) ||
      !OneOf(compression, {"JPEG", "MPEG4", "H264", "AUDIO"})) {
    return Refuse(400, kBadParamBody);
  }
  if (!KnownUid(state, query, "UID", &uid)) return Refuse(404, kUnknownUidBody);
  if (command == "STOP") return Ok();
  bool overHttp = QueryValue(query, "PORT").empty();
  if (compression == "JPEG") return Push(state, "", "");
  if (compression == "AUDIO" && overHttp) return AudioStream();
  return Ok();
}

Reply RecorderStatus(DeviceState& state, const std::string& query) {
  int uid = 0;
  if (!KnownUid(state, query, "UID", &uid)) return Refuse(404, kUnknownUidBody);
  return Text("UID=" + std::to_string(uid) + "\r\nFILENAME" + state.values.fileName +
              "\r\nPLAY_MODE=" + std::to_string(state.values.playMode) + "\r\n");
}

Reply RecorderLogout(DeviceState& state, const std::string& query) {
  int uid = 0;
  if (!KnownUid(state, query, "UID", &uid)) return Refuse(404, kUnknownUidBody);
  state.sessions->Release(uid);
  return Ok();
}

struct Route {
  const char* path;
  Family family;
  Handler handler;
};

constexpr Route kRoutes[] = {
    {"/cgi-bin/getuid", Family::kCamera, CameraGetUid},
    {"/cgi-bin/keep_alive", Family::kCamera, CameraKeepAlive},
    {"/cgi-bin/h264", Family::kCamera, CameraVideo},
    {"/cgi-bin/mpeg4", Family::kCamera, CameraVideo},
    {"/cgi-bin/audio", Family::kCamera, CameraAudio},
    {"/cgi-bin/mpeg4_I_interval", Family::kCamera, CameraIInterval},
    {"/cgi-bin/h264_I_interval", Family::kCamera, CameraIInterval},
    {"/cgi-bin/camctrl", Family::kCamera, CameraPreset},
    {"/cgi-bin/jpeg", Family::kCamera, CameraJpeg},
    {"/cgi-bin/getuid", Family::kQuillon, QuillonGetUid},
    {"/cgi-bin/push", Family::kQuillon, QuillonPush},
    {"/cgi-bin/syssetup", Family::kQuillon, QuillonSysSetup},
    {"/cgi-bin/uidutil", Family::kQuillon, QuillonUidUtil},
    {"/cgi-bin/camctrl", Family::kQuillon, QuillonPreset},
    {"/cgi-bin/start.cgi", Family::kRecorder, RecorderStart},
    {"/cgi-bin/ulogin.cgi", Family::kRecorder, RecorderLogin},
    {"/cgi-bin/push.cgi", Family::kRecorder, RecorderPush},
    {"/cgi-bin/status.cgi", Family::kRecorder, RecorderStatus},
    {"/cgi-bin/logout.cgi", Family::kRecorder, RecorderLogout},
};

struct Reason {
  int status;
  const char* text;
};

constexpr Reason kReasons[] = {
    {200, "OK"},
    {400, "Bad Request"},
    {401, "Unauthorized"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {408, "Request Timeout"},
    {431, "Request Header Fields Too Large"},
    {500, "Internal Server Error"},
    {502, "Bad Gateway"},
    {503, "Service Unavailable"},
    {504, "Gateway Timeout"},
};

}  // namespace

Reply Answer(DeviceState& state, const std::string& path, const std::string& query) {
  Family family = FamilyOf(state.model);
  for (const Route& route : kRoutes) {
    if (route.family == family && path == route.path) return route.handler(state, query);
  }
  return Refuse(404, kNotFoundBody);
}

const char* ReasonPhrase(int status) {
  for (const Reason& reason : kReasons) {
    if (reason.status == status) return reason.text;
  }
  return "Status";
}

}  // namespace camsim
