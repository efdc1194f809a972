// Every cell of the four status tables, as the requesters' design gives
// them, through ChangeStatus; the audio guard and the three messages.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTestSupport.h"

namespace {

// Next status by [status][event], typed from the design's tables.
using Table = int[6][9];

// clang-format off
const Table kRtpVideo = {
    {2, 0, 0, 0, 0, 0, 0, 0, 0},
    {2, 0, 1, 1, 1, 1, 1, 1, 1},
    {2, 2, 3, 1, 2, 2, 1, 1, 2},
    {3, 3, 3, 3, 4, 1, 1, 1, 3},
    {4, 5, 4, 4, 4, 4, 1, 1, 4},
    {5, 5, 5, 5, 5, 5, 0, 0, 0}};
const Table kRtpAudio = {
    {3, 0, 0, 0, 0, 0, 0, 0, 0},
    {3, 0, 1, 1, 1, 1, 1, 1, 1},
    {1, 1, 1, 1, 1, 1, 1, 1, 1},
    {3, 3, 3, 3, 4, 1, 1, 1, 3},
    {3, 5, 3, 3, 3, 3, 1, 1, 3},
    {5, 5, 5, 5, 5, 5, 0, 0, 0}};
const Table kHttpVideo = {
    {2, 0, 0, 0, 0, 0, 0, 0, 0},
    {2, 0, 1, 1, 1, 1, 1, 1, 1},
    {2, 2, 3, 1, 2, 2, 1, 1, 2},
    {3, 3, 3, 3, 4, 1, 1, 1, 3},
    {4, 5, 4, 4, 4, 1, 1, 1, 3},
    {5, 5, 5, 5, 5, 5, 0, 0, 0}};
const Table kHttpAudio = {
    {3, 0, 0, 0, 0, 0, 0, 0, 0},
    {3, 0, 1, 1, 1, 1, 1, 1, 1},
    {1, 1, 1, 1, 1, 1, 1, 1, 1},
    {3, 3, 3, 3, 4, 1, 1, 1, 3},
    {4, 5, 4, 4, 4, 1, 1, 1, 4},
    {5, 5, 5, 5, 5, 5, 0, 0, 0}};
// clang-format on

// Drives one step of a class's ChangeStatus.
template <typename Class>
struct ClassDriver {
  using Requester = Class;
  static int Step(Class& rReq, int iEvent) { return rReq.ChangeStatus(iEvent); }
};
struct RtpDriver : ClassDriver<CCamRequester_Cgi_Kobu_Rtp> {
  static constexpr const char* kName = "RTP";
};
struct HttpDriver : ClassDriver<CCamRequester_Cgi_Kobu_Http> {
  static constexpr const char* kName = "HTTP";
};

// The line of one step.
std::string StepLine(bool bAudio, int iEvent, int iFrom, int iTo) {
  char ac[128];
  if (bAudio) {
    std::snprintf(ac, sizeof(ac), "ChangeStatus [DEBUG] Audio Event=%d:%d -> %d. \n", iEvent, iFrom,
                  iTo);
  } else {
    std::snprintf(ac, sizeof(ac), "ChangeStatus [DEBUG] Video Event=%d:%d -> %d. \n", iEvent, iFrom,
                  iTo);
  }
  return ac;
}

template <typename Driver>
void CheckEveryCell(const Table& rExpected, int iCmdType, bool bAudio) {
  camtest::PrintCapture capture;
  typename Driver::Requester req;
  req.iCmdType = iCmdType;
  req.iUid = 7;  // a UID: the audio guard stays out of the way
  for (int iStatus = 0; iStatus < 6; ++iStatus) {
    for (int iEvent = 0; iEvent < 9; ++iEvent) {
      capture.Clear();
      req.iConnectStatus = iStatus;
      EXPECT_EQ(Driver::Step(req, iEvent), 0);
      const int iWant = rExpected[iStatus][iEvent];
      EXPECT_EQ(req.iConnectStatus.load(), iWant)
          << Driver::kName << " type " << iCmdType << " status " << iStatus << " event " << iEvent;
      const std::string sLine = StepLine(bAudio, iEvent, iStatus, iWant);
      EXPECT_EQ(capture.Lines(), std::vector<std::string>{sLine});
    }
  }
}

TEST(StatusTables, RtpVideoEveryCellForEveryVideoType) {
  for (int iType : {0, 2, 3, 4}) CheckEveryCell<RtpDriver>(kRtpVideo, iType, false);
}

TEST(StatusTables, RtpAudioEveryCell) {
  CheckEveryCell<RtpDriver>(kRtpAudio, 1, true);
}

TEST(StatusTables, HttpVideoEveryCellForBothVideoTypes) {
  for (int iType : {0, 2}) CheckEveryCell<HttpDriver>(kHttpVideo, iType, false);
}

TEST(StatusTables, HttpAudioEveryCell) {
  CheckEveryCell<HttpDriver>(kHttpAudio, 1, true);
}

template <typename Driver>
void CheckAudioGuard() {
  camtest::PrintCapture capture;
  typename Driver::Requester req;
  req.iCmdType = 1;
  req.iUid = -1;
  req.iConnectStatus = 1;
  EXPECT_EQ(Driver::Step(req, 0), 0);
  EXPECT_EQ(req.iConnectStatus.load(), 1) << Driver::kName;
  EXPECT_EQ(capture.Lines(),
            std::vector<std::string>{"ChangeStatus [DEBUG] Audio Event=0:1 UID=-1. \n"});
  // Only START is held back: STOP still goes 1 -> 0, and START then 0 -> 3.
  capture.Clear();
  Driver::Step(req, 1);
  EXPECT_EQ(req.iConnectStatus.load(), 0);
  Driver::Step(req, 0);
  EXPECT_EQ(req.iConnectStatus.load(), 3);
  EXPECT_EQ(capture.Lines(),
            (std::vector<std::string>{"ChangeStatus [DEBUG] Audio Event=1:1 -> 0. \n",
                                      "ChangeStatus [DEBUG] Audio Event=0:0 -> 3. \n"}));
  // With a UID the error status restarts on START.
  req.iConnectStatus = 1;
  req.iUid = 3;
  Driver::Step(req, 0);
  EXPECT_EQ(req.iConnectStatus.load(), 3);
  req.iConnectStatus = 0;
}

TEST(StatusTables, AudioInErrorWithoutUidStaysOnStartRtp) {
  CheckAudioGuard<RtpDriver>();
}
TEST(StatusTables, AudioInErrorWithoutUidStaysOnStartHttp) {
  CheckAudioGuard<HttpDriver>();
}

TEST(StatusTables, VideoInErrorWithoutUidRestartsOnStart) {
  CCamRequester_Cgi_Kobu_Rtp req;
  req.iCmdType = 0;
  req.iUid = -1;
  req.iConnectStatus = 1;
  req.ChangeStatus(0);
  EXPECT_EQ(req.iConnectStatus.load(), 2);
  req.iConnectStatus = 0;
}

template <typename Driver>
void CheckUndefinedType(int iCmdType) {
  camtest::PrintCapture capture;
  typename Driver::Requester req;
  req.iCmdType = iCmdType;
  for (int iStatus = 0; iStatus < 6; ++iStatus) {
    capture.Clear();
    req.iConnectStatus = iStatus;
    Driver::Step(req, 4);
    EXPECT_EQ(req.iConnectStatus.load(), iStatus);
    // The word says event; the number is the event's.
    EXPECT_EQ(capture.Lines(),
              std::vector<std::string>{"ChangeStatus [Error] Undefined event=4\n"});
  }
  req.iConnectStatus = 0;
}

TEST(StatusTables, RtpTypeFiveChangesNothing) {
  CheckUndefinedType<RtpDriver>(5);
  CheckUndefinedType<RtpDriver>(-1);
}

TEST(StatusTables, HttpTypesThreeAndFourChangeNothing) {
  CheckUndefinedType<HttpDriver>(3);
  CheckUndefinedType<HttpDriver>(4);
}

TEST(StatusTables, EventOutsideTheTableChangesNothing) {
  camtest::PrintCapture capture;
  CCamRequester_Cgi_Kobu_Rtp req;
  req.iCmdType = 0;
  req.iConnectStatus = 4;
  req.ChangeStatus(9);
  req.ChangeStatus(-1);
  EXPECT_EQ(req.iConnectStatus.load(), 4);
  EXPECT_EQ(capture.Lines(),
            (std::vector<std::string>{"ChangeStatus [Error] Undefined event=9\n",
                                      "ChangeStatus [Error] Undefined event=-1\n"}));
  req.iConnectStatus = 0;
}

TEST(StatusTables, PrintedBehindTheRequesterPrefix) {
  camtest::PrintCapture capture;
  CCamRequester_Cgi_Kobu_Rtp req;
  const int32_t iType = 0;
  req.SetParameter(CAM_PARAM_CMDTYPE, &iType, sizeof(iType));
  const int32_t iPos = 2;
  req.SetParameter(CAM_PARAM_SCREENPOS, &iPos, sizeof(iPos));
  capture.Clear();
  req.ChangeStatus(0);
  EXPECT_EQ(capture.Lines(),
            std::vector<std::string>{"POS:2 R:h264 ChangeStatus [DEBUG] Video Event=0:0 -> 2. \n"});
  req.iConnectStatus = 0;
}

}  // namespace
