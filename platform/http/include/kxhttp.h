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

#define HTTP_RESULT_OK        0x08000000u
#define HTTP_RESULT_STATUS200 0x08000200u

/* Time-outs: the low 16 bits read 0x1000 or 0x7000. */
#define HTTP_ERR_TIMEOUT_CONNECT 0x08001000u
#define HTTP_ERR_TIMEOUT         0x08007000u
/* Other failures: a bit of 0xF000 set, never 0x1000 or 0x7000 alone. */
#define HTTP_ERR_PARAM      0x08002000u /* null session, url, buffer...          */
#define HTTP_ERR_CONNECT    0x08003000u /* connection refused or lost            */
#define HTTP_ERR_SEND       0x08004000u /* the request could not be sent         */
#define HTTP_ERR_PROTOCOL   0x08005000u /* the answer is not HTTP                */
#define HTTP_ERR_CLOSED     0x08006000u /* closed in the middle of the answer    */
#define HTTP_ERR_AUTH       0x08008000u /* authentication could not be answered */
#define HTTP_ERR_NO_MEMORY  0x08009000u
#define HTTP_ERR_STATE      0x0800A000u /* call out of order (no url set...)     */

/* Size of the session record's head that the requester copies and hands to
 * the upper layer; the record is at least this long. */
#define HTTP_SESSION_INFO_SIZE 108

/* The session record. It begins with the host text and the port; the rest
 * is the library's own. */
typedef struct HTTP_SESSION {
  char* pcHost;            /* host (camera) address text          */
  unsigned short usPort;   /* camera port                         */
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
 * the proxy when pcProxyHost is not null. Null on failure. */
HTTP_SESSION* http_open_session_to_ret(const char* pcHost, unsigned short usPort,
                                       const char* pcProxyHost, unsigned short usProxyPort,
                                       int iReserved5, int iTimeoutMs, int iReserved7);

/* Method, URL (a path such as /cgi-bin/x?a=1) and version of the request. */
uint32_t http_set_url(HTTP_SESSION* psSession, const char* pcMethod, const char* pcUrl,
                      const char* pcVersion);

/* Adds one header line to the request. */
uint32_t http_add_header(HTTP_SESSION* psSession, const char* pcName, const char* pcValue);

/* Credentials, used as the camera asks: Basic, or Digest after a 401. */
uint32_t http_set_auth(HTTP_SESSION* psSession, const char* pcUser, const char* pcPassword);

/* Sends the request and reads the whole response into psBuf within
 * iTimeoutSec seconds. Returns the result code. */
uint32_t http_do_request(HTTP_SESSION* psSession, _InetBuffer* psBuf, int iTimeoutSec);

/* Sends the request and reads status and headers; leaves the body to the
 * readers below. Returns the result code. */
uint32_t http_do_server_push(HTTP_SESSION* psSession, int iTimeoutSec);

/* Closes the connection and frees the session. 0, or -1 for null. */
int http_close_session(HTTP_SESSION* psSession);

/* ---- Extensions of this replacement ------------------------------------ */

/* The connected socket of the session (-1 when none), for getsockname and
 * getpeername. */
int http_session_socket(HTTP_SESSION* psSession);

/* One part of a multipart/x-mixed-replace body. */
typedef struct HTTP_PUSH_PART {
  char acContentType[128]; /* the part's Content-Type, empty when none */
  unsigned char* pucData;  /* the part's bytes (owned by the session)  */
  size_t ulLength;         /* number of bytes in pucData                */
} HTTP_PUSH_PART;

/* Reads the next part of a server push; 0 and the part, or a result code
 * (HTTP_ERR_TIMEOUT, HTTP_ERR_CLOSED, HTTP_ERR_PROTOCOL...). The part's
 * data stay valid until the next call on the session. */
uint32_t http_push_next_part(HTTP_SESSION* psSession, HTTP_PUSH_PART* psPart, int iTimeoutMs);

/* Reads up to ulMax raw bytes of a pushed body (audio); the count read in
 * *pulRead. 0, or a result code (HTTP_ERR_TIMEOUT, HTTP_ERR_CLOSED...). */
uint32_t http_push_read(HTTP_SESSION* psSession, void* pvData, size_t ulMax, size_t* pulRead,
                        int iTimeoutMs);

/* Divides every time-out of this library by iDivisor (1 = real time). */
void http_set_timeout_divisor(int iDivisor);

#ifdef __cplusplus
}
#endif

#endif /* KXHTTP_H */
