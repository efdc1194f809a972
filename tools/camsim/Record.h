// What a device keeps of every request it received.
#ifndef CAMSIM_RECORD_H
#define CAMSIM_RECORD_H

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace camsim {

struct RequestRecord {
  std::string peer;                                          // "127.0.0.1:40312" or "[::1]:40312"
  std::string requestLine;                                   // as received, without CR LF
  std::vector<std::pair<std::string, std::string>> headers;  // in order, as sent
  std::string path;                                // target path, without scheme, host and query
  std::string query;                               // text after "?", empty when none
  std::chrono::system_clock::time_point received;  // when the head was complete
  int status = 0;                                  // status answered (0: no status line was sent)
  size_t sequence = 0;  // 1 for the first request the device got, counting up (never reset)

  // Value of the first header of that name (any case); empty if none.
  std::string Header(const std::string& name) const;
  // Value of a query key; empty if absent.
  std::string Param(const std::string& key) const;
};

}  // namespace camsim

#endif
