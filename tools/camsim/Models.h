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

constexpr int kFirstModel = 0;
constexpr int kLastModel = 36;

// Family of a camera type 0..36 (callers check the range first).
Family FamilyOf(int model);

// Enumerator name without its prefix, e.g. "CAM07", "QV262", "KE850".
const char* ModelName(int model);

// Reads a model given as a number ("7") or a name ("CAM07", "ke850");
// returns -1 when it names no model.
int ParseModel(const std::string& text);

const char* FamilyName(Family family);

}  // namespace camsim

#endif
