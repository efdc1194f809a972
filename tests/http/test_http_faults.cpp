// Every fault of the simulated camera on each exchange of the JPEG road:
// the UID request, the push, the keep-alive and the stop. Each row gives the
// status the requester must reach, a line it must print, and whether the
// upper layer gets a push; every row ends with a STOP, the requester
// destroyed and nothing left open.
#include "HttpRig.h"
#include "HttpRoads.h"

namespace httptest {
namespace {

enum class Exchange { kUid, kPush, kKeepAlive, kStop };

struct FaultRow {
  const char* pcName;
  Exchange eExchange;
  const char* pcFault;  // camsim's fault text
  bool bRuns;           // the push is handed over and the status is RUN
  const char* pcLine;   // a line the requester prints (without its prefix)
  int iPictures = 1;    // whole pictures the upper layer reads from the first push
  bool bEnds = false;   // and then the push ends under the reader
};

// The texts follow from the library's result codes: a refused status is
// failed2, a time-out failed1 (Network Timeout for the push), an answer cut
// in the head or body or not HTTP at all is failed3.
const FaultRow kRows[] = {
    {"UidStatus503", Exchange::kUid, "status=503", false,
     "DoRequest [Error] http_get_response failed2:ret =8000503\n"},
    {"UidNoAnswer", Exchange::kUid, "noanswer", false,
     "DoRequest [Error] http_get_response failed1:ret =8007000\n"},
    {"UidCloseHeader", Exchange::kUid, "close-header", false,
     "DoRequest [Error] http_get_response failed3:ret =8006000\n"},
    {"UidCloseBody", Exchange::kUid, "close-body", false,
     "DoRequest [Error] http_get_response failed3:ret =8006000\n"},
    {"UidGarbage", Exchange::kUid, "garbage", false,
     "DoRequest [Error] http_get_response failed3:ret =8005000\n"},
    {"UidWithoutUid", Exchange::kUid, "omit=UID=", false,
     "CheckCamInfo_RcvData [Error] SearchNumber UID=-1\n"},
    {"UidLongBody", Exchange::kUid, "long-body=8000", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n"},
    {"UidSlow", Exchange::kUid, "delay=100", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n"},
    {"UidReset", Exchange::kUid, "reset", false,
     "DoRequest [Error] http_get_response failed3:ret =8003000\n"},
    {"UidDrip", Exchange::kUid, "drip=400", false,
     "DoRequest [Error] http_get_response failed1:ret =8007000\n"},
    {"UidNoLength", Exchange::kUid, "no-length", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n"},
    // The keys come after the 2048 bytes that a reply may fill.
    {"UidLateKeys", Exchange::kUid, "late-keys", false,
     "CheckCamInfo_RcvData [Error] SearchNumber UID=-1\n"},
    {"PushStatus404", Exchange::kPush, "status=404", false,
     "StreamStartCommandExec [Error] http_get_response failed2:ret =8000404\n"},
    {"PushStatus500", Exchange::kPush, "status=500", false,
     "StreamStartCommandExec [Error] http_get_response failed2:ret =8000500\n"},
    {"PushNoAnswer", Exchange::kPush, "noanswer", false,
     " StreamStartCommandExec [Error] Network Timeout.\n"},
    {"PushCloseHeader", Exchange::kPush, "close-header", false,
     "StreamStartCommandExec [Error] http_get_response failed3:ret =8006000\n"},
    {"PushGarbage", Exchange::kPush, "garbage", false,
     "StreamStartCommandExec [Error] http_get_response failed3:ret =8005000\n"},
    // The head of these came whole: the push is handed over, and what
    // follows is the upper layer's to read.
    {"PushStatus302", Exchange::kPush, "status=302", true,
     "StreamStartCommandExec[Error]ret =8000302\n", 0},
    {"PushCloseBody", Exchange::kPush, "close-body", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n", 0, true},
    {"PushStall", Exchange::kPush, "push-stall=2", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n", 2},
    {"PushEnd", Exchange::kPush, "push-end=3", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n", 3, true},
    {"PushReset", Exchange::kPush, "reset", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n", 0, true},
    {"PushBoundaryQuoted", Exchange::kPush, "boundary-quoted", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n", 5},
    {"PushSlow", Exchange::kPush, "delay=100", true,
     "StreamStartCommandExec [DEBUG] JPEG HTTP NotifyCamRequesterHandle\n", 5},
    {"KeepAliveStatus404", Exchange::kKeepAlive, "status=404", false,
     "DoRequest [Error] http_get_response failed2:ret =8000404\n"},
    {"KeepAliveNoAnswer", Exchange::kKeepAlive, "noanswer", false,
     "DoRequest [Error] http_get_response failed1:ret =8007000\n"},
    {"KeepAliveGarbage", Exchange::kKeepAlive, "garbage", false,
     "DoRequest [Error] http_get_response failed3:ret =8005000\n"},
    {"KeepAliveCloseBody", Exchange::kKeepAlive, "close-body", false,
     "DoRequest [Error] http_get_response failed3:ret =8006000\n"},
    {"KeepAliveReset", Exchange::kKeepAlive, "reset", false,
     "DoRequest [Error] http_get_response failed3:ret =8003000\n"},
    {"KeepAliveDrip", Exchange::kKeepAlive, "drip=400", false,
     "DoRequest [Error] http_get_response failed1:ret =8007000\n"},
    {"StopStatus500", Exchange::kStop, "status=500", true,
     "StreamStopCommandExec [ERROR] client or server error ret=0x8000500\n"},
    {"StopNoAnswer", Exchange::kStop, "noanswer", true,
     "StreamStopCommandExec [ERROR] timeout ret=0x8007000\n"},
    {"StopGarbage", Exchange::kStop, "garbage", true,
     "StreamStopCommandExec [ERROR] other error ret=0x8005000\n"},
    {"StopCloseHeader", Exchange::kStop, "close-header", true,
     "StreamStopCommandExec [ERROR] other error ret=0x8006000\n"},
    {"StopReset", Exchange::kStop, "reset", true,
     "StreamStopCommandExec [ERROR] other error ret=0x8003000\n"},
};

const char* PathOf(Exchange eExchange) {
  switch (eExchange) {
    case Exchange::kUid:
      return "/cgi-bin/getuid";
    case Exchange::kKeepAlive:
      return "/cgi-bin/keep_alive";
    case Exchange::kPush:
    case Exchange::kStop:
      return "/cgi-bin/jpeg";
  }
  return "";
}

class FaultRoadTest : public ShortTimeoutTest, public ::testing::WithParamInterface<FaultRow> {};

TEST_P(FaultRoadTest, EndsInTheSpecifiedStatusWithItsLine) {
  const FaultRow& r = GetParam();
  HttpRig rig(RigOptions{});
  camtest::PrintCapture capture;
  rig.Configure();
  if (r.eExchange != Exchange::kStop) rig.device->SetFault(PathOf(r.eExchange), Fault(r.pcFault));
  rig.req->RequestStart();

  if (r.eExchange == Exchange::kStop) {
    ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN)) << capture.All();
    ASSERT_TRUE(rig.notify.WaitForPictures(1, seconds(10)));
    rig.device->SetFault(PathOf(r.eExchange), Fault(r.pcFault));
    rig.req->RequestStop();
    // A stop never fails once it was asked for: the status returns to IDLE.
    ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
    EXPECT_TRUE(capture.Contains(r.pcLine)) << capture.All();
    EXPECT_EQ(rig.notify.Withdrawals(), 1);
    EXPECT_TRUE(rig.notify.HandleEvents().back().bOpenWhenWithdrawn);
    rig.device->ClearFaults();
    return;
  }

  ASSERT_TRUE(capture.WaitFor(r.pcLine)) << capture.All();
  if (r.bRuns) {
    ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN)) << capture.All();
    EXPECT_TRUE(rig.notify.WaitForHandOvers(1, seconds(10)));
    EXPECT_TRUE(rig.notify.WaitForPictures(static_cast<uint64_t>(r.iPictures), seconds(10)));
    if (r.bEnds) {
      // The camera ended the push: the reader sees the end, not a hang.
      EXPECT_TRUE(rig.notify.WaitForEnd(seconds(10)));
      EXPECT_EQ(rig.notify.Pictures(), static_cast<uint64_t>(r.iPictures));
    }
  } else {
    ASSERT_TRUE(capture.WaitFor("-> 1. \n")) << capture.All();
    if (r.eExchange == Exchange::kKeepAlive) {
      // The upper layer heard that the UID is gone.
      ASSERT_TRUE(rig.notify.WaitForSessionInfos(2, seconds(10)));
      EXPECT_EQ(rig.notify.SessionInfos()[1].iUid, -1);
    } else {
      EXPECT_EQ(rig.notify.HandOvers(), 0);
    }
    // Once the camera behaves again the request thread rebuilds the stream.
    rig.device->ClearFaults();
    ASSERT_TRUE(rig.notify.WaitForPicturesOfCurrentHandle(1, seconds(15))) << capture.All();
    ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_RUN));
  }
  rig.device->ClearFaults();
  rig.req->RequestStop();
  ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE)) << capture.All();
  EXPECT_EQ(rig.notify.HandOvers(), rig.notify.Withdrawals());
  for (const auto& e : rig.notify.HandleEvents()) {
    if (e.psHandle == nullptr) {
      EXPECT_TRUE(e.bOpenWhenWithdrawn);
    } else {
      EXPECT_TRUE(e.bNothingHeld);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(EveryFault, FaultRoadTest, ::testing::ValuesIn(kRows),
                         [](const ::testing::TestParamInfo<FaultRow>& row) {
                           return std::string(row.param.pcName);
                         });

}  // namespace
}  // namespace httptest
