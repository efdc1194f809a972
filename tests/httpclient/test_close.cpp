// Closing a push session while the upper layer's threads read it: readers
// that wait inside a call, that are just entering one, or that come after
// the close. None may touch freed memory or hang.
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "CamTestTiming.h"
#include "http_fixture.h"

using namespace httptest;
using std::chrono::steady_clock;

namespace {

constexpr int kRounds = 3000;
constexpr int kRoundsPerServer = 150;
constexpr auto kTimeBudget = std::chrono::seconds(150);
// A round whose threads are not back by then hangs.
constexpr auto kRoundLimit = std::chrono::seconds(20);
// Long enough that a reader returning on its time-out shows that the close
// did not wake it (30 s, scaled to 3 s).
constexpr int kReadTimeoutMs = 30000;

const std::string kFrame = "frame-bytes-0123456789";
const std::string kPush =
    "HTTP/1.0 200 OK\r\nContent-Type: multipart/x-mixed-replace; boundary=b\r\n\r\n"
    "--b\r\nContent-Type: image/jpeg\r\nContent-Length: 22\r\n\r\n" +
    kFrame + "\r\n--b\r\nContent-Type: image/jpeg\r\n\r\n" + kFrame + "\r\n--b\r\n";

// Busy work of a given length, to spread the moments at which the threads
// of a round enter their calls.
void spin(int steps) {
  volatile int sink = 0;
  for (int i = 0; i < steps * 50; ++i) sink = sink + i;
}

struct ReaderOutcome {
  int parts = 0;
  uint32_t last = 0;
  bool damagedPart = false;
};

// Reads parts (or raw bytes) until a call fails; at most 64 calls.
void read_until_failure(HTTP_SESSION* session, bool raw, int delay, ReaderOutcome& outcome) {
  spin(delay);
  for (int call = 0; call < 64; ++call) {
    uint32_t code = 0;
    if (raw) {
      char bytes[16];
      size_t got = 0;
      code = http_push_read(session, bytes, sizeof bytes, &got, kReadTimeoutMs);
    } else {
      HTTP_PUSH_PART part{};
      code = http_push_next_part(session, &part, kReadTimeoutMs);
      if (code == 0 && part_bytes(part) != kFrame) {
        outcome.damagedPart = true;
      }
    }
    if (code != 0) {
      outcome.last = code;
      return;
    }
    ++outcome.parts;
  }
}

// Threads of one round, released together; waits for them with a limit.
class Round {
 public:
  void start(std::function<void()> work) {
    threads_.emplace_back([this, work] {
      wait_go();
      work();
      std::lock_guard<std::mutex> guard(mutex_);
      ++done_;
      changed_.notify_all();
    });
  }
  void go() {
    std::lock_guard<std::mutex> guard(mutex_);
    go_ = true;
    changed_.notify_all();
  }
  // True when every thread came back within the limit; the threads are
  // joined then. A thread that hangs cannot be joined: the test ends.
  bool finish(std::chrono::seconds limit) {
    std::unique_lock<std::mutex> guard(mutex_);
    bool back = changed_.wait_for(guard, limit, [this] { return done_ == threads_.size(); });
    guard.unlock();
    if (!back) return false;
    for (std::thread& thread : threads_) thread.join();
    return true;
  }

 private:
  void wait_go() {
    std::unique_lock<std::mutex> guard(mutex_);
    changed_.wait(guard, [this] { return go_; });
  }
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::thread> threads_;
  size_t done_ = 0;
  bool go_ = false;
};

std::unique_ptr<ScriptedServer> push_server() {
  auto server = std::make_unique<ScriptedServer>("127.0.0.1");
  server->add([](Connection& c) {
    c.read_head();
    c.send(kPush);
    c.hang();
  });
  return server;
}

}  // namespace

