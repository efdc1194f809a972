/* The device's platform calls and nothing else: the IPC library, the alarm
 * report and the HTTP client as the device's own libraries offer them. The
 * requester library must link against exactly these (with no undefined
 * symbol left); an extension of the replacement libraries in platform/
 * would stay undefined and fail the link. The bodies do nothing: the stub
 * is linked, never run. */
#include "almsnd.h"
#include "kxcom.h"
#include "kxhttp.h"

/* ---- IPC library ---------------------------------------------------------- */

int KXCOM_InitMsg_Asy(int iModule, uint32_t ulIndex) {
  (void)iModule;
  (void)ulIndex;
  return -1;
}

KXCOM_MSGBUF* KXCOM_CreateMsgBuf_Asy(int iCode, int iReserved1, int iReserved2) {
  (void)iCode;
  (void)iReserved1;
  (void)iReserved2;
  return 0;
}

KXCOM_MSGBUF* COM_MsgBufCreate(uint32_t ulMsgId, int iReserved1, int iReserved2) {
  (void)ulMsgId;
  (void)iReserved1;
  (void)iReserved2;
  return 0;
}

void* _COM_STR_PTR(KXCOM_MSGBUF* psBuf, int iSize) {
  (void)psBuf;
  (void)iSize;
  return 0;
}

int _COM_MsgSndMain(int iModule, uint32_t ulIndex, KXCOM_MSGBUF* psBuf) {
  (void)iModule;
  (void)ulIndex;
  (void)psBuf;
  return -1;
}

int COM_MsgSnd(int iDestination, int iReserved, KXCOM_MSGBUF* psBuf) {
  (void)iDestination;
  (void)iReserved;
  (void)psBuf;
  return -1;
}

KXCOM_MSGBUF* _COM_MsgRcvMain(int iFlag, struct timeval sWait, int iQueueId) {
  (void)iFlag;
  (void)sWait;
  (void)iQueueId;
  return 0;
}

int KXCOM_FreeMsgBuf_Asy(KXCOM_MSGBUF* psBuf) {
  (void)psBuf;
  return -1;
}

int COM_FreeBufEntry(int iModule, uint32_t ulIndex) {
  (void)iModule;
  (void)ulIndex;
  return -1;
}

int KXCOM_DeleteMsgQue_Asy(int iQueueId, int iModule, uint32_t ulIndex) {
  (void)iQueueId;
  (void)iModule;
  (void)ulIndex;
  return -1;
}

int KXCOM_DestroyMsg_Asy(void) {
  return 0;
}

void COM_SplitTime_Start(int iId, COM_SPLIT_TIME* psRec) {
  (void)iId;
  (void)psRec;
}

void COM_SplitTime_End(int iId, COM_SPLIT_TIME* psRec) {
  (void)iId;
  (void)psRec;
}

int COM_printf(const char* pcFormat, ...) {
  (void)pcFormat;
  return 0;
}

/* ---- Alarm report --------------------------------------------------------- */

int ALMSND_AsyErrReport(int iCode, int iCamera, const char* pcAddress, int iPosition,
                        int iReserved) {
  (void)iCode;
  (void)iCamera;
  (void)pcAddress;
  (void)iPosition;
  (void)iReserved;
  return 0;
}

/* ---- HTTP client ---------------------------------------------------------- */

HTTP_SESSION* http_open_session_to_ret(const char* pcHost, unsigned short usPort,
                                       const char* pcProxyHost, unsigned short usProxyPort,
                                       int iReserved5, int iTimeoutMs, int iReserved7) {
  (void)pcHost;
  (void)usPort;
  (void)pcProxyHost;
  (void)usProxyPort;
  (void)iReserved5;
  (void)iTimeoutMs;
  (void)iReserved7;
  return 0;
}

uint32_t http_set_url(HTTP_SESSION* psSession, const char* pcMethod, const char* pcUrl,
                      const char* pcVersion) {
  (void)psSession;
  (void)pcMethod;
  (void)pcUrl;
  (void)pcVersion;
  return HTTP_ERR_PARAM;
}

uint32_t http_add_header(HTTP_SESSION* psSession, const char* pcName, const char* pcValue) {
  (void)psSession;
  (void)pcName;
  (void)pcValue;
  return HTTP_ERR_PARAM;
}

uint32_t http_set_auth(HTTP_SESSION* psSession, const char* pcUser, const char* pcPassword) {
  (void)psSession;
  (void)pcUser;
  (void)pcPassword;
  return HTTP_ERR_PARAM;
}

uint32_t http_do_request(HTTP_SESSION* psSession, _InetBuffer* psBuf, int iTimeoutSec) {
  (void)psSession;
  (void)psBuf;
  (void)iTimeoutSec;
  return HTTP_ERR_PARAM;
}

uint32_t http_do_server_push(HTTP_SESSION* psSession, int iTimeoutSec) {
  (void)psSession;
  (void)iTimeoutSec;
  return HTTP_ERR_PARAM;
}

int http_close_session(HTTP_SESSION* psSession) {
  (void)psSession;
  return -1;
}
