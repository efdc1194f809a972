// What camreq keeps of a run: the status transitions, the CGI exchanges,
// the alarms and the UID messages, each with its time since camreq started.
#ifndef CAMREQ_RECORD_H
#define CAMREQ_RECORD_H

#include <string>

namespace camreq {

// Seconds since camreq started (monotonic).
double Now();

// Status names of CAM_HTTP_STS_*, "?" beyond them.
const char* StatusName(int iStatus);
// Event names of CAM_HTTP_EVT_* without the prefix ("START", "RUN_FAIL"...).
const char* EventName(int iEvent);

struct Transition {
  double dTime = 0;
  int iEvent = 0;
  int iFrom = 0;
  int iTo = 0;
};

// One CGI line the requester sent, from its "cgi=" line to the line that
// shows how it ended.
struct CgiExchange {
  double dTime = 0;
  std::string sWorker;  // the Exec that sent it ("StreamStartCommandExec")
  std::string sLine;    // the request path and query; empty when no connection was made
  bool bDone = false;
  bool bOk = false;
  std::string sResult;  // "OK", "HTTP 404", "timeout", "no connection"...
  double dLatencyMs = 0;
};

struct AlarmReport {
  double dTime = 0;
  int iCode = 0;
  int iCamera = 0;
  std::string sAddress;
  int iPosition = 0;
};

struct UidMessage {
  double dTime = 0;
  int iPosition = 0;  // screen position (the payload's position plus 1)
  int iCamNo = 0;
  int iResult = 0;  // 0: UID obtained, 1: not
};

// A call of the notification object, in words.
struct Notice {
  double dTime = 0;
  std::string sText;
};

}  // namespace camreq

#endif
