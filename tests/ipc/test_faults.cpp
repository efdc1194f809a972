// Failures asked for with KXCOM_FailNext: each kind fails exactly the given
// number of times, then the calls work again; nothing leaks.
#include <gtest/gtest.h>

#include "kxcom.h"

namespace {

class FaultTest : public ::testing::Test {
 protected:
  void SetUp() override { iLiveBefore = KXCOM_LiveBufferCount(); }
  void TearDown() override {
    for (int i = 0; i < KXCOM_FAULT_KINDS; ++i) KXCOM_FailNext(static_cast<KXCOM_FAULT>(i), 0);
    EXPECT_EQ(KXCOM_LiveBufferCount(), iLiveBefore);
  }
  int iLiveBefore = 0;
};

TEST_F(FaultTest, CreateFailsTheGivenNumberOfTimes) {
  KXCOM_FailNext(KXCOM_FAULT_CREATE, 2);
  EXPECT_EQ(KXCOM_CreateMsgBuf_Asy(0, 0, 0), nullptr);
  EXPECT_EQ(COM_MsgBufCreate(0x2203001C, 0, 0), nullptr);
  KXCOM_MSGBUF* psBuf = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
  ASSERT_NE(psBuf, nullptr);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(psBuf), KXCOM_LIB_OK);
}

TEST_F(FaultTest, PayloadFailsOnce) {
  KXCOM_MSGBUF* psBuf = COM_MsgBufCreate(0x2203001C, 0, 0);
  KXCOM_FailNext(KXCOM_FAULT_PAYLOAD, 1);
  EXPECT_EQ(_COM_STR_PTR(psBuf, 12), nullptr);
  EXPECT_NE(_COM_STR_PTR(psBuf, 12), nullptr);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(psBuf), KXCOM_LIB_OK);
}

TEST_F(FaultTest, RefusedSendLeavesTheBufferWithTheSender) {
  const int iQueue = KXCOM_InitMsg_Asy(77, 5);
  ASSERT_GE(iQueue, 0);
  KXCOM_MSGBUF* psBuf = KXCOM_CreateMsgBuf_Asy(1, 0, 0);
  KXCOM_FailNext(KXCOM_FAULT_SEND, 1);
  EXPECT_EQ(_COM_MsgSndMain(77, 5, psBuf), KXCOM_ERR_NO_MEMORY);
  // Still the sender's: it can be sent again.
  EXPECT_EQ(_COM_MsgSndMain(77, 5, psBuf), KXCOM_LIB_OK);
  const struct timeval sWait = {0, 0};
  KXCOM_MSGBUF* psGot = _COM_MsgRcvMain(0, sWait, iQueue);
  EXPECT_EQ(psGot, psBuf);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(psGot), KXCOM_LIB_OK);
  EXPECT_EQ(KXCOM_DeleteMsgQue_Asy(iQueue, 77, 5), KXCOM_LIB_OK);
}

TEST_F(FaultTest, FailedFreeReportsButReleases) {
  KXCOM_MSGBUF* psBuf = KXCOM_CreateMsgBuf_Asy(1, 0, 0);
  KXCOM_FailNext(KXCOM_FAULT_FREE, 1);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(psBuf), KXCOM_ERR_NO_MEMORY);
  EXPECT_EQ(KXCOM_LiveBufferCount(), iLiveBefore);
}

TEST_F(FaultTest, ZeroClearsAndUnknownKindsAreIgnored) {
  KXCOM_FailNext(KXCOM_FAULT_CREATE, 5);
  KXCOM_FailNext(KXCOM_FAULT_CREATE, 0);
  KXCOM_FailNext(static_cast<KXCOM_FAULT>(99), 3);
  KXCOM_MSGBUF* psBuf = KXCOM_CreateMsgBuf_Asy(1, 0, 0);
  ASSERT_NE(psBuf, nullptr);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(psBuf), KXCOM_LIB_OK);
}

}  // namespace
