// The answer to the requester's stream-state query, from what really
// arrives: 0 while data comes, 1 when nothing is followed or nothing came
// for a second.
#ifndef CAMREQ_STREAM_STATE_H
#define CAMREQ_STREAM_STATE_H

namespace camreq {

constexpr double kSilenceSec = 1.0;

// bFollowing: a stream is followed (RTP port set up, push handle held);
// dSince: when that began; dLast: the last data, all in seconds.
inline int StreamStateAt(bool bFollowing, double dSince, double dLast, double dNow) {
  if (!bFollowing) return 1;
  const double dLatest = dLast > dSince ? dLast : dSince;
  return dNow - dLatest < kSilenceSec ? 0 : 1;
}

}  // namespace camreq

#endif
