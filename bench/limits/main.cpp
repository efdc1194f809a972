// How close the requester library comes to what the machine allows: each
// figure measured side by side with its floor in the same run, and the ratio
// held against its target. Targets are reported as met or not, never
// asserted: the exit status says only whether everything could be measured.
//
//   bench_limits [--brief] [--only exchange|start|idle|push|lines]...
//
// --brief runs every measurement a little (a few seconds in all), for CTest.
#include <cstdio>
#include <cstring>
#include <set>
#include <string>

#include "Sections.h"

namespace {

void Usage() {
  std::fprintf(stderr,
               "usage: bench_limits [--brief] [--only exchange|start|idle|push|lines]...\n");
}

limits::Options BriefOptions() {
  limits::Options sOptions;
  sOptions.bBrief = true;
  sOptions.iExchangeRounds = 200;
  sOptions.iStartRounds = 20;
  sOptions.dIdleSeconds = 2.0;
  sOptions.iPushRounds = 4;
  sOptions.iPushPictures = 50;
  sOptions.iLineBatches = 20;
  sOptions.iLineCalls = 500;
  return sOptions;
}

}  // namespace

int main(int argc, char** argv) {
  bool bBrief = false;
  std::set<std::string> asOnly;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--brief") == 0) {
      bBrief = true;
    } else if (std::strcmp(argv[i], "--only") == 0 && i + 1 < argc) {
      asOnly.insert(argv[++i]);
    } else {
      Usage();
      return 2;
    }
  }
  const limits::Options sOptions = bBrief ? BriefOptions() : limits::Options();
  auto wanted = [&asOnly](const char* pcName) { return asOnly.empty() || asOnly.count(pcName); };
  std::printf("bench_limits%s: p50 and p99 of each kind, ratios measured in this run\n",
              bBrief ? " --brief" : "");
  bool bOk = true;
  // The idle measurement forks: it runs while this process has no thread yet.
  if (wanted("idle")) bOk = limits::RunIdle(sOptions) && bOk;
  if (wanted("lines")) bOk = limits::RunLines(sOptions) && bOk;
  if (wanted("exchange")) bOk = limits::RunExchange(sOptions) && bOk;
  if (wanted("start")) bOk = limits::RunStartToRun(sOptions) && bOk;
  if (wanted("push")) bOk = limits::RunPush(sOptions) && bOk;
  std::printf("\n%s\n", bOk ? "every measurement ran" : "a measurement could not run");
  return bOk ? 0 : 1;
}
