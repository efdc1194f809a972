// camreq run as its users run it: a separate process against the camsim
// program, its --json summary read back; and one test for each kind of bad
// input, which must end the program with one line and exit status 2.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "CamChildServer.h"
#include "CamreqProcess.h"
#include "Embedded.h"

namespace camreqtest {
namespace {

using Json = nlohmann::json;
using std::chrono::seconds;

constexpr seconds kStartLimit(20);
constexpr seconds kRunLimit(90);

// camsim on loopback, started as its own program.
class Camsim {
 public:
  bool Start(const std::vector<std::string>& asArgs, const std::string& sDir, int iDevices) {
    if (!m_process.Start(CAMSIM_PROGRAM, asArgs, sDir, "camsim")) return false;
    const std::string sLast = "camsim: device " + std::to_string(iDevices - 1) + " ";
    if (!m_process.WaitForOutput(sLast, kStartLimit)) return false;
    // The line is whole once its port and newline are there.
    return m_process.WaitForOutput(" port ", kStartLimit) && Port(iDevices - 1) != 0;
  }
  uint16_t Port(int iDevice) const { return CamsimPort(m_process.Out(), iDevice); }
  ~Camsim() {
    m_process.Signal(SIGTERM);
    m_process.WaitEnd(kStartLimit);
  }

