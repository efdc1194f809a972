// Serving one connection of a device: read the head, record it, apply the
// path's fault, check authentication, answer in the model's dialect.
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>

#include "Device.h"
#include "Socket.h"

namespace camsim {

namespace {

// How long a refused request may go on sending before the close.
constexpr int kLingerMs = 500;
constexpr char kBoundary[] = "camsimboundary";
constexpr char kAudioType[] = "audio/G726-32";
// G.726 at 32 kbit/s: 4000 bytes a second, sent in tenths.
constexpr size_t kAudioChunk = 400;
constexpr int kAudioIntervalMs = 100;
// The first bytes of a status line cut short by a close-header fault.
constexpr char kCutHead[] = "HTTP/1.0 200 OK\r\nContent-Ty";
// Bytes per chunk of a chunked body.
constexpr size_t kChunkBytes = 100;
constexpr char kFiller[] = "FILLER=0123456789012345678901234567890123456789\r\n";

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

// Filler lines of exactly size bytes, the last one ending in CR LF.
std::string Filler(size_t size) {
  std::string filler;
  while (filler.size() < size) filler.append(kFiller);
  filler.resize(size);
  if (size >= 2) filler.replace(size - 2, 2, "\r\n");
  return filler;
}

// A status that carries no body (RFC 9110: 1xx, 204, 304).
bool Bodiless(int status) {
  return status < 200 || status == 204 || status == 304;
}

std::string Chunked(const std::string& body, bool terminated) {
  std::string wire;
  for (size_t at = 0; at < body.size(); at += kChunkBytes) {
    std::string chunk = body.substr(at, kChunkBytes);
    char size[16];
    std::snprintf(size, sizeof size, "%zx\r\n", chunk.size());
    wire += size + chunk + "\r\n";
  }
  if (terminated) wire += "0\r\n\r\n";
  return wire;
}

std::string FramingHeader(BodyFraming framing, size_t length) {
  switch (framing) {
    case BodyFraming::kLength:
      return "Content-Length: " + std::to_string(length) + "\r\n";
    case BodyFraming::kUntilClose:
      return "";
    case BodyFraming::kChunked:
    case BodyFraming::kChunkedUnterminated:
      return "Transfer-Encoding: chunked\r\n";
  }
  return "";
}

std::string FramedBody(BodyFraming framing, const std::string& body) {
  if (framing == BodyFraming::kChunked) return Chunked(body, true);
  if (framing == BodyFraming::kChunkedUnterminated) return Chunked(body, false);
  return body;
}

// Both halves of a fault that cuts an answer short: what may still be sent.
bool CutsShort(const Fault& fault) {
  return fault.action == FaultAction::kCloseMidBody || fault.action == FaultAction::kReset;
}

std::string PartHeader(const Fault& fault, size_t length) {
  return std::string(fault.boundaryBare ? "" : "--") + kBoundary +
         "\r\nContent-Type: image/jpeg\r\nContent-Length: " + std::to_string(length) + "\r\n\r\n";
}

std::string PushType(const Fault& fault) {
  std::string boundary = fault.boundaryQuoted ? std::string("\"") + kBoundary + "\"" : kBoundary;
  return "multipart/x-mixed-replace;boundary=" + boundary;
}

int RemainingMs(std::chrono::steady_clock::time_point deadline) {
  auto left =
      std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
  return left.count() < 0 ? 0 : static_cast<int>(left.count());
}

}  // namespace

void Device::Serve(Slot* slot) {
  int fd = slot->fd;
  int timeoutMs = 0;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    timeoutMs = config_.headTimeoutMs;
  }
  auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  std::string data;
  size_t headEnd = std::string::npos;
  WaitResult waited = WaitResult::kReady;
  while ((headEnd = FindHeadEnd(data)) == std::string::npos && data.size() <= kMaxHeadBytes) {
    waited = WaitReadable(fd, stopFd_, RemainingMs(deadline));
    if (waited != WaitResult::kReady) break;
    char buffer[4096];
    ssize_t got = recv(fd, buffer, sizeof buffer, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    data.append(buffer, static_cast<size_t>(got));
  }
  // The limit holds for the head as a whole, wherever a read ended.
  bool tooLong =
      headEnd == std::string::npos ? data.size() > kMaxHeadBytes : headEnd > kMaxHeadBytes;
  bool timedOut = headEnd == std::string::npos && waited == WaitResult::kTimeout;
  if (headEnd != std::string::npos || tooLong || (timedOut && !data.empty())) {
    HttpRequest request;
    int refusal = 0;
    if (tooLong) {
      refusal = 431;
    } else if (timedOut) {
      refusal = 408;
    } else if (!ParseRequestHead(data.substr(0, headEnd), &request)) {
      refusal = 400;
    }
    if (request.requestLine.empty()) {
      request.requestLine = data.substr(0, data.find_first_of("\r\n"));
    }
    ServeRequest(fd, slot->peer, request, refusal);
  } else if (timedOut) {
    // Nothing came at all: answered, but not a request to record.
    Refuse(fd, "", HttpRequest(), 408);
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
  {
    std::lock_guard<std::mutex> lock(mutex_);
    record.sequence = ++requestSequence_;
    ++requestCount_;
    records_.push_back(record);
    while (records_.size() > std::max<size_t>(config_.recordLimit, 1)) records_.pop_front();
    observer = observer_;
  }
  changed_.notify_all();
  if (observer) observer(record);
  return record.sequence;
}

void Device::SetRecordStatus(size_t sequence, int status) {
  std::lock_guard<std::mutex> lock(mutex_);
  for (auto it = records_.rbegin(); it != records_.rend(); ++it) {
    if (it->sequence == sequence) {
      it->status = status;
      return;
    }
  }
}

bool Device::TakeFault(const HttpRequest& request, Fault* fault) {
  std::lock_guard<std::mutex> lock(mutex_);
  for (const std::string& path : {request.path, std::string(kEveryPath)}) {
    auto found = faults_.find(path);
    if (found == faults_.end()) continue;
    std::vector<Fault>& list = found->second;
    for (auto it = list.begin(); it != list.end(); ++it) {
      if (!FaultMeets(*it, request.query)) continue;
      *fault = *it;
      if (it->times > 0 && --it->times == 0) list.erase(it);
      if (list.empty()) faults_.erase(found);
      return true;
    }
  }
  return false;
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
  bool stale = false;
  if (authenticator_.Check(credentials, request.method, request.target, origin, authorization,
                           &stale)) {
    return true;
  }
  *challenge = authenticator_.Challenge(credentials, stale);
  return false;
}

Reply Device::Dispatch(const HttpRequest& request) {
  std::lock_guard<std::mutex> lock(mutex_);
  sessions_.ExpireStale();
  DeviceState state;
  state.model = model_;
  state.values = config_.values;
  state.user = config_.user;
  state.password = config_.password;
  state.sessions = &sessions_;
  return Answer(state, request.path, request.query);
}

void Device::Refuse(int fd, const std::string& peer, const HttpRequest& request, int status) {
  if (!peer.empty()) SetRecordStatus(Record(peer, request), status);
  Reply reply;
  reply.status = status;
  reply.body = "ERROR=" + std::to_string(status) + "\r\n";
  SendText(fd, request, reply, Fault(), "");
  // The client may still be sending; closing on unread bytes would reset
  // the connection and lose the answer, so let it finish first.
  shutdown(fd, SHUT_WR);
  Pause(fd, stopFd_, kLingerMs);
}

void Device::ServeRequest(int fd, const std::string& peer, const HttpRequest& request,
                          int refusal) {
  if (refusal == 0 && request.method != "GET") refusal = 405;
  if (refusal != 0) {
    Refuse(fd, peer, request, refusal);
    return;
  }
  size_t sequence = Record(peer, request);
  Fault fault;
  bool faulty = TakeFault(request, &fault);
  if (faulty && fault.delayMs > 0 && Pause(fd, stopFd_, fault.delayMs) != WaitResult::kTimeout) {
    return;
  }
  if (!faulty) fault = Fault();
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
  Reply reply;
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
  SetRecordStatus(sequence, reply.status);
  // The stream starts before the answer goes out: whoever reads the answer
  // can count on it.
  if (reply.rtp.action != RtpAction::kNone && reply.status >= 200 && reply.status < 300) {
    OrderRtp(fd, reply.rtp, fault);
  }
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
  if (fault.action == FaultAction::kReset) ResetOnClose(fd);
}

bool Device::SendText(int fd, const HttpRequest& request, const Reply& reply, const Fault& fault,
                      const std::string& challenge) {
  std::string body = reply.body;
  if (!fault.omitKey.empty()) OmitKey(&body, fault.omitKey);
  if (fault.lateKeysAt > 0) body = Filler(fault.lateKeysAt) + body;
  if (fault.longBodyBytes > body.size()) body += Filler(fault.longBodyBytes - body.size());
  bool bodiless = Bodiless(reply.status);
  if (bodiless) body.clear();
  std::string extra = bodiless ? "" : FramingHeader(fault.framing, body.size());
  if (!challenge.empty()) extra += "WWW-Authenticate: " + challenge + "\r\n";
  std::string head = Head(request, reply.status, "text/plain", extra);
  std::string wire = FramedBody(fault.framing, body);
  if (CutsShort(fault)) return SendAll(fd, head + wire.substr(0, wire.size() / 2));
  if (fault.dripMs > 0) {
    if (!SendAll(fd, head)) return false;
    for (char byte : wire) {
      if (Pause(fd, stopFd_, fault.dripMs) != WaitResult::kTimeout) return false;
      if (!SendAll(fd, &byte, 1)) return false;
    }
    return true;
  }
  return SendAll(fd, head + wire);
}

void Device::ServePush(int fd, const HttpRequest& request, const Reply& reply, const Fault& fault) {
  int gray = Values().gray;
  std::string picture = MakeGrayJpeg(reply.size.width, reply.size.height, gray);
  std::string part = PartHeader(fault, picture.size()) + picture + "\r\n";
  if (!SendAll(fd, Head(request, 200, PushType(fault), ""))) return;
  if (CutsShort(fault)) {
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
    if (fault.action == FaultAction::kPushEnd && sent >= fault.framesBeforeStall) {
      SendAll(fd, std::string(fault.boundaryBare ? "" : "--") + kBoundary + "--\r\n");
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
    if (fault.action == FaultAction::kPushEnd && sent >= fault.framesBeforeStall) return;
    for (size_t i = 0; i < chunk.size(); ++i) {
      chunk[i] = static_cast<char>((sent * kAudioChunk + i) & 0xFF);
    }
    size_t size = CutsShort(fault) ? chunk.size() / 2 : chunk.size();
    if (!SendAll(fd, chunk.data(), size) || CutsShort(fault)) return;
    if (Pause(fd, stopFd_, kAudioIntervalMs) != WaitResult::kTimeout) return;
  }
}

// Where a camera sends its stream: to the multicast group and port of its
// set-up reply (delivery "multi"); to the requester's address at the
// unicast port of its set-up reply, aInPort= for audio (delivery
// "uni_manual"); else to the requester's address at the port of the start
// line. A recorder always sends to the requester at the line's PORT=.
void Device::OrderRtp(int fd, const RtpOrder& order, const Fault& fault) {
  if (order.action == RtpAction::kStop) {
    rtp_->StopStream(order.key);
    return;
  }
  ReplyValues values = Values();
  sockaddr_storage destination{};
  socklen_t length = sizeof destination;
  int port = order.port;
  if (!order.recorder && values.delivery == "multi") {
    port = values.multiPort;
    const auto& octets = values.multiAddress;
    std::string group = std::to_string(octets[0]) + "." + std::to_string(octets[1]) + "." +
                        std::to_string(octets[2]) + "." + std::to_string(octets[3]);
    if (!values.multiAddressV6.empty() &&
        MakeAddress(values.multiAddressV6, 0, &destination, &length) &&
        destination.ss_family == AF_INET6) {
      group = values.multiAddressV6;
    }
    if (port < 1 || port > 65535 ||
        !MakeAddress(group, static_cast<uint16_t>(port), &destination, &length)) {
      return;
    }
  } else {
    if (!order.recorder && values.delivery == "uni_manual") {
      port = order.codec == MediaCodec::kG726 ? values.audioInPort : values.uniPort;
    }
    if (port < 1 || port > 65535 ||
        getpeername(fd, reinterpret_cast<sockaddr*>(&destination), &length) != 0) {
      return;
    }
    if (destination.ss_family == AF_INET6) {
      reinterpret_cast<sockaddr_in6*>(&destination)->sin6_port = htons(static_cast<uint16_t>(port));
    } else {
      reinterpret_cast<sockaddr_in*>(&destination)->sin_port = htons(static_cast<uint16_t>(port));
    }
  }
  RtpPlan plan;
  plan.stallAfter = fault.rtpStallAfter;
  plan.resumeMs = fault.rtpResumeMs;
  plan.endAfter = fault.rtpEndAfter;
  std::string error;
  rtp_->Start(order.key, order.codec, destination, plan, &error);
}

void Device::HoldOpen(int fd) {
  Pause(fd, stopFd_, -1);
}

}  // namespace camsim
