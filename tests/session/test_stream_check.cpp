// UidInvalid of the RTP requester, the stream-check tick and the stream
// check itself with the upper layer's stream-state query.
#include <gtest/gtest.h>

#include "CamTestSupport.h"
#include "ScriptedRequester.h"
#include "SessionTestSupport.h"
#include "almsnd.h"

namespace {

using sessiontest::RecordingUpper;
using sessiontest::ScriptedRtp;
using Lines = std::vector<std::string>;

class StreamCheck : public ::testing::Test {
 protected:
  void SetUp() override {
    std::strcpy(req.cIpAddr, "10.2.2.2");
    req.iPos = 2;
    req.iRtpPort = 5006;
    req.usSelectChNo = 3;
    req.iAudioBitrate = 32;
    req.iAudioEnable = 100;
    req.iUniPort = 6000;
    req.iAudioInPort = 7000;
    std::strcpy(req.cMultiAddr, "239.1.2.4");
    req.p_notify_to_upper = &upper;
  }
  Lines Texts() const {
    Lines asOut;
    for (const auto& s : capture.Lines()) asOut.push_back(sessiontest::Text(s, kPrefix));
    return asOut;
  }
  static constexpr const char* kPrefix = "IP:       10.2.2.2 POS:2 ";
  camtest::PrintCapture capture;
  RecordingUpper upper;
  ScriptedRtp req;
};

TEST_F(StreamCheck, UidInvalidOfVideoTellsTheUpperLayerWithZeroDelivery) {
  for (int iType : {0, 2}) {
    req.iCmdType = iType;
    req.iUid = 44;
    capture.Clear();
    EXPECT_EQ(req.UidInvalid(), 0);
    EXPECT_EQ(req.iUid.load(), -1);
    EXPECT_EQ(Texts(),
              Lines{iType == 0 ? "UidInvalid [DEBUG] H.264:\n" : "UidInvalid [DEBUG] MPEG4:\n"});
  }
  const auto notices = upper.Rtp();
  ASSERT_EQ(notices.size(), 2u);
  for (const auto& n : notices) {
    EXPECT_EQ(n.iUid, -1);
    EXPECT_FALSE(n.bSessionInfo) << "no session is open";
    EXPECT_EQ(n.iRtpPort, 5006);
    EXPECT_EQ(n.sAddress, "10.2.2.2");
    EXPECT_EQ(n.iPos, 2);
    EXPECT_EQ(n.iSelectChNo, 3);
    EXPECT_EQ(n.iAudioBitrate, 0);
    EXPECT_EQ(n.iAudioEnable, 0);
    EXPECT_EQ(n.sMultiAddr, "239.1.2.4");
    EXPECT_EQ(n.iUniPort, 0);
    EXPECT_EQ(n.iAudioInPort, 0);
  }
  EXPECT_EQ(notices[0].iCmdType, 0);
  EXPECT_EQ(notices[1].iCmdType, 2);
}

TEST_F(StreamCheck, UidInvalidWithoutUpperLayer) {
  req.p_notify_to_upper = nullptr;
  req.iCmdType = 0;
  EXPECT_EQ(req.UidInvalid(), 0);
  EXPECT_EQ(req.iUid.load(), -1);
  EXPECT_EQ(Texts(),
            (Lines{"UidInvalid [DEBUG] H.264:\n", "UidInvalid [Error] p_notify_to_upper=NULL\n"}));
}

TEST_F(StreamCheck, UidInvalidKeepsAudioAndOtherTypes) {
  req.iCmdType = 1;
  req.UidInvalid();
  EXPECT_EQ(req.iUid.load(), 11);
  for (int iType : {3, 4, 5}) {
    req.iCmdType = iType;
    req.UidInvalid();
    EXPECT_EQ(req.iUid.load(), 11);
  }
  EXPECT_EQ(Texts(), (Lines{"UidInvalid [DEBUG] G.726:\n", "UidInvalid [Error] iCmdType=3\n",
                            "UidInvalid [Error] iCmdType=4\n", "UidInvalid [Error] iCmdType=5\n"}));
  EXPECT_EQ(upper.m_iCalls.load(), 0);
}

TEST_F(StreamCheck, UidInvalidDuringDestructionOnlyForgets) {
  req.iCmdType = 0;
  req.m_iDestruct = 1;
  req.UidInvalid();
  EXPECT_EQ(req.iUid.load(), -1);
  EXPECT_EQ(Texts(), Lines{"UidInvalid [DEBUG] :DESTRUCT\n"});
  EXPECT_EQ(upper.m_iCalls.load(), 0);
  req.m_iDestruct = 0;
}

TEST_F(StreamCheck, TickOutsideRunLeavesTheCounterAlone) {
  for (int iStatus : {0, 1, 2, 3, 5}) {
    req.iConnectStatus = iStatus;
    req.m_iStreamCheckCount = 17;
    for (int i = 0; i < 400; ++i) EXPECT_EQ(req.KeepStreamStartCmd(), 0);
    EXPECT_EQ(req.m_iStreamCheckCount, 17);
    EXPECT_EQ(req.CountOf("CheckStreamStart"), 0);
  }
}

TEST_F(StreamCheck, TickChecksOnEvery150thRoundInRun) {
  req.iConnectStatus = 4;
  for (int i = 0; i < 149; ++i) req.KeepStreamStartCmd();
  EXPECT_EQ(req.CountOf("CheckStreamStart"), 0);
  EXPECT_EQ(req.m_iStreamCheckCount, 149);
  req.KeepStreamStartCmd();
  EXPECT_EQ(req.CountOf("CheckStreamStart"), 1);
  EXPECT_EQ(req.m_iStreamCheckCount, 0);
  for (int i = 0; i < 450; ++i) req.KeepStreamStartCmd();
  EXPECT_EQ(req.CountOf("CheckStreamStart"), 4);
}

TEST_F(StreamCheck, CameraStreamIsAnsweredByTheUpperLayer) {
  req.bRealStreamCheck = true;
  req.usCameraType = 7;
  for (int iType : {0, 2}) {
    for (int iState : {0, 1, 2}) {
      upper.iStreamState = iState;
      req.ClearCalls();
      EXPECT_EQ(req.CheckStreamStart(7, iType), iState);
      EXPECT_EQ(upper.m_iLastQueryType.load(), 7);
      EXPECT_EQ(upper.m_iLastQueryCmd.load(), iType);
      EXPECT_EQ(req.Calls(), Lines{"CheckStreamStart"}) << "nothing else happens";
    }
  }
  EXPECT_TRUE(capture.Lines().empty());
  for (int iType : {1, 3, 4}) {
    capture.Clear();
    req.CheckStreamStart(7, iType);
    EXPECT_EQ(Texts(), Lines{"CheckStreamStart [Error] iCmdType=" + std::to_string(iType) + "\n"});
  }
}

TEST_F(StreamCheck, WithoutUpperLayerOrDuringDestruction) {
  req.bRealStreamCheck = true;
  req.p_notify_to_upper = nullptr;
  req.CheckStreamStart(7, 0);
  req.p_notify_to_upper = &upper;
  req.m_iDestruct = 1;
  req.CheckStreamStart(32, 0);
  req.m_iDestruct = 0;
  EXPECT_EQ(Texts(), (Lines{"CheckStreamStart [ERROR] param error [NULL]\n",
                            "CheckStreamStart [ERROR] param error [NULL]\n"}));
  EXPECT_EQ(upper.m_iQueries.load(), 0);
}

TEST_F(StreamCheck, RecorderAudioIsOnlyPrinted) {
  req.bRealStreamCheck = true;
  for (int iType = 31; iType <= 36; ++iType) {
    req.usCameraType = static_cast<uint16_t>(iType);
    capture.Clear();
    EXPECT_EQ(req.CheckStreamStart(static_cast<unsigned short>(iType), 1), 0);
    Lines want{"CheckStreamStart [DEBUG] CAM_REQUESTER_CMD_G726_RTP\n"};
    if (iType == 34 || iType == 36)
      want.push_back("CheckStreamStart [DEBUG] CAM_REQUESTER_CAMTYPE_KE850\n");
    EXPECT_EQ(Texts(), want);
  }
  EXPECT_EQ(upper.m_iQueries.load(), 0);
  req.usCameraType = 33;
  for (int iType : {3, 4}) {
    capture.Clear();
    req.CheckStreamStart(33, iType);
    EXPECT_EQ(Texts(), Lines{"CheckStreamStart [Error] iCmdType=" + std::to_string(iType) + "\n"});
  }
}

TEST_F(StreamCheck, RecorderNotArrivingIsPushedAgainButNotCountedAsStopped) {
  req.bRealStreamCheck = true;
  req.usCameraType = 33;
  req.iCmdType = 0;
  upper.iStreamState = 2;
  for (int i = 0; i < 3; ++i) {
    capture.Clear();
    req.CheckStreamStart(33, 0);
    EXPECT_EQ(Texts(), Lines{"CheckStreamStart [DEBUG] POS=2 PUSH CGI!\n"});
  }
  EXPECT_EQ(req.CountOf("StreamStartCommandExec"), 3);
  for (const auto& s : req.Calls()) EXPECT_EQ(s.find("ConnectError"), std::string::npos) << s;
  EXPECT_EQ(req.m_iRtpStopState, 0);
}

TEST_F(StreamCheck, RecorderStallIsReportedOnceAndItsEndOnce) {
  req.bRealStreamCheck = true;
  req.usCameraType = 31;
  req.iCmdType = 2;
  upper.iStreamState = 1;
  req.CheckStreamStart(31, 2);
  req.CheckStreamStart(31, 2);
  EXPECT_EQ(req.CountOf("ConnectError(2,10.2.2.2,1)"), 1);
  EXPECT_EQ(req.CountOf("StreamStartCommandExec"), 2);
  EXPECT_EQ(req.m_iRtpStopState, 1);
  upper.iStreamState = 0;
  req.CheckStreamStart(31, 2);
  req.CheckStreamStart(31, 2);
  EXPECT_EQ(req.CountOf("ConnectErrorReset(2,10.2.2.2)"), 1);
  EXPECT_EQ(req.CountOf("StreamStartCommandExec"), 2) << "an arriving stream is left alone";
  EXPECT_EQ(req.m_iRtpStopState, 0);
  const Lines asTexts = Texts();
  EXPECT_EQ(std::count(asTexts.begin(), asTexts.end(), "CheckStreamStart RTP RUN ->STOP  POS=2 \n"),
            1);
  EXPECT_EQ(
      std::count(asTexts.begin(), asTexts.end(), "CheckStreamStart RTP STOP -> RUN  POS=2 \n"), 1);
}

TEST_F(StreamCheck, PushAnswered204SendsAKeepAliveAtOnce) {
  req.bRealStreamCheck = true;
  req.usCameraType = 32;
  req.iCmdType = 0;
  req.iConnectStatus = 4;
  upper.iStreamState = 2;
  req.ulStartResultWord = 0x08000204;
  req.m_iKeepAliveCount = 5;
  capture.Clear();
  req.CheckStreamStart(32, 0);
  EXPECT_EQ(req.Calls(),
            (Lines{"CheckStreamStart", "StreamStartCommandExec", "SendKeepAliveCommandExec"}));
  EXPECT_EQ(req.iKeepAliveCountSeen, 300);
  EXPECT_EQ(req.m_KELCheckStreamRet, 0u) << "cleared after use";
  EXPECT_EQ(Texts(),
            (Lines{"CheckStreamStart [DEBUG] POS=2 PUSH CGI!\n",
                   "CheckStreamStart [DEBUG] POS=2 PUSH CGI! m_KELCheckStreamRet=0x8000204 "
                   "KeepAlive Send\n"}));
  // Only both bits together: 0x200 alone sends nothing more.
  req.ClearCalls();
  req.ulStartResultWord = 0x08000200;
  req.CheckStreamStart(32, 0);
  EXPECT_EQ(req.Calls(), (Lines{"CheckStreamStart", "StreamStartCommandExec"}));
  // A failed forced keep-alive forgets the UID and raises the error event.
  req.ClearCalls();
  req.ulStartResultWord = 0x08000204;
  req.iKeepAlive = -1;
  req.CheckStreamStart(32, 0);
  EXPECT_EQ(req.Calls(),
            (Lines{"CheckStreamStart", "StreamStartCommandExec", "SendKeepAliveCommandExec",
                   "UidInvalid(status 4)", "ChangeStatus(6)"}));
  EXPECT_EQ(req.iConnectStatus.load(), 1);
  // A failed push sends no keep-alive.
  req.ClearCalls();
  req.iStart = -1;
  req.CheckStreamStart(32, 0);
  EXPECT_EQ(req.Calls(), (Lines{"CheckStreamStart", "StreamStartCommandExec"}));
}

}  // namespace
