// The session calls of the device's HTTP client: one request per
// connection, answered authentication, and the server-push readers.
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <unordered_map>

#include "kxhttp_internal.h"

namespace kxhttp {
namespace {

struct SessionImpl {
  ~SessionImpl() {
    int socketFd = fd.exchange(-1);
    if (socketFd >= 0) close(socketFd);
  }
  std::mutex lock;  // one call at a time per session
  // Guards a change of fd against the shutdown by a close on another thread.
  std::mutex socketLock;
  std::atomic<bool> closed{false};
  Endpoint camera;
  std::optional<Endpoint> proxy;
  long connectTimeoutMs = 0;  // as given; scaled when used
  std::atomic<int> fd{-1};
  // The record's copy of fd (iSocket), for callers that take the socket
  // from the record; written with fd under socketLock, and never once the
  // session is closed (the record may then be retired).
  HTTP_SESSION* head = nullptr;
  bool connectionUsed = false;  // a request went out on fd
  bool hasUrl = false;
  RequestLine line;
  std::vector<Header> headers;
  bool hasCredentials = false;
  std::string user;
  std::string password;
  SocketSource source{-1};
  InputBuffer input;
  std::unique_ptr<MultipartReader> multipart;
  std::shared_ptr<const std::vector<unsigned char>> lastPart;  // under socketLock
  bool pushReady = false;  // status and headers of a push were read
  ResponseHead pushHead;
};

using PartBytes = std::shared_ptr<const std::vector<unsigned char>>;

// A closed session's record, and the last part it delivered, stay this
// long and for this many later closes before their memory may be reused:
// a reader on another thread may still be busy with that part, or just
// entering a call with the closed handle.
constexpr size_t kRetiredRecords = 64;
constexpr auto kRetiredTime = std::chrono::seconds(10);

// The record handed out: the device's head, and the host text it points to.
struct SessionRecord {
  HTTP_SESSION head{};
  std::string host;
};
static_assert(sizeof(HTTP_SESSION) >= HTTP_SESSION_INFO_SIZE, "session head too short");

// Marks the session closed and wakes a call that waits on its socket; the
// socket itself is closed when the last call has left. Returns the last
// part delivered.
PartBytes shut_down(SessionImpl& impl) {
  std::lock_guard<std::mutex> guard(impl.socketLock);
  impl.closed.store(true);
  int fd = impl.fd.load();
  if (fd >= 0) shutdown(fd, SHUT_RDWR);
  return std::move(impl.lastPart);
}

// Hands a part to the caller unless the session was closed meanwhile: the
// storage it lies in then outlives the session for a reader still busy
// with it.
bool deliver_part(SessionImpl& impl, const PartBytes& storage) {
  std::lock_guard<std::mutex> guard(impl.socketLock);
  if (impl.closed.load()) return false;
  impl.lastPart = storage;
  return true;
}

// The open sessions, by the handle handed out. A call finds its session
// here and holds a reference for its duration, so that a close on another
// thread never frees a session under a call: the last reference frees it.
// The handle is never read through, so a closed or foreign handle is only
// not found.
class SessionRegistry {
 public:
  HTTP_SESSION* add(std::unique_ptr<SessionRecord> record, std::shared_ptr<SessionImpl> impl) {
    HTTP_SESSION* handle = &record->head;
    std::lock_guard<std::mutex> guard(mutex_);
    live_.emplace(handle, Live{std::move(record), std::move(impl)});
    return handle;
  }
  std::shared_ptr<SessionImpl> find(const HTTP_SESSION* handle) {
    std::lock_guard<std::mutex> guard(mutex_);
    auto found = live_.find(handle);
    return found == live_.end() ? nullptr : found->second.impl;
  }
  // Takes the session out and shuts it down; null when the handle is not
  // an open session.
  std::shared_ptr<SessionImpl> remove(const HTTP_SESSION* handle) {
    std::lock_guard<std::mutex> guard(mutex_);
    auto found = live_.find(handle);
    if (found == live_.end()) return nullptr;
    std::shared_ptr<SessionImpl> impl = std::move(found->second.impl);
    Clock::time_point now = Clock::now();
    retired_.push_back(Retired{std::move(found->second.record), shut_down(*impl), now});
    live_.erase(found);
    while (retired_.size() > kRetiredRecords && now - retired_.front().since > kRetiredTime) {
      retired_.pop_front();
    }
    for (Retired& old : retired_) {
      if (now - old.since <= kRetiredTime) break;
      old.lastPart.reset();
    }
    return impl;
  }

