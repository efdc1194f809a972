#include "CamExchange.h"

#include <cstddef>
#include <cstring>
#include <ctime>

#include "CCamRequester.h"
#include "CamConstants.h"
#include "CamRequesterFields.h"
#include "CamScoped.h"
#include "CamSessionGuards.h"
#include "CamTransport.h"
#include "CamTypes.h"

namespace camses {

namespace {

// Context of one exchange.
struct Exchange {
  CCamRequester& rReq;
  CamRequesterFields& rF;
  const SessionPolicy& rP;
  const ExchangeSpec& rSpec;
};

bool UserSet(const CamRequesterFields& rF) {
  return rF.cUserName[0] != '\0';
}

void PrintOpenFailed(const Exchange& rX) {
  if (rX.rSpec.eOpenFailLine == OpenFailLine::kWireSetup) {
    rX.rReq.CamReqCOM_printf("%s [Error] %s::SetupSessionCommand failed\n", rX.rSpec.pcName,
                             rX.rP.pcWireWord);
  } else {
    rX.rReq.CamReqCOM_printf("%s [Error] OpenSessionCommandExec failed\n", rX.rSpec.pcName);
  }
}

// Opens the exchange's session; false with *piResult set when it failed.
bool Open(const Exchange& rX, SessionScope& rScope, int* piResult) {
  if (rX.rReq.OpenSessionCommandExec() == 0) {
    rScope.Arm();
    return true;
  }
  PrintOpenFailed(rX);
  if (IsKelRecorder(rX.rF.usCameraType)) {
    *piResult = rX.rSpec.iRecorderOpenFailResult;
  } else {
    if (rX.rSpec.bForgetsUidOnOpenFail) rX.rReq.UidInvalid();
    *piResult = -1;
  }
  return false;
}

void PrintAddressLine(const Exchange& rX) {
  const char* pcWord = nullptr;
  switch (rX.rSpec.eAddressLine) {
    case AddressLine::kNone:
      return;
    case AddressLine::kLineWord:
      pcWord = rX.rP.pcLineWord;
      break;
    case AddressLine::kWireWord:
      pcWord = rX.rP.pcWireWord;
      break;
  }
  rX.rReq.CamReqCOM_printf("%s [DEBUG] %s: IP:%s PORT:%d CamType:%s[%d] Pos:%d \n", rX.rSpec.pcName,
                           pcWord, rX.rF.cIpAddr, rX.rF.iHttpPort, rX.rF.CamName,
                           rX.rF.usCameraType, rX.rF.iPos);
}

// The address and cgi lines, the request line and the headers.
bool SendHead(const Exchange& rX, char* pcCgi) {
  CCamRequester& rReq = rX.rReq;
  PrintAddressLine(rX);
  rReq.CamReqCOM_printf("%s [DEBUG] cgi=%s. \n", rX.rSpec.pcName, pcCgi);
  if (rReq.SetUrl(pcCgi) == -1) {
    rReq.CamReqCOM_printf("%s [Error] SetUrl failed\n", rX.rSpec.pcName);
    return false;
  }
  if (rX.rSpec.bAddsHeader && rReq.AddHeader() == -1) {
    rReq.CamReqCOM_printf("%s [Error] AddHeader failed\n", rX.rSpec.pcName);
    return false;
  }
  return true;
}

bool TakeBuffer(const Exchange& rX, ReplyBuffer& rReply) {
  if (rReply.Allocate()) return true;
  rX.rReq.CamReqCOM_printf("%s [Error] memory allocate failed\n", rX.rSpec.pcName);
  return false;
}

bool Authenticate(const Exchange& rX) {
  if (rX.rSpec.bPrintsCredentials) {
    rX.rReq.CamReqCOM_printf("%s [DEBUG] UserName:%s Password:%s\n", rX.rSpec.pcName,
                             rX.rF.cUserName, rX.rF.cPassword);
  }
  if (!UserSet(rX.rF)) return true;
  if (http_set_auth(rX.rF.psSession, rX.rF.cUserName, rX.rF.cPassword) == HTTP_RESULT_OK) {
    return true;
  }
  rX.rReq.CamReqCOM_printf("%s [Error] http_set_auth failed\n", rX.rSpec.pcName);
  return false;
}

// From the open to the answer in rReply. True when the reply is there;
// else *piResult is the Exec's result. rScope closes the session on the
// way out unless the caller releases it.
bool OpenAndRequest(const Exchange& rX, SessionScope& rScope, ReplyBuffer& rReply, char* pcCgi,
                    int* piResult) {
  if (!Open(rX, rScope, piResult)) return false;
  *piResult = -1;
  CCamRequester& rReq = rX.rReq;
  const ExchangeSpec& rSpec = rX.rSpec;
  if (!SendHead(rX, pcCgi)) return false;
  if (rSpec.bBufferBeforeAuth && !TakeBuffer(rX, rReply)) return false;
  if (!Authenticate(rX)) return false;
  if (!rSpec.bBufferBeforeAuth && !TakeBuffer(rX, rReply)) return false;
  const int iRequest =
      rSpec.bLenient ? rReq.DoRequest2(rReply.Record()) : rReq.DoRequest(rReply.Record());
  if (iRequest == -1) {
    PrintText(rReq, rSpec.pcRequestFailedText);
    return false;
  }
  *piResult = 0;
  return true;
}

// Builds the line; false with *piResult set when there is nothing to send.
bool Build(const Exchange& rX, char* pcCgi, int* piResult) {
  const int iBuilt = rX.rSpec.pfnBuild(rX.rReq, rX.rF, pcCgi);
  if (iBuilt == 0) return true;
  if (iBuilt == -1) {
    PrintText(rX.rReq, rX.rSpec.pcRefusedText);
    *piResult = rX.rSpec.iRefusedResult;
  } else {
    *piResult = 0;  // nothing to send is not a failure
  }
  return false;
}

bool UidKnown(const Exchange& rX) {
  if (rX.rF.iUid != -1) return true;
  rX.rReq.CamReqCOM_printf("%s [Error]iUid == -1. \n", rX.rSpec.pcName);
  return false;
}

// The recorder exchanges: the line, the caller's session closed, a session
// of their own whose answer goes into the caller's buffer and which the
// caller closes on every path.
// Both recorder exchanges report a failed request with the class's words.
int RunRecorderExchange(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                        const ExchangeSpec& rShape, char* pcReply) {
  ExchangeSpec sSpec = rShape;
  sSpec.pcRequestFailedText = rP.pcRecorderRequestFailed;
  const Exchange rX = {rReq, rF, rP, sSpec};
  char acCgi[kCgiLineSize] = {};
  int iResult = 0;
  if (!Build(rX, acCgi, &iResult)) return iResult;
  rX.rReq.CloseSessionCommand();
  SessionScope sScope(rX.rReq);
  ReplyBuffer sReply(pcReply);
  OpenAndRequest(rX, sScope, sReply, acCgi, &iResult);
  sScope.Release();
  return iResult;
}

int BuildLogIn(CCamRequester& rReq, const CamRequesterFields&, char* pcCgi) {
  return rReq.CmdSet_KelLogIn(pcCgi);
}

int BuildLogOut(CCamRequester& rReq, const CamRequesterFields&, char* pcCgi) {
  return rReq.CmdSet_KelLogOut(pcCgi);
}

int BuildSession(CCamRequester& rReq, const CamRequesterFields&, char* pcCgi) {
  return rReq.CmdSet_SessionCmmand(pcCgi);
}

const ExchangeSpec kLogInSpec = {"KelSetupSessionCommandExec",
                                 BuildLogIn,
                                 -1,
                                 nullptr,
                                 false,  // no AddHeader
                                 false,
                                 false,
                                 false,
                                 true,  // a camera's UID is forgotten when the open fails
                                 -1,
                                 OpenFailLine::kWireSetup,
                                 AddressLine::kWireWord,
                                 nullptr,  // the class's words
                                 nullptr,
                                 nullptr};

const ExchangeSpec kLogOutSpec = {"KelStreamStopCommandExec",
                                  BuildLogOut,
                                  -1,
                                  "KelStreamStopCommandExec [ERROR] KelStreamStopCommandExec NG\n",
                                  false,
                                  false,
                                  false,
                                  false,
                                  true,
                                  -1,
                                  OpenFailLine::kWireSetup,
                                  AddressLine::kNone,
                                  nullptr,  // the class's words
                                  nullptr,
                                  nullptr};

const ExchangeSpec kUidSpec = {"SetupSessionCommandExec",
                               BuildSession,
                               -1,
                               nullptr,
                               false,  // no AddHeader
                               false,
                               false,
                               false,
                               true,
                               -1,
                               OpenFailLine::kWireSetup,
                               AddressLine::kLineWord,
                               "SetupSessionCommandExec [Error] DoRequest failed\n",
                               nullptr,
                               nullptr};

void CopySessionHead(const CamRequesterFields& rF, SessionInfoCopy& rInfo) {
  std::memcpy(rInfo.aucHead, rF.psSession, sizeof(rInfo.aucHead));
  if (rF.psSession->pcHost != nullptr) {
    std::strncpy(rInfo.acHost, rF.psSession->pcHost, sizeof(rInfo.acHost) - 1);
  }
  char* pcHost = rInfo.acHost;
  std::memcpy(rInfo.aucHead + offsetof(HTTP_SESSION, pcHost), &pcHost, sizeof(pcHost));
  rInfo.bTaken = true;
}

}  // namespace

int ParseKeepAliveReply(CCamRequester& rReq, const char* pcName, char* pcReply) {
  if (rReq.CheckKeepAlive_RcvData(pcReply) == 0) return 0;
  rReq.CamReqCOM_printf(" %s [Error] KeepAlive Failed.\n", pcName);
  return -1;
}

int ParsePlayBackKeepAliveReply(CCamRequester& rReq, const char* pcName, char* pcReply) {
  if (ParseKeepAliveReply(rReq, pcName, pcReply) != 0) return -1;
  if (rReq.CheckPlayMode_RcvData(pcReply) == 0) return 0;
  rReq.CamReqCOM_printf(" %s [Error] Play Mode Status Unmatch.\n", pcName);
  return -1;
}

int RunExchange(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                const ExchangeSpec& rSpec) {
  const Exchange sX = {rReq, rF, rP, rSpec};
  if (!UidKnown(sX)) return -1;
  char acCgi[kCgiLineSize] = {};
  int iResult = 0;
  if (!Build(sX, acCgi, &iResult)) return iResult;
  SessionScope sScope(rReq);
  ReplyBuffer sReply;
  if (!OpenAndRequest(sX, sScope, sReply, acCgi, &iResult)) return iResult;
  if (rSpec.pfnParse != nullptr && rSpec.pfnParse(rReq, rSpec.pcName, sReply.Data()) != 0) {
    return -1;
  }
  rReq.CamReqCOM_printf("%s [DEBUG] free=%p\n", rSpec.pcName, static_cast<void*>(sReply.Data()));
  sReply.Free();
  sScope.Close();
  PrintText(rReq, rSpec.pcDoneText);
  return 0;
}

int RunKeepAlive(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                 const ExchangeSpec& rSpec) {
  if (!CountTick(rF.m_iKeepAliveCount, kKeepAliveTicks)) return 0;
  rReq.CamReqCOM_printf("%s IN!!!!!. \n", rSpec.pcName);
  return RunExchange(rReq, rF, rP, rSpec);
}

int RunPlayBackKeepAlive(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                         const ExchangeSpec& rSpec) {
  if (rSpec.iPlayBackTicks > 0 && !CountTick(rF.m_iPBKeepAliveCount, rSpec.iPlayBackTicks)) {
    return 0;
  }
  return RunExchange(rReq, rF, rP, rSpec);
}

int RunStopExchange(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                    const ExchangeSpec& rSpec) {
  const Exchange sX = {rReq, rF, rP, rSpec};
  if (!UidKnown(sX)) return -1;
  const char* pcNoDelivery = RuleFor(rP, rF.iCmdType).pcNoDeliveryWord;
  if (pcNoDelivery != nullptr) {
    rReq.CamReqCOM_printf("%s [Error] iCmdType:%s\n", rP.pcStopRefusalName, pcNoDelivery);
    return -1;
  }
  char acCgi[kCgiLineSize] = {};
  int iResult = 0;
  if (!Build(sX, acCgi, &iResult)) return iResult;
  rF.uid_logout = rF.iUid;
  rReq.CamReqCOM_printf("%s [DEBUG] %s: IP:%s PORT:%d CamType:%s[%d] Pos:%d uid_logout:%d\n",
                        rSpec.pcName, rP.pcLineWord, rF.cIpAddr, rF.iHttpPort, rF.CamName,
                        rF.usCameraType, rF.iPos, rF.uid_logout);
  rReq.CamReqCOM_printf("%s [DEBUG] cgi=%s. \n", rSpec.pcName, acCgi);
  SessionScope sScope(rReq);
  if (!Open(sX, sScope, &iResult)) return iResult;
  // Straight to the library: a stop goes out whatever these say.
  http_set_url(rF.psSession, "GET", acCgi, "HTTP/1.0");
  http_add_header(rF.psSession, "Connection", "Keep-Alive");
  http_add_header(rF.psSession, "Host", rF.cIpAddr);
  if (UserSet(rF)) http_set_auth(rF.psSession, rF.cUserName, rF.cPassword);
  ReplyBuffer sReply;
  if (!TakeBuffer(sX, sReply)) return -1;
  const uint32_t ulRet = http_do_request(rF.psSession, sReply.Record(), camtr::kRequestTimeoutSec);
  switch (camtr::ClassifyResult(ulRet, false)) {
    case camtr::ResultClass::kSuccess:
      break;
    case camtr::ResultClass::kTimeout:
      rReq.CamReqCOM_printf("%s [ERROR] timeout ret=0x%0x\n", rSpec.pcName, ulRet);
      break;
    case camtr::ResultClass::kOtherError:
      rReq.CamReqCOM_printf("%s [ERROR] other error ret=0x%0x\n", rSpec.pcName, ulRet);
      break;
    case camtr::ResultClass::kClientServerError:
      rReq.CamReqCOM_printf("%s [ERROR] client or server error ret=0x%0x\n", rSpec.pcName, ulRet);
      break;
  }
  rReq.KelStreamStopCommandExec(sReply.Data());
  if (rP.bStopReleasesQuillonUid) rReq.QuillonUidUtilRelease(sReply.Data());
  rReq.CamReqCOM_printf("%s [DEBUG] free=%p\n", rSpec.pcName, static_cast<void*>(sReply.Data()));
  sReply.Free();
  sScope.Close();
  if (rP.bClosesPushOnStop) rReq.CloseSessionPush();
  return 0;
}

int PrepareRequest(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                   const ExchangeSpec& rSpec, char* pcCgi) {
  const Exchange sX = {rReq, rF, rP, rSpec};
  SessionScope sScope(rReq);
  int iResult = 0;
  if (!Open(sX, sScope, &iResult)) return iResult;
  if (!SendHead(sX, pcCgi) || !Authenticate(sX)) return -1;
  sScope.Release();
  return 0;
}

int RecorderLogin(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                  char* pcReply) {
  return RunRecorderExchange(rReq, rF, rP, kLogInSpec, pcReply);
}

int RunLogoutExchange(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                      const ExchangeSpec& rSpec, char* pcReply) {
  if (rReq.GetKeepAlive() == 0) {
    rReq.CamReqCOM_printf("%s [DEBUG] KEL Logout CGI Command No!!\n", rSpec.pcName);
    return 0;
  }
  return RunRecorderExchange(rReq, rF, rP, rSpec, pcReply);
}

int RecorderLogout(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
                   char* pcReply) {
  if (rReq.GetKeepAlive() != 0 && rF.uid_logout == -1) rF.uid_logout = rF.iUid;
  return RunLogoutExchange(rReq, rF, rP, kLogOutSpec, pcReply);
}

int RequestUid(CCamRequester& rReq, CamRequesterFields& rF, const SessionPolicy& rP,
               SessionInfoCopy& rInfo) {
  if (rF.iUid == -1 && rF.m_KELCtrlFlag == 1) {
    // The UID of a controlled recorder comes from outside.
    rReq.CamReqCOM_printf("SetupSessionCommandExec [DEBUG] Wait set KEL UID\n");
    return -1;
  }
  SessionScope sScope(rReq);
  ReplyBuffer sReply;
  if (rF.iUid == -1) {
    ExchangeSpec sSpec = kUidSpec;
    sSpec.iRefusedResult = rP.iUidLineRefusedResult;
    const Exchange sX = {rReq, rF, rP, sSpec};
    char acCgi[kCgiLineSize] = {};
    int iResult = 0;
    if (!Build(sX, acCgi, &iResult)) {
      rInfo.bLineRefused = true;
      return iResult;
    }
    if (!OpenAndRequest(sX, sScope, sReply, acCgi, &iResult)) return iResult;
    // A recorder offers a key and must be logged in before it names the UID.
    char acKeyName[] = "strKey = \"";
    if (rReq.CheckKelStrKey(sReply.Data(), acKeyName) == 0) {
      rReq.CamReqCOM_printf("SetupSessionCommandExec [DEBUG] strKey:%s\n", rF.strKey);
      if (rReq.KelSetupSessionCommandExec(sReply.Data()) == -1) return -1;
    }
    iResult = rReq.CheckCamInfo_RcvData(sReply.Data());
    if (iResult != 0) return iResult == -2 ? -2 : -1;
  }
  if (rF.psSession != nullptr) {
    CopySessionHead(rF, rInfo);
    sScope.Release();
    rReq.CloseSessionCommand();
  }
  return 0;
}

void PrintPlayBackSession(CCamRequester& rReq, const SessionInfoCopy& rInfo) {
  if (rInfo.bTaken) {
    HTTP_SESSION sHead = {};
    std::memcpy(&sHead, rInfo.aucHead, sizeof(rInfo.aucHead));
    rReq.CamReqCOM_printf("SetupSessionCommandExec [DEBUG] pHttpSession:%p \n",
                          static_cast<const void*>(rInfo.aucHead));
    rReq.CamReqCOM_printf("SetupSessionCommandExec [DEBUG] host:%s \n", sHead.pcHost);
    rReq.CamReqCOM_printf("SetupSessionCommandExec [DEBUG] port:%d \n", sHead.usPort);
  }
  const struct timespec sPause = {0, 10000000};  // 10 ms
  nanosleep(&sPause, nullptr);
}

}  // namespace camses
