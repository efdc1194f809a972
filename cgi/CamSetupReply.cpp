// The reply to the session command: UID, audio settings, delivery mode, this
// device's own address on the camera link, and the multicast group or the
// unicast ports the stream will use. The addresses of the camera link come
// in as socket addresses; the session and its socket stay in transport/.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdio>
#include <cstring>

#include "CCamRequester.h"
#include "CamReplyScan.h"
#include "CamRequesterFields.h"
#include "CamTypes.h"

namespace cgi {

namespace {

constexpr int kMultiAddrSize = 64;
constexpr int kAudioInPortOffset = 1000;
// Recorders whose audio settings are fixed, not read from the reply.
constexpr bool HasFixedAudio(unsigned usCameraType) {
  return usCameraType == CAM_REQUESTER_CAMTYPE_KEL31 ||
         usCameraType == CAM_REQUESTER_CAMTYPE_KE850 || usCameraType == CAM_REQUESTER_CAMTYPE_KEL36;
}
constexpr int kFixedAudioBitrate = 32;
constexpr int kFixedAudioEnable = 1;

void ReadAudio(CCamRequester& rRequester, CamRequesterFields& sFields, char* pcText) {
  if (HasFixedAudio(sFields.usCameraType)) {
    sFields.iAudioBitrate = kFixedAudioBitrate;
    sFields.iAudioEnable = kFixedAudioEnable;
    return;
  }
  char acBitrate[] = "aBitrate=";
  char acEnable[] = "aEnable=";
  // A camera without audio keys keeps the values it had.
  rRequester.CheckAudioBitrate(pcText, acBitrate, &sFields.iAudioBitrate);
  rRequester.CheckAudioEnable(pcText, acEnable, &sFields.iAudioEnable);
}

// One octet of the IPv4 group; a missing one is 0 and reading goes on.
int ReadOctet(CCamRequester& rRequester, char* pcText, int iIndex) {
  char acKey[16];
  snprintf(acKey, sizeof(acKey), "iMultiAdd%d=", iIndex);
  int iOctet = 0;
  if (rRequester.SearchNumber(pcText, acKey, &iOctet) != 0) {
    rRequester.CamReqCOM_printf("GetMultiUniSetup [Error] SearchNumber iMultiAdd%d=%d\n", iIndex,
                                iOctet);
    iOctet = 0;
  }
  return iOctet;
}

int SetupMulticast(CCamRequester& rRequester, CamRequesterFields& sFields, char* pcText) {
  sFields.ucMulticast = 1;
  int aiOctet[4];
  for (int i = 0; i < 4; ++i) aiOctet[i] = ReadOctet(rRequester, pcText, i + 1);
  char acV6[kMultiAddrSize] = {};
  char acV6Key[] = "iMultiAddv6=";
  const bool bFound = rRequester.SerachString(pcText, acV6Key, nullptr, acV6, kMultiAddrSize) == 0;
  in6_addr sV6{};
  if (bFound && inet_pton(AF_INET6, acV6, &sV6) == 1) {
    rRequester.CamReqCOM_printf("GetMultiUniSetup [DEBUG] USE iMultiAddv6 =%s\n", acV6);
    snprintf(sFields.cMultiAddr, sizeof(sFields.cMultiAddr), "%s", acV6);
  } else {
    if (!bFound) {
      memset(acV6, 0, sizeof(acV6));  // a refused value may be unterminated
      rRequester.CamReqCOM_printf("GetMultiUniSetup [Error] SerachString iMultiAddv6=%s\n", acV6);
    }
    snprintf(sFields.cMultiAddr, sizeof(sFields.cMultiAddr), "%d.%d.%d.%d", aiOctet[0], aiOctet[1],
             aiOctet[2], aiOctet[3]);
    rRequester.CamReqCOM_printf("GetMultiUniSetup [DEBUG] USE iMultiAdd1-4 =%s\n",
                                sFields.cMultiAddr);
  }
  // The multicast port replaces this device's own receive port.
  char acPortKey[] = "iMultiPort=";
  if (rRequester.SearchNumber(pcText, acPortKey, &sFields.iRtpPort) != 0) {
    rRequester.CamReqCOM_printf("GetMultiUniSetup [Error] SearchNumber iMultiPort=%d\n",
                                sFields.iRtpPort);
    return -1;
  }
  return 0;
}

int ReadUniManualPorts(CCamRequester& rRequester, CamRequesterFields& sFields, char* pcText) {
  char acUniKey[] = "iUniPort=";
  if (rRequester.SearchNumber(pcText, acUniKey, &sFields.iUniPort) != 0) {
    rRequester.CamReqCOM_printf("GetMultiUniSetup [Error] SearchNumber iUniPort=%d\n",
                                sFields.iUniPort);
    return -1;
  }
  char acAudioKey[] = "aInPort=";
  if (rRequester.SearchNumber(pcText, acAudioKey, &sFields.iAudioInPort) != 0) {
    sFields.iAudioInPort = sFields.iUniPort + kAudioInPortOffset;
    rRequester.CamReqCOM_printf("GetMultiUniSetup [Error] SearchNumber aInPort=%d\n",
                                sFields.iAudioInPort);
  }
  return 0;
}

int SetupUnicast(CCamRequester& rRequester, CamRequesterFields& sFields, char* pcText,
                 const LinkAddress& sPeer) {
  sFields.ucMulticast = 0;
  memset(sFields.cMultiAddr, 0, sizeof(sFields.cMultiAddr));
  if (sPeer.iResult != 0) {
    rRequester.CamReqCOM_printf("GetMultiUniSetup [Error] getpeername \n");
    return -1;
  }
  // Only the family is read.
  const int iFamily = sPeer.sAddr.ss_family;
  if (iFamily == AF_INET) {
    rRequester.CamReqCOM_printf("GetMultiUniSetup [DEBUG] sa_family=AF_INET \n");
  } else if (iFamily == AF_INET6) {
    rRequester.CamReqCOM_printf("GetMultiUniSetup [DEBUG] sa_family=AF_INET6 \n");
  } else {
    rRequester.CamReqCOM_printf("GetMultiUniSetup [Error] sa_family=%d \n", iFamily);
    return -1;
  }
  sFields.iPeerFamily = iFamily;
  if (strcmp(sFields.sDelivery, "uni_manual") != 0) return 0;
  return ReadUniManualPorts(rRequester, sFields, pcText);
}

}  // namespace

int CheckCamInfoReply(CCamRequester& rRequester, CamRequesterFields& sFields, char* pcText,
                      const LinkAddress& sSelf) {
  char acUidKey[] = "UID=";
  int iUid = sFields.iUid.load();
  if (rRequester.SearchNumber(pcText, acUidKey, &iUid) != 0) {
    rRequester.CamReqCOM_printf("CheckCamInfo_RcvData [Error] SearchNumber UID=%d\n",
                                sFields.iUid.load());
    return -2;
  }
  sFields.iUid = iUid;
  ReadAudio(rRequester, sFields, pcText);
  rRequester.CamReqCOM_printf(
      "CheckCamInfo_RcvData [DEBUG] uid=%d aBitrate=%d aEnable=%d IP:%s ScreenPos:%d\n",
      sFields.iUid.load(), sFields.iAudioBitrate, sFields.iAudioEnable, sFields.cIpAddr,
      sFields.iPos);
  char acDeliveryKey[] = "sDelivery=";
  rRequester.CheckDelivery(pcText, acDeliveryKey, sFields.sDelivery, kDeliverySize);
  rRequester.CamReqCOM_printf("CheckCamInfo_RcvData [DEBUG] SerachString sDelivery=%s\n",
                              sFields.sDelivery);
  memset(sFields.cSelfAddr, 0, sizeof(sFields.cSelfAddr));
  if (sSelf.iResult != 0) {
    rRequester.CamReqCOM_printf("CheckCamInfo_RcvData [Error] getsockname = %d \n", sSelf.iResult);
    return -1;
  }
  sockaddr_storage sAddr = sSelf.sAddr;
  if (rRequester.GetSelfAddress(&sAddr) != 0) return -1;
  return rRequester.GetMultiUniSetup(pcText);
}

int StoreSelfAddress(CCamRequester& rRequester, CamRequesterFields& sFields,
                     sockaddr_storage* psAddr) {
  if (psAddr == nullptr) return -1;
  const void* pvAddress = nullptr;
  if (psAddr->ss_family == AF_INET) {
    rRequester.CamReqCOM_printf("GetSelfAddress [DEBUG] My sa_family=AF_INET \n");
    pvAddress = &reinterpret_cast<sockaddr_in*>(psAddr)->sin_addr;
  } else if (psAddr->ss_family == AF_INET6) {
    rRequester.CamReqCOM_printf("GetSelfAddress [DEBUG] My sa_family=AF_INET6 \n");
    pvAddress = &reinterpret_cast<sockaddr_in6*>(psAddr)->sin6_addr;
  } else {
    rRequester.CamReqCOM_printf("GetSelfAddress [Error] My sa_family=%d \n", psAddr->ss_family);
    return -1;
  }
  sFields.iSelfFamily = psAddr->ss_family;
  if (inet_ntop(psAddr->ss_family, pvAddress, sFields.cSelfAddr, sizeof(sFields.cSelfAddr)) ==
      nullptr) {
    rRequester.CamReqCOM_printf("GetSelfAddress [Error] inet_ntop\n");
    return -1;
  }
  rRequester.CamReqCOM_printf("GetSelfAddress [DEBUG] My Address =%s\n", sFields.cSelfAddr);
  return 0;
}

int SetupMultiUni(CCamRequester& rRequester, CamRequesterFields& sFields, char* pcText,
                  const LinkAddress& sPeer) {
  if (strcmp(sFields.sDelivery, "multi") == 0) return SetupMulticast(rRequester, sFields, pcText);
  return SetupUnicast(rRequester, sFields, pcText, sPeer);
}

}  // namespace cgi
