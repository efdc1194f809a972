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
  void SetFault(const std::string& path, const Fault& fault);
  void ClearFault(const std::string& path);
  void ClearFaults();

  // Refusing connections closes the listening socket (a connect is then
  // refused by the system); accepting opens it again on the same port.
  bool RefuseConnections();
  bool AcceptConnections(std::string* error = nullptr);
  bool Listening() const;

  ReplyValues Values() const;
  void SetValues(const ReplyValues& values);
  void SetAuth(AuthMode mode, const std::string& user, const std::string& password);

  std::set<int> LiveUids() const;
  // Forgets every UID, as a camera does when it restarts.
  void ForgetUids();

  std::vector<RequestRecord> Requests() const;
  size_t RequestCount() const;
  void ClearRequests();
  // Waits until at least count requests are on the record.
  bool WaitForRequests(size_t count, std::chrono::milliseconds timeout) const;
  // Called on the connection's thread for every request, after recording it.
  void SetObserver(std::function<void(const RequestRecord&)> observer);

  size_t OpenConnections() const;
  bool WaitForOpenConnections(size_t count, std::chrono::milliseconds timeout) const;
  uint64_t PicturesSent() const { return picturesSent_.load(); }

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

  // Serving one connection (Serve.cpp).
  void Serve(Slot* slot);
  // refusal: 0 for a request to answer, else the status it gets (400, 431).
  void ServeRequest(int fd, const std::string& peer, const HttpRequest& request, int refusal);
  size_t Record(const std::string& peer, const HttpRequest& request);
  void SetRecordStatus(size_t index, int status);
  bool TakeFault(const std::string& path, Fault* fault);
  bool Authorized(const HttpRequest& request, std::string* challenge);
  Credentials CurrentCredentials() const;
  // A 401 challenge in the device's manner (Basic when it asks for none).
  std::string Challenge();
  Reply Dispatch(const HttpRequest& request);
  bool SendText(int fd, const HttpRequest& request, const Reply& reply, const Fault& fault,
                const std::string& challenge);
  void ServePush(int fd, const HttpRequest& request, const Reply& reply, const Fault& fault);
  void ServeAudio(int fd, const HttpRequest& request, const Fault& fault);
  void HoldOpen(int fd);

  const int model_;
  const std::string address_;
  std::atomic<uint16_t> port_{0};
  sockaddr_storage bindAddress_{};
  socklen_t bindLength_ = 0;

  mutable std::mutex mutex_;  // guards everything below up to records_
  mutable std::condition_variable changed_;
  DeviceConfig config_;
  Sessions sessions_;
  std::map<std::string, Fault> faults_;
  std::vector<RequestRecord> records_;
  std::function<void(const RequestRecord&)> observer_;

  Authenticator authenticator_;
  std::atomic<uint64_t> picturesSent_{0};
  std::atomic<bool> stopping_{false};
  int stopFd_ = -1;  // readable once the device stops
  int acceptWakeFd_ = -1;

  mutable std::mutex listenMutex_;  // guards the listener and its thread
  int listenFd_ = -1;
  std::thread acceptThread_;

  mutable std::mutex slotsMutex_;
  mutable std::condition_variable slotsChanged_;
  std::list<std::unique_ptr<Slot>> slots_;
};

}  // namespace camsim

#endif
