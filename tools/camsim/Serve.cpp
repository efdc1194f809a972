// Serving one connection of a device: read the head, record it, apply the
// path's fault, check authentication, answer in the model's dialect.
#include <sys/socket.h>

#include <cerrno>
#include <chrono>

#include "Device.h"
#include "Socket.h"

namespace camsim {

namespace {

// A connection that sends no complete head within this time is closed.
constexpr int kHeadTimeoutMs = 60000;
// How long a refused request may go on sending before the close.
constexpr int kLingerMs = 500;
constexpr char kBoundary[] = "camsimboundary";
constexpr char kAudioType[] = "audio/G726-32";
// G.726 at 32 kbit/s: 4000 bytes a second, sent in tenths.
constexpr size_t kAudioChunk = 400;
constexpr int kAudioIntervalMs = 100;
// The first bytes of a status line cut short by a close-header fault.
constexpr char kCutHead[] = "HTTP/1.0 200 OK\r\nContent-Ty";

std::string StatusLine(const HttpRequest& request, int status) {
  std::string version = request.version == "HTTP/1.1" ? "HTTP/1.1" : "HTTP/1.0";
  return version + " " + std::to_string(status) + " " + ReasonPhrase(status) + "\r\n";
}

std::string Head(const HttpRequest& request, int status, const std::string& type,
                 const std::string& extra) {
  std::string head = StatusLine(request, status);
  head += "Server: camsim\r\n";
  head += "Content-Type: " + type + "\r\n";
  head += extra;
  head += "Connection: close\r\n\r\n";
  return head;
}

void OmitKey(std::string* body, const std::string& key) {
  std::string kept;
  size_t start = 0;
  while (start < body->size()) {
    size_t end = body->find('\n', start);
    end = end == std::string::npos ? body->size() : end + 1;
    if (body->compare(start, key.size(), key) != 0) kept += body->substr(start, end - start);
    start = end;
  }
  *body = kept;
}

void PadBody(std::string* body, size_t size) {
  static const char kFiller[] = "FILLER=0123456789012345678901234567890123456789\r\n";
  while (body->size() < size) body->append(kFiller);
  body->resize(size);
}

std::string PartHeader(size_t length) {
  return std::string("--") + kBoundary +
         "\r\nContent-Type: image/jpeg\r\nContent-Length: " + std::to_string(length) + "\r\n\r\n";
}

}  // namespace

void Device::Serve(Slot* slot) {
  int fd = slot->fd;
  std::string data;
  size_t headEnd = std::string::npos;
  while ((headEnd = FindHeadEnd(data)) == std::string::npos && data.size() <= kMaxHeadBytes) {
    if (WaitReadable(fd, stopFd_, kHeadTimeoutMs) != WaitResult::kReady) break;
    char buffer[4096];
    ssize_t got = recv(fd, buffer, sizeof buffer, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    data.append(buffer, static_cast<size_t>(got));
  }
  if (headEnd != std::string::npos || data.size() > kMaxHeadBytes) {
    HttpRequest request;
    int refusal = 0;
    if (headEnd == std::string::npos) {
      refusal = 431;
    } else if (!ParseRequestHead(data.substr(0, headEnd), &request)) {
      refusal = 400;
    }
    if (request.requestLine.empty()) {
      request.requestLine = data.substr(0, data.find_first_of("\r\n"));
    }
    ServeRequest(fd, slot->peer, request, refusal);
  }
  FinishSlot(slot);
}

size_t Device::Record(const std::string& peer, const HttpRequest& request) {
  RequestRecord record;
  record.peer = peer;
  record.requestLine = request.requestLine;
  record.headers = request.headers;
  record.path = request.path;
  record.query = request.query;
  record.received = std::chrono::system_clock::now();
  std::function<void(const RequestRecord&)> observer;
  size_t index = 0;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    index = records_.size();
    records_.push_back(record);
    observer = observer_;
  }
  changed_.notify_all();
  if (observer) observer(record);
  return index;
}

void Device::SetRecordStatus(size_t index, int status) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (index < records_.size()) records_[index].status = status;
}

bool Device::TakeFault(const std::string& path, Fault* fault) {
  std::lock_guard<std::mutex> lock(mutex_);
  auto found = faults_.find(path);
  if (found == faults_.end()) found = faults_.find(kEveryPath);
  if (found == faults_.end()) return false;
  *fault = found->second;
  if (found->second.times > 0 && --found->second.times == 0) faults_.erase(found);
  return true;
}

Credentials Device::CurrentCredentials() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return {config_.auth, config_.user, config_.password, config_.realm};
}

std::string Device::Challenge() {
  return authenticator_.Challenge(CurrentCredentials());
}

bool Device::Authorized(const HttpRequest& request, std::string* challenge) {
  Credentials credentials = CurrentCredentials();
  std::string origin = request.path + (request.query.empty() ? "" : "?" + request.query);
  std::string authorization;
  for (const auto& header : request.headers) {
    if (SameTextIgnoringCase(header.first, "Authorization")) authorization = header.second;
  }
  if (authenticator_.Check(credentials, request.method, request.target, origin, authorization)) {
    return true;
  }
  *challenge = authenticator_.Challenge(credentials);
  return false;
}

Reply Device::Dispatch(const HttpRequest& request) {
  std::lock_guard<std::mutex> lock(mutex_);
  DeviceState state;
  state.model = model_;
  state.values = config_.values;
  state.user = config_.user;
  state.password = config_.password;
  state.sessions = &sessions_;
  return Answer(state, request.path, request.query);
}

