#include "Sdp.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include "CamRequesterParam.h"

namespace camreq {

namespace {
constexpr int kVideoPayloadType = 96;
constexpr int kAudioPayloadType = 97;
}  // namespace

bool IsMulticast(const std::string& sAddress) {
  in_addr sV4{};
  in6_addr sV6{};
  if (inet_pton(AF_INET, sAddress.c_str(), &sV4) == 1) return IN_MULTICAST(ntohl(sV4.s_addr));
  return inet_pton(AF_INET6, sAddress.c_str(), &sV6) == 1 && IN6_IS_ADDR_MULTICAST(&sV6);
}

std::string Base64(const std::string& sData) {
  static const char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string sOut;
  size_t i = 0;
  for (; i + 3 <= sData.size(); i += 3) {
    const unsigned ulGroup = (static_cast<unsigned char>(sData[i]) << 16) |
                             (static_cast<unsigned char>(sData[i + 1]) << 8) |
                             static_cast<unsigned char>(sData[i + 2]);
    sOut += kDigits[(ulGroup >> 18) & 63];
    sOut += kDigits[(ulGroup >> 12) & 63];
    sOut += kDigits[(ulGroup >> 6) & 63];
    sOut += kDigits[ulGroup & 63];
  }
  const size_t ulRest = sData.size() - i;
  if (ulRest > 0) {
    unsigned ulGroup = static_cast<unsigned char>(sData[i]) << 16;
    if (ulRest == 2) ulGroup |= static_cast<unsigned char>(sData[i + 1]) << 8;
    sOut += kDigits[(ulGroup >> 18) & 63];
    sOut += kDigits[(ulGroup >> 12) & 63];
    sOut += ulRest == 2 ? kDigits[(ulGroup >> 6) & 63] : '=';
    sOut += '=';
  }
  return sOut;
}

std::string SdpText(const SdpStream& rStream) {
  const bool bV6 = rStream.sAddress.find(':') != std::string::npos;
  const bool bMulticast = IsMulticast(rStream.sAddress);
  const bool bAudio = rStream.iCmdType == CAM_REQUESTER_CMD_G726_RTP;
  const int iPt = rStream.iPayloadType >= 0 ? rStream.iPayloadType
                                            : (bAudio ? kAudioPayloadType : kVideoPayloadType);
  const std::string sFamily = bV6 ? "IP6" : "IP4";
  std::string sText = "v=0\r\n";
  sText += "o=- 0 0 IN " + sFamily + " " + (bV6 ? "::1" : "127.0.0.1") + "\r\n";
  sText += "s=" + (rStream.sName.empty() ? std::string("camreq") : rStream.sName) + "\r\n";
  // An IPv4 group carries its TTL in the connection line.
  sText += "c=IN " + sFamily + " " + rStream.sAddress + (bMulticast && !bV6 ? "/1" : "") + "\r\n";
  sText += "t=0 0\r\n";
  const std::string sPt = std::to_string(iPt);
  sText += std::string("m=") + (bAudio ? "audio " : "video ") + std::to_string(rStream.iPort) +
           " RTP/AVP " + sPt + "\r\n";
  if (bAudio) {
    sText += "a=rtpmap:" + sPt + " G726-32/8000\r\n";
  } else if (rStream.iCmdType == CAM_REQUESTER_CMD_MPEG4_RTP ||
             rStream.iCmdType == CAM_REQUESTER_CMD_MPEG4_PLAY) {
    sText += "a=rtpmap:" + sPt + " MP4V-ES/90000\r\n";
  } else {
    sText += "a=rtpmap:" + sPt + " H264/90000\r\n";
    std::string sFmtp = "a=fmtp:" + sPt + " packetization-mode=1";
    if (!rStream.sSps.empty() && !rStream.sPps.empty()) {
      sFmtp += ";sprop-parameter-sets=" + Base64(rStream.sSps) + "," + Base64(rStream.sPps);
    }
    sText += sFmtp + "\r\n";
  }
  sText += "a=recvonly\r\n";
  return sText;
}

}  // namespace camreq
