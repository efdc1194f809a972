// Feeds arbitrary bytes as a camera's or recorder's reply to the reply
// checkers of both requesters. The reply sits in a heap block that ends at
// its terminating zero, so any read past the zero is caught.
//   byte 0: camera type (mod 38); byte 1: size of a SerachString output;
//   byte 2: the play mode this device expects; the rest: the reply text.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "kxcom.h"

namespace {

void Discard(const char*, void*) {}

template <typename T>
void Check(T& r, uint16_t usType, int iOutSize, int iVogMode, const uint8_t* data, size_t size) {
  r.usCameraType = usType;
  r.m_VOGPlayMode = iVogMode;
  r.psSession = nullptr;
  memset(r.sDelivery, 0, sizeof(r.sDelivery));
  std::vector<char> text(data, data + size);
  text.push_back('\0');
  r.CheckCamInfo_RcvData(text.data());
  if (strnlen(r.sDelivery, sizeof(r.sDelivery)) >= sizeof(r.sDelivery)) abort();
  r.GetMultiUniSetup(text.data());  // the delivery the reply named
  if (strnlen(r.cMultiAddr, sizeof(r.cMultiAddr)) >= sizeof(r.cMultiAddr)) abort();
  r.CheckKeepAlive_RcvData(text.data());
  r.CheckPlayMode_RcvData(text.data());
  char acKey[] = "strKey = \"";
  r.CheckKelStrKey(text.data(), acKey);
  if (strnlen(r.strKey, sizeof(r.strKey)) >= sizeof(r.strKey)) abort();
  // An output of exactly iOutSize bytes: a write past it is caught.
  std::vector<char> out(static_cast<size_t>(iOutSize));
  char acAnyKey[] = "=";
  char acStop[] = "&\"";
  if (r.SerachString(text.data(), acAnyKey, acStop, out.data(), iOutSize) == 0 &&
      memchr(out.data(), '\0', out.size()) == nullptr) {
    abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static bool bQuiet = (COM_SetPrintSink(&Discard, nullptr), true);
  static CCamRequester_Cgi_Kobu_Rtp* rtp = new CCamRequester_Cgi_Kobu_Rtp();
  static CCamRequester_Cgi_Kobu_Http* http = new CCamRequester_Cgi_Kobu_Http();
  (void)bQuiet;
  if (size < 3) return 0;
  const uint16_t usType = static_cast<uint16_t>(data[0] % 38);
  const int iOutSize = data[1] % 80 + 1;
  const int iVogMode = data[2] % 8;
  Check(*rtp, usType, iOutSize, iVogMode, data + 3, size - 3);
  Check(*http, usType, iOutSize, iVogMode, data + 3, size - 3);
  return 0;
}
