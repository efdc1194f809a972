// The request line and header block sent to the camera or the proxy.
#include <cstring>

#include "kxhttp_internal.h"

namespace kxhttp {
namespace {

constexpr char kTokenSpecials[] = "!#$%&'*+-.^_`|~";

bool is_ipv6_literal(const std::string& host) {
  return host.find(':') != std::string::npos;
}

std::string host_with_port(const std::string& host, unsigned short port) {
  std::string text = is_ipv6_literal(host) ? "[" + host + "]" : host;
  return text + ":" + std::to_string(port);
}

}  // namespace

bool is_token_char(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         (c != '\0' && std::strchr(kTokenSpecials, c) != nullptr);
}

bool is_token(const char* text) {
  if (text == nullptr || *text == '\0') return false;
  for (; *text; ++text) {
    if (!is_token_char(*text)) return false;
  }
  return true;
}

bool is_field_value(const char* text) {
  if (text == nullptr) return false;
  for (; *text; ++text) {
    if (*text == '\r' || *text == '\n') return false;
  }
  return true;
}

bool is_request_target(const char* text) {
  if (text == nullptr || *text == '\0') return false;
  for (; *text; ++text) {
    unsigned char c = static_cast<unsigned char>(*text);
    if (c <= ' ' || c == 0x7f) return false;
  }
  return true;
}

std::string request_target(const std::string& url, const std::string& host, unsigned short port,
                           bool viaProxy) {
  if (!viaProxy || url.compare(0, 7, "http://") == 0) return url;
  std::string path = url[0] == '/' ? url : "/" + url;
  return "http://" + host_with_port(host, port) + path;
}

std::string build_request(const RequestLine& line, const std::string& target,
                          const std::vector<Header>& headers, const std::string& host,
                          unsigned short port, const std::string& authorization) {
  std::string text = line.method + " " + target + " " + line.version + "\r\n";
  for (const Header& header : headers) text += header.name + ": " + header.value + "\r\n";
  if (find_header(headers, "Host") == nullptr)
    text += "Host: " + host_with_port(host, port) + "\r\n";
  if (!authorization.empty()) text += "Authorization: " + authorization + "\r\n";
  text += "\r\n";
  return text;
}

}  // namespace kxhttp
