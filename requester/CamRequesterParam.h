// Records and codes that the upper layer (the device's media process) uses to
// drive a requester: parameter kinds of SetParameter, information kinds of
// GetInfo, the records each kind expects, command types, connection status
// and events, and the notification object that the upper layer implements.
#ifndef CAM_REQUESTER_PARAM_H
#define CAM_REQUESTER_PARAM_H

#include <stdint.h>

#include "CamRequesterExport.h"
#include "kxhttp.h"

// ---- Parameter kinds of SetParameter(kind, record, size) ------------------
enum CamParamKind : long {
  CAM_PARAM_IPADDRESS = 0,           // text
  CAM_PARAM_HTTPPORT = 1,            // int32
  CAM_PARAM_RTPPORT = 2,             // int32 (RTP requester only)
  CAM_PARAM_CMDTYPE = 3,             // int32
  CAM_PARAM_UID = 4,                 // CAM_UID_PARAM
  CAM_PARAM_CALLBACK = 5,            // the CCamRequesterNotify object itself
  CAM_PARAM_AUTH = 6,                // CAM_AUTH_PARAM
  CAM_PARAM_PROXY = 7,               // CAM_PROXY_PARAM
  CAM_PARAM_FRATE = 8,               // uint16 (HTTP requester only)
  CAM_PARAM_RESOLUTION = 9,          // uint16 (HTTP requester only)
  CAM_PARAM_CAMTYPE = 10,            // CAM_TYPE_PARAM
  CAM_PARAM_PRESET = 11,             // uint16
  CAM_PARAM_SELCH = 12,              // uint16
  CAM_PARAM_SCREENPOS = 13,          // int32
  CAM_PARAM_KELINFO = 14,            // CAM_KEL_INFO
  CAM_PARAM_SAMEUIDGROUP_KEL = 15,   // int32
  CAM_PARAM_CTRLFLAG_KEL = 16,       // int32
  CAM_PARAM_KEEPALIVEFLAG_KEL = 17,  // int32
  CAM_PARAM_CHANGESTATUS_KEL = 18,   // any, not read
  CAM_PARAM_PLAYMODE = 19,           // int32
  CAM_PARAM_STATUSCHANGE = 20,       // int32
  CAM_PARAM_STREAM = 21,             // uint8 (RTP requester only)
  CAM_PARAM_CAMNO = 22,              // int32
  CAM_PARAM_HTTPERROR = 23,          // any, not read (HTTP requester only)
  CAM_PARAM_DEBUGINFO = 999          // any non-null address
};

// ---- Information kinds of GetInfo(kind, record) ---------------------------
enum CamInfoKind : long {
  CAM_INFO_KELINFO = 0,           // CAM_KEL_INFO
  CAM_INFO_CAMINFO = 1,           // CAM_CAMINFO_PARAM
  CAM_INFO_SAMEUIDGROUP_KEL = 2,  // int32
  CAM_INFO_CTRLFLAG_KEL = 3,      // int32
  CAM_INFO_KEEPALIVEFLAG_KEL = 4  // int32
};

// ---- Command types (iCmdType) ----------------------------------------------
enum CamRtpCmdType {
  CAM_REQUESTER_CMD_H264_RTP = 0,
  CAM_REQUESTER_CMD_G726_RTP = 1,
  CAM_REQUESTER_CMD_MPEG4_RTP = 2,
  CAM_REQUESTER_CMD_MPEG4_PLAY = 3,
  CAM_REQUESTER_CMD_H264_PLAY = 4,
  CAM_REQUESTER_CMD_RTP_INVALID = 5
};
enum CamHttpCmdType {
  CAM_REQUESTER_CMD_JPEG_HTTP = 0,
  CAM_REQUESTER_CMD_G726_HTTP = 1,
  CAM_REQUESTER_CMD_JPEG_PLAY = 2,
  CAM_REQUESTER_CMD_HTTP_INVALID = 3
};

// ---- Queue command codes of the request thread ----------------------------
enum CamQueueCommand {
  CAM_REQ_CMD_START = 0,
  CAM_REQ_CMD_STOP = 1,
  CAM_REQ_CMD_DUMMY = 3,
  CAM_REQ_CMD_PRESET = 4,
  CAM_REQ_CMD_PBSTART = 5,
  CAM_REQ_CMD_PBSTOP = 6
};

// ---- Connection status and events -----------------------------------------
enum CamHttpStatus {
  CAM_HTTP_STS_IDLE = 0,
  CAM_HTTP_STS_ERROR = 1,
  CAM_HTTP_STS_SETUP = 2,
  CAM_HTTP_STS_READY = 3,
  CAM_HTTP_STS_RUN = 4,
  CAM_HTTP_STS_STOP = 5
};
enum CamHttpEvent {
  CAM_HTTP_EVT_START = 0,
  CAM_HTTP_EVT_STOP = 1,
  CAM_HTTP_EVT_SETUP_SUCCESS = 2,
  CAM_HTTP_EVT_SETUP_FAIL = 3,
  CAM_HTTP_EVT_RUN_SUCCESS = 4,
  CAM_HTTP_EVT_RUN_FAIL = 5,
  CAM_HTTP_EVT_ERROR = 6,
  CAM_HTTP_EVT_RESERVED7 = 7,
  CAM_HTTP_EVT_STOP_DONE = 8
};

