// Costs of the IPC replacement: one send and receive on a thread, and a
// round trip between two threads. The print is measured by bench_limits.
#include <benchmark/benchmark.h>

#include <atomic>
#include <thread>

#include "kxcom.h"

namespace {

constexpr int kModule = 42;

struct timeval WaitOf(long micros) {
  struct timeval wait {};
  wait.tv_usec = micros;
  return wait;
}

void BM_SendReceiveOneThread(benchmark::State& state) {
  const int id = KXCOM_InitMsg_Asy(kModule, 100);
  for (auto _ : state) {
    KXCOM_MSGBUF* buf = KXCOM_CreateMsgBuf_Asy(0, 0, 0);
    _COM_MsgSndMain(kModule, 100, buf);
    KXCOM_MSGBUF* got = _COM_MsgRcvMain(0, WaitOf(100000), id);
    benchmark::DoNotOptimize(got);
    KXCOM_FreeMsgBuf_Asy(got);
  }
  KXCOM_DeleteMsgQue_Asy(id, kModule, 100);
}
BENCHMARK(BM_SendReceiveOneThread);

// The caller posts a command; an echo thread takes it and answers on a
// second queue, as a request and its reply would travel.
void BM_RoundTripTwoThreads(benchmark::State& state) {
  const int to_echo = KXCOM_InitMsg_Asy(kModule, 101);
  const int to_caller = KXCOM_InitMsg_Asy(kModule, 102);
  std::atomic<bool> running{true};
  std::thread echo([&] {
    while (running.load()) {
      KXCOM_MSGBUF* msg = _COM_MsgRcvMain(0, WaitOf(100000), to_echo);
      if (msg != nullptr && _COM_MsgSndMain(kModule, 102, msg) != KXCOM_LIB_OK) {
        KXCOM_FreeMsgBuf_Asy(msg);
      }
    }
  });
  for (auto _ : state) {
    _COM_MsgSndMain(kModule, 101, KXCOM_CreateMsgBuf_Asy(0, 0, 0));
    KXCOM_MSGBUF* reply = _COM_MsgRcvMain(0, WaitOf(100000), to_caller);
    KXCOM_FreeMsgBuf_Asy(reply);
  }
  running = false;
  echo.join();
  KXCOM_DeleteMsgQue_Asy(to_echo, kModule, 101);
  KXCOM_DeleteMsgQue_Asy(to_caller, kModule, 102);
}
BENCHMARK(BM_RoundTripTwoThreads)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
