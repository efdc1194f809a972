// Parameters of the requesters that the limits program starts.
#include "Requesters.h"

#include "CamTypes.h"
#include "kxcom.h"

namespace limits {

void ConfigureH264(CCamRequester& rReq, uint16_t usPort, CCamRequesterNotify& rUpper) {
  rReq.SetParameter(CAM_PARAM_IPADDRESS, "127.0.0.1", 9);
  const int32_t iPort = usPort, iRtpPort = 5000, iType = CAM_REQUESTER_CMD_H264_RTP, iPos = 1;
  rReq.SetParameter(CAM_PARAM_HTTPPORT, &iPort, sizeof iPort);
  rReq.SetParameter(CAM_PARAM_RTPPORT, &iRtpPort, sizeof iRtpPort);
  rReq.SetParameter(CAM_PARAM_CMDTYPE, &iType, sizeof iType);
  CAM_TYPE_PARAM sType = {};
  sType.usCameraNumber = 1;
  sType.usCameraType = CAM_REQUESTER_CAMTYPE_CAM07;
  rReq.SetParameter(CAM_PARAM_CAMTYPE, &sType, sizeof sType);
  rReq.SetParameter(CAM_PARAM_SCREENPOS, &iPos, sizeof iPos);
  rReq.SetParameter(CAM_PARAM_CALLBACK, &rUpper, 0);
}

void SilencePrint() {
  COM_SetPrintSink([](const char*, void*) {}, nullptr);
}

}  // namespace limits
