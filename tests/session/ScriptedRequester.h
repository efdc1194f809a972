// An RTP requester whose Exec workers are replaced by scripted results, and
// whose calls upward and into the base are recorded, so that the guards
// can be checked on their own: which Exec runs in which status, which event
// follows, what is told to whom.
#ifndef SCRIPTED_REQUESTER_H
#define SCRIPTED_REQUESTER_H

#include <mutex>
#include <string>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Rtp.h"

namespace sessiontest {

class ScriptedRtp : public CCamRequester_Cgi_Kobu_Rtp {
 public:
  ScriptedRtp() { iUid = 11; }
  ~ScriptedRtp() override { iConnectStatus = 0; }

  int SetupSessionCommandExec() override { return Record("SetupSessionCommandExec", iSetup); }
  int StreamStartCommandExec() override {
    if (ulStartResultWord != 0) m_KELCheckStreamRet = ulStartResultWord;
    return Record("StreamStartCommandExec", iStart);
  }
  int StreamStopCommandExec() override { return Record("StreamStopCommandExec", iStop); }
  int KelStreamStopCommandExec(char* pcReply) override {
    bReplyZeroed = pcReply != nullptr && pcReply[0] == 0 && pcReply[2047] == 0;
    return Record("KelStreamStopCommandExec", iKelStop);
  }
  int SendKeepAliveCommandExec() override {
    iKeepAliveCountSeen = m_iKeepAliveCount;
    return Record("SendKeepAliveCommandExec", iKeepAlive);
  }
  int SendPBKeepAliveCommandExec() override {
    return Record("SendPBKeepAliveCommandExec", iPBKeepAlive);
  }
  int SendCamPresetCommandExec() override { return Record("SendCamPresetCommandExec", iPreset); }
  int SendCamIframInstCommandExec() override {
    return Record("SendCamIframInstCommandExec", iIframe);
  }
  int CheckStreamStart(unsigned short usCamType, int iType) override {
    if (bRealStreamCheck) {
      Record("CheckStreamStart", 0);
      return CCamRequester_Cgi_Kobu_Rtp::CheckStreamStart(usCamType, iType);
    }
    return Record("CheckStreamStart", 0);
  }
  int UidInvalid() override {
    Record("UidInvalid(status " + std::to_string(iConnectStatus.load()) + ")", 0);
    return CCamRequester_Cgi_Kobu_Rtp::UidInvalid();
  }
  int ChangeStatus(int iEvent) override {
    Record("ChangeStatus(" + std::to_string(iEvent) + ")", 0);
    return CCamRequester_Cgi_Kobu_Rtp::ChangeStatus(iEvent);
  }
  int ConnectError(int iAt, char* pcAddress, int iThreshold) override {
    Record("ConnectError(" + std::to_string(iAt) + "," + pcAddress + "," +
               std::to_string(iThreshold) + ")",
           0);
    return CCamRequester_Cgi_Kobu_Rtp::ConnectError(iAt, pcAddress, iThreshold);
  }
  int ConnectErrorReset(int iAt, char* pcAddress) override {
    Record("ConnectErrorReset(" + std::to_string(iAt) + "," + pcAddress + ")", 0);
    return CCamRequester_Cgi_Kobu_Rtp::ConnectErrorReset(iAt, pcAddress);
  }
  int SndMsg_GetUID(int iResult, int iAt) override {
    return Record("SndMsg_GetUID(" + std::to_string(iResult) + "," + std::to_string(iAt) + ")", 0);
  }
  int PlayModeStop(int iAt, char* pcAddress, int iPlayMode) override {
    return Record("PlayModeStop(" + std::to_string(iAt) + "," + pcAddress + "," +
                      std::to_string(iPlayMode) + ")",
                  0);
  }
  int CloseSessionCommand() override {
    Record("CloseSessionCommand", 0);
    return CCamRequester_Cgi_Kobu_Rtp::CloseSessionCommand();
  }
  int CloseSessionPush() override { return Record("CloseSessionPush", 0); }

  std::vector<std::string> Calls() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_calls;
  }
  int CountOf(const std::string& sCall) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    int n = 0;
    for (const auto& s : m_calls) n += s == sCall;
    return n;
  }
  void ClearCalls() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.clear();
  }

  int iSetup = 0, iStart = 0, iStop = 0, iKelStop = 0, iKeepAlive = 0, iPBKeepAlive = 0,
      iPreset = 0, iIframe = 0;
  uint32_t ulStartResultWord = 0;
  bool bRealStreamCheck = false;
  bool bReplyZeroed = false;
  int iKeepAliveCountSeen = -1;

 private:
  int Record(const std::string& sCall, int iResult) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.push_back(sCall);
    return iResult;
  }
  mutable std::mutex m_mutex;
  std::vector<std::string> m_calls;
};

}  // namespace sessiontest

#endif
