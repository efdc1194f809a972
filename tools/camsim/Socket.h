// Small POSIX socket helpers of the simulator.
#ifndef CAMSIM_SOCKET_H
#define CAMSIM_SOCKET_H

#include <sys/socket.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace camsim {

enum class WaitResult { kReady, kTimeout, kStopped, kPeerClosed };

// Waits until fd has bytes (or the peer closed), stopFd is signalled, or
// timeoutMs pass (-1: no limit).
WaitResult WaitReadable(int fd, int stopFd, int timeoutMs);

// Lets timeoutMs pass (-1: until stop or close) while reading and dropping
// whatever the peer sends; tells whether the time passed, the device
// stopped or the peer went away.
WaitResult Pause(int fd, int stopFd, int timeoutMs);

// Sends every byte; false when the connection broke.
bool SendAll(int fd, const char* data, size_t size);
inline bool SendAll(int fd, const std::string& data) {
  return SendAll(fd, data.data(), data.size());
}

// Makes the coming close of fd reset the connection (RST) instead of
// ending it in order.
void ResetOnClose(int fd);

// Fills *address from a numeric IPv4 or IPv6 text and port; false if the
// text is no address.
bool MakeAddress(const std::string& text, uint16_t port, sockaddr_storage* address,
                 socklen_t* length);

// A listening socket bound to address; -1 with *error set on failure.
int OpenListener(const sockaddr_storage& address, socklen_t length, std::string* error);

// Port a socket is bound to.
uint16_t LocalPort(int fd);

// "127.0.0.1:5000" or "[::1]:5000".
std::string AddressText(const sockaddr_storage& address);

// An eventfd that becomes readable when signalled.
int MakeSignalFd();
void RaiseSignalFd(int fd);
void DrainSignalFd(int fd);

// Raises the soft limit of open files to the hard limit (once per process).
void RaiseOpenFileLimit();

}  // namespace camsim

#endif
