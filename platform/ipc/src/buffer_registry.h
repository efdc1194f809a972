// The registry of live message buffers, shared by the buffer calls and the
// queues. A pointer handed in by a caller is looked up here before anything
// touches it, so that a freed, foreign or queued buffer is refused with an
// error code instead of being dereferenced.
#ifndef KXCOM_BUFFER_REGISTRY_H
#define KXCOM_BUFFER_REGISTRY_H

#include "kxcom.h"

namespace kxcom {

// Makes a buffer held by the caller; null when memory runs out.
KXCOM_MSGBUF* CreateBuffer(uint32_t code);

// KXCOM_LIB_OK when the caller may use psBuf (live and not in a queue),
// else the error code that tells why not.
int CheckHeld(const KXCOM_MSGBUF* psBuf);

// Hands a held buffer to a queue; the caller keeps the queue's lock so the
// change and the enqueue are one step. Same results as CheckHeld.
int MarkQueued(KXCOM_MSGBUF* psBuf);

// Gives a queued buffer to the receiver that took it out of its queue.
void MarkHeld(KXCOM_MSGBUF* psBuf);

// Frees a buffer that a queue still holds (queue cleared or unbound).
void FreeQueued(KXCOM_MSGBUF* psBuf);

}  // namespace kxcom

#endif  // KXCOM_BUFFER_REGISTRY_H
