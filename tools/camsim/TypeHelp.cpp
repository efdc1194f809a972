#include "TypeHelp.h"

#include <utility>
#include <vector>

#include "Models.h"

namespace camsim {

namespace {

// The lines behind each capability, as a user of the family writes them.
// An entry counts when the type has every bit of `needs` and none of
// `unless`.
struct AnswerWords {
  Family family;
  unsigned needs;
  unsigned unless;
  const char* words;
};

constexpr AnswerWords kWords[] = {
    {Family::kCamera, kSession, 0, "getuid"},
    {Family::kCamera, kMpeg4Interval, 0, "mpeg4_I_interval"},
    {Family::kCamera, kH264Interval, 0, "h264_I_interval"},
    {Family::kCamera, kKeepAlive, 0, "keep_alive"},
    {Family::kCamera, kShortKeepAlive, 0,
     "keep_alive in its short form only (no _2, ch, stream or audio mode)"},
    {Family::kCamera, kVideo, 0, "h264 and mpeg4 (RTP)"},
    {Family::kCamera, kAudio, 0, "audio (RTP and HTTP)"},
    {Family::kCamera, kJpeg, 0, "jpeg (push)"},
    {Family::kCamera, kPreset, 0, "camctrl?preset=N"},
    {Family::kQuillon, kSession, 0, "getuid?FILE=uid.html"},
    {Family::kQuillon, kJpeg, 0, "push, syssetup"},
    {Family::kQuillon, kKeepAlive, 0, "uidutil (KEEPALIVE, RELEASE)"},
    {Family::kQuillon, kPresetUpTo16, 0, "camctrl?PRESET=N (1 to 16)"},
    {Family::kRecorder, kSession, 0, "start.cgi, ulogin.cgi, logout.cgi"},
    {Family::kRecorder, kLoginAudioKeys, 0, "aBitrate= and aEnable= in the login reply"},
    {Family::kRecorder, kKeepAlive, 0, "status.cgi"},
    {Family::kRecorder, kVideo, kH264Res, "push.cgi COMP=MPEG4, COMP=H264 without RES (RTP)"},
    {Family::kRecorder, kVideo | kH264Res, 0, "push.cgi COMP=MPEG4, COMP=H264&RES=1 (RTP)"},
    {Family::kRecorder, kAudio, 0, "push.cgi COMP=AUDIO (RTP and HTTP)"},
    {Family::kRecorder, kJpeg, 0, "push.cgi COMP=JPEG (push)"},
};

// A usage text line is wrapped before this column.
constexpr size_t kWidth = 79;
constexpr char kContinuation[] = "      ";

bool Has(unsigned capabilities, unsigned bits) {
  return (capabilities & bits) == bits;
}

// "0-5, 7, 10" from models in ascending order.
std::string ListOfTypes(const std::vector<int>& models) {
  std::string text;
  for (size_t i = 0; i < models.size();) {
    size_t last = i;
    while (last + 1 < models.size() && models[last + 1] == models[last] + 1) ++last;
    if (!text.empty()) text += ", ";
    if (last >= i + 2) {
      text += std::to_string(models[i]) + "-" + std::to_string(models[last]);
    } else {
      text += std::to_string(models[i]);
      if (last == i + 1) text += ", " + std::to_string(models[last]);
    }
    i = last + 1;
  }
  return text;
}

std::vector<const char*> WordsOf(Family family, unsigned capabilities) {
  std::vector<const char*> words;
  for (const AnswerWords& entry : kWords) {
    if (entry.family == family && Has(capabilities, entry.needs) &&
        (capabilities & entry.unless) == 0) {
      words.push_back(entry.words);
    }
  }
  return words;
}

// Appends head and its items, joined by "; " (an item may hold commas)
// and wrapped at kWidth.
void AppendWrapped(const std::string& head, const std::vector<const char*>& items,
                   std::string* text) {
  std::string line = head;
  for (size_t i = 0; i < items.size(); ++i) {
    std::string item = std::string(items[i]) + (i + 1 < items.size() ? ";" : "");
    if (line.size() + 1 + item.size() > kWidth && line != head) {
      *text += line + "\n";
      line = kContinuation + item;
    } else {
      line += " " + item;
    }
  }
  *text += line + "\n";
}

}  // namespace

std::string TypesWith(unsigned capability) {
  std::vector<int> models;
  for (int model = kFirstModel; model <= kLastModel; ++model) {
    if (Has(CapabilitiesOf(model), capability)) models.push_back(model);
  }
  return ListOfTypes(models);
}

std::string CameraTypesText() {
  // Groups of types with the same family and capabilities, in the order of
  // their first type.
  std::vector<std::pair<int, std::vector<int>>> groups;  // first model, models
  for (int model = kFirstModel; model <= kLastModel; ++model) {
    bool placed = false;
    for (auto& group : groups) {
      if (FamilyOf(group.first) == FamilyOf(model) &&
          CapabilitiesOf(group.first) == CapabilitiesOf(model)) {
        group.second.push_back(model);
        placed = true;
        break;
      }
    }
    if (!placed) groups.push_back({model, {model}});
  }
  std::string text;
  for (const auto& group : groups) {
    Family family = FamilyOf(group.first);
    std::vector<const char*> words = WordsOf(family, CapabilitiesOf(group.first));
    if (words.empty()) words.push_back("nothing");
    AppendWrapped("  " + ListOfTypes(group.second) + " (" + FamilyName(family) + "):", words,
                  &text);
  }
  return text;
}

}  // namespace camsim
