// The upper layer's reader thread reads the push while the request thread
// takes it back: on STOP, on a retried start, and while the upper layer
// destroys the requester. A hundred rounds; run under ASan and TSan this
// shows that no closed session is read and no word is raced on.
#include "HttpRig.h"
#include "HttpRoads.h"

namespace httptest {
namespace {

constexpr int kRounds = 100;

enum class Ending { kStop, kRetryThenStop, kRetryStopAndDestroy, kStopAndDestroy };

class ReaderConcurrencyTest : public HttpRequesterTest {};

TEST_F(ReaderConcurrencyTest, HundredRoundsOfWithdrawalWhileReading) {
  RigOptions sOptions;
  sOptions.usFrate = 11;  // 30 pictures a second: the reader is mostly in a read
  HttpRig rig(sOptions);
  ASSERT_NE(rig.device, nullptr);
  const Ending aeEndings[] = {Ending::kStop, Ending::kRetryThenStop, Ending::kRetryStopAndDestroy,
                              Ending::kStopAndDestroy};
  for (int iRound = 0; iRound < kRounds; ++iRound) {
    SCOPED_TRACE("round " + std::to_string(iRound));
    rig.req = std::make_unique<CCamRequester_Cgi_Kobu_Http>();
    rig.Configure();
    const int iHandOvers = rig.notify.HandOvers();
    rig.req->RequestStart();
    ASSERT_TRUE(rig.notify.WaitForHandOvers(iHandOvers + 1, seconds(10)));
    ASSERT_TRUE(rig.notify.WaitForPicturesOfCurrentHandle(1, seconds(10)));

    switch (aeEndings[iRound % 4]) {
      case Ending::kStop:
        rig.req->RequestStop();
        ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE));
        break;
      case Ending::kRetryThenStop:
        rig.AskForStartRetry();
        ASSERT_TRUE(rig.notify.WaitForHandOvers(iHandOvers + 2, seconds(10)));
        rig.req->RequestStop();
        ASSERT_TRUE(rig.WaitForStatus(CAM_HTTP_STS_IDLE));
        break;
      case Ending::kRetryStopAndDestroy:
        // All at once: the destruction meets the retry and the stop wherever
        // they are.
        rig.AskForStartRetry();
        rig.req->RequestStop();
        break;
      case Ending::kStopAndDestroy:
        rig.req->RequestStop();
        break;
    }
    rig.Destroy();
    EXPECT_FALSE(rig.notify.Reading());
    for (const auto& e : rig.notify.HandleEvents()) {
      EXPECT_TRUE(e.psHandle == nullptr ? e.bOpenWhenWithdrawn : e.bNothingHeld);
    }
    if (HasFailure()) break;
  }
  EXPECT_EQ(rig.notify.BadParts(), 0u);
  EXPECT_TRUE(rig.device->WaitForOpenConnections(0, seconds(10)));
}

}  // namespace
}  // namespace httptest
