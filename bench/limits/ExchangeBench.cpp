// One CGI exchange on loopback (open, URL, headers, request, close) through
// the platform's HTTP client, against a minimal plain-socket client sending
// the same GET and, where the build found it, libcurl with a fresh handle
// per request. The three take turns round by round against the same server,
// so that the machine's noise falls on all of them alike.
#include <cstdio>
#include <string>

#include "Figures.h"
#include "Loopback.h"
#include "Sections.h"
#include "kxhttp.h"
#ifdef CAMREQ_BENCH_CURL
#include <curl/curl.h>
#endif

namespace limits {

namespace {

const char kTarget[] = "/cgi-bin/camctrl?uid=17&mode=start";
const char kAnswer[] =
    "HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\nContent-Length: 7\r\n\r\nuid=17\n";

bool PlatformExchange(uint16_t usPort, char* pcBuffer, uint32_t ulSize) {
  HTTP_SESSION* psSession = http_open_session_to_ret("127.0.0.1", usPort, nullptr, 0, 0, 30000, 0);
  if (psSession == nullptr) return false;
  http_set_url(psSession, "GET", kTarget, "HTTP/1.0");
  http_add_header(psSession, "Connection", "Keep-Alive");
  http_add_header(psSession, "Host", "127.0.0.1");
  _InetBuffer sRecord{};
  sRecord.ulSize = ulSize;
  sRecord.pcBuffer = pcBuffer;
  const uint32_t ulCode = http_do_request(psSession, &sRecord, 5);
  http_close_session(psSession);
  return ulCode == HTTP_RESULT_STATUS200;
}

#ifdef CAMREQ_BENCH_CURL
size_t KeepBody(char* pcData, size_t ulSize, size_t ulCount, void* pvBody) {
  static_cast<std::string*>(pvBody)->append(pcData, ulSize * ulCount);
  return ulSize * ulCount;
}

bool CurlExchange(const std::string& sUrl, std::string* psBody) {
  CURL* pCurl = curl_easy_init();
  if (pCurl == nullptr) return false;
  curl_slist* psHeaders = curl_slist_append(nullptr, "Connection: Keep-Alive");
  psHeaders = curl_slist_append(psHeaders, "Host: 127.0.0.1");
  psBody->clear();
  curl_easy_setopt(pCurl, CURLOPT_URL, sUrl.c_str());
  curl_easy_setopt(pCurl, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_0);
  curl_easy_setopt(pCurl, CURLOPT_HTTPHEADER, psHeaders);
  curl_easy_setopt(pCurl, CURLOPT_WRITEFUNCTION, KeepBody);
  curl_easy_setopt(pCurl, CURLOPT_WRITEDATA, psBody);
  curl_easy_setopt(pCurl, CURLOPT_TIMEOUT, 5L);
  curl_easy_setopt(pCurl, CURLOPT_NOSIGNAL, 1L);
  long lStatus = 0;
  const CURLcode eResult = curl_easy_perform(pCurl);
  curl_easy_getinfo(pCurl, CURLINFO_RESPONSE_CODE, &lStatus);
  curl_easy_cleanup(pCurl);
  curl_slist_free_all(psHeaders);
  return eResult == CURLE_OK && lStatus == 200;
}
#endif

}  // namespace

bool RunExchange(const Options& rOptions) {
  PrintSection("one CGI exchange on loopback: platform client, plain socket, libcurl");
  FixedAnswerServer server(kAnswer);
  const std::string sRequest = GetRequest(kTarget);
  char acBuffer[2048];
  Samples sPlatform, sRaw;
#ifdef CAMREQ_BENCH_CURL
  curl_global_init(CURL_GLOBAL_DEFAULT);
  const std::string sUrl = "http://127.0.0.1:" + std::to_string(server.Port()) + kTarget;
  std::string sCurlBody;
  Samples sCurl;
#endif
  for (int i = 0; i < rOptions.iExchangeRounds; ++i) {
    Clock::time_point t0 = Clock::now();
    if (!PlatformExchange(server.Port(), acBuffer, sizeof acBuffer)) {
      std::printf("  platform exchange failed\n");
      return false;
    }
    sPlatform.Add(Micros(Clock::now() - t0));
    t0 = Clock::now();
    if (RawExchange(server.Port(), sRequest, acBuffer, sizeof acBuffer) <= 0) {
      std::printf("  plain-socket exchange failed\n");
      return false;
    }
    sRaw.Add(Micros(Clock::now() - t0));
#ifdef CAMREQ_BENCH_CURL
    t0 = Clock::now();
    if (!CurlExchange(sUrl, &sCurlBody)) {
      std::printf("  libcurl exchange failed\n");
      return false;
    }
    sCurl.Add(Micros(Clock::now() - t0));
#endif
  }
  PrintRow("platform client", sPlatform, "us");
  PrintRow("plain socket", sRaw, "us");
#ifdef CAMREQ_BENCH_CURL
  PrintRow("libcurl, fresh handle", sCurl, "us");
  curl_global_cleanup();
#endif
  PrintRatio("platform / plain socket, p50", sPlatform.P50() / sRaw.P50(), Bound::kAtMost, 1.2);
  PrintInfoRatio("platform / plain socket, p99", sPlatform.P99() / sRaw.P99());
#ifdef CAMREQ_BENCH_CURL
  PrintInfoRatio("libcurl / plain socket, p50", sCurl.P50() / sRaw.P50());
  PrintInfoRatio("libcurl / plain socket, p99", sCurl.P99() / sRaw.P99());
#else
  std::printf("  libcurl: not found when this program was built\n");
#endif
  return true;
}

}  // namespace limits
