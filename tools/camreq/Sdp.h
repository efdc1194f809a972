// The SDP file of an RTP stream that a requester set up, for a player
// (ffplay FILE, VLC): where the packets come and how they are packed.
#ifndef CAMREQ_SDP_H
#define CAMREQ_SDP_H

#include <string>

#include "RtpReceiver.h"

namespace camreq {

struct SdpStream {
  int iCmdType = 0;      // the RTP requester's iCmdType
  std::string sAddress;  // where the player listens: a group or a loopback address
  int iPort = 0;
  int iPayloadType = -1;  // -1: not seen yet (96 for video, 97 for audio)
  std::string sSps;       // H.264 parameter sets seen in the stream
  std::string sPps;
  std::string sName;
};

std::string SdpText(const SdpStream& rStream);
bool IsMulticast(const std::string& sAddress);
std::string Base64(const std::string& sData);

}  // namespace camreq

#endif
