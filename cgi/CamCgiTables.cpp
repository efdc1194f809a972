#include "CamCgiTables.h"

namespace cgi {

// clang-format off
// Media path rows of the RTP requester, columns iCmdType 0..5.
#define RTP_VIDEO_AUDIO {"h264", "audio", "mpeg4", "error", "", ""}
#define RTP_VIDEO_ONLY  {"h264", "", "mpeg4", "error", "", ""}
#define RTP_NO_MEDIA    {"", "", "", "error", "", ""}
#define RTP_RECORDER    {"push.cgi", "push.cgi", "push.cgi", "error", "", ""}
#define RTP_NOT_SET     {"error", "error", "error", "error", "", ""}

const char kMediaModeTable[kCamTypeCount][kRtpCmdTypeCount][kMediaCellSize] = {
    RTP_VIDEO_AUDIO, RTP_VIDEO_AUDIO, RTP_VIDEO_AUDIO, RTP_VIDEO_AUDIO,  //  0- 3
    RTP_VIDEO_AUDIO, RTP_VIDEO_AUDIO, RTP_VIDEO_ONLY,  RTP_VIDEO_AUDIO,  //  4- 7
    RTP_VIDEO_AUDIO, RTP_VIDEO_AUDIO, RTP_VIDEO_AUDIO, RTP_VIDEO_AUDIO,  //  8-11
    RTP_VIDEO_AUDIO, RTP_VIDEO_ONLY,  RTP_VIDEO_AUDIO, RTP_VIDEO_AUDIO,  // 12-15
    RTP_VIDEO_AUDIO, RTP_VIDEO_AUDIO, RTP_VIDEO_AUDIO, RTP_NO_MEDIA,     // 16-19
    RTP_VIDEO_ONLY,  RTP_VIDEO_ONLY,  RTP_VIDEO_AUDIO, RTP_VIDEO_ONLY,   // 20-23
    RTP_VIDEO_AUDIO, RTP_VIDEO_AUDIO, RTP_VIDEO_AUDIO, RTP_VIDEO_AUDIO,  // 24-27
    RTP_VIDEO_AUDIO, RTP_NO_MEDIA,    RTP_VIDEO_AUDIO, RTP_RECORDER,     // 28-31
    RTP_RECORDER,    RTP_RECORDER,    RTP_RECORDER,    RTP_RECORDER,     // 32-35
    RTP_RECORDER,    RTP_NOT_SET,                                        // 36-37
};

// Media path rows of the HTTP requester, columns iCmdType 0..3.
#define HTTP_JPEG_AUDIO {"jpeg", "audio", "error", ""}
#define HTTP_JPEG_ONLY  {"jpeg", "", "error", ""}
#define HTTP_QUILLON    {"push", "", "error", ""}
#define HTTP_NO_MEDIA   {"", "", "error", ""}
#define HTTP_RECORDER   {"push.cgi", "push.cgi", "error", ""}
#define HTTP_NOT_SET    {"error", "error", "error", ""}

const char kHttpMediaModeTable[kCamTypeCount][kHttpCmdTypeCount][kMediaCellSize] = {
    HTTP_JPEG_AUDIO, HTTP_JPEG_AUDIO, HTTP_JPEG_AUDIO, HTTP_JPEG_AUDIO,  //  0- 3
    HTTP_JPEG_AUDIO, HTTP_JPEG_AUDIO, HTTP_QUILLON,    HTTP_JPEG_AUDIO,  //  4- 7
    HTTP_JPEG_AUDIO, HTTP_JPEG_AUDIO, HTTP_JPEG_AUDIO, HTTP_JPEG_AUDIO,  //  8-11
    HTTP_JPEG_AUDIO, HTTP_QUILLON,    HTTP_JPEG_AUDIO, HTTP_JPEG_AUDIO,  // 12-15
    HTTP_JPEG_AUDIO, HTTP_JPEG_AUDIO, HTTP_JPEG_AUDIO, HTTP_NO_MEDIA,    // 16-19
    HTTP_QUILLON,    HTTP_JPEG_ONLY,  HTTP_JPEG_AUDIO, HTTP_NO_MEDIA,    // 20-23
    HTTP_JPEG_AUDIO, HTTP_JPEG_AUDIO, HTTP_JPEG_AUDIO, HTTP_JPEG_AUDIO,  // 24-27
    HTTP_JPEG_AUDIO, HTTP_NO_MEDIA,   HTTP_JPEG_AUDIO, HTTP_RECORDER,    // 28-31
    HTTP_RECORDER,   HTTP_RECORDER,   HTTP_RECORDER,   HTTP_RECORDER,    // 32-35
    HTTP_RECORDER,   HTTP_NOT_SET,                                       // 36-37
};

// The hyphen of "mpeg-4" is the camera's codec name; its path is "mpeg4".
const char kVideoCodecName[kCodecNameCount][kCodecNameSize] = {"h264", "audio", "mpeg-4", "", ""};

const char kFrameRateTable[kFrameRateCount][kRateCellSize] = {
    "", "0.1", "0.2", "0.33", "0.5", "1", "2", "3", "5", "10", "15", "30"};
const char kQuillonFrameRateTable[kFrameRateCount][kRateCellSize] = {
    "", "1", "1", "1", "1", "1", "2", "3", "5", "10", "15", "30"};
const char kResolutionTable[kResolutionCount][kRateCellSize] = {"", "320", "640", "768", "1280"};

// ---- forms per camera type --------------------------------------------------
using S = SessionForm;
using K = KeepAliveForm;
using V = VideoForm;
using A = AudioForm;

// The columns of RtpTypeRow; MPEG-4 and H.264 are bMpeg4Iframe and bH264Iframe.
//                    session       MPEG-4 H.264  keep-alive        video            audio
#define RTP_CAM      {S::kCamera,   true,  false, K::kCamera,       V::kCamera,      A::kCamera}
#define RTP_CAM_H264 {S::kCamera,   true,  true,  K::kCamera,       V::kCamera,      A::kCamera}
#define RTP_QV262    {S::kCamera,   true,  false, K::kShortNoAudio, V::kCamera,      A::kNone}
#define RTP_NONE     {S::kNone,     false, false, K::kNone,         V::kNone,        A::kNone}
#define RTP_REC      {S::kRecorder, false, false, K::kRecorder,     V::kRecorder,    A::kNone}
#define RTP_REC_AUD  {S::kRecorder, false, false, K::kRecorder,     V::kRecorder,    A::kRecorder}
#define RTP_REC_RES  {S::kRecorder, false, false, K::kRecorder,     V::kRecorderRes, A::kRecorder}

const RtpTypeRow kRtpTypeTable[kCamTypeCount] = {
    RTP_CAM,      RTP_CAM,      RTP_CAM,      RTP_CAM,       //  0- 3
    RTP_CAM,      RTP_CAM,      RTP_NONE,     RTP_CAM,       //  4- 7
    RTP_NONE,     RTP_CAM_H264, RTP_CAM,      RTP_CAM,       //  8-11
    RTP_CAM,      RTP_NONE,     RTP_CAM,      RTP_CAM,       // 12-15
    RTP_CAM,      RTP_CAM,      RTP_CAM,      RTP_NONE,      // 16-19
    RTP_NONE,     RTP_QV262,    RTP_CAM,      RTP_NONE,      // 20-23
    RTP_CAM_H264, RTP_CAM,      RTP_CAM_H264, RTP_CAM_H264,  // 24-27
    RTP_CAM_H264, RTP_NONE,     RTP_CAM_H264, RTP_REC,       // 28-31
    RTP_REC,      RTP_REC,      RTP_REC_AUD,  RTP_REC_AUD,   // 32-35
    RTP_REC_RES,  RTP_NONE,                                  // 36-37
};

// The columns of HttpTypeRow; Quillon is bQuillonRelease.
//                    session       keep-alive        JPEG          audio         Quillon
#define HTTP_CAM     {S::kCamera,   K::kCamera,       V::kCamera,   A::kCamera,   false}
#define HTTP_QV262   {S::kCamera,   K::kShortNoAudio, V::kCamera,   A::kNone,     false}
#define HTTP_QUIL    {S::kQuillon,  K::kQuillon,      V::kQuillon,  A::kNone,     true}
#define HTTP_NONE    {S::kNone,     K::kNone,         V::kNone,     A::kNone,     false}
#define HTTP_REC     {S::kRecorder, K::kRecorder,     V::kRecorder, A::kNone,     false}
#define HTTP_REC_AUD {S::kRecorder, K::kRecorder,     V::kRecorder, A::kRecorder, false}

const HttpTypeRow kHttpTypeTable[kCamTypeCount] = {
    HTTP_CAM,     HTTP_CAM,     HTTP_CAM,     HTTP_CAM,      //  0- 3
    HTTP_CAM,     HTTP_CAM,     HTTP_QUIL,    HTTP_CAM,      //  4- 7
    HTTP_NONE,    HTTP_CAM,     HTTP_CAM,     HTTP_CAM,      //  8-11
    HTTP_CAM,     HTTP_QUIL,    HTTP_CAM,     HTTP_CAM,      // 12-15
    HTTP_CAM,     HTTP_CAM,     HTTP_CAM,     HTTP_NONE,     // 16-19
    HTTP_QUIL,    HTTP_QV262,   HTTP_CAM,     HTTP_NONE,     // 20-23
    HTTP_CAM,     HTTP_CAM,     HTTP_CAM,     HTTP_CAM,      // 24-27
    HTTP_CAM,     HTTP_NONE,    HTTP_CAM,     HTTP_REC,      // 28-31
    HTTP_REC,     HTTP_REC,     HTTP_REC_AUD, HTTP_REC_AUD,  // 32-35
    HTTP_REC_AUD, HTTP_NONE,                                 // 36-37
};

using P = PresetForm;
const PresetForm kPresetTable[kCamTypeCount] = {
    P::kNone,      P::kNone,      P::kNone,      P::kNone,       //  0- 3
    P::kNone,      P::kNone,      P::kNone,      P::kNone,       //  4- 7
    P::kNone,      P::kNone,      P::kNone,      P::kLowerCase,  //  8-11
    P::kLowerCase, P::kUpperCase, P::kLowerCase, P::kLowerCase,  // 12-15
    P::kLowerCase, P::kLowerCase, P::kLowerCase, P::kNone,       // 16-19
    P::kNone,      P::kNone,      P::kLowerCase, P::kNone,       // 20-23
    P::kNone,      P::kLowerCase, P::kNone,      P::kNone,       // 24-27
    P::kLowerCase, P::kNone,      P::kLowerCase, P::kNone,       // 28-31
    P::kNone,      P::kNone,      P::kNone,      P::kNone,       // 32-35
    P::kNone,      P::kNone,                                     // 36-37
};
// clang-format on

namespace {
constexpr RtpTypeRow kRtpNoneRow = RTP_NONE;
constexpr HttpTypeRow kHttpNoneRow = HTTP_NONE;
}  // namespace

const char* MediaCell(unsigned usCameraType, int iCmdType) {
  if (usCameraType >= static_cast<unsigned>(kCamTypeCount) || iCmdType < 0 ||
      iCmdType >= kRtpCmdTypeCount) {
    return "";
  }
  return kMediaModeTable[usCameraType][iCmdType];
}

const char* HttpMediaCell(unsigned usCameraType, int iCmdType) {
  if (usCameraType >= static_cast<unsigned>(kCamTypeCount) || iCmdType < 0 ||
      iCmdType >= kHttpCmdTypeCount) {
    return "";
  }
  return kHttpMediaModeTable[usCameraType][iCmdType];
}

const char* VideoCodecName(int iCmdType) {
  return (iCmdType < 0 || iCmdType >= kCodecNameCount) ? "" : kVideoCodecName[iCmdType];
}

const char* FrameRateCell(unsigned uIndex) {
  return uIndex < static_cast<unsigned>(kFrameRateCount) ? kFrameRateTable[uIndex] : "";
}

const char* QuillonFrameRateCell(unsigned uIndex) {
  return uIndex < static_cast<unsigned>(kFrameRateCount) ? kQuillonFrameRateTable[uIndex] : "";
}

const char* ResolutionCell(unsigned uIndex) {
  return uIndex < static_cast<unsigned>(kResolutionCount) ? kResolutionTable[uIndex] : "";
}

const RtpTypeRow& RtpRow(unsigned usCameraType) {
  return usCameraType < static_cast<unsigned>(kCamTypeCount) ? kRtpTypeTable[usCameraType]
                                                             : kRtpNoneRow;
}

const HttpTypeRow& HttpRow(unsigned usCameraType) {
  return usCameraType < static_cast<unsigned>(kCamTypeCount) ? kHttpTypeTable[usCameraType]
                                                             : kHttpNoneRow;
}

PresetForm PresetOf(unsigned usCameraType) {
  return usCameraType < static_cast<unsigned>(kCamTypeCount) ? kPresetTable[usCameraType]
                                                             : PresetForm::kNone;
}

}  // namespace cgi
