#include "CamreqProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

extern char** environ;

namespace camreqtest {

std::string ReadFile(const std::string& sPath) {
  std::ifstream sFile(sPath);
  std::stringstream sText;
  sText << sFile.rdbuf();
  return sText.str();
}

Process::~Process() {
  if (m_pid > 0 && !m_bEnded) {
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
  }
}

bool Process::Start(const std::string& sProgram, const std::vector<std::string>& asArgs,
                    const std::string& sDir, const std::string& sName) {
  m_sOutPath = sDir + "/" + sName + ".out";
  m_sErrPath = sDir + "/" + sName + ".err";
  posix_spawn_file_actions_t sActions;
  posix_spawn_file_actions_init(&sActions);
  posix_spawn_file_actions_addopen(&sActions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&sActions, 1, m_sOutPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                   0644);
  posix_spawn_file_actions_addopen(&sActions, 2, m_sErrPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                   0644);
  std::vector<std::string> asAll = {sProgram};
  asAll.insert(asAll.end(), asArgs.begin(), asArgs.end());
  std::vector<char*> apcArgv;
  for (std::string& s : asAll) apcArgv.push_back(&s[0]);
  apcArgv.push_back(nullptr);
  const int iRc =
      posix_spawn(&m_pid, sProgram.c_str(), &sActions, nullptr, apcArgv.data(), environ);
  posix_spawn_file_actions_destroy(&sActions);
  if (iRc != 0) m_pid = -1;
  return iRc == 0;
}

bool Process::WaitEnd(std::chrono::milliseconds tLimit) {
  if (m_bEnded) return true;
  const auto tEnd = std::chrono::steady_clock::now() + tLimit;
  while (true) {
    int iStatus = 0;
    const pid_t iDone = waitpid(m_pid, &iStatus, WNOHANG);
    if (iDone == m_pid) {
      m_bEnded = true;
      m_iExit = WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -1;
      return true;
    }
    if (std::chrono::steady_clock::now() >= tEnd) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

void Process::Signal(int iSignal) {
  if (m_pid > 0 && !m_bEnded) kill(m_pid, iSignal);
}

std::string Process::Out() const {
  return ReadFile(m_sOutPath);
}
std::string Process::Err() const {
  return ReadFile(m_sErrPath);
}

bool Process::WaitForOutput(const std::string& sPart, std::chrono::milliseconds tLimit) {
  const auto tEnd = std::chrono::steady_clock::now() + tLimit;
  while (Out().find(sPart) == std::string::npos) {
    if (std::chrono::steady_clock::now() >= tEnd || WaitEnd(std::chrono::milliseconds(0))) {
      return Out().find(sPart) != std::string::npos;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

uint16_t CamsimPort(const std::string& sOut, int iDevice) {
  const std::string sMark = "camsim: device " + std::to_string(iDevice) + " ";
  const size_t uAt = sOut.find(sMark);
  if (uAt == std::string::npos) return 0;
  const size_t uEnd = sOut.find('\n', uAt);
  if (uEnd == std::string::npos) return 0;
  const std::string sLine = sOut.substr(uAt, uEnd - uAt);
  return static_cast<uint16_t>(std::atoi(sLine.substr(sLine.rfind(' ') + 1).c_str()));
}

}  // namespace camreqtest
