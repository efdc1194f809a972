// Reading back what the simulated device received, and the prefix that the
// requester's print puts in front of every line.
#ifndef HTTP_ROADS_H
#define HTTP_ROADS_H

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "CamKelCrypt.h"
#include "CamRequesterFields.h"
#include "Device.h"
#include "kxhttp.h"

namespace httptest {

// The paths the device received, in order.
inline std::vector<std::string> Paths(const camsim::Device& rDevice) {
  std::vector<std::string> asOut;
  for (const auto& r : rDevice.Requests()) asOut.push_back(r.path);
  return asOut;
}

// The first request on sPath whose query contains sQueryPart.
inline std::optional<camsim::RequestRecord> FindRequest(const camsim::Device& rDevice,
                                                        const std::string& sPath,
                                                        const std::string& sQueryPart) {
  for (const auto& r : rDevice.Requests()) {
    if (r.path == sPath && r.query.find(sQueryPart) != std::string::npos) return r;
  }
  return std::nullopt;
}

inline int CountRequests(const camsim::Device& rDevice, const std::string& sPath,
                         const std::string& sQueryPart = "") {
  int n = 0;
  for (const auto& r : rDevice.Requests()) {
    n += (r.path == sPath && r.query.find(sQueryPart) != std::string::npos) ? 1 : 0;
  }
  return n;
}

// One GET to the device outside the requester; the body, or "" on failure.
inline std::string Get(const camsim::Device& rDevice, const std::string& sUrl) {
  HTTP_SESSION* psSession =
      http_open_session_to_ret(rDevice.Address().c_str(), rDevice.Port(), nullptr, 0, 0, 5000, 0);
  if (psSession == nullptr) return "";
  http_set_url(psSession, "GET", sUrl.c_str(), "HTTP/1.0");
  char acBody[2048] = {};
  _InetBuffer sBuf = {};
  sBuf.ulSize = sizeof(acBody);
  sBuf.pcBuffer = acBody;
  const uint32_t ulRet = http_do_request(psSession, &sBuf, 5);
  http_close_session(psSession);
  return ulRet == HTTP_RESULT_STATUS200 ? std::string(acBody) : std::string();
}

// The number after sKey in sText, or -1.
inline int NumberAfter(const std::string& sText, const std::string& sKey) {
  const size_t ulAt = sText.find(sKey);
  return ulAt == std::string::npos ? -1 : std::atoi(sText.c_str() + ulAt + sKey.size());
}

// Asks a camera for a UID outside the requester, as another requester of
// the upper layer would have; -1 on failure.
inline int IssueUid(const camsim::Device& rDevice, const std::string& sQuery) {
  return NumberAfter(Get(rDevice, "/cgi-bin/getuid?" + sQuery), "UID=");
}

// Logs in to a recorder (user admin, password password) outside the
// requester; the UID, or -1.
inline int RecorderLogin(const camsim::Device& rDevice) {
  const std::string sKeyReply = Get(rDevice, "/cgi-bin/start.cgi?UID=-1");
  const size_t ulAt = sKeyReply.find("strKey = \"");
  if (ulAt == std::string::npos) return -1;
  const std::string sKey = sKeyReply.substr(ulAt + 10, 6);
  char acUser[65] = {};
  char acPass[65] = {};
  cgi::KelEncrypt(sKey.c_str(), "admin", acUser);
  cgi::KelEncrypt(sKey.c_str(), "password", acPass);
  return NumberAfter(Get(rDevice, std::string("/cgi-bin/ulogin.cgi?USER=") + acUser +
                                      "&PASS=" + acPass + "&KEY=" + sKey + "&TEMP=1"),
                     "UID=");
}

inline std::string Hex(unsigned uValue) {
  char ac[32];
  std::snprintf(ac, sizeof(ac), "%x", uValue);
  return ac;
}

// A line as the requester prints it: address, position and stream word first.
inline std::string Prefixed(const CamRequesterFields& rF, const std::string& sText) {
  char acPrefix[128] = {};
  int iAt = 0;
  if (rF.cIpAddr[0] != '\0') {
    iAt += std::snprintf(acPrefix + iAt, sizeof(acPrefix) - iAt, "IP:%15.15s ", rF.cIpAddr);
  }
  if (rF.iPos != 0)
    iAt += std::snprintf(acPrefix + iAt, sizeof(acPrefix) - iAt, "POS:%d ", rF.iPos);
  if (rF.cPrintPrefix[0] != '\0') {
    std::snprintf(acPrefix + iAt, sizeof(acPrefix) - iAt, "%6.6s ", rF.cPrintPrefix);
  }
  return acPrefix + sText;
}

}  // namespace httptest

#endif
