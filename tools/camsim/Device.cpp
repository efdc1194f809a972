#include "Device.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Models.h"
#include "Socket.h"

namespace camsim {

std::unique_ptr<Device> Device::Start(const DeviceConfig& config, std::string* error) {
  if (config.model < kFirstModel || config.model > kLastModel) {
    *error = "unknown model " + std::to_string(config.model);
    return nullptr;
  }
  std::unique_ptr<Device> device(new Device(config));
  if (!MakeAddress(config.address, config.port, &device->bindAddress_, &device->bindLength_)) {
    *error = "not a numeric address: " + config.address;
    return nullptr;
  }
  RaiseOpenFileLimit();
  device->stopFd_ = MakeSignalFd();
  device->acceptWakeFd_ = MakeSignalFd();
  if (device->stopFd_ < 0 || device->acceptWakeFd_ < 0) {
    *error = std::string("eventfd: ") + std::strerror(errno);
    return nullptr;
  }
  Device* self = device.get();
  device->rtp_ = std::make_unique<RtpSender>(config.address, [self](int uid) {
    std::lock_guard<std::mutex> lock(self->mutex_);
    self->sessions_.ExpireStale();
    return self->sessions_.Known(uid);
  });
  // Bind even when starting refused, so that the port is known and kept.
  if (!device->Listen(error)) return nullptr;
  if (config.startRefusing) device->RefuseConnections();
  return device;
}

Device::Device(const DeviceConfig& config)
    : model_(config.model),
      address_(config.address),
      config_(config),
      sessions_(config.values.firstUid) {
  sessions_.SetExpiry(std::chrono::milliseconds(config.uidExpiryMs));
  authenticator_.SetNonceLifetime(std::chrono::milliseconds(config.nonceLifetimeMs));
}

Device::~Device() {
  Stop();
  if (stopFd_ >= 0) close(stopFd_);
  if (acceptWakeFd_ >= 0) close(acceptWakeFd_);
}

bool Device::Listen(std::string* error) {
  std::lock_guard<std::mutex> lock(listenMutex_);
  if (listenFd_ >= 0) return true;
  if (stopping_) {
    if (error) *error = "device stopped";
    return false;
  }
  std::string failure;
  int fd = OpenListener(bindAddress_, bindLength_, &failure);
  if (fd < 0) {
    if (error) *error = failure;
    return false;
  }
  listenFd_ = fd;
  port_ = LocalPort(fd);
  // Reopening binds the same port again.
  MakeAddress(address_, port_, &bindAddress_, &bindLength_);
  DrainSignalFd(acceptWakeFd_);
  acceptThread_ = std::thread(&Device::AcceptLoop, this);
  return true;
}

void Device::StopAccepting() {
  std::lock_guard<std::mutex> lock(listenMutex_);
  if (listenFd_ < 0) return;
  RaiseSignalFd(acceptWakeFd_);
  acceptThread_.join();
  close(listenFd_);
  listenFd_ = -1;
}

void Device::AcceptLoop() {
  for (;;) {
    pollfd fds[2] = {{acceptWakeFd_, POLLIN, 0}, {listenFd_, POLLIN, 0}};
    int ready = poll(fds, 2, 1000);
    if (ready < 0 && errno != EINTR) return;
    if (fds[0].revents != 0) return;
    Reap(false);
    if (ready <= 0 || (fds[1].revents & POLLIN) == 0) continue;
    sockaddr_storage peer{};
    socklen_t length = sizeof peer;
    int fd = accept4(listenFd_, reinterpret_cast<sockaddr*>(&peer), &length, SOCK_CLOEXEC);
    if (fd < 0) {
      // Out of descriptors or an aborted connection: try again shortly.
      if (errno == EMFILE || errno == ENFILE) poll(fds, 1, 50);
      continue;
    }
    if (OpenConnections() >= static_cast<size_t>(config_.maxConnections)) {
      TurnAway(fd);
      continue;
    }
    std::lock_guard<std::mutex> lock(slotsMutex_);
    slots_.push_back(std::make_unique<Slot>());
    Slot* slot = slots_.back().get();
    slot->fd = fd;
    slot->peer = AddressText(peer);
    slot->thread = std::thread(&Device::Serve, this, slot);
    slotsChanged_.notify_all();
  }
}

void Device::Reap(bool all) {
  std::list<std::unique_ptr<Slot>> finished;
  {
    std::lock_guard<std::mutex> lock(slotsMutex_);
    for (auto it = slots_.begin(); it != slots_.end();) {
      if (all || (*it)->done) {
        finished.push_back(std::move(*it));
        it = slots_.erase(it);
      } else {
        ++it;
      }
    }
  }
  for (auto& slot : finished) slot->thread.join();
}

void Device::FinishSlot(Slot* slot) {
  std::lock_guard<std::mutex> lock(slotsMutex_);
  close(slot->fd);
  slot->fd = -1;
  slot->done = true;
  slotsChanged_.notify_all();
}

void Device::TurnAway(int fd) {
  // Answered on the accepting thread, without reading the request: the
  // limit is there to keep threads and memory bounded.
  static const char kBusy[] =
      "HTTP/1.0 503 Service Unavailable\r\nServer: camsim\r\nContent-Type: text/plain\r\n"
      "Content-Length: 11\r\nConnection: close\r\n\r\nERROR=BUSY\n";
  turnedAway_.fetch_add(1);
  SendAll(fd, kBusy, sizeof kBusy - 1);
  shutdown(fd, SHUT_WR);
  close(fd);
}

void Device::Stop() {
  if (stopping_.exchange(true)) return;
  RaiseSignalFd(stopFd_);
  StopAccepting();
  {
    std::lock_guard<std::mutex> lock(slotsMutex_);
    for (auto& slot : slots_) {
      if (slot->fd >= 0) shutdown(slot->fd, SHUT_RDWR);
    }
  }
  Reap(true);
  if (rtp_) rtp_->Stop();
}

void Device::SetFault(const std::string& path, const Fault& fault) {
  std::lock_guard<std::mutex> lock(mutex_);
  faults_[path] = {fault};
}

void Device::AddFault(const std::string& path, const Fault& fault) {
  std::lock_guard<std::mutex> lock(mutex_);
  faults_[path].push_back(fault);
}

size_t Device::FaultCount(const std::string& path) const {
  std::lock_guard<std::mutex> lock(mutex_);
  auto found = faults_.find(path);
  return found == faults_.end() ? 0 : found->second.size();
}

void Device::ClearFault(const std::string& path) {
  std::lock_guard<std::mutex> lock(mutex_);
  faults_.erase(path);
}

void Device::ClearFaults() {
  std::lock_guard<std::mutex> lock(mutex_);
  faults_.clear();
}

bool Device::RefuseConnections() {
  StopAccepting();
  return true;
}

bool Device::AcceptConnections(std::string* error) {
  return Listen(error);
}

bool Device::Listening() const {
  std::lock_guard<std::mutex> lock(listenMutex_);
  return listenFd_ >= 0;
}

ReplyValues Device::Values() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return config_.values;
}

