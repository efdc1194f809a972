// The roads of the fault matrix and, for each exchange of a road, what a
// failure of it leads to by the status tables: which event it raises from
// which status, or none (a stop ends in IDLE whatever the camera answers).
#ifndef FAULT_MATRIX_H
#define FAULT_MATRIX_H

#include <cstddef>

namespace loadtest {

// When the exchange happens: on START, while running, or on STOP.
enum class Side { kStart, kRun, kStop };

struct RoadExchange {
  const char* pcName;
  const char* pcPath;
  const char* pcKey;    // the query key=value that tells this exchange from
  const char* pcValue;  // others on the same path; null: any
  Side eSide;
  // The status change that its failure raises (without prefix).
  const char* pcFailLine;
  bool bUidReply = false;            // its reply carries the UID
  bool bPushHead = false;            // a push: once its head came whole it is handed over
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
