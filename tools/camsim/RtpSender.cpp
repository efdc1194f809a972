#include "RtpSender.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <set>
#include <tuple>

#include "Rtp.h"
#include "Socket.h"

namespace camsim {

namespace {

// While streams run, the sender looks at least this often whether their
// UIDs are still known, also while every one of them is stalled.
constexpr std::chrono::milliseconds kUidCheckInterval{100};
// A sender that fell further behind than this skips the frames it missed
// instead of sending them in a burst.
constexpr std::chrono::milliseconds kMostBehind{1000};

bool IsMulticast(const sockaddr_storage& address) {
  if (address.ss_family == AF_INET) {
    const auto* v4 = reinterpret_cast<const sockaddr_in*>(&address);
    return IN_MULTICAST(ntohl(v4->sin_addr.s_addr));
  }
  if (address.ss_family == AF_INET6) {
    const auto* v6 = reinterpret_cast<const sockaddr_in6*>(&address);
    return IN6_IS_ADDR_MULTICAST(&v6->sin6_addr);
  }
  return false;
}

socklen_t LengthOf(const sockaddr_storage& address) {
  return address.ss_family == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
}

// The interface that carries an IPv6 address, by index; 0 when none does.
unsigned InterfaceOf(const in6_addr& address) {
  ifaddrs* list = nullptr;
  if (getifaddrs(&list) != 0) return 0;
  unsigned index = 0;
  for (ifaddrs* entry = list; entry != nullptr && index == 0; entry = entry->ifa_next) {
    if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_INET6) continue;
    const auto* v6 = reinterpret_cast<const sockaddr_in6*>(entry->ifa_addr);
    if (std::memcmp(&v6->sin6_addr, &address, sizeof address) == 0) {
      index = if_nametoindex(entry->ifa_name);
    }
  }
  freeifaddrs(list);
  return index;
}

// Multicast leaves through the interface of the device's own address, or
// through the loopback interface when the device listens on a loopback or
// wildcard address (or one of the other family). On the loopback interface
// the TTL (hop limit) is 0: the packets reach this host's receivers only.
bool SetMulticastOptions(int fd, int family, const std::string& deviceAddress, std::string* error) {
  sockaddr_storage own{};
  socklen_t ownLength = 0;
  bool haveOwn = MakeAddress(deviceAddress, 0, &own, &ownLength) && own.ss_family == family;
  int loop = 1;
  if (family == AF_INET) {
    in_addr interfaceAddress{};
    interfaceAddress.s_addr = htonl(INADDR_LOOPBACK);
    if (haveOwn) {
      const auto* v4 = reinterpret_cast<const sockaddr_in*>(&own);
      if (v4->sin_addr.s_addr != htonl(INADDR_ANY)) interfaceAddress = v4->sin_addr;
    }
    unsigned char ttl = (ntohl(interfaceAddress.s_addr) >> 24) == 127 ? 0 : 1;
    unsigned char loopByte = 1;
    if (setsockopt(fd, IPPROTO_IP, IP_MULTICAST_IF, &interfaceAddress, sizeof interfaceAddress) !=
            0 ||
        setsockopt(fd, IPPROTO_IP, IP_MULTICAST_TTL, &ttl, sizeof ttl) != 0 ||
        setsockopt(fd, IPPROTO_IP, IP_MULTICAST_LOOP, &loopByte, sizeof loopByte) != 0) {
      *error = std::string("multicast options: ") + std::strerror(errno);
      return false;
    }
    return true;
  }
  unsigned loopback = if_nametoindex("lo");
  unsigned index = loopback;
  if (haveOwn) {
    const auto* v6 = reinterpret_cast<const sockaddr_in6*>(&own);
    if (!IN6_IS_ADDR_UNSPECIFIED(&v6->sin6_addr) && !IN6_IS_ADDR_LOOPBACK(&v6->sin6_addr)) {
      unsigned found = InterfaceOf(v6->sin6_addr);
      if (found != 0) index = found;
    }
  }
  int hops = index == loopback ? 0 : 1;
  if (setsockopt(fd, IPPROTO_IPV6, IPV6_MULTICAST_IF, &index, sizeof index) != 0 ||
      setsockopt(fd, IPPROTO_IPV6, IPV6_MULTICAST_HOPS, &hops, sizeof hops) != 0 ||
      setsockopt(fd, IPPROTO_IPV6, IPV6_MULTICAST_LOOP, &loop, sizeof loop) != 0) {
    *error = std::string("multicast options: ") + std::strerror(errno);
    return false;
  }
  return true;
}

// A UDP socket for one stream. Its source is the device's own address when
// the family fits and the address is not a wildcard, else the system's choice.
int OpenUdp(const sockaddr_storage& destination, const std::string& deviceAddress,
            std::string* error) {
  int family = destination.ss_family;
  int fd = socket(family, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (fd < 0) {
    *error = std::string("socket: ") + std::strerror(errno);
    return -1;
  }
  sockaddr_storage own{};
  socklen_t ownLength = 0;
  if (MakeAddress(deviceAddress, 0, &own, &ownLength) && own.ss_family == family) {
    bool wildcard =
        family == AF_INET
            ? reinterpret_cast<sockaddr_in*>(&own)->sin_addr.s_addr == htonl(INADDR_ANY)
            : IN6_IS_ADDR_UNSPECIFIED(&reinterpret_cast<sockaddr_in6*>(&own)->sin6_addr);
    if (!wildcard && bind(fd, reinterpret_cast<sockaddr*>(&own), ownLength) != 0) {
      *error = std::string("bind: ") + std::strerror(errno);
      close(fd);
      return -1;
    }
  }
  if (IsMulticast(destination) && !SetMulticastOptions(fd, family, deviceAddress, error)) {
    close(fd);
    return -1;
  }
  return fd;
}

std::string Hex(uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "%08x", value);
  return text;
}

}  // namespace

