// Queues: binding, send and bounded receive, ownership of sent buffers,
// clearing and unbinding, and every misuse answered with an error code.
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "CamTestSupport.h"
#include "CamTestTiming.h"
#include "ipc_test_support.h"

namespace ipc_test {
namespace {

using QueueTest = IpcTest;

// The request threads' module; their thread index is the queue's index.
constexpr int kRequestModule = 42;
// The destination of the UID message.
constexpr int kUidDestination = 34;
constexpr uint32_t kUidMessageId = 0x2203001C;

TEST_F(QueueTest, BindGivesAnIdAndASecondBindIsRefused) {
  BoundQueue queue(kRequestModule, 1);
  EXPECT_GE(queue.id(), 0);
  EXPECT_EQ(KXCOM_InitMsg_Asy(kRequestModule, 1), KXCOM_ERR_BOUND);
}

TEST_F(QueueTest, EveryAddressHasItsOwnQueue) {
  BoundQueue first(kRequestModule, 2);
  BoundQueue second(kRequestModule, 3);
  BoundQueue other_module(kRequestModule + 1, 2);
  ASSERT_GE(first.id(), 0);
  ASSERT_GE(second.id(), 0);
  ASSERT_GE(other_module.id(), 0);
  EXPECT_NE(first.id(), second.id());
  EXPECT_NE(first.id(), other_module.id());
  EXPECT_NE(second.id(), other_module.id());
}

TEST_F(QueueTest, AnUnboundAddressCanBeBoundAgain) {
  BoundQueue first(kRequestModule, 4);
  ASSERT_GE(first.id(), 0);
  const int old_id = first.id();
  ASSERT_EQ(first.Delete(), KXCOM_LIB_OK);
  BoundQueue again(kRequestModule, 4);
  ASSERT_GE(again.id(), 0);
  // The old id stays dead: it does not name the new queue.
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
  ASSERT_EQ(_COM_MsgSndMain(kRequestModule, 4, buf), KXCOM_LIB_OK);
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(0, 0), old_id), nullptr);
  KXCOM_MSGBUF* got = _COM_MsgRcvMain(0, Wait(0, 0), again.id());
  EXPECT_EQ(got, buf);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(got), KXCOM_LIB_OK);
}

TEST_F(QueueTest, SentMessageIsReceivedWithItsCode) {
  BoundQueue queue(kRequestModule, 5);
  ASSERT_GE(queue.id(), 0);
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(4, 0, 0);
  ASSERT_NE(buf, nullptr);
  ASSERT_EQ(_COM_MsgSndMain(kRequestModule, 5, buf), KXCOM_LIB_OK);
  KXCOM_MSGBUF* got = _COM_MsgRcvMain(0, RequestWait(), queue.id());
  ASSERT_EQ(got, buf);
  EXPECT_EQ(got->ulCode, 4u);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(got), KXCOM_LIB_OK);
}

TEST_F(QueueTest, QueuedMessageIsReturnedWithoutWaiting) {
  BoundQueue queue(kRequestModule, 6);
  ASSERT_GE(queue.id(), 0);
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
  ASSERT_EQ(_COM_MsgSndMain(kRequestModule, 6, buf), KXCOM_LIB_OK);
  const auto start = Clock::now();
  KXCOM_MSGBUF* got = _COM_MsgRcvMain(0, Wait(10, 0), queue.id());
  EXPECT_LT(MillisSince(start), camtest::ScaledMs(1000));
  ASSERT_EQ(got, buf);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(got), KXCOM_LIB_OK);
}

TEST_F(QueueTest, EmptyQueueReturnsNullWhenTheWaitRunsOut) {
  BoundQueue queue(kRequestModule, 7);
  ASSERT_GE(queue.id(), 0);
  const auto start = Clock::now();
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(0, 50000), queue.id()), nullptr);
  const double elapsed = MillisSince(start);
  EXPECT_GE(elapsed, 50.0);
  EXPECT_LT(elapsed, camtest::ScaledMs(5000));
}

