#include "LogWatch.h"

#include <cstdlib>
#include <cstring>

#include "kxcom.h"
#include "kxhttp.h"

namespace camreq {

namespace {

bool Contains(const std::string& sText, const char* pcPart) {
  return sText.find(pcPart) != std::string::npos;
}

std::string Trim(const std::string& sText) {
  size_t uBegin = 0;
  size_t uEnd = sText.size();
  while (uBegin < uEnd && (sText[uBegin] == ' ' || sText[uBegin] == '\t')) ++uBegin;
  while (uEnd > uBegin &&
         (sText[uEnd - 1] == '\n' || sText[uEnd - 1] == '\r' || sText[uEnd - 1] == ' ')) {
    --uEnd;
  }
  return sText.substr(uBegin, uEnd - uBegin);
}

// First word of a message: the operation that printed it.
std::string Operation(const std::string& sMessage) {
  const std::string sTrimmed = Trim(sMessage);
  const size_t uEnd = sTrimmed.find_first_of(" [");
  return sTrimmed.substr(0, uEnd);
}

bool IsErrorLine(const std::string& sMessage) {
  return Contains(sMessage, "[Error]") || Contains(sMessage, "[ERROR]");
}

// An error line that ends the open exchange of rWorker as failed. Lines of
// the set-up reply's parser that only note a missing optional key do not.
bool EndsInFailure(const std::string& sMessage, const std::string& sWorker) {
  if (!IsErrorLine(sMessage)) return false;
  const std::string sOperation = Operation(sMessage);
  if (sOperation == sWorker) return Trim(sMessage).compare(sWorker.size(), 1, " ") == 0;
  static const char* const kTransport[] = {"DoRequest",
                                           "DoRequest2",
                                           "SetUrl",
                                           "AddHeader",
                                           "CheckCamInfo_RcvData",
                                           "GetSelfAddress",
                                           "KelSetupSessionCommandExec"};
  for (const char* pcName : kTransport) {
    if (sOperation == pcName) return true;
  }
  if (sOperation == "GetMultiUniSetup") {
    return !Contains(sMessage, "iMultiAdd") && !Contains(sMessage, "aInPort");
  }
  return Contains(sOperation, "::OpenSessionCommandExec");
}

// "ChangeStatus [DEBUG] Video Event=4:3 -> 4. "
bool ParseTransition(const std::string& sMessage, Transition* psOut) {
  const size_t uAt = sMessage.find(" Event=");
  if (sMessage.rfind("ChangeStatus [DEBUG] ", 0) != 0 || uAt == std::string::npos) return false;
  int iEvent = 0;
  int iFrom = 0;
  int iTo = 0;
  if (std::sscanf(sMessage.c_str() + uAt, " Event=%d:%d -> %d", &iEvent, &iFrom, &iTo) != 3) {
    return false;
  }
  psOut->iEvent = iEvent;
  psOut->iFrom = iFrom;
  psOut->iTo = iTo;
  return true;
}

void Finish(RequesterLog& rLog, double dTime, bool bOk, const std::string& sResult) {
  if (rLog.iOpen < 0) return;
  CgiExchange& rX = rLog.asCgi[static_cast<size_t>(rLog.iOpen)];
  rX.bDone = true;
  rX.bOk = bOk;
  rX.sResult = sResult;
  rX.dLatencyMs = (dTime - rX.dTime) * 1000.0;
  if (!bOk) ++rLog.iFailures;
  rLog.iOpen = -1;
}

bool IsKeepAliveWorker(const std::string& sWorker) {
  return sWorker == "SendKeepAliveCommandExec" || sWorker == "SendPBKeepAliveCommandExec";
}

}  // namespace

std::string FailureWords(const std::string& sMessage) {
  if (Contains(sMessage, "open faild") || Contains(sMessage, "OpenSessionCommandExec failed") ||
      Contains(sMessage, "::SetupSessionCommand failed")) {
    return "no connection";
  }
  if (Contains(sMessage, "Network Timeout")) return "timeout";
  if (Contains(sMessage, "KeepAlive Failed")) return "refused (no OK in the reply)";
  if (Contains(sMessage, "Play Mode Status Unmatch")) return "play mode differs";
  if (Contains(sMessage, "SearchNumber UID")) return "no UID in the reply";
  size_t uAt = sMessage.find("ret =");
  size_t uSkip = 5;
  if (uAt == std::string::npos) {
    uAt = sMessage.find("ret=0x");
    uSkip = 6;
  }
  if (uAt != std::string::npos) {
    const unsigned long ulCode = std::strtoul(sMessage.c_str() + uAt + uSkip, nullptr, 16);
    const unsigned long ulLow = ulCode & 0xFFFFu;
    char acWords[64];
    if (ulLow == 0x1000 || ulLow == 0x7000) return "timeout";
    if ((ulCode & 0xF000u) == 0) {
      std::snprintf(acWords, sizeof(acWords), "HTTP %03lx", ulCode & 0xFFFu);
      return acWords;
    }
    switch (ulCode) {
      case HTTP_ERR_CONNECT:
        return "connection refused or lost";
      case HTTP_ERR_SEND:
        return "request not sent";
      case HTTP_ERR_PROTOCOL:
        return "answer is not HTTP";
      case HTTP_ERR_CLOSED:
        return "closed mid-answer";
      case HTTP_ERR_AUTH:
        return "authentication failed";
      default:
        break;
    }
    std::snprintf(acWords, sizeof(acWords), "error 0x%08lx", ulCode);
    return acWords;
  }
  return Trim(sMessage);
}

void LogWatch::Install(std::FILE* pEcho) {
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_pEcho = pEcho;
    m_bInstalled = true;
  }
  COM_SetPrintSink(&LogWatch::Sink, this);
}