bool RtpStreamKey::operator<(const RtpStreamKey& other) const {
  return std::tie(uid, kind, channel, stream) <
         std::tie(other.uid, other.kind, other.channel, other.stream);
}

struct RtpSender::Stream {
  RtpStreamInfo info;
  sockaddr_storage destination{};
  int fd = -1;
  const MediaClip* clip = nullptr;
  uint32_t firstTimestamp = 0;
  uint32_t clockPerTick = 0;
  Clock::duration interval{};
  Clock::time_point started;
  uint64_t tick = 0;     // the next tick to send; it is due at started + tick * interval
  size_t position = 0;   // the clip's next frame
  bool markNext = true;  // audio: the first packet of a talk-spurt carries the marker
  RtpPlan plan;
  bool ended = false;
  bool resumeByItself = false;
  Clock::time_point resumeAt;

  ~Stream() {
    if (fd >= 0) close(fd);
  }
  Clock::time_point Due() const { return started + interval * static_cast<long>(tick); }
};

RtpSender::RtpSender(const std::string& deviceAddress, UidCheck alive)
    : deviceAddress_(deviceAddress), alive_(std::move(alive)), random_(std::random_device()()) {
  thread_ = std::thread(&RtpSender::Run, this);
}

RtpSender::~RtpSender() {
  Stop();
}

void RtpSender::Stop() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (stopping_) return;
    stopping_ = true;
    for (auto& entry : streams_) Note(*entry.second, "stopped with the device");
    streams_.clear();
  }
  changed_.notify_all();
  sent_.notify_all();
  if (thread_.joinable()) thread_.join();
  Tell();
}

bool RtpSender::Start(const RtpStreamKey& key, MediaCodec codec,
                      const sockaddr_storage& destination, const RtpPlan& plan,
                      std::string* error) {
  int fd = OpenUdp(destination, deviceAddress_, error);
  if (fd < 0) return false;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (stopping_) {
      close(fd);
      *error = "device stopped";
      return false;
    }
    auto now = Clock::now();
    auto found = streams_.find(key);
    Stream* stream = found == streams_.end() ? nullptr : found->second.get();
    // A stream that ended (or changed its codec) begins anew.
    if (stream != nullptr && (stream->ended || stream->info.codec != codec)) {
      streams_.erase(found);
      stream = nullptr;
    }
    bool fresh = stream == nullptr;
    if (fresh) {
      auto created = std::make_unique<Stream>();
      stream = created.get();
      const RtpCodecInfo& codecInfo = CodecInfo(codec);
      stream->clip = &ClipOf(codec);
      stream->info.key = key;
      stream->info.codec = codec;
      stream->info.payloadType = codecInfo.payloadType;
      stream->info.clockRate = codecInfo.clockRate;
      stream->info.ssrc = static_cast<uint32_t>(random_());
      stream->info.nextSequence = static_cast<uint16_t>(random_());
      stream->firstTimestamp = static_cast<uint32_t>(random_());
      stream->clockPerTick =
          static_cast<uint32_t>(codecInfo.clockRate / stream->clip->ticksPerSecond);
      stream->interval = std::chrono::duration_cast<Clock::duration>(std::chrono::seconds(1)) /
                         stream->clip->ticksPerSecond;
      stream->started = now;
      streams_[key] = std::move(created);
      stream->fd = fd;
    } else {
      close(stream->fd);
      stream->fd = fd;
    }
    stream->destination = destination;
    stream->info.destination = AddressText(destination);
    stream->info.multicast = IsMulticast(destination);
    Note(*stream, fresh ? "started" : "started again");
    if (stream->info.stalled) ResumeStream(stream, now);
    stream->plan = plan;
    if (plan.endAfter == 0) {
      stream->ended = true;
    } else if (plan.stallAfter == 0) {
      StallStream(stream, now);
    }
  }
  changed_.notify_all();
  Tell();
  return true;
}

