#include "CamSessionSocket.h"

#include <netinet/in.h>

#include <cstring>

namespace camtr {

int SessionSocket(const HTTP_SESSION* psSession) {
  if (psSession == nullptr) return -1;
  // The device's HTTP client keeps the socket of a session's connection in
  // its session record; the replacement library keeps it in the record's
  // head (iSocket, kxhttp.h). Porting to the device means reading the field
  // where the device's kxhttp.h places it: this line, and nothing else in
  // the library. A request may replace the connection (an authentication
  // answer goes on a new one), so the field is read each time, never kept.
  return __atomic_load_n(&psSession->iSocket, __ATOMIC_ACQUIRE);
}

int SessionSelfAddress(const HTTP_SESSION* psSession, sockaddr_storage* psAddr) {
  std::memset(psAddr, 0, sizeof(*psAddr));
  socklen_t iLength = sizeof(*psAddr);
  return getsockname(SessionSocket(psSession), reinterpret_cast<sockaddr*>(psAddr), &iLength);
}

int SessionPeerAddress(const HTTP_SESSION* psSession, sockaddr_storage* psAddr, socklen_t iLength) {
  std::memset(psAddr, 0, sizeof(*psAddr));
  if (iLength > sizeof(*psAddr)) iLength = sizeof(*psAddr);
  return getpeername(SessionSocket(psSession), reinterpret_cast<sockaddr*>(psAddr), &iLength);
}

cgi::LinkAddress SelfAddressOf(const HTTP_SESSION* psSession) {
  cgi::LinkAddress sAddress;
  sAddress.iResult = SessionSelfAddress(psSession, &sAddress.sAddr);
  return sAddress;
}

cgi::LinkAddress PeerAddressOf(const HTTP_SESSION* psSession) {
  cgi::LinkAddress sAddress;
  sAddress.iResult = SessionPeerAddress(psSession, &sAddress.sAddr, sizeof(sockaddr_in));
  return sAddress;
}

}  // namespace camtr
