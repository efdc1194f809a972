// One requester as camreq drives it: its camera, its notification object,
// the requester itself and, for a camera without address, the embedded
// device it talks to.
#ifndef CAMREQ_UNIT_H
#define CAMREQ_UNIT_H

#include <memory>
#include <string>

#include "CCamRequester.h"
#include "Device.h"
#include "Notify.h"
#include "Options.h"

namespace camreq {

struct Unit {
  CameraSpec sSpec;
  int iPosition = 0;     // screen position, also the camera number
  std::string sAddress;  // the camera's address as the requester has it
  int iHttpPort = 0;
  std::shared_ptr<camsim::Device> pDevice;  // shared by an audio requester and its video one
  std::unique_ptr<CamreqNotify> pNotify;
  std::unique_ptr<CCamRequester> pReq;
  int iFinalStatus = -1;       // status when the stop was over
  int iPlayBackReported = 0;   // announcements whose play-back run was reported
  Unit* pUidSource = nullptr;  // audio: the video requester whose UID it runs on
  bool bStartPosted = false;
  double dNextPBKeepAlive = 0;  // play-back: when camreq next calls the keep-alive
  std::string sSdpPath;
};

}  // namespace camreq

#endif
