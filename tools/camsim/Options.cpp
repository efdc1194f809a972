#include "Options.h"

#include <cstdlib>

#include "Control.h"
#include "Models.h"
#include "Socket.h"
#include "TypeHelp.h"

namespace camsim {

namespace {

bool ReadLong(const std::string& text, long low, long high, long* value) {
  if (text.empty() || text.size() > 10) return false;
  size_t start = text[0] == '-' ? 1 : 0;
  if (start == text.size() || text.find_first_not_of("0123456789", start) != std::string::npos) {
    return false;
  }
  *value = std::atol(text.c_str());
  return *value >= low && *value <= high;
}

bool ReadInt(const std::string& text, long low, long high, int* value) {
  long number = 0;
  if (!ReadLong(text, low, high, &number)) return false;
  *value = static_cast<int>(number);
  return true;
}

using Apply = bool (*)(const std::string& value, DeviceOptions* device, std::string* error);

struct DeviceOption {
  const char* name;
  const char* argument;
  const char* help;  // a '@' in it stands for the types of typesWith
  Apply apply;
  unsigned typesWith = 0;  // a capability of the type table, for '@'
};

bool Bad(std::string* error, const std::string& what) {
  *error = what;
  return false;
}

bool ApplyModel(const std::string& value, DeviceOptions* device, std::string* error) {
  device->config.model = ParseModel(value);
  return device->config.model >= 0 || Bad(error, "unknown model \"" + value + "\"");
}

bool ApplyAuth(const std::string& value, DeviceOptions* device, std::string* error) {
  return ParseAuthMode(value, &device->config.auth) || Bad(error, "unknown auth \"" + value + "\"");
}

bool ApplyUser(const std::string& value, DeviceOptions* device, std::string*) {
  device->config.user = value;
  return true;
}

bool ApplyPassword(const std::string& value, DeviceOptions* device, std::string*) {
  device->config.password = value;
  return true;
}

bool ApplyRealm(const std::string& value, DeviceOptions* device, std::string*) {
  device->config.realm = value;
  return true;
}

bool ApplyUidStart(const std::string& value, DeviceOptions* device, std::string* error) {
  return ReadInt(value, 0, 2000000000, &device->config.values.firstUid) ||
         Bad(error, "bad --uid-start");
}

bool ApplyBitrate(const std::string& value, DeviceOptions* device, std::string* error) {
  return ReadInt(value, 0, 2000000000, &device->config.values.audioBitrate) ||
         Bad(error, "bad --abitrate");
}

bool ApplyEnable(const std::string& value, DeviceOptions* device, std::string* error) {
  if (value.empty()) return Bad(error, "bad --aenable");
  device->config.values.audioEnable = value;
  return true;
}

bool ApplyDelivery(const std::string& value, DeviceOptions* device, std::string* error) {
  if (value.empty()) return Bad(error, "bad --delivery");
  device->config.values.delivery = value;
  return true;
}

bool ApplyMultiAddress(const std::string& value, DeviceOptions* device, std::string* error) {
  std::array<int, 4> octets{};
  size_t start = 0;
  for (int i = 0; i < 4; ++i) {
    size_t end = i < 3 ? value.find('.', start) : value.size();
    if (end == std::string::npos ||
        !ReadInt(value.substr(start, end - start), 0, 255, &octets[i])) {
      return Bad(error, "bad --multi-addr \"" + value + "\"");
    }
    start = end + 1;
  }
  device->config.values.multiAddress = octets;
  return true;
}

bool ApplyMultiAddressV6(const std::string& value, DeviceOptions* device, std::string*) {
  device->config.values.multiAddressV6 = value;
  return true;
}

bool ApplyPort(const std::string& value, int* port, const char* name, std::string* error) {
  return ReadInt(value, 0, 65535, port) || Bad(error, std::string("bad ") + name);
}

bool ApplyMultiPort(const std::string& value, DeviceOptions* device, std::string* error) {
  return ApplyPort(value, &device->config.values.multiPort, "--multi-port", error);
}

bool ApplyUniPort(const std::string& value, DeviceOptions* device, std::string* error) {
  return ApplyPort(value, &device->config.values.uniPort, "--uni-port", error);
}

bool ApplyAudioInPort(const std::string& value, DeviceOptions* device, std::string* error) {
  return ApplyPort(value, &device->config.values.audioInPort, "--ain-port", error);
}

bool ApplyFileName(const std::string& value, DeviceOptions* device, std::string*) {
  device->config.values.fileName = value;
  return true;
}

bool ApplyPlayMode(const std::string& value, DeviceOptions* device, std::string* error) {
  return ReadInt(value, 0, 2000000000, &device->config.values.playMode) ||
         Bad(error, "bad --play-mode");
}

bool ApplyFrameRate(const std::string& value, DeviceOptions* device, std::string* error) {
  char* end = nullptr;
  double rate = std::strtod(value.c_str(), &end);
  if (value.empty() || *end != '\0' || !(rate >= 0.05 && rate <= 100)) {
    return Bad(error, "bad --frame-rate (0.05 to 100)");
  }
  device->config.values.frameRate = rate;
  return true;
}

bool ApplyGray(const std::string& value, DeviceOptions* device, std::string* error) {
  return ReadInt(value, 0, 255, &device->config.values.gray) || Bad(error, "bad --gray");
}

bool ApplyFault(const std::string& value, DeviceOptions* device, std::string* error) {
  size_t colon = value.find(':');
  if (colon == std::string::npos || colon == 0) return Bad(error, "bad --fault, want PATH:FAULT");
  Fault fault;
  std::string why;
  if (!ParseFault(value.substr(colon + 1), &fault, &why)) return Bad(error, "--fault: " + why);
  device->faults.emplace_back(value.substr(0, colon), fault);
  return true;
}

bool ApplyPushStartStatus(const std::string& value, DeviceOptions* device, std::string* error) {
  return ReadInt(value, 0, 999, &device->config.values.pushStartStatus) ||
         Bad(error, "bad --push-start-status");
}

bool ApplyHeadTimeout(const std::string& value, DeviceOptions* device, std::string* error) {
  return ReadInt(value, 1, 3600000, &device->config.headTimeoutMs) ||
         Bad(error, "bad --head-timeout");
}

bool ApplyMaxConnections(const std::string& value, DeviceOptions* device, std::string* error) {
  return ReadInt(value, 1, 100000, &device->config.maxConnections) ||
         Bad(error, "bad --max-connections");
}

bool ApplyRecord(const std::string& value, DeviceOptions* device, std::string* error) {
  int limit = 0;
  if (!ReadInt(value, 1, 100000000, &limit)) return Bad(error, "bad --record");
  device->config.recordLimit = static_cast<size_t>(limit);
  return true;
}

bool ApplyUidExpiry(const std::string& value, DeviceOptions* device, std::string* error) {
  return ReadInt(value, 0, 2000000000, &device->config.uidExpiryMs) ||
         Bad(error, "bad --uid-expiry");
}

bool ApplyNonceLifetime(const std::string& value, DeviceOptions* device, std::string* error) {
  return ReadInt(value, 0, 2000000000, &device->config.nonceLifetimeMs) ||
         Bad(error, "bad --nonce-lifetime");
}

bool ApplyRefuse(const std::string&, DeviceOptions* device, std::string*) {
  device->config.startRefusing = true;
  return true;
}

constexpr DeviceOption kDeviceOptions[] = {
    {"--model", "MODEL", "camera type 0..36, or its name (CAM07, QV262, KEL31, KE850...); 0",
     ApplyModel},
    {"--auth", "MODE", "none, basic, digest-md5 (or digest), digest-sha256; none", ApplyAuth},
    {"--user", "NAME", "user of HTTP authentication and recorder login; admin", ApplyUser},
    {"--password", "TEXT", "its password; password", ApplyPassword},
    {"--realm", "TEXT", "authentication realm; camsim", ApplyRealm},
    {"--uid-start", "N", "first UID handed out; 1", ApplyUidStart},
    {"--abitrate", "N",
     "aBitrate= of the camera getuid reply and of the login reply of recorders @; 32", ApplyBitrate,
     kLoginAudioKeys},
    {"--aenable", "VALUE", "aEnable= of the same replies, a number or in; 1", ApplyEnable},
    {"--delivery", "MODE", "sDelivery=: multi, uni or uni_manual; multi", ApplyDelivery},
    {"--multi-addr", "A.B.C.D", "iMultiAdd1= to iMultiAdd4=; 239.1.2.4", ApplyMultiAddress},
    {"--multi-addr6", "TEXT", "iMultiAddv6= (left out when empty); empty", ApplyMultiAddressV6},
    {"--multi-port", "N", "iMultiPort=; 5000", ApplyMultiPort},
    {"--uni-port", "N", "iUniPort=; 6000", ApplyUniPort},
    {"--ain-port", "N", "aInPort=; 7000", ApplyAudioInPort},
    {"--filename", "TEXT", "recorder status: the text after FILENAME; =REC0001.DAT", ApplyFileName},
    {"--play-mode", "N", "recorder status: PLAY_MODE=; 0", ApplyPlayMode},
    {"--frame-rate", "R", "pictures per second of a push that names none; 5", ApplyFrameRate},
    {"--gray", "N", "gray level 0..255 of the pictures; 128", ApplyGray},
    {"--push-start-status", "N",
     "recorder push.cgi CMD=START answered with status N (204: empty); 0 normal",
     ApplyPushStartStatus},
    {"--uid-expiry", "MS", "forget a UID without keep-alive for MS ms; 0 (never)", ApplyUidExpiry},
    {"--nonce-lifetime", "MS", "Digest nonce refused (stale=true) after MS ms; 300000 (0: never)",
     ApplyNonceLifetime},
    {"--head-timeout", "MS", "408 when the request head is not complete in MS ms; 10000",
     ApplyHeadTimeout},
    {"--max-connections", "N", "connections served at once, more get 503; 1000",
     ApplyMaxConnections},
    {"--record", "N", "requests kept on the record (the last N); 10000", ApplyRecord},
    {"--fault", "PATH:FAULT", "a fault on PATH (or * for every path); repeatable, in order",
     ApplyFault},
    {"--refuse", nullptr, "start with the listener closed (SIGUSR2 opens it)", ApplyRefuse},
};

const DeviceOption* FindDeviceOption(const std::string& name) {
  for (const DeviceOption& option : kDeviceOptions) {
    if (name == option.name) return &option;
  }
  return nullptr;
}

bool ApplyDeviceOption(const std::vector<std::string>& args, size_t* i, Options* options,
                       std::string* error) {
  const DeviceOption* option = FindDeviceOption(args[*i]);
  if (option == nullptr) return Bad(error, "unknown option \"" + args[*i] + "\"");
  if (options->devices.empty()) return Bad(error, args[*i] + " comes before any --listen");
  std::string value;
  if (option->argument != nullptr) {
    if (*i + 1 >= args.size()) return Bad(error, args[*i] + " needs " + option->argument);
    value = args[++*i];
  }
  return option->apply(value, &options->devices.back(), error);
}

}  // namespace

bool ParseListen(const std::string& text, std::string* address, uint16_t* port) {
  size_t colon = text.rfind(':');
  if (colon == std::string::npos || colon == 0) return false;
  std::string host = text.substr(0, colon);
  if (host.front() == '[') {
    if (host.back() != ']') return false;
    host = host.substr(1, host.size() - 2);
  } else if (host.find(':') != std::string::npos) {
    return false;  // an IPv6 address needs its brackets
  }
  int number = 0;
  if (!ReadInt(text.substr(colon + 1), 0, 65535, &number)) return false;
  sockaddr_storage storage{};
  socklen_t length = 0;
  if (!MakeAddress(host, static_cast<uint16_t>(number), &storage, &length)) return false;
  *address = host;
  *port = static_cast<uint16_t>(number);
  return true;
}

bool ParseOptions(const std::vector<std::string>& args, Options* options, std::string* error) {
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--help" || args[i] == "-h") {
      options->help = true;
    } else if (args[i] == "--verbose" || args[i] == "-v") {
      options->verbose = true;
    } else if (args[i] == "--control") {
      if (i + 1 >= args.size()) return Bad(error, "--control needs ADDR:PORT");
      if (!ParseListen(args[++i], &options->controlAddress, &options->controlPort)) {
        return Bad(error, "bad --control \"" + args[i] + "\", want ADDR:PORT or [ADDR6]:PORT");
      }
      options->control = true;
    } else if (args[i] == "--listen") {
      if (i + 1 >= args.size()) return Bad(error, "--listen needs ADDR:PORT");
      DeviceOptions device;
      if (!ParseListen(args[++i], &device.config.address, &device.config.port)) {
        return Bad(error, "bad --listen \"" + args[i] + "\", want ADDR:PORT or [ADDR6]:PORT");
      }
      options->devices.push_back(device);
    } else if (!ApplyDeviceOption(args, &i, options, error)) {
      return false;
    }
  }
  return true;
}