void Device::SetValues(const ReplyValues& values) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (values.firstUid != config_.values.firstUid) sessions_.SetNextUid(values.firstUid);
  config_.values = values;
}

void Device::SetNonceLifetime(std::chrono::milliseconds lifetime) {
  authenticator_.SetNonceLifetime(lifetime);
}

void Device::SetAuth(AuthMode mode, const std::string& user, const std::string& password) {
  std::lock_guard<std::mutex> lock(mutex_);
  config_.auth = mode;
  config_.user = user;
  config_.password = password;
}

std::set<int> Device::LiveUids() const {
  std::lock_guard<std::mutex> lock(mutex_);
  sessions_.ExpireStale();
  return sessions_.Live();
}

void Device::ForgetUids() {
  std::lock_guard<std::mutex> lock(mutex_);
  sessions_.ReleaseAll();
}

bool Device::ForgetUid(int uid) {
  std::lock_guard<std::mutex> lock(mutex_);
  return sessions_.Release(uid);
}

void Device::SetUidExpiry(std::chrono::milliseconds expiry) {
  std::lock_guard<std::mutex> lock(mutex_);
  sessions_.SetExpiry(expiry);
}

void Device::SetPlayMode(int playMode) {
  std::lock_guard<std::mutex> lock(mutex_);
  config_.values.playMode = playMode;
}

void Device::SetFileName(const std::string& fileName) {
  std::lock_guard<std::mutex> lock(mutex_);
  config_.values.fileName = fileName;
}

void Device::SetPushStartStatus(int status) {
  std::lock_guard<std::mutex> lock(mutex_);
  config_.values.pushStartStatus = status;
}

std::vector<RequestRecord> Device::Requests() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return std::vector<RequestRecord>(records_.begin(), records_.end());
}

size_t Device::RequestCount() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return requestCount_;
}

void Device::ClearRequests() {
  std::lock_guard<std::mutex> lock(mutex_);
  records_.clear();
  requestCount_ = 0;
}

bool Device::WaitForRequests(size_t count, std::chrono::milliseconds timeout) const {
  std::unique_lock<std::mutex> lock(mutex_);
  return changed_.wait_for(lock, timeout, [&] { return requestCount_ >= count; });
}

void Device::SetObserver(std::function<void(const RequestRecord&)> observer) {
  std::lock_guard<std::mutex> lock(mutex_);
  observer_ = std::move(observer);
}

std::vector<RtpStreamInfo> Device::RtpStreams() const {
  return rtp_->Streams();
}

std::map<std::string, uint64_t> Device::RtpPacketsByDestination() const {
  return rtp_->PacketsByDestination();
}

uint64_t Device::RtpPacketsTo(const std::string& destination) const {
  auto packets = rtp_->PacketsByDestination();
  auto found = packets.find(destination);
  return found == packets.end() ? 0 : found->second;
}

uint64_t Device::RtpPacketsSent() const {
  return rtp_->PacketsSent();
}

bool Device::WaitForRtpPackets(const std::string& destination, uint64_t count,
                               std::chrono::milliseconds timeout) const {
  return rtp_->WaitForPackets(destination, count, timeout);
}

size_t Device::StallRtp(int uid) {
  return rtp_->Stall(uid);
}

size_t Device::ResumeRtp(int uid) {
  return rtp_->Resume(uid);
}

size_t Device::EndRtp(int uid) {
  return rtp_->End(uid);
}

void Device::SetRtpObserver(std::function<void(const std::string& event)> observer) {
  rtp_->SetObserver(std::move(observer));
}

size_t Device::OpenConnections() const {
  std::lock_guard<std::mutex> lock(slotsMutex_);
  size_t open = 0;
  for (const auto& slot : slots_) open += slot->done ? 0 : 1;
  return open;
}

bool Device::WaitForOpenConnections(size_t count, std::chrono::milliseconds timeout) const {
  std::unique_lock<std::mutex> lock(slotsMutex_);
  return slotsChanged_.wait_for(lock, timeout, [&] {
    size_t open = 0;
    for (const auto& slot : slots_) open += slot->done ? 0 : 1;
    return open == count;
  });
}

}  // namespace camsim