TEST_F(QueueTest, WaitDivisorShortensTheWait) {
  BoundQueue queue(kRequestModule, 8);
  ASSERT_GE(queue.id(), 0);
  KXCOM_SetWaitDivisor(10);
  // Every wait lasts its divided 10 ms at least; one of a few comes in well
  // short of the undivided 100 ms even on a loaded machine, which may hold
  // up any single one.
  double shortest = 1e9;
  for (int round = 0; round < 5 && shortest >= 90.0; ++round) {
    const auto start = Clock::now();
    EXPECT_EQ(_COM_MsgRcvMain(0, RequestWait(), queue.id()), nullptr);
    const double elapsed = MillisSince(start);
    EXPECT_GE(elapsed, 10.0);
    shortest = std::min(shortest, elapsed);
  }
  EXPECT_LT(shortest, 90.0);
}

TEST_F(QueueTest, WaitDivisorAddsSecondsAndMicroseconds) {
  BoundQueue queue(kRequestModule, 9);
  ASSERT_GE(queue.id(), 0);
  KXCOM_SetWaitDivisor(100);
  // 1 s + 500000 us = 1.5 s, divided by 100 = 15 ms.
  const auto start = Clock::now();
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(1, 500000), queue.id()), nullptr);
  const double elapsed = MillisSince(start);
  EXPECT_GE(elapsed, 15.0);
  EXPECT_LT(elapsed, camtest::ScaledMs(1000));
}

TEST_F(QueueTest, WaitDivisorGetterAndLowerLimit) {
  EXPECT_EQ(KXCOM_GetWaitDivisor(), 1);
  KXCOM_SetWaitDivisor(25);
  EXPECT_EQ(KXCOM_GetWaitDivisor(), 25);
  KXCOM_SetWaitDivisor(0);
  EXPECT_EQ(KXCOM_GetWaitDivisor(), 1);
  KXCOM_SetWaitDivisor(-3);
  EXPECT_EQ(KXCOM_GetWaitDivisor(), 1);
}

TEST_F(QueueTest, ZeroOrNegativeWaitOnlyLooks) {
  BoundQueue queue(kRequestModule, 10);
  ASSERT_GE(queue.id(), 0);
  const auto start = Clock::now();
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(0, 0), queue.id()), nullptr);
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(-1, -1), queue.id()), nullptr);
  EXPECT_LT(MillisSince(start), camtest::ScaledMs(1000));
}

TEST_F(QueueTest, MessageSentDuringALongWaitIsReturnedPromptly) {
  BoundQueue queue(kRequestModule, 11);
  ASSERT_GE(queue.id(), 0);
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(3, 0, 0);
  ASSERT_NE(buf, nullptr);
  std::atomic<int> send_result{1};
  Clock::time_point sent_at;
  std::thread sender([&] {
    // Let the receiver get into its wait first.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    sent_at = Clock::now();
    send_result = _COM_MsgSndMain(kRequestModule, 11, buf);
  });
  const auto start = Clock::now();
  KXCOM_MSGBUF* got = _COM_MsgRcvMain(0, Wait(20, 0), queue.id());
  const auto received_at = Clock::now();
  sender.join();
  EXPECT_EQ(send_result.load(), KXCOM_LIB_OK);
  ASSERT_EQ(got, buf);
  // The wait was 20 s; the message ends it at once.
  EXPECT_LT(MillisSince(start), camtest::ScaledMs(2000));
  const double delivery_ms =
      std::chrono::duration<double, std::milli>(received_at - sent_at).count();
  EXPECT_LT(delivery_ms, camtest::ScaledMs(1000));
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(got), KXCOM_LIB_OK);
}

TEST_F(QueueTest, MessagesComeOutInTheOrderTheyWereSent) {
  BoundQueue queue(kRequestModule, 12);
  ASSERT_GE(queue.id(), 0);
  constexpr int kCount = 100;
  for (int code = 0; code < kCount; ++code) {
    ASSERT_EQ(_COM_MsgSndMain(kRequestModule, 12, KXCOM_CreateMsgBuf_Asy(code, 0, 0)),
              KXCOM_LIB_OK);
  }
  for (int code = 0; code < kCount; ++code) {
    KXCOM_MSGBUF* got = _COM_MsgRcvMain(0, Wait(0, 0), queue.id());
    ASSERT_NE(got, nullptr) << "message " << code;
    EXPECT_EQ(got->ulCode, static_cast<uint32_t>(code));
    EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(got), KXCOM_LIB_OK);
  }
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(0, 0), queue.id()), nullptr);
}

