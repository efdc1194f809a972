// The HTTP requester's state machine: every cell of its two status tables,
// and the guards' edge cases, on a requester whose request thread is not
// started (the operations are called directly, as the thread would).
#include "HttpRig.h"
#include "HttpRoads.h"

namespace httptest {
namespace {

// Written from the tables of this requester: rows are the status, columns
// the events START, STOP, SETUP_SUCCESS, SETUP_FAIL, RUN_SUCCESS, RUN_FAIL,
// ERROR, RESERVED7, STOP_DONE. Only row 4 differs from the RTP requester's.
constexpr int kVideo[6][9] = {
    {2, 0, 0, 0, 0, 0, 0, 0, 0}, {2, 0, 1, 1, 1, 1, 1, 1, 1}, {2, 2, 3, 1, 2, 2, 1, 1, 2},
    {3, 3, 3, 3, 4, 1, 1, 1, 3}, {4, 5, 4, 4, 4, 1, 1, 1, 3}, {5, 5, 5, 5, 5, 5, 0, 0, 0},
};
constexpr int kAudio[6][9] = {
    {3, 0, 0, 0, 0, 0, 0, 0, 0}, {3, 0, 1, 1, 1, 1, 1, 1, 1}, {1, 1, 1, 1, 1, 1, 1, 1, 1},
    {3, 3, 3, 3, 4, 1, 1, 1, 3}, {4, 5, 4, 4, 4, 1, 1, 1, 4}, {5, 5, 5, 5, 5, 5, 0, 0, 0},
};

// A requester left in status 0 before it is destroyed (its destructor
// waits for that), with the print captured.
class SessionTest : public ::testing::Test {
 protected:
  void TearDown() override { req.iConnectStatus = CAM_HTTP_STS_IDLE; }
  std::string Line(const std::string& s) { return Prefixed(req, s); }
  camtest::PrintCapture capture;
  CCamRequester_Cgi_Kobu_Http req;
};

void ExpectTable(CCamRequester_Cgi_Kobu_Http& rReq, camtest::PrintCapture& rCapture, int iCmdType,
                 const int (&aiTable)[6][9], const char* pcWord) {
  rReq.iCmdType = iCmdType;
  rReq.iUid = 5;  // the audio guard of status 1 does not apply
  for (int iStatus = 0; iStatus < 6; ++iStatus) {
    for (int iEvent = 0; iEvent < 9; ++iEvent) {
      rReq.iConnectStatus = iStatus;
      rCapture.Clear();
      rReq.ChangeStatus(iEvent);
      EXPECT_EQ(rReq.iConnectStatus, aiTable[iStatus][iEvent])
          << pcWord << " status " << iStatus << " event " << iEvent;
      const std::string sLine = std::string("ChangeStatus [DEBUG] ") + pcWord +
                                " Event=" + std::to_string(iEvent) + ":" + std::to_string(iStatus) +
                                " -> " + std::to_string(aiTable[iStatus][iEvent]) + ". \n";
      EXPECT_EQ(rCapture.Lines(), std::vector<std::string>{Prefixed(rReq, sLine)});
    }
  }
}

TEST_F(SessionTest, VideoTableEveryCellForLiveJpeg) {
  ExpectTable(req, capture, CAM_REQUESTER_CMD_JPEG_HTTP, kVideo, "Video");
}

TEST_F(SessionTest, VideoTableEveryCellForPlayBack) {
  ExpectTable(req, capture, CAM_REQUESTER_CMD_JPEG_PLAY, kVideo, "Video");
}

TEST_F(SessionTest, AudioTableEveryCell) {
  ExpectTable(req, capture, CAM_REQUESTER_CMD_G726_HTTP, kAudio, "Audio");
}

TEST_F(SessionTest, AudioInErrorWithoutUidStaysOnStart) {
  req.iCmdType = CAM_REQUESTER_CMD_G726_HTTP;
  req.iUid = -1;
  req.iConnectStatus = CAM_HTTP_STS_ERROR;
  req.ChangeStatus(CAM_HTTP_EVT_START);
  EXPECT_EQ(req.iConnectStatus, CAM_HTTP_STS_ERROR);
  EXPECT_EQ(capture.Lines(),
            std::vector<std::string>{Line("ChangeStatus [DEBUG] Audio Event=0:1 UID=-1. \n")});
  // Any other event takes the table.
  req.ChangeStatus(CAM_HTTP_EVT_STOP);
  EXPECT_EQ(req.iConnectStatus, CAM_HTTP_STS_IDLE);
}

TEST_F(SessionTest, UndefinedTypesChangeNothing) {
  for (int iType : {3, 4, 7}) {
    req.iCmdType = iType;
    req.iConnectStatus = CAM_HTTP_STS_READY;
    capture.Clear();
    req.ChangeStatus(CAM_HTTP_EVT_RUN_SUCCESS);
    EXPECT_EQ(req.iConnectStatus, CAM_HTTP_STS_READY);
    EXPECT_EQ(capture.Lines(),
              std::vector<std::string>{Line("ChangeStatus [Error] Undefined event=4\n")});
  }
}

TEST_F(SessionTest, StartInRunWithoutAPushOnlyPrints) {
  req.iCmdType = CAM_REQUESTER_CMD_JPEG_HTTP;
  req.iConnectStatus = CAM_HTTP_STS_RUN;
  req.iStartRetry = 1;
  EXPECT_EQ(req.StreamStartCommand(), 0);
  EXPECT_EQ(req.iConnectStatus, CAM_HTTP_STS_RUN);
  char acLine[128];
  std::snprintf(acLine, sizeof(acLine),
                "StreamStartCommand [DEBUG] iStartRetryFlag=1 psSessionPush=%p TINDEX=%x\n",
                static_cast<void*>(nullptr), req.iChildThreadIndex.load());
  EXPECT_EQ(capture.Lines(), std::vector<std::string>{Line(acLine)});
  req.iStartRetry = 0;
}

TEST_F(SessionTest, StartOutsideReadyAndRunIsANop) {
  req.iCmdType = CAM_REQUESTER_CMD_JPEG_HTTP;
  for (int iStatus : {0, 1, 2, 5}) {
    req.iConnectStatus = iStatus;
    capture.Clear();
    EXPECT_EQ(req.StreamStartCommand(), 0);
    EXPECT_EQ(req.iConnectStatus, iStatus);
    EXPECT_EQ(capture.Lines(),
              std::vector<std::string>{Line("StreamStartCommand [Error] NOP iConnectStatus=" +
                                            std::to_string(iStatus) + "\n")});
  }
}

TEST_F(SessionTest, StartWithoutUidFailsToError) {
  req.iCmdType = CAM_REQUESTER_CMD_JPEG_HTTP;
  req.iConnectStatus = CAM_HTTP_STS_READY;
  EXPECT_EQ(req.StreamStartCommand(), 0);
  EXPECT_EQ(req.iConnectStatus, CAM_HTTP_STS_ERROR);
  EXPECT_TRUE(capture.Contains("StreamStartCommandExec [Error]iUid == -1. \n"));
}

TEST_F(SessionTest, PlayBackIsNeverPushed) {
  req.iCmdType = CAM_REQUESTER_CMD_JPEG_PLAY;
  req.iUid = 4;
  EXPECT_EQ(req.StreamStartCommandExec(), -1);
  EXPECT_EQ(capture.Lines(),
            std::vector<std::string>{Line("StreamStartCommandExec [Error] iCmdType:JPEG_PLAY\n")});
}

TEST_F(SessionTest, PresetRefusesPlayBack) {
  req.iCmdType = CAM_REQUESTER_CMD_JPEG_PLAY;
  EXPECT_EQ(req.SendCamPresetCommand(), -1);
  EXPECT_EQ(capture.Lines(),
            std::vector<std::string>{Line("SendCamPresetCommand [Error] Undefined iCmdType=2\n")});
  // Audio has nothing to move.
  req.iCmdType = CAM_REQUESTER_CMD_G726_HTTP;
  capture.Clear();
  EXPECT_EQ(req.SendCamPresetCommand(), 0);
  EXPECT_TRUE(capture.Lines().empty());
}

TEST_F(SessionTest, UidInvalidOfAudioKeepsTheUid) {
  PushReaderNotify notify;
  req.p_notify_to_upper = &notify;
  req.iCmdType = CAM_REQUESTER_CMD_G726_HTTP;
  req.iUid = 9;
  req.UidInvalid();
  EXPECT_EQ(req.iUid, 9);
  EXPECT_EQ(capture.Lines(), std::vector<std::string>{Line("UidInvalid [DEBUG] G.726HTTP:\n")});
  EXPECT_TRUE(notify.SessionInfos().empty());
}

TEST_F(SessionTest, UidInvalidOfJpegTellsTheUpperLayerOnce) {
  PushReaderNotify notify;
  req.p_notify_to_upper = &notify;
  req.iCmdType = CAM_REQUESTER_CMD_JPEG_HTTP;
  req.iUid = 9;
  req.UidInvalid();
  req.UidInvalid();  // the UID is gone already: nothing more to tell
  EXPECT_EQ(req.iUid, -1);
  ASSERT_EQ(notify.SessionInfos().size(), 1u);
  EXPECT_EQ(notify.SessionInfos()[0].iUid, -1);
  EXPECT_EQ(capture.Count(Line("UidInvalid [DEBUG] JPEG:\n")), 2);
}

TEST_F(SessionTest, UidInvalidWithoutUpperLayerOrInDestruction) {
  req.iCmdType = CAM_REQUESTER_CMD_JPEG_HTTP;
  req.iUid = 9;
  req.UidInvalid();
  EXPECT_EQ(req.iUid, -1);
  EXPECT_EQ(capture.Lines(),
            (std::vector<std::string>{Line("UidInvalid [DEBUG] JPEG:\n"),
                                      Line("UidInvalid [Error] p_notify_to_upper=NULL\n")}));
  req.iCmdType = CAM_REQUESTER_CMD_JPEG_PLAY;
  req.iUid = 9;
  capture.Clear();
  req.UidInvalid();
  EXPECT_EQ(req.iUid, 9);
  EXPECT_EQ(capture.Lines(), std::vector<std::string>{Line("UidInvalid [Error] iCmdType=2\n")});
  req.m_iDestruct = 1;
  capture.Clear();
  req.UidInvalid();
  EXPECT_EQ(req.iUid, -1);
  EXPECT_EQ(capture.Lines(), std::vector<std::string>{Line("UidInvalid [DEBUG] :DESTRUCT\n")});
  req.m_iDestruct = 0;
}

TEST_F(SessionTest, StreamCheckCountsOnlyInRun) {
  PushReaderNotify notify;
  req.p_notify_to_upper = &notify;
  req.iCmdType = CAM_REQUESTER_CMD_JPEG_HTTP;
  req.usCameraType = CAM_REQUESTER_CAMTYPE_CAM07;
  req.iConnectStatus = CAM_HTTP_STS_READY;
  for (int i = 0; i < 200; ++i) req.KeepStreamStartCmd();
  EXPECT_EQ(req.m_iStreamCheckCount, 0);
  EXPECT_EQ(notify.StateQueries(), 0);
  req.iConnectStatus = CAM_HTTP_STS_RUN;
  for (int i = 0; i < 149; ++i) req.KeepStreamStartCmd();
  EXPECT_EQ(notify.StateQueries(), 0);
  EXPECT_EQ(req.m_iStreamCheckCount, 149);
  req.KeepStreamStartCmd();
  EXPECT_EQ(notify.StateQueries(), 1);
  EXPECT_EQ(req.m_iStreamCheckCount, 0);
  EXPECT_EQ(capture.Count(Line("CheckStreamStart [DEBUG] CheckStreamStart Start\n")), 1);
}

TEST_F(SessionTest, KeepAliveCountIsSetAsGiven) {
  EXPECT_EQ(req.SetKeeAliveCount(123), 0);
  EXPECT_EQ(req.m_iKeepAliveCount, 123);
}

TEST_F(SessionTest, EarlyRestartOnlyForARecordersVideo) {
  req.iCmdType = CAM_REQUESTER_CMD_JPEG_HTTP;
  req.usCameraType = CAM_REQUESTER_CAMTYPE_CAM07;
  EXPECT_EQ(req.SetKelInfoFlagCheck(), -1);
  req.usCameraType = CAM_REQUESTER_CAMTYPE_KEL31;
  EXPECT_EQ(req.SetKelInfoFlagCheck(), 0);
  req.m_KELCtrlFlag = 1;
  EXPECT_EQ(req.SetKelInfoFlagCheck(), -1);  // waits for its UID from outside
  req.iUid = 3;
  EXPECT_EQ(req.SetKelInfoFlagCheck(), 0);
  req.iCmdType = CAM_REQUESTER_CMD_G726_HTTP;
  EXPECT_EQ(req.SetKelInfoFlagCheck(), -1);
  capture.Clear();
  req.iCmdType = CAM_REQUESTER_CMD_JPEG_PLAY;
  EXPECT_EQ(req.SetKelInfoFlagCheck(), -1);
  EXPECT_EQ(capture.Lines(),
            std::vector<std::string>{Line("SetKelInfoFlagCheck [Error] Undefined iCmdType=2\n")});
}

TEST_F(SessionTest, OpenAcceptsTheThreeTypes) {
  for (int iType : {0, 1, 2}) {
    req.iCmdType = iType;
    EXPECT_EQ(req.OpenSessionCommand(), 0);
  }
  EXPECT_TRUE(capture.Lines().empty());
  req.iCmdType = 3;
  EXPECT_EQ(req.OpenSessionCommand(), -1);
  EXPECT_EQ(capture.Lines(),
            std::vector<std::string>{Line("OpenSessionCommand [Error] Undefined iCmdType=3\n")});
}

TEST_F(SessionTest, StopGuardsPrintTheirNop) {
  req.iCmdType = CAM_REQUESTER_CMD_JPEG_HTTP;
  req.iConnectStatus = CAM_HTTP_STS_READY;
  EXPECT_EQ(req.StreamStopCommand(), 0);
  EXPECT_EQ(req.KelStreamStopCommand(), 0);
  EXPECT_EQ(capture.Lines(),
            (std::vector<std::string>{
                Line("CCamRequester_Cgi_Kobu_Http::StreamStopCommand [DEBGU] NOP\n"),
                Line("CCamRequester_Cgi_Kobu_Http::KelStreamStopCommand [DEBGU] NOP\n")}));
  EXPECT_EQ(req.iConnectStatus, CAM_HTTP_STS_READY);
}

}  // namespace
}  // namespace httptest
