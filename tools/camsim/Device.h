// One simulated camera or recorder: a listening socket, a thread per
// connection, the model's dialect, faults per path and the record of every
// request. A test embeds it; the camsim program runs several.
#ifndef CAMSIM_DEVICE_H
#define CAMSIM_DEVICE_H

#include <sys/socket.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "Auth.h"
#include "Config.h"
#include "Dialect.h"
#include "Fault.h"
#include "HttpRequest.h"
#include "Record.h"
#include "RtpSender.h"
#include "Sessions.h"

namespace camsim {

// Path under which a fault applies to every path that has none of its own.
constexpr char kEveryPath[] = "*";

class Device {
 public:
  // Binds and starts listening (unless config.startRefusing); null with
  // *error set when the address cannot be bound or the model is unknown.
  static std::unique_ptr<Device> Start(const DeviceConfig& config, std::string* error);
  ~Device();
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  // Closes the listener and every open connection and waits for their
  // threads. Safe to call more than once.
  void Stop();

  uint16_t Port() const { return port_.load(); }
  const std::string& Address() const { return address_; }
  int Model() const { return model_; }

  // Faults: path as in the request ("/cgi-bin/getuid") or kEveryPath.
  // A path holds a list of faults, tried in the order they were added: a
  // request meets the first whose conditions (Fault::when) its query
  // meets; a fault whose times run out leaves the list, so the next one
  // takes over. A request that meets none of its path's faults meets the
  // first of kEveryPath's that it can.
  // SetFault replaces the path's list by this one fault; AddFault appends.
  void SetFault(const std::string& path, const Fault& fault);
  void AddFault(const std::string& path, const Fault& fault);
  void ClearFault(const std::string& path);
  void ClearFaults();
  // Faults still waiting on the path (times not yet run out).
  size_t FaultCount(const std::string& path) const;

  // Refusing connections closes the listening socket (a connect is then
  // refused by the system); accepting opens it again on the same port.
  bool RefuseConnections();
  bool AcceptConnections(std::string* error = nullptr);
  bool Listening() const;

  ReplyValues Values() const;
  void SetValues(const ReplyValues& values);
  void SetAuth(AuthMode mode, const std::string& user, const std::string& password);
  // How long a Digest nonce is accepted after its challenge (zero: for ever).
  void SetNonceLifetime(std::chrono::milliseconds lifetime);

  std::set<int> LiveUids() const;
  // Forgets every UID, as a camera does when it restarts.
  void ForgetUids();
  // Forgets one UID; false when it was not known.
  bool ForgetUid(int uid);
  // From now on a UID that got no keep-alive (camera keep_alive, Quillon
  // uidutil KEEPALIVE, recorder status.cgi) for this long is forgotten;
  // issuing it counts as the first. Zero turns expiry off.
  void SetUidExpiry(std::chrono::milliseconds expiry);

  // Shorthands of SetValues for the values most often changed while running.
  void SetPlayMode(int playMode);
  void SetFileName(const std::string& fileName);
  void SetPushStartStatus(int status);

  // The record keeps the last DeviceConfig::recordLimit requests, oldest
  // first. RequestCount counts every request since the start (or the last
  // ClearRequests), also those that have left the record.
  std::vector<RequestRecord> Requests() const;
  size_t RequestCount() const;
  void ClearRequests();
  // Waits until at least count requests came (RequestCount() >= count).
  bool WaitForRequests(size_t count, std::chrono::milliseconds timeout) const;
  // Called on the connection's thread for every request, after recording it.
  void SetObserver(std::function<void(const RequestRecord&)> observer);

  // RTP: every start line of the RTP road that the device accepts (camera
  // h264, mpeg4 and audio with protocol=rtp; recorder push.cgi with PORT=)
  // starts a stream, which runs until its stop line or the end of its UID.
  // The streams running now (stalled ones too):
  std::vector<RtpStreamInfo> RtpStreams() const;
  // Packets sent to each destination ("127.0.0.1:5000", "[::1]:5000",
  // "239.1.2.4:5000") since the start, also by streams that ended.
  std::map<std::string, uint64_t> RtpPacketsByDestination() const;
  uint64_t RtpPacketsTo(const std::string& destination) const;
  uint64_t RtpPacketsSent() const;
  bool WaitForRtpPackets(const std::string& destination, uint64_t count,
                         std::chrono::milliseconds timeout) const;
  // The streams of uid (kEveryUid: all) stall: nothing more is sent while
  // HTTP answers as before. They resume, at a key frame, on ResumeRtp, on
  // a new start line for the stream, or by the fault's rtp-resume time.
  // EndRtp ends them for good, as when a recorder's push ends. Each returns
  // how many streams it changed.
  size_t StallRtp(int uid = kEveryUid);
  size_t ResumeRtp(int uid = kEveryUid);
  size_t EndRtp(int uid = kEveryUid);
  // Told of every RTP stream that starts, stalls, resumes, stops or ends.
  void SetRtpObserver(std::function<void(const std::string& event)> observer);

