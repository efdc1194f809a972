// Message buffers: codes, payload, free, and every misuse answered with an
// error code.
#include <cstring>
#include <thread>

#include "ipc_test_support.h"

namespace ipc_test {
namespace {

using BufferTest = IpcTest;

constexpr uint32_t kUidMessageId = 0x2203001C;

TEST_F(BufferTest, CommandBufferCarriesTheCodeAndNoPayload) {
  const int live = KXCOM_LiveBufferCount();
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(4, 0, 0);
  ASSERT_NE(buf, nullptr);
  EXPECT_EQ(buf->ulCode, 4u);
  EXPECT_EQ(buf->ulSize, 0u);
  EXPECT_EQ(KXCOM_LiveBufferCount(), live + 1);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_LIB_OK);
  EXPECT_EQ(KXCOM_LiveBufferCount(), live);
}

TEST_F(BufferTest, MessageBufferCarriesTheIdentifier) {
  KXCOM_MSGBUF* buf = COM_MsgBufCreate(kUidMessageId, 0, 0);
  ASSERT_NE(buf, nullptr);
  EXPECT_EQ(buf->ulCode, kUidMessageId);
  EXPECT_EQ(buf->ulSize, 0u);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_LIB_OK);
}

TEST_F(BufferTest, NegativeCommandCodeKeepsItsBits) {
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(-1, 0, 0);
  ASSERT_NE(buf, nullptr);
  EXPECT_EQ(buf->ulCode, 0xFFFFFFFFu);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_LIB_OK);
}

TEST_F(BufferTest, EveryBufferIsADistinctObject) {
  KXCOM_MSGBUF* first = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
  KXCOM_MSGBUF* second = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_NE(first, second);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(first), KXCOM_LIB_OK);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(second), KXCOM_LIB_OK);
}

TEST_F(BufferTest, PayloadIsZeroFilledAndSized) {
  KXCOM_MSGBUF* buf = COM_MsgBufCreate(kUidMessageId, 0, 0);
  ASSERT_NE(buf, nullptr);
  auto* payload = static_cast<unsigned char*>(_COM_STR_PTR(buf, 12));
  ASSERT_NE(payload, nullptr);
  EXPECT_EQ(buf->ulSize, 12u);
  for (int i = 0; i < 12; ++i) EXPECT_EQ(payload[i], 0) << "byte " << i;
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_LIB_OK);
}

TEST_F(BufferTest, LargePayloadIsZeroFilled) {
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(1, 0, 0);
  ASSERT_NE(buf, nullptr);
  constexpr int kSize = 65536;
  auto* payload = static_cast<unsigned char*>(_COM_STR_PTR(buf, kSize));
  ASSERT_NE(payload, nullptr);
  int non_zero = 0;
  for (int i = 0; i < kSize; ++i) non_zero += payload[i] != 0;
  EXPECT_EQ(non_zero, 0);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_LIB_OK);
}

TEST_F(BufferTest, AskingAgainWithinTheSizeGivesTheSamePayload) {
  KXCOM_MSGBUF* buf = COM_MsgBufCreate(kUidMessageId, 0, 0);
  ASSERT_NE(buf, nullptr);
  auto* payload = static_cast<unsigned char*>(_COM_STR_PTR(buf, 12));
  ASSERT_NE(payload, nullptr);
  payload[0] = 0xAB;
  payload[11] = 0xCD;
  EXPECT_EQ(_COM_STR_PTR(buf, 12), payload);
  EXPECT_EQ(_COM_STR_PTR(buf, 4), payload);
  EXPECT_EQ(_COM_STR_PTR(buf, 1), payload);
  // Asking again neither clears the content nor changes the size.
  EXPECT_EQ(payload[0], 0xAB);
  EXPECT_EQ(payload[11], 0xCD);
  EXPECT_EQ(buf->ulSize, 12u);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_LIB_OK);
}

TEST_F(BufferTest, AskingForMoreThanThePayloadGivesNullAndKeepsIt) {
  KXCOM_MSGBUF* buf = COM_MsgBufCreate(kUidMessageId, 0, 0);
  ASSERT_NE(buf, nullptr);
  void* payload = _COM_STR_PTR(buf, 12);
  ASSERT_NE(payload, nullptr);
  EXPECT_EQ(_COM_STR_PTR(buf, 13), nullptr);
  EXPECT_EQ(buf->ulSize, 12u);
  EXPECT_EQ(_COM_STR_PTR(buf, 12), payload);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_LIB_OK);
}

