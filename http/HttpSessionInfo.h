// The session-information record that the HTTP requester hands to the upper
// layer after a set-up, and the gate of every call upward.
#ifndef HTTP_SESSION_INFO_H
#define HTTP_SESSION_INFO_H

#include "CamRequesterFields.h"
#include "kxhttp.h"

namespace httpreq {

// The first HTTP_SESSION_INFO_SIZE bytes of a session record: the host text
// pointer and the port, then the library's own bytes. Lives on the stack of
// the set-up for the duration of the notification.
struct SessionInfoRecord {
  explicit SessionInfoRecord(const HTTP_SESSION* psSession);
  // The head read as a session record (only its first bytes are there).
  const HTTP_SESSION* Session() const;

  alignas(HTTP_SESSION) unsigned char aucHead[HTTP_SESSION_INFO_SIZE] = {};
  char acHost[256] = {};
};

// A notification object is set and the requester is not being destroyed.
bool MayNotify(const CamRequesterFields& rF);

}  // namespace httpreq

#endif
