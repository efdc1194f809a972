// The one gate before every call upward: the upper layer is told nothing
// when it gave no notification object or while the requester is being
// destroyed.
#ifndef CAM_NOTIFY_H
#define CAM_NOTIFY_H

#include "CamRequesterFields.h"

namespace camses {

// The notification object, or null when none may be called.
inline CCamRequesterNotify* UpperLayer(const CamRequesterFields& rF) {
  if (rF.m_iDestruct == 1) return nullptr;
  return rF.p_notify_to_upper;
}

}  // namespace camses

#endif