TEST_F(QueueTest, QueuesDoNotShareMessages) {
  BoundQueue first(kRequestModule, 13);
  BoundQueue second(kRequestModule, 14);
  ASSERT_GE(first.id(), 0);
  ASSERT_GE(second.id(), 0);
  ASSERT_EQ(_COM_MsgSndMain(kRequestModule, 13, KXCOM_CreateMsgBuf_Asy(1, 0, 0)), KXCOM_LIB_OK);
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(0, 0), second.id()), nullptr);
  KXCOM_MSGBUF* got = _COM_MsgRcvMain(0, Wait(0, 0), first.id());
  ASSERT_NE(got, nullptr);
  EXPECT_EQ(got->ulCode, 1u);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(got), KXCOM_LIB_OK);
}

TEST_F(QueueTest, ManySendersToOneQueueLoseNothing) {
  BoundQueue queue(kRequestModule, 15);
  ASSERT_GE(queue.id(), 0);
  constexpr int kSenders = 8;
  constexpr int kPerSender = 500;
  std::atomic<int> failed_sends{0};
  std::vector<std::thread> senders;
  for (int s = 0; s < kSenders; ++s) {
    senders.emplace_back([s, &failed_sends] {
      for (int i = 0; i < kPerSender; ++i) {
        KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(s * 10000 + i, 0, 0);
        if (_COM_MsgSndMain(kRequestModule, 15, buf) != KXCOM_LIB_OK) {
          ++failed_sends;
          KXCOM_FreeMsgBuf_Asy(buf);
        }
      }
    });
  }
  std::set<uint32_t> seen;
  std::vector<int> next_of_sender(kSenders, 0);
  bool in_order = true;
  const auto deadline = Clock::now() + std::chrono::seconds(30);
  while (static_cast<int>(seen.size()) < kSenders * kPerSender && Clock::now() < deadline) {
    KXCOM_MSGBUF* got = _COM_MsgRcvMain(0, RequestWait(), queue.id());
    if (got == nullptr) continue;
    const int sender = static_cast<int>(got->ulCode / 10000);
    const int number = static_cast<int>(got->ulCode % 10000);
    if (sender >= kSenders || number != next_of_sender[sender]) in_order = false;
    if (sender < kSenders) next_of_sender[sender] = number + 1;
    seen.insert(got->ulCode);
    KXCOM_FreeMsgBuf_Asy(got);
  }
  for (auto& sender : senders) sender.join();
  EXPECT_EQ(failed_sends.load(), 0);
  EXPECT_EQ(static_cast<int>(seen.size()), kSenders * kPerSender);
  // Each sender's messages keep their order among the others'.
  EXPECT_TRUE(in_order);
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(0, 0), queue.id()), nullptr);
}

TEST_F(QueueTest, UidMessageTravelsToDestination34WithItsPayload) {
  BoundQueue receiver(kUidDestination, 0);
  ASSERT_GE(receiver.id(), 0);
  KXCOM_MSGBUF* buf = COM_MsgBufCreate(kUidMessageId, 0, 0);
  ASSERT_NE(buf, nullptr);
  auto* payload = static_cast<unsigned char*>(_COM_STR_PTR(buf, 12));
  ASSERT_NE(payload, nullptr);
  const int32_t position = 3 - 1;
  const int32_t camera = 262;
  const int32_t failed = 1;
  std::memcpy(payload + 0, &position, 4);
  std::memcpy(payload + 4, &camera, 4);
  std::memcpy(payload + 8, &failed, 4);
  ASSERT_EQ(COM_MsgSnd(kUidDestination, 0, buf), KXCOM_LIB_OK);

  KXCOM_MSGBUF* got = _COM_MsgRcvMain(0, RequestWait(), receiver.id());
  ASSERT_EQ(got, buf);
  EXPECT_EQ(got->ulCode, kUidMessageId);
  EXPECT_EQ(got->ulSize, 12u);
  const auto* received = static_cast<const unsigned char*>(_COM_STR_PTR(got, 12));
  ASSERT_NE(received, nullptr);
  int32_t fields[3] = {};
  std::memcpy(fields, received, sizeof(fields));
  EXPECT_EQ(fields[0], 2);
  EXPECT_EQ(fields[1], 262);
  EXPECT_EQ(fields[2], 1);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(got), KXCOM_LIB_OK);
}

