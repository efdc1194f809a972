// The five measurements of the limits program, each in a file of its own.
// Each prints its figures and ratios; false when it could not measure (a
// server would not start, an exchange failed), never for a missed target.
#ifndef BENCH_LIMITS_SECTIONS_H
#define BENCH_LIMITS_SECTIONS_H

#include <vector>

namespace limits {

struct Options {
  bool bBrief = false;  // a short run that only shows that everything still works
  int iExchangeRounds = 2000;
  int iStartRounds = 300;
  std::vector<int> aiIdleCounts = {262, 1024};
  double dIdleSeconds = 30.0;  // covers one keep-alive of every requester
  int iPushRounds = 30;
  int iPushPictures = 300;
  int iLineBatches = 200;
  int iLineCalls = 2000;
};

bool RunExchange(const Options& rOptions);
bool RunStartToRun(const Options& rOptions);
// Runs its measurements in child processes: call it before this process
// starts any thread.
bool RunIdle(const Options& rOptions);
bool RunPush(const Options& rOptions);
bool RunLines(const Options& rOptions);

}  // namespace limits

#endif
