// The fixed numbers that the request thread, the session code and the CGI
// builders share. One definition each, so that a count, a size or a queue
// address never drifts between the two requesters.
#ifndef CAM_CONSTANTS_H
#define CAM_CONSTANTS_H

// Module number of every queue call of the request thread; the thread's
// iChildThreadIndex completes the address.
constexpr int kRequestModule = 42;

// Idle rounds of the request thread (one per 100 ms of an empty queue).
// A keep-alive goes to the camera on every kKeepAliveTicks-th round; writing
// kKeepAliveTicks into the counter makes the very next call send.
constexpr int kKeepAliveTicks = 300;
// The RTP requester's play-back keep-alive goes out on every kPBKeepAliveTicks-th
// call (the HTTP requester's on every call).
constexpr int kPBKeepAliveTicks = 30;
// The stream check of a running stream runs on every kStreamCheckTicks-th round.
constexpr int kStreamCheckTicks = 150;
// A session that stays in the error status for this many idle rounds is rebuilt.
constexpr int kRestartRounds = 30;

// Capacity of the zeroed reply buffer of one exchange (the receive record's
// size word); the reply is read as NUL-terminated text within it.
constexpr int kReplyBufferSize = 2048;

// Destination size of every CGI line builder: a line that does not fit in
// kCgiLineSize bytes (terminator included) is refused, never cut short.
constexpr int kCgiLineSize = 512;

// The audio-enable value that a camera's "aEnable=in" is stored as; it makes
// the audio start line ask for the camera's input ("&mode=in").
constexpr int kAudioEnableIn = 100;

#endif