// The UID message to other processes: identifier, destination, payload.
#define CAM_UIDMSG_ID 0x2203001Cu
#define CAM_UIDMSG_DESTINATION 34
typedef struct CAM_UIDMSG {
  int32_t iPos;     // screen position minus 1
  int32_t iCamNo;   // camera number (parameter kind 22)
  int32_t iResult;  // 1 = the UID could not be obtained, 0 = success
} CAM_UIDMSG;

// Alarm codes of the connection-error report.
enum CamAlarmCode {
  CAM_ALARM_VIDEO_ERROR_ON = 2,
  CAM_ALARM_AUDIO_ERROR_ON = 3,
  CAM_ALARM_VIDEO_ERROR_OFF = 39,
  CAM_ALARM_AUDIO_ERROR_OFF = 40
};

#define CAM_TEXT_SIZE 64
#define CAM_PROXY_HOST_SIZE 256
#define CAM_PROXY_EXCEPT_COUNT 40
#define CAM_PROXY_EXCEPT_SIZE 256

// ---- Records of the parameter and information kinds -----------------------

// Kind 4 (200 bytes): only the UID and the audio enable are read.
typedef struct CAM_UID_PARAM {
  int32_t iReserved;  // not read
  int32_t iUid;
  int32_t iAudioBitrate;  // not read
  int32_t iAudioEnable;
  uint8_t aucReserved[184];  // not read
} CAM_UID_PARAM;

// Kind 6: each text is copied up to its terminating zero.
typedef struct CAM_AUTH_PARAM {
  char cUserName[CAM_TEXT_SIZE];
  char cPassword[CAM_TEXT_SIZE];
} CAM_AUTH_PARAM;

// Kind 7, copied whole. The proxy is used only when enable is 1.
typedef struct CAM_PROXY_PARAM {
  int32_t enable;
  char host[CAM_PROXY_HOST_SIZE];
  uint16_t port;
  // Address patterns whose cameras are reached directly; an empty entry is
  // skipped. A "*" label stands for exactly one whole label.
  char except[CAM_PROXY_EXCEPT_COUNT][CAM_PROXY_EXCEPT_SIZE];
} CAM_PROXY_PARAM;

// Kind 10.
typedef struct CAM_TYPE_PARAM {
  uint16_t usCameraNumber;      // 1..262, 0 = none
  uint16_t usCameraType;        // 0..36, see requester/CamTypes.h
  int32_t iReserved;            // not read
  char CamName[CAM_TEXT_SIZE];  // model name, only printed
} CAM_TYPE_PARAM;

// Kind 14 (set) and information kind 0 (query) of a KEL recorder. The
// leading fields are not read by the setter; the query matches them against
// the requester and, on a match, fills the session data that follow.
typedef struct CAM_KEL_INFO {
  char cIpAddr[CAM_TEXT_SIZE];
  int32_t iHttpPort;
  uint16_t usCameraType;
  char CamName[CAM_TEXT_SIZE];
  // Recorder session data.
  int32_t iUid;
  int32_t iAudioBitrate;
  int32_t iAudioEnable;
  int32_t iSelfFamily;  // family of this device's address
  uint16_t usReserved;  // kept as given
  uint8_t ucMulticast;  // 1 = delivered by multicast
  char cMultiAddr[CAM_TEXT_SIZE];
  uint8_t ucReserved;  // kept as given
  char cSelfAddr[CAM_TEXT_SIZE];
  int32_t iRtpPort;
  int32_t iUniPort;
  int32_t iAudioInPort;
  int32_t iPeerFamily;  // family of the recorder's address
} CAM_KEL_INFO;

// Information kind 1: is the described camera the one this object serves?
typedef struct CAM_CAMINFO_PARAM {
  int32_t iReserved;  // not read
  char cIpAddr[CAM_TEXT_SIZE];
  int32_t iHttpPort;
  char cUserName[CAM_TEXT_SIZE];
  char cPassword[CAM_TEXT_SIZE];
  uint16_t usCameraType;
  char CamName[CAM_TEXT_SIZE];
  uint16_t usSelectChNo;
  uint16_t usFrate;       // compared by the HTTP requester only
  uint16_t usResolution;  // compared by the HTTP requester only
} CAM_CAMINFO_PARAM;

// ---- The notification object ----------------------------------------------
// Implemented by the upper layer and handed over with parameter kind 5. The
// four operations are declared in this order and are the whole table; the
// destructor is not virtual, because the requester never deletes it.
class CAMREQ_API CCamRequesterNotify {
 public:
  // RTP stream notification: where the stream of iUid will arrive. iUid -1
  // (with zero delivery values) tells that the stream is gone.
  virtual void NotifyRtpStream(int iUid, const void* pSessionInfo, int iRtpPort,
                               const char* cIpAddr, int iPos, int iCmdType, int iSelectChNo,
                               int iAudioBitrate, int iAudioEnable, const char* cMultiAddr,
                               int iUniPort, int iAudioInPort) = 0;
  // Session-information notification of the HTTP requester: the UID and the
  // first HTTP_SESSION_INFO_SIZE bytes of the session record, or null.
  virtual void NotifySessionInfo(int iUid, const void* pSessionInfo, int iPos, int iCmdType) = 0;
  // Stream-state query: 0 while the stream arrives, 1 when it stopped,
  // another non-zero value when it does not arrive.
  virtual int GetStreamState(unsigned short usCameraType, int iCmdType) = 0;
  // Hands the HTTP push session to the upper layer, or withdraws it (null).
  virtual void NotifyCamRequesterHandle(int iUid, HTTP_SESSION* psHandle) = 0;

 protected:
  ~CCamRequesterNotify() = default;
};

#endif
