/*
 * HTTP client of the device. Every exchange with a camera is one HTTP/1.0
 * request on a connection of its own. On the device a closed library serves
 * these calls; this is the replacement that links on a development machine.
 *
 * Result codes (32-bit):
 *   HTTP_RESULT_OK (0x08000000)       set_url, add_header, set_auth succeeded
 *   0x08000000 | status (3 hex digits) a response came: the low 12 bits are
 *                                     the HTTP status written as three
 *                                     hexadecimal digits (200 -> 0x200,
 *                                     404 -> 0x404); 0x08000200 is success
 *   HTTP_ERR_TIMEOUT_CONNECT          no connection within the time-out
 *   HTTP_ERR_TIMEOUT                  the response did not come in time
 *   HTTP_ERR_*  (a bit of 0xF000 set) every other failure, see below
 */
#ifndef KXHTTP_H
#define KXHTTP_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The replacement is built with hidden visibility; every call declared here
 * is the library's interface and leaves the shared object. */
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

#define HTTP_RESULT_OK 0x08000000u
#define HTTP_RESULT_STATUS200 0x08000200u

/* Time-outs: the low 16 bits read 0x1000 or 0x7000. */
#define HTTP_ERR_TIMEOUT_CONNECT 0x08001000u
#define HTTP_ERR_TIMEOUT 0x08007000u
/* Other failures: a bit of 0xF000 set, never 0x1000 or 0x7000 alone. */
#define HTTP_ERR_PARAM 0x08002000u    /* null or closed session, url, buffer...*/
#define HTTP_ERR_CONNECT 0x08003000u  /* connection refused or lost            */
#define HTTP_ERR_SEND 0x08004000u     /* the request could not be sent         */
#define HTTP_ERR_PROTOCOL 0x08005000u /* the answer is not HTTP                */
#define HTTP_ERR_CLOSED 0x08006000u   /* closed in the middle of the answer    */
#define HTTP_ERR_AUTH 0x08008000u     /* authentication could not be answered */
#define HTTP_ERR_NO_MEMORY 0x08009000u
#define HTTP_ERR_STATE 0x0800A000u /* call out of order (no url set...)     */

/* Size of the session record's head that the requester copies and hands to
 * the upper layer; the record is at least this long. */
#define HTTP_SESSION_INFO_SIZE 108

/* The session record. It begins with the host text and the port; then the
 * socket of the session's connection, which a caller may ask for its
 * addresses (getsockname, getpeername) and must neither read from, write
 * to nor close. It is the connection of the last request (a request may
 * need a new one), -1 while there is none; the library stores it
 * atomically (__atomic_store_n), so a reader uses __atomic_load_n. The
 * rest is the library's own. */
typedef struct HTTP_SESSION {
  char* pcHost;                                     /* host (camera) address text          */
  unsigned short usPort;                            /* camera port                         */
  int iSocket;                                      /* socket of the connection, or -1     */
  unsigned char aucPrivate[HTTP_SESSION_INFO_SIZE]; /* library's own */
} HTTP_SESSION;

/* The receive record: six words. The caller zeroes it, sets ulSize to the
 * capacity of pcBuffer and pcBuffer to a zero-filled buffer. The body is
 * stored there, cut so that it always ends in a zero byte inside the buffer. */
typedef struct _InetBuffer {
  uint32_t ulReserved;  /* not used                                 */
  uint32_t ulSize;      /* capacity of pcBuffer                     */
  char* pcBuffer;       /* body, zero-terminated                    */
  uint32_t ulLength;    /* set by the library: body bytes stored    */
  uint32_t ulStatus;    /* set by the library: HTTP status (decimal) */
  uint32_t ulReserved2; /* not used                                 */
} _InetBuffer;

/* Opens a session: resolves the address (IPv4, IPv6 literal or, for a
 * proxy, a host name) and connects within iTimeoutMs to the camera, or to
 * the proxy when pcProxyHost is not null. Null on failure: no or bad host
 * text (the camera must be an address literal, brackets allowed), a proxy
 * name that does not resolve, connection refused, or no connection within
 * iTimeoutMs; nothing is left open then. pcHost of the record is the
 * library's own copy of the camera text, usPort the camera port. */
