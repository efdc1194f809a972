// Speed of the HTTP client: one whole CGI exchange on loopback (open, URL,
// headers, request, 2048-byte reply, close), the response parser and the
// multipart reader on memory.
#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "kxhttp.h"
#include "kxhttp_internal.h"

namespace {

const std::string kReply =
    "HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\nContent-Length: 7\r\n\r\nuid=17\n";

// Answers every connection on 127.0.0.1 with kReply after the request head.
class ReplyServer {
 public:
  ReplyServer() {
    listenFd_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    inet_pton(AF_INET, "127.0.0.1", &address.sin_addr);
    bind(listenFd_, reinterpret_cast<sockaddr*>(&address), sizeof address);
    listen(listenFd_, 64);
    socklen_t length = sizeof address;
    getsockname(listenFd_, reinterpret_cast<sockaddr*>(&address), &length);
    port_ = ntohs(address.sin_port);
    stopFd_ = eventfd(0, EFD_CLOEXEC);
    thread_ = std::thread([this] { run(); });
  }
  ~ReplyServer() {
    uint64_t one = 1;
    if (write(stopFd_, &one, sizeof one) == sizeof one) thread_.join();
    close(listenFd_);
    close(stopFd_);
  }
  unsigned short port() const { return port_; }

 private:
  void run() {
    for (;;) {
      pollfd pfds[2] = {{listenFd_, POLLIN, 0}, {stopFd_, POLLIN, 0}};
      if (poll(pfds, 2, -1) < 0 || (pfds[1].revents & POLLIN)) return;
      int fd = accept4(listenFd_, nullptr, nullptr, SOCK_CLOEXEC);
      if (fd < 0) continue;
      std::string head;
      char chunk[1024];
      while (head.find("\r\n\r\n") == std::string::npos) {
        ssize_t n = recv(fd, chunk, sizeof chunk, 0);
        if (n <= 0) break;
        head.append(chunk, static_cast<size_t>(n));
      }
      if (send(fd, kReply.data(), kReply.size(), MSG_NOSIGNAL) < 0) {
        close(fd);
        continue;
      }
      close(fd);
    }
  }
  int listenFd_ = -1;
  int stopFd_ = -1;
  unsigned short port_ = 0;
  std::thread thread_;
};

void BM_CgiExchangeOnLoopback(benchmark::State& state) {
  ReplyServer server;
  std::string buffer(2048, '\0');
  for (auto _ : state) {
    HTTP_SESSION* session =
        http_open_session_to_ret("127.0.0.1", server.port(), nullptr, 0, 0, 30000, 0);
    if (session == nullptr) {
      state.SkipWithError("open failed");
      break;
    }
    http_set_url(session, "GET", "/cgi-bin/camctrl?uid=17&mode=start", "HTTP/1.0");
    http_add_header(session, "Connection", "Keep-Alive");
    http_add_header(session, "Host", "127.0.0.1");
    _InetBuffer record{};
    record.ulSize = 2048;
    record.pcBuffer = &buffer[0];
    uint32_t code = http_do_request(session, &record, 5);
    http_close_session(session);
    if (code != HTTP_RESULT_STATUS200) {
      state.SkipWithError("request failed");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CgiExchangeOnLoopback)->UseRealTime();

void BM_ParseResponse(benchmark::State& state) {
  std::string text = kReply;
  for (auto _ : state) {
    kxhttp::MemorySource source(reinterpret_cast<const uint8_t*>(text.data()), text.size(),
                                text.size());
    kxhttp::InputBuffer input;
    input.source = &source;
    kxhttp::ResponseHead head;
    auto deadline = kxhttp::Clock::now() + std::chrono::seconds(1);
    char body[2048];
    size_t stored = 0;
    kxhttp::read_response_head(input, deadline, head);
    kxhttp::read_response_body(input, deadline, head, false, body, sizeof body, stored);
    benchmark::DoNotOptimize(stored);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_ParseResponse);

// Pictures of 30 KB, with and without Content-Length.
void BM_MultipartParts(benchmark::State& state) {
  const bool withLength = state.range(0) != 0;
  const std::string picture(30000, '\x5a');
  std::string body;
  for (int i = 0; i < 20; ++i) {
    body += "--frame\r\nContent-Type: image/jpeg\r\n";
    if (withLength) body += "Content-Length: " + std::to_string(picture.size()) + "\r\n";
    body += "\r\n" + picture + "\r\n";
  }
  for (auto _ : state) {
    kxhttp::MemorySource source(reinterpret_cast<const uint8_t*>(body.data()), body.size(), 4096);
    kxhttp::InputBuffer input;
    input.source = &source;
    kxhttp::MultipartReader reader("frame");
    auto deadline = kxhttp::Clock::now() + std::chrono::seconds(1);
    for (int i = 0; i < 20; ++i) reader.next_part(input, deadline);
    benchmark::DoNotOptimize(reader.data().size());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(body.size()));
}
BENCHMARK(BM_MultipartParts)->Arg(1)->Arg(0);

}  // namespace

BENCHMARK_MAIN();
