// Reads the library's log as it is printed (through the print sink of the
// IPC library) and keeps, per requester, its status transitions and every
// CGI line it sent with the result and the time the answer took. A line
// belongs to the requester whose screen position its prefix names.
#ifndef CAMREQ_LOG_WATCH_H
#define CAMREQ_LOG_WATCH_H

#include <cstdio>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "Record.h"

namespace camreq {

struct RequesterLog {
  std::vector<Transition> asTransitions;
  std::vector<CgiExchange> asCgi;
  int iOpen = -1;       // index of the exchange waiting for its end, -1: none
  int iExchanges = 0;   // CGI lines sent
  int iKeepAlives = 0;  // of them keep-alives
  int iFailures = 0;    // exchanges that ended in a failure
};

class LogWatch {
 public:
  LogWatch() = default;
  ~LogWatch() { Uninstall(); }
  LogWatch(const LogWatch&) = delete;
  LogWatch& operator=(const LogWatch&) = delete;

  // Becomes the print sink; with pEcho every text is also written there.
  void Install(std::FILE* pEcho);
  void Uninstall();
  // Lines with this screen position are kept from now on.
  void Watch(int iPosition);
  RequesterLog Snapshot(int iPosition) const;

  // One text as COM_printf writes it (public for the tests of the parser).
  void Take(const std::string& sText, double dTime);

 private:
  static void Sink(const char* pcText, void* pvContext);
  void TakeMessage(RequesterLog& rLog, const std::string& sMessage, double dTime);

  mutable std::mutex m_mutex;
  std::map<int, RequesterLog> m_logs;
  std::FILE* m_pEcho = nullptr;
  bool m_bInstalled = false;
};

// The words camreq reports for a failed exchange, from its error line.
std::string FailureWords(const std::string& sMessage);

}  // namespace camreq

#endif
