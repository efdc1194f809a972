// What camreq shows: one live status line per requester while they run,
// and at the end the summary, as text and as JSON.
#ifndef CAMREQ_REPORT_H
#define CAMREQ_REPORT_H

#include <cstdio>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Events.h"
#include "LogWatch.h"
#include "Unit.h"

namespace camreq {

using Units = std::vector<std::unique_ptr<Unit>>;

struct RunInfo {
  double dRan = 0;         // seconds from the starts to the stop
  std::string sStoppedBy;  // "duration", "signal"
  int iSpeed = 1;
  bool bEmbedded = false;
  int iExitStatus = 0;
};

// One line per requester: status, UID, exchanges, keep-alives, what
// arrived and its rate over the last display period.
class LiveDisplay {
 public:
  // bRedraw: rewrite the lines in place (a terminal), else print a block.
  LiveDisplay(std::FILE* pOut, bool bRedraw) : m_pOut(pOut), m_bRedraw(bRedraw) {}
  void Show(const Units& rUnits, const LogWatch& rLog, double dNow);

 private:
  struct Last {
    double dTime = -1;
    uint64_t ulCount = 0;
  };
  std::FILE* m_pOut;
  bool m_bRedraw;
  int m_iLinesShown = 0;
  std::map<int, Last> m_last;
};

// The status line of one requester (without the rate when dRate < 0).
std::string StatusLine(const Unit& rUnit, const RequesterLog& rLog, double dRate);

nlohmann::ordered_json SummaryJson(const Units& rUnits, const LogWatch& rLog, const Events& rEvents,
                                   const RunInfo& rRun);
std::string SummaryText(const nlohmann::ordered_json& rSummary);

// Whether a requester did what a run asks: reached RUN (a play-back: READY)
// and was back at IDLE after the stop.
bool UnitSucceeded(const Unit& rUnit, const RequesterLog& rLog);

}  // namespace camreq

#endif
