// A camera on loopback that answers with the fuzzer's bytes. The i-th
// request that arrives gets the i-th reply of the current script (the last
// one again once they run out), written whole; then the peer ends its side
// of the connection, so no exchange waits for a time-out. A connection that
// closes before its request head ends takes no reply. One thread serves all
// connections, so a session that the requester opens and leaves idle never
// holds up the next one.
#ifndef FUZZ_LOOPBACK_PEER_H
#define FUZZ_LOOPBACK_PEER_H

#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace fuzzsup {

class LoopbackPeer {
 public:
  // AF_INET listens on 127.0.0.1, AF_INET6 on ::1, on a port of the system's choice.
  explicit LoopbackPeer(int iFamily);
  ~LoopbackPeer();
  LoopbackPeer(const LoopbackPeer&) = delete;
  LoopbackPeer& operator=(const LoopbackPeer&) = delete;

  bool Listening() const { return m_iListenFd >= 0; }
  unsigned short Port() const { return m_usPort; }
  const char* Address() const { return m_pcAddress; }
  // The replies of the next requests, counted from the first one again.
  void Serve(std::vector<std::string> asReplies);

 private:
  struct Connection {
    int iFd;
    std::string sHead;
    long long llDeadlineMs;
  };
  void Run();
  void Accept();
  // Reads what arrived; true when the connection is done with.
  bool Read(Connection& rConnection);
  void Answer(int iFd);
  std::string NextReply();

  const char* m_pcAddress;
  unsigned short m_usPort = 0;  // before m_iListenFd, which sets it
  int m_iListenFd = -1;
  int m_aiWake[2] = {-1, -1};
  std::vector<Connection> m_asConnections;  // the serving thread's own
  std::mutex m_mutex;                       // guards the script
  std::vector<std::string> m_asReplies;
  size_t m_uNext = 0;
  std::thread m_thread;
};

}  // namespace fuzzsup

#endif
