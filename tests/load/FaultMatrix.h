// The roads of the fault matrix and, for each exchange of a road, what a
// failure of it leads to by the status tables: which event it raises from
// which status, or none (a stop ends in IDLE whatever the camera answers).
#ifndef FAULT_MATRIX_H
#define FAULT_MATRIX_H

#include <cstddef>

namespace loadtest {

// When the exchange happens: on START, while running, or on STOP.
enum class Side { kStart, kRun, kStop };

// What the device answers it with.
enum class Answer {
  kText,        // key lines
  kRtpStart,    // key lines, and the RTP stream begins
  kJpegPush,    // a server push of pictures
  kAudioStream  // G.726 bytes until the close
};

struct RoadExchange {
  const char* pcName;
  const char* pcPath;
  const char* pcKey;    // the query key=value that tells this exchange from
  const char* pcValue;  // others on the same path; null: any
  Side eSide;
  // The status change that its failure raises (without prefix).
  const char* pcFailLine;
  Answer eAnswer = Answer::kText;
  bool bUidReply = false;            // its reply carries the UID
  bool bKeysRead = false;            // it fails when its reply lacks its keys
  bool bRefusalIsNoFailure = false;  // a recorder's keep-alive that cannot connect
};

struct MatrixRoad {
  const char* pcName;
  int iModel;
  bool bHttp;
  int iCmdType;
  bool bPlayBack;  // started and stopped by the play-back commands
  bool bUpperUid;  // the UID comes from the upper layer (audio)
  RoadExchange asExchanges[6];
  size_t ulExchanges;
};

extern const MatrixRoad kMatrixRoads[6];

}  // namespace loadtest

#endif  // FAULT_MATRIX_H
