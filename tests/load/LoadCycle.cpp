#include "LoadCycle.h"

#include <gtest/gtest.h>

#include "CamRequesterParam.h"
#include "CamTestSupport.h"

namespace loadtest {

namespace {

using Clock = std::chrono::steady_clock;

long MsSince(Clock::time_point t) {
  return static_cast<long>(
      std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - t).count());
}

// All of the fleet's set-ups run at once on two cores: a plain build gets
// there in a few seconds.
constexpr milliseconds kAllInStatus{30000};
// A keep-alive goes out every 300 idle rounds.
constexpr milliseconds kAllKeptAlive{30000};

// Each member reported its first UID result, and later ones only when the
// result changed; the last one is a UID got, since it runs. Without faults
// that is one message, of success.
void ExpectUidMessages(Fleet& rFleet, bool bFaults) {
  std::string sStray;
  const std::map<int, std::vector<int>> aMessages = rFleet.DrainUidMessages(&sStray);
  EXPECT_EQ(sStray, "") << "UID messages of no member";
  for (const Member& m : rFleet.Members()) {
    const auto it = aMessages.find(m.iNumber);
    if (it == aMessages.end()) {
      ADD_FAILURE() << "no UID message of member " << m.iNumber;
      continue;
    }
    const std::vector<int>& aiFlags = it->second;
    if (!bFaults) {
      EXPECT_EQ(aiFlags, std::vector<int>{0}) << "member " << m.iNumber;
      continue;
    }
    for (size_t i = 1; i < aiFlags.size(); ++i) {
      EXPECT_NE(aiFlags[i], aiFlags[i - 1]) << "member " << m.iNumber << " repeated a result";
    }
    EXPECT_EQ(aiFlags.back(), 0) << "member " << m.iNumber;
  }
}

// A connection-error alarm is raised once per failure period and cleared
// once by the set-up that succeeds; every member runs again, so each ON has
// its OFF. Without faults nothing is raised.
void ExpectAlarms(Fleet& rFleet, bool bFaults) {
  std::string sStray;
  const std::map<int, std::vector<int>> aAlarms = rFleet.AlarmsByCamera(&sStray);
  EXPECT_EQ(sStray, "") << "alarms of no member";
  if (!bFaults) {
    EXPECT_TRUE(aAlarms.empty()) << "alarms without a fault, first of camera "
                                 << aAlarms.begin()->first;
    return;
  }
  for (const auto& [iCamera, aiCodes] : aAlarms) {
    for (size_t i = 0; i < aiCodes.size(); ++i) {
      const int iWant = i % 2 == 0 ? CAM_ALARM_VIDEO_ERROR_ON : CAM_ALARM_VIDEO_ERROR_OFF;
      EXPECT_EQ(aiCodes[i], iWant) << "camera " << iCamera << " alarm " << i;
    }
    EXPECT_EQ(aiCodes.size() % 2, 0u) << "camera " << iCamera << " left its alarm on";
  }
}

}  // namespace

CycleResult RunCycle(Fleet& rFleet, const Resources& sBaseline,
                     const std::function<void()>& fnWhileRunning, bool bFaults) {
  CycleResult sResult;
  rFleet.ForgetAlarms();
  rFleet.ForgetKeepAlives();
  rFleet.StartDevices();
  rFleet.Create();
  std::string sLate;
  const Clock::time_point tStart = Clock::now();
  rFleet.StartAll();
  EXPECT_TRUE(rFleet.WaitAll(CAM_HTTP_STS_RUN, kAllInStatus, &sLate)) << "not in RUN:" << sLate;
  sResult.lToRunMs = MsSince(tStart);
  EXPECT_TRUE(rFleet.WaitKeepAlives(kAllKeptAlive, &sLate)) << "no keep-alive:" << sLate;

  if (fnWhileRunning) {
    fnWhileRunning();
    rFleet.Heal();
    EXPECT_TRUE(rFleet.WaitAll(CAM_HTTP_STS_RUN, kAllInStatus, &sLate))
        << "not in RUN again once healed:" << sLate;
    // Kept alive again, on the UIDs they hold now.
    rFleet.ForgetKeepAlives();
    EXPECT_TRUE(rFleet.WaitKeepAlives(kAllKeptAlive, &sLate)) << "no keep-alive:" << sLate;
  }

  const Clock::time_point tStop = Clock::now();
  rFleet.StopAll();
  EXPECT_TRUE(rFleet.WaitAll(CAM_HTTP_STS_IDLE, kAllInStatus, &sLate)) << "not in IDLE:" << sLate;
  sResult.lToIdleMs = MsSince(tStop);
  // Without faults every RTP stream was stopped (or the recorder's UID
  // logged out). After a failed keep-alive the requester gives up its UID and
  // takes a new one; the stream of the old one is the camera's to expire.
  for (Dev e : {Dev::kCamera, Dev::kMpeg4Camera, Dev::kRecorder}) {
    if (bFaults) break;
    EXPECT_TRUE(camtest::WaitUntil([&] { return rFleet.Device(e).RtpStreams().empty(); }))
        << rFleet.Device(e).RtpStreams().size() << " RTP streams left running on device "
        << static_cast<int>(e);
  }
  rFleet.Destroy();
  for (Dev e : {Dev::kCamera, Dev::kMpeg4Camera, Dev::kQuillon, Dev::kRecorder}) {
    EXPECT_TRUE(rFleet.Device(e).WaitForOpenConnections(0, camtest::Scaled(kAllInStatus)))
        << "connections left open on device " << static_cast<int>(e);
  }
  rFleet.StopDevices();
  ExpectUidMessages(rFleet, bFaults);
  ExpectAlarms(rFleet, bFaults);
  // What the checks above read is not held on into the next cycle.
  rFleet.ForgetAlarms();
  rFleet.ForgetKeepAlives();

  // Back to what the process held before the first cycle.
  EXPECT_TRUE(camtest::WaitUntil([&] {
    const Resources s = Snapshot();
    return s.iFds <= sBaseline.iFds && s.iThreads <= sBaseline.iThreads &&
           s.iBuffers == sBaseline.iBuffers;
  })) << "before: "
      << Describe(sBaseline) << "\nafter:  " << Describe(Snapshot());
  sResult.sAfter = Snapshot();
  return sResult;
}

}  // namespace loadtest
