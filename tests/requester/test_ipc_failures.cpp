// The requester's answers to failures of the IPC library: no buffer, no
// payload, a refused send, a failed free. Each is logged in its own words
// and swallowed; nothing is left behind.
#include "RequesterTestBase.h"

namespace camtest {
namespace {

class IpcFailureTest : public RequesterTest {
 protected:
  void TearDown() override {
    for (int i = 0; i < KXCOM_FAULT_KINDS; ++i) KXCOM_FailNext(static_cast<KXCOM_FAULT>(i), 0);
    RequesterTest::TearDown();
  }
  PrintCapture capture;
};

TEST_F(IpcFailureTest, NoBufferForARequest) {
  RecordingRequester req;
  req.Initialize(3);
  KXCOM_FailNext(KXCOM_FAULT_CREATE, 4);
  EXPECT_EQ(req.RequestStart(), 0);
  EXPECT_EQ(req.RequestStop(), 0);
  EXPECT_EQ(req.RequestPBStart(), 0);
  EXPECT_EQ(req.RequestPresetPosition(), -1);
  for (const char* pcName : {"RequestStart", "RequestStop", "RequestPBStart"}) {
    EXPECT_EQ(capture.Count(std::string(pcName) + " [ERROR] Not Buffer Created. NG. \n"), 1);
    // The OUT line comes all the same, with no buffer.
    EXPECT_EQ(capture.Count(std::string(pcName) + " [DEBUG] OUT=13.(nil) \n"), 1) << capture.All();
  }
  EXPECT_EQ(capture.Count("RequestPresetPosition [ERROR] Not Buffer Created. NG. \n"), 1);
  EXPECT_EQ(capture.CountContaining("RequestPresetPosition [DEBUG] OUT="), 0);
  EXPECT_EQ(req.Calls().size(), 0u);
}

TEST_F(IpcFailureTest, RefusedSendFreesTheBuffer) {
  RecordingRequester req;
  req.Initialize(3);
  KXCOM_FailNext(KXCOM_FAULT_SEND, 2);
  EXPECT_EQ(req.RequestPBStop(), 0);
  EXPECT_EQ(req.RequestPresetPosition(), 0);
  EXPECT_EQ(capture.Count("RequestPBStop [ERROR] Message Send NG [!= KXCOM_LIB_OK]\n"), 1);
  EXPECT_EQ(capture.Count("RequestPresetPosition [ERROR] Message Send NG [!= KXCOM_LIB_OK]\n"), 1);
  EXPECT_EQ(capture.CountContaining("RequestPresetPosition [DEBUG] OUT=13.0x"), 1) << capture.All();
  // The buffers went back: the fixture counts them at the end, and the
  // thread never saw a request.
  EXPECT_EQ(KXCOM_LiveBufferCount(), m_iBuffersBefore);
  EXPECT_EQ(req.Calls().size(), 0u);
}

TEST_F(IpcFailureTest, StopWithoutAWakeUpMessageStillEndsTheThread) {
  auto* psReq = new RecordingRequester();
  psReq->Initialize(4);
  KXCOM_FailNext(KXCOM_FAULT_CREATE, 1);
  psReq->StopChildThread();
  EXPECT_EQ(capture.Count("StopChildThread [ERROR] Not Buffer Created. NG. \n"), 1);
  EXPECT_EQ(capture.Count("RequestThreadMain [DEBUG] Msg Free & Thread Delete\n"), 1);
  delete psReq;

  psReq = new RecordingRequester();
  psReq->Initialize(4);
  KXCOM_FailNext(KXCOM_FAULT_SEND, 1);
  psReq->StopChildThread();
  EXPECT_EQ(capture.Count("StopChildThread [ERROR] Message Send NG [!= KXCOM_LIB_OK]\n"), 1);
  EXPECT_EQ(capture.Count("RequestThreadMain [DEBUG] Msg Free & Thread Delete\n"), 2);
  delete psReq;
}

TEST_F(IpcFailureTest, FailedFreeIsLoggedAndTheThreadGoesOn) {
  RecordingRequester req;
  req.Initialize(3);
  KXCOM_FailNext(KXCOM_FAULT_FREE, 1);
  req.RequestPresetPosition();
  ASSERT_TRUE(capture.WaitFor("RequestThreadMain [ERROR] MemFree Error\n"));
  // The next request is served as usual.
  req.RequestPresetPosition();
  ASSERT_TRUE(capture.WaitForCount("RequestThreadMain [DEBUG] PRESET command", 2));
}

TEST_F(IpcFailureTest, UidMessageWithoutBufferOrPayload) {
  const int iQueue = KXCOM_InitMsg_Asy(CAM_UIDMSG_DESTINATION, 0);
  ASSERT_GE(iQueue, 0);
  RecordingRequester req;
  KXCOM_FailNext(KXCOM_FAULT_CREATE, 1);
  req.SndMsg_GetUID(-2, 1);
  EXPECT_EQ(capture.Count("SndMsg_GetUID [ERROR] COM_MsgBufCreate().\n"), 1);
  KXCOM_FailNext(KXCOM_FAULT_PAYLOAD, 1);
  req.SndMsg_GetUID(-2, 1);
  EXPECT_EQ(capture.Count("SndMsg_GetUID [ERROR] KXCOM_GetMsgPtr_Asy().\n"), 1);
  // Neither attempt counted as sent: the first real one still goes out.
  EXPECT_EQ(req.iLastUidResult, 10);
  req.SndMsg_GetUID(-2, 1);
  const struct timeval sWait = {1, 0};
  KXCOM_MSGBUF* psMsg = _COM_MsgRcvMain(0, sWait, iQueue);
  ASSERT_NE(psMsg, nullptr);
  EXPECT_EQ(psMsg->ulCode, CAM_UIDMSG_ID);
  KXCOM_FreeMsgBuf_Asy(psMsg);
  KXCOM_DeleteMsgQue_Asy(iQueue, CAM_UIDMSG_DESTINATION, 0);
}

TEST_F(IpcFailureTest, RefusedUidMessageKeepsTheNewResult) {
  RecordingRequester req;
  // Nobody bound the destination: the send fails, the buffer is freed, and
  // the result is remembered all the same.
  req.SndMsg_GetUID(0, 2);
  EXPECT_EQ(capture.CountContaining("SndMsg_GetUID [ERROR] COM_MsgSnd(). Code=[0x"), 1)
      << capture.All();
  EXPECT_EQ(req.iLastUidResult, 0);
}

}  // namespace
}  // namespace camtest
