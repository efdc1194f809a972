#include "HttpRequest.h"

#include <cctype>

namespace camsim {

namespace {

std::string Trim(const std::string& text) {
  size_t begin = text.find_first_not_of(" \t");
  if (begin == std::string::npos) return "";
  size_t end = text.find_last_not_of(" \t\r");
  return text.substr(begin, end - begin + 1);
}

std::vector<std::string> SplitLines(const std::string& head) {
  std::vector<std::string> lines;
  size_t start = 0;
  while (start < head.size()) {
    size_t end = head.find('\n', start);
    if (end == std::string::npos) end = head.size();
    std::string line = head.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
    start = end + 1;
  }
  return lines;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::string PercentDecode(const std::string& text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() && HexDigit(text[i + 1]) >= 0 &&
        HexDigit(text[i + 2]) >= 0) {
      out += static_cast<char>(HexDigit(text[i + 1]) * 16 + HexDigit(text[i + 2]));
      i += 2;
    } else {
      out += text[i];
    }
  }
  return out;
}

// A proxy forwards "http://host:port/path?query": keep what follows the host.
std::string OriginForm(const std::string& target) {
  static const std::string kScheme = "http://";
  if (target.size() < kScheme.size() ||
      !SameTextIgnoringCase(target.substr(0, kScheme.size()), kScheme)) {
    return target;
  }
  size_t slash = target.find('/', kScheme.size());
  return slash == std::string::npos ? "/" : target.substr(slash);
}

bool ParseRequestLine(const std::string& line, HttpRequest* request) {
  size_t first = line.find(' ');
  if (first == std::string::npos || first == 0) return false;
  size_t second = line.find(' ', first + 1);
  if (second == std::string::npos || second == first + 1) return false;
  if (line.find(' ', second + 1) != std::string::npos) return false;
  request->method = line.substr(0, first);
  request->target = line.substr(first + 1, second - first - 1);
  request->version = line.substr(second + 1);
  if (request->version != "HTTP/1.0" && request->version != "HTTP/1.1") return false;
  std::string origin = OriginForm(request->target);
  if (origin.empty() || origin[0] != '/') return false;
  size_t mark = origin.find('?');
  request->path = origin.substr(0, mark);
  request->query = mark == std::string::npos ? "" : origin.substr(mark + 1);
  return true;
}

}  // namespace

bool SameTextIgnoringCase(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(a[i])) !=
        std::tolower(static_cast<unsigned char>(b[i]))) {
      return false;
    }
  }
  return true;
}

size_t FindHeadEnd(const std::string& data) {
  size_t crlf = data.find("\r\n\r\n");
  size_t lf = data.find("\n\n");
  size_t end = std::string::npos;
  if (crlf != std::string::npos) end = crlf + 4;
  if (lf != std::string::npos && (end == std::string::npos || lf + 2 < end)) end = lf + 2;
  return end;
}

bool ParseRequestHead(const std::string& head, HttpRequest* request) {
  std::vector<std::string> lines = SplitLines(head);
  while (!lines.empty() && lines.back().empty()) lines.pop_back();
  if (lines.empty()) return false;
  request->requestLine = lines[0];
  if (!ParseRequestLine(lines[0], request)) return false;
  for (size_t i = 1; i < lines.size(); ++i) {
    size_t colon = lines[i].find(':');
    if (colon == std::string::npos || colon == 0) return false;
    request->headers.emplace_back(lines[i].substr(0, colon), Trim(lines[i].substr(colon + 1)));
  }
  return true;
}

std::vector<std::pair<std::string, std::string>> ParseQuery(const std::string& query) {
  std::vector<std::pair<std::string, std::string>> pairs;
  size_t start = 0;
  while (start <= query.size() && !query.empty()) {
    size_t end = query.find('&', start);
    if (end == std::string::npos) end = query.size();
    std::string item = query.substr(start, end - start);
    if (!item.empty()) {
      size_t equal = item.find('=');
      if (equal == std::string::npos) {
        pairs.emplace_back(PercentDecode(item), "");
      } else {
        pairs.emplace_back(PercentDecode(item.substr(0, equal)),
                           PercentDecode(item.substr(equal + 1)));
      }
    }
    start = end + 1;
  }
  return pairs;
}

std::string QueryValue(const std::string& query, const std::string& key, bool* found) {
  for (const auto& pair : ParseQuery(query)) {
    if (pair.first == key) {
      if (found) *found = true;
      return pair.second;
    }
  }
  if (found) *found = false;
  return "";
}

}  // namespace camsim