void LogWatch::Uninstall() {
  bool bInstalled = false;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    bInstalled = m_bInstalled;
    m_bInstalled = false;
  }
  if (bInstalled) COM_SetPrintSink(nullptr, nullptr);
}

void LogWatch::Watch(int iPosition) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_logs[iPosition];
}

RequesterLog LogWatch::Snapshot(int iPosition) const {
  std::lock_guard<std::mutex> lock(m_mutex);
  const auto it = m_logs.find(iPosition);
  return it == m_logs.end() ? RequesterLog{} : it->second;
}

void LogWatch::Sink(const char* pcText, void* pvContext) {
  static_cast<LogWatch*>(pvContext)->Take(pcText, Now());
}

void LogWatch::Take(const std::string& sText, double dTime) {
  std::lock_guard<std::mutex> lock(m_mutex);
  if (m_pEcho != nullptr) {
    std::fputs(sText.c_str(), m_pEcho);
    if (sText.empty() || sText.back() != '\n') std::fputc('\n', m_pEcho);
  }
  // A requester's prefix: "IP:%15.15s " (when it has an address), "POS:%d "
  // and the type word "%6.6s " ("R:h264", "H:jpeg").
  size_t uAt = 0;
  if (sText.rfind("IP:", 0) == 0) uAt = 3 + 15 + 1;
  if (sText.compare(uAt, 4, "POS:") != 0) return;
  char* pcEnd = nullptr;
  const long lPosition = std::strtol(sText.c_str() + uAt + 4, &pcEnd, 10);
  uAt = static_cast<size_t>(pcEnd - sText.c_str());
  if (uAt < sText.size() && sText[uAt] == ' ') ++uAt;
  const std::string sType = sText.substr(uAt, 7);
  if (sType.size() == 7 && sType.back() == ' ' &&
      (Contains(sType, "R:") || Contains(sType, "H:"))) {
    uAt += 7;
  }
  const auto it = m_logs.find(static_cast<int>(lPosition));
  if (it == m_logs.end()) return;
  TakeMessage(it->second, sText.substr(uAt), dTime);
}

void LogWatch::TakeMessage(RequesterLog& rLog, const std::string& sMessage, double dTime) {
  Transition sTransition;
  if (ParseTransition(sMessage, &sTransition)) {
    Finish(rLog, dTime, true, "OK");
    sTransition.dTime = dTime;
    if (sTransition.iFrom != sTransition.iTo) rLog.asTransitions.push_back(sTransition);
    return;
  }
  const size_t uCgi = sMessage.find(" [DEBUG] cgi=");
  if (uCgi != std::string::npos) {
    Finish(rLog, dTime, true, "OK");
    CgiExchange sX;
    sX.dTime = dTime;
    sX.sWorker = Trim(sMessage.substr(0, uCgi));
    std::string sLine = Trim(sMessage.substr(uCgi + 13));
    if (sLine.size() >= 1 && sLine.back() == '.') sLine.pop_back();  // "cgi=%s. "
    sX.sLine = sLine;
    rLog.asCgi.push_back(sX);
    rLog.iOpen = static_cast<int>(rLog.asCgi.size() - 1);
    ++rLog.iExchanges;
    if (IsKeepAliveWorker(sX.sWorker)) ++rLog.iKeepAlives;
    return;
  }
  if (Contains(sMessage, "::OpenSessionCommandExec [ERROR] open faild")) {
    if (rLog.iOpen < 0) {
      // A connection that failed before any line went out (the exchanges
      // that open first): kept with an empty line, its worker named by the
      // error line that follows.
      CgiExchange sX;
      sX.dTime = dTime;
      sX.sWorker = "?";
      rLog.asCgi.push_back(sX);
      rLog.iOpen = static_cast<int>(rLog.asCgi.size() - 1);
    }
    Finish(rLog, dTime, false, "no connection");
    return;
  }
  if (!rLog.asCgi.empty() && rLog.asCgi.back().sWorker == "?" && IsErrorLine(sMessage)) {
    rLog.asCgi.back().sWorker = Operation(sMessage);
    return;
  }
  if (rLog.iOpen < 0) return;
  const std::string& sWorker = rLog.asCgi[static_cast<size_t>(rLog.iOpen)].sWorker;
  if (EndsInFailure(sMessage, sWorker)) {
    Finish(rLog, dTime, false, FailureWords(sMessage));
  } else if (Contains(sMessage, "CloseSessionCommand [DEBUG] Session Close") ||
             Contains(sMessage, "[DEBUG] JPEG HTTP NotifyCamRequesterHandle") ||
             Contains(sMessage, "[DEBUG] G726 HTTP NotifyCamRequesterHandle")) {
    Finish(rLog, dTime, true, "OK");
  }
}

}  // namespace camreq