TEST_F(BufferTest, PayloadOfSizeZeroOrLessIsNull) {
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
  ASSERT_NE(buf, nullptr);
  EXPECT_EQ(_COM_STR_PTR(buf, 0), nullptr);
  EXPECT_EQ(_COM_STR_PTR(buf, -12), nullptr);
  EXPECT_EQ(buf->ulSize, 0u);
  // A refused ask does not fix the size: a proper one still works.
  EXPECT_NE(_COM_STR_PTR(buf, 8), nullptr);
  EXPECT_EQ(buf->ulSize, 8u);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_LIB_OK);
}

TEST_F(BufferTest, PayloadOfNullOrUnknownBufferIsNull) {
  EXPECT_EQ(_COM_STR_PTR(nullptr, 12), nullptr);
  KXCOM_MSGBUF not_a_buffer{};
  EXPECT_EQ(_COM_STR_PTR(&not_a_buffer, 12), nullptr);
  EXPECT_EQ(not_a_buffer.ulSize, 0u);
}

TEST_F(BufferTest, PayloadOfFreedBufferIsNull) {
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
  ASSERT_NE(buf, nullptr);
  ASSERT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_LIB_OK);
  EXPECT_EQ(_COM_STR_PTR(buf, 12), nullptr);
}

TEST_F(BufferTest, FreeingWithPayloadReleasesIt) {
  // ASan's leak check fails the run if the payload outlives the buffer.
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
  ASSERT_NE(buf, nullptr);
  ASSERT_NE(_COM_STR_PTR(buf, 100), nullptr);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_LIB_OK);
}

TEST_F(BufferTest, SecondFreeIsRefused) {
  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
  ASSERT_NE(buf, nullptr);
  const int live = KXCOM_LiveBufferCount();
  ASSERT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_LIB_OK);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_ERR_DOUBLE_FREE);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_ERR_DOUBLE_FREE);
  EXPECT_EQ(KXCOM_LiveBufferCount(), live - 1);
}

TEST_F(BufferTest, FreeingNullIsRefused) {
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(nullptr), KXCOM_ERR_PARAM);
}

TEST_F(BufferTest, FreeingAPointerThatIsNoBufferIsRefused) {
  KXCOM_MSGBUF on_stack{7, 0};
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(&on_stack), KXCOM_ERR_PARAM);
  // The object was not written.
  EXPECT_EQ(on_stack.ulCode, 7u);

  KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
  ASSERT_NE(buf, nullptr);
  ASSERT_NE(_COM_STR_PTR(buf, 16), nullptr);
  // An address inside a live buffer is not a buffer either.
  auto* inside = reinterpret_cast<KXCOM_MSGBUF*>(&buf->ulSize);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(inside), KXCOM_ERR_PARAM);
  EXPECT_EQ(KXCOM_FreeMsgBuf_Asy(buf), KXCOM_LIB_OK);
}

TEST_F(BufferTest, ConcurrentFreesOfOneBufferSucceedOnce) {
  constexpr int kRounds = 200;
  for (int round = 0; round < kRounds; ++round) {
    KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(round, 0, 0);
    ASSERT_NE(buf, nullptr);
    int results[2] = {1, 1};
    std::thread first([&] { results[0] = KXCOM_FreeMsgBuf_Asy(buf); });
    std::thread second([&] { results[1] = KXCOM_FreeMsgBuf_Asy(buf); });
    first.join();
    second.join();
    const int successes = (results[0] == KXCOM_LIB_OK) + (results[1] == KXCOM_LIB_OK);
    ASSERT_EQ(successes, 1) << "round " << round;
    const int refused = results[0] == KXCOM_LIB_OK ? results[1] : results[0];
    ASSERT_EQ(refused, KXCOM_ERR_DOUBLE_FREE) << "round " << round;
  }
}

TEST_F(BufferTest, ManyThreadsCreateAndFreeWithoutLoss) {
  constexpr int kThreads = 4;
  constexpr int kPerThread = 500;
  const int live = KXCOM_LiveBufferCount();
  std::vector<std::thread> threads;
  std::vector<int> failures(kThreads, 0);
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &failures] {
      for (int i = 0; i < kPerThread; ++i) {
        KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(i, 0, 0);
        auto* payload = static_cast<int*>(_COM_STR_PTR(buf, sizeof(int)));
        if (payload == nullptr || *payload != 0) ++failures[t];
        if (payload != nullptr) *payload = i;
        if (KXCOM_FreeMsgBuf_Asy(buf) != KXCOM_LIB_OK) ++failures[t];
      }
    });
  }
  for (auto& thread : threads) thread.join();
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(failures[t], 0) << "thread " << t;
  EXPECT_EQ(KXCOM_LiveBufferCount(), live);
}

}  // namespace
}  // namespace ipc_test
