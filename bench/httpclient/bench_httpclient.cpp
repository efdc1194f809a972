// Speed of the HTTP client's parsers on memory: the response parser and the
// multipart reader. The whole exchange on loopback, against a plain socket
// and libcurl, is measured by bench_limits.
#include <benchmark/benchmark.h>

#include <string>

#include "kxhttp.h"
#include "kxhttp_internal.h"

namespace {

const std::string kReply =
    "HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\nContent-Length: 7\r\n\r\nuid=17\n";

void BM_ParseResponse(benchmark::State& state) {
  std::string text = kReply;
  for (auto _ : state) {
    kxhttp::MemorySource source(reinterpret_cast<const uint8_t*>(text.data()), text.size(),
                                text.size());
    kxhttp::InputBuffer input;
    input.source = &source;
    kxhttp::ResponseHead head;
    auto deadline = kxhttp::Clock::now() + std::chrono::seconds(1);
    char body[2048];
    size_t stored = 0;
    kxhttp::read_response_head(input, deadline, head);
    kxhttp::read_response_body(input, deadline, head, false, body, sizeof body, stored);
    benchmark::DoNotOptimize(stored);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_ParseResponse);

// Pictures of 30 KB, with and without Content-Length.
void BM_MultipartParts(benchmark::State& state) {
  const bool withLength = state.range(0) != 0;
  const std::string picture(30000, '\x5a');
  std::string body;
  for (int i = 0; i < 20; ++i) {
    body += "--frame\r\nContent-Type: image/jpeg\r\n";
    if (withLength) body += "Content-Length: " + std::to_string(picture.size()) + "\r\n";
    body += "\r\n" + picture + "\r\n";
  }
  for (auto _ : state) {
    kxhttp::MemorySource source(reinterpret_cast<const uint8_t*>(body.data()), body.size(), 4096);
    kxhttp::InputBuffer input;
    input.source = &source;
    kxhttp::MultipartReader reader("frame");
    auto deadline = kxhttp::Clock::now() + std::chrono::seconds(1);
    for (int i = 0; i < 20; ++i) reader.next_part(input, deadline);
    benchmark::DoNotOptimize(reader.data().size());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(body.size()));
}
BENCHMARK(BM_MultipartParts)->Arg(1)->Arg(0);

}  // namespace

BENCHMARK_MAIN();