HTTP_SESSION* http_open_session_to_ret(const char* pcHost, unsigned short usPort,
                                       const char* pcProxyHost, unsigned short usProxyPort,
                                       int iReserved5, int iTimeoutMs, int iReserved7);

/* Method, URL (a path such as /cgi-bin/x?a=1) and version of the request.
 * HTTP_RESULT_OK, or HTTP_ERR_PARAM for a null session or text, a method
 * that is not a token, or a URL or version with blanks or control bytes.
 * Through a proxy the request line carries http://host:port/path, an IPv6
 * host in brackets. */
uint32_t http_set_url(HTTP_SESSION* psSession, const char* pcMethod, const char* pcUrl,
                      const char* pcVersion);

/* Adds one header line to the request, in the order of the calls. A Host
 * header naming the camera is added only when the caller set none.
 * HTTP_RESULT_OK, or HTTP_ERR_PARAM for a null session, a name that is not
 * a token, or a value with CR or LF. */
uint32_t http_add_header(HTTP_SESSION* psSession, const char* pcName, const char* pcValue);

/* Credentials, used as the camera asks. Nothing is sent before the camera
 * asks: the first request goes without them, and a 401 answer is answered
 * once on a new connection (through the proxy when there is one) with the
 * strongest challenge offered: Digest SHA-256, Digest MD5 (also -sess;
 * qop=auth or none, nc=00000001, a fresh cnonce, uri = the path), Basic.
 * The challenges may come in WWW-Authenticate fields of their own or
 * several in one field (a scheme name begins the next challenge; commas
 * inside quoted strings do not split); among equals the first one wins.
 * HTTP_RESULT_OK, or HTTP_ERR_PARAM for a null session or user, a user with
 * ':' or either text with CR or LF. A null password is empty. */
uint32_t http_set_auth(HTTP_SESSION* psSession, const char* pcUser, const char* pcPassword);

/* Sends the request and reads the whole response into psBuf within
 * iTimeoutSec seconds, however slowly the bytes come. The body goes into
 * pcBuffer, cut at ulSize-1 bytes and zero-terminated; Content-Length is
 * honoured (further bytes are not read), without it the body ends at the
 * close. A body in chunks (Transfer-Encoding: chunked, whatever the
 * version of the answer) is their data joined, up to the last chunk and
 * its trailer fields. ulLength and ulStatus are set. A second call on the
 * session sends again on a new connection. Returns:
 *   0x08000000 | status        a response came (0x08000200, 0x08000404...)
 *   HTTP_ERR_PARAM             null or closed session, buffer or pcBuffer,
 *                              ulSize 0
 *   HTTP_ERR_STATE             no URL set
 *   HTTP_ERR_TIMEOUT           the whole response not within the time-out
 *   HTTP_ERR_TIMEOUT_CONNECT   the new connection for an authentication
 *                              answer was not made within the time-out
 *   HTTP_ERR_CONNECT           that connection was refused, or a receive
 *                              failed (connection reset)
 *   HTTP_ERR_SEND              the request could not be sent
 *   HTTP_ERR_PROTOCOL          the answer is not HTTP (status line, header
 *                              line without colon, bad Content-Length, head
 *                              over 64 KiB, a chunk size that is not one)
 *   HTTP_ERR_CLOSED            closed before the head ended, before the
 *                              bytes that Content-Length announced, or
 *                              before the last chunk
 *   HTTP_ERR_AUTH              a 401 whose challenges cannot be answered
 *                              while credentials are set
 * Without credentials a 401 is the result 0x08000401; a 401 to the answer
 * is the result too (no third try). */
uint32_t http_do_request(HTTP_SESSION* psSession, _InetBuffer* psBuf, int iTimeoutSec);

/* Sends the request and reads status and headers within iTimeoutSec
 * seconds; leaves the body to the readers below. Returns the result code
 * as http_do_request, except that the body is not read. */
