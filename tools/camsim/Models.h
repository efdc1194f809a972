// The simulated device models: every camera type of the requester, the
// dialect family it speaks, and its enumerator name.
#ifndef CAMSIM_MODELS_H
#define CAMSIM_MODELS_H

#include <string>

namespace camsim {

// Which set of CGI paths a device answers.
enum class Family {
  kCamera,    // getuid, keep_alive, h264/mpeg4/audio, jpeg, I-interval, camctrl
  kQuillon,   // getuid?FILE=uid.html, push, syssetup, uidutil, camctrl
  kRecorder,  // start.cgi, ulogin.cgi, push.cgi, status.cgi, logout.cgi
};

// What a camera type answers, from the requester's camera-type tables.
// A line that needs a capability the type lacks is refused with 404.
enum Capability : unsigned {
  kSession = 1u << 0,          // camera getuid; Quillon getuid, syssetup, push; recorder
                               // start.cgi, ulogin.cgi, logout.cgi
  kMpeg4Interval = 1u << 1,    // /cgi-bin/mpeg4_I_interval
  kH264Interval = 1u << 2,     // /cgi-bin/h264_I_interval
  kKeepAlive = 1u << 3,        // camera keep_alive; Quillon uidutil; recorder status.cgi
  kShortKeepAlive = 1u << 4,   // keep_alive only in the short form: no "_2", ch, stream, audio
  kVideo = 1u << 5,            // H.264 and MPEG-4 start/stop over RTP
  kAudio = 1u << 6,            // G.726 start/stop (RTP and HTTP)
  kJpeg = 1u << 7,             // JPEG server push
  kPreset = 1u << 8,           // camctrl?preset=N (N >= 1)[&ch=N]
  kPresetUpTo16 = 1u << 9,     // camctrl?PRESET=N, 1 <= N <= 16
  kH264Res = 1u << 10,         // recorder: H.264 push.cgi carries RES=1 (and only this type)
  kLoginAudioKeys = 1u << 11,  // recorder login reply carries aBitrate= and aEnable=
};

constexpr int kFirstModel = 0;
constexpr int kLastModel = 36;

// Family of a camera type 0..36 (callers check the range first).
Family FamilyOf(int model);

// Capabilities of a camera type 0..36 (callers check the range first).
unsigned CapabilitiesOf(int model);

// Enumerator name without its prefix, e.g. "CAM07", "QV262", "KE850".
const char* ModelName(int model);

// Reads a model given as a number ("7") or a name ("CAM07", "ke850");
// returns -1 when it names no model.
int ParseModel(const std::string& text);

const char* FamilyName(Family family);

}  // namespace camsim

#endif
