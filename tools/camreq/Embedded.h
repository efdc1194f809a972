// The camera simulator inside camreq: one camsim device on loopback for
// every camera that has no address, of the camera's type, with the faults
// and the delivery the camera asks for.
#ifndef CAMREQ_EMBEDDED_H
#define CAMREQ_EMBEDDED_H

#include <memory>
#include <string>

#include "Device.h"
#include "Options.h"

namespace camreq {

// The user and password of an embedded device when camreq is given none:
// a recorder's login needs them on both sides.
constexpr char kEmbeddedUser[] = "admin";
constexpr char kEmbeddedPassword[] = "password";

// Starts the device for rSpec at screen position iPosition. Null with
// *psError when it cannot listen (the faults were checked with the options).
std::unique_ptr<camsim::Device> StartEmbedded(const CameraSpec& rSpec, int iPosition,
                                              std::string* psError);

// A UDP port that was free a moment ago, even (RTP), on sAddress.
int FreeUdpPort(const std::string& sAddress);

}  // namespace camreq

#endif
