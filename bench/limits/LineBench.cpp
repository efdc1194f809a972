// Builders, scanners and print: nanoseconds per CGI line, per reply checked
// and per diagnostic print, and the heap allocations each makes (which must
// be none: a requester builds and scans in fixed buffers of its own). The
// diagnostic print goes to a sink that drops it.
#include <cstdio>
#include <cstring>

#include "AllocCount.h"
#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "Figures.h"
#include "Sections.h"
#include "kxcom.h"

namespace limits {

namespace {

// Keeps a result alive without letting the compiler drop the call.
template <typename T>
void Keep(const T& value) {
  asm volatile("" : : "r,m"(value) : "memory");
}

// Times iLineCalls calls per batch, over iLineBatches batches; returns
// whether none of them allocated.
template <typename F>
bool TimeCalls(const Options& rOptions, const char* pcName, F fnCall) {
  for (int i = 0; i < rOptions.iLineCalls; ++i) Keep(fnCall());
  Samples sNs;
  long lAllocs = 0;  // counted around the calls alone: keeping the samples allocates
  for (int b = 0; b < rOptions.iLineBatches; ++b) {
    const long lAllocsBefore = ThreadAllocations();
    const Clock::time_point t0 = Clock::now();
    for (int i = 0; i < rOptions.iLineCalls; ++i) Keep(fnCall());
    const Clock::time_point t1 = Clock::now();
    lAllocs += ThreadAllocations() - lAllocsBefore;
    sNs.Add(Micros(t1 - t0) * 1000.0 / rOptions.iLineCalls);
  }
  const double dCalls = static_cast<double>(rOptions.iLineBatches) * rOptions.iLineCalls;
  PrintRow(pcName, sNs, "ns");
  std::printf("  %-44s allocations per call %.4f: %s\n", "", static_cast<double>(lAllocs) / dCalls,
              lAllocs == 0 ? "met" : "NOT met");
  return lAllocs == 0;
}

template <typename T>
void Prepare(T& rReq, int iType, int iCmd) {
  rReq.usCameraType = static_cast<uint16_t>(iType);
  rReq.iCmdType = iCmd;
  rReq.usSelectChNo = 3;
  rReq.iUid = 4711;
  rReq.usPresetNo = 7;
  rReq.iAudioEnable = 100;
}

// A realistic session reply of about 300 bytes.
char g_acReply[] =
    "<html><head><title>getuid</title></head><body>\r\n"
    "UID=4711\r\naBitrate=32\r\naEnable=in\r\nsDelivery=multi\r\n"
    "iMultiAdd1=239\r\niMultiAdd2=1\r\niMultiAdd3=2\r\niMultiAdd4=4\r\n"
    "iMultiAddv6=ff15::1:2\r\niMultiPort=5000\r\niUniPort=6000\r\naInPort=6100\r\n"
    "PLAY_MODE=3\r\nFILENAME=rec_20260101_0001.dat\r\nvar strKey = \"Xy9_2k\";\r\n"
    "</body></html>\r\n";

void DropPrint(const char* pcText, void*) {
  Keep(pcText);
}

}  // namespace

bool RunLines(const Options& rOptions) {
  PrintSection("builders, scanners and print: time per call and heap allocations (none allowed)");
  COM_SetPrintSink(DropPrint, nullptr);
  bool bNone = true;
  char acLine[512];
  {
    CCamRequester_Cgi_Kobu_Rtp r;
    Prepare(r, 0, 0);
    bNone &=
        TimeCalls(rOptions, "line: keep-alive (RTP)", [&] { return r.CmdSet_KeepAlive(acLine); });
    Prepare(r, 9, 0);
    bNone &= TimeCalls(rOptions, "line: H.264 start",
                       [&] { return r.CmdSet_H264Distribute(acLine, 1); });
    Prepare(r, 0, 1);
    bNone &= TimeCalls(rOptions, "line: audio start",
                       [&] { return r.CmdSet_AudioDistribute(acLine, 1); });
    Prepare(r, 7, 2);
    bNone &= TimeCalls(rOptions, "line: session (UID request)",
                       [&] { return r.CmdSet_SessionCmmand(acLine); });
    Prepare(r, 34, 0);
    std::strcpy(r.cUserName, "operator");
    std::strcpy(r.cPassword, "secret-password");
    std::strcpy(r.strKey, "Xy9_2k");
    bNone &=
        TimeCalls(rOptions, "line: recorder log-in", [&] { return r.CmdSet_KelLogIn(acLine); });
  }
  {
    CCamRequester_Cgi_Kobu_Http r;
    Prepare(r, 7, 0);
    r.usFrate = 3;
    r.usResolution = 2;
    bNone &= TimeCalls(rOptions, "line: JPEG push start",
                       [&] { return r.CmdSet_JpegDistribute(acLine, 1); });
    Prepare(r, 13, 0);
    r.usFrate = 2;
    bNone &= TimeCalls(rOptions, "line: Quillon push start",
                       [&] { return r.CmdSet_JpegDistribute(acLine, 1); });
    Prepare(r, 11, 0);
    bNone &= TimeCalls(rOptions, "line: preset", [&] { return r.CmdSet_CamPreset(acLine); });
  }
  {
    CCamRequester_Cgi_Kobu_Rtp r;
    Prepare(r, 0, 0);
    bNone &= TimeCalls(rOptions, "reply: one number (SearchNumber)", [&] {
      int iValue = 0;
      char acKey[] = "iMultiPort=";
      return r.SearchNumber(g_acReply, acKey, &iValue);
    });
    bNone &= TimeCalls(rOptions, "reply: multicast set-up", [&] {
      std::strcpy(r.sDelivery, "multi");
      return r.GetMultiUniSetup(g_acReply);
    });
    // Without a session the check stops at the own address: UID, audio and
    // delivery are scanned.
    bNone &= TimeCalls(rOptions, "reply: session (CheckCamInfo)",
                       [&] { return r.CheckCamInfo_RcvData(g_acReply); });
    Prepare(r, 33, 0);
    bNone &= TimeCalls(rOptions, "reply: recorder keep-alive",
                       [&] { return r.CheckKeepAlive_RcvData(g_acReply); });
    Prepare(r, 34, 0);
    bNone &= TimeCalls(rOptions, "reply: recorder play mode",
                       [&] { return r.CheckPlayMode_RcvData(g_acReply); });
    Prepare(r, 31, 0);
    bNone &= TimeCalls(rOptions, "reply: recorder key", [&] {
      char acKey[] = "strKey = \"";
      return r.CheckKelStrKey(g_acReply, acKey);
    });
    bNone &= TimeCalls(rOptions, "print: COM_printf to a sink", [] {
      return COM_printf("RequestThreadMain [DEBUG] Dummy command TINDEX=%x\n", 7);
    });
    bNone &= TimeCalls(rOptions, "print: requester's prefixed print", [&] {
      return r.CamReqCOM_printf("%s [DEBUG] POS=%d keep-alive sent\n", "SendKeepAlive", 1);
    });
  }
  COM_SetPrintSink(nullptr, nullptr);
  std::printf("  no heap allocation in any of them: %s\n", bNone ? "met" : "NOT met");
  return true;
}

}  // namespace limits
