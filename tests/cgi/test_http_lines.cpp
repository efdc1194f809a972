// Every line of the HTTP requester for every camera type 0..37, every
// command type, start and stop, against lines written by hand from the
// tables of the HTTP requester.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CamTestSupport.h"
#include "CgiTestSupport.h"

namespace {

using cgitest::ClockOverride;
using cgitest::FixedClock;
using cgitest::LineTest;
using cgitest::Unknown;

struct HttpRow {
  int type;
  const char* media[4];   // HTTP media path cells for iCmdType 0..3
  const char* session;    // "getuid", "quillon", "start.cgi" or "-"
  const char* keepAlive;  // "keep_alive", "quillon", "short", "status.cgi" or "-"
  const char* jpeg;       // "camera", "quillon", "recorder" or "-"
  const char* audio;      // "camera", "recorder" or "-"
  bool release;           // Quillon UID release
  const char* preset;     // "lower", "upper" or "-"
};

#define JA \
  { "jpeg", "audio", "error", "" }
#define JO \
  { "jpeg", "", "error", "" }
#define QP \
  { "push", "", "error", "" }
#define NM \
  { "", "", "error", "" }
#define RC \
  { "push.cgi", "push.cgi", "error", "" }
#define ER \
  { "error", "error", "error", "" }

// clang-format off
const HttpRow kRows[38] = {
    {0,  JA, "getuid",    "keep_alive", "camera",   "camera",   false, "-"},
    {1,  JA, "getuid",    "keep_alive", "camera",   "camera",   false, "-"},
    {2,  JA, "getuid",    "keep_alive", "camera",   "camera",   false, "-"},
    {3,  JA, "getuid",    "keep_alive", "camera",   "camera",   false, "-"},
    {4,  JA, "getuid",    "keep_alive", "camera",   "camera",   false, "-"},
    {5,  JA, "getuid",    "keep_alive", "camera",   "camera",   false, "-"},
    {6,  QP, "quillon",   "quillon",    "quillon",  "-",        true,  "-"},
    {7,  JA, "getuid",    "keep_alive", "camera",   "camera",   false, "-"},
    {8,  JA, "-",         "-",          "-",        "-",        false, "-"},
    {9,  JA, "getuid",    "keep_alive", "camera",   "camera",   false, "-"},
    {10, JA, "getuid",    "keep_alive", "camera",   "camera",   false, "-"},
    {11, JA, "getuid",    "keep_alive", "camera",   "camera",   false, "lower"},
    {12, JA, "getuid",    "keep_alive", "camera",   "camera",   false, "lower"},
    {13, QP, "quillon",   "quillon",    "quillon",  "-",        true,  "upper"},
    {14, JA, "getuid",    "keep_alive", "camera",   "camera",   false, "lower"},
    {15, JA, "getuid",    "keep_alive", "camera",   "camera",   false, "lower"},
    {16, JA, "getuid",    "keep_alive", "camera",   "camera",   false, "lower"},
    {17, JA, "getuid",    "keep_alive", "camera",   "camera",   false, "lower"},
    {18, JA, "getuid",    "keep_alive", "camera",   "camera",   false, "lower"},
    {19, NM, "-",         "-",          "-",        "-",        false, "-"},
    {20, QP, "quillon",   "quillon",    "quillon",  "-",        true,  "-"},
    {21, JO, "getuid",    "short",      "camera",   "-",        false, "-"},
    {22, JA, "getuid",    "keep_alive", "camera",   "camera",   false, "lower"},
    {23, NM, "-",         "-",          "-",        "-",        false, "-"},
    {24, JA, "getuid",    "keep_alive", "camera",   "camera",   false, "-"},
    {25, JA, "getuid",    "keep_alive", "camera",   "camera",   false, "lower"},
    {26, JA, "getuid",    "keep_alive", "camera",   "camera",   false, "-"},
    {27, JA, "getuid",    "keep_alive", "camera",   "camera",   false, "-"},
    {28, JA, "getuid",    "keep_alive", "camera",   "camera",   false, "lower"},
    {29, NM, "-",         "-",          "-",        "-",        false, "-"},
    {30, JA, "getuid",    "keep_alive", "camera",   "camera",   false, "lower"},
    {31, RC, "start.cgi", "status.cgi", "recorder", "-",        false, "-"},
    {32, RC, "start.cgi", "status.cgi", "recorder", "-",        false, "-"},
    {33, RC, "start.cgi", "status.cgi", "recorder", "-",        false, "-"},
    {34, RC, "start.cgi", "status.cgi", "recorder", "recorder", false, "-"},
    {35, RC, "start.cgi", "status.cgi", "recorder", "recorder", false, "-"},
    {36, RC, "start.cgi", "status.cgi", "recorder", "recorder", false, "-"},
    {37, ER, "-",         "-",          "-",        "-",        false, "-"},
};
// clang-format on

// Settings of every table line: channel 3, UID 42, frame-rate index 3,
// resolution index 2, preset 7, aEnable=in (100), UID to release 9, clock 777.
void Configure(CCamRequester_Cgi_Kobu_Http& r, int type, int cmd) {
  r.usCameraType = static_cast<uint16_t>(type);
  r.iCmdType = cmd;
  r.usSelectChNo = 3;
  r.iUid = 42;
  r.usFrate = 3;
  r.usResolution = 2;
  r.usPresetNo = 7;
  r.iAudioEnable = 100;
  r.uid_logout = 9;
}

class HttpLines : public LineTest<CCamRequester_Cgi_Kobu_Http> {};

std::string Where(int type, int cmd, int start = -1) {
  std::string s = "type " + std::to_string(type) + " cmd " + std::to_string(cmd);
  if (start >= 0) s += " start " + std::to_string(start);
  return s;
}

TEST_F(HttpLines, SessionCommandForEveryTypeAndCommandType) {
  for (const HttpRow& row : kRows) {
    for (int cmd = 0; cmd <= 3; ++cmd) {
      Configure(r_, row.type, cmd);
      auto build = [&] { return r_.CmdSet_SessionCmmand(dst_); };
      const std::string form = row.session;
      if (form == "getuid") {
        ExpectLine(build, std::string("/cgi-bin/getuid?FILE=2&vcodec=") + row.media[cmd] + "&ch=3",
                   Where(row.type, cmd));
      } else if (form == "quillon") {
        ExpectLine(build, "/cgi-bin/getuid?FILE=uid.html&PAGE=777", Where(row.type, cmd));
      } else if (form == "start.cgi") {
        ExpectLine(build, "/cgi-bin/start.cgi?UID=-1", Where(row.type, cmd));
      } else {
        ExpectRefusal(build, Unknown("CmdSet_SessionCmmand", row.type), Where(row.type, cmd));
      }
    }
  }
}

TEST_F(HttpLines, KeepAliveForEveryTypeAndCommandType) {
  for (const HttpRow& row : kRows) {
    for (int cmd = 0; cmd <= 3; ++cmd) {
      Configure(r_, row.type, cmd);
      auto build = [&] { return r_.CmdSet_KeepAlive(dst_); };
      const std::string form = row.keepAlive;
      const std::string mode = row.media[cmd];
      if (form == "keep_alive") {
        ExpectLine(build,
                   "/cgi-bin/keep_alive?mode=" + mode + "&protocol=http&ch=3&UID=42&page=777",
                   Where(row.type, cmd));
      } else if (form == "quillon") {
        ExpectLine(build, "/cgi-bin/uidutil?UID=42&UTIL=KEEPALIVE", Where(row.type, cmd));
      } else if (form == "short" && cmd == 1) {
        ExpectRefusal(build, "CmdSet_KeepAlive [ERROR] QV262 unsupport keepalive [audio] \n",
                      Where(row.type, cmd));
      } else if (form == "short") {
        ExpectLine(build, "/cgi-bin/keep_alive?mode=" + mode + "&protocol=http&UID=42&page=777",
                   Where(row.type, cmd));
      } else if (form == "status.cgi") {
        ExpectLine(build, "/cgi-bin/status.cgi?UID=42&HTML=as_status.html", Where(row.type, cmd));
      } else {
        ExpectRefusal(build, Unknown("CmdSet_KeepAlive", row.type), Where(row.type, cmd));
      }
    }
  }
}

TEST_F(HttpLines, JpegDistributeForEveryTypeCommandTypeStartAndStop) {
  for (const HttpRow& row : kRows) {
    for (int cmd = 0; cmd <= 3; ++cmd) {
      for (int start = 0; start <= 1; ++start) {
        Configure(r_, row.type, cmd);
        auto build = [&] { return r_.CmdSet_JpegDistribute(dst_, start); };
        const std::string form = row.jpeg;
        const std::string path = std::string("/cgi-bin/") + row.media[cmd];
        const std::string where = Where(row.type, cmd, start);
        if (form == "camera") {
          ExpectLine(build,
                     path + (start ? "?connect=start" : "?connect=stop") +
                         "&framerate=0.33&resolution=640&ch=3&UID=42",
                     where);
        } else if (form == "quillon") {
          ExpectLine(build,
                     path + (start ? "?MODE=START" : "?MODE=STOP") + "&FRAMERATE=1&UID=42&PAGE=777",
                     where);
        } else if (form == "recorder") {
          ExpectLine(build, path + (start ? "?CMD=START" : "?CMD=STOP") + "&CAM=3&UID=42&COMP=JPEG",
                     where);
        } else {
          ExpectRefusal(build, Unknown("CmdSet_JpegDistribute", row.type), where);
        }
      }
    }
  }
}

TEST_F(HttpLines, AudioDistributeForEveryTypeCommandTypeStartAndStop) {
  for (const HttpRow& row : kRows) {
    for (int cmd = 0; cmd <= 3; ++cmd) {
      for (int start = 0; start <= 1; ++start) {
        Configure(r_, row.type, cmd);
        auto build = [&] { return r_.CmdSet_AudioDistribute(dst_, start); };
        const std::string form = row.audio;
        const std::string path = std::string("/cgi-bin/") + row.media[cmd];
        const std::string where = Where(row.type, cmd, start);
        print_.Clear();
        if (form == "camera") {
          ExpectLine(build,
                     path + (start ? "?connect=start" : "?connect=stop") +
                         "&protocol=http&ch=3&mode=in&UID=42&page=777",
                     where);
        } else if (form == "recorder") {
          ExpectLine(build,
                     path + (start ? "?CMD=START" : "?CMD=STOP") + "&CAM=3&UID=42&COMP=AUDIO",
                     where);
        } else {
          ExpectRefusal(build, Unknown("CmdSet_AudioDistribute", row.type), where);
        }
        EXPECT_EQ(print_.Count("CmdSet_AudioDistribute [DEBUG] Camera Type = " +
                               std::to_string(row.type) + " \n"),
                  1)
            << where;
      }
    }
  }
}

TEST_F(HttpLines, PresetForEveryType) {
  for (const HttpRow& row : kRows) {
    Configure(r_, row.type, 0);
    auto build = [&] { return r_.CmdSet_CamPreset(dst_); };
    const std::string form = row.preset;
    const std::string where = Where(row.type, 0);
    if (form == "lower") {
      ExpectLine(build, "/cgi-bin/camctrl?preset=7&ch=3", where);
    } else if (form == "upper") {
      ExpectLine(build, "/cgi-bin/camctrl?PRESET=7", where);
    } else {
      ExpectRefusal(build, Unknown("CmdSet_CamPreset", row.type), where);
    }
    r_.usPresetNo = 0;
    print_.Clear();
    memset(dst_, 'x', sizeof(dst_));
    EXPECT_EQ(r_.CmdSet_CamPreset(dst_), 1) << where;
    EXPECT_STREQ(dst_, "") << where;
    EXPECT_TRUE(print_.Lines().empty()) << where;
  }
}

TEST_F(HttpLines, QuillonUidReleaseForEveryType) {
  for (const HttpRow& row : kRows) {
    Configure(r_, row.type, 0);
    auto build = [&] { return r_.CmdSet_QuillonUidUtilRelease(dst_); };
    if (row.release) {
      ExpectLine(build, "/cgi-bin/uidutil?UID=9&UTIL=RELEASE", Where(row.type, 0));
    } else {
      ExpectRefusal(
          build,
          "CmdSet_QuillonUidUtilRelease [ERROR] usCameraType = " + std::to_string(row.type) + "\n",
          Where(row.type, 0));
    }
  }
}

TEST_F(HttpLines, StartStopAboveOneIsRefusedBeforeTheCameraType) {
  for (int type : {0, 8, 13, 34, 37}) {
    Configure(r_, type, 0);
    ExpectRefusal([&] { return r_.CmdSet_JpegDistribute(dst_, 2); },
                  "CmdSet_JpegDistribute [ERROR] Param Error iStartStop [2]\n", Where(type, 0));
    ExpectRefusal([&] { return r_.CmdSet_AudioDistribute(dst_, 5); },
                  "CmdSet_AudioDistribute [ERROR] Param Error iStartStop [5]\n", Where(type, 0));
  }
}

// ---- the edge cases of the description -------------------------------------

TEST_F(HttpLines, CameraSevenJpegStartWithRateAndResolution) {
  Configure(r_, 7, 0);
  r_.usSelectChNo = 0;
  r_.iUid = 5;
  ExpectLine([&] { return r_.CmdSet_JpegDistribute(dst_, 1); },
             "/cgi-bin/jpeg?connect=start&framerate=0.33&resolution=640&UID=5", "");
}

TEST_F(HttpLines, EveryCameraFrameRateAndResolution) {
  const char* const rates[12] = {"",  "0.1", "0.2", "0.33", "0.5", "1",
                                 "2", "3",   "5",   "10",   "15",  "30"};
  const char* const resolutions[5] = {"", "320", "640", "768", "1280"};
  Configure(r_, 0, 0);
  r_.usSelectChNo = 0;
  r_.usResolution = 0;
  for (int i = 0; i < 12; ++i) {
    r_.usFrate = static_cast<uint16_t>(i);
    const std::string rate = i == 0 ? "" : std::string("&framerate=") + rates[i];
    ExpectLine([&] { return r_.CmdSet_JpegDistribute(dst_, 1); },
               "/cgi-bin/jpeg?connect=start" + rate + "&UID=42", std::to_string(i));
  }
  r_.usFrate = 0;
  for (int i = 0; i < 5; ++i) {
    r_.usResolution = static_cast<uint16_t>(i);
    const std::string res = i == 0 ? "" : std::string("&resolution=") + resolutions[i];
    ExpectLine([&] { return r_.CmdSet_JpegDistribute(dst_, 0); },
               "/cgi-bin/jpeg?connect=stop" + res + "&UID=42", std::to_string(i));
  }
}

TEST_F(HttpLines, QuillonFrameRatesRoundUpToOne) {
  const char* const rates[12] = {"", "1", "1", "1", "1", "1", "2", "3", "5", "10", "15", "30"};
  Configure(r_, 13, 0);
  r_.usResolution = 4;  // never sent to these cameras
  for (int i = 0; i < 12; ++i) {
    r_.usFrate = static_cast<uint16_t>(i);
    const std::string rate = i == 0 ? "" : std::string("&FRAMERATE=") + rates[i];
    ExpectLine([&] { return r_.CmdSet_JpegDistribute(dst_, 0); },
               "/cgi-bin/push?MODE=STOP" + rate + "&UID=42&PAGE=777", std::to_string(i));
  }
}

TEST_F(HttpLines, CameraEightHasTableEntriesButEveryStreamBuilderRefusesIt) {
  Configure(r_, 8, 0);
  ExpectRefusal([&] { return r_.CmdSet_SessionCmmand(dst_); }, Unknown("CmdSet_SessionCmmand", 8),
                "");
  ExpectRefusal([&] { return r_.CmdSet_KeepAlive(dst_); }, Unknown("CmdSet_KeepAlive", 8), "");
  ExpectRefusal([&] { return r_.CmdSet_JpegDistribute(dst_, 1); },
                Unknown("CmdSet_JpegDistribute", 8), "");
  ExpectRefusal([&] { return r_.CmdSet_AudioDistribute(dst_, 1); },
                Unknown("CmdSet_AudioDistribute", 8), "");
}

TEST_F(HttpLines, PresetFortyOnType13HasNoBoundHere) {
  Configure(r_, 13, 0);
  r_.usPresetNo = 40;
  ExpectLine([&] { return r_.CmdSet_CamPreset(dst_); }, "/cgi-bin/camctrl?PRESET=40", "");
}

TEST_F(HttpLines, FailingClockGivesTheFixedPage) {
  ClockOverride failing(&cgitest::FailingClock);
  Configure(r_, 6, 0);
  ExpectLine([&] { return r_.CmdSet_SessionCmmand(dst_); },
             "/cgi-bin/getuid?FILE=uid.html&PAGE=1234567", "");
  r_.usFrate = 0;
  ExpectLine([&] { return r_.CmdSet_JpegDistribute(dst_, 1); },
             "/cgi-bin/push?MODE=START&UID=42&PAGE=1234567", "");
  Configure(r_, 0, 1);
  r_.usSelectChNo = 0;
  r_.iAudioEnable = 1;
  ExpectLine([&] { return r_.CmdSet_KeepAlive(dst_); },
             "/cgi-bin/keep_alive?mode=audio&protocol=http&UID=42&page=1234567", "");
  ExpectLine([&] { return r_.CmdSet_AudioDistribute(dst_, 1); },
             "/cgi-bin/audio?connect=start&protocol=http&UID=42&page=1234567", "");
}

}  // namespace