bool RtpSender::StopStream(const RtpStreamKey& key) {
  bool found = false;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = streams_.find(key);
    if (it != streams_.end()) {
      Note(*it->second, "stopped");
      streams_.erase(it);
      found = true;
    }
  }
  changed_.notify_all();
  Tell();
  return found;
}

size_t RtpSender::ForEachOf(int uid, const std::function<bool(Stream*)>& change) {
  size_t changed = 0;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto& entry : streams_) {
      if (uid != kEveryUid && entry.first.uid != uid) continue;
      if (change(entry.second.get())) ++changed;
    }
  }
  changed_.notify_all();
  Tell();
  return changed;
}

size_t RtpSender::Stall(int uid) {
  return ForEachOf(uid, [this](Stream* stream) {
    if (stream->info.stalled || stream->ended) return false;
    StallStream(stream, Clock::now());
    stream->resumeByItself = false;
    return true;
  });
}

size_t RtpSender::Resume(int uid) {
  return ForEachOf(uid, [this](Stream* stream) {
    if (!stream->info.stalled || stream->ended) return false;
    ResumeStream(stream, Clock::now());
    return true;
  });
}

size_t RtpSender::End(int uid) {
  return ForEachOf(uid, [](Stream* stream) {
    if (stream->ended) return false;
    stream->ended = true;
    return true;
  });
}

std::vector<RtpStreamInfo> RtpSender::Streams() const {
  std::lock_guard<std::mutex> lock(mutex_);
  std::vector<RtpStreamInfo> streams;
  for (const auto& entry : streams_) {
    if (!entry.second->ended) streams.push_back(entry.second->info);
  }
  return streams;
}

std::map<std::string, uint64_t> RtpSender::PacketsByDestination() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return packetsTo_;
}

uint64_t RtpSender::PacketsSent() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return packetsSent_;
}

bool RtpSender::WaitForPackets(const std::string& destination, uint64_t count,
                               std::chrono::milliseconds timeout) const {
  std::unique_lock<std::mutex> lock(mutex_);
  return sent_.wait_for(lock, timeout, [&] {
    auto found = packetsTo_.find(destination);
    return found != packetsTo_.end() && found->second >= count;
  });
}

void RtpSender::SetObserver(Observer observer) {
  std::lock_guard<std::mutex> tell(tellMutex_);
  std::lock_guard<std::mutex> lock(mutex_);
  observer_ = std::move(observer);
}

void RtpSender::Note(const Stream& stream, const std::string& what) {
  if (!observer_) return;
  const RtpStreamInfo& info = stream.info;
  std::string event = "RTP " + std::string(CodecInfo(info.codec).name) + " UID " +
                      std::to_string(info.key.uid) + " to " + info.destination + " SSRC " +
                      Hex(info.ssrc) + " " + what;
  if (info.frames > 0) {
    event += " (" + std::to_string(info.frames) + " frames, " + std::to_string(info.packets) +
             " packets sent)";
  }
  events_.push_back(event);
}

void RtpSender::Tell() {
  std::lock_guard<std::mutex> tell(tellMutex_);
  std::vector<std::string> events;
  Observer observer;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    events.swap(events_);
    observer = observer_;
  }
  if (!observer) return;
  for (const std::string& event : events) observer(event);
}

void RtpSender::StallStream(Stream* stream, Clock::time_point now) {
  stream->info.stalled = true;
  stream->resumeByItself = stream->plan.resumeMs > 0;
  stream->resumeAt = now + std::chrono::milliseconds(stream->plan.resumeMs);
  stream->plan.stallAfter = -1;
  Note(*stream, "stalled");
}

