/*
 * IPC queues, message buffers, time measurement and print of the device.
 *
 * On the device a closed library provides these calls; this is the
 * replacement that links on a development machine. The requester reaches
 * the IPC only through the calls below.
 *
 * Queues: one queue per (module, index) in the process. A message buffer
 * carries a code (a queue command code or a message identifier) and an
 * optional payload. Ownership of a buffer passes to the receiver when a send
 * returns KXCOM_LIB_OK; on any failed send it stays with the sender.
 */
#ifndef KXCOM_H
#define KXCOM_H

#include <stddef.h>
#include <stdint.h>
#include <sys/time.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The replacement is built with hidden visibility; every call declared here
 * is the library's interface and leaves the shared object. */
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

#define KXCOM_LIB_OK 0

/* Error codes (all non-zero, returned instead of crashing on misuse). */
#define KXCOM_ERR_PARAM (-1)       /* null or unknown buffer, bad argument    */
#define KXCOM_ERR_NO_QUEUE (-2)    /* no queue bound at (module, index)        */
#define KXCOM_ERR_BOUND (-3)       /* a queue is already bound there           */
#define KXCOM_ERR_DELETED (-4)     /* the queue id names no live queue         */
#define KXCOM_ERR_DOUBLE_FREE (-5) /* the buffer was already freed or handed on */
#define KXCOM_ERR_NO_MEMORY (-6)

/* The message buffer. Only the code is read by the receiver directly. */
typedef struct KXCOM_MSGBUF {
  uint32_t ulCode; /* queue command code or message identifier */
  uint32_t ulSize; /* payload size in bytes (0 when none)       */
} KXCOM_MSGBUF;

/* Two-word record of a time measurement. */
typedef struct COM_SPLIT_TIME {
  long lSec;
  long lUsec;
} COM_SPLIT_TIME;

/* Binds the queue of (module, index) to the calling process; returns the
 * queue id (>= 0) or a negative error (KXCOM_ERR_BOUND on a second bind).
 * An id is never given out twice, so the id of an unbound queue stays dead
 * even when the same (module, index) is bound again. */
int KXCOM_InitMsg_Asy(int iModule, uint32_t ulIndex);

/* Makes a message buffer with a command code; null when none can be made. */
KXCOM_MSGBUF* KXCOM_CreateMsgBuf_Asy(int iCode, int iReserved1, int iReserved2);

/* Makes a message buffer with a message identifier; null when none. */
KXCOM_MSGBUF* COM_MsgBufCreate(uint32_t ulMsgId, int iReserved1, int iReserved2);

/* The payload of a buffer, sized iSize bytes (zero-filled when first made);
 * null for an unknown buffer or a size of 0 or less.
 * The first successful call fixes the payload at exactly iSize bytes and
 * sets ulSize. Later calls with iSize up to ulSize return the same address
 * and leave the content alone; a larger iSize returns null (the payload
 * never moves). A buffer that sits in a queue has no reachable payload
 * (null) until a receive hands it on. The payload lives until the buffer
 * is freed. */
void* _COM_STR_PTR(KXCOM_MSGBUF* psBuf, int iSize);

/* Sends to the queue bound at (module, index); KXCOM_LIB_OK or an error:
 * KXCOM_ERR_PARAM for a null pointer or one that is no buffer,
 * KXCOM_ERR_DOUBLE_FREE for a buffer already freed or already sent,
 * KXCOM_ERR_NO_QUEUE when nothing is bound there. */
int _COM_MsgSndMain(int iModule, uint32_t ulIndex, KXCOM_MSGBUF* psBuf);

/* Sends to the queue bound at (destination, 0); KXCOM_LIB_OK or an error. */
int COM_MsgSnd(int iDestination, int iReserved, KXCOM_MSGBUF* psBuf);

/* Receives from a queue: returns the first message at once when one is
 * queued, else waits at most sWait for one; null when the wait runs out,
 * or at once for a queue id that names no live queue. Messages come out in
 * the order they were sent. A send wakes a waiting receive at once, and an
 * unbind of the queue ends the wait with null. iFlag is accepted as the
 * device gives it; every receive is the bounded one (a wait of zero or less
 * only looks). The receiver owns (and frees) the buffer it gets. */