// Each round opens two pushes, one read as parts, one as raw bytes, each by
// one reader, and closes both on threads of their own; the moments of the
// readers and of the closes move against each other from round to round.
TEST_F(HttpClientTest, CloseIsSafeAgainstReadersInsideOrEnteringAtAnyMoment) {
  int before = camtest::OpenFdCount();
  auto started = steady_clock::now();
  int rounds = 0, partsRead = 0, lateReaders = 0;
  std::unique_ptr<ScriptedServer> server;
  for (; rounds < kRounds && steady_clock::now() - started < kTimeBudget; ++rounds) {
    if (rounds % kRoundsPerServer == 0) server = push_server();
    HTTP_SESSION* sessions[2] = {};
    for (HTTP_SESSION*& session : sessions) {
      session = open_push(server->port());
      ASSERT_NE(nullptr, session) << "round " << rounds;
    }
    ReaderOutcome outcomes[2];
    int closeResults[2] = {99, 99};
    Round round;
    for (int i = 0; i < 2; ++i) {
      int readerDelay = (rounds * 7 + i * 31) % 61;
      int closeDelay = (rounds * 13 + i * 17) % 67;
      round.start([&, i, readerDelay] {
        read_until_failure(sessions[i], i == 1, readerDelay, outcomes[i]);
      });
      round.start([&, i, closeDelay] {
        spin(closeDelay);
        closeResults[i] = http_close_session(sessions[i]);
      });
    }
    round.go();
    if (!round.finish(kRoundLimit)) {
      ADD_FAILURE() << "round " << rounds << " hangs";
      std::abort();
    }
    for (int i = 0; i < 2; ++i) {
      ASSERT_EQ(0, closeResults[i]);
      // The reader ends on the close: never on its time-out.
      ASSERT_EQ(HTTP_ERR_CLOSED, outcomes[i].last)
          << std::hex << outcomes[i].last << std::dec << " round " << rounds;
      ASSERT_FALSE(outcomes[i].damagedPart) << "round " << rounds;
      partsRead += outcomes[i].parts;
      if (outcomes[i].parts == 0) ++lateReaders;
      // Late calls with the closed handle are refused without touching it.
      HTTP_PUSH_PART part{};
      char bytes[4];
      size_t got = 1;
      EXPECT_EQ(HTTP_ERR_CLOSED, http_push_next_part(sessions[i], &part, 1000));
      EXPECT_EQ(HTTP_ERR_CLOSED, http_push_read(sessions[i], bytes, sizeof bytes, &got, 1000));
      EXPECT_EQ(0u, got);
      EXPECT_EQ(-1, http_close_session(sessions[i]));
    }
  }
  server.reset();
  std::printf(
      "%d rounds of two closes against two readers, %d parts or reads, %d readers with "
      "nothing before the close, %.1f s\n",
      rounds, partsRead, lateReaders,
      std::chrono::duration<double>(steady_clock::now() - started).count());
  // Far fewer rounds than asked for: the machine was too slow to show much.
  EXPECT_GE(rounds, 1000);
  EXPECT_EQ(before, camtest::SettledFdCount(before));
}

TEST_F(HttpClientTest, CloseWakesAReaderThatWaitsForBytes) {
  ScriptedServer server("127.0.0.1");
  server.add([](Connection& c) {
    c.read_head();
    c.send("HTTP/1.0 200 OK\r\nContent-Type: audio/G726-32\r\n\r\n");
    c.hang();
  });
  HTTP_SESSION* session = open_push(server.port(), "/audio");
  ASSERT_NE(nullptr, session);
  std::atomic<uint32_t> result{0};
  std::atomic<bool> entering{false};
  auto start = steady_clock::now();
  std::thread reader([&] {
    char bytes[8];
    size_t got = 0;
    entering = true;
    result = http_push_read(session, bytes, sizeof bytes, &got, kReadTimeoutMs);
  });
  // The session's socket is silent: once the reader is on its way, it
  // waits inside until the close wakes it.
  while (!entering && steady_clock::now() - start < std::chrono::seconds(5)) {
    std::this_thread::yield();
  }
  EXPECT_EQ(0, http_close_session(session));
  reader.join();
  EXPECT_EQ(HTTP_ERR_CLOSED, result.load());
  EXPECT_LT(steady_clock::now() - start,
            camtest::Scaled(std::chrono::milliseconds(kReadTimeoutMs / kDivisor)));
}

TEST_F(HttpClientTest, ClosedOrForeignHandlesAreRefused) {
  ScriptedServer server("127.0.0.1");
  HTTP_SESSION* session = open_session("127.0.0.1", server.port());
  ASSERT_NE(nullptr, session);
  ASSERT_EQ(0, http_close_session(session));
  HTTP_SESSION foreign{};
  for (HTTP_SESSION* handle : {session, &foreign}) {
    ReceiveBuffer buffer;
    HTTP_PUSH_PART part{};
    char bytes[4];
    size_t got = 0;
    EXPECT_EQ(HTTP_ERR_PARAM, http_set_url(handle, "GET", "/", "HTTP/1.0"));
    EXPECT_EQ(HTTP_ERR_PARAM, http_add_header(handle, "Host", "x"));
    EXPECT_EQ(HTTP_ERR_PARAM, http_set_auth(handle, "u", "p"));
    EXPECT_EQ(HTTP_ERR_PARAM, http_do_request(handle, &buffer.record, 5));
    EXPECT_EQ(HTTP_ERR_PARAM, http_do_server_push(handle, 5));
    EXPECT_EQ(HTTP_ERR_CLOSED, http_push_next_part(handle, &part, 100));
    EXPECT_EQ(HTTP_ERR_CLOSED, http_push_read(handle, bytes, sizeof bytes, &got, 100));
    EXPECT_EQ(-1, http_session_socket(handle));
    EXPECT_EQ(-1, http_close_session(handle));
  }
}

TEST_F(HttpClientTest, APartStaysReadableAfterTheClose) {
  ScriptedServer server("127.0.0.1");
  server.add([](Connection& c) {
    c.read_head();
    c.send(kPush);
    c.hang();
  });
  HTTP_SESSION* session = open_push(server.port());
  ASSERT_NE(nullptr, session);
  HTTP_PUSH_PART part{};
  ASSERT_EQ(0u, http_push_next_part(session, &part, 5000));
  // The requester closes while the upper layer still copies the picture.
  EXPECT_EQ(0, http_close_session(session));
  EXPECT_EQ(kFrame, part_bytes(part));
}