TEST_F(QueueTest, MsgSndGoesToIndexZeroOnly) {
  BoundQueue index_one(kUidDestination, 1);
  ASSERT_GE(index_one.id(), 0);
  KXCOM_MSGBUF* buf = COM_MsgBufCreate(kUidMessageId, 0, 0);
  EXPECT_EQ(COM_MsgSnd(kUidDestination, 0, buf), KXCOM_ERR_NO_QUEUE);
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(0, 0), index_one.id()), nullptr);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_LIB_OK);
}

TEST_F(QueueTest, SendToUnboundQueueFailsAndTheBufferStaysTheSenders) {
  KXCOM_MSGBUF* buf = COM_MsgBufCreate(kUidMessageId, 0, 0);
  ASSERT_NE(buf, nullptr);
  EXPECT_EQ(COM_MsgSnd(kUidDestination, 0, buf), KXCOM_ERR_NO_QUEUE);
  EXPECT_EQ(_COM_MsgSndMain(kRequestModule, 999, buf), KXCOM_ERR_NO_QUEUE);
  // Still the sender's: its payload can be reached and it can be freed.
  EXPECT_NE(_COM_STR_PTR(buf, 12), nullptr);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_LIB_OK);
}

TEST_F(QueueTest, SendingNullOrAnUnknownPointerIsRefused) {
  BoundQueue queue(kRequestModule, 16);
  ASSERT_GE(queue.id(), 0);
  EXPECT_EQ(_COM_MsgSndMain(kRequestModule, 16, nullptr), KXCOM_ERR_PARAM);
  EXPECT_EQ(COM_MsgSnd(kRequestModule, 0, nullptr), KXCOM_ERR_PARAM);
  KXCOM_MSGBUF on_stack{0, 0};
  EXPECT_EQ(_COM_MsgSndMain(kRequestModule, 16, &on_stack), KXCOM_ERR_PARAM);
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(0, 0), queue.id()), nullptr);
}

TEST_F(QueueTest, SendingABufferTwiceIsRefused) {
  BoundQueue queue(kRequestModule, 17);
  ASSERT_GE(queue.id(), 0);
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
  ASSERT_EQ(_COM_MsgSndMain(kRequestModule, 17, buf), KXCOM_LIB_OK);
  EXPECT_EQ(_COM_MsgSndMain(kRequestModule, 17, buf), KXCOM_ERR_DOUBLE_FREE);
  KXCOM_MSGBUF* got = _COM_MsgRcvMain(0, Wait(0, 0), queue.id());
  EXPECT_EQ(got, buf);
  // Only one copy was queued.
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(0, 0), queue.id()), nullptr);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(got), KXCOM_LIB_OK);
}

TEST_F(QueueTest, AQueuedBufferIsNoLongerTheSenders) {
  BoundQueue queue(kRequestModule, 18);
  ASSERT_GE(queue.id(), 0);
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
  void* payload = _COM_STR_PTR(buf, 4);
  ASSERT_NE(payload, nullptr);
  ASSERT_EQ(_COM_MsgSndMain(kRequestModule, 18, buf), KXCOM_LIB_OK);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_ERR_DOUBLE_FREE);
  EXPECT_EQ(_COM_STR_PTR(buf, 4), nullptr);
  // The receiver gets it whole, payload included, and owns it.
  KXCOM_MSGBUF* got = _COM_MsgRcvMain(0, Wait(0, 0), queue.id());
  ASSERT_EQ(got, buf);
  EXPECT_EQ(_COM_STR_PTR(got, 4), payload);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(got), KXCOM_LIB_OK);
}

