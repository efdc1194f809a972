// A small scripted HTTP server on loopback for the client's tests: each
// accepted connection runs the next script, which reads the request and
// answers with canned bytes, slowly, partly, late or never.
#ifndef SCRIPTED_SERVER_H
#define SCRIPTED_SERVER_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace httptest {

using Milliseconds = std::chrono::milliseconds;

class Connection {
 public:
  Connection(int fd, int stopFd) : fd_(fd), stopFd_(stopFd) {}
  // Reads up to the empty line that ends the request head; empty when the
  // peer closed first or time ran out.
  std::string read_head(Milliseconds limit = Milliseconds(5000));
  void send(const std::string& bytes);
  // Sends one byte per interval until done, the peer leaves or the server stops.
  void drip(const std::string& bytes, Milliseconds interval);
  // Waits until the peer closes or the server stops, answering nothing.
  void hang();
  int fd() const { return fd_; }

 private:
  // Waits for the stop signal up to limit; true when stopped.
  bool wait_stop(Milliseconds limit);
  int fd_;
  int stopFd_;
};

class ScriptedServer {
 public:
  using Script = std::function<void(Connection&)>;
  // address is "127.0.0.1" or "::1". A backlog of 0 lets a test fill the
  // accept queue when the server does not accept.
  explicit ScriptedServer(const char* address, bool accepting = true);
  ~ScriptedServer();
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;

  // Scripts for the accepted connections in order; the last one repeats.
  void add(Script script);
  unsigned short port() const { return port_; }
  int listen_fd() const { return listenFd_; }
  // The request heads received so far.
  std::vector<std::string> requests();
  void record(const std::string& head);
  int accepted();
  // Waits until every accepted connection has been served and closed.
  bool wait_idle(Milliseconds limit = Milliseconds(5000));
  void stop();

 private:
  void accept_loop();
  void serve(int fd, Script script);

  int listenFd_ = -1;
  int stopFd_ = -1;
  unsigned short port_ = 0;
  std::mutex mutex_;
  std::condition_variable idle_;
  std::vector<Script> scripts_;
  std::vector<std::string> requests_;
  std::vector<std::thread> workers_;
  int accepted_ = 0;
  int active_ = 0;
  std::thread acceptor_;
  bool stopped_ = false;
};

// A canned answer: status line, headers, empty line, body.
std::string response(const std::string& statusLine, const std::string& body,
                     const std::vector<std::string>& headers = {}, bool withLength = true);

// Value of a header in a request head ("" when absent).
std::string header_value(const std::string& head, const std::string& name);

}  // namespace httptest

#endif  // SCRIPTED_SERVER_H
