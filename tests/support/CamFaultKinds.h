// The ways a camera misbehaves on one exchange, in the simulator's fault
// text: the rows that the fault tables of the RTP road, the fault matrix of
// every road and the soak share. A null text is a camera that refuses the
// connection (its listener closed) rather than a fault of an answer.
#ifndef CAM_FAULT_KINDS_H
#define CAM_FAULT_KINDS_H

#include <cstddef>

namespace camtest {

// Which answers the simulator changes by a fault; every other answer goes
// out as without it.
enum class FaultReach {
  kConnection,  // the connection: every exchange
  kAnswer,      // every answer: a text, a JPEG push or an audio stream
  kText,        // a text answer (a body of key lines), not a push or a stream
  kUidLine,     // a text answer that carries the UID
  kStream,      // a JPEG push or an audio stream, after its head
  kMultipart,   // a JPEG push: the form of its boundary
  kRtpStart,    // the RTP stream that a start line begins, after the answer
};

struct FaultKind {
  const char* pcName;
  const char* pcFault;  // camsim's fault text; null: connections refused
  FaultReach eReach;
  // A stream that the fault reaches stops delivering: it must be asked for
  // again once the device behaves.
  bool bStopsStream = false;
};

// The order is that of the RTP fault table's rows; the kinds after the
// drip are the answers' framing and the streams' own faults.
enum FaultKindIndex : size_t {
  kFaultRefused,
  kFaultSilent,
  kFaultSlow,
  kFaultCloseHeader,
  kFaultCloseBody,
  kFaultGarbage,
  kFaultReset,
  kFault404,
  kFault503,
  kFaultNoUid,
  kFaultDrip,
  kFaultLongBody,
  kFaultLateKeys,
  kFaultNoLength,
  kFaultChunked,
  kFaultChunkedOpen,
  kFaultPushStall,
  kFaultPushEnd,
  kFaultQuotedBoundary,
  kFaultBareBoundary,
  kFaultRtpStall,
  kFaultRtpEnd,
  kFaultKindCount
};

constexpr FaultKind kFaultKinds[kFaultKindCount] = {
    {"Refused", nullptr, FaultReach::kConnection},
    {"Silent", "noanswer", FaultReach::kAnswer},
    // Well inside the time-out of an answer, even divided by five.
    {"Slow", "delay=100", FaultReach::kAnswer},
    {"CloseHeader", "close-header", FaultReach::kAnswer},
    // A push or an audio stream is cut in its first part.
    {"CloseBody", "close-body", FaultReach::kAnswer, true},
    {"Garbage", "garbage", FaultReach::kAnswer},
    {"Reset", "reset", FaultReach::kAnswer, true},
    {"Status404", "status=404", FaultReach::kAnswer},
    {"Status503", "status=503", FaultReach::kAnswer},
    {"NoUid", "omit=UID=", FaultReach::kUidLine},
    // One byte of the body every 400 ms: the answer outlasts the time-out.
    {"Drip", "drip=400", FaultReach::kText},
    // More than the 2048 bytes that a reply may fill, the keys first.
    {"LongBody", "long-body", FaultReach::kText},
    // The keys begin at byte 2048, past what a reply may fill.
    {"LateKeys", "late-keys", FaultReach::kText},
    {"NoLength", "no-length", FaultReach::kText},
    {"Chunked", "chunked", FaultReach::kText},
    // Chunked, closed before the last chunk: the body never ends.
    {"ChunkedOpen", "chunked-open", FaultReach::kText},
    // One picture (or chunk of audio), then nothing on an open connection.
    {"PushStall", "push-stall", FaultReach::kStream, true},
    // One picture and the closing boundary (audio: one chunk), then the close.
    {"PushEnd", "push-end", FaultReach::kStream, true},
    {"QuotedBound", "boundary-quoted", FaultReach::kMultipart},
    {"BareBound", "boundary-bare", FaultReach::kMultipart},
    // One frame, then the stream stalls (a new start line resumes it).
    {"RtpStall", "rtp-stall", FaultReach::kRtpStart, true},
    // One frame, then the stream ends (a new start line begins another).
    {"RtpEnd", "rtp-end", FaultReach::kRtpStart, true},
};

}  // namespace camtest

#endif  // CAM_FAULT_KINDS_H
