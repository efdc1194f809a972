#include "Record.h"

#include <chrono>

namespace camreq {

namespace {
const std::chrono::steady_clock::time_point kStart = std::chrono::steady_clock::now();
}  // namespace

double Now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - kStart).count();
}

const char* StatusName(int iStatus) {
  static const char* const kNames[] = {"IDLE", "ERROR", "SETUP", "READY", "RUN", "STOP"};
  return iStatus >= 0 && iStatus < 6 ? kNames[iStatus] : "?";
}

const char* EventName(int iEvent) {
  static const char* const kNames[] = {"START",      "STOP",        "SETUP_SUCCESS",
                                       "SETUP_FAIL", "RUN_SUCCESS", "RUN_FAIL",
                                       "ERROR",      "RESERVED7",   "STOP_DONE"};
  return iEvent >= 0 && iEvent < 9 ? kNames[iEvent] : "?";
}

}  // namespace camreq