void Device::ServeRequest(int fd, const std::string& peer, const HttpRequest& request,
                          int refusal) {
  size_t index = Record(peer, request);
  Fault none;
  Reply reply;
  if (refusal == 0 && request.method != "GET") refusal = 405;
  if (refusal != 0) {
    reply.status = refusal;
    reply.body = "ERROR=" + std::to_string(refusal) + "\r\n";
    SetRecordStatus(index, reply.status);
    SendText(fd, request, reply, none, "");
    // The client may still be sending; closing on unread bytes would reset
    // the connection and lose the answer, so let it finish first.
    shutdown(fd, SHUT_WR);
    Pause(fd, stopFd_, kLingerMs);
    return;
  }
  Fault fault;
  bool faulty = TakeFault(request.path, &fault);
  if (faulty && fault.delayMs > 0 && Pause(fd, stopFd_, fault.delayMs) != WaitResult::kTimeout) {
    return;
  }
  if (!faulty) fault = none;
  switch (fault.action) {
    case FaultAction::kNoAnswer:
      HoldOpen(fd);
      return;
    case FaultAction::kGarbage:
      SendAll(fd, kGarbageBytes, sizeof kGarbageBytes - 1);
      return;
    case FaultAction::kCloseMidHeader:
      SendAll(fd, kCutHead, sizeof kCutHead - 1);
      return;
    default:
      break;
  }
  std::string challenge;
  if (fault.status != 0) {
    reply.status = fault.status;
    reply.body = "ERROR=" + std::to_string(fault.status) + "\r\n";
    if (fault.status == 401) challenge = Challenge();
  } else if (!Authorized(request, &challenge)) {
    reply.status = 401;
    reply.body = "ERROR=401\r\n";
  } else {
    reply = Dispatch(request);
  }
  SetRecordStatus(index, reply.status);
  switch (reply.kind) {
    case BodyKind::kJpegPush:
      ServePush(fd, request, reply, fault);
      break;
    case BodyKind::kAudioStream:
      ServeAudio(fd, request, fault);
      break;
    case BodyKind::kText:
      SendText(fd, request, reply, fault, challenge);
      break;
  }
}

bool Device::SendText(int fd, const HttpRequest& request, const Reply& reply, const Fault& fault,
                      const std::string& challenge) {
  std::string body = reply.body;
  if (!fault.omitKey.empty()) OmitKey(&body, fault.omitKey);
  if (fault.longBodyBytes > body.size()) PadBody(&body, fault.longBodyBytes);
  std::string extra = "Content-Length: " + std::to_string(body.size()) + "\r\n";
  if (!challenge.empty()) extra += "WWW-Authenticate: " + challenge + "\r\n";
  std::string head = Head(request, reply.status, "text/plain", extra);
  if (fault.action == FaultAction::kCloseMidBody) {
    return SendAll(fd, head + body.substr(0, body.size() / 2));
  }
  return SendAll(fd, head + body);
}

void Device::ServePush(int fd, const HttpRequest& request, const Reply& reply, const Fault& fault) {
  int gray = Values().gray;
  std::string picture = MakeGrayJpeg(reply.size.width, reply.size.height, gray);
  std::string part = PartHeader(picture.size()) + picture + "\r\n";
  std::string type = std::string("multipart/x-mixed-replace;boundary=") + kBoundary;
  if (!SendAll(fd, Head(request, 200, type, ""))) return;
  if (fault.action == FaultAction::kCloseMidBody) {
    SendAll(fd, part.substr(0, part.size() / 2));
    return;
  }
  auto interval = std::chrono::microseconds(static_cast<long>(1e6 / reply.frameRate));
  auto next = std::chrono::steady_clock::now();
  for (long sent = 0;; ++sent) {
    if (fault.action == FaultAction::kPushStall && sent >= fault.framesBeforeStall) {
      HoldOpen(fd);
      return;
    }
    if (!SendAll(fd, part)) return;
    picturesSent_.fetch_add(1);
    next += interval;
    auto wait =
        std::chrono::ceil<std::chrono::milliseconds>(next - std::chrono::steady_clock::now());
    if (Pause(fd, stopFd_, wait.count() < 0 ? 0 : static_cast<int>(wait.count())) !=
        WaitResult::kTimeout) {
      return;
    }
  }
}

void Device::ServeAudio(int fd, const HttpRequest& request, const Fault& fault) {
  if (!SendAll(fd, Head(request, 200, kAudioType, ""))) return;
  std::string chunk(kAudioChunk, '\0');
  for (long sent = 0;; ++sent) {
    if (fault.action == FaultAction::kPushStall && sent >= fault.framesBeforeStall) {
      HoldOpen(fd);
      return;
    }
    for (size_t i = 0; i < chunk.size(); ++i) {
      chunk[i] = static_cast<char>((sent * kAudioChunk + i) & 0xFF);
    }
    size_t size = fault.action == FaultAction::kCloseMidBody ? chunk.size() / 2 : chunk.size();
    if (!SendAll(fd, chunk.data(), size) || fault.action == FaultAction::kCloseMidBody) return;
    if (Pause(fd, stopFd_, kAudioIntervalMs) != WaitResult::kTimeout) return;
  }
}

void Device::HoldOpen(int fd) {
  Pause(fd, stopFd_, -1);
}

}  // namespace camsim