 private:
  Process m_process;
};

struct CamreqRun {
  int iExit = -1;
  std::string sOut;
  std::string sErr;
  Json sSummary;
};

// Runs camreq to its end; the summary is read when --json names sJson.
CamreqRun RunCamreq(const camtest::TempDir& rDir, const std::vector<std::string>& asArgs,
                    const std::string& sJson = "") {
  CamreqRun sRun;
  Process sCamreq;
  EXPECT_TRUE(sCamreq.Start(CAMREQ_PROGRAM, asArgs, rDir.path(), "camreq"));
  EXPECT_TRUE(sCamreq.WaitEnd(kRunLimit)) << "camreq did not end";
  sRun.iExit = sCamreq.ExitStatus();
  sRun.sOut = sCamreq.Out();
  sRun.sErr = sCamreq.Err();
  if (!sJson.empty()) {
    const std::string sText = ReadFile(sJson);
    sRun.sSummary = Json::parse(sText, nullptr, false);
    EXPECT_FALSE(sRun.sSummary.is_discarded()) << "no JSON summary: " << sText;
  }
  return sRun;
}

std::string Camera(const std::string& sName, const std::vector<std::string>& asLines) {
  std::string sText = "[" + sName + "]\n";
  for (const std::string& s : asLines) sText += s + "\n";
  return sText;
}

// The statuses of the transitions, in order: "SETUP", "READY", "RUN"...
std::vector<std::string> Road(const Json& rRequester) {
  std::vector<std::string> asTo;
  for (const Json& t : rRequester["transitions"]) asTo.push_back(t["to"].get<std::string>());
  return asTo;
}

void ExpectRanAndStopped(const Json& rRequester) {
  SCOPED_TRACE(rRequester["label"].get<std::string>());
  EXPECT_TRUE(rRequester["reached_run"].get<bool>());
  EXPECT_EQ(rRequester["final_status"], "IDLE");
  const std::vector<std::string> asRoad = Road(rRequester);
  ASSERT_GE(asRoad.size(), 5u);
  EXPECT_EQ(asRoad[0], "SETUP");
  EXPECT_EQ(asRoad[1], "READY");
  EXPECT_EQ(asRoad[2], "RUN");
  EXPECT_EQ(asRoad[asRoad.size() - 2], "STOP");
  EXPECT_EQ(asRoad.back(), "IDLE");
  for (const Json& x : rRequester["cgi"]) {
    EXPECT_TRUE(x["ok"].get<bool>()) << x.dump();
  }
}

TEST(CamreqProgram, DrivesAnRtpAndAJpegCameraOfCamsimAndSummarisesThem) {
  camtest::TempDir sDir;
  Camsim sCamsim;
  ASSERT_TRUE(sCamsim.Start({"--listen", "127.0.0.1:0", "--model", "7", "--delivery", "uni",
                             "--listen", "127.0.0.1:0", "--model", "CAM09"},
                            sDir.path(), 2));
  sDir.write("cameras.ini",
             Camera("h264", {"class = rtp", "cmd = h264", "type = 7", "address = 127.0.0.1",
                             "http-port = " + std::to_string(sCamsim.Port(0))}) +
                 Camera("jpeg", {"cmd = jpeg", "type = CAM09", "address = 127.0.0.1",
                                 "http-port = " + std::to_string(sCamsim.Port(1))}));
  const std::string sJson = sDir.path() + "/summary.json";
  const CamreqRun sRun = RunCamreq(sDir,
                                   {"--config", sDir.path() + "/cameras.ini", "--duration", "3",
                                    "--speed", "10", "--quiet", "--json", sJson},
                                   sJson);
  ASSERT_EQ(sRun.iExit, 0) << sRun.sOut << sRun.sErr;
  const Json& rAll = sRun.sSummary["requesters"];
  ASSERT_EQ(rAll.size(), 2u);
  const Json& rRtp = rAll[0];
  ExpectRanAndStopped(rRtp);
  EXPECT_GT(rRtp["rtp"]["packets"].get<uint64_t>(), 0u);
  EXPECT_EQ(rRtp["rtp"]["payload_type"], 96);
  EXPECT_EQ(rRtp["stream_queries"]["answered_1"], 0) << "the stream was seen stalled";
  const Json& rJpeg = rAll[1];
  ExpectRanAndStopped(rJpeg);
  EXPECT_GT(rJpeg["push"]["pictures"].get<uint64_t>(), 0u);
  EXPECT_EQ(rJpeg["push"]["handovers"], 1);
  EXPECT_EQ(rJpeg["push"]["withdrawals"], 1);
  EXPECT_EQ(rJpeg["push"]["bad_parts"], 0);
  ASSERT_EQ(sRun.sSummary["uid_messages"].size(), 2u);
  for (const Json& u : sRun.sSummary["uid_messages"]) EXPECT_EQ(u["result"], 0);
  EXPECT_TRUE(sRun.sSummary["alarms"].empty());
  // The text summary says the same.
  EXPECT_NE(sRun.sOut.find("ok: reached RUN, IDLE at the end"), std::string::npos) << sRun.sOut;
}

TEST(CamreqProgram, SeesARecorderStreamStallAndTheRequesterPushItAgain) {
  camtest::TempDir sDir;
  Camsim sCamsim;
  // The first start's stream stalls after 10 frames and resumes only when
  // the start line comes again.
  ASSERT_TRUE(sCamsim.Start({"--listen", "127.0.0.1:0", "--model", "KE850", "--fault",
                             "/cgi-bin/push.cgi:when=CMD=START,rtp-stall=10,times=1"},
                            sDir.path(), 1));
  const std::string sJson = sDir.path() + "/summary.json";
  const CamreqRun sRun = RunCamreq(
      sDir, {"--class", "rtp",       "--cmd",      "h264",        "--type",
             "KE850",   "--address", "127.0.0.1",  "--http-port", std::to_string(sCamsim.Port(0)),
             "--user",  "admin",     "--password", "password",    "--duration",
             "7",       "--speed",   "10",         "--quiet",     "--json",
             sJson},
      sJson);
  ASSERT_EQ(sRun.iExit, 0) << sRun.sOut << sRun.sErr;
  const Json& rRec = sRun.sSummary["requesters"][0];
  ExpectRanAndStopped(rRec);
  // The query saw the stall (1) and later the stream again (0).
  const Json& rQueries = rRec["stream_queries"]["list"];
  size_t uStalled = rQueries.size();
  for (size_t i = 0; i < rQueries.size() && uStalled == rQueries.size(); ++i) {
    if (rQueries[i]["answer"] == 1) uStalled = i;
  }
  ASSERT_LT(uStalled, rQueries.size()) << rQueries.dump();
  bool bBack = false;
  for (size_t i = uStalled + 1; i < rQueries.size(); ++i)
    bBack = bBack || rQueries[i]["answer"] == 0;
  EXPECT_TRUE(bBack) << rQueries.dump();
  // The requester pushed the start again after the stall.
  int iStarts = 0;
  for (const Json& x : rRec["cgi"]) {
    iStarts += x["line"].get<std::string>().find("push.cgi?CMD=START") != std::string::npos;
  }
  EXPECT_GE(iStarts, 2);
  // The stall was reported once as a connection error and cleared once.
  std::vector<int> aiCodes;
  for (const Json& a : rRec["alarms"]) aiCodes.push_back(a["code"].get<int>());
  EXPECT_EQ(aiCodes, (std::vector<int>{2, 39}));
  EXPECT_GE(rRec["rtp"]["silences"].size(), 1u);
  EXPECT_GT(rRec["rtp"]["last"].get<double>(),
            rRec["rtp"]["silences"][0]["from"].get<double>() +
                rRec["rtp"]["silences"][0]["seconds"].get<double>() - 0.001);
}

TEST(CamreqProgram, JoinsTheMulticastGroupOfTheSetUpReply) {
  camtest::TempDir sDir;
  Camsim sCamsim;
  const int iPort = camreq::FreeUdpPort("127.0.0.1");
  ASSERT_NE(iPort, 0);
  const std::string sGroup = "239.255.77." + std::to_string(1 + getpid() % 250);
  ASSERT_TRUE(sCamsim.Start({"--listen", "127.0.0.1:0", "--model", "CAM24", "--delivery", "multi",
                             "--multi-addr", sGroup, "--multi-port", std::to_string(iPort)},
                            sDir.path(), 1));
  const std::string sJson = sDir.path() + "/summary.json";
  const std::string sSdp = sDir.path() + "/stream.sdp";
  const CamreqRun sRun = RunCamreq(
      sDir,
      {"--type", "CAM24", "--address", "127.0.0.1", "--http-port", std::to_string(sCamsim.Port(0)),
       "--duration", "2", "--speed", "10", "--quiet", "--json", sJson, "--sdp", sSdp},
      sJson);
  ASSERT_EQ(sRun.iExit, 0) << sRun.sOut << sRun.sErr;
  const Json& rRtp = sRun.sSummary["requesters"][0];
  ExpectRanAndStopped(rRtp);
  EXPECT_EQ(rRtp["rtp"]["group"], sGroup);
  EXPECT_EQ(rRtp["rtp"]["port"], iPort);
  EXPECT_GT(rRtp["rtp"]["packets"].get<uint64_t>(), 0u);
  // A player joins the group beside camreq, with the parameter sets seen.
  const std::string sText = ReadFile(sSdp);
  EXPECT_NE(sText.find("c=IN IP4 " + sGroup + "/1\r\n"), std::string::npos) << sText;
  EXPECT_NE(sText.find("m=video " + std::to_string(iPort) + " RTP/AVP 96\r\n"), std::string::npos);
  EXPECT_NE(sText.find("sprop-parameter-sets="), std::string::npos) << sText;
}

TEST(CamreqProgram, AudioRunsOnTheUidOfAVideoRequesterBesideIt) {
  camtest::TempDir sDir;
  Camsim sCamsim;
  ASSERT_TRUE(sCamsim.Start({"--listen", "127.0.0.1:0", "--model", "7", "--delivery", "uni"},
                            sDir.path(), 1));
  const std::string sJson = sDir.path() + "/summary.json";
  const CamreqRun sRun = RunCamreq(
      sDir,
      {"--cmd", "audio", "--address", "127.0.0.1", "--http-port", std::to_string(sCamsim.Port(0)),
       "--duration", "2", "--speed", "10", "--quiet", "--json", sJson},
      sJson);
  ASSERT_EQ(sRun.iExit, 0) << sRun.sOut << sRun.sErr;
  const Json& rAll = sRun.sSummary["requesters"];
  ASSERT_EQ(rAll.size(), 2u);
  EXPECT_EQ(rAll[0]["command"], "h264");
  EXPECT_EQ(rAll[1]["command"], "audio");
  ExpectRanAndStopped(rAll[0]);
  // Audio has no set-up: START goes to READY at once, then RUN.
  EXPECT_TRUE(rAll[1]["reached_run"].get<bool>());
  EXPECT_EQ(rAll[1]["final_status"], "IDLE");
  const int iUid = rAll[0]["uid"].get<int>();
  bool bOnVideoUid = false;
  for (const Json& x : rAll[1]["cgi"]) {
    const std::string sLine = x["line"].get<std::string>();
    if (sLine.rfind("/cgi-bin/audio?connect=start&protocol=rtp", 0) == 0) {
      bOnVideoUid = sLine.find("UID=" + std::to_string(iUid) + "&") != std::string::npos;
    }
  }
  EXPECT_TRUE(bOnVideoUid) << rAll[1]["cgi"].dump(1);
  EXPECT_GT(rAll[1]["rtp"]["packets"].get<uint64_t>(), 0u);
  EXPECT_EQ(rAll[1]["rtp"]["payload_type"], 97);
}

// Counts the requests camsim --verbose printed with a Via header (a proxy's).
int ViaLines(const std::string& sCamsimErr) {
  int iCount = 0;
  for (size_t uAt = 0; (uAt = sCamsimErr.find("camsim:   Via: ", uAt)) != std::string::npos;
       ++uAt) {
    ++iCount;
  }
  return iCount;
}

TEST(CamreqProgram, GoesThroughTheProxyUnlessTheCameraIsAnException) {
  CAMTEST_REQUIRE_PROGRAM(sTinyproxy, "tinyproxy");
  camtest::TempDir sDir;
  camtest::ChildServer sProxy;
  ASSERT_TRUE(camtest::StartTinyproxy(sProxy, sDir, sTinyproxy));
  const unsigned short usProxyPort = sProxy.port();
  Process sCamsim;
  ASSERT_TRUE(sCamsim.Start(
      CAMSIM_PROGRAM, {"--verbose", "--listen", "127.0.0.1:0", "--model", "7", "--delivery", "uni"},
      sDir.path(), "camsim"));
  ASSERT_TRUE(sCamsim.WaitForOutput(" port ", kStartLimit));
  const std::string sPort = std::to_string(CamsimPort(sCamsim.Out(), 0));
  const std::string sProxyOption = "127.0.0.1:" + std::to_string(usProxyPort);
  const std::string sJson = sDir.path() + "/summary.json";
  // The HTTP requester takes the proxy (the RTP one always goes direct).
  CamreqRun sRun =
      RunCamreq(sDir,
                {"--cmd", "jpeg", "--address", "127.0.0.1", "--http-port", sPort, "--proxy",
                 sProxyOption, "--duration", "1", "--speed", "10", "--quiet", "--json", sJson},
                sJson);
  ASSERT_EQ(sRun.iExit, 0) << sRun.sOut << sRun.sErr;
  EXPECT_GT(sRun.sSummary["requesters"][0]["push"]["pictures"].get<uint64_t>(), 0u);
  const int iThrough = ViaLines(sCamsim.Err());
  EXPECT_GE(iThrough, 4) << sCamsim.Err();  // UID, start, keep-alive, stop
  sRun = RunCamreq(sDir,
                   {"--cmd", "jpeg", "--address", "127.0.0.1", "--http-port", sPort, "--proxy",
                    sProxyOption, "--proxy-except", "10.*.*.*", "--proxy-except", "127.0.0.*",
                    "--duration", "1", "--speed", "10", "--quiet", "--json", sJson},
                   sJson);
  ASSERT_EQ(sRun.iExit, 0) << sRun.sOut << sRun.sErr;
  EXPECT_GT(sRun.sSummary["requesters"][0]["push"]["pictures"].get<uint64_t>(), 0u);
  EXPECT_EQ(ViaLines(sCamsim.Err()), iThrough) << "an exception went through the proxy";
  sCamsim.Signal(SIGTERM);
  sCamsim.WaitEnd(kStartLimit);
}

TEST(CamreqProgram, ReportsARecorderPlayBackRunningAndKeepsItAlive) {
  camtest::TempDir sDir;
  Camsim sCamsim;
  ASSERT_TRUE(sCamsim.Start({"--listen", "127.0.0.1:0", "--model", "KEL32"}, sDir.path(), 1));
  const std::string sJson = sDir.path() + "/summary.json";
  const CamreqRun sRun =
      RunCamreq(sDir,
                {"--cmd", "h264play", "--type", "KEL32", "--address", "127.0.0.1", "--http-port",
                 std::to_string(sCamsim.Port(0)), "--user", "admin", "--password", "password",
                 "--duration", "4", "--speed", "10", "--quiet", "--json", sJson},
                sJson);
  ASSERT_EQ(sRun.iExit, 0) << sRun.sOut << sRun.sErr;
  const Json& rPlay = sRun.sSummary["requesters"][0];
  ExpectRanAndStopped(rPlay);
  bool bReported = false;
  for (const Json& n : rPlay["notifications"]) {
    bReported = bReported || n["text"].get<std::string>().find("play-back run reported") == 0;
  }
  EXPECT_TRUE(bReported) << rPlay["notifications"].dump(1);
  int iKeepAlives = 0;
  bool bLoggedOut = false;
  for (const Json& x : rPlay["cgi"]) {
    iKeepAlives += x["worker"] == "SendPBKeepAliveCommandExec";
    bLoggedOut = bLoggedOut || x["line"].get<std::string>().find("/cgi-bin/logout.cgi") == 0;
  }
  EXPECT_GE(iKeepAlives, 1);  // one every 3 s at speed 10
  EXPECT_TRUE(bLoggedOut);
}

TEST(CamreqProgram, StopsCleanlyOnSigterm) {
  camtest::TempDir sDir;
  Camsim sCamsim;
  ASSERT_TRUE(sCamsim.Start({"--listen", "127.0.0.1:0", "--model", "7"}, sDir.path(), 1));
  const std::string sJson = sDir.path() + "/summary.json";
  Process sCamreq;
  ASSERT_TRUE(sCamreq.Start(
      CAMREQ_PROGRAM,
      {"--cmd", "jpeg", "--address", "127.0.0.1", "--http-port", std::to_string(sCamsim.Port(0)),
       "--duration", "0", "--speed", "10", "--json", sJson},
      sDir.path(), "camreq"));
  // The live lines come once a second; the first with RUN shows the push.
  ASSERT_TRUE(sCamreq.WaitForOutput(" RUN ", kStartLimit)) << sCamreq.Out() << sCamreq.Err();
  sCamreq.Signal(SIGTERM);
  ASSERT_TRUE(sCamreq.WaitEnd(kRunLimit));
  EXPECT_EQ(sCamreq.ExitStatus(), 0) << sCamreq.Out() << sCamreq.Err();
  const Json sSummary = Json::parse(ReadFile(sJson), nullptr, false);
  ASSERT_FALSE(sSummary.is_discarded());
  EXPECT_EQ(sSummary["camreq"]["stopped_by"], "signal");
  ExpectRanAndStopped(sSummary["requesters"][0]);
  EXPECT_EQ(sSummary["requesters"][0]["push"]["withdrawals"], 1);
}

TEST(CamreqProgram, RunsTheEmbeddedCamsimWithoutAnAddress) {
  camtest::TempDir sDir;
  const std::string sJson = sDir.path() + "/summary.json";
  const CamreqRun sRun =
      RunCamreq(sDir, {"--cmd", "jpeg", "--duration", "2", "--quiet", "--json", sJson}, sJson);
  ASSERT_EQ(sRun.iExit, 0) << sRun.sOut << sRun.sErr;
  EXPECT_TRUE(sRun.sSummary["camreq"]["embedded_camsim"].get<bool>());
  EXPECT_EQ(sRun.sSummary["camreq"]["speed"], 10);
  ExpectRanAndStopped(sRun.sSummary["requesters"][0]);
  EXPECT_GT(sRun.sSummary["requesters"][0]["push"]["pictures"].get<uint64_t>(), 0u);
}

TEST(CamreqProgram, ListsTheCameraTypes) {
  camtest::TempDir sDir;
  const CamreqRun sRun = RunCamreq(sDir, {"types"});
  ASSERT_EQ(sRun.iExit, 0);
  int iRows = 0;
  for (size_t uAt = 0; (uAt = sRun.sOut.find('\n', uAt)) != std::string::npos; ++uAt) {
    const size_t uNext = uAt + 1;
    iRows += uNext < sRun.sOut.size() && std::isdigit(static_cast<unsigned char>(sRun.sOut[uNext]));
  }
  EXPECT_EQ(iRows, 38);  // every row after the header's newline
  EXPECT_NE(sRun.sOut.find("\n0    CAM00"), std::string::npos);
  EXPECT_NE(sRun.sOut.find("\n34   KE850"), std::string::npos);
  EXPECT_NE(sRun.sOut.find("\n37   NONE"), std::string::npos);
}

// ---- bad input: one line on standard error, exit status 2 -----------------

void ExpectBadInput(const std::vector<std::string>& asArgs, const std::string& sWords) {
  camtest::TempDir sDir;
  const CamreqRun sRun = RunCamreq(sDir, asArgs);
  EXPECT_EQ(sRun.iExit, 2) << sRun.sOut << sRun.sErr;
  EXPECT_EQ(sRun.sOut, "");
  ASSERT_FALSE(sRun.sErr.empty());
  EXPECT_EQ(sRun.sErr.find('\n'), sRun.sErr.size() - 1) << "more than one line: " << sRun.sErr;
  EXPECT_EQ(sRun.sErr.rfind("camreq: ", 0), 0u) << sRun.sErr;
  EXPECT_NE(sRun.sErr.find(sWords), std::string::npos) << sRun.sErr;
}

TEST(CamreqBadInput, UnknownCameraType) {
  ExpectBadInput({"--type", "CAM99"}, "unknown camera type 'CAM99'");
  ExpectBadInput({"--type", "37"}, "unknown camera type '37'");
}

TEST(CamreqBadInput, UnknownCommandType) {
  ExpectBadInput({"--cmd", "mjpeg"}, "unknown command type 'mjpeg'");
}

TEST(CamreqBadInput, CommandOfTheOtherRequesterClass) {
  ExpectBadInput({"--class", "rtp", "--cmd", "jpeg"}, "needs the http requester class");
  ExpectBadInput({"--class", "http", "--cmd", "h264"}, "needs the rtp requester class");
}

TEST(CamreqBadInput, InvalidAddress) {
  ExpectBadInput({"--address", "300.1.2.3"}, "invalid camera address '300.1.2.3'");
  ExpectBadInput({"--address", "camera.example"}, "invalid camera address");
}

TEST(CamreqBadInput, PortOutOfRange) {
  ExpectBadInput({"--address", "127.0.0.1", "--http-port", "70000"},
                 "HTTP port 70000 is out of range");
  ExpectBadInput({"--rtp-port", "-1"}, "RTP port -1 is out of range");
  ExpectBadInput({"--http-port", "eighty"}, "HTTP port 'eighty' is not a number");
}

TEST(CamreqBadInput, UnreadableConfig) {
  ExpectBadInput({"--config", "/nonexistent/cameras.ini"},
                 "cannot read config file '/nonexistent/cameras.ini'");
}

TEST(CamreqBadInput, BadConfigLine) {
  camtest::TempDir sDir;
  sDir.write("bad.ini", "[one]\ntype = 7\n[two]\ntype = NOPE\n");
  ExpectBadInput({"--config", sDir.path() + "/bad.ini"}, "line 4: unknown camera type 'NOPE'");
}

TEST(CamreqBadInput, UnknownOption) {
  ExpectBadInput({"--frobnicate", "1"}, "unknown option '--frobnicate'");
}

TEST(CamreqBadInput, PresetTheCameraTypeRefuses) {
  // The range is the library's: camera type 13 takes presets up to 16.
  ExpectBadInput({"--type", "13", "--cmd", "jpeg", "--preset", "17", "--duration", "1"},
                 "refused preset 17");
}

}  // namespace
}  // namespace camreqtest
