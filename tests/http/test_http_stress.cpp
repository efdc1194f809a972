// The upper layer's reader thread reads the push while the request thread
// takes it back: on STOP, on a retried start, and while the upper layer
// destroys the requester, with the reader let go first and with the reader
// still reading. A hundred rounds each; run under ASan and TSan this shows
// that no closed session is read and no word is raced on.
#include <chrono>

#include "HttpRig.h"
#include "HttpRoads.h"

namespace httptest {
namespace {

constexpr int kRounds = 100;

enum class Ending { kStop, kRetryThenStop, kRetryStopAndDestroy, kStopAndDestroy };

class ReaderConcurrencyTest : public HttpRequesterTest {};

// Every handle handed over was taken back, and taken back while it was still
// an open session; a hand-over never came while another handle was held.
void ExpectEveryHandleTakenBackOpen(const PushReaderNotify& rNotify) {
  int iTakenBack = 0;
  for (const auto& e : rNotify.HandleEvents()) {
    if (e.psHandle != nullptr) {
      EXPECT_TRUE(e.bNothingHeld);
    } else if (e.bHanded) {
      ++iTakenBack;
      EXPECT_TRUE(e.bOpenWhenWithdrawn);
    }
  }
  EXPECT_EQ(iTakenBack, rNotify.HandOvers());
}

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
    ExpectEveryHandleTakenBackOpen(rig.notify);
    if (HasFailure()) break;
  }
  EXPECT_EQ(rig.notify.BadParts(), 0u);
  EXPECT_TRUE(rig.device->WaitForOpenConnections(0, seconds(10)));
}

// The upper layer keeps reading while it destroys the requester, after a
// STOP (and in every other round a retried start) that the request thread
// may not have served yet. The reader must be told to let go (the null
// handle) while the session is still open, and never read on once it is
// closed: a read that ends on a closed session shows as an end of the push,
// which the camera never sends by itself.
TEST_F(ReaderConcurrencyTest, HundredRoundsOfDestructionWhileTheReaderReads) {
  RigOptions sOptions;
  sOptions.usFrate = 11;  // 30 pictures a second: the reader is mostly in a read
  HttpRig rig(sOptions);
  ASSERT_NE(rig.device, nullptr);
  const auto tBegin = std::chrono::steady_clock::now();
  for (int iRound = 0; iRound < kRounds; ++iRound) {
    SCOPED_TRACE("round " + std::to_string(iRound));
    rig.req = std::make_unique<CCamRequester_Cgi_Kobu_Http>();
    rig.Configure();
    const int iHandOvers = rig.notify.HandOvers();
    rig.req->RequestStart();
    ASSERT_TRUE(rig.notify.WaitForHandOvers(iHandOvers + 1, seconds(10)));
    ASSERT_TRUE(rig.notify.WaitForPicturesOfCurrentHandle(1, seconds(10)));
    ASSERT_TRUE(rig.notify.Reading());

    if (iRound % 2 == 1) rig.AskForStartRetry();
    rig.req->RequestStop();
    const auto tDestroy = std::chrono::steady_clock::now();
    rig.req.reset();  // the reader is still reading
    // The STOP brings the status back to IDLE: no wait for the time-out.
    EXPECT_LT(std::chrono::steady_clock::now() - tDestroy, seconds(3));

    EXPECT_FALSE(rig.notify.Reading()) << "the reader was never told to let go";
    EXPECT_EQ(rig.notify.Ends(), 0) << "a read ended on a closed session";
    ExpectEveryHandleTakenBackOpen(rig.notify);
    if (HasFailure()) break;
  }
  rig.Destroy();
  EXPECT_EQ(rig.notify.BadParts(), 0u);
  EXPECT_TRUE(rig.device->WaitForOpenConnections(0, seconds(10)));
  EXPECT_LT(std::chrono::steady_clock::now() - tBegin, std::chrono::seconds(120));
}

}  // namespace
}  // namespace httptest
