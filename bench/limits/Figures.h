// How the limits program reports: samples of one kind, their p50 and p99,
// and the ratio of two kinds measured side by side in the same run, next to
// its target and whether the target is met. Absolute figures are printed for
// the record only: on a shared machine only the ratios mean something.
#ifndef BENCH_LIMITS_FIGURES_H
#define BENCH_LIMITS_FIGURES_H

#include <chrono>
#include <string>
#include <vector>

namespace limits {

using Clock = std::chrono::steady_clock;

double Micros(Clock::duration d);

// Values of one measured kind, in the unit the caller chose.
class Samples {
 public:
  void Add(double dValue) { m_adValues.push_back(dValue); }
  size_t Count() const { return m_adValues.size(); }
  // The value below which the fraction of the samples lies (0.5, 0.99).
  double Percentile(double dFraction) const;
  double P50() const { return Percentile(0.50); }
  double P99() const { return Percentile(0.99); }

 private:
  std::vector<double> m_adValues;
};

// One line: name, p50 and p99 with their unit.
void PrintRow(const std::string& sName, const Samples& rSamples, const char* pcUnit);

// How a ratio is held against its target.
enum class Bound { kAtMost, kAtLeast };

// One line: the ratio, its target and "met" or "NOT met". Returns whether met.
bool PrintRatio(const std::string& sName, double dRatio, Bound eBound, double dTarget);

// A line of information, for a ratio that has no target.
void PrintInfoRatio(const std::string& sName, double dRatio);

void PrintSection(const std::string& sTitle);

}  // namespace limits

#endif
