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
#include <set>
#include <sstream>
#include <stdexcept>

#include "CamTestTiming.h"

extern char** environ;

namespace camtest {

namespace {

using Clock = std::chrono::steady_clock;

// How often a start is tried on a fresh port before it counts as failed.
constexpr int kStartAttempts = 5;
// How long a child may take to listen (a plain build on an idle machine).
constexpr std::chrono::seconds kListenLimit(10);
// How long a child has to end on SIGTERM before it gets SIGKILL.
constexpr std::chrono::seconds kTermGrace(1);

socklen_t FillAddress(const char* pcAddress, unsigned short usPort, sockaddr_storage& rAddr) {
  rAddr = {};
  if (std::strchr(pcAddress, ':') != nullptr) {
    auto* psIn6 = reinterpret_cast<sockaddr_in6*>(&rAddr);
    psIn6->sin6_family = AF_INET6;
    psIn6->sin6_port = htons(usPort);
    inet_pton(AF_INET6, pcAddress, &psIn6->sin6_addr);
    return sizeof(*psIn6);
  }
  auto* psIn = reinterpret_cast<sockaddr_in*>(&rAddr);
  psIn->sin_family = AF_INET;
  psIn->sin_port = htons(usPort);
  inet_pton(AF_INET, pcAddress, &psIn->sin_addr);
  return sizeof(*psIn);
}

unsigned short PortOf(const sockaddr_storage& rAddr) {
  return ntohs(rAddr.ss_family == AF_INET6
                   ? reinterpret_cast<const sockaddr_in6*>(&rAddr)->sin6_port
                   : reinterpret_cast<const sockaddr_in*>(&rAddr)->sin_port);
}

// A socket bound to a port of pcAddress that the kernel picks; -1 on failure.
int BindAnyPort(const char* pcAddress, unsigned short& rusPort) {
  sockaddr_storage sAddr;
  socklen_t ulLength = FillAddress(pcAddress, 0, sAddr);
  const int iFd = socket(sAddr.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (iFd < 0) return -1;
  if (bind(iFd, reinterpret_cast<sockaddr*>(&sAddr), ulLength) != 0 ||
      getsockname(iFd, reinterpret_cast<sockaddr*>(&sAddr), &ulLength) != 0) {
    close(iFd);
    return -1;
  }
  rusPort = PortOf(sAddr);
  return iFd;
}

// A port of pcAddress that was free a moment ago; 0 on failure.
unsigned short ProbePort(const char* pcAddress) {
  unsigned short usPort = 0;
  const int iFd = BindAnyPort(pcAddress, usPort);
  if (iFd < 0) return 0;
  close(iFd);
  return usPort;
}

// The socket inodes among the descriptors of process pid.
std::set<std::string> SocketInodes(pid_t pid) {
  std::set<std::string> inodes;
  std::error_code error;
  const std::filesystem::path fds = "/proc/" + std::to_string(pid) + "/fd";
  for (const auto& entry : std::filesystem::directory_iterator(fds, error)) {
    std::error_code linkError;
    const std::string target = std::filesystem::read_symlink(entry.path(), linkError).string();
    // "socket:[12345]"
    if (!linkError && target.rfind("socket:[", 0) == 0 && target.back() == ']') {
      inodes.insert(target.substr(8, target.size() - 9));
    }
  }
  return inodes;
}

// Who listens on TCP port usPort: kMine when a socket of pid does, kOther
// when only sockets of other processes do, kNobody else.
enum class Listener { kNobody, kMine, kOther };

Listener ListenerOn(pid_t pid, unsigned short usPort) {
  // The listening sockets first, the child's descriptors after: a socket
  // listens only once it is among its owner's descriptors, so one of the
  // child's is never taken for another program's.
  std::vector<std::string> listening;
  for (const char* pcTable : {"/proc/net/tcp", "/proc/net/tcp6"}) {
    std::ifstream table(pcTable);
    std::string line;
    std::getline(table, line);  // the column names
    while (std::getline(table, line)) {
      // sl local_address rem_address st tx:rx tr:when retrnsmt uid timeout inode
      std::istringstream fields(line);
      std::string sl, local, remote, state, queues, timer, retransmits, uid, timeout, inode;
      if (!(fields >> sl >> local >> remote >> state >> queues >> timer >> retransmits >> uid >>
            timeout >> inode)) {
        continue;
      }
      const size_t uColon = local.rfind(':');
      if (state != "0A" || uColon == std::string::npos) continue;  // 0A: LISTEN
      if (std::stoul(local.substr(uColon + 1), nullptr, 16) == usPort) listening.push_back(inode);
    }
  }
  if (listening.empty()) return Listener::kNobody;
  const std::set<std::string> mine = SocketInodes(pid);
  for (const std::string& inode : listening) {
    if (mine.count(inode) != 0) return Listener::kMine;
  }
  return Listener::kOther;
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

RefusingPort::RefusingPort(const char* pcAddress) {
  fd_ = BindAnyPort(pcAddress, port_);
  if (fd_ < 0) throw std::runtime_error(std::string("no port to hold on ") + pcAddress);
}

RefusingPort::~RefusingPort() {
  if (fd_ >= 0) close(fd_);
}

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

bool ChildServer::start(const Configure& configure, const std::string& logPath,
                        const char* address) {
  stop();
  for (int attemptNo = 0; attemptNo < kStartAttempts; ++attemptNo) {
    const unsigned short port = ProbePort(address);
    if (port == 0) return false;
    const int result = attempt(configure(port), logPath, port);
    if (result > 0) {
      port_ = port;
      return true;
    }
    if (result < 0) return false;
  }
  return false;
}

int ChildServer::attempt(const std::vector<std::string>& argv, const std::string& logPath,
                         unsigned short port) {
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
    return -1;
  }
  const auto deadline = Clock::now() + Scaled(std::chrono::milliseconds(kListenLimit));
  while (Clock::now() < deadline) {
    const Listener eListener = ListenerOn(pid_, port);
    if (eListener == Listener::kMine) return 1;
    int status = 0;
    if (waitpid(pid_, &status, WNOHANG) == pid_) {
      pid_ = -1;
      return 0;  // it could not have the port, or failed otherwise: another port
    }
    if (eListener == Listener::kOther) {
      stop();  // another program took the port first
      return 0;
    }
    poll(nullptr, 0, 20);
  }
  stop();
  return -1;
}

void ChildServer::stop() {
  port_ = 0;
  if (pid_ <= 0) return;
  kill(pid_, SIGTERM);
  if (!reaped(pid_, kTermGrace)) {
    kill(pid_, SIGKILL);
    int status = 0;
    waitpid(pid_, &status, 0);
  }
  pid_ = -1;
}

bool StartTinyproxy(ChildServer& rProxy, const TempDir& rDir, const std::string& sProgram) {
  const std::string sConfig = rDir.path() + "/tinyproxy.conf";
  return rProxy.start(
      [&](unsigned short usPort) {
        rDir.write("tinyproxy.conf", "Port " + std::to_string(usPort) +
                                         "\nListen 127.0.0.1\nTimeout 30\nMaxClients 20\n"
                                         "Allow 127.0.0.1\nLogLevel Info\n");
        return std::vector<std::string>{sProgram, "-d", "-c", sConfig};
      },
      rDir.path() + "/tinyproxy.log", "127.0.0.1");
}

}  // namespace camtest
