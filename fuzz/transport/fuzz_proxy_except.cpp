// Feeds arbitrary camera addresses and proxy exception patterns to
// JudgeExceptAddress and CheckProxyExcept of both requesters, and checks
// the rules that hold for any text: an address matches itself, a "*" in
// place of one of its non-empty labels still matches, and the list matches
// exactly when one of its non-empty entries does.
//   byte 0: bit 0 the class (RTP, HTTP); bit 1 the proxy record is the raw
//   bytes after the address line (texts without their zero), else one
//   pattern per line; byte 1: which label the "*" replaces; the rest:
//   lines, the first one the camera's address.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "FuzzUpper.h"

namespace {

// A text in a heap block that ends at its zero, so a read past it is caught.
std::unique_ptr<char[]> HeapText(const std::string& s) {
  std::unique_ptr<char[]> pcText(new char[s.size() + 1]);
  std::memcpy(pcText.get(), s.c_str(), s.size() + 1);
  return pcText;
}

int Judge(CCamRequester& rReq, const std::string& sAddress, const std::string& sPattern) {
  const std::unique_ptr<char[]> pcAddress = HeapText(sAddress);
  const std::unique_ptr<char[]> pcPattern = HeapText(sPattern);
  const int iResult = rReq.JudgeExceptAddress(pcAddress.get(), pcPattern.get());
  if (iResult != 0 && iResult != -1) abort();
  return iResult;
}

// The address with its label number uLabel (counted modulo the labels)
// replaced by "*"; empty when that label is empty.
std::string WithStar(const std::string& sAddress, size_t uLabel) {
  std::vector<std::string> asLabels(1);
  for (char c : sAddress) {
    if (c == '.') {
      asLabels.emplace_back();
    } else {
      asLabels.back() += c;
    }
  }
  std::string& rLabel = asLabels[uLabel % asLabels.size()];
  if (rLabel.empty()) return std::string();
  rLabel = "*";
  std::string sOut = asLabels[0];
  for (size_t i = 1; i < asLabels.size(); ++i) sOut += "." + asLabels[i];
  return sOut;
}

void SetProxy(CCamRequester& rReq, bool bRaw, const std::string& sRest) {
  std::unique_ptr<CAM_PROXY_PARAM> psProxy(new CAM_PROXY_PARAM());
  if (bRaw) {
    std::memcpy(psProxy.get(), sRest.data(), std::min(sRest.size(), sizeof(CAM_PROXY_PARAM)));
  } else {
    size_t uAt = 0;
    for (auto& acPattern : psProxy->except) {
      if (uAt > sRest.size()) break;
      const size_t uEnd = std::min(sRest.find('\n', uAt), sRest.size());
      const std::string sLine = sRest.substr(uAt, uEnd - uAt).substr(0, sizeof(acPattern) - 1);
      std::memcpy(acPattern, sLine.c_str(), sLine.size() + 1);
      uAt = uEnd + 1;
    }
  }
  psProxy->enable = 1;
  rReq.SetParameter(CAM_PARAM_PROXY, psProxy.get(), sizeof(CAM_PROXY_PARAM));
}

template <typename T>
void Check(uint8_t ucFlags, uint8_t ucLabel, const std::string& sText) {
  T sReq;
  const size_t uLineEnd = std::min(sText.find('\n'), sText.size());
  const std::unique_ptr<char[]> pcAddress = HeapText(sText.substr(0, uLineEnd));
  sReq.SetParameter(CAM_PARAM_IPADDRESS, pcAddress.get(), 0);
  SetProxy(sReq, (ucFlags & 2) != 0, uLineEnd < sText.size() ? sText.substr(uLineEnd + 1) : "");

  const std::string sAddress = sReq.cIpAddr;
  if (Judge(sReq, sAddress, sAddress) != 0) abort();
  const std::string sStarred = WithStar(sAddress, ucLabel);
  if (!sStarred.empty() && Judge(sReq, sAddress, sStarred) != 0) abort();
  bool bAnyMatches = false;
  for (const auto& acPattern : sReq.sProxy.except) {
    const std::string sPattern(acPattern, strnlen(acPattern, sizeof(acPattern)));
    if (!sPattern.empty() && Judge(sReq, sAddress, sPattern) == 0) bAnyMatches = true;
  }
  if ((sReq.CheckProxyExcept() == 0) != bAnyMatches) abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static bool bQuiet = (fuzzsup::QuietPrints(), true);
  (void)bQuiet;
  if (size < 2) return 0;
  const std::string sText(reinterpret_cast<const char*>(data + 2), size - 2);
  if (data[0] % 2 == 0) {
    Check<CCamRequester_Cgi_Kobu_Rtp>(data[0], data[1], sText);
  } else {
    Check<CCamRequester_Cgi_Kobu_Http>(data[0], data[1], sText);
  }
  return 0;
}
