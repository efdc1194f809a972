// Connection-error accounting with its alarm reports, and the UID message.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "RequesterTestBase.h"

namespace camtest {
namespace {

using Lines = std::vector<std::string>;

class ConnectErrorTest : public RequesterTest {};

char g_acAddress[] = "127.0.0.1";

std::string CountLine(int iCount, int iStat) {
  return "[CCamR::ConnectError] m_iErrorCount = [" + std::to_string(iCount) + "] m_fErrorStat = [" +
         std::to_string(iStat) + "]\n";
}

// The texts of the accounting itself (the alarm service prints its own line).
Lines AccountingLines(const PrintCapture& rCapture) {
  return LinesStartingWith(rCapture, "[CCamR::");
}

TEST_F(ConnectErrorTest, PositionsOutside1To6ChangeNothing) {
  PrintCapture capture;
  AlarmCapture alarms;
  RecordingRequester requester;
  for (int i = 0; i < 20; ++i) {
    requester.ConnectError(0, g_acAddress, 1);
    requester.ConnectError(7, g_acAddress, 1);
  }
  EXPECT_EQ(requester.m_iErrorCount, 0);
  EXPECT_EQ(requester.m_fErrorStat, 0);
  requester.ConnectError(3, g_acAddress, 1);
  ASSERT_EQ(requester.m_fErrorStat, 1);
  capture.Clear();
  requester.ConnectErrorReset(0, g_acAddress);
  requester.ConnectErrorReset(7, g_acAddress);
  EXPECT_EQ(requester.m_iErrorCount, 1);
  EXPECT_EQ(requester.m_fErrorStat, 1);
  EXPECT_TRUE(capture.Lines().empty());
  EXPECT_EQ(alarms.Reports().size(), 1u);
}

TEST_F(ConnectErrorTest, VideoErrorIsReportedOncePerFailurePeriod) {
  PrintCapture capture;
  AlarmCapture alarms;
  RecordingRequester requester;
  requester.SetCameraNumber(12);
  capture.Clear();
  for (int i = 1; i <= 9; ++i) requester.ConnectError(2, g_acAddress, 10);
  EXPECT_TRUE(alarms.Reports().empty());
  requester.ConnectError(2, g_acAddress, 10);  // the 10th
  requester.ConnectError(2, g_acAddress, 10);  // the 11th only counts
  Lines asExpected;
  for (int i = 1; i <= 10; ++i) asExpected.push_back(CountLine(i, 0));
  asExpected.push_back("[CCamR::ConnectError] ERROR ON iPos =[2], cIpAddr=[127.0.0.1]");
  asExpected.push_back(CountLine(11, 1));
  EXPECT_EQ(AccountingLines(capture), asExpected);
  ASSERT_EQ(alarms.Reports().size(), 1u);
  EXPECT_EQ(alarms.Reports()[0].iCode, 2);
  EXPECT_EQ(alarms.Reports()[0].iCamera, 12);
  EXPECT_EQ(alarms.Reports()[0].sAddress, "127.0.0.1");
  EXPECT_EQ(alarms.Reports()[0].iPosition, 2);
  EXPECT_EQ(requester.m_fErrorStat, 1);

  capture.Clear();
  requester.ConnectErrorReset(2, g_acAddress);
  EXPECT_EQ(AccountingLines(capture),
            Lines({"[CCamR::ConnectErrorReset] ERROR OFF iPos =[2], cIpAddr=[127.0.0.1]"}));
  ASSERT_EQ(alarms.Reports().size(), 2u);
  EXPECT_EQ(alarms.Reports()[1].iCode, 39);
  EXPECT_EQ(alarms.Reports()[1].iCamera, 12);
  EXPECT_EQ(alarms.Reports()[1].iPosition, 2);
  EXPECT_EQ(requester.m_iErrorCount, 0);
  EXPECT_EQ(requester.m_fErrorStat, 0);

  // A second reset reports nothing; a new period reports again.
  requester.ConnectErrorReset(2, g_acAddress);
  EXPECT_EQ(alarms.Reports().size(), 2u);
  for (int i = 1; i <= 10; ++i) requester.ConnectError(2, g_acAddress, 10);
  ASSERT_EQ(alarms.Reports().size(), 3u);
  EXPECT_EQ(alarms.Reports()[2].iCode, 2);
}

TEST_F(ConnectErrorTest, AudioErrorUsesCodes3And40) {
  AlarmCapture alarms;
  RecordingRequester requester;
  EXPECT_EQ(requester.ThisIsAudio(), 0);
  EXPECT_EQ(requester.bAudio.load(), 1);
  for (int i = 1; i <= 10; ++i) requester.ConnectError(6, g_acAddress, 10);
  requester.ConnectErrorReset(6, g_acAddress);
  ASSERT_EQ(alarms.Reports().size(), 2u);
  EXPECT_EQ(alarms.Reports()[0].iCode, 3);
  EXPECT_EQ(alarms.Reports()[0].iPosition, 6);
  EXPECT_EQ(alarms.Reports()[1].iCode, 40);
  // Only ConnectErrorInitialize makes it a video requester again.
  requester.ConnectErrorInitialize();
  EXPECT_EQ(requester.bAudio.load(), 0);
}

TEST_F(ConnectErrorTest, ResetWithoutAReportOnlyClearsTheCount) {
  PrintCapture capture;
  AlarmCapture alarms;
  RecordingRequester requester;
  for (int i = 1; i <= 9; ++i) requester.ConnectError(1, g_acAddress, 10);
  capture.Clear();
  requester.ConnectErrorReset(1, g_acAddress);
  EXPECT_EQ(requester.m_iErrorCount, 0);
  EXPECT_TRUE(capture.Lines().empty());
  // Only consecutive failures count: nine more do not reach the threshold.
  for (int i = 1; i <= 9; ++i) requester.ConnectError(1, g_acAddress, 10);
  EXPECT_TRUE(alarms.Reports().empty());
}

TEST_F(ConnectErrorTest, ConnectErrorInitializeClearsTheAccounting) {
  RecordingRequester requester;
  requester.SetCameraNumber(5);
  requester.ThisIsAudio();
  for (int i = 1; i <= 3; ++i) requester.ConnectError(1, g_acAddress, 3);
  EXPECT_EQ(requester.ConnectErrorInitialize(), 0);
  EXPECT_EQ(requester.m_iErrorCount, 0);
  EXPECT_EQ(requester.m_fErrorStat, 0);
  EXPECT_EQ(requester.iCameraNumber, 0);
  EXPECT_EQ(requester.bAudio.load(), 0);
}

TEST_F(ConnectErrorTest, SetCameraNumberKeeps1To262) {
  PrintCapture capture;
  RecordingRequester requester;
  const struct {
    int iGiven;
    int iStored;
  } asCases[] = {{262, 262}, {263, 0}, {1, 1}, {0, 0}, {-5, 0}, {100, 100}};
  for (const auto& sCase : asCases) {
    capture.Clear();
    EXPECT_EQ(requester.SetCameraNumber(sCase.iGiven), 0);
    EXPECT_EQ(requester.iCameraNumber, sCase.iStored) << sCase.iGiven;
    EXPECT_EQ(capture.Lines(),
              Lines({"SetCameraNumber [DEBUG] CAM[" + std::to_string(sCase.iGiven) + "]"}));
  }
}

TEST_F(ConnectErrorTest, PlayModeStopDoesNothing) {
  PrintCapture capture;
  AlarmCapture alarms;
  RecordingRequester requester;
  EXPECT_EQ(requester.PlayModeStop(1, g_acAddress, 2), 0);
  EXPECT_TRUE(capture.Lines().empty());
  EXPECT_TRUE(alarms.Reports().empty());
  EXPECT_EQ(requester.m_iErrorCount, 0);
}

// ---- the UID message ---------------------------------------------------------

TEST_F(ConnectErrorTest, UidMessageCarriesPositionCameraAndFlagAndOnlyChanges) {
  PrintCapture capture;
  UidReceiver receiver;
  ASSERT_TRUE(receiver.Bound());
  RecordingRequester requester;
  requester.iCamNo = 77;
  int32_t aiPayload[3] = {};

  requester.SndMsg_GetUID(0, 3);
  ASSERT_TRUE(receiver.Next(aiPayload));
  EXPECT_EQ(aiPayload[0], 2);
  EXPECT_EQ(aiPayload[1], 77);
  EXPECT_EQ(aiPayload[2], 0);
  EXPECT_EQ(requester.iLastUidResult, 0);

  // A second success in a row is not sent again; any result but -2 is success.
  requester.SndMsg_GetUID(5, 3);
  EXPECT_FALSE(receiver.Next(aiPayload));

  requester.SndMsg_GetUID(-2, 4);
  ASSERT_TRUE(receiver.Next(aiPayload));
  EXPECT_EQ(aiPayload[0], 3);
  EXPECT_EQ(aiPayload[1], 77);
  EXPECT_EQ(aiPayload[2], 1);
  requester.SndMsg_GetUID(-2, 4);
  EXPECT_FALSE(receiver.Next(aiPayload));

  requester.SndMsg_GetUID(-1, 1);
  ASSERT_TRUE(receiver.Next(aiPayload));
  EXPECT_EQ(aiPayload[0], 0);
  EXPECT_EQ(aiPayload[2], 0);

  // Every attempt is printed, sent or not.
  EXPECT_EQ(capture.Lines(), Lines({"GETUID:SndMsg_GetUID [DEBUG] POS[3] CAM[77] SUCCESS",
                                    "GETUID:SndMsg_GetUID [DEBUG] POS[3] CAM[77] SUCCESS",
                                    "GETUID:SndMsg_GetUID [DEBUG] POS[4] CAM[77] ERROR",
                                    "GETUID:SndMsg_GetUID [DEBUG] POS[4] CAM[77] ERROR",
                                    "GETUID:SndMsg_GetUID [DEBUG] POS[1] CAM[77] SUCCESS"}));
}

TEST_F(ConnectErrorTest, FirstUidMessageAlwaysGoesOut) {
  UidReceiver receiver;
  ASSERT_TRUE(receiver.Bound());
  RecordingRequester requester;
  int32_t aiPayload[3] = {};
  requester.SndMsg_GetUID(-2, 2);
  ASSERT_TRUE(receiver.Next(aiPayload));
  EXPECT_EQ(aiPayload[2], 1);
}

TEST_F(ConnectErrorTest, UidMessageWithoutAReceiverIsFreedAndStillRemembered) {
  PrintCapture capture;
  RecordingRequester requester;
  requester.iCamNo = 4;
  requester.SndMsg_GetUID(0, 1);
  char acCode[16];
  snprintf(acCode, sizeof(acCode), "0x%08x", static_cast<unsigned>(KXCOM_ERR_NO_QUEUE));
  EXPECT_EQ(capture.Lines(),
            Lines({"GETUID:SndMsg_GetUID [DEBUG] POS[1] CAM[4] SUCCESS",
                   "SndMsg_GetUID [ERROR] COM_MsgSnd(). Code=[" + std::string(acCode) + "]\n"}));
  EXPECT_EQ(requester.iLastUidResult, 0);
  // The next success is not tried again.
  capture.Clear();
  requester.SndMsg_GetUID(0, 1);
  EXPECT_EQ(capture.Lines(), Lines({"GETUID:SndMsg_GetUID [DEBUG] POS[1] CAM[4] SUCCESS"}));
}

}  // namespace
}  // namespace camtest
