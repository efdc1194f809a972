// Feeds arbitrary bytes as a camera's or recorder's reply to the reply
// scanners and checkers of both requesters, the whole set-up reply parser
// (CheckCamInfo_RcvData) included: its session is a real connection on
// loopback, so the parser reads this device's own address and the camera's
// family from a socket as it does on the device. The reply sits in a heap
// block that ends at its terminating zero, so any read past the zero is
// caught.
//   byte 0: camera type (mod 38); byte 1: size of a SerachString output;
//   byte 2: the play mode this device expects; byte 3: the camera link
//   (mod 3: none, 127.0.0.1, ::1); the rest: the reply text.
#include <netinet/in.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "FuzzUpper.h"
#include "LoopbackPeer.h"

namespace {

constexpr size_t kControlBytes = 4;

// A session to a peer that never answers: only its socket's addresses are read.
HTTP_SESSION* OpenLink(fuzzsup::LoopbackPeer& rPeer) {
  if (!rPeer.Listening()) return nullptr;
  return http_open_session_to_ret(rPeer.Address(), rPeer.Port(), nullptr, 0, 0, 1000, 0);
}

HTTP_SESSION* LinkFor(uint8_t ucChoice) {
  static fuzzsup::LoopbackPeer sV4(AF_INET);
  static fuzzsup::LoopbackPeer sV6(AF_INET6);
  static HTTP_SESSION* psV4 = OpenLink(sV4);
  static HTTP_SESSION* psV6 = OpenLink(sV6);
  switch (ucChoice % 3) {
    case 1:
      return psV4;
    case 2:
      return psV6 != nullptr ? psV6 : psV4;  // a machine without IPv6 loopback
    default:
      return nullptr;
  }
}

template <size_t N>
void MustBeTerminated(const char (&acField)[N]) {
  if (strnlen(acField, N) >= N) abort();
}

template <typename T>
void Check(T& r, const uint8_t* pucControl, const char* pcReply, size_t uSize) {
  r.usCameraType = static_cast<uint16_t>(pucControl[0] % 38);
  r.m_VOGPlayMode = pucControl[2] % 8;
  r.psSession = LinkFor(pucControl[3]);
  memset(r.sDelivery, 0, sizeof(r.sDelivery));
  // The checkers take a writable text, as the exchange's reply buffer is.
  std::unique_ptr<char[]> pcText(new char[uSize + 1]);
  memcpy(pcText.get(), pcReply, uSize);
  pcText[uSize] = '\0';
  char* pcReplyText = pcText.get();

  const int iSetup = r.CheckCamInfo_RcvData(pcReplyText);
  if (iSetup < -2 || iSetup > 0) abort();
  MustBeTerminated(r.sDelivery);
  MustBeTerminated(r.cMultiAddr);
  MustBeTerminated(r.cSelfAddr);
  r.GetMultiUniSetup(pcReplyText);  // once more, on the delivery the reply named
  MustBeTerminated(r.cMultiAddr);
  r.CheckKeepAlive_RcvData(pcReplyText);
  r.CheckPlayMode_RcvData(pcReplyText);
  char acKey[] = "strKey = \"";
  r.CheckKelStrKey(pcReplyText, acKey);
  MustBeTerminated(r.strKey);
  // An output of exactly iOutSize bytes: a write past it is caught.
  const int iOutSize = pucControl[1] % 80 + 1;
  std::unique_ptr<char[]> pcOut(new char[static_cast<size_t>(iOutSize)]);
  char acAnyKey[] = "=";
  char acStop[] = "&\"";
  if (r.SerachString(pcReplyText, acAnyKey, acStop, pcOut.get(), iOutSize) == 0 &&
      memchr(pcOut.get(), '\0', static_cast<size_t>(iOutSize)) == nullptr) {
    abort();
  }
  r.psSession = nullptr;  // the link is the target's, not the requester's
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static bool bQuiet = (fuzzsup::QuietPrints(), true);
  static CCamRequester_Cgi_Kobu_Rtp* rtp = new CCamRequester_Cgi_Kobu_Rtp();
  static CCamRequester_Cgi_Kobu_Http* http = new CCamRequester_Cgi_Kobu_Http();
  (void)bQuiet;
  if (size < kControlBytes) return 0;
  const char* pcReply = reinterpret_cast<const char*>(data + kControlBytes);
  Check(*rtp, data, pcReply, size - kControlBytes);
  Check(*http, data, pcReply, size - kControlBytes);
  return 0;
}
