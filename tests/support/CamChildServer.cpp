#include "CamChildServer.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

extern char** environ;

namespace camtest {

unsigned short UnusedPort(const char* pcAddress) {
  sockaddr_storage sAddr = {};
  socklen_t ulLength = 0;
  if (std::strchr(pcAddress, ':') != nullptr) {
    auto* psIn6 = reinterpret_cast<sockaddr_in6*>(&sAddr);
    psIn6->sin6_family = AF_INET6;
    inet_pton(AF_INET6, pcAddress, &psIn6->sin6_addr);
    ulLength = sizeof(*psIn6);
  } else {
    auto* psIn = reinterpret_cast<sockaddr_in*>(&sAddr);
    psIn->sin_family = AF_INET;
    inet_pton(AF_INET, pcAddress, &psIn->sin_addr);
    ulLength = sizeof(*psIn);
  }
  const int iFd = socket(sAddr.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (iFd < 0) return 0;
  unsigned short usPort = 0;
  if (bind(iFd, reinterpret_cast<sockaddr*>(&sAddr), ulLength) == 0 &&
      getsockname(iFd, reinterpret_cast<sockaddr*>(&sAddr), &ulLength) == 0) {
    usPort = ntohs(sAddr.ss_family == AF_INET6 ? reinterpret_cast<sockaddr_in6*>(&sAddr)->sin6_port
                                               : reinterpret_cast<sockaddr_in*>(&sAddr)->sin_port);
  }
  close(iFd);
  return usPort;
}

namespace {

using Clock = std::chrono::steady_clock;

bool accepts(const char* address, unsigned short port) {
  bool v6 = std::strchr(address, ':') != nullptr;
  int fd = socket(v6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return false;
  int result = -1;
  if (v6) {
    sockaddr_in6 a{};
    a.sin6_family = AF_INET6;
    a.sin6_port = htons(port);
    inet_pton(AF_INET6, address, &a.sin6_addr);
    result = connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a);
  } else {
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(port);
    inet_pton(AF_INET, address, &a.sin_addr);
    result = connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a);
  }
  close(fd);
  return result == 0;
}

// Waits up to limit for the child to end; true when it has.
bool reaped(pid_t pid, std::chrono::milliseconds limit) {
  auto deadline = Clock::now() + limit;
  for (;;) {
    int status = 0;
    if (waitpid(pid, &status, WNOHANG) == pid) return true;
    if (Clock::now() >= deadline) return false;
    poll(nullptr, 0, 10);
  }
}

}  // namespace

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "httpclient-XXXXXX").string();
  if (mkdtemp(&pattern[0]) == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = pattern;
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void TempDir::write(const std::string& name, const std::string& text) const {
  std::filesystem::path file = std::filesystem::path(path_) / name;
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << text;
}

std::string TempDir::read(const std::string& name) const {
  std::ifstream file(std::filesystem::path(path_) / name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::string find_program(const std::string& name) {
  const char* path = std::getenv("PATH");
  std::string dirs = std::string(path ? path : "") + ":/usr/sbin:/usr/bin:/sbin:/bin";
  size_t start = 0;
  while (start <= dirs.size()) {
    size_t end = dirs.find(':', start);
    if (end == std::string::npos) end = dirs.size();
    std::string candidate = dirs.substr(start, end - start) + "/" + name;
    if (end > start && access(candidate.c_str(), X_OK) == 0) return candidate;
    start = end + 1;
  }
  return std::string();
}

bool ChildServer::start(const std::vector<std::string>& argv, const std::string& logPath,
                        const char* address, unsigned short port) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, logPath.c_str(), O_WRONLY | O_CREAT | O_APPEND,
                                   0644);
  posix_spawn_file_actions_adddup2(&actions, 1, 2);
  std::vector<char*> args;
  for (const std::string& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
  args.push_back(nullptr);
  int error = posix_spawn(&pid_, args[0], &actions, nullptr, args.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    pid_ = -1;
    return false;
  }
  auto deadline = Clock::now() + std::chrono::seconds(10);
  while (Clock::now() < deadline) {
    if (accepts(address, port)) return true;
    int status = 0;
    if (waitpid(pid_, &status, WNOHANG) == pid_) {
      pid_ = -1;
      return false;
    }
    poll(nullptr, 0, 20);
  }
  stop();
  return false;
}

void ChildServer::stop() {
  if (pid_ <= 0) return;
  kill(pid_, SIGTERM);
  if (!reaped(pid_, std::chrono::seconds(5))) {
    kill(pid_, SIGKILL);
    reaped(pid_, std::chrono::seconds(5));
  }
  pid_ = -1;
}

bool StartTinyproxy(ChildServer& rProxy, const TempDir& rDir, const std::string& sProgram,
                    unsigned short usPort) {
  rDir.write("tinyproxy.conf", "Port " + std::to_string(usPort) +
                                   "\nListen 127.0.0.1\nTimeout 30\nMaxClients 20\n"
                                   "Allow 127.0.0.1\nLogLevel Info\n");
  return rProxy.start({sProgram, "-d", "-c", rDir.path() + "/tinyproxy.conf"},
                      rDir.path() + "/tinyproxy.log", "127.0.0.1", usPort);
}

}  // namespace camtest
