// The constant tables of the camera CGI dialects: media paths per camera type
// and command type, codec names, frame rates, resolutions, and for every
// builder which form of line each camera type gets (a row per camera type).
#ifndef CAM_CGI_TABLES_H
#define CAM_CGI_TABLES_H

#include <cstdint>

#include "CamTypes.h"

namespace cgi {

constexpr int kMediaCellSize = 10;
constexpr int kRtpCmdTypeCount = 6;   // iCmdType 0..5 of the RTP requester
constexpr int kHttpCmdTypeCount = 4;  // iCmdType 0..3 of the HTTP requester
constexpr int kCodecNameCount = 5;
constexpr int kCodecNameSize = 7;
constexpr int kRateCellSize = 6;
constexpr int kFrameRateCount = 12;
constexpr int kResolutionCount = 5;

// Last path component after "/cgi-bin/" and value of the keep-alive "mode".
extern const char kMediaModeTable[kCamTypeCount][kRtpCmdTypeCount][kMediaCellSize];
extern const char kHttpMediaModeTable[kCamTypeCount][kHttpCmdTypeCount][kMediaCellSize];
// "vcodec=" of the RTP session command, by iCmdType.
extern const char kVideoCodecName[kCodecNameCount][kCodecNameSize];
// "&framerate=%s" of the camera JPEG line, by frame-rate index.
extern const char kFrameRateTable[kFrameRateCount][kRateCellSize];
// After "FRAMERATE=" of the Quillon push line: rates below 1 fps become 1.
extern const char kQuillonFrameRateTable[kFrameRateCount][kRateCellSize];
// "&resolution=%s" of the camera JPEG line, by resolution index.
extern const char kResolutionTable[kResolutionCount][kRateCellSize];

// Cells looked up with unchecked indices read as the empty string.
const char* MediaCell(unsigned usCameraType, int iCmdType);
const char* HttpMediaCell(unsigned usCameraType, int iCmdType);
const char* VideoCodecName(int iCmdType);
const char* FrameRateCell(unsigned uIndex);
const char* QuillonFrameRateCell(unsigned uIndex);
const char* ResolutionCell(unsigned uIndex);

// ---- which line each camera type gets ------------------------------------
enum class SessionForm : uint8_t { kNone, kCamera, kQuillon, kRecorder };
enum class KeepAliveForm : uint8_t { kNone, kCamera, kShortNoAudio, kQuillon, kRecorder };
enum class VideoForm : uint8_t { kNone, kCamera, kQuillon, kRecorder, kRecorderRes };
enum class AudioForm : uint8_t { kNone, kCamera, kRecorder };
enum class PresetForm : uint8_t { kNone, kLowerCase, kUpperCase };

struct RtpTypeRow {
  SessionForm session;
  bool bMpeg4Iframe;
  bool bH264Iframe;
  KeepAliveForm keepAlive;
  VideoForm video;  // MPEG-4 and H.264 start-stop
  AudioForm audio;
};

struct HttpTypeRow {
  SessionForm session;
  KeepAliveForm keepAlive;
  VideoForm jpeg;
  AudioForm audio;
  bool bQuillonRelease;
};

extern const RtpTypeRow kRtpTypeTable[kCamTypeCount];
extern const HttpTypeRow kHttpTypeTable[kCamTypeCount];
// The preset line is the same for both requesters.
extern const PresetForm kPresetTable[kCamTypeCount];

// Rows for a camera type; a type beyond the table gets the row of "none".
const RtpTypeRow& RtpRow(unsigned usCameraType);
const HttpTypeRow& HttpRow(unsigned usCameraType);
PresetForm PresetOf(unsigned usCameraType);

}  // namespace cgi

#endif
