// A requester whose session operations only record that they were called, in
// order and with their arguments, so that the tests can read back exactly
// which sequence the request thread ran. A hook lets a test act on the
// request thread at a chosen call (block, drop bThreadLoop, change status).
#ifndef RECORDING_REQUESTER_H
#define RECORDING_REQUESTER_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "CCamRequester.h"

namespace camtest {

class RecordingRequester : public virtual CCamRequester {
 public:
  // Runs on the calling thread (normally the request thread) after the call
  // was recorded; iNth counts the calls of that name, from 1.
  using Hook = std::function<void(RecordingRequester& rSelf, const std::string& sCall, int iNth)>;

  RecordingRequester();
  // Stops the request thread before this object's part goes away, as the
  // real requesters do, so the thread never calls into a half-destroyed object.
  ~RecordingRequester() override;

  int InitSessionCommand() override;
  int CleanUpSessionCommand() override;
  int OpenSessionCommand() override;
  int SetupSessionCommand() override;
  int CloseSessionCommand() override;
  int SendCamPresetCommand() override;
  int StreamStartCommand() override;
  int StreamStopCommand() override;
  int KelStreamStopCommand() override;
  int SendKeepAliveCommand() override;
  int SendPBKeepAliveCommand() override;
  int SendKeepAliveCommandForAudio() override;
  int SetParameter(long lKind, const void* pParam, int iSize) override;
  int ChangeStatus(int iEvent) override;
  int GetInfo(long lKind, void* pParam) override;
  int KeepStreamStartCmd() override;
  int SetKelInfoFlagCheck() override;
  int SetKeeAliveCount(int iCount) override;
  int CloseSessionPush() override;

  void SetHook(Hook fnHook);
  std::vector<std::string> Calls() const;
  int CountOf(const std::string& sCall) const;
  void ClearCalls();
  // Waits until sCall was recorded at least iCount times.
  bool WaitForCount(const std::string& sCall, int iCount,
                    std::chrono::milliseconds tLimit = std::chrono::seconds(10)) const;

  // Result of SetKelInfoFlagCheck (0 asks for a rebuild at once).
  std::atomic<int> iKelCheckResult{1};

 private:
  int Record(const std::string& sCall);

  mutable std::mutex m_mutex;
  mutable std::condition_variable m_changed;
  std::vector<std::string> m_calls;
  Hook m_hook;
};

// A one-shot gate: the request thread waits in a hook until the test opens it.
class Gate {
 public:
  void Enter();  // marks that the waiting side arrived
  bool WaitEntered(std::chrono::milliseconds tLimit = std::chrono::seconds(10));
  void Open();
  bool WaitOpen(std::chrono::milliseconds tLimit = std::chrono::seconds(10));

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_bEntered = false;
  bool m_bOpen = false;
};

// Number of threads of this process.
int ThreadCount();

}  // namespace camtest

#endif
