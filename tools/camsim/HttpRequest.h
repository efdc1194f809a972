// The simulator's own reading of a request head. It shares nothing with the
// requester's HTTP client, so that neither can hide the other's mistakes.
#ifndef CAMSIM_HTTP_REQUEST_H
#define CAMSIM_HTTP_REQUEST_H

#include <string>
#include <utility>
#include <vector>

namespace camsim {

struct HttpRequest {
  std::string requestLine;
  std::string method;
  std::string target;   // as sent: origin form or absolute form
  std::string version;  // "HTTP/1.0", "HTTP/1.1"
  std::string path;     // target without scheme, authority and query
  std::string query;
  std::vector<std::pair<std::string, std::string>> headers;
};

// Largest request head accepted (request line and headers).
constexpr size_t kMaxHeadBytes = 16384;

// Position just after the blank line ending the head in data (CR LF CR LF,
// or bare LF LF), or std::string::npos when it has not come yet.
size_t FindHeadEnd(const std::string& data);

// Parses one head (without the blank line). Returns false for a head that
// is not an HTTP/1.x request; requestLine is filled whenever a line came.
bool ParseRequestHead(const std::string& head, HttpRequest* request);

// Splits "a=1&b=x%20y" into decoded pairs, in order.
std::vector<std::pair<std::string, std::string>> ParseQuery(const std::string& query);

// Value of key in the query ("" when absent); *found tells whether it was.
std::string QueryValue(const std::string& query, const std::string& key, bool* found = nullptr);

bool SameTextIgnoringCase(const std::string& a, const std::string& b);

}  // namespace camsim

#endif
