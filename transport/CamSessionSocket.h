// The one place that reaches the socket under an HTTP client session. The
// set-up reply parser (cgi/) needs this device's own address on the camera
// link and the family of the camera's address; it gets them from here as
// plain socket addresses and never sees a session.
//
// Porting point: the device's HTTP client has no call that returns a
// session's socket, and nothing else in the library may depend on one that
// the replacement libraries add. SessionSocket() is therefore the only code
// that knows where a session keeps its socket.
#ifndef CAM_SESSION_SOCKET_H
#define CAM_SESSION_SOCKET_H

#include <sys/socket.h>

#include "CamReplyScan.h"
#include "kxhttp.h"

namespace camtr {

// The socket of the session's connection; -1 for a null session or one
// without a connection.
int SessionSocket(const HTTP_SESSION* psSession);

// getsockname on the session's socket into *psAddr (zeroed first, its whole
// size offered): this device's address on the camera link. Returns the
// call's result; -1 without a socket.
int SessionSelfAddress(const HTTP_SESSION* psSession, sockaddr_storage* psAddr);

// getpeername on the session's socket into the first iLength bytes of
// *psAddr (zeroed first): the camera's (or the proxy's) address. A shorter
// length keeps the family and cuts the rest, as the socket call does.
// Returns the call's result; -1 without a socket.
int SessionPeerAddress(const HTTP_SESSION* psSession, sockaddr_storage* psAddr, socklen_t iLength);

// The two addresses that the set-up reply parser reads, as it takes them:
// this device's own (whole storage offered), and the camera's with a
// 16-byte buffer, whose family alone is read (an IPv6 address is cut).
cgi::LinkAddress SelfAddressOf(const HTTP_SESSION* psSession);
cgi::LinkAddress PeerAddressOf(const HTTP_SESSION* psSession);

}  // namespace camtr

#endif
