#include "Control.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "Socket.h"

namespace camsim {

namespace {

// A control line longer than this is refused and the client dropped.
constexpr size_t kMaxLine = 4096;

bool ReadCount(const std::string& text, long high, long* value) {
  if (text.empty() || text.size() > 10 ||
      text.find_first_not_of("0123456789") != std::string::npos) {
    return false;
  }
  *value = std::atol(text.c_str());
  return *value <= high;
}

using Command = std::string (*)(Device* device, const std::string& argument);

std::string Ok() {
  return "OK";
}

std::string Refuse(Device* device, const std::string&) {
  device->RefuseConnections();
  return Ok();
}

std::string Accept(Device* device, const std::string&) {
  std::string error;
  return device->AcceptConnections(&error) ? Ok() : "ERROR " + error;
}

std::string ForgetUids(Device* device, const std::string&) {
  device->ForgetUids();
  return Ok();
}

std::string ForgetUid(Device* device, const std::string& argument) {
  long uid = 0;
  if (!ReadCount(argument, 2147483647L, &uid)) return "ERROR bad UID";
  return device->ForgetUid(static_cast<int>(uid)) ? Ok() : "ERROR unknown UID";
}

std::string UidExpiry(Device* device, const std::string& argument) {
  long ms = 0;
  if (!ReadCount(argument, 2000000000L, &ms)) return "ERROR bad milliseconds";
  device->SetUidExpiry(std::chrono::milliseconds(ms));
  return Ok();
}

std::string PlayMode(Device* device, const std::string& argument) {
  long mode = 0;
  if (!ReadCount(argument, 2000000000L, &mode)) return "ERROR bad play mode";
  device->SetPlayMode(static_cast<int>(mode));
  return Ok();
}

std::string FileName(Device* device, const std::string& argument) {
  device->SetFileName(argument);
  return Ok();
}

std::string PushStartStatus(Device* device, const std::string& argument) {
  long status = 0;
  if (!ReadCount(argument, 999, &status)) return "ERROR bad status";
  device->SetPushStartStatus(static_cast<int>(status));
  return Ok();
}

// "PATH:FAULT" into its two halves.
bool SplitFault(const std::string& argument, std::string* path, Fault* fault, std::string* error) {
  size_t colon = argument.find(':');
  if (colon == std::string::npos || colon == 0) {
    *error = "want PATH:FAULT";
    return false;
  }
  *path = argument.substr(0, colon);
  return ParseFault(argument.substr(colon + 1), fault, error);
}

std::string AddFault(Device* device, const std::string& argument) {
  std::string path;
  std::string error;
  Fault fault;
  if (!SplitFault(argument, &path, &fault, &error)) return "ERROR " + error;
  device->AddFault(path, fault);
  return Ok();
}

std::string SetFault(Device* device, const std::string& argument) {
  std::string path;
  std::string error;
  Fault fault;
  if (!SplitFault(argument, &path, &fault, &error)) return "ERROR " + error;
  device->SetFault(path, fault);
  return Ok();
}

std::string ClearFault(Device* device, const std::string& argument) {
  if (argument.empty()) return "ERROR want PATH";
  device->ClearFault(argument);
  return Ok();
}

std::string ClearFaults(Device* device, const std::string&) {
  device->ClearFaults();
  return Ok();
}

// "" for every UID, else one UID; false when it is no UID.
bool ReadUidArgument(const std::string& argument, int* uid) {
  long number = 0;
  if (argument.empty()) {
    *uid = kEveryUid;
    return true;
  }
  if (!ReadCount(argument, 2147483647L, &number)) return false;
  *uid = static_cast<int>(number);
  return true;
}

std::string ChangeRtp(Device* device, const std::string& argument, size_t (Device::*change)(int)) {
  int uid = kEveryUid;
  if (!ReadUidArgument(argument, &uid)) return "ERROR bad UID";
  return (device->*change)(uid) > 0 ? Ok() : "ERROR no such RTP stream";
}

std::string RtpStall(Device* device, const std::string& argument) {
  return ChangeRtp(device, argument, &Device::StallRtp);
}

std::string RtpResume(Device* device, const std::string& argument) {
  return ChangeRtp(device, argument, &Device::ResumeRtp);
}

std::string RtpEnd(Device* device, const std::string& argument) {
  return ChangeRtp(device, argument, &Device::EndRtp);
}

struct ControlCommand {
  const char* name;
  const char* argument;  // null: takes none
  Command apply;
  const char* help;
  bool optional = false;  // the argument may be left out
};

constexpr ControlCommand kCommands[] = {
    {"refuse", nullptr, Refuse, "close the listener: connections are refused"},
    {"accept", nullptr, Accept, "open it again on the same port"},
    {"forget-uids", nullptr, ForgetUids, "forget every UID, as a camera that restarts"},
    {"forget-uid", "UID", ForgetUid, "forget one UID (ERROR unknown UID when not known)"},
    {"uid-expiry", "MS", UidExpiry, "forget UIDs without keep-alive for MS ms (0: off)"},
    {"play-mode", "N", PlayMode, "recorder status PLAY_MODE="},
    {"filename", "TEXT", FileName, "recorder status: the text after FILENAME"},
    {"push-start-status", "N", PushStartStatus, "as --push-start-status (0: normal)"},
    {"fault", "PATH:FAULT", AddFault, "append a fault to the path's list"},
    {"set-fault", "PATH:FAULT", SetFault, "replace the path's list by this fault"},
    {"clear-fault", "PATH", ClearFault, "remove the path's faults"},
    {"clear-faults", nullptr, ClearFaults, "remove every fault"},
    {"rtp-stall", "UID", RtpStall, "the RTP streams of UID (or all) stall", true},
    {"rtp-resume", "UID", RtpResume, "the stalled streams resume at a key frame", true},
    {"rtp-end", "UID", RtpEnd, "the streams end for good", true},
};

}  // namespace

std::string ApplyControlLine(const std::vector<Device*>& devices, const std::string& line) {
  std::string text = line;
  while (!text.empty() && (text.back() == '\r' || text.back() == '\n')) text.pop_back();
  size_t first = text.find(' ');
  long index = 0;
  if (first == std::string::npos || !ReadCount(text.substr(0, first), 1000000, &index) ||
      static_cast<size_t>(index) >= devices.size()) {
    return "ERROR want DEVICE COMMAND, DEVICE 0 to " + std::to_string(devices.size() - 1);
  }
  size_t second = text.find(' ', first + 1);
  std::string word =
      text.substr(first + 1, second == std::string::npos ? second : second - first - 1);
  std::string argument = second == std::string::npos ? "" : text.substr(second + 1);
  for (const ControlCommand& command : kCommands) {
    if (word != command.name) continue;
    if ((command.argument == nullptr) != argument.empty() && !command.optional) {
      return std::string("ERROR ") + command.name +
             (command.argument ? std::string(" needs ") + command.argument : " takes nothing");
    }
    return command.apply(devices[static_cast<size_t>(index)], argument);
  }
  return "ERROR unknown command \"" + word + "\"";
}

std::string ControlCommandsText() {
  std::string text;
  for (const ControlCommand& command : kCommands) {
    std::string left = std::string("  DEVICE ") + command.name;
    if (command.argument != nullptr) {
      left += command.optional ? std::string(" [") + command.argument + "]"
                               : std::string(" ") + command.argument;
    }
    if (left.size() < 38) left.resize(38, ' ');
    text += left + command.help + "\n";
  }
  return text;
}

ControlServer::~ControlServer() {
  Stop();
}

bool ControlServer::Start(const std::string& address, uint16_t port, std::vector<Device*> devices,
                          std::string* error) {
  sockaddr_storage storage{};
  socklen_t length = 0;
  if (!MakeAddress(address, port, &storage, &length)) {
    *error = "not a numeric address: " + address;
    return false;
  }
  listenFd_ = OpenListener(storage, length, error);
  if (listenFd_ < 0) return false;
  stopFd_ = MakeSignalFd();
  port_ = LocalPort(listenFd_);
  devices_ = std::move(devices);
  thread_ = std::thread(&ControlServer::Run, this);
  return true;
}

void ControlServer::Stop() {
  if (thread_.joinable()) {
    RaiseSignalFd(stopFd_);
    thread_.join();
  }
  if (listenFd_ >= 0) close(listenFd_);
  if (stopFd_ >= 0) close(stopFd_);
  listenFd_ = -1;
  stopFd_ = -1;
}

void ControlServer::Run() {
  for (;;) {
    WaitResult waited = WaitReadable(listenFd_, stopFd_, -1);
    if (waited == WaitResult::kStopped) return;
    int fd = accept4(listenFd_, nullptr, nullptr, SOCK_CLOEXEC);
    if (fd < 0) {
      if (errno == EMFILE || errno == ENFILE) Pause(listenFd_, stopFd_, 50);
      continue;
    }
    ServeClient(fd);
    close(fd);
  }
}

void ControlServer::ServeClient(int fd) {
  std::string pending;
  for (;;) {
    size_t end = pending.find('\n');
    if (end != std::string::npos) {
      std::string answer = ApplyControlLine(devices_, pending.substr(0, end)) + "\n";
      pending.erase(0, end + 1);
      if (!SendAll(fd, answer)) return;
      continue;
    }
    if (pending.size() > kMaxLine) {
      SendAll(fd, std::string("ERROR line too long\n"));
      return;
    }
    if (WaitReadable(fd, stopFd_, -1) != WaitResult::kReady) return;
    char buffer[1024];
    ssize_t got = recv(fd, buffer, sizeof buffer, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return;
    pending.append(buffer, static_cast<size_t>(got));
  }
}

}  // namespace camsim