 private:
  struct Live {
    std::unique_ptr<SessionRecord> record;
    std::shared_ptr<SessionImpl> impl;
  };
  struct Retired {
    std::unique_ptr<SessionRecord> record;
    PartBytes lastPart;
    Clock::time_point since;
  };
  std::mutex mutex_;
  std::unordered_map<const HTTP_SESSION*, Live> live_;
  std::deque<Retired> retired_;
};

SessionRegistry& registry() {
  static SessionRegistry sessions;
  return sessions;
}

// A call's hold on its session: found, referenced and locked for the call,
// or nothing when the handle is not, or no longer, an open session.
class SessionCall {
 public:
  explicit SessionCall(const HTTP_SESSION* handle) : impl_(registry().find(handle)) {
    if (!impl_) return;
    guard_ = std::unique_lock<std::mutex>(impl_->lock);
    if (!impl_->closed.load()) return;
    guard_.unlock();
    impl_.reset();
  }
  explicit operator bool() const { return impl_ != nullptr; }
  SessionImpl& operator*() const { return *impl_; }
  SessionImpl* operator->() const { return impl_.get(); }

 private:
  std::shared_ptr<SessionImpl> impl_;  // released after the lock below
  std::unique_lock<std::mutex> guard_;
};

// Keeps the record's iSocket equal to fd; the caller holds socketLock.
void publish_socket(SessionImpl& impl, int fd) {
  if (impl.head != nullptr && !impl.closed.load()) {
    __atomic_store_n(&impl.head->iSocket, fd, __ATOMIC_RELEASE);
  }
}

void close_connection(SessionImpl& impl) {
  {
    std::lock_guard<std::mutex> guard(impl.socketLock);
    int fd = impl.fd.exchange(-1);
    publish_socket(impl, -1);
    if (fd >= 0) close(fd);
  }
  impl.input.clear();
  impl.multipart.reset();
  impl.pushReady = false;
}

const Endpoint& connect_target(const SessionImpl& impl) {
  return impl.proxy ? *impl.proxy : impl.camera;
}

// A fresh connection for the next request. 0 or a result code.
uint32_t reconnect(SessionImpl& impl, Deadline deadline) {
  close_connection(impl);
  long timeout =
      std::min<long>(scaled_timeout_ms(impl.connectTimeoutMs), std::max(remaining_ms(deadline), 0));
  uint32_t code = 0;
  int fd = connect_endpoint(connect_target(impl), timeout, code);
  if (fd < 0) return code;
  std::lock_guard<std::mutex> guard(impl.socketLock);
  if (impl.closed.load()) {
    close(fd);
    return HTTP_ERR_CLOSED;
  }
  impl.fd.store(fd);
  publish_socket(impl, fd);
  impl.connectionUsed = false;
  return 0;
}

// The path of the URL, which Digest signs (a proxy forwards it that way).
std::string digest_uri(const std::string& url) {
  if (url.compare(0, 7, "http://") != 0) return url;
  size_t slash = url.find('/', 7);
  return slash == std::string::npos ? std::string("/") : url.substr(slash);
}

uint32_t send_request(SessionImpl& impl, Deadline deadline, const std::string& authorization) {
  if (impl.connectionUsed || impl.fd.load() < 0) {
    uint32_t code = reconnect(impl, deadline);
    if (code != 0) return code;
  }
  impl.connectionUsed = true;
  impl.input.clear();
  impl.source = SocketSource(impl.fd.load());
  impl.input.source = &impl.source;
  std::string target =
      request_target(impl.line.url, impl.camera.host, impl.camera.port, impl.proxy.has_value());
  std::string request = build_request(impl.line, target, impl.headers, impl.camera.host,
                                      impl.camera.port, authorization);
  return send_all(impl.fd.load(), request, deadline);
}

// The answer to a 401 challenge, or empty when it cannot be answered.
std::string answer_challenge(const SessionImpl& impl, const ResponseHead& head) {
  Challenge challenge = choose_challenge(head.headers);
  switch (challenge.scheme) {
    case Challenge::Scheme::kBasic:
      return basic_authorization(impl.user, impl.password);
    case Challenge::Scheme::kDigest:
      return digest_authorization(challenge, impl.user, impl.password, impl.line.method,
                                  digest_uri(impl.line.url), random_cnonce());
    case Challenge::Scheme::kNone:
      break;
  }
  return std::string();
}

// Sends the request and reads the head of the answer, answering one
// authentication challenge on a new connection. 0 or a result code.
uint32_t exchange(SessionImpl& impl, Deadline deadline, ResponseHead& head) {
  if (!impl.hasUrl) return HTTP_ERR_STATE;
  uint32_t code = send_request(impl, deadline, std::string());
  if (code == 0) code = read_response_head(impl.input, deadline, head);
  if (code != 0 || head.status != 401 || !impl.hasCredentials) return code;
  std::string authorization = answer_challenge(impl, head);
  if (authorization.empty()) return HTTP_ERR_AUTH;
  close_connection(impl);
  code = send_request(impl, deadline, authorization);
  if (code == 0) code = read_response_head(impl.input, deadline, head);
  return code;
}

// The requesters always pass 30000 ms and 5 s; a time-out of zero or less
// falls back to those.
constexpr long kDefaultConnectTimeoutMs = 30000;
constexpr long kDefaultResponseTimeoutSec = 5;

long response_timeout_ms(int timeoutSec) {
  long seconds = timeoutSec > 0 ? timeoutSec : kDefaultResponseTimeoutSec;
  return scaled_timeout_ms(seconds * 1000L);
}

std::string strip_brackets(const char* host) {
  std::string text = host;
  if (text.size() >= 2 && text.front() == '[' && text.back() == ']') {
    text = text.substr(1, text.size() - 2);
  }
  return text;
}

}  // namespace
}  // namespace kxhttp

