// Real servers from the system (a proxy, a web server) started by a test on
// loopback with a configuration in a temporary folder, stopped after.
//
// Neither tinyproxy nor lighttpd can bind port 0 and tell which port it got,
// so a server is started on a port that was free a moment before and counts
// as started only once the child itself holds a listening socket on it (its
// descriptors against the kernel's socket table): a port that another
// program took in between is never mistaken for the server's. A child that
// could not bind is started again on a fresh port.
#ifndef CAM_CHILD_SERVER_H
#define CAM_CHILD_SERVER_H

#include <sys/types.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace camtest {

// A temporary folder, removed with everything in it.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  const std::string& path() const { return path_; }
  void write(const std::string& name, const std::string& text) const;
  std::string read(const std::string& name) const;

 private:
  std::string path_;
};

// A loopback port where nothing listens, for as long as the object lives: a
// socket is bound to it without listening, so no other program can take it
// and every connection to it is refused.
class RefusingPort {
 public:
  explicit RefusingPort(const char* pcAddress);
  ~RefusingPort();
  RefusingPort(const RefusingPort&) = delete;
  RefusingPort& operator=(const RefusingPort&) = delete;
  unsigned short port() const { return port_; }

 private:
  int fd_ = -1;
  unsigned short port_ = 0;
};

// Full path of an installed program, or "" when it is not installed.
std::string find_program(const std::string& name);

class ChildServer {
 public:
  // Writes the server's configuration for a port and returns its command line.
  using Configure = std::function<std::vector<std::string>(unsigned short port)>;

  ChildServer() = default;
  ~ChildServer() { stop(); }
  ChildServer(const ChildServer&) = delete;
  ChildServer& operator=(const ChildServer&) = delete;
  // Starts the command line that configure gives for a fresh port of
  // address, its output appended to logPath, and waits until the child
  // listens there; a child that ends first (its port was taken) is started
  // again on another port, a few times. False (and stopped) when it never
  // listens.
  bool start(const Configure& configure, const std::string& logPath, const char* address);
  // The port the server listens on (0 before a successful start).
  unsigned short port() const { return port_; }
  // Ends the child (by its id): SIGTERM, SIGKILL after one second.
  void stop();

 private:
  // One child on one port: 1 listening, 0 ended before it listened (try
  // another port), -1 failed otherwise.
  int attempt(const std::vector<std::string>& argv, const std::string& logPath,
              unsigned short port);

  pid_t pid_ = -1;
  unsigned short port_ = 0;
};

// Starts tinyproxy (the program at sProgram) on 127.0.0.1 with its
// configuration and its log ("tinyproxy.log", Info level) in rDir; its port
// is rProxy.port(). The proxy adds its Via header, which tells a camera's
// record whether a request came through it. False when it did not start.
bool StartTinyproxy(ChildServer& rProxy, const TempDir& rDir, const std::string& sProgram);

}  // namespace camtest

// A test that needs an installed server program: skipped where it is
// missing, but failed under CI, where scripts/install-deps.sh installs it.
#define CAMTEST_REQUIRE_PROGRAM(pathVar, name)                                         \
  const std::string pathVar = camtest::find_program(name);                             \
  if (pathVar.empty()) {                                                               \
    if (std::getenv("CI") != nullptr) {                                                \
      FAIL() << name << " is not installed (scripts/install-deps.sh installs it)";     \
    }                                                                                  \
    GTEST_SKIP() << name << " is not installed (scripts/install-deps.sh installs it)"; \
  }

#endif  // CAM_CHILD_SERVER_H
