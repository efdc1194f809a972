#include "Report.h"

#include <cinttypes>

#include "CamTypeInfo.h"

namespace camreq {

namespace {

using Json = nlohmann::ordered_json;

double Rounded(double dValue, double dUnit) {
  return static_cast<double>(static_cast<long long>(dValue / dUnit + 0.5)) * dUnit;
}

std::string Bytes(uint64_t ulBytes) {
  char acText[32];
  if (ulBytes < 10000) {
    std::snprintf(acText, sizeof(acText), "%" PRIu64 " B", ulBytes);
  } else if (ulBytes < 10000000) {
    std::snprintf(acText, sizeof(acText), "%.1f kB", static_cast<double>(ulBytes) / 1000.0);
  } else {
    std::snprintf(acText, sizeof(acText), "%.1f MB", static_cast<double>(ulBytes) / 1e6);
  }
  return acText;
}

bool ReachedRun(const RequesterLog& rLog) {
  for (const Transition& r : rLog.asTransitions) {
    if (r.iTo == 4) return true;
  }
  return false;
}

bool ReachedReady(const RequesterLog& rLog) {
  for (const Transition& r : rLog.asTransitions) {
    if (r.iTo == 3) return true;
  }
  return false;
}

// What arrived: RTP packets, pictures or audio bytes.
uint64_t Arrived(const Unit& rUnit) {
  if (rUnit.pNotify->IsRtp()) return rUnit.pNotify->Rtp().ulPackets;
  const PushStats sPush = rUnit.pNotify->Push();
  return rUnit.sSpec.iCmdType == CAM_REQUESTER_CMD_JPEG_HTTP ? sPush.ulPictures : sPush.ulBytes;
}

int StatusNow(const Unit& rUnit) {
  return rUnit.pReq != nullptr ? rUnit.pReq->iConnectStatus.load() : rUnit.iFinalStatus;
}

Json AlarmJson(const AlarmReport& r) {
  const char* pcWords = r.iCode == CAM_ALARM_VIDEO_ERROR_ON    ? "video connection error on"
                        : r.iCode == CAM_ALARM_AUDIO_ERROR_ON  ? "audio connection error on"
                        : r.iCode == CAM_ALARM_VIDEO_ERROR_OFF ? "video connection error off"
                        : r.iCode == CAM_ALARM_AUDIO_ERROR_OFF ? "audio connection error off"
                                                               : "other";
  return Json{{"time", Rounded(r.dTime, 0.001)},
              {"code", r.iCode},
              {"meaning", pcWords},
              {"camera", r.iCamera},
              {"address", r.sAddress},
              {"position", r.iPosition}};
}

Json UidJson(const UidMessage& r) {
  return Json{{"time", Rounded(r.dTime, 0.001)},
              {"position", r.iPosition},
              {"camera_no", r.iCamNo},
              {"result", r.iResult},
              {"meaning", r.iResult == 0 ? "UID obtained" : "UID not obtained"}};
}

Json RtpJson(const RtpStats& r) {
  Json sGaps = Json::array();
  for (const auto& rGap : r.asGaps) {
    sGaps.push_back(
        {{"from", Rounded(rGap.first, 0.001)}, {"seconds", Rounded(rGap.second, 0.001)}});
  }
  return Json{{"packets", r.ulPackets},
              {"bytes", r.ulBytes},
              {"lost", r.ulLost},
              {"frames", r.ulFrames},
              {"not_rtp", r.ulOther},
              {"payload_type", r.iPayloadType},
              {"ssrc", r.ulSsrc},
              {"group", r.sGroup},
              {"port", r.iPort},
              {"first", Rounded(r.dFirst, 0.001)},
              {"last", Rounded(r.dLast, 0.001)},
              {"silences", sGaps},
              {"h264_parameter_sets", !r.sSps.empty() && !r.sPps.empty()},
              {"error", r.sError}};
}

Json PushJson(const PushStats& r, bool bJpeg) {
  return Json{{"media", bJpeg ? "jpeg" : "audio"},
              {"pictures", r.ulPictures},
              {"bad_parts", r.ulBadParts},
              {"bytes", r.ulBytes},
              {"saved", r.ulSaved},
              {"handovers", r.iHandOvers},
              {"withdrawals", r.iWithdrawals},
              {"ends", r.iEnds},
              {"held_at_end", r.bHeld},
              {"first", Rounded(r.dFirst, 0.001)},
              {"last", Rounded(r.dLast, 0.001)},
              {"save_error", r.sSaveError}};
}

}  // namespace

bool UnitSucceeded(const Unit& rUnit, const RequesterLog& rLog) {
  const bool bRan = rUnit.sSpec.PlayBack() ? ReachedReady(rLog) : ReachedRun(rLog);
  return bRan && rUnit.iFinalStatus == 0;
}

std::string StatusLine(const Unit& rUnit, const RequesterLog& rLog, double dRate) {
  char acHead[160];
  const int iStatus = StatusNow(rUnit);
  std::snprintf(
      acHead, sizeof(acHead), "[%d] %-4s %-8s %-6s %s:%d  %-5s uid %-3d cgi %d (ka %d, failed %d)",
      rUnit.iPosition, rUnit.sSpec.ClassWord(), rUnit.sSpec.sCommand.c_str(),
      CamTypeName(rUnit.sSpec.iCamType).c_str(), rUnit.sAddress.c_str(), rUnit.iHttpPort,
      StatusName(iStatus), rUnit.pNotify->Uid(), rLog.iExchanges, rLog.iKeepAlives, rLog.iFailures);
  std::string sLine = acHead;
  char acMedia[160];
  if (rUnit.pNotify->IsRtp()) {
    const RtpStats s = rUnit.pNotify->Rtp();
    std::snprintf(acMedia, sizeof(acMedia), "  rtp %" PRIu64 " pkts %s", s.ulPackets,
                  Bytes(s.ulBytes).c_str());
    sLine += acMedia;
    if (dRate >= 0) {
      std::snprintf(acMedia, sizeof(acMedia), " %.1f pkt/s", dRate);
      sLine += acMedia;
    }
  } else {
    const PushStats s = rUnit.pNotify->Push();
    if (rUnit.sSpec.iCmdType == CAM_REQUESTER_CMD_JPEG_HTTP) {
      std::snprintf(acMedia, sizeof(acMedia), "  jpeg %" PRIu64 " pics %s", s.ulPictures,
                    Bytes(s.ulBytes).c_str());
      sLine += acMedia;
      if (dRate >= 0) {
        std::snprintf(acMedia, sizeof(acMedia), " %.1f pic/s", dRate);
        sLine += acMedia;
      }
    } else {
      std::snprintf(acMedia, sizeof(acMedia), "  audio %s", Bytes(s.ulBytes).c_str());
      sLine += acMedia;
      if (dRate >= 0) {
        std::snprintf(acMedia, sizeof(acMedia), " %.0f B/s", dRate);
        sLine += acMedia;
      }
    }
  }
  // What the stream-state query would answer now.
  if (iStatus == CAM_HTTP_STS_RUN && rUnit.pNotify->StreamStateNow() != 0) sLine += "  (silent)";
  return sLine;
}

void LiveDisplay::Show(const Units& rUnits, const LogWatch& rLog, double dNow) {
  std::string sBlock;
  if (m_bRedraw && m_iLinesShown > 0) {
    sBlock += "\033[" + std::to_string(m_iLinesShown) + "A";
  }
  if (!m_bRedraw) {
    char acTime[32];
    std::snprintf(acTime, sizeof(acTime), "t=%.1fs\n", dNow);
    sBlock += acTime;
  }
  for (const auto& pUnit : rUnits) {
    Last& rLast = m_last[pUnit->iPosition];
    const uint64_t ulCount = Arrived(*pUnit);
    double dRate = -1;
    if (rLast.dTime >= 0 && dNow > rLast.dTime) {
      dRate = static_cast<double>(ulCount - rLast.ulCount) / (dNow - rLast.dTime);
    }
    rLast = {dNow, ulCount};
    if (m_bRedraw) sBlock += "\033[2K";
    sBlock += StatusLine(*pUnit, rLog.Snapshot(pUnit->iPosition), dRate) + "\n";
  }
  m_iLinesShown = static_cast<int>(rUnits.size());
  std::fputs(sBlock.c_str(), m_pOut);
  std::fflush(m_pOut);
}

nlohmann::ordered_json SummaryJson(const Units& rUnits, const LogWatch& rLog, const Events& rEvents,
                                   const RunInfo& rRun) {
  const std::vector<AlarmReport> asAlarms = rEvents.Alarms();
  const std::vector<UidMessage> asUids = rEvents.UidMessages();
  Json sOut;
  sOut["camreq"] = {{"ran_seconds", Rounded(rRun.dRan, 0.001)},
                    {"stopped_by", rRun.sStoppedBy},
                    {"speed", rRun.iSpeed},
                    {"embedded_camsim", rRun.bEmbedded}};
  Json sRequesters = Json::array();
  for (const auto& pUnit : rUnits) {
    const Unit& r = *pUnit;
    const RequesterLog sLog = rLog.Snapshot(r.iPosition);
    Json sTransitions = Json::array();
    for (const Transition& t : sLog.asTransitions) {
      sTransitions.push_back({{"time", Rounded(t.dTime, 0.001)},
                              {"event", EventName(t.iEvent)},
                              {"from", StatusName(t.iFrom)},
                              {"to", StatusName(t.iTo)}});
    }
    Json sCgi = Json::array();
    for (const CgiExchange& x : sLog.asCgi) {
      sCgi.push_back({{"time", Rounded(x.dTime, 0.001)},
                      {"worker", x.sWorker},
                      {"line", x.sLine},
                      {"result", x.bDone ? x.sResult : "no end seen"},
                      {"ok", x.bDone && x.bOk},
                      {"latency_ms", Rounded(x.dLatencyMs, 0.001)}});
    }
    Json sNotices = Json::array();
    for (const Notice& n : r.pNotify->Notices()) {
      sNotices.push_back({{"time", Rounded(n.dTime, 0.001)}, {"text", n.sText}});
    }
    Json sQueries = Json::array();
    int aiAnswers[2] = {0, 0};
    for (const StateQuery& q : r.pNotify->Queries()) {
      sQueries.push_back({{"time", Rounded(q.dTime, 0.001)}, {"answer", q.iAnswer}});
      if (q.iAnswer == 0 || q.iAnswer == 1) ++aiAnswers[q.iAnswer];
    }
    Json sAlarms = Json::array();
    for (const AlarmReport& a : asAlarms) {
      if (a.iPosition == r.iPosition) sAlarms.push_back(AlarmJson(a));
    }
    Json sUids = Json::array();
    for (const UidMessage& u : asUids) {
      if (u.iPosition == r.iPosition) sUids.push_back(UidJson(u));
    }
    Json sOne = {{"position", r.iPosition},
                 {"label", r.sSpec.sLabel},
                 {"class", r.sSpec.ClassWord()},
                 {"command", r.sSpec.sCommand},
                 {"cmd_type", r.sSpec.iCmdType},
                 {"camera_type", r.sSpec.iCamType},
                 {"type_name", CamTypeName(r.sSpec.iCamType)},
                 {"address", r.sAddress},
                 {"http_port", r.iHttpPort},
                 {"embedded", r.pDevice != nullptr},
                 {"reached_run", ReachedRun(sLog)},
                 {"final_status", StatusName(r.iFinalStatus)},
                 {"succeeded", UnitSucceeded(r, sLog)},
                 {"uid", r.pNotify->Uid()},
                 {"exchanges", sLog.iExchanges},
                 {"keepalives", sLog.iKeepAlives},
                 {"failed_exchanges", sLog.iFailures},
                 {"transitions", sTransitions},
                 {"cgi", sCgi}};
    sOne["rtp"] = r.pNotify->IsRtp() ? RtpJson(r.pNotify->Rtp()) : Json();
    sOne["push"] = r.pNotify->IsRtp() ? Json()
                                      : PushJson(r.pNotify->Push(),
                                                 r.sSpec.iCmdType == CAM_REQUESTER_CMD_JPEG_HTTP);
    sOne["stream_queries"] = {{"count", sQueries.size()},
                              {"answered_0", aiAnswers[0]},
                              {"answered_1", aiAnswers[1]},
                              {"list", sQueries}};
    sOne["notifications"] = sNotices;
    sOne["alarms"] = sAlarms;
    sOne["uid_messages"] = sUids;
    if (!r.sSdpPath.empty()) sOne["sdp"] = r.sSdpPath;
    sRequesters.push_back(sOne);
  }
  sOut["requesters"] = sRequesters;
  Json sAllAlarms = Json::array();
  for (const AlarmReport& a : asAlarms) sAllAlarms.push_back(AlarmJson(a));
  Json sAllUids = Json::array();
  for (const UidMessage& u : asUids) sAllUids.push_back(UidJson(u));
  sOut["alarms"] = sAllAlarms;
  sOut["uid_messages"] = sAllUids;
  sOut["exit_status"] = rRun.iExitStatus;
  return sOut;
}

std::string SummaryText(const nlohmann::ordered_json& rSummary) {
  std::string sOut;
  char acLine[512];
  const Json& rRun = rSummary["camreq"];
  std::snprintf(acLine, sizeof(acLine), "\n== camreq summary: ran %.1f s, stopped by %s ==\n",
                rRun["ran_seconds"].get<double>(), rRun["stopped_by"].get<std::string>().c_str());
  sOut += acLine;
  for (const Json& r : rSummary["requesters"]) {
    std::snprintf(acLine, sizeof(acLine), "\n[%d] %s %s, camera type %d %s at %s port %d%s\n",
                  r["position"].get<int>(), r["class"].get<std::string>().c_str(),
                  r["command"].get<std::string>().c_str(), r["camera_type"].get<int>(),
                  r["type_name"].get<std::string>().c_str(),
                  r["address"].get<std::string>().c_str(), r["http_port"].get<int>(),
                  r["embedded"].get<bool>() ? " (embedded camsim)" : "");
    sOut += acLine;
    std::snprintf(acLine, sizeof(acLine),
                  "  %s: %s RUN, %s at the end; %d CGI lines (%d keep-alives, %d failed)\n",
                  r["succeeded"].get<bool>() ? "ok" : "NOT OK",
                  r["reached_run"].get<bool>() ? "reached" : "never reached",
                  r["final_status"].get<std::string>().c_str(), r["exchanges"].get<int>(),
                  r["keepalives"].get<int>(), r["failed_exchanges"].get<int>());
    sOut += acLine;
    sOut += "  status transitions:\n";
    for (const Json& t : r["transitions"]) {
      std::snprintf(acLine, sizeof(acLine), "    %8.3f s  %-5s -> %-5s  (%s)\n",
                    t["time"].get<double>(), t["from"].get<std::string>().c_str(),
                    t["to"].get<std::string>().c_str(), t["event"].get<std::string>().c_str());
      sOut += acLine;
    }
    sOut += "  CGI lines:\n";
    for (const Json& x : r["cgi"]) {
      std::snprintf(acLine, sizeof(acLine), "    %8.3f s  %-27s %-14s %9.3f ms  %s\n",
                    x["time"].get<double>(), x["worker"].get<std::string>().c_str(),
                    x["result"].get<std::string>().c_str(), x["latency_ms"].get<double>(),
                    x["line"].get<std::string>().empty() ? "(not sent)"
                                                         : x["line"].get<std::string>().c_str());
      sOut += acLine;
    }
    if (!r["rtp"].is_null()) {
      const Json& m = r["rtp"];
      std::snprintf(acLine, sizeof(acLine),
                    "  RTP: %" PRIu64 " packets, %" PRIu64 " bytes, %" PRIu64 " lost, %" PRIu64
                    " frames, payload type %d, %s port %d\n",
                    m["packets"].get<uint64_t>(), m["bytes"].get<uint64_t>(),
                    m["lost"].get<uint64_t>(), m["frames"].get<uint64_t>(),
                    m["payload_type"].get<int>(),
                    m["group"].get<std::string>().empty()
                        ? "unicast"
                        : ("group " + m["group"].get<std::string>()).c_str(),
                    m["port"].get<int>());
      sOut += acLine;
      for (const Json& g : m["silences"]) {
        std::snprintf(acLine, sizeof(acLine), "    silence of %.1f s from %.3f s\n",
                      g["seconds"].get<double>(), g["from"].get<double>());
        sOut += acLine;
      }
      if (!m["error"].get<std::string>().empty()) {
        sOut += "    cannot listen: " + m["error"].get<std::string>() + "\n";
      }
    }
    if (!r["push"].is_null()) {
      const Json& m = r["push"];
      std::snprintf(acLine, sizeof(acLine),
                    "  push: %" PRIu64 " pictures, %" PRIu64
                    " bytes, %d hand-overs, %d withdrawals, %d ended\n",
                    m["pictures"].get<uint64_t>(), m["bytes"].get<uint64_t>(),
                    m["handovers"].get<int>(), m["withdrawals"].get<int>(), m["ends"].get<int>());
      sOut += acLine;
    }
    const Json& q = r["stream_queries"];
    std::snprintf(acLine, sizeof(acLine), "  stream-state queries: %d (answered 0: %d, 1: %d)",
                  static_cast<int>(q["count"].get<size_t>()), q["answered_0"].get<int>(),
                  q["answered_1"].get<int>());
    sOut += acLine;
    // The answers in order, as long as they fit a line or two.
    constexpr size_t kMostListed = 12;
    const char* pcSeparator = ": ";
    for (size_t i = 0; i < q["list"].size() && i < kMostListed; ++i) {
      std::snprintf(acLine, sizeof(acLine), "%s%.1f s -> %d", pcSeparator,
                    q["list"][i]["time"].get<double>(), q["list"][i]["answer"].get<int>());
      sOut += acLine;
      pcSeparator = ", ";
    }
    sOut += q["list"].size() > kMostListed ? ", ...\n" : "\n";
    sOut += "  notifications:\n";
    for (const Json& n : r["notifications"]) {
      std::snprintf(acLine, sizeof(acLine), "    %8.3f s  %s\n", n["time"].get<double>(),
                    n["text"].get<std::string>().c_str());
      sOut += acLine;
    }
  }
  sOut += "\nalarms:\n";
  if (rSummary["alarms"].empty()) sOut += "    none\n";
  for (const Json& a : rSummary["alarms"]) {
    std::snprintf(acLine, sizeof(acLine), "    %8.3f s  position %d: code %d, %s (camera %d, %s)\n",
                  a["time"].get<double>(), a["position"].get<int>(), a["code"].get<int>(),
                  a["meaning"].get<std::string>().c_str(), a["camera"].get<int>(),
                  a["address"].get<std::string>().c_str());
    sOut += acLine;
  }
  sOut += "UID messages:\n";
  if (rSummary["uid_messages"].empty()) sOut += "    none\n";
  for (const Json& u : rSummary["uid_messages"]) {
    std::snprintf(acLine, sizeof(acLine), "    %8.3f s  position %d, camera %d: %s\n",
                  u["time"].get<double>(), u["position"].get<int>(), u["camera_no"].get<int>(),
                  u["meaning"].get<std::string>().c_str());
    sOut += acLine;
  }
  return sOut;
}

}  // namespace camreq
