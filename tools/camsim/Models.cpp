#include "Models.h"

#include <cctype>
#include <cstdlib>

namespace camsim {

namespace {

struct ModelInfo {
  const char* name;
  Family family;
  unsigned capabilities;
};

constexpr Family C = Family::kCamera;
constexpr Family Q = Family::kQuillon;
constexpr Family R = Family::kRecorder;

// A camera with the full camera command set but no preset or H.264
// I-interval; the rows below add what each type has beyond it.
constexpr unsigned kCam = kSession | kMpeg4Interval | kKeepAlive | kVideo | kAudio | kJpeg;
// QV262: session, MPEG-4 I-interval, the short keep-alive, video, JPEG.
constexpr unsigned kQv = kSession | kMpeg4Interval | kShortKeepAlive | kVideo | kJpeg;
constexpr unsigned kQuil = kSession | kKeepAlive | kJpeg;
constexpr unsigned kRec = kSession | kKeepAlive | kVideo | kJpeg;
constexpr unsigned kNone = 0;  // no command at all is built for these types

constexpr ModelInfo kModels[kLastModel + 1] = {
    {"CAM00", C, kCam},
    {"CAM01", C, kCam},
    {"CAM02", C, kCam},
    {"CAM03", C, kCam},
    {"CAM04", C, kCam},
    {"CAM05", C, kCam},
    {"CAM06", Q, kQuil},
    {"CAM07", C, kCam},
    {"CAM08", C, kNone},
    {"CAM09", C, kCam | kH264Interval},
    {"CAM10", C, kCam},
    {"CAM11", C, kCam | kPreset},
    {"CAM12", C, kCam | kPreset},
    {"CAM13", Q, kQuil | kPresetUpTo16},
    {"CAM14", C, kCam | kPreset},
    {"CAM15", C, kCam | kPreset},
    {"CAM16", C, kCam | kPreset},
    {"CAM17", C, kCam | kPreset},
    {"CAM18", C, kCam | kPreset},
    {"CAM19", C, kNone},
    {"CAM20", Q, kQuil},
    {"QV262", C, kQv},
    {"CAM22", C, kCam | kPreset},
    {"CAM23", C, kNone},
    {"CAM24", C, kCam | kH264Interval},
    {"CAM25", C, kCam | kPreset},
    {"CAM26", C, kCam | kH264Interval},
    {"CAM27", C, kCam | kH264Interval},
    {"CAM28", C, kCam | kH264Interval | kPreset},
    {"CAM29", C, kNone},
    {"CAM30", C, kCam | kH264Interval | kPreset},
    {"KEL31", R, kRec},
    {"KEL32", R, kRec | kLoginAudioKeys},
    {"KEL33", R, kRec | kLoginAudioKeys},
    {"KE850", R, kRec | kAudio},
    {"KEL35", R, kRec | kAudio | kLoginAudioKeys},
    {"KEL36", R, kRec | kAudio | kH264Res},
};

bool SameIgnoringCase(const std::string& a, const char* b) {
  size_t i = 0;
  for (; i < a.size() && b[i] != '\0'; ++i) {
    if (std::toupper(static_cast<unsigned char>(a[i])) != b[i]) return false;
  }
  return i == a.size() && b[i] == '\0';
}

}  // namespace

Family FamilyOf(int model) {
  return kModels[model].family;
}

unsigned CapabilitiesOf(int model) {
  return kModels[model].capabilities;
}

const char* ModelName(int model) {
  return kModels[model].name;
}

int ParseModel(const std::string& text) {
  if (!text.empty() && text.size() <= 2 &&
      text.find_first_not_of("0123456789") == std::string::npos) {
    int value = std::atoi(text.c_str());
    return value <= kLastModel ? value : -1;
  }
  for (int model = kFirstModel; model <= kLastModel; ++model) {
    if (SameIgnoringCase(text, kModels[model].name)) return model;
  }
  return -1;
}

const char* FamilyName(Family family) {
  static constexpr const char* kNames[] = {"camera", "quillon", "recorder"};
  return kNames[static_cast<int>(family)];
}

}  // namespace camsim
