// Percentiles and the lines of the report.
#include "Figures.h"

#include <algorithm>
#include <cstdio>

namespace limits {

double Micros(Clock::duration d) {
  return std::chrono::duration<double, std::micro>(d).count();
}

double Samples::Percentile(double dFraction) const {
  if (m_adValues.empty()) return 0.0;
  std::vector<double> adSorted = m_adValues;
  std::sort(adSorted.begin(), adSorted.end());
  const size_t uIndex = static_cast<size_t>(dFraction * static_cast<double>(adSorted.size() - 1));
  return adSorted[uIndex];
}

void PrintRow(const std::string& sName, const Samples& rSamples, const char* pcUnit) {
  std::printf("  %-44s p50 %10.2f %-4s p99 %10.2f %-4s (n=%zu)\n", sName.c_str(), rSamples.P50(),
              pcUnit, rSamples.P99(), pcUnit, rSamples.Count());
}

bool PrintRatio(const std::string& sName, double dRatio, Bound eBound, double dTarget) {
  const bool bMet = eBound == Bound::kAtMost ? dRatio <= dTarget : dRatio >= dTarget;
  std::printf("  %-44s %8.3f   target %s %.2f: %s\n", sName.c_str(), dRatio,
              eBound == Bound::kAtMost ? "<=" : ">=", dTarget, bMet ? "met" : "NOT met");
  return bMet;
}

void PrintInfoRatio(const std::string& sName, double dRatio) {
  std::printf("  %-44s %8.3f\n", sName.c_str(), dRatio);
}

void PrintSection(const std::string& sTitle) {
  std::printf("\n== %s\n", sTitle.c_str());
  std::fflush(stdout);
}

}  // namespace limits
