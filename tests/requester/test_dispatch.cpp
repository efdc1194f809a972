// The request thread's dispatch: which session operations each command code
// runs, in which order, and what the thread prints for it.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "RequesterTestBase.h"

namespace camtest {
namespace {

using Calls = std::vector<std::string>;

const Calls kStartSteps = {"ChangeStatus(0)", "OpenSessionCommand", "SetupSessionCommand",
                           "SendCamPresetCommand", "StreamStartCommand"};
const Calls kKeepAliveNow = {"SetKeeAliveCount(300)", "SendKeepAliveCommand"};
const Calls kThreadEnd = {"CloseSessionCommand", "CloseSessionPush"};

class DispatchTest : public RequesterTest {};

// The pointer text that a posting operation printed in its OUT line.
std::string PointerOfOutLine(const std::string& sLine, const std::string& sHead) {
  if (sLine.rfind(sHead, 0) != 0) return "";
  const size_t uEnd = sLine.rfind(" \n");
  if (uEnd == std::string::npos || uEnd < sHead.size()) return "";
  return sLine.substr(sHead.size(), uEnd - sHead.size());
}

TEST_F(DispatchTest, StartWithoutKeepAliveRunsTheStartStepsThenStreamChecks) {
  PrintCapture capture;
  {
    RecordingRequester requester;
    ASSERT_EQ(requester.Initialize(5), 0);
    ASSERT_EQ(requester.RequestStart(), 0);
    ASSERT_TRUE(requester.WaitForCount("KeepStreamStartCmd", 3));
    EXPECT_EQ(requester.bStartReq.load(), 1);
    requester.StopChildThread();

    const Calls asCalls = requester.Calls();
    ASSERT_GE(asCalls.size(), kStartSteps.size() + 3 + kThreadEnd.size());
    EXPECT_EQ(Head(asCalls, kStartSteps.size()), kStartSteps);
    // Every later call until the thread ends is the stream check of an idle round.
    for (size_t u = kStartSteps.size(); u + kThreadEnd.size() < asCalls.size(); ++u) {
      EXPECT_EQ(asCalls[u], "KeepStreamStartCmd") << "call " << u;
    }
    EXPECT_EQ(Calls(asCalls.end() - 2, asCalls.end()), kThreadEnd);
    EXPECT_EQ(requester.CountOf("SendKeepAliveCommand"), 0);
    EXPECT_EQ(requester.CountOf("SetKeeAliveCount(300)"), 0);
  }

  // What the thread printed for the START, with the pointer of the message
  // that RequestStart posted.
  std::string sPointer;
  for (const std::string& s : capture.Lines()) {
    if (sPointer.empty()) sPointer = PointerOfOutLine(s, "RequestStart [DEBUG] OUT=15.");
  }
  ASSERT_FALSE(sPointer.empty());
  ASSERT_NE(sPointer, "(nil)");
  const Calls asThread = ThreadLines(capture);
  ASSERT_GE(asThread.size(), 5u);
  EXPECT_EQ(asThread[0], "RequestThreadMain[DEBUG]ChildThread START!! TINDEX=15\n");
  EXPECT_EQ(asThread[1].rfind("RequestThreadMain [DEBUG] COM_MsgInit() success=", 0), 0u);
  EXPECT_EQ(asThread[2], "RequestThreadMain [DEBUG] START command TINDEX=15\n");
  EXPECT_EQ(asThread[3], "RequestThreadMain [DEBUG] COM_MsgBufFree=" + sPointer + "\n");
  EXPECT_EQ(asThread.back(), "RequestThreadMain [DEBUG] Msg Free & Thread Delete\n");
}

TEST_F(DispatchTest, StartWithKeepAliveSendsAKeepAliveAtOnceThenEveryIdleRound) {
  RecordingRequester requester;
  requester.EnableKeepAlive();
  requester.Initialize(6);
  requester.RequestStart();
  ASSERT_TRUE(requester.WaitForCount("KeepStreamStartCmd", 3));
  requester.StopChildThread();

  const Calls asCalls = requester.Calls();
  const Calls asExpected = Concat(Concat(kStartSteps, kKeepAliveNow),
                                  Repeat({"SendKeepAliveCommand", "KeepStreamStartCmd"}, 3));
  EXPECT_EQ(Head(asCalls, asExpected.size()), asExpected);
}

TEST_F(DispatchTest, StopRunsTheStopStepsAndEndsTheIdleWork) {
  PrintCapture capture;
  RecordingRequester requester;
  requester.EnableKeepAlive();
  requester.Initialize(7);
  requester.RequestStart();
  ASSERT_TRUE(requester.WaitForCount("KeepStreamStartCmd", 1));
  requester.RequestStop();
  ASSERT_TRUE(requester.WaitForCount("StreamStopCommand", 1));
  EXPECT_EQ(requester.bStartReq.load(), 0);
  // Two whole idle rounds after the stop: neither sends a keep-alive nor
  // checks the stream.
  ASSERT_TRUE(MarkIdleRound(requester));
  ASSERT_TRUE(MarkIdleRound(requester));
  requester.StopChildThread();

  Calls asCalls = requester.Calls();
  const auto itStop = std::find(asCalls.begin(), asCalls.end(), "StreamStopCommand");
  ASSERT_NE(itStop, asCalls.end());
  ASSERT_GT(itStop - asCalls.begin(), 0);
  EXPECT_EQ(*(itStop - 1), "ChangeStatus(1)");
  const Calls asAfter(itStop + 1, asCalls.end());
  EXPECT_EQ(asAfter, Concat({"StreamStartCommand", "StreamStartCommand"}, kThreadEnd));
  EXPECT_EQ(capture.Count("RequestThreadMain [DEBUG] STOP command TINDEX=17\n"), 1);
}

TEST_F(DispatchTest, StopPostedDuringAStartIsHandledAfterIt) {
  for (bool bKeepAlive : {false, true}) {
    SCOPED_TRACE(bKeepAlive ? "keep-alive on" : "keep-alive off");
    Gate gate;
    RecordingRequester requester;
    if (bKeepAlive) requester.EnableKeepAlive();
    requester.SetHook([&](RecordingRequester&, const std::string& sCall, int) {
      if (sCall == "OpenSessionCommand") {
        gate.Enter();
        gate.WaitOpen();
      }
    });
    requester.Initialize(8);
    requester.RequestStart();
    ASSERT_TRUE(gate.WaitEntered());
    requester.RequestStop();
    gate.Open();
    ASSERT_TRUE(requester.WaitForCount("StreamStopCommand", 1));
    requester.StopChildThread();

    Calls asExpected = kStartSteps;
    if (bKeepAlive) asExpected = Concat(asExpected, kKeepAliveNow);
    asExpected = Concat(asExpected, {"ChangeStatus(1)", "StreamStopCommand"});
    EXPECT_EQ(Head(requester.Calls(), asExpected.size()), asExpected);
  }
}

TEST_F(DispatchTest, PlayBackStartSetsTheSessionUpOnly) {
  PrintCapture capture;
  RecordingRequester requester;
  requester.EnableKeepAlive();
  requester.Initialize(9);
  EXPECT_EQ(requester.RequestPBStart(), 0);
  ASSERT_TRUE(requester.WaitForCount("SetupSessionCommand", 1));
  ASSERT_TRUE(MarkIdleRound(requester));
  requester.StopChildThread();

  EXPECT_EQ(requester.bPBStartReq.load(), 1);
  EXPECT_EQ(requester.bStartReq.load(), 0);
  // No preset, stream start or keep-alive; the idle rounds after it do
  // nothing either, because no live stream is wanted.
  EXPECT_EQ(requester.Calls(), Concat({"ChangeStatus(0)", "OpenSessionCommand",
                                       "SetupSessionCommand", "StreamStartCommand"},
                                      kThreadEnd));
  EXPECT_EQ(capture.Count("RequestThreadMain [DEBUG] START command TINDEX=19\n"), 1);
}

TEST_F(DispatchTest, PlayBackStopStopsTheRecorderStream) {
  PrintCapture capture;
  RecordingRequester requester;
  requester.Initialize(10);
  requester.RequestPBStart();
  ASSERT_TRUE(requester.WaitForCount("SetupSessionCommand", 1));
  EXPECT_EQ(requester.RequestPBStop(), 0);
  ASSERT_TRUE(requester.WaitForCount("KelStreamStopCommand", 1));
  EXPECT_EQ(requester.bPBStartReq.load(), 0);
  requester.StopChildThread();

  EXPECT_EQ(requester.Calls(),
            Concat({"ChangeStatus(0)", "OpenSessionCommand", "SetupSessionCommand",
                    "ChangeStatus(1)", "KelStreamStopCommand"},
                   kThreadEnd));
  EXPECT_EQ(capture.Count("RequestThreadMain [DEBUG] STOP command TINDEX=1a\n"), 1);
}

TEST_F(DispatchTest, PresetRunsThePresetCommandOnly) {
  PrintCapture capture;
  RecordingRequester requester;
  requester.Initialize(11);
  EXPECT_EQ(requester.RequestPresetPosition(), 0);
  ASSERT_TRUE(requester.WaitForCount("SendCamPresetCommand", 1));
  requester.StopChildThread();
  EXPECT_EQ(requester.Calls(), Concat({"SendCamPresetCommand"}, kThreadEnd));
  EXPECT_EQ(capture.Count("RequestThreadMain [DEBUG] PRESET command TINDEX=1b\n"), 1);
}

TEST_F(DispatchTest, DummyOnlyPrints) {
  PrintCapture capture;
  RecordingRequester requester;
  requester.Initialize(12);
  ASSERT_EQ(PostCode(requester.GetChildThreadIndex(), 3), KXCOM_LIB_OK);
  ASSERT_TRUE(capture.WaitFor("RequestThreadMain [DEBUG] Dummy command TINDEX=1c\n"));
  ASSERT_TRUE(capture.WaitFor("RequestThreadMain [DEBUG] COM_MsgBufFree="));
  ASSERT_TRUE(MarkIdleRound(requester));
  requester.StopChildThread();
  EXPECT_EQ(requester.Calls(), Concat({"StreamStartCommand"}, kThreadEnd));
  EXPECT_EQ(requester.bStartReq.load(), 0);
  EXPECT_EQ(requester.bPBStartReq.load(), 0);
}

TEST_F(DispatchTest, UndefinedCodesArePrintedAndFreed) {
  PrintCapture capture;
  RecordingRequester requester;
  requester.Initialize(13);
  const int aiCodes[] = {2, 7, 8, 100};
  for (int iCode : aiCodes) {
    ASSERT_EQ(PostCode(requester.GetChildThreadIndex(), iCode), KXCOM_LIB_OK);
  }
  ASSERT_TRUE(capture.WaitForCount("RequestThreadMain [DEBUG] COM_MsgBufFree=", 4));
  ASSERT_TRUE(MarkIdleRound(requester));
  requester.StopChildThread();

  Calls asExpected;
  for (int iCode : aiCodes) {
    asExpected.push_back("RequestThreadMain [Error] Undefined command=" + std::to_string(iCode) +
                         "\n");
  }
  Calls asUndefined;
  for (const std::string& s : ThreadLines(capture)) {
    if (s.find("Undefined") != std::string::npos) asUndefined.push_back(s);
  }
  EXPECT_EQ(asUndefined, asExpected);
  EXPECT_EQ(requester.Calls(), Concat({"StreamStartCommand"}, kThreadEnd));
}

TEST_F(DispatchTest, PostingPrintsTheOutLineWithIndexAndBuffer) {
  PrintCapture capture;
  RecordingRequester requester;
  requester.Initialize(14);  // TINDEX 1e
  requester.RequestPresetPosition();
  requester.RequestPBStart();
  requester.RequestPBStop();
  requester.RequestStart();
  requester.RequestStop();
  ASSERT_TRUE(requester.WaitForCount("StreamStopCommand", 1));
  requester.StopChildThread();

  const char* apcNames[] = {"RequestPresetPosition", "RequestPBStart", "RequestPBStop",
                            "RequestStart", "RequestStop"};
  Calls asOut;
  Calls asFreed;
  const std::string sFreeHead = "RequestThreadMain [DEBUG] COM_MsgBufFree=";
  for (const std::string& s : capture.Lines()) {
    if (s.find(" [DEBUG] OUT=") != std::string::npos) asOut.push_back(s);
    if (s.rfind(sFreeHead, 0) == 0) asFreed.push_back(s.substr(sFreeHead.size()));
  }
  ASSERT_EQ(asOut.size(), 5u);
  Calls asPosted;
  for (size_t u = 0; u < 5; ++u) {
    const std::string sHead = std::string(apcNames[u]) + " [DEBUG] OUT=1e.";
    const std::string sPointer = PointerOfOutLine(asOut[u], sHead);
    EXPECT_FALSE(sPointer.empty()) << asOut[u];
    EXPECT_NE(sPointer, "(nil)") << asOut[u];
    asPosted.push_back(sPointer + "\n");
  }
  // The thread freed the very buffers that were posted, in their order (the
  // wake-up of the stop may follow them).
  EXPECT_EQ(Head(asFreed, asPosted.size()), asPosted);
  EXPECT_EQ(capture.CountContaining("[ERROR]"), 0);
}

TEST_F(DispatchTest, PostingToNoThreadPrintsTheSendFailureAndFreesTheBuffer) {
  PrintCapture capture;
  RecordingRequester requester;  // never initialised: index 0, nothing bound there
  EXPECT_EQ(requester.RequestStart(), 0);
  EXPECT_EQ(requester.RequestStop(), 0);
  EXPECT_EQ(requester.RequestPBStart(), 0);
  EXPECT_EQ(requester.RequestPBStop(), 0);
  EXPECT_EQ(requester.RequestPresetPosition(), 0);

  const Calls asLines = capture.Lines();
  const char* apcNames[] = {"RequestStart", "RequestStop", "RequestPBStart", "RequestPBStop",
                            "RequestPresetPosition"};
  ASSERT_EQ(asLines.size(), 10u);
  for (size_t u = 0; u < 5; ++u) {
    const std::string sName = apcNames[u];
    EXPECT_EQ(asLines[2 * u], sName + " [ERROR] Message Send NG [!= KXCOM_LIB_OK]\n");
    EXPECT_EQ(asLines[2 * u + 1].rfind(sName + " [DEBUG] OUT=0.", 0), 0u) << asLines[2 * u + 1];
  }
  EXPECT_TRUE(requester.Calls().empty());
}

TEST_F(DispatchTest, RequestStartRetryDoesNothing) {
  PrintCapture capture;
  RecordingRequester requester;
  requester.Initialize(15);
  capture.Clear();
  EXPECT_EQ(requester.RequestStartRetry(), 0);
  EXPECT_EQ(StartRetryFlag(requester), 0);
  EXPECT_TRUE(capture.Lines().empty());
  ASSERT_TRUE(MarkIdleRound(requester));
  requester.StopChildThread();
  EXPECT_EQ(requester.Calls(), Concat({"StreamStartCommand"}, kThreadEnd));
}

// ---- bThreadLoop dropping in the middle of a sequence ----------------------

struct DropCase {
  const char* pcName;
  int iCode;
  bool bKeepAlive;
  const char* pcDropAtCall;  // drop bThreadLoop right after this call ...
  const char* pcDropAtLine;  // ... or right when this text is printed
  Calls asExpected;          // the calls before the thread ends
};

void PrintTo(const DropCase& sCase, std::ostream* pOut) {
  *pOut << sCase.pcName;
}

class DropTest : public RequesterTest, public ::testing::WithParamInterface<DropCase> {};

TEST_P(DropTest, SequenceStopsAtTheNextCheckAndTheThreadEnds) {
  const DropCase& sCase = GetParam();
  RecordingRequester requester;
  if (sCase.bKeepAlive) requester.EnableKeepAlive();
  if (sCase.pcDropAtCall != nullptr) {
    const std::string sAt = sCase.pcDropAtCall;
    requester.SetHook([sAt](RecordingRequester& rSelf, const std::string& sCall, int iNth) {
      if (sCall == sAt && iNth == 1) rSelf.bThreadLoop = 0;
    });
  }
  std::unique_ptr<LineAction> pAction;
  std::unique_ptr<PrintCapture> pCapture;
  if (sCase.pcDropAtLine != nullptr) {
    pAction.reset(new LineAction(sCase.pcDropAtLine, [&] { requester.bThreadLoop = 0; }));
  } else {
    pCapture.reset(new PrintCapture);
  }
  requester.Initialize(20);
  ASSERT_EQ(PostCode(requester.GetChildThreadIndex(), sCase.iCode), KXCOM_LIB_OK);
  ASSERT_TRUE(requester.WaitForCount("CloseSessionPush", 1));
  EXPECT_EQ(requester.Calls(), Concat(sCase.asExpected, kThreadEnd));
  const Calls asLines = pAction ? pAction->Lines() : pCapture->Lines();
  EXPECT_EQ(asLines.back(), "RequestThreadMain [DEBUG] Msg Free & Thread Delete\n");
  if (pAction) {
    EXPECT_TRUE(pAction->Fired());
  }
  // The thread has deleted its queue: the wake-up cannot be delivered any more.
  pAction.reset();
  pCapture.reset();
  PrintCapture capture;
  requester.StopChildThread();
  EXPECT_EQ(capture.Lines(),
            Calls({"~CCamRequester [DEBUG] wait thread stop. \n",
                   "StopChildThread [ERROR] Message Send NG [!= KXCOM_LIB_OK]\n"}));
}

const DropCase kDropCases[] = {
    {"StartAtItsLine", 0, true, nullptr, "START command", {}},
    {"StartAtChangeStatus", 0, true, "ChangeStatus(0)", nullptr, {"ChangeStatus(0)"}},
    {"StartAtOpen",
     0,
     true,
     "OpenSessionCommand",
     nullptr,
     {"ChangeStatus(0)", "OpenSessionCommand"}},
    {"StartAtSetup",
     0,
     true,
     "SetupSessionCommand",
     nullptr,
     {"ChangeStatus(0)", "OpenSessionCommand", "SetupSessionCommand"}},
    {"StartAtPreset",
     0,
     true,
     "SendCamPresetCommand",
     nullptr,
     {"ChangeStatus(0)", "OpenSessionCommand", "SetupSessionCommand", "SendCamPresetCommand"}},
    {"StartAtStreamStart", 0, true, "StreamStartCommand", nullptr, kStartSteps},
    // The keep-alive pair after a start has one check before it, none inside.
    {"StartAtKeepAliveCount", 0, true, "SetKeeAliveCount(300)", nullptr,
     Concat(kStartSteps, kKeepAliveNow)},
    {"StopAtItsLine", 1, false, nullptr, "STOP command", {}},
    {"StopAtChangeStatus", 1, false, "ChangeStatus(1)", nullptr, {"ChangeStatus(1)"}},
    {"PlayBackStartAtOpen",
     5,
     false,
     "OpenSessionCommand",
     nullptr,
     {"ChangeStatus(0)", "OpenSessionCommand"}},
    {"PlayBackStartAtSetup",
     5,
     false,
     "SetupSessionCommand",
     nullptr,
     {"ChangeStatus(0)", "OpenSessionCommand", "SetupSessionCommand"}},
    {"PlayBackStopAtChangeStatus", 6, false, "ChangeStatus(1)", nullptr, {"ChangeStatus(1)"}},
    // PRESET has no check: the preset is still sent.
    {"PresetAtItsLine", 4, false, nullptr, "PRESET command", {"SendCamPresetCommand"}},
};

INSTANTIATE_TEST_SUITE_P(Requester, DropTest, ::testing::ValuesIn(kDropCases),
                         [](const ::testing::TestParamInfo<DropCase>& sInfo) {
                           return std::string(sInfo.param.pcName);
                         });

TEST_F(DispatchTest, RequestFlagsAreSetBeforeTheFirstCheck) {
  {
    RecordingRequester requester;
    LineAction action("START command", [&] { requester.bThreadLoop = 0; });
    requester.Initialize(21);
    requester.RequestStart();
    ASSERT_TRUE(requester.WaitForCount("CloseSessionPush", 1));
    EXPECT_EQ(requester.bStartReq.load(), 1);
    EXPECT_EQ(requester.Calls(), kThreadEnd);
  }
  {
    RecordingRequester requester;
    requester.bStartReq = 1;
    LineAction action("STOP command", [&] { requester.bThreadLoop = 0; });
    requester.Initialize(21);
    requester.RequestStop();
    ASSERT_TRUE(requester.WaitForCount("CloseSessionPush", 1));
    EXPECT_EQ(requester.bStartReq.load(), 0);
    // The idle rounds before the STOP checked the stream; after it nothing ran.
    Calls asCalls = requester.Calls();
    asCalls.erase(std::remove(asCalls.begin(), asCalls.end(), "KeepStreamStartCmd"), asCalls.end());
    EXPECT_EQ(asCalls, kThreadEnd);
  }
}

}  // namespace
}  // namespace camtest