uint32_t http_do_server_push(HTTP_SESSION* psSession, int iTimeoutSec);

/* Closes the connection and frees the session and everything it holds,
 * after any failure. 0, or -1 for null or a handle that is not an open
 * session (closed already). It may run while other threads are inside, or
 * just entering, any call on the same session, typically the push readers
 * below. It never waits for them: it shuts the connection down, so that a
 * call waiting for bytes wakes at once and ends as at a closed connection,
 * and a call that comes later is refused (HTTP_ERR_CLOSED from the push
 * readers, HTTP_ERR_PARAM from the others). The session's memory goes when
 * the last of these calls has left. A closed handle is never read through,
 * and its address is not given to a new session before 10 s and 64 further
 * closes have passed. */
int http_close_session(HTTP_SESSION* psSession);

/* ---- Extensions of this replacement ------------------------------------ */

/* The connected socket of the session (-1 when none or not an open
 * session), for getsockname and getpeername. The requester library reads
 * the record's iSocket instead: the device's client has no such call. */
int http_session_socket(HTTP_SESSION* psSession);

/* One part of a multipart/x-mixed-replace body. */
typedef struct HTTP_PUSH_PART {
  char acContentType[128]; /* the part's Content-Type, empty when none */
  unsigned char* pucData;  /* the part's bytes (owned by the session)  */
  size_t ulLength;         /* number of bytes in pucData                */
} HTTP_PUSH_PART;

/* Reads the next part of a server push within iTimeoutMs; 0 and the part,
 * or a result code. The boundary comes from the push's Content-Type,
 * quoted or not, with or without a leading "--": a delimiter line is "--"
 * and the boundary as given, followed by optional blanks; a line of the
 * boundary alone delimits as well, for a camera that puts the "--" into the
 * parameter or leaves it out of its lines (the first delimiter decides
 * which form the stream uses). Text before the first delimiter (a
 * preamble, up to 64 KiB) is skipped; a missing first delimiter is
 * tolerated when the part's headers come at once. A part is
 * sized by its Content-Length or ends at the line end before the next
 * delimiter line; either way it holds at most 16 MiB. The part's data stay
 * valid until the next call on the session; when the session is closed
 * meanwhile, for 10 s after the close.
 *   HTTP_ERR_PARAM     null session or part
 *   HTTP_ERR_STATE     no successful http_do_server_push before
 *   HTTP_ERR_TIMEOUT   the part did not come whole within iTimeoutMs
 *   HTTP_ERR_CLOSED    the stream ended (closed, or the closing
 *                      delimiter), or the session was closed
 *   HTTP_ERR_PROTOCOL  no boundary in the Content-Type, bad part headers,
 *                      a part over 16 MiB, a preamble over 64 KiB
 *   HTTP_ERR_CONNECT   the receive failed */
uint32_t http_push_next_part(HTTP_SESSION* psSession, HTTP_PUSH_PART* psPart, int iTimeoutMs);

/* Reads up to ulMax raw bytes of a pushed body (audio); the count read in
 * *pulRead (at least 1 on success). 0, or a result code: HTTP_ERR_PARAM,
 * HTTP_ERR_STATE (no push before), HTTP_ERR_TIMEOUT (nothing within
 * iTimeoutMs), HTTP_ERR_CLOSED (the camera closed, or the session was
 * closed), HTTP_ERR_CONNECT. */
uint32_t http_push_read(HTTP_SESSION* psSession, void* pvData, size_t ulMax, size_t* pulRead,
                        int iTimeoutMs);

/* Divides every time-out of this library by iDivisor (1 = real time;
 * values below 1 count as 1). Every other call touches its own session
 * alone and may run on any thread. Calls on one session are served one at
 * a time: a second one waits for the first, except http_close_session,
 * which never waits and wakes a reader that waits for bytes. */
void http_set_timeout_divisor(int iDivisor);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif

#ifdef __cplusplus
}
#endif

#endif /* KXHTTP_H */