  size_t OpenConnections() const;
  bool WaitForOpenConnections(size_t count, std::chrono::milliseconds timeout) const;
  uint64_t PicturesSent() const { return picturesSent_.load(); }
  // Connections turned away with 503 because maxConnections were open.
  uint64_t ConnectionsTurnedAway() const { return turnedAway_.load(); }

 private:
  struct Slot {
    int fd = -1;
    std::string peer;
    std::thread thread;
    bool done = false;
  };

  explicit Device(const DeviceConfig& config);
  bool Listen(std::string* error);
  void StopAccepting();
  void AcceptLoop();
  void Reap(bool all);
  void FinishSlot(Slot* slot);
  // Answers 503 on a connection beyond the limit and closes it.
  void TurnAway(int fd);

  // Serving one connection (Serve.cpp).
  void Serve(Slot* slot);
  // refusal: 0 for a request to answer, else the status it gets (400, 431).
  void ServeRequest(int fd, const std::string& peer, const HttpRequest& request, int refusal);
  void Refuse(int fd, const std::string& peer, const HttpRequest& request, int status);
  // Puts the request on the record; returns its sequence number.
  size_t Record(const std::string& peer, const HttpRequest& request);
  void SetRecordStatus(size_t sequence, int status);
  bool TakeFault(const HttpRequest& request, Fault* fault);
  bool Authorized(const HttpRequest& request, std::string* challenge);
  Credentials CurrentCredentials() const;
  // A 401 challenge in the device's manner (Basic when it asks for none).
  std::string Challenge();
  Reply Dispatch(const HttpRequest& request);
  bool SendText(int fd, const HttpRequest& request, const Reply& reply, const Fault& fault,
                const std::string& challenge);
  bool SendBody(int fd, const std::string& body, const Fault& fault);
  void ServePush(int fd, const HttpRequest& request, const Reply& reply, const Fault& fault);
  void ServeAudio(int fd, const HttpRequest& request, const Fault& fault);
  void HoldOpen(int fd);
  // Starts or stops the stream an accepted RTP line asks for.
  void OrderRtp(int fd, const RtpOrder& order, const Fault& fault);

  const int model_;
  const std::string address_;
  std::atomic<uint16_t> port_{0};
  sockaddr_storage bindAddress_{};
  socklen_t bindLength_ = 0;

  mutable std::mutex mutex_;  // guards everything below up to records_
  mutable std::condition_variable changed_;
  DeviceConfig config_;
  mutable Sessions sessions_;  // mutable: reading it forgets the expired UIDs
  std::map<std::string, std::vector<Fault>> faults_;
  std::deque<RequestRecord> records_;  // the last config_.recordLimit requests
  size_t requestCount_ = 0;            // every request since the start or a clear
  size_t requestSequence_ = 0;         // every request since the start
  std::function<void(const RequestRecord&)> observer_;

  Authenticator authenticator_;
  std::atomic<uint64_t> picturesSent_{0};
  std::atomic<uint64_t> turnedAway_{0};
  std::atomic<bool> stopping_{false};
  int stopFd_ = -1;  // readable once the device stops
  int acceptWakeFd_ = -1;

  mutable std::mutex listenMutex_;  // guards the listener and its thread
  int listenFd_ = -1;
  std::thread acceptThread_;

  // Set once in Start, stopped by Stop; uses sessions_ through mutex_.
  std::unique_ptr<RtpSender> rtp_;

  mutable std::mutex slotsMutex_;
  mutable std::condition_variable slotsChanged_;
  std::list<std::unique_ptr<Slot>> slots_;
};

}  // namespace camsim

#endif
