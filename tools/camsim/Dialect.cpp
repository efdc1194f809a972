#include "Dialect.h"

#include <cstdlib>
#include <string>

#include "HttpRequest.h"
#include "LoginTransform.h"
#include "Models.h"

namespace camsim {

const char kUnknownUidBody[] = "ERROR=UNKNOWN_UID\r\n";
const char kBadParamBody[] = "ERROR=BAD_PARAM\r\n";
const char kNotFoundBody[] = "ERROR=NOT_FOUND\r\n";
const char kLoginFailedBody[] = "LOGIN=NG\r\n";

namespace {

constexpr double kMinFrameRate = 0.05;
constexpr double kMaxFrameRate = 100.0;
constexpr int kHighestQuillonPreset = 16;

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

Reply BadParam() {
  return Refuse(400, kBadParamBody);
}

Reply NotServed() {
  return Refuse(404, kNotFoundBody);
}

Reply UnknownUid() {
  return Refuse(404, kUnknownUidBody);
}

bool Has(const DeviceState& state, unsigned capability) {
  return (state.capabilities & capability) != 0;
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

bool Present(const std::string& query, const char* key) {
  bool found = false;
  QueryValue(query, key, &found);
  return found;
}

// A key that must be there with a number (a port, a channel).
bool NumberGiven(const std::string& query, const char* key) {
  int number = 0;
  return ReadInt(QueryValue(query, key), &number);
}

// A key that may be left out, but when given holds a number.
bool NumberOrAbsent(const std::string& query, const char* key) {
  return !Present(query, key) || NumberGiven(query, key);
}

// The UID named by the request, if the device knows it.
bool KnownUid(DeviceState& state, const std::string& query, int* uid) {
  return ReadInt(QueryValue(query, "UID"), uid) && state.sessions->Known(*uid);
}

bool OneOf(const std::string& value, std::initializer_list<const char*> choices) {
  for (const char* choice : choices) {
    if (value == choice) return true;
  }
  return false;
}

// Strips a trailing "_2" (the second stream) and tells whether it was there.
bool StripSecondStream(std::string* name) {
  if (name->size() <= 2 || name->compare(name->size() - 2, 2, "_2") != 0) return false;
  name->resize(name->size() - 2);
  return true;
}

bool ReadFrameRate(const std::string& text, double fallback, double* rate) {
  if (text.empty()) {
    *rate = fallback;
    return true;
  }
  char* end = nullptr;
  double value = std::strtod(text.c_str(), &end);
  if (end == text.c_str() || *end != '\0' || !(value > 0)) return false;
  *rate = value < kMinFrameRate ? kMinFrameRate : value > kMaxFrameRate ? kMaxFrameRate : value;
  return true;
}

Reply Push(const DeviceState& state, const std::string& rate, const std::string& resolution) {
  Reply reply;
  if (!ReadFrameRate(rate, state.values.frameRate, &reply.frameRate)) return BadParam();
  if (!resolution.empty() && !OneOf(resolution, {"320", "640", "768", "1280"})) return BadParam();
  reply.kind = BodyKind::kJpegPush;
  reply.size = SizeForResolution(resolution);
  return reply;
}

Reply AudioStream() {
  Reply reply;
  reply.kind = BodyKind::kAudioStream;
  return reply;
}

std::string AudioKeys(const ReplyValues& values) {
  return "aBitrate=" + std::to_string(values.audioBitrate) + "\r\naEnable=" + values.audioEnable +
         "\r\n";
}

std::string CameraInfo(int uid, const ReplyValues& values) {
  std::string body = "UID=" + std::to_string(uid) + "\r\n";
  body += AudioKeys(values);
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
  StripSecondStream(&codec);
  if (QueryValue(query, "FILE") != "2" || !OneOf(codec, {"h264", "mpeg-4", "audio", "jpeg"}) ||
      !NumberOrAbsent(query, "ch")) {
    return BadParam();
  }
  return Text(CameraInfo(state.sessions->IssueUid(), state.values));
}

Reply CameraKeepAlive(DeviceState& state, const std::string& query) {
  std::string protocol = QueryValue(query, "protocol");
  std::string mode = QueryValue(query, "mode");
  bool second = StripSecondStream(&mode);
  bool rtpMode =
      protocol == "rtp" && (OneOf(mode, {"h264", "mpeg4"}) || (mode == "audio" && !second));
  bool httpMode = protocol == "http" && OneOf(mode, {"jpeg", "audio"}) && !second;
  if (!(rtpMode || httpMode) || !NumberOrAbsent(query, "ch") || !NumberOrAbsent(query, "stream")) {
    return BadParam();
  }
  if (mode == "audio" && !Has(state, kAudio)) return NotServed();
  // QV262 knows only the short form: no second stream, channel or stream.
  if (Has(state, kShortKeepAlive) && (second || Present(query, "ch") || Present(query, "stream"))) {
    return NotServed();
  }
  int uid = 0;
  if (!KnownUid(state, query, &uid)) return UnknownUid();
  state.sessions->Refresh(uid);
  return Ok();
}

// The number a key holds, 0 when it is absent (callers checked its form).
int NumberOf(const std::string& query, const char* key) {
  int number = 0;
  return ReadInt(QueryValue(query, key), &number) ? number : 0;
}

// The stream that a camera's start or stop line names.
RtpOrder CameraRtpOrder(const std::string& query, int uid, const char* kind, MediaCodec codec) {
  RtpOrder order;
  order.action = QueryValue(query, "connect") == "start" ? RtpAction::kStart : RtpAction::kStop;
  order.key.uid = uid;
  order.key.kind = kind;
  order.key.channel = NumberOf(query, "ch");
  order.key.stream = NumberOf(query, "stream");
  order.codec = codec;
  order.port = NumberOf(query, "my_port");
  return order;
}

// h264 and mpeg4 over RTP.
Reply CameraVideo(DeviceState& state, const std::string& query, const char* kind,
                  MediaCodec codec) {
  if (!OneOf(QueryValue(query, "connect"), {"start", "stop"}) ||
      QueryValue(query, "protocol") != "rtp" || !NumberGiven(query, "my_port") ||
      !NumberOrAbsent(query, "ch")) {
    return BadParam();
  }
  int uid = 0;
  if (!KnownUid(state, query, &uid)) return UnknownUid();
  Reply reply = Ok();
  reply.rtp = CameraRtpOrder(query, uid, kind, codec);
  return reply;
}

Reply CameraH264(DeviceState& state, const std::string& query) {
  return CameraVideo(state, query, "h264", MediaCodec::kH264);
}

Reply CameraMpeg4(DeviceState& state, const std::string& query) {
  return CameraVideo(state, query, "mpeg4", MediaCodec::kMpeg4);
}

// audio over RTP answers at once; over HTTP a start streams.
Reply CameraAudio(DeviceState& state, const std::string& query) {
  std::string connect = QueryValue(query, "connect");
  std::string protocol = QueryValue(query, "protocol");
  if (!OneOf(connect, {"start", "stop"}) || !OneOf(protocol, {"rtp", "http"}) ||
      (protocol == "rtp" && !NumberGiven(query, "my_port")) || !NumberOrAbsent(query, "ch")) {
    return BadParam();
  }
  int uid = 0;
  if (!KnownUid(state, query, &uid)) return UnknownUid();
  if (connect == "start" && protocol == "http") return AudioStream();
  Reply reply = Ok();
  if (protocol == "rtp") reply.rtp = CameraRtpOrder(query, uid, "audio", MediaCodec::kG726);
  return reply;
}

Reply CameraMpeg4Interval(DeviceState&, const std::string& query) {
  if (!NumberOrAbsent(query, "ch") || !NumberOrAbsent(query, "stream")) return BadParam();
  return Ok();
}

Reply CameraH264Interval(DeviceState&, const std::string& query) {
  if (!NumberGiven(query, "stream")) return BadParam();
  return Ok();
}

Reply CameraPreset(DeviceState&, const std::string& query) {
  int preset = 0;
  if (!ReadInt(QueryValue(query, "preset"), &preset) || preset < 1 ||
      !NumberOrAbsent(query, "ch")) {
    return BadParam();
  }
  return Ok();
}

Reply CameraJpeg(DeviceState& state, const std::string& query) {
  std::string connect = QueryValue(query, "connect");
  if (!OneOf(connect, {"start", "stop"}) || !NumberOrAbsent(query, "ch")) return BadParam();
  int uid = 0;
  if (!KnownUid(state, query, &uid)) return UnknownUid();
  if (connect == "stop") return Ok();
  return Push(state, QueryValue(query, "framerate"), QueryValue(query, "resolution"));
}

// --- Quillon cameras -------------------------------------------------------

Reply QuillonGetUid(DeviceState& state, const std::string& query) {
  if (QueryValue(query, "FILE") != "uid.html") return BadParam();
  return Text("UID=" + std::to_string(state.sessions->IssueUid()) + "\r\n");
}

Reply QuillonPush(DeviceState& state, const std::string& query) {
  int uid = 0;
  std::string mode = QueryValue(query, "MODE");
  if (!OneOf(mode, {"START", "STOP"})) return BadParam();
  if (!KnownUid(state, query, &uid)) return UnknownUid();
  if (mode == "STOP") return Ok();
  return Push(state, QueryValue(query, "FRAMERATE"), "");
}

Reply QuillonSysSetup(DeviceState& state, const std::string& query) {
  int uid = 0;
  if (QueryValue(query, "LIVEMODE") != "PUSH") return BadParam();
  if (!KnownUid(state, query, &uid)) return UnknownUid();
  return Ok();
}

Reply QuillonUidUtil(DeviceState& state, const std::string& query) {
  int uid = 0;
  std::string util = QueryValue(query, "UTIL");
  if (!OneOf(util, {"KEEPALIVE", "RELEASE"})) return BadParam();
  if (!KnownUid(state, query, &uid)) return UnknownUid();
  if (util == "RELEASE") state.sessions->Release(uid);
  if (util == "KEEPALIVE") state.sessions->Refresh(uid);
  return Ok();
}

Reply QuillonPreset(DeviceState&, const std::string& query) {
  int preset = 0;
  if (!ReadInt(QueryValue(query, "PRESET"), &preset) || preset < 1 ||
      preset > kHighestQuillonPreset) {
    return BadParam();
  }
  return Ok();
}

// --- KEL recorders ---------------------------------------------------------

Reply RecorderStart(DeviceState& state, const std::string&) {
  return Text("strKey = \"" + state.sessions->OfferKey() + "\";\r\n");
}

Reply RecorderLogin(DeviceState& state, const std::string& query) {
  bool keyGiven = false;
  std::string key = QueryValue(query, "KEY", &keyGiven);
  if (!keyGiven) key = state.sessions->LatestKey();
  if (!state.sessions->TakeKey(key) ||
      QueryValue(query, "USER") != LoginTransform(key, state.user) ||
      QueryValue(query, "PASS") != LoginTransform(key, state.password)) {
    return Refuse(403, kLoginFailedBody);
  }
  std::string body = "UID=" + std::to_string(state.sessions->IssueUid()) + "\r\nLOGIN=OK\r\n";
  if (Has(state, kLoginAudioKeys)) body += AudioKeys(state.values);
  return Text(body);
}

// The form of a push.cgi line that no recorder takes: 400.
bool BadPushForm(const std::string& query) {
  std::string compression = QueryValue(query, "COMP");
  bool overRtp = Present(query, "PORT");
  return !OneOf(QueryValue(query, "CMD"), {"START", "STOP"}) ||
         !OneOf(compression, {"JPEG", "MPEG4", "H264", "AUDIO"}) || !NumberGiven(query, "CAM") ||
         (overRtp && !NumberGiven(query, "PORT")) || (compression == "JPEG" && overRtp) ||
         (OneOf(compression, {"MPEG4", "H264"}) && !overRtp);
}

// A form that another recorder type takes, but not this one: 404.
bool PushFormOfAnotherType(const DeviceState& state, const std::string& query) {
  std::string compression = QueryValue(query, "COMP");
  if (compression == "AUDIO") return !Has(state, kAudio);
  if (compression != "H264") return false;
  // Type 36 asks for H.264 with RES=1, the others without RES.
  return Has(state, kH264Res) ? QueryValue(query, "RES") != "1" : Present(query, "RES");
}

// The stream that a recorder's push line over RTP names.
RtpOrder RecorderRtpOrder(const std::string& query, int uid) {
  std::string compression = QueryValue(query, "COMP");
  RtpOrder order;
  order.action = QueryValue(query, "CMD") == "START" ? RtpAction::kStart : RtpAction::kStop;
  order.key.uid = uid;
  order.key.kind = compression;
  order.key.channel = NumberOf(query, "CAM");
  order.codec = compression == "H264"    ? MediaCodec::kH264
                : compression == "MPEG4" ? MediaCodec::kMpeg4
                                         : MediaCodec::kG726;
  order.port = NumberOf(query, "PORT");
  order.recorder = true;
  return order;
}

Reply RecorderPush(DeviceState& state, const std::string& query) {
  if (BadPushForm(query)) return BadParam();
  if (PushFormOfAnotherType(state, query)) return NotServed();
  int uid = 0;
  if (!KnownUid(state, query, &uid)) return UnknownUid();
  bool overRtp = Present(query, "PORT");
  if (QueryValue(query, "CMD") == "STOP") {
    Reply reply = Ok();
    if (overRtp) reply.rtp = RecorderRtpOrder(query, uid);
    return reply;
  }
  if (state.values.pushStartStatus != 0) {
    Reply reply = Ok();
    reply.status = state.values.pushStartStatus;
    if (overRtp) reply.rtp = RecorderRtpOrder(query, uid);
    return reply;
  }
  std::string compression = QueryValue(query, "COMP");
  if (compression == "JPEG") return Push(state, "", "");
  if (compression == "AUDIO" && !overRtp) return AudioStream();
  Reply reply = Ok();
  reply.rtp = RecorderRtpOrder(query, uid);
  return reply;
}

Reply RecorderStatus(DeviceState& state, const std::string& query) {
  int uid = 0;
  if (!KnownUid(state, query, &uid)) return UnknownUid();
  state.sessions->Refresh(uid);
  return Text("UID=" + std::to_string(uid) + "\r\nFILENAME" + state.values.fileName +
              "\r\nPLAY_MODE=" + std::to_string(state.values.playMode) + "\r\n");
}

Reply RecorderLogout(DeviceState& state, const std::string& query) {
  int uid = 0;
  if (!KnownUid(state, query, &uid)) return UnknownUid();
  state.sessions->Release(uid);
  return Ok();
}

struct Route {
  const char* path;
  Family family;
  unsigned needs;  // the type must have one of these capabilities
  Handler handler;
};

constexpr Route kRoutes[] = {
    {"/cgi-bin/getuid", Family::kCamera, kSession, CameraGetUid},
    {"/cgi-bin/keep_alive", Family::kCamera, kKeepAlive | kShortKeepAlive, CameraKeepAlive},
    {"/cgi-bin/h264", Family::kCamera, kVideo, CameraH264},
    {"/cgi-bin/mpeg4", Family::kCamera, kVideo, CameraMpeg4},
    {"/cgi-bin/audio", Family::kCamera, kAudio, CameraAudio},
    {"/cgi-bin/mpeg4_I_interval", Family::kCamera, kMpeg4Interval, CameraMpeg4Interval},
    {"/cgi-bin/h264_I_interval", Family::kCamera, kH264Interval, CameraH264Interval},
    {"/cgi-bin/camctrl", Family::kCamera, kPreset, CameraPreset},
    {"/cgi-bin/jpeg", Family::kCamera, kJpeg, CameraJpeg},
    {"/cgi-bin/getuid", Family::kQuillon, kSession, QuillonGetUid},
    {"/cgi-bin/push", Family::kQuillon, kJpeg, QuillonPush},
    {"/cgi-bin/syssetup", Family::kQuillon, kJpeg, QuillonSysSetup},
    {"/cgi-bin/uidutil", Family::kQuillon, kKeepAlive, QuillonUidUtil},
    {"/cgi-bin/camctrl", Family::kQuillon, kPresetUpTo16, QuillonPreset},
    {"/cgi-bin/start.cgi", Family::kRecorder, kSession, RecorderStart},
    {"/cgi-bin/ulogin.cgi", Family::kRecorder, kSession, RecorderLogin},
    {"/cgi-bin/push.cgi", Family::kRecorder, kVideo | kJpeg | kAudio, RecorderPush},
    {"/cgi-bin/status.cgi", Family::kRecorder, kKeepAlive, RecorderStatus},
    {"/cgi-bin/logout.cgi", Family::kRecorder, kSession, RecorderLogout},
};

struct Reason {
  int status;
  const char* text;
};

constexpr Reason kReasons[] = {
    {200, "OK"},
    {204, "No Content"},
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
  state.capabilities = CapabilitiesOf(state.model);
  for (const Route& route : kRoutes) {
    if (route.family == family && path == route.path) {
      return Has(state, route.needs) ? route.handler(state, query) : NotServed();
    }
  }
  return NotServed();
}

const char* ReasonPhrase(int status) {
  for (const Reason& reason : kReasons) {
    if (reason.status == status) return reason.text;
  }
  return "Status";
}

}  // namespace camsim