std::string UsageText() {
  std::string text =
      "usage: camsim [--verbose] [--control ADDR:PORT] --listen ADDR:PORT [device options]\n"
      "              [--listen ADDR:PORT [device options]] ...\n"
      "\n"
      "Simulates network cameras, Quillon cameras and KEL recorders for\n"
      "libCCamRequester. Each --listen starts one device; the device options\n"
      "after it apply to it. PORT 0 lets the system choose. Once every device\n"
      "(and the control socket) listens, one line each is printed:\n"
      "  camsim: device N model M (NAME) listening on ADDR port PORT\n"
      "  camsim: control listening on ADDR port PORT\n"
      "If any cannot listen, nothing of the kind is printed and the exit status is 1.\n"
      "Runs until SIGINT or SIGTERM (exit 0). SIGUSR1 closes every listener\n"
      "(connections are refused), SIGUSR2 opens them again. Exit status 2: bad\n"
      "command line.\n"
      "\n"
      "Global options:\n"
      "  --help, -h              this text\n"
      "  --verbose, -v           print every request received, and every RTP stream\n"
      "                          that starts, stalls, resumes or ends, to standard error\n"
      "  --control ADDR:PORT     take run-time changes as text lines on this TCP\n"
      "                          socket, one answer line each (OK or ERROR ...)\n"
      "  --listen ADDR:PORT      start a device on a numeric address, IPv6 in\n"
      "                          brackets: 127.0.0.1:8080, [::1]:0\n"
      "\n"
      "Device options (value; default):\n";
  for (const DeviceOption& option : kDeviceOptions) {
    std::string left = std::string("  ") + option.name;
    if (option.argument != nullptr) left += std::string(" ") + option.argument;
    if (left.size() < 26) left.resize(26, ' ');
    std::string help = option.help;
    size_t at = help.find('@');
    if (at != std::string::npos) help.replace(at, 1, TypesWith(option.typesWith));
    text += left + help + "\n";
  }
  text +=
      "\n"
      "What each camera type (--model) answers; any other line gets 404 with the\n"
      "body ERROR=NOT_FOUND, a line with a UID it does not know 404 ERROR=UNKNOWN_UID:\n";
  text += CameraTypesText();
  text +=
      "\n"
      "RTP: an accepted start line (camera h264, mpeg4, audio with protocol=rtp;\n"
      "recorder push.cgi with PORT=) starts an RTP stream until its stop line or\n"
      "the end of its UID (released, forgotten, expired):\n"
      "  H.264    PT 96, 90 kHz, 25 frames/s, RFC 6184 (single NAL units, FU-A)\n"
      "  MPEG-4   PT 96, 90 kHz, 25 frames/s, RFC 3016 (MP4V-ES)\n"
      "  G.726    PT 97, 8 kHz, 32 kbit/s, 20 ms a packet (G726-32)\n"
      "A camera sends to the multicast group and port of its getuid reply with\n"
      "--delivery multi (through the loopback interface with TTL 0 when the device\n"
      "listens on a loopback or wildcard address), to the requester's address at\n"
      "--uni-port (audio: --ain-port) with uni_manual, else at the line's my_port.\n"
      "A recorder sends to the requester's address at the line's PORT=.\n"
      "\n"
      "FAULT, items joined by commas:\n"
      "  status=N           answer with status N (401 carries a challenge, 204 no body)\n"
      "  delay=MS           wait MS milliseconds before answering\n"
      "  noanswer           answer nothing and hold the connection open\n"
      "  close-header       close in the middle of the status line and headers\n"
      "  close-body         close after half the body (or half the first picture)\n"
      "  reset              like close-body, but end with a reset (RST)\n"
      "  garbage            answer with bytes that are not HTTP\n"
      "  long-body[=N]      pad the reply body to N bytes (more than 2048; 4096)\n"
      "  late-keys[=N]      filler lines first, the keys from byte N on (2048)\n"
      "  omit=KEY           leave out reply lines starting with KEY, e.g. aEnable=\n"
      "  drip=MS            send the body one byte every MS milliseconds\n"
      "  no-length          no Content-Length: the close ends the body\n"
      "  chunked            Transfer-Encoding: chunked\n"
      "  chunked-open       chunked, closed before the last chunk\n"
      "  push-stall[=N]     a push or audio stream sends N parts (1), then nothing\n"
      "  push-end[=N]       a push or audio stream sends N parts (1), then ends\n"
      "  boundary-quoted    push: boundary=\"camsimboundary\"\n"
      "  boundary-bare      push: parts begin with the boundary without --\n"
      "  when=KEY=VALUE     only requests whose query holds KEY=VALUE (repeatable)\n"
      "  uid=N              only requests for UID N\n"
      "  times=N            only the next N requests on that path (0: until cleared)\n"
      "  rtp-stall[=N]      the RTP stream of a start line sends N frames (1), then\n"
      "                     nothing while HTTP answers; a resume or a new start\n"
      "                     resumes it\n"
      "  rtp-resume=MS      with rtp-stall: the stream resumes by itself after MS ms\n"
      "  rtp-end[=N]        the RTP stream sends N frames (1) and ends for good\n"
      "Several --fault on one path are served in order: a request meets the first\n"
      "whose when/uid it meets; one whose times ran out gives way to the next.\n"
      "\n"
      "Control lines (--control), DEVICE is the number of the --listen, from 0:\n";
  text += ControlCommandsText();
  return text;
}

}  // namespace camsim