void RtpSender::ResumeStream(Stream* stream, Clock::time_point now) {
  stream->info.stalled = false;
  stream->resumeByItself = false;
  // The clock ran on while nothing was sent: the next tick is the one due now.
  auto elapsed = now - stream->started;
  stream->tick =
      static_cast<uint64_t>((elapsed + stream->interval - Clock::duration(1)) / stream->interval);
  // A receiver that lost the stream can decode again from a key frame.
  const std::vector<MediaFrame>& frames = stream->clip->frames;
  for (size_t step = 0; step < frames.size(); ++step) {
    size_t at = (stream->position + step) % frames.size();
    if (frames[at].key) {
      stream->position = at;
      break;
    }
  }
  stream->markNext = true;
  Note(*stream, "resumed");
}

void RtpSender::SendFrame(Stream* stream) {
  const MediaFrame& frame = stream->clip->frames[stream->position];
  stream->position = (stream->position + 1) % stream->clip->frames.size();
  uint32_t timestamp =
      stream->firstTimestamp + static_cast<uint32_t>(stream->tick * stream->clockPerTick);
  for (RtpPayload& payload : Packetize(stream->info.codec, frame)) {
    bool marker = payload.marker;
    if (stream->info.codec == MediaCodec::kG726) {
      marker = stream->markNext;
      stream->markNext = false;
    }
    std::string packet = RtpHeader(marker, stream->info.payloadType, stream->info.nextSequence++,
                                   timestamp, stream->info.ssrc) +
                         payload.bytes;
    ssize_t sent = sendto(stream->fd, packet.data(), packet.size(), MSG_NOSIGNAL,
                          reinterpret_cast<const sockaddr*>(&stream->destination),
                          LengthOf(stream->destination));
    if (sent == static_cast<ssize_t>(packet.size())) {
      ++stream->info.packets;
      stream->info.bytes += packet.size();
      ++packetsTo_[stream->info.destination];
      ++packetsSent_;
    } else {
      ++stream->info.sendErrors;
    }
  }
  ++stream->info.frames;
  ++stream->tick;
}

void RtpSender::SendDue(Stream* stream, Clock::time_point now) {
  if (now - stream->Due() > kMostBehind) {
    stream->tick = static_cast<uint64_t>((now - stream->started) / stream->interval);
  }
  while (!stream->ended && !stream->info.stalled && stream->Due() <= now) {
    SendFrame(stream);
    if (stream->plan.endAfter > 0 && --stream->plan.endAfter == 0) stream->ended = true;
    if (stream->plan.stallAfter > 0 && --stream->plan.stallAfter == 0) StallStream(stream, now);
  }
}

void RtpSender::Run() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!stopping_) {
    // Streams whose session the device no longer knows end with it.
    std::set<int> uids;
    for (const auto& entry : streams_) uids.insert(entry.first.uid);
    if (!uids.empty()) {
      lock.unlock();
      std::set<int> gone;
      for (int uid : uids) {
        if (!alive_(uid)) gone.insert(uid);
      }
      lock.lock();
      for (auto it = streams_.begin(); it != streams_.end();) {
        if (gone.count(it->first.uid) != 0) {
          Note(*it->second, "ended with its UID");
          it = streams_.erase(it);
        } else {
          ++it;
        }
      }
    }
    auto now = Clock::now();
    auto next = now + kUidCheckInterval;
    bool sentAny = false;
    for (auto it = streams_.begin(); it != streams_.end();) {
      Stream* stream = it->second.get();
      if (stream->info.stalled && stream->resumeByItself && now >= stream->resumeAt) {
        ResumeStream(stream, now);
      }
      uint64_t before = stream->info.packets;
      SendDue(stream, now);
      sentAny = sentAny || stream->info.packets != before;
      if (stream->ended) {
        Note(*stream, "ended");
        it = streams_.erase(it);
        continue;
      }
      if (!stream->info.stalled && stream->Due() < next) next = stream->Due();
      if (stream->info.stalled && stream->resumeByItself && stream->resumeAt < next) {
        next = stream->resumeAt;
      }
      ++it;
    }
    if (sentAny) sent_.notify_all();
    if (!events_.empty()) {
      lock.unlock();
      Tell();
      lock.lock();
      continue;
    }
    // A stop that came while the lock was let go (the UID check, the
    // observer) has notified no one: it is not waited for.
    if (stopping_) break;
    if (streams_.empty()) {
      changed_.wait(lock);
    } else {
      changed_.wait_until(lock, next);
    }
  }
}

}  // namespace camsim