TEST_F(QueueTest, SendingAFreedBufferIsRefused) {
  BoundQueue queue(kRequestModule, 19);
  ASSERT_GE(queue.id(), 0);
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
  ASSERT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_LIB_OK);
  EXPECT_EQ(_COM_MsgSndMain(kRequestModule, 19, buf), KXCOM_ERR_DOUBLE_FREE);
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(0, 0), queue.id()), nullptr);
}

TEST_F(QueueTest, ReceiveOnAnUnknownIdReturnsNullAtOnce) {
  const auto start = Clock::now();
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(10, 0), -1), nullptr);
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(10, 0), 1000000), nullptr);
  EXPECT_LT(MillisSince(start), camtest::ScaledMs(1000));
}

TEST_F(QueueTest, ReceiveOnADeletedQueueReturnsNullAtOnce) {
  BoundQueue queue(kRequestModule, 20);
  ASSERT_GE(queue.id(), 0);
  const int id = queue.id();
  ASSERT_EQ(queue.Delete(), KXCOM_LIB_OK);
  const auto start = Clock::now();
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(10, 0), id), nullptr);
  EXPECT_LT(MillisSince(start), camtest::ScaledMs(1000));
}

TEST_F(QueueTest, DeletingAQueueEndsAWaitingReceive) {
  BoundQueue queue(kRequestModule, 21);
  ASSERT_GE(queue.id(), 0);
  std::atomic<int> delete_result{1};
  std::thread deleter([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    delete_result = queue.Delete();
  });
  const int id = queue.id();
  const auto start = Clock::now();
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(20, 0), id), nullptr);
  EXPECT_LT(MillisSince(start), camtest::ScaledMs(2000));
  deleter.join();
  EXPECT_EQ(delete_result.load(), KXCOM_LIB_OK);
}

TEST_F(QueueTest, DeletingAQueueEndsEveryWaitingReceive) {
  BoundQueue queue(kRequestModule, 28);
  ASSERT_GE(queue.id(), 0);
  const int id = queue.id();
  constexpr int kReceivers = 3;
  std::atomic<int> waiting{0};
  std::atomic<int> ended{0};
  std::vector<std::thread> receivers;
  for (int i = 0; i < kReceivers; ++i) {
    receivers.emplace_back([&] {
      ++waiting;
      EXPECT_EQ(_COM_MsgRcvMain(0, Wait(20, 0), id), nullptr);
      ++ended;
    });
  }
  ASSERT_TRUE(camtest::WaitUntil([&] { return waiting.load() == kReceivers; }));
  const auto start = Clock::now();
  ASSERT_EQ(queue.Delete(), KXCOM_LIB_OK);
  EXPECT_TRUE(camtest::WaitUntil([&] { return ended.load() == kReceivers; }));
  EXPECT_LT(MillisSince(start), camtest::ScaledMs(2000));
  for (std::thread& t : receivers) t.join();
}

TEST_F(QueueTest, SendToADeletedQueueFails) {
  BoundQueue queue(kRequestModule, 22);
  ASSERT_GE(queue.id(), 0);
  ASSERT_EQ(queue.Delete(), KXCOM_LIB_OK);
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
  EXPECT_EQ(_COM_MsgSndMain(kRequestModule, 22, buf), KXCOM_ERR_NO_QUEUE);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_LIB_OK);
}

TEST_F(QueueTest, DeleteFreesQueuedMessages) {
  const int live = KXCOM_LiveBufferCount();
  BoundQueue queue(kRequestModule, 23);
  ASSERT_GE(queue.id(), 0);
  KXCOM_MSGBUF* with_payload = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
  ASSERT_NE(_COM_STR_PTR(with_payload, 64), nullptr);
  ASSERT_EQ(_COM_MsgSndMain(kRequestModule, 23, with_payload), KXCOM_LIB_OK);
  for (int code = 1; code < 5; ++code) {
    ASSERT_EQ(_COM_MsgSndMain(kRequestModule, 23, KXCOM_CreateMsgBuf_Asy(code, 0, 0)),
              KXCOM_LIB_OK);
  }
  EXPECT_EQ(KXCOM_LiveBufferCount(), live + 5);
  EXPECT_EQ(queue.Delete(), KXCOM_LIB_OK);
  EXPECT_EQ(KXCOM_LiveBufferCount(), live);
}

