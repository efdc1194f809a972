// The fields that both concrete requesters carry: parameters set by the
// upper layer, the delivery values parsed from the camera's replies, the
// recorder matters and the HTTP sessions. Both classes take them as a
// data-only base, so that the behaviour they share (parameters, builders,
// scanners, transport, recorder flags) is written once over these fields.
#ifndef CAM_REQUESTER_FIELDS_H
#define CAM_REQUESTER_FIELDS_H

#include <stdint.h>

#include <atomic>

#include "CamRequesterExport.h"
#include "CamRequesterParam.h"
#include "kxhttp.h"

struct CAMREQ_API CamRequesterFields {
  CamRequesterFields();

  // ---- parameters (SetParameter) ------------------------------------------
  CCamRequesterNotify* p_notify_to_upper;  // kind 5
  char cIpAddr[CAM_TEXT_SIZE];             // kind 0: camera address text
  int32_t iHttpPort;                       // kind 1
  int32_t iCmdType;                        // kind 3
  int32_t iRtpPort;                        // kind 2 (RTP); replaced by iMultiPort
  std::atomic<int32_t> iUid;               // kinds 4, 14; -1 = none
  int32_t iAudioBitrate;                   // kind 14, "aBitrate="
  int32_t iAudioEnable;                    // kinds 4, 14, "aEnable=" (100 = "in")
  char cUserName[CAM_TEXT_SIZE];           // kind 6
  char cPassword[CAM_TEXT_SIZE];           // kind 6
  CAM_PROXY_PARAM sProxy;                  // kind 7
  uint16_t usCameraType;                   // kind 10; 37 = not set
  char CamName[CAM_TEXT_SIZE];             // kind 10, only printed
  uint16_t usPresetNo;                     // kind 11
  uint16_t usSelectChNo;                   // kind 12; 0 = single channel
  int32_t iPos;                            // kind 13: screen position
  uint16_t usFrate;                        // kind 8 (HTTP): frame-rate index
  uint16_t usResolution;                   // kind 9 (HTTP): resolution index
  int32_t m_VOGPlayMode;                   // kind 19: play mode this device expects
  uint8_t cStream;                         // kind 21 (RTP): 1 or 2, else none
  char cPrintPrefix[16];                   // "R:h264", "H:jpeg"... (kind 3)

  // ---- delivery values parsed from the set-up reply ------------------------
  char sDelivery[24];              // "multi", "uni", "uni_manual"...
  char cSelfAddr[CAM_TEXT_SIZE];   // this device's address on the camera link
  int32_t iSelfFamily;             // AF_INET or AF_INET6
  uint8_t ucMulticast;             // 1 = delivered by multicast
  char cMultiAddr[CAM_TEXT_SIZE];  // multicast group, empty for unicast
  int32_t iPeerFamily;             // family of the camera's address
  int32_t iUniPort;                // "iUniPort=" (uni_manual)
  int32_t iAudioInPort;            // "aInPort=", default iUniPort + 1000
  uint16_t usKelReserved;          // kept from kind 14
  uint8_t ucKelReserved;           // kept from kind 14

  // ---- recorder (KEL) matters ----------------------------------------------
  int32_t m_KELPlayMode;               // "PLAY_MODE=" of the recorder
  char strKey[7];                      // login key handed out by the recorder
  int32_t uid_logout;                  // UID to log out; -1 at construction
  int32_t m_KELSameUIDGroup;           // kind 15; -1 at construction
  std::atomic<int32_t> m_KELCtrlFlag;  // kind 16; 1 = UID comes from outside
  uint32_t m_KELCheckStreamRet;        // result word of the last request

  // ---- tick counters and stream tracking ------------------------------------
  int32_t m_iKeepAliveCount;    // keep-alive every 300th idle tick
  int32_t m_iPBKeepAliveCount;  // play-back keep-alive every 30th
  int32_t m_iStreamCheckCount;  // stream check every 150th
  int32_t m_iRtpStopState;      // 1 after a stall was reported

  // ---- HTTP sessions ---------------------------------------------------------
  HTTP_SESSION* psSession;      // session of the current exchange
  HTTP_SESSION* psSessionPush;  // push session held by the upper layer

  std::atomic<int32_t> m_iDestruct;  // 1 once destruction has begun
};

#endif
