#include "RecordingRequester.h"

#include <dirent.h>

#include <algorithm>

namespace camtest {

RecordingRequester::RecordingRequester() = default;

RecordingRequester::~RecordingRequester() {
  StopChildThread();
}

int RecordingRequester::Record(const std::string& sCall) {
  Hook fnHook;
  int iNth = 0;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.push_back(sCall);
    iNth = static_cast<int>(std::count(m_calls.begin(), m_calls.end(), sCall));
    fnHook = m_hook;
  }
  m_changed.notify_all();
  if (fnHook) fnHook(*this, sCall, iNth);
  return 0;
}

int RecordingRequester::InitSessionCommand() {
  return Record("InitSessionCommand");
}
int RecordingRequester::CleanUpSessionCommand() {
  return Record("CleanUpSessionCommand");
}
int RecordingRequester::OpenSessionCommand() {
  return Record("OpenSessionCommand");
}
int RecordingRequester::SetupSessionCommand() {
  return Record("SetupSessionCommand");
}
int RecordingRequester::CloseSessionCommand() {
  return Record("CloseSessionCommand");
}
int RecordingRequester::SendCamPresetCommand() {
  return Record("SendCamPresetCommand");
}
int RecordingRequester::StreamStartCommand() {
  return Record("StreamStartCommand");
}
int RecordingRequester::StreamStopCommand() {
  return Record("StreamStopCommand");
}
int RecordingRequester::KelStreamStopCommand() {
  return Record("KelStreamStopCommand");
}
int RecordingRequester::SendKeepAliveCommand() {
  return Record("SendKeepAliveCommand");
}
int RecordingRequester::SendPBKeepAliveCommand() {
  return Record("SendPBKeepAliveCommand");
}
int RecordingRequester::SendKeepAliveCommandForAudio() {
  return Record("SendKeepAliveCommandForAudio");
}
int RecordingRequester::SetParameter(long lKind, const void*, int) {
  return Record("SetParameter(" + std::to_string(lKind) + ")");
}
int RecordingRequester::ChangeStatus(int iEvent) {
  return Record("ChangeStatus(" + std::to_string(iEvent) + ")");
}
int RecordingRequester::GetInfo(long lKind, void*) {
  return Record("GetInfo(" + std::to_string(lKind) + ")");
}
int RecordingRequester::KeepStreamStartCmd() {
  return Record("KeepStreamStartCmd");
}
int RecordingRequester::SetKelInfoFlagCheck() {
  Record("SetKelInfoFlagCheck");
  return iKelCheckResult.load();
}
int RecordingRequester::SetKeeAliveCount(int iCount) {
  return Record("SetKeeAliveCount(" + std::to_string(iCount) + ")");
}
int RecordingRequester::CloseSessionPush() {
  return Record("CloseSessionPush");
}

void RecordingRequester::SetHook(Hook fnHook) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_hook = std::move(fnHook);
}

std::vector<std::string> RecordingRequester::Calls() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_calls;
}

int RecordingRequester::CountOf(const std::string& sCall) const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return static_cast<int>(std::count(m_calls.begin(), m_calls.end(), sCall));
}

void RecordingRequester::ClearCalls() {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_calls.clear();
}

bool RecordingRequester::WaitForCount(const std::string& sCall, int iCount,
                                      std::chrono::milliseconds tLimit) const {
  std::unique_lock<std::mutex> lock(m_mutex);
  return m_changed.wait_for(
      lock, tLimit, [&] { return std::count(m_calls.begin(), m_calls.end(), sCall) >= iCount; });
}

void Gate::Enter() {
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_bEntered = true;
  }
  m_changed.notify_all();
}

bool Gate::WaitEntered(std::chrono::milliseconds tLimit) {
  std::unique_lock<std::mutex> lock(m_mutex);
  return m_changed.wait_for(lock, tLimit, [&] { return m_bEntered; });
}

void Gate::Open() {
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_bOpen = true;
  }
  m_changed.notify_all();
}

bool Gate::WaitOpen(std::chrono::milliseconds tLimit) {
  std::unique_lock<std::mutex> lock(m_mutex);
  return m_changed.wait_for(lock, tLimit, [&] { return m_bOpen; });
}

int ThreadCount() {
  int iCount = 0;
  DIR* psDir = opendir("/proc/self/task");
  if (psDir == nullptr) return -1;
  while (dirent* psEntry = readdir(psDir)) {
    if (psEntry->d_name[0] != '.') ++iCount;
  }
  closedir(psDir);
  return iCount;
}

}  // namespace camtest
