// The plain-socket side of the comparisons: a minimal client that sends one
// GET on a fresh loopback connection and reads the answer to the close, and
// a minimal server that answers every connection with the same bytes. Both
// are the floor the platform's client is held against.
#ifndef BENCH_LIMITS_LOOPBACK_H
#define BENCH_LIMITS_LOOPBACK_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>

namespace limits {

// The request line and head a requester sends for a path, ready to send.
std::string GetRequest(const std::string& sTarget);

// A connected TCP socket to 127.0.0.1:usPort, or -1.
int ConnectLoopback(uint16_t usPort);

// Sends sRequest on a fresh connection and reads the answer until the close
// into pcBuffer (the rest of a longer answer is read and dropped). The bytes
// read in all, or -1 on failure.
long RawExchange(uint16_t usPort, const std::string& sRequest, char* pcBuffer, size_t ulSize);

// Answers every connection on 127.0.0.1, once the request head is in, with
// sAnswer and closes it; one connection at a time.
class FixedAnswerServer {
 public:
  explicit FixedAnswerServer(std::string sAnswer);
  ~FixedAnswerServer();
  FixedAnswerServer(const FixedAnswerServer&) = delete;
  FixedAnswerServer& operator=(const FixedAnswerServer&) = delete;
  uint16_t Port() const { return m_usPort; }

 private:
  void Run();
  const std::string m_sAnswer;
  int m_iListenFd = -1;
  int m_iStopFd = -1;
  uint16_t m_usPort = 0;
  std::thread m_thread;
};

}  // namespace limits

#endif
