#include "FaultMatrix.h"

#include "CamRequesterParam.h"
#include "CamTypes.h"

namespace loadtest {

namespace {
constexpr char kSetupFailed[] = "ChangeStatus [DEBUG] Video Event=3:2 -> 1. \n";
constexpr char kStartFailed[] = "ChangeStatus [DEBUG] Video Event=5:3 -> 1. \n";
constexpr char kRunFailed[] = "ChangeStatus [DEBUG] Video Event=6:4 -> 1. \n";
constexpr char kStopDone[] = "ChangeStatus [DEBUG] Video Event=8:5 -> 0. \n";
constexpr char kAudioStartFailed[] = "ChangeStatus [DEBUG] Audio Event=5:3 -> 1. \n";
constexpr char kAudioRunFailed[] = "ChangeStatus [DEBUG] Audio Event=6:4 -> 1. \n";
constexpr char kAudioStopDone[] = "ChangeStatus [DEBUG] Audio Event=8:5 -> 0. \n";
}  // namespace

const MatrixRoad kMatrixRoads[6] = {
    {"RtpLive",
     CAM_REQUESTER_CAMTYPE_CAM07,
     false,
     CAM_REQUESTER_CMD_H264_RTP,
     false,
     false,
     {{"Uid", "/cgi-bin/getuid", nullptr, nullptr, Side::kStart, kSetupFailed, Answer::kText, true,
       true},
      {"Start", "/cgi-bin/h264", "connect", "start", Side::kStart, kStartFailed, Answer::kRtpStart},
      {"KeepAlive", "/cgi-bin/keep_alive", nullptr, nullptr, Side::kRun, kRunFailed},
      {"Stop", "/cgi-bin/h264", "connect", "stop", Side::kStop, kStopDone}},
     4},
    {"RtpRecorder",
     CAM_REQUESTER_CAMTYPE_KE850,
     false,
     CAM_REQUESTER_CMD_H264_RTP,
     false,
     false,
     {{"Key", "/cgi-bin/start.cgi", nullptr, nullptr, Side::kStart, kSetupFailed, Answer::kText,
       false, true},
      {"Login", "/cgi-bin/ulogin.cgi", nullptr, nullptr, Side::kStart, kSetupFailed, Answer::kText,
       true, true},
      {"Start", "/cgi-bin/push.cgi", "CMD", "START", Side::kStart, kStartFailed, Answer::kRtpStart},
      {"KeepAlive", "/cgi-bin/status.cgi", nullptr, nullptr, Side::kRun, kRunFailed, Answer::kText,
       false, true, true},
      {"Stop", "/cgi-bin/push.cgi", "CMD", "STOP", Side::kStop, kStopDone},
      {"Logout", "/cgi-bin/logout.cgi", nullptr, nullptr, Side::kStop, kStopDone}},
     6},
    {"RtpPlayBack",
     CAM_REQUESTER_CAMTYPE_KE850,
     false,
     CAM_REQUESTER_CMD_H264_PLAY,
     true,
     false,
     {{"Key", "/cgi-bin/start.cgi", nullptr, nullptr, Side::kStart, kSetupFailed, Answer::kText,
       false, true},
      {"Login", "/cgi-bin/ulogin.cgi", nullptr, nullptr, Side::kStart, kSetupFailed, Answer::kText,
       true, true},
      {"KeepAlive", "/cgi-bin/status.cgi", nullptr, nullptr, Side::kRun, kRunFailed, Answer::kText,
       false, true},
      {"Logout", "/cgi-bin/logout.cgi", nullptr, nullptr, Side::kStop, kStopDone}},
     4},
    {"Jpeg",
     CAM_REQUESTER_CAMTYPE_CAM07,
     true,
     CAM_REQUESTER_CMD_JPEG_HTTP,
     false,
     false,
     {{"Uid", "/cgi-bin/getuid", nullptr, nullptr, Side::kStart, kSetupFailed, Answer::kText, true,
       true},
      {"Push", "/cgi-bin/jpeg", "connect", "start", Side::kStart, kStartFailed, Answer::kJpegPush},
      {"KeepAlive", "/cgi-bin/keep_alive", nullptr, nullptr, Side::kRun, kRunFailed},
      {"Stop", "/cgi-bin/jpeg", "connect", "stop", Side::kStop, kStopDone}},
     4},
    {"G726",
     CAM_REQUESTER_CAMTYPE_CAM07,
     true,
     CAM_REQUESTER_CMD_G726_HTTP,
     false,
     true,
     {{"Push", "/cgi-bin/audio", "connect", "start", Side::kStart, kAudioStartFailed,
       Answer::kAudioStream},
      {"KeepAlive", "/cgi-bin/keep_alive", nullptr, nullptr, Side::kRun, kAudioRunFailed},
      {"Stop", "/cgi-bin/audio", "connect", "stop", Side::kStop, kAudioStopDone}},
     3},
    {"Quillon",
     CAM_REQUESTER_CAMTYPE_CAM13,
     true,
     CAM_REQUESTER_CMD_JPEG_HTTP,
     false,
     false,
     // A mode change that fails forgets the UID: the push start after it
     // has none and fails.
     {{"Uid", "/cgi-bin/getuid", nullptr, nullptr, Side::kStart, kSetupFailed, Answer::kText, true,
       true},
      {"Mode", "/cgi-bin/syssetup", nullptr, nullptr, Side::kStart, kStartFailed},
      {"Push", "/cgi-bin/push", "MODE", "START", Side::kStart, kStartFailed, Answer::kJpegPush},
      {"KeepAlive", "/cgi-bin/uidutil", "UTIL", "KEEPALIVE", Side::kRun, kRunFailed},
      {"Stop", "/cgi-bin/push", "MODE", "STOP", Side::kStop, kStopDone},
      {"Release", "/cgi-bin/uidutil", "UTIL", "RELEASE", Side::kStop, kStopDone}},
     6},
};

}  // namespace loadtest
