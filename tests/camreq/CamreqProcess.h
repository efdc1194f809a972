// Programs of the repository run as separate processes by the tests: their
// output gathered, their end waited for with a deadline.
#ifndef CAMREQ_TEST_PROCESS_H
#define CAMREQ_TEST_PROCESS_H

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace camreqtest {

class Process {
 public:
  Process() = default;
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  // Starts sProgram with asArgs; standard output and error go to files in
  // sDir (named after sName). False when it could not be started.
  bool Start(const std::string& sProgram, const std::vector<std::string>& asArgs,
             const std::string& sDir, const std::string& sName);
  // Waits for the end at most tLimit; false when it did not end.
  bool WaitEnd(std::chrono::milliseconds tLimit);
  void Signal(int iSignal);
  // Exit status (-1 while running or when ended by a signal).
  int ExitStatus() const { return m_iExit; }
  bool Ended() const { return m_bEnded; }
  pid_t Pid() const { return m_pid; }
  std::string Out() const;
  std::string Err() const;
  // Waits until standard output holds sPart; false after tLimit or the end.
  bool WaitForOutput(const std::string& sPart, std::chrono::milliseconds tLimit);

 private:
  pid_t m_pid = -1;
  bool m_bEnded = false;
  int m_iExit = -1;
  std::string m_sOutPath;
  std::string m_sErrPath;
};

// The port at the end of camsim's start-up line of device iDevice.
uint16_t CamsimPort(const std::string& sOut, int iDevice);

std::string ReadFile(const std::string& sPath);

}  // namespace camreqtest

#endif
