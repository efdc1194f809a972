// Real servers from the system (a proxy, a web server) started by a test on
// loopback with a configuration in a temporary folder, stopped after.
#ifndef CAM_CHILD_SERVER_H
#define CAM_CHILD_SERVER_H

#include <sys/types.h>

#include <cstdlib>
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

// A loopback port that was free a moment ago (bound to port 0 and closed).
unsigned short UnusedPort(const char* pcAddress);

// Full path of an installed program, or "" when it is not installed.
std::string find_program(const std::string& name);

class ChildServer {
 public:
  ChildServer() = default;
  ~ChildServer() { stop(); }
  ChildServer(const ChildServer&) = delete;
  ChildServer& operator=(const ChildServer&) = delete;
  // Starts argv[0] with its output in logPath and waits until it accepts
  // connections on address:port. False (and stopped) when it does not.
  bool start(const std::vector<std::string>& argv, const std::string& logPath, const char* address,
             unsigned short port);
  // Ends the child (by its id) and waits for it.
  void stop();

 private:
  pid_t pid_ = -1;
};

// Starts tinyproxy (the program at sProgram) on 127.0.0.1:usPort with its
// configuration and its log ("tinyproxy.log", Info level) in rDir. The proxy
// adds its Via header, which tells a camera's record whether a request came
// through it. False when it did not start.
bool StartTinyproxy(ChildServer& rProxy, const TempDir& rDir, const std::string& sProgram,
                    unsigned short usPort);

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
