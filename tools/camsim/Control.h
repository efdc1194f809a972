// Run-time changes of the camsim program's devices: a line of text names a
// device and a change ("0 play-mode 5"), applied at once. The program
// takes such lines on its control socket (--control ADDR:PORT).
#ifndef CAMSIM_CONTROL_H
#define CAMSIM_CONTROL_H

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "Device.h"

namespace camsim {

// Applies one line, "DEVICE COMMAND [ARGUMENT]", to devices[DEVICE].
// Returns "OK", or "ERROR " and the reason. The commands:
//   refuse | accept                      close / reopen the listener
//   forget-uids | forget-uid UID         a restart / one UID forgotten
//   uid-expiry MS                        forget UIDs without keep-alive for MS (0: off)
//   play-mode N | filename TEXT          recorder status values
//   push-start-status N                  recorder push start answer (0: normal)
//   fault PATH:FAULT | set-fault PATH:FAULT   add a fault to the path's list / replace it
//   clear-fault PATH | clear-faults      remove faults
//   rtp-stall [UID] | rtp-resume [UID]   RTP streams (of the UID, or all) stall / resume
//   rtp-end [UID]                        RTP streams end for good
std::string ApplyControlLine(const std::vector<Device*>& devices, const std::string& line);

// Every command word with its argument, one a line, for the usage text.
std::string ControlCommandsText();

// A TCP listener that reads control lines and answers each with one line
// (the result of ApplyControlLine). One client at a time; a client may
// send any number of lines.
class ControlServer {
 public:
  ControlServer() = default;
  ~ControlServer();
  ControlServer(const ControlServer&) = delete;
  ControlServer& operator=(const ControlServer&) = delete;

  bool Start(const std::string& address, uint16_t port, std::vector<Device*> devices,
             std::string* error);
  uint16_t Port() const { return port_; }
  void Stop();

 private:
  void Run();
  void ServeClient(int fd);

  std::vector<Device*> devices_;
  int listenFd_ = -1;
  int stopFd_ = -1;
  uint16_t port_ = 0;
  std::thread thread_;
};

}  // namespace camsim

#endif
