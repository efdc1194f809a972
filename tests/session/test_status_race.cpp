// The upper layer's thread raises the run-success event (through
// SetParameterStatusChange) while the request thread raises the others: no
// step may be lost. Every printed step names the status it started from and
// the one it left, so the steps must chain: each status is entered as often
// as it is left, but for the first and the last.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <thread>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTestSupport.h"
#include "RecordingRequester.h"

namespace {

constexpr int kRounds = 5000;

// Counts entries minus exits per status over the printed steps.
std::map<int, int> Balance(const std::vector<std::string>& asLines, int* piSteps) {
  std::map<int, int> balance;
  *piSteps = 0;
  for (const std::string& s : asLines) {
    int iEvent = 0, iFrom = 0, iTo = 0;
    char acKind[8] = {};
    if (std::sscanf(s.c_str(), "ChangeStatus [DEBUG] %7s Event=%d:%d -> %d.", acKind, &iEvent,
                    &iFrom, &iTo) == 4) {
      --balance[iFrom];
      ++balance[iTo];
      ++*piSteps;
    }
  }
  return balance;
}

template <typename Requester>
void Race(int iCmdType, const std::vector<int>& aiThreadEvents) {
  camtest::PrintCapture capture;
  Requester req;
  req.iCmdType = iCmdType;
  req.iUid = 5;
  req.iConnectStatus = 3;
  const int32_t iRun = 1;
  std::thread upper([&] {
    for (int i = 0; i < kRounds; ++i) {
      req.SetParameter(CAM_PARAM_STATUSCHANGE, &iRun, sizeof(iRun));
    }
  });
  std::thread worker([&] {
    for (int i = 0; i < kRounds; ++i) req.ChangeStatus(aiThreadEvents[i % aiThreadEvents.size()]);
  });
  upper.join();
  worker.join();
  int iSteps = 0;
  const std::map<int, int> balance = Balance(capture.Lines(), &iSteps);
  EXPECT_EQ(iSteps, 2 * kRounds);
  const int iLast = req.iConnectStatus.load();
  for (const auto& [iStatus, iNet] : balance) {
    const int iWant = (iStatus == iLast ? 1 : 0) - (iStatus == 3 ? 1 : 0);
    EXPECT_EQ(iNet, iWant) << "status " << iStatus << " entered and left unevenly";
  }
  req.iConnectStatus = 0;
}

// START, SETUP_SUCCESS, RUN_FAIL, ERROR, STOP, STOP_DONE: round and round.
const std::vector<int> kVideoEvents = {0, 2, 5, 6, 1, 8, 0, 2};
// Audio returns to READY on START and run events while running (RTP).
const std::vector<int> kAudioEvents = {0, 2, 3, 6, 1, 8};

TEST(StatusRace, RunSuccessFromTheUpperLayerIsNeverLostRtpVideo) {
  Race<CCamRequester_Cgi_Kobu_Rtp>(0, kVideoEvents);
}

TEST(StatusRace, RunSuccessFromTheUpperLayerIsNeverLostRtpAudio) {
  Race<CCamRequester_Cgi_Kobu_Rtp>(1, kAudioEvents);
}

TEST(StatusRace, RunSuccessFromTheUpperLayerIsNeverLostHttpVideo) {
  Race<CCamRequester_Cgi_Kobu_Http>(0, kVideoEvents);
}

TEST(StatusRace, RunSuccessFromTheUpperLayerIsNeverLostHttpAudio) {
  Race<CCamRequester_Cgi_Kobu_Http>(1, kAudioEvents);
}

TEST(StatusRace, RunSuccessDuringAPlayBackSetUpReachesRun) {
  // The play-back road: the set-up leaves READY, the upper layer reports
  // that the stream runs.
  camtest::PrintCapture capture;
  for (int iRound = 0; iRound < 200; ++iRound) {
    CCamRequester_Cgi_Kobu_Rtp req;
    req.iCmdType = 4;
    req.iUid = 9;
    req.iConnectStatus = 2;
    const int32_t iRun = 1;
    std::thread upper([&] { req.SetParameter(CAM_PARAM_STATUSCHANGE, &iRun, sizeof(iRun)); });
    req.ChangeStatus(2);  // SETUP -> READY
    upper.join();
    // Either order of the two steps is a legal history: READY then RUN, or
    // RUN_SUCCESS in SETUP (stays) then READY.
    const int iStatus = req.iConnectStatus.load();
    EXPECT_TRUE(iStatus == 3 || iStatus == 4) << iStatus;
    req.iConnectStatus = 0;  // no session to wait for at destruction
  }
}

}  // namespace