TEST_F(QueueTest, SecondDeleteIsRefused) {
  BoundQueue queue(kRequestModule, 24);
  ASSERT_GE(queue.id(), 0);
  const int id = queue.id();
  ASSERT_EQ(queue.Delete(), KXCOM_LIB_OK);
  EXPECT_EQ(KXCOM_DeleteMsgQue_Asy(id, kRequestModule, 24), KXCOM_ERR_DELETED);
  EXPECT_EQ(KXCOM_DeleteMsgQue_Asy(-5, kRequestModule, 24), KXCOM_ERR_DELETED);
}

TEST_F(QueueTest, DeleteWithTheWrongAddressIsRefusedAndKeepsTheQueue) {
  BoundQueue queue(kRequestModule, 25);
  ASSERT_GE(queue.id(), 0);
  EXPECT_EQ(KXCOM_DeleteMsgQue_Asy(queue.id(), kRequestModule, 26), KXCOM_ERR_PARAM);
  EXPECT_EQ(KXCOM_DeleteMsgQue_Asy(queue.id(), kRequestModule + 1, 25), KXCOM_ERR_PARAM);
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
  ASSERT_EQ(_COM_MsgSndMain(kRequestModule, 25, buf), KXCOM_LIB_OK);
  KXCOM_MSGBUF* got = _COM_MsgRcvMain(0, Wait(0, 0), queue.id());
  EXPECT_EQ(got, buf);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(got), KXCOM_LIB_OK);
}

TEST_F(QueueTest, FreeBufEntryFreesQueuedMessagesAndKeepsTheQueue) {
  const int live = KXCOM_LiveBufferCount();
  BoundQueue queue(kRequestModule, 27);
  ASSERT_GE(queue.id(), 0);
  for (int code = 0; code < 3; ++code) {
    ASSERT_EQ(_COM_MsgSndMain(kRequestModule, 27, KXCOM_CreateMsgBuf_Asy(code, 0, 0)),
              KXCOM_LIB_OK);
  }
  EXPECT_EQ(KXCOM_LiveBufferCount(), live + 3);
  EXPECT_EQ(COM_FreeBufEntry(kRequestModule, 27), KXCOM_LIB_OK);
  EXPECT_EQ(KXCOM_LiveBufferCount(), live);
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(0, 0), queue.id()), nullptr);
  // Still bound: a new message arrives.
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(9, 0, 0);
  ASSERT_EQ(_COM_MsgSndMain(kRequestModule, 27, buf), KXCOM_LIB_OK);
  KXCOM_MSGBUF* got = _COM_MsgRcvMain(0, Wait(0, 0), queue.id());
  EXPECT_EQ(got, buf);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(got), KXCOM_LIB_OK);
  // An empty queue is cleared without complaint.
  EXPECT_EQ(COM_FreeBufEntry(kRequestModule, 27), KXCOM_LIB_OK);
}

TEST_F(QueueTest, AfterFreeBufEntryAReceiveWaitsItsTimeForANewMessage) {
  BoundQueue queue(kRequestModule, 29);
  ASSERT_GE(queue.id(), 0);
  for (int code = 0; code < 3; ++code) {
    ASSERT_EQ(_COM_MsgSndMain(kRequestModule, 29, KXCOM_CreateMsgBuf_Asy(code, 0, 0)),
              KXCOM_LIB_OK);
  }
  ASSERT_EQ(COM_FreeBufEntry(kRequestModule, 29), KXCOM_LIB_OK);
  // The cleared messages do not end the wait early.
  const auto start = Clock::now();
  EXPECT_EQ(_COM_MsgRcvMain(0, Wait(0, 50000), queue.id()), nullptr);
  EXPECT_GE(MillisSince(start), 50.0);
  // A message sent during the wait ends it.
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(7, 0, 0);
  std::thread sender([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(_COM_MsgSndMain(kRequestModule, 29, buf), KXCOM_LIB_OK);
  });
  KXCOM_MSGBUF* got = _COM_MsgRcvMain(0, Wait(20, 0), queue.id());
  sender.join();
  EXPECT_EQ(got, buf);
  if (got != nullptr) {
    EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(got), KXCOM_LIB_OK);
  }
}

