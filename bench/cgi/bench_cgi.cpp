// Time of one CGI line and of one reply check, and the number of heap
// allocations each makes (every malloc, calloc and realloc of the process is
// counted; "allocs_per_iter" must stay 0). The diagnostic print's output is
// dropped. Build without sanitizers: they bring their own allocator.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "kxcom.h"

namespace {
std::atomic<long> g_newCalls{0};
}

// Every heap block of the process passes here: operator new ends in malloc.
extern "C" void* __libc_malloc(size_t);
extern "C" void* __libc_calloc(size_t, size_t);
extern "C" void* __libc_realloc(void*, size_t);
extern "C" void* malloc(size_t n) {
  g_newCalls.fetch_add(1, std::memory_order_relaxed);
  return __libc_malloc(n);
}
extern "C" void* calloc(size_t n, size_t m) {
  g_newCalls.fetch_add(1, std::memory_order_relaxed);
  return __libc_calloc(n, m);
}
extern "C" void* realloc(void* p, size_t n) {
  g_newCalls.fetch_add(1, std::memory_order_relaxed);
  return __libc_realloc(p, n);
}

namespace {

std::atomic<long> g_prints{0};

void Discard(const char*, void*) {
  g_prints.fetch_add(1, std::memory_order_relaxed);
}

// Bytes in use on the heap: a builder that kept memory would grow it.
size_t MallocInUse() {
  return mallinfo2().uordblks;
}

template <typename T>
struct Quiet {
  Quiet() { COM_SetPrintSink(&Discard, nullptr); }
  ~Quiet() { COM_SetPrintSink(nullptr, nullptr); }
  T r;
};

// The replacement print library (COM_printf) formats each message into a
// string of its own: a line that prints makes that one allocation per
// message. "allocs_not_print_per_iter" is what is left for the builder or
// scanner itself, and must be 0.
void Report(benchmark::State& state, long newBefore, long printsBefore, size_t inUseBefore) {
  const double allocs = static_cast<double>(g_newCalls.load() - newBefore);
  const double prints = static_cast<double>(g_prints.load() - printsBefore);
  state.counters["allocs_per_iter"] =
      benchmark::Counter(allocs, benchmark::Counter::kAvgIterations);
  state.counters["prints_per_iter"] =
      benchmark::Counter(prints, benchmark::Counter::kAvgIterations);
  state.counters["allocs_not_print_per_iter"] =
      benchmark::Counter(allocs - prints, benchmark::Counter::kAvgIterations);
  state.counters["heap_bytes_kept"] = static_cast<double>(MallocInUse() - inUseBefore);
}

template <typename T, typename F>
void RunBuilder(benchmark::State& state, int type, int cmd, F fnBuild) {
  Quiet<T> q;
  q.r.usCameraType = static_cast<uint16_t>(type);
  q.r.iCmdType = cmd;
  q.r.usSelectChNo = 3;
  q.r.iUid = 4711;
  q.r.usPresetNo = 7;
  q.r.iAudioEnable = 100;
  char dst[512];
  const long newBefore = g_newCalls.load();
  const long printsBefore = g_prints.load();
  const size_t inUseBefore = MallocInUse();
  for (auto _ : state) {
    benchmark::DoNotOptimize(fnBuild(q.r, dst));
    benchmark::ClobberMemory();
  }
  Report(state, newBefore, printsBefore, inUseBefore);
}

void BM_RtpKeepAlive(benchmark::State& s) {
  RunBuilder<CCamRequester_Cgi_Kobu_Rtp>(
      s, 0, 0, [](CCamRequester_Cgi_Kobu_Rtp& r, char* d) { return r.CmdSet_KeepAlive(d); });
}
void BM_RtpH264Start(benchmark::State& s) {
  RunBuilder<CCamRequester_Cgi_Kobu_Rtp>(s, 9, 0, [](CCamRequester_Cgi_Kobu_Rtp& r, char* d) {
    return r.CmdSet_H264Distribute(d, 1);
  });
}
void BM_RtpAudioStart(benchmark::State& s) {
  RunBuilder<CCamRequester_Cgi_Kobu_Rtp>(s, 0, 1, [](CCamRequester_Cgi_Kobu_Rtp& r, char* d) {
    return r.CmdSet_AudioDistribute(d, 1);
  });
}
void BM_RtpSession(benchmark::State& s) {
  RunBuilder<CCamRequester_Cgi_Kobu_Rtp>(
      s, 7, 2, [](CCamRequester_Cgi_Kobu_Rtp& r, char* d) { return r.CmdSet_SessionCmmand(d); });
}
void BM_RecorderLogIn(benchmark::State& s) {
  RunBuilder<CCamRequester_Cgi_Kobu_Rtp>(s, 34, 0, [](CCamRequester_Cgi_Kobu_Rtp& r, char* d) {
    strcpy(r.cUserName, "operator");
    strcpy(r.cPassword, "secret-password");
    strcpy(r.strKey, "Xy9_2k");
    return r.CmdSet_KelLogIn(d);
  });
}
void BM_HttpJpegStart(benchmark::State& s) {
  RunBuilder<CCamRequester_Cgi_Kobu_Http>(s, 7, 0, [](CCamRequester_Cgi_Kobu_Http& r, char* d) {
    r.usFrate = 3;
    r.usResolution = 2;
    return r.CmdSet_JpegDistribute(d, 1);
  });
}
void BM_HttpQuillonPush(benchmark::State& s) {
  RunBuilder<CCamRequester_Cgi_Kobu_Http>(s, 13, 0, [](CCamRequester_Cgi_Kobu_Http& r, char* d) {
    r.usFrate = 2;
    return r.CmdSet_JpegDistribute(d, 1);
  });
}
void BM_HttpPreset(benchmark::State& s) {
  RunBuilder<CCamRequester_Cgi_Kobu_Http>(
      s, 11, 0, [](CCamRequester_Cgi_Kobu_Http& r, char* d) { return r.CmdSet_CamPreset(d); });
}

// A realistic session reply of about 300 bytes.
char g_reply[] =
    "<html><head><title>getuid</title></head><body>\r\n"
    "UID=4711\r\naBitrate=32\r\naEnable=in\r\nsDelivery=multi\r\n"
    "iMultiAdd1=239\r\niMultiAdd2=1\r\niMultiAdd3=2\r\niMultiAdd4=4\r\n"
    "iMultiAddv6=ff15::1:2\r\niMultiPort=5000\r\niUniPort=6000\r\naInPort=6100\r\n"
    "PLAY_MODE=3\r\nFILENAME=rec_20260101_0001.dat\r\nvar strKey = \"Xy9_2k\";\r\n"
    "</body></html>\r\n";

template <typename F>
void RunReply(benchmark::State& state, int type, F fnCheck) {
  Quiet<CCamRequester_Cgi_Kobu_Rtp> q;
  q.r.usCameraType = static_cast<uint16_t>(type);
  const long newBefore = g_newCalls.load();
  const long printsBefore = g_prints.load();
  const size_t inUseBefore = MallocInUse();
  for (auto _ : state) {
    benchmark::DoNotOptimize(fnCheck(q.r));
    benchmark::ClobberMemory();
  }
  Report(state, newBefore, printsBefore, inUseBefore);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(sizeof(g_reply)));
}