using kxhttp::SessionImpl;
using kxhttp::SessionRecord;

extern "C" {

HTTP_SESSION* http_open_session_to_ret(const char* pcHost, unsigned short usPort,
                                       const char* pcProxyHost, unsigned short usProxyPort,
                                       int /*iReserved5*/, int iTimeoutMs, int /*iReserved7*/) {
  if (pcHost == nullptr || *pcHost == '\0') return nullptr;
  std::shared_ptr<SessionImpl> impl;
  std::unique_ptr<SessionRecord> record;
  try {
    impl = std::make_shared<SessionImpl>();
    record = std::make_unique<SessionRecord>();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  record->host = pcHost;
  impl->camera = kxhttp::Endpoint{kxhttp::strip_brackets(pcHost), usPort, true};
  if (pcProxyHost != nullptr && *pcProxyHost != '\0') {
    impl->proxy = kxhttp::Endpoint{kxhttp::strip_brackets(pcProxyHost), usProxyPort, false};
  }
  impl->connectTimeoutMs = iTimeoutMs > 0 ? iTimeoutMs : kxhttp::kDefaultConnectTimeoutMs;
  uint32_t code = 0;
  int fd = kxhttp::connect_endpoint(kxhttp::connect_target(*impl),
                                    kxhttp::scaled_timeout_ms(impl->connectTimeoutMs), code);
  if (fd < 0) return nullptr;
  impl->fd.store(fd);
  record->head.pcHost = &record->host[0];
  record->head.usPort = usPort;
  record->head.iSocket = fd;
  impl->head = &record->head;
  return kxhttp::registry().add(std::move(record), std::move(impl));
}

uint32_t http_set_url(HTTP_SESSION* psSession, const char* pcMethod, const char* pcUrl,
                      const char* pcVersion) {
  if (!kxhttp::is_token(pcMethod) || !kxhttp::is_request_target(pcUrl) ||
      !kxhttp::is_request_target(pcVersion)) {
    return HTTP_ERR_PARAM;
  }
  kxhttp::SessionCall impl(psSession);
  if (!impl) return HTTP_ERR_PARAM;
  impl->line = kxhttp::RequestLine{pcMethod, pcUrl, pcVersion};
  impl->hasUrl = true;
  return HTTP_RESULT_OK;
}

uint32_t http_add_header(HTTP_SESSION* psSession, const char* pcName, const char* pcValue) {
  if (!kxhttp::is_token(pcName) || !kxhttp::is_field_value(pcValue)) return HTTP_ERR_PARAM;
  kxhttp::SessionCall impl(psSession);
  if (!impl) return HTTP_ERR_PARAM;
  impl->headers.push_back(kxhttp::Header{pcName, pcValue});
  return HTTP_RESULT_OK;
}

uint32_t http_set_auth(HTTP_SESSION* psSession, const char* pcUser, const char* pcPassword) {
  if (pcUser == nullptr || std::strchr(pcUser, ':') != nullptr || !kxhttp::is_field_value(pcUser) ||
      (pcPassword != nullptr && !kxhttp::is_field_value(pcPassword))) {
    return HTTP_ERR_PARAM;
  }
  kxhttp::SessionCall impl(psSession);
  if (!impl) return HTTP_ERR_PARAM;
  impl->hasCredentials = true;
  impl->user = pcUser;
  impl->password = pcPassword != nullptr ? pcPassword : "";
  return HTTP_RESULT_OK;
}

uint32_t http_do_request(HTTP_SESSION* psSession, _InetBuffer* psBuf, int iTimeoutSec) {
  if (psBuf == nullptr || psBuf->pcBuffer == nullptr || psBuf->ulSize == 0) return HTTP_ERR_PARAM;
  kxhttp::SessionCall impl(psSession);
  if (!impl) return HTTP_ERR_PARAM;
  psBuf->pcBuffer[0] = '\0';
  psBuf->ulLength = 0;
  psBuf->ulStatus = 0;
  impl->multipart.reset();
  impl->pushReady = false;
  impl->input.set_read_bytes(kxhttp::InputBuffer::kRequestReadBytes);
  kxhttp::Deadline deadline = kxhttp::deadline_after_ms(kxhttp::response_timeout_ms(iTimeoutSec));
  kxhttp::ResponseHead head;
  uint32_t code = kxhttp::exchange(*impl, deadline, head);
  if (code != 0) return code;
  size_t stored = 0;
  bool headRequest = impl->line.method == "HEAD";
  code = kxhttp::read_response_body(impl->input, deadline, head, headRequest, psBuf->pcBuffer,
                                    psBuf->ulSize, stored);
  psBuf->ulLength = static_cast<uint32_t>(stored);
  psBuf->ulStatus = static_cast<uint32_t>(head.status);
  return code != 0 ? code : kxhttp::code_for_status(head.status);
}

uint32_t http_do_server_push(HTTP_SESSION* psSession, int iTimeoutSec) {
  kxhttp::SessionCall impl(psSession);
  if (!impl) return HTTP_ERR_PARAM;
  impl->multipart.reset();
  impl->pushReady = false;
  impl->input.set_read_bytes(kxhttp::InputBuffer::kPushReadBytes);
  kxhttp::Deadline deadline = kxhttp::deadline_after_ms(kxhttp::response_timeout_ms(iTimeoutSec));
  kxhttp::ResponseHead head;
  uint32_t code = kxhttp::exchange(*impl, deadline, head);
  if (code != 0) return code;
  impl->pushHead = head;
  impl->pushReady = true;
  return kxhttp::code_for_status(head.status);
}

int http_close_session(HTTP_SESSION* psSession) {
  std::shared_ptr<SessionImpl> impl = kxhttp::registry().remove(psSession);
  if (!impl) return -1;
  // The registry shut the socket down: a reader of the push on another
  // thread wakes now and leaves. The session goes with the last reference.
  return 0;
}

int http_session_socket(HTTP_SESSION* psSession) {
  std::shared_ptr<SessionImpl> impl = kxhttp::registry().find(psSession);
  return impl ? impl->fd.load() : -1;
}

uint32_t http_push_next_part(HTTP_SESSION* psSession, HTTP_PUSH_PART* psPart, int iTimeoutMs) {
  if (psSession == nullptr || psPart == nullptr) return HTTP_ERR_PARAM;
  std::memset(psPart, 0, sizeof *psPart);
  kxhttp::SessionCall impl(psSession);
  if (!impl) return HTTP_ERR_CLOSED;
  if (!impl->pushReady) return HTTP_ERR_STATE;
  if (!impl->multipart) {
    const std::string* type = kxhttp::find_header(impl->pushHead.headers, "Content-Type");
    std::string boundary = type ? kxhttp::boundary_from_content_type(*type) : std::string();
    if (boundary.empty()) return HTTP_ERR_PROTOCOL;
    impl->multipart = std::make_unique<kxhttp::MultipartReader>(boundary);
  }
  kxhttp::Deadline deadline = kxhttp::deadline_after_ms(kxhttp::scaled_timeout_ms(iTimeoutMs));
  uint32_t code = impl->multipart->next_part(impl->input, deadline);
  if (code != 0) return code;
  if (!kxhttp::deliver_part(*impl, impl->multipart->storage())) return HTTP_ERR_CLOSED;
  const std::string& type = impl->multipart->content_type();
  size_t typeLength = std::min(type.size(), sizeof psPart->acContentType - 1);
  std::memcpy(psPart->acContentType, type.data(), typeLength);
  const std::vector<unsigned char>& data = impl->multipart->data();
  psPart->pucData = const_cast<unsigned char*>(data.data());
  psPart->ulLength = data.size();
  return 0;
}

uint32_t http_push_read(HTTP_SESSION* psSession, void* pvData, size_t ulMax, size_t* pulRead,
                        int iTimeoutMs) {
  if (pulRead != nullptr) *pulRead = 0;
  if (psSession == nullptr || pvData == nullptr || pulRead == nullptr || ulMax == 0) {
    return HTTP_ERR_PARAM;
  }
  kxhttp::SessionCall impl(psSession);
  if (!impl) return HTTP_ERR_CLOSED;
  if (!impl->pushReady) return HTTP_ERR_STATE;
  if (impl->input.empty()) {
    kxhttp::Deadline deadline = kxhttp::deadline_after_ms(kxhttp::scaled_timeout_ms(iTimeoutMs));
    kxhttp::ReadStatus status = impl->input.fill(deadline);
    if (status != kxhttp::ReadStatus::kOk) return kxhttp::code_for_read_status(status);
  }
  size_t count = std::min(ulMax, impl->input.size());
  std::memcpy(pvData, impl->input.pending().data(), count);
  impl->input.consume(count);
  *pulRead = count;
  return 0;
}

}  // extern "C"
