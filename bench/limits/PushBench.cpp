// Push reading: a local server pushes JPEG pictures as fast as the socket
// takes them (no pace: a paced push measures the pace), read once through
// the platform's push reader part by part, and once by raw recv of the same
// bytes into a buffer. The two take turns; each round reads the whole push
// to its close.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "Figures.h"
#include "Jpeg.h"
#include "Loopback.h"
#include "Sections.h"
#include "kxhttp.h"

namespace limits {

namespace {

const char kBoundary[] = "limitsboundary";
const char kTarget[] = "/cgi-bin/jpeg?connect=start&resolution=1280&UID=1";

std::string PushAnswer(const std::string& sPicture, int iPictures) {
  std::string sAnswer = std::string("HTTP/1.0 200 OK\r\nContent-Type: multipart/x-mixed-replace;") +
                        "boundary=" + kBoundary + "\r\nConnection: close\r\n\r\n";
  const std::string sPart =
      std::string("--") + kBoundary +
      "\r\nContent-Type: image/jpeg\r\nContent-Length: " + std::to_string(sPicture.size()) +
      "\r\n\r\n" + sPicture + "\r\n";
  sAnswer.reserve(sAnswer.size() + sPart.size() * static_cast<size_t>(iPictures));
  for (int i = 0; i < iPictures; ++i) sAnswer += sPart;
  return sAnswer;
}

// Reads the whole push through the platform's reader; the pictures read.
long ReadThroughPlatform(uint16_t usPort) {
  HTTP_SESSION* psSession = http_open_session_to_ret("127.0.0.1", usPort, nullptr, 0, 0, 5000, 0);
  if (psSession == nullptr) return -1;
  http_set_url(psSession, "GET", kTarget, "HTTP/1.0");
  http_add_header(psSession, "Connection", "Keep-Alive");
  long lPictures = -1;
  if (http_do_server_push(psSession, 5) == HTTP_RESULT_STATUS200) {
    HTTP_PUSH_PART sPart{};
    lPictures = 0;
    uint32_t ulCode = 0;
    while ((ulCode = http_push_next_part(psSession, &sPart, 5000)) == 0) {
      if (sPart.ulLength > 2 && sPart.pucData[0] == 0xFF && sPart.pucData[1] == 0xD8) ++lPictures;
    }
    if (ulCode != HTTP_ERR_CLOSED) lPictures = -1;
  }
  http_close_session(psSession);
  return lPictures;
}

// The picture with comment segments of filler after its start marker, to the
// size of a busy camera picture: a decoder skips them, as it skips the
// metadata a camera puts there.
std::string Padded(const std::string& sPicture, size_t ulSize) {
  std::string sPadded = sPicture.substr(0, 2);
  while (sPadded.size() + sPicture.size() - 2 < ulSize) {
    const size_t ulChunk = std::min<size_t>(60000, ulSize - sPadded.size() - sPicture.size() + 2);
    const size_t ulLength = std::max<size_t>(ulChunk, 4) - 2;  // the length counts itself
    sPadded += "\xff\xfe";
    sPadded += static_cast<char>((ulLength + 2) >> 8);
    sPadded += static_cast<char>((ulLength + 2) & 0xff);
    sPadded.append(ulLength, 'x');
  }
  return sPadded + sPicture.substr(2);
}

bool MeasurePictures(const Options& rOptions, const std::string& sPicture, const char* pcKind) {
  FixedAnswerServer server(PushAnswer(sPicture, rOptions.iPushPictures));
  const double dMegabytes = static_cast<double>(sPicture.size()) * rOptions.iPushPictures / 1e6;
  const std::string sRequest = GetRequest(kTarget);
  std::vector<char> acBuffer(1 << 16);
  Samples sPlatform, sRaw;  // ms per round: the time to read the whole push
  for (int i = 0; i < rOptions.iPushRounds; ++i) {
    Clock::time_point t0 = Clock::now();
    const long lPictures = ReadThroughPlatform(server.Port());
    const double dPlatformUs = Micros(Clock::now() - t0);
    t0 = Clock::now();
    const long lBytes = RawExchange(server.Port(), sRequest, acBuffer.data(), acBuffer.size());
    const double dRawUs = Micros(Clock::now() - t0);
    if (lPictures != rOptions.iPushPictures || lBytes <= 0) {
      std::printf("  a round failed (pictures %ld of %d, raw bytes %ld)\n", lPictures,
                  rOptions.iPushPictures, lBytes);
      return false;
    }
    sPlatform.Add(dPlatformUs / 1000.0);
    sRaw.Add(dRawUs / 1000.0);
  }
  std::printf("  %d pictures of %zu bytes (%s) a round; at p50 %.0f MB/s platform, %.0f MB/s raw\n",
              rOptions.iPushPictures, sPicture.size(), pcKind,
              dMegabytes / sPlatform.P50() * 1000.0, dMegabytes / sRaw.P50() * 1000.0);
  PrintRow("platform push reader, whole push", sPlatform, "ms");
  PrintRow("raw recv, whole push", sRaw, "ms");
  // Throughput is the inverse of the time for the same bytes.
  PrintRatio("throughput platform / raw, p50", sRaw.P50() / sPlatform.P50(), Bound::kAtLeast, 0.8);
  PrintInfoRatio("throughput platform / raw, p99", sRaw.P99() / sPlatform.P99());
  return true;
}

}  // namespace

bool RunPush(const Options& rOptions) {
  PrintSection("push reading: platform push reader against raw recv, unpaced local push");
  const std::string sPicture = camsim::MakeGrayJpeg(1280, 960, 128);
  return MeasurePictures(rOptions, sPicture, "camsim's 1280x960 gray picture") &&
         MeasurePictures(rOptions, Padded(sPicture, 128 * 1024),
                         "the same padded to 128 KiB with comment segments");
}

}  // namespace limits