void BM_ReplySearchNumber(benchmark::State& s) {
  RunReply(s, 0, [](CCamRequester_Cgi_Kobu_Rtp& r) {
    int v = 0;
    char key[] = "iMultiPort=";
    return r.SearchNumber(g_reply, key, &v);
  });
}
void BM_ReplyMulticastSetup(benchmark::State& s) {
  RunReply(s, 0, [](CCamRequester_Cgi_Kobu_Rtp& r) {
    strcpy(r.sDelivery, "multi");
    return r.GetMultiUniSetup(g_reply);
  });
}
void BM_ReplyCamInfoUpToSocket(benchmark::State& s) {
  // Without a session the parser stops at the own address: UID, audio and
  // delivery are scanned.
  RunReply(s, 0, [](CCamRequester_Cgi_Kobu_Rtp& r) { return r.CheckCamInfo_RcvData(g_reply); });
}
void BM_ReplyKeepAliveRecorder(benchmark::State& s) {
  RunReply(s, 33, [](CCamRequester_Cgi_Kobu_Rtp& r) { return r.CheckKeepAlive_RcvData(g_reply); });
}
void BM_ReplyPlayModeRecorder(benchmark::State& s) {
  RunReply(s, 34, [](CCamRequester_Cgi_Kobu_Rtp& r) { return r.CheckPlayMode_RcvData(g_reply); });
}
void BM_ReplyStrKey(benchmark::State& s) {
  RunReply(s, 31, [](CCamRequester_Cgi_Kobu_Rtp& r) {
    char key[] = "strKey = \"";
    return r.CheckKelStrKey(g_reply, key);
  });
}

}  // namespace

BENCHMARK(BM_RtpKeepAlive);
BENCHMARK(BM_RtpH264Start);
BENCHMARK(BM_RtpAudioStart);
BENCHMARK(BM_RtpSession);
BENCHMARK(BM_RecorderLogIn);
BENCHMARK(BM_HttpJpegStart);
BENCHMARK(BM_HttpQuillonPush);
BENCHMARK(BM_HttpPreset);
BENCHMARK(BM_ReplySearchNumber);
BENCHMARK(BM_ReplyMulticastSetup);
BENCHMARK(BM_ReplyCamInfoUpToSocket);
BENCHMARK(BM_ReplyKeepAliveRecorder);
BENCHMARK(BM_ReplyPlayModeRecorder);
BENCHMARK(BM_ReplyStrKey);
BENCHMARK_MAIN();