KXCOM_MSGBUF* _COM_MsgRcvMain(int iFlag, struct timeval sWait, int iQueueId);

/* Frees a buffer; KXCOM_ERR_DOUBLE_FREE for one already freed or sent.
 * KXCOM_ERR_PARAM for null or a pointer that was never a buffer. The
 * pointer is looked up among the live buffers and never read otherwise.
 * The last few thousand freed addresses are remembered to tell a second
 * free from a foreign pointer; once an address is reused by a new buffer,
 * it names that buffer. */
int KXCOM_FreeMsgBuf_Asy(KXCOM_MSGBUF* psBuf);

/* Frees the messages still queued at (module, index); the queue stays
 * bound. KXCOM_ERR_NO_QUEUE when nothing is bound there. */
int COM_FreeBufEntry(int iModule, uint32_t ulIndex);

/* Unbinds the queue; KXCOM_ERR_DELETED when it is not bound.
 * KXCOM_ERR_PARAM (and nothing changes) when iQueueId is live but is not the
 * queue bound at (module, index). Messages still queued are freed. */
int KXCOM_DeleteMsgQue_Asy(int iQueueId, int iModule, uint32_t ulIndex);

/* Ends the calling thread's use of the IPC library. Nothing is kept per
 * thread by this replacement: returns KXCOM_LIB_OK. */
int KXCOM_DestroyMsg_Asy(void);

/* Time measurement: start fills the record, end receives a copy of it back.
 * Start stores the monotonic time (seconds, microseconds). End replaces the
 * record with the time passed since that start ({0, 0} for a record that
 * no start filled). Nothing is printed; iId is not used. */
void COM_SplitTime_Start(int iId, COM_SPLIT_TIME* psRec);
void COM_SplitTime_End(int iId, COM_SPLIT_TIME* psRec);

/* The device's print: formats and writes one text to the output channel.
 * The whole text is written (no length limit), in one piece, one call at a
 * time; returns its length, or a negative value for a null format. */
int COM_printf(const char* pcFormat, ...) __attribute__((format(printf, 1, 2)));

/* ---- Extensions of this replacement (not on the device) ---------------- */

/* Receives every text that COM_printf writes, instead of standard error.
 * Null restores standard error. The sink may be called from any thread,
 * one call at a time. Once this returns, the previous sink is called no
 * more. A COM_printf made inside the sink goes to standard error. */
typedef void (*COM_PrintSink)(const char* pcText, void* pvContext);
void COM_SetPrintSink(COM_PrintSink pfnSink, void* pvContext);

/* Divides every bounded wait of _COM_MsgRcvMain by iDivisor (1 = real
 * time, the default). Tests use it so that hundreds of idle rounds take
 * milliseconds instead of seconds. Values below 1 are taken as 1. */
void KXCOM_SetWaitDivisor(int iDivisor);
int KXCOM_GetWaitDivisor(void);

/* Makes the next iTimes calls of one kind fail as the device's library can
 * fail, so that tests reach the requester's error paths: buffer creation
 * returns null, the payload call returns null, a send returns
 * KXCOM_ERR_NO_MEMORY (the buffer stays the sender's), a free returns
 * KXCOM_ERR_NO_MEMORY (the buffer is freed all the same, so that a test
 * leaks nothing). iTimes 0 clears the fault. */
typedef enum KXCOM_FAULT {
  KXCOM_FAULT_CREATE = 0, /* KXCOM_CreateMsgBuf_Asy, COM_MsgBufCreate */
  KXCOM_FAULT_PAYLOAD,    /* _COM_STR_PTR                           */
  KXCOM_FAULT_SEND,       /* _COM_MsgSndMain, COM_MsgSnd            */
  KXCOM_FAULT_FREE,       /* KXCOM_FreeMsgBuf_Asy                   */
  KXCOM_FAULT_KINDS
} KXCOM_FAULT;
void KXCOM_FailNext(KXCOM_FAULT eCall, int iTimes);

/* Number of message buffers made and not yet freed, for leak checks. */
int KXCOM_LiveBufferCount(void);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif

#ifdef __cplusplus
}
#endif

#endif /* KXCOM_H */
