#include "Models.h"

#include <cctype>
#include <cstdlib>

namespace camsim {

namespace {

struct ModelInfo {
  const char* name;
  Family family;
};

constexpr Family C = Family::kCamera;
constexpr Family Q = Family::kQuillon;
constexpr Family R = Family::kRecorder;

constexpr ModelInfo kModels[kLastModel + 1] = {
    {"CAM00", C}, {"CAM01", C}, {"CAM02", C}, {"CAM03", C}, {"CAM04", C}, {"CAM05", C},
    {"CAM06", Q}, {"CAM07", C}, {"CAM08", C}, {"CAM09", C}, {"CAM10", C}, {"CAM11", C},
    {"CAM12", C}, {"CAM13", Q}, {"CAM14", C}, {"CAM15", C}, {"CAM16", C}, {"CAM17", C},
    {"CAM18", C}, {"CAM19", C}, {"CAM20", Q}, {"QV262", C}, {"CAM22", C}, {"CAM23", C},
    {"CAM24", C}, {"CAM25", C}, {"CAM26", C}, {"CAM27", C}, {"CAM28", C}, {"CAM29", C},
    {"CAM30", C}, {"KEL31", R}, {"KEL32", R}, {"KEL33", R}, {"KE850", R}, {"KEL35", R},
    {"KEL36", R},
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