TEST_F(QueueTest, FreeBufEntryOfAnUnboundAddressIsRefused) {
  EXPECT_EQ(COM_FreeBufEntry(kRequestModule, 998), KXCOM_ERR_NO_QUEUE);
}

TEST_F(QueueTest, DestroyMsgReturnsZero) {
  EXPECT_EQ(KXCOM_DestroyMsg_Asy(), KXCOM_LIB_OK);
  std::atomic<int> from_thread{1};
  std::thread other([&] { from_thread = KXCOM_DestroyMsg_Asy(); });
  other.join();
  EXPECT_EQ(from_thread.load(), KXCOM_LIB_OK);
}

// The request thread's life: bind, take commands with the 100 ms bound,
// then clear, unbind and end, as the thread does on its way out.
TEST_F(QueueTest, RequestThreadRoundTrip) {
  constexpr uint32_t kThreadIndex = 0x30;
  std::atomic<int> bound_id{-100};
  std::atomic<bool> ready{false};
  std::vector<uint32_t> handled;
  std::atomic<int> idle_rounds{0};
  std::mutex ready_mutex;
  std::condition_variable ready_cond;
  KXCOM_SetWaitDivisor(10);
  std::thread request_thread([&] {
    const int id = KXCOM_InitMsg_Asy(kRequestModule, kThreadIndex);
    bound_id = id;
    {
      std::lock_guard<std::mutex> lock(ready_mutex);
      ready = true;
    }
    ready_cond.notify_all();
    if (id < 0) return;
    // The deadline only ends the thread if the test itself went wrong.
    const auto give_up = Clock::now() + std::chrono::seconds(20);
    while (Clock::now() < give_up) {
      KXCOM_MSGBUF* msg = _COM_MsgRcvMain(0, RequestWait(), id);
      if (msg == nullptr) {
        ++idle_rounds;
        continue;
      }
      const uint32_t code = msg->ulCode;
      handled.push_back(code);
      KXCOM_FreeMsgBuf_Asy(msg);
      if (code == 3) break;  // the wake-up that ends the thread
    }
    COM_FreeBufEntry(kRequestModule, kThreadIndex);
    KXCOM_DeleteMsgQue_Asy(id, kRequestModule, kThreadIndex);
    KXCOM_DestroyMsg_Asy();
  });
  {
    std::unique_lock<std::mutex> lock(ready_mutex);
    EXPECT_TRUE(ready_cond.wait_for(lock, std::chrono::seconds(10), [&] { return ready.load(); }));
  }
  if (bound_id.load() < 0) {
    request_thread.join();
    FAIL() << "bind failed: " << bound_id.load();
  }
  // Let some idle rounds pass, then post START, PRESET, STOP and the wake-up.
  const auto deadline = Clock::now() + std::chrono::seconds(10);
  while (idle_rounds.load() < 3 && Clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_GE(idle_rounds.load(), 3);
  for (int code : {0, 4, 1, 3}) {
    KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(code, 0, 0);
    const int sent = _COM_MsgSndMain(kRequestModule, kThreadIndex, buf);
    EXPECT_EQ(sent, KXCOM_LIB_OK) << "code " << code;
    if (sent != KXCOM_LIB_OK) KXCOM_FreeMsgBuf_Asy(buf);
  }
  request_thread.join();
  EXPECT_EQ(handled, (std::vector<uint32_t>{0, 4, 1, 3}));
  // The queue is gone with the thread.
  EXPECT_EQ(COM_FreeBufEntry(kRequestModule, kThreadIndex), KXCOM_ERR_NO_QUEUE);
  BoundQueue rebound(kRequestModule, kThreadIndex);
  EXPECT_GE(rebound.id(), 0);
}

}  // namespace
}  // namespace ipc_test
