// The scanners of the cameras' text replies and the checkers built on them.
// A reply is a zero-terminated text of key=value items; nothing here reads
// past its terminating zero, whatever its bytes. Both requesters' virtual
// members call these; where one checker uses another, it goes through the
// requester's virtual member, so a derived class sees every step.
#ifndef CAM_REPLY_SCAN_H
#define CAM_REPLY_SCAN_H

#include <sys/socket.h>

class CCamRequester;
struct CamRequesterFields;

namespace cgi {

// Reply keys the set-up parser reads.
constexpr int kDeliverySize = 24;
constexpr int kStrKeySize = 7;

int ScanNumber(CCamRequester& rRequester, const CamRequesterFields& sFields, const char* pcText,
               const char* pcKey, int* piValue);
int ScanString(CCamRequester& rRequester, const char* pcText, const char* pcKey,
               const char* pcStopChars, char* pcOut, int iOutSize);

int CheckAudioBitrateValue(CCamRequester& rRequester, char* pcText, char* pcKey, int* piValue);
int CheckAudioEnableValue(CCamRequester& rRequester, const CamRequesterFields& sFields,
                          char* pcText, char* pcKey, int* piValue);
int CheckRecorderKey(CCamRequester& rRequester, CamRequesterFields& sFields, char* pcText,
                     char* pcKey);
int CheckDeliveryMode(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcText,
                      char* pcKey, char* pcOut, int iOutSize);

int CheckKeepAliveReply(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcText);
int CheckPlayModeReply(CCamRequester& rRequester, CamRequesterFields& sFields, char* pcText);

// An address of the camera link as the socket layer reported it: the
// call's result (0 = the address is valid) and the address. The session's
// socket is reached in transport/ only; this parser gets the addresses.
struct LinkAddress {
  int iResult = -1;
  sockaddr_storage sAddr{};
};

// The set-up reply: UID, audio, delivery, own address and multi/unicast.
// sSelf is this device's address on the camera link (getsockname).
int CheckCamInfoReply(CCamRequester& rRequester, CamRequesterFields& sFields, char* pcText,
                      const LinkAddress& sSelf);
int StoreSelfAddress(CCamRequester& rRequester, CamRequesterFields& sFields,
                     sockaddr_storage* psAddr);
// sPeer is the camera's address (getpeername); unicast reads its family only.
int SetupMultiUni(CCamRequester& rRequester, CamRequesterFields& sFields, char* pcText,
                  const LinkAddress& sPeer);

}  // namespace cgi

#endif
