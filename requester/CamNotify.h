// The gates before every call upward: the upper layer is told nothing when
// it gave no notification object or while the requester is being destroyed,
// with one exception: a push session handed over is always taken back (the
// null handle) before it is closed, since the upper layer may still be
// reading it while it destroys the requester.
#ifndef CAM_NOTIFY_H
#define CAM_NOTIFY_H

#include "CamRequesterFields.h"

namespace camses {

// The notification object, or null when none may be called.
inline CCamRequesterNotify* UpperLayer(const CamRequesterFields& rF) {
  if (rF.m_iDestruct == 1) return nullptr;
  return rF.p_notify_to_upper;
}

// The notification object for taking a handed-over push session back, or
// null when there is none: also while the requester is being destroyed.
inline CCamRequesterNotify* PushHolder(const CamRequesterFields& rF) {
  return rF.p_notify_to_upper;
}

}  // namespace camses

#endif
