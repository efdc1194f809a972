// The RTP streams of one device: each start line that a device accepts on
// the RTP road starts one, sent from a thread of the device's own at the
// codec's rate to the requester's port or the multicast group, until the
// stop line, the end of its session (UID released, forgotten or expired),
// or the device's stop. A stream can stall (nothing more is sent while HTTP
// answers as before) and resume, or end for good, by a fault or on demand.
#ifndef CAMSIM_RTP_SENDER_H
#define CAMSIM_RTP_SENDER_H

#include <sys/socket.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Media.h"

namespace camsim {

// Stands for every UID in Stall, Resume and End.
constexpr int kEveryUid = -1;

// Which stream of a session a start or stop line names: a stop ends the
// stream that a start with the same key began.
struct RtpStreamKey {
  int uid = -1;
  std::string kind;  // cameras: "h264", "mpeg4", "audio"; recorders: "H264", "MPEG4", "AUDIO"
  int channel = 0;   // ch= of a camera, CAM= of a recorder
  int stream = 0;    // stream= of a camera (0 when absent)
  bool operator<(const RtpStreamKey& other) const;
};

// What a fault on the start line does to its stream.
struct RtpPlan {
  int stallAfter = -1;  // frames sent before the stream stalls; -1: never
  int resumeMs = 0;     // a stall ends by itself this long after it began; 0: it waits
  int endAfter = -1;    // frames sent before the stream ends for good; -1: never
};

// One stream as it stands.
struct RtpStreamInfo {
  RtpStreamKey key;
  MediaCodec codec = MediaCodec::kH264;
  int payloadType = 0;
  int clockRate = 0;
  std::string destination;  // "127.0.0.1:5000", "[::1]:5000", "239.1.2.4:5000"
  bool multicast = false;
  uint32_t ssrc = 0;
  uint16_t nextSequence = 0;
  uint64_t frames = 0;   // frames sent
  uint64_t packets = 0;  // packets the system took
  uint64_t bytes = 0;    // their bytes, RTP headers included
  uint64_t sendErrors = 0;
  bool stalled = false;
};

class RtpSender {
 public:
  // Is the UID still known to the device? Called without the sender's lock.
  using UidCheck = std::function<bool(int uid)>;
  using Observer = std::function<void(const std::string& event)>;

  // deviceAddress: the device's own numeric address, the source of the
  // packets where the family fits and the interface of its multicast.
  RtpSender(const std::string& deviceAddress, UidCheck alive);
  ~RtpSender();
  RtpSender(const RtpSender&) = delete;
  RtpSender& operator=(const RtpSender&) = delete;

  // Ends every stream and the thread. Safe to call more than once.
  void Stop();

  // Starts the stream of key. When it already runs, it goes to this
  // destination from now on, with the plan from now on; when it was
  // stalled it resumes, at its next key frame. False, with *error set,
  // when no socket can be made for the destination.
  bool Start(const RtpStreamKey& key, MediaCodec codec, const sockaddr_storage& destination,
             const RtpPlan& plan, std::string* error);
  // Ends the stream of key; false when none ran.
  bool StopStream(const RtpStreamKey& key);

  // The streams of uid (or of every UID) stall, resume (at their next key
  // frame), or end for good. Each returns how many streams it changed.
  size_t Stall(int uid);
  size_t Resume(int uid);
  size_t End(int uid);

  std::vector<RtpStreamInfo> Streams() const;
  // Packets sent to each destination since the start, also by streams that ended.
  std::map<std::string, uint64_t> PacketsByDestination() const;
  uint64_t PacketsSent() const;
  bool WaitForPackets(const std::string& destination, uint64_t count,
                      std::chrono::milliseconds timeout) const;

  // Told of every stream that starts, stalls, resumes, stops or ends, on
  // the thread that caused it, without the sender's lock.
  void SetObserver(Observer observer);

 private:
  using Clock = std::chrono::steady_clock;
  struct Stream;

  void Run();
  // Each of these needs mutex_.
  void SendDue(Stream* stream, Clock::time_point now);
  void SendFrame(Stream* stream);
  void StallStream(Stream* stream, Clock::time_point now);
  void ResumeStream(Stream* stream, Clock::time_point now);
  void Note(const Stream& stream, const std::string& what);
  // Without mutex_: hands the gathered events to the observer.
  void Tell();
  size_t ForEachOf(int uid, const std::function<bool(Stream*)>& change);

  const std::string deviceAddress_;
  const UidCheck alive_;

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;  // a stream came or changed, or stop
  mutable std::condition_variable sent_;     // packets went out
  std::map<RtpStreamKey, std::unique_ptr<Stream>> streams_;
  std::map<std::string, uint64_t> packetsTo_;
  uint64_t packetsSent_ = 0;
  std::vector<std::string> events_;
  Observer observer_;
  std::mt19937 random_;
  bool stopping_ = false;

  std::mutex tellMutex_;  // one observer call at a time, in order
  std::thread thread_;
};

}  // namespace camsim

#endif
