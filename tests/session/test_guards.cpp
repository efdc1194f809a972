// The guards of the RTP requester's session commands over its connection
// status: which Exec worker runs in which status, which event follows its
// result, and every message on the way.
#include <gtest/gtest.h>

#include "CamScoped.h"
#include "CamTestSupport.h"
#include "ScriptedRequester.h"
#include "SessionTestSupport.h"

namespace {

using sessiontest::ScriptedRtp;
using Lines = std::vector<std::string>;

class Guards : public ::testing::Test {
 protected:
  void SetUp() override {
    std::strcpy(req.cIpAddr, "10.1.1.9");
    req.iHttpPort = 8080;
    req.iPos = 3;
    req.usCameraType = 7;
    req.iCmdType = 0;
  }
  // The texts printed since the last Clear, without the address and
  // position cells that every line of this requester carries.
  Lines Texts() const {
    Lines asOut;
    for (const auto& s : capture.Lines()) asOut.push_back(sessiontest::Text(s, kPrefix));
    return asOut;
  }
  void Start(int iStatus) {
    req.iConnectStatus = iStatus;
    req.ClearCalls();
    capture.Clear();
  }

  static constexpr const char* kPrefix = "IP:       10.1.1.9 POS:3 ";
  camtest::PrintCapture capture;
  ScriptedRtp req;
};

TEST_F(Guards, InitAndCleanUpDoNothing) {
  Start(4);
  EXPECT_EQ(req.InitSessionCommand(), 0);
  EXPECT_EQ(req.CleanUpSessionCommand(), 0);
  EXPECT_TRUE(req.Calls().empty());
  EXPECT_TRUE(capture.Lines().empty());
}

TEST_F(Guards, OpenSessionChecksTheTypeAndOpensNothing) {
  for (int iType = 0; iType <= 4; ++iType) {
    req.iCmdType = iType;
    Start(0);
    EXPECT_EQ(req.OpenSessionCommand(), 0);
    EXPECT_TRUE(capture.Lines().empty());
    EXPECT_TRUE(req.Calls().empty());
  }
  req.iCmdType = 5;
  Start(0);
  EXPECT_EQ(req.OpenSessionCommand(), -1);
  EXPECT_EQ(Texts(), Lines{"OpenSessionCommand [Error] Undefined iCmdType=5\n"});
}

TEST_F(Guards, SetupOutsideSetupIsANop) {
  for (int iStatus : {0, 1, 3, 4, 5}) {
    Start(iStatus);
    EXPECT_EQ(req.SetupSessionCommand(), 0);
    EXPECT_EQ(
        Texts(),
        Lines{"SetupSessionCommand [DEBUG] NOP iConnectStatus=" + std::to_string(iStatus) + "\n"});
    EXPECT_TRUE(req.Calls().empty());
  }
}

TEST_F(Guards, AudioIsNeverSetUp) {
  req.iCmdType = 1;
  Start(2);
  EXPECT_EQ(req.SetupSessionCommand(), 0);
  EXPECT_TRUE(req.Calls().empty());
  EXPECT_TRUE(capture.Lines().empty());
}

TEST_F(Guards, LiveSetupSuccessGoesToReadyAndResetsTheErrorCount) {
  for (int iType : {0, 2}) {
    req.iCmdType = iType;
    Start(2);
    EXPECT_EQ(req.SetupSessionCommand(), 0);
    EXPECT_EQ(req.iConnectStatus.load(), 3);
    EXPECT_EQ(req.Calls(), (Lines{"SetupSessionCommandExec", "SndMsg_GetUID(0,3)",
                                  "ChangeStatus(2)", "ConnectErrorReset(3,10.1.1.9)"}));
    EXPECT_EQ(Texts()[1],
              "CCamRequester_Cgi_Kobu_Rtp::SetupSessionCommand [DEBUG] ConnectErrorReset\n");
  }
}

TEST_F(Guards, LiveSetupFailureGoesToErrorAndCountsWithThresholdTen) {
  for (int iResult : {-1, -2}) {
    req.iSetup = iResult;
    Start(2);
    EXPECT_EQ(req.SetupSessionCommand(), -1);
    EXPECT_EQ(req.iConnectStatus.load(), 1);
    EXPECT_EQ(req.Calls(),
              (Lines{"SetupSessionCommandExec", "SndMsg_GetUID(" + std::to_string(iResult) + ",3)",
                     "ChangeStatus(3)", "ConnectError(3,10.1.1.9,10)"}));
    EXPECT_EQ(Texts()[1],
              "CCamRequester_Cgi_Kobu_Rtp::SetupSessionCommand [ERROR] open faild IP:10.1.1.9  "
              "Port:8080\n");
  }
}

TEST_F(Guards, ControlledRecorderSetupFailureIsLeftToItsOwner) {
  req.usCameraType = 33;
  req.m_KELCtrlFlag = 1;
  req.iSetup = -1;
  Start(2);
  EXPECT_EQ(req.SetupSessionCommand(), -1);
  EXPECT_EQ(req.iConnectStatus.load(), 2);
  EXPECT_EQ(req.Calls(), (Lines{"SetupSessionCommandExec", "SndMsg_GetUID(-1,3)"}));
  EXPECT_TRUE(capture.Lines().empty());
}

TEST_F(Guards, PlayBackSetupTakesNoPartInTheErrorAccounting) {
  for (int iType : {3, 4}) {
    req.iCmdType = iType;
    req.iSetup = 0;
    Start(2);
    EXPECT_EQ(req.SetupSessionCommand(), 0);
    EXPECT_EQ(req.iConnectStatus.load(), 3);
    EXPECT_EQ(req.Calls(),
              (Lines{"SetupSessionCommandExec", "SndMsg_GetUID(0,3)", "ChangeStatus(2)"}));
    req.iSetup = -2;
    Start(2);
    EXPECT_EQ(req.SetupSessionCommand(), -1);
    EXPECT_EQ(req.iConnectStatus.load(), 1);
    EXPECT_EQ(req.Calls(),
              (Lines{"SetupSessionCommandExec", "SndMsg_GetUID(-2,3)", "ChangeStatus(3)"}));
  }
}

TEST_F(Guards, SetupOfAnUndefinedType) {
  req.iCmdType = 5;
  Start(2);
  EXPECT_EQ(req.SetupSessionCommand(), -1);
  EXPECT_EQ(Texts(), Lines{"SetupSessionCommand [Error] Undefined iCmdType=5\n"});
  EXPECT_TRUE(req.Calls().empty());
}

TEST_F(Guards, PresetRunsForVideoUnlessInError) {
  for (int iType : {0, 2}) {
    req.iCmdType = iType;
    for (int iStatus : {0, 2, 3, 4, 5}) {
      Start(iStatus);
      EXPECT_EQ(req.SendCamPresetCommand(), 0);
      EXPECT_EQ(req.Calls(), Lines{"SendCamPresetCommandExec"});
      EXPECT_EQ(req.iConnectStatus.load(), iStatus);
    }
    Start(1);
    EXPECT_EQ(req.SendCamPresetCommand(), 0);
    EXPECT_TRUE(req.Calls().empty());
  }
}

TEST_F(Guards, FailedPresetRaisesTheErrorEvent) {
  req.iPreset = -1;
  Start(4);
  EXPECT_EQ(req.SendCamPresetCommand(), 0);
  EXPECT_EQ(req.Calls(), (Lines{"SendCamPresetCommandExec", "ChangeStatus(6)"}));
  EXPECT_EQ(req.iConnectStatus.load(), 1);
}

TEST_F(Guards, PresetOfAudioAndOfOtherTypes) {
  req.iCmdType = 1;
  Start(4);
  EXPECT_EQ(req.SendCamPresetCommand(), 0);
  EXPECT_TRUE(req.Calls().empty());
  for (int iType : {3, 4, 5}) {
    req.iCmdType = iType;
    Start(4);
    EXPECT_EQ(req.SendCamPresetCommand(), -1);
    EXPECT_EQ(
        Texts(),
        Lines{"SendCamPresetCommand [Error] Undefined iCmdType=" + std::to_string(iType) + "\n"});
    EXPECT_TRUE(req.Calls().empty());
  }
}

TEST_F(Guards, StreamStartOnlyInReady) {
  for (int iStatus : {0, 1, 2, 4, 5}) {
    Start(iStatus);
    EXPECT_EQ(req.StreamStartCommand(), 0);
    EXPECT_EQ(
        Texts(),
        Lines{"StreamStartCommand [DEBUG] NOP iConnectStatus=" + std::to_string(iStatus) + "\n"});
    EXPECT_TRUE(req.Calls().empty());
  }
  Start(3);
  EXPECT_EQ(req.StreamStartCommand(), 0);
  EXPECT_EQ(req.iConnectStatus.load(), 4);
  req.iStart = -1;
  Start(3);
  EXPECT_EQ(req.StreamStartCommand(), 0);
  EXPECT_EQ(req.Calls(), (Lines{"StreamStartCommandExec", "ChangeStatus(5)"}));
  EXPECT_EQ(req.iConnectStatus.load(), 1);
}

TEST_F(Guards, IframeRunsInAnyStatusAndType) {
  for (int iType = 0; iType <= 5; ++iType) {
    req.iCmdType = iType;
    for (int iStatus = 0; iStatus <= 5; ++iStatus) {
      Start(iStatus);
      EXPECT_EQ(req.SendCamIframInstCommand(), 0);
      EXPECT_EQ(req.Calls(), Lines{"SendCamIframInstCommandExec"});
    }
  }
  req.iCmdType = 2;
  req.iIframe = -1;
  Start(4);
  req.SendCamIframInstCommand();
  EXPECT_EQ(req.Calls(), (Lines{"SendCamIframInstCommandExec", "ChangeStatus(6)"}));
  EXPECT_EQ(req.iConnectStatus.load(), 1);
}

TEST_F(Guards, KeepAliveOnlyInRunAndAFailureForgetsTheUidFirst) {
  for (int iStatus : {0, 1, 2, 3, 5}) {
    Start(iStatus);
    EXPECT_EQ(req.SendKeepAliveCommand(), 0);
    EXPECT_TRUE(req.Calls().empty());
  }
  Start(4);
  EXPECT_EQ(req.SendKeepAliveCommand(), 0);
  EXPECT_EQ(req.Calls(), Lines{"SendKeepAliveCommandExec"});
  req.iKeepAlive = -1;
  Start(4);
  EXPECT_EQ(req.SendKeepAliveCommand(), 0);
  // The upper layer hears of it while the status is still RUN.
  EXPECT_EQ(req.Calls(),
            (Lines{"SendKeepAliveCommandExec", "UidInvalid(status 4)", "ChangeStatus(6)"}));
  EXPECT_EQ(req.iConnectStatus.load(), 1);
}

TEST_F(Guards, KeepAliveForAudio) {
  req.iCmdType = 1;
  Start(3);
  EXPECT_EQ(req.SendKeepAliveCommandForAudio(), 0);
  EXPECT_TRUE(req.Calls().empty());
  Start(4);
  req.m_iKeepAliveCount = 12;
  EXPECT_EQ(req.SendKeepAliveCommandForAudio(), 0);
  EXPECT_EQ(req.Calls(), Lines{"SendKeepAliveCommandExec"});
  EXPECT_EQ(req.iKeepAliveCountSeen, 300) << "the count at its limit sends at once";
  req.iKeepAlive = -1;
  Start(4);
  req.SendKeepAliveCommandForAudio();
  EXPECT_EQ(req.Calls(),
            (Lines{"SendKeepAliveCommandExec", "UidInvalid(status 4)", "ChangeStatus(6)"}));
  req.iCmdType = 0;
  Start(4);
  EXPECT_EQ(req.SendKeepAliveCommandForAudio(), -1);
  EXPECT_EQ(Texts(), Lines{"SendKeepAliveCommandForAudio [Error] Cmd Type Not G726\n"});
  req.iCmdType = 1;
  req.usCameraType = 35;
  Start(4);
  EXPECT_EQ(req.SendKeepAliveCommandForAudio(), -1);
  EXPECT_EQ(Texts(), Lines{"SendKeepAliveCommandForAudio [Error] KE Series\n"});
  EXPECT_TRUE(req.Calls().empty());
}

TEST_F(Guards, PlayBackKeepAliveFailureStopsThePlayMode) {
  req.iCmdType = 4;
  req.m_VOGPlayMode = 5;
  Start(3);
  req.SendPBKeepAliveCommand();
  EXPECT_TRUE(req.Calls().empty());
  Start(4);
  req.SendPBKeepAliveCommand();
  EXPECT_EQ(req.Calls(), Lines{"SendPBKeepAliveCommandExec"});
  req.iPBKeepAlive = -1;
  Start(4);
  EXPECT_EQ(req.SendPBKeepAliveCommand(), 0);
  EXPECT_EQ(req.Calls(),
            (Lines{"SendPBKeepAliveCommandExec", "PlayModeStop(3,10.1.1.9,5)", "ChangeStatus(6)"}));
  EXPECT_EQ(req.iConnectStatus.load(), 1);
}

TEST_F(Guards, StreamStopOnlyInStopAndNeverFails) {
  for (int iStatus : {0, 1, 2, 3, 4}) {
    Start(iStatus);
    EXPECT_EQ(req.StreamStopCommand(), 0);
    EXPECT_TRUE(req.Calls().empty());
    EXPECT_TRUE(capture.Lines().empty());
  }
  req.iStop = -1;
  Start(5);
  EXPECT_EQ(req.StreamStopCommand(), 0);
  EXPECT_EQ(req.Calls(), (Lines{"StreamStopCommandExec", "ChangeStatus(8)"}));
  EXPECT_EQ(req.iConnectStatus.load(), 0);
}

TEST_F(Guards, RecorderStreamStop) {
  Start(4);
  EXPECT_EQ(req.KelStreamStopCommand(), 0);
  EXPECT_EQ(Texts(), Lines{"CCamRequester_Cgi_Kobu_Rtp::KelStreamStopCommand [DEBGU] NOP\n"});
  EXPECT_TRUE(req.Calls().empty());
  req.iKelStop = -1;  // the result is not looked at
  Start(5);
  EXPECT_EQ(req.KelStreamStopCommand(), 0);
  EXPECT_TRUE(req.bReplyZeroed);
  EXPECT_EQ(req.Calls(),
            (Lines{"KelStreamStopCommandExec", "ChangeStatus(8)", "CloseSessionCommand"}));
  EXPECT_EQ(req.iConnectStatus.load(), 0);
  const Lines asTexts = Texts();
  ASSERT_EQ(asTexts.size(), 3u);
  EXPECT_EQ(asTexts[0], "ChangeStatus [DEBUG] Video Event=8:5 -> 0. \n");
  EXPECT_EQ(asTexts[1].rfind("KelStreamStopCommand [DEBUG] free=0x", 0), 0u) << asTexts[1];
  EXPECT_EQ(asTexts[2], " CloseSessionCommand [Error] Multiplex Close Session.\n");
}

TEST_F(Guards, RecorderStreamStopWithoutMemoryStaysInStop) {
  Start(5);
  camses::FailNextReplyAllocations(1);
  EXPECT_EQ(req.KelStreamStopCommand(), -1);
  camses::FailNextReplyAllocations(0);
  EXPECT_EQ(req.iConnectStatus.load(), 5);
  EXPECT_EQ(req.Calls(), Lines{"CloseSessionCommand"});
  EXPECT_EQ(Texts()[0], "KelStreamStopCommand [Error] memory allocate failed\n");
}

TEST_F(Guards, SetKeepAliveCountStoresTheCount) {
  EXPECT_EQ(req.SetKeeAliveCount(123), 0);
  EXPECT_EQ(req.m_iKeepAliveCount, 123);
}

TEST_F(Guards, EarlyRestartCheckByType) {
  req.usCameraType = 32;
  req.iCmdType = 1;
  EXPECT_EQ(req.SetKelInfoFlagCheck(), -1) << "audio never restarts early";
  for (int iType : {0, 2}) {
    req.iCmdType = iType;
    EXPECT_EQ(req.SetKelInfoFlagCheck(), 0);
  }
  for (int iType : {3, 4, 5}) {
    req.iCmdType = iType;
    capture.Clear();
    EXPECT_EQ(req.SetKelInfoFlagCheck(), -1);
    EXPECT_EQ(
        Texts(),
        Lines{"SetKelInfoFlagCheck [Error] Undefined iCmdType=" + std::to_string(iType) + "\n"});
  }
}

TEST_F(Guards, EarlyRestartOnlyForARecorderThatNeedsNoUidFromOutside) {
  req.usCameraType = 30;
  EXPECT_EQ(req.SetKelInfoFlagCheckExec(), -1);
  req.usCameraType = 37;
  EXPECT_EQ(req.SetKelInfoFlagCheckExec(), -1);
  for (int iType = 31; iType <= 36; ++iType) {
    req.usCameraType = static_cast<uint16_t>(iType);
    req.iUid = -1;
    req.m_KELCtrlFlag = 1;
    EXPECT_EQ(req.SetKelInfoFlagCheckExec(), -1);
    req.m_KELCtrlFlag = 0;
    EXPECT_EQ(req.SetKelInfoFlagCheckExec(), 0);
    req.iUid = 4;
    req.m_KELCtrlFlag = 1;
    EXPECT_EQ(req.SetKelInfoFlagCheckExec(), 0);
  }
}

}  // namespace
