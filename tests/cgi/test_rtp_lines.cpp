// Every line of the RTP requester for every camera type 0..37, every command
// type, start and stop, against lines written by hand from the camera-type
// table: a "-" in that table is a refusal with its message, -1 and dst empty.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTestSupport.h"
#include "CgiTestSupport.h"

namespace {

using cgitest::ClockOverride;
using cgitest::FixedClock;
using cgitest::LineTest;
using cgitest::Unknown;

// One row of the camera-type table of the RTP requester.
struct RtpRow {
  int type;
  const char* media[6];  // media path cells for iCmdType 0..5 ("" = empty)
  const char* session;   // "getuid", "start.cgi" or "-"
  bool mpeg4Iframe;
  bool h264Iframe;
  const char* keepAlive;  // "keep_alive", "short", "status.cgi" or "-"
  const char* video;      // "camera", "recorder", "recorder RES" or "-"
  const char* audio;      // "camera", "recorder" or "-"
  const char* preset;     // "lower", "upper" or "-"
};

#define VA \
  { "h264", "audio", "mpeg4", "error", "", "" }
#define VO \
  { "h264", "", "mpeg4", "error", "", "" }
#define NO \
  { "", "", "", "error", "", "" }
#define RE \
  { "push.cgi", "push.cgi", "push.cgi", "error", "", "" }
#define ER \
  { "error", "error", "error", "error", "", "" }

// clang-format off
const RtpRow kRows[38] = {
    {0,  VA, "getuid",    true,  false, "keep_alive", "camera",       "camera",   "-"},
    {1,  VA, "getuid",    true,  false, "keep_alive", "camera",       "camera",   "-"},
    {2,  VA, "getuid",    true,  false, "keep_alive", "camera",       "camera",   "-"},
    {3,  VA, "getuid",    true,  false, "keep_alive", "camera",       "camera",   "-"},
    {4,  VA, "getuid",    true,  false, "keep_alive", "camera",       "camera",   "-"},
    {5,  VA, "getuid",    true,  false, "keep_alive", "camera",       "camera",   "-"},
    {6,  VO, "-",         false, false, "-",          "-",            "-",        "-"},
    {7,  VA, "getuid",    true,  false, "keep_alive", "camera",       "camera",   "-"},
    {8,  VA, "-",         false, false, "-",          "-",            "-",        "-"},
    {9,  VA, "getuid",    true,  true,  "keep_alive", "camera",       "camera",   "-"},
    {10, VA, "getuid",    true,  false, "keep_alive", "camera",       "camera",   "-"},
    {11, VA, "getuid",    true,  false, "keep_alive", "camera",       "camera",   "lower"},
    {12, VA, "getuid",    true,  false, "keep_alive", "camera",       "camera",   "lower"},
    {13, VO, "-",         false, false, "-",          "-",            "-",        "upper"},
    {14, VA, "getuid",    true,  false, "keep_alive", "camera",       "camera",   "lower"},
    {15, VA, "getuid",    true,  false, "keep_alive", "camera",       "camera",   "lower"},
    {16, VA, "getuid",    true,  false, "keep_alive", "camera",       "camera",   "lower"},
    {17, VA, "getuid",    true,  false, "keep_alive", "camera",       "camera",   "lower"},
    {18, VA, "getuid",    true,  false, "keep_alive", "camera",       "camera",   "lower"},
    {19, NO, "-",         false, false, "-",          "-",            "-",        "-"},
    {20, VO, "-",         false, false, "-",          "-",            "-",        "-"},
    {21, VO, "getuid",    true,  false, "short",      "camera",       "-",        "-"},
    {22, VA, "getuid",    true,  false, "keep_alive", "camera",       "camera",   "lower"},
    {23, VO, "-",         false, false, "-",          "-",            "-",        "-"},
    {24, VA, "getuid",    true,  true,  "keep_alive", "camera",       "camera",   "-"},
    {25, VA, "getuid",    true,  false, "keep_alive", "camera",       "camera",   "lower"},
    {26, VA, "getuid",    true,  true,  "keep_alive", "camera",       "camera",   "-"},
    {27, VA, "getuid",    true,  true,  "keep_alive", "camera",       "camera",   "-"},
    {28, VA, "getuid",    true,  true,  "keep_alive", "camera",       "camera",   "lower"},
    {29, NO, "-",         false, false, "-",          "-",            "-",        "-"},
    {30, VA, "getuid",    true,  true,  "keep_alive", "camera",       "camera",   "lower"},
    {31, RE, "start.cgi", false, false, "status.cgi", "recorder",     "-",        "-"},
    {32, RE, "start.cgi", false, false, "status.cgi", "recorder",     "-",        "-"},
    {33, RE, "start.cgi", false, false, "status.cgi", "recorder",     "-",        "-"},
    {34, RE, "start.cgi", false, false, "status.cgi", "recorder",     "recorder", "-"},
    {35, RE, "start.cgi", false, false, "status.cgi", "recorder",     "recorder", "-"},
    {36, RE, "start.cgi", false, false, "status.cgi", "recorder RES", "recorder", "-"},
    {37, ER, "-",         false, false, "-",          "-",            "-",        "-"},
};
// clang-format on

const char* const kCodec[5] = {"h264", "audio", "mpeg-4", "", ""};

// Settings of every table line: channel 3, stream 1, UID 42, port 5000,
// preset 7, the camera reported aEnable=in (100), clock 777.
void Configure(CCamRequester_Cgi_Kobu_Rtp& r, int type, int cmd) {
  r.usCameraType = static_cast<uint16_t>(type);
  r.iCmdType = cmd;
  r.usSelectChNo = 3;
  r.cStream = 1;
  r.iUid = 42;
  r.iRtpPort = 5000;
  r.usPresetNo = 7;
  r.iAudioEnable = 100;
}

class RtpLines : public LineTest<CCamRequester_Cgi_Kobu_Rtp> {
 protected:
  void SetUp() override { r_.cIpAddr[0] = '\0'; }
};

TEST_F(RtpLines, SessionCommandForEveryTypeAndCommandType) {
  for (const RtpRow& row : kRows) {
    for (int cmd = 0; cmd <= 4; ++cmd) {
      Configure(r_, row.type, cmd);
      const std::string where = "type " + std::to_string(row.type) + " cmd " + std::to_string(cmd);
      auto build = [&] { return r_.CmdSet_SessionCmmand(dst_); };
      const std::string session = row.session;
      if (session == "getuid") {
        const std::string line =
            std::string("/cgi-bin/getuid?FILE=2&vcodec=") + kCodec[cmd] + "&ch=3";
        print_.Clear();
        ExpectLine(build, line, where);
        EXPECT_EQ(print_.Count("CmdSet_SessionCmmand [DEBUG] Cmd[" + line + "]\n"), 1) << where;
      } else if (session == "start.cgi") {
        print_.Clear();
        ExpectLine(build, "/cgi-bin/start.cgi?UID=-1", where);
        EXPECT_FALSE(print_.Contains("CmdSet_SessionCmmand")) << where;
      } else {
        ExpectRefusal(build, Unknown("CmdSet_SessionCmmand", row.type), where);
      }
    }
  }
}

TEST_F(RtpLines, IframeCommandsForEveryType) {
  for (const RtpRow& row : kRows) {
    Configure(r_, row.type, 0);
    const std::string where = "type " + std::to_string(row.type);
    auto mpeg4 = [&] { return r_.CmdSet_IframInst(dst_); };
    auto h264 = [&] { return r_.CmdSet_H264_IframInst(dst_); };
    if (row.mpeg4Iframe) {
      ExpectLine(mpeg4, "/cgi-bin/mpeg4_I_interval?ch=3", where);
    } else {
      ExpectRefusal(mpeg4, Unknown("CmdSet_IframInst", row.type), where);
    }
    if (row.h264Iframe) {
      ExpectLine(h264, "/cgi-bin/h264_I_interval?stream=1", where);
    } else {
      ExpectRefusal(h264, Unknown("CmdSet_H264_IframInst", row.type), where);
    }
  }
}

TEST_F(RtpLines, KeepAliveForEveryTypeAndCommandType) {
  for (const RtpRow& row : kRows) {
    for (int cmd = 0; cmd <= 5; ++cmd) {
      Configure(r_, row.type, cmd);
      const std::string where = "type " + std::to_string(row.type) + " cmd " + std::to_string(cmd);
      auto build = [&] { return r_.CmdSet_KeepAlive(dst_); };
      const std::string form = row.keepAlive;
      const std::string mode = row.media[cmd];
      if (form == "keep_alive") {
        ExpectLine(build,
                   "/cgi-bin/keep_alive?mode=" + mode + "&protocol=rtp&ch=3&UID=42&page=777" +
                       (cmd < 3 ? "&stream=1" : ""),
                   where);
      } else if (form == "short" && cmd == 1) {
        ExpectRefusal(build, "CmdSet_KeepAlive [ERROR] QV262 unsupport keepalive [audio] \n",
                      where);
      } else if (form == "short") {
        ExpectLine(build, "/cgi-bin/keep_alive?mode=" + mode + "&protocol=rtp&UID=42&page=777",
                   where);
      } else if (form == "status.cgi") {
        ExpectLine(build, "/cgi-bin/status.cgi?UID=42&HTML=as_status.html", where);
      } else {
        ExpectRefusal(build, Unknown("CmdSet_KeepAlive", row.type), where);
      }
    }
  }
}

TEST_F(RtpLines, Mpeg4AndH264DistributeForEveryTypeCommandTypeStartAndStop) {
  struct Builder {
    const char* op;
    std::string codec;
    std::string codecRes;
    int (CCamRequester_Cgi_Kobu_Rtp::*fn)(char*, int);
  };
  const Builder builders[2] = {{"CmdSet_Mpeg4Distribute", "COMP=MPEG4", "COMP=MPEG4",
                                &CCamRequester_Cgi_Kobu_Rtp::CmdSet_Mpeg4Distribute},
                               {"CmdSet_H264Distribute", "COMP=H264", "COMP=H264&RES=1",
                                &CCamRequester_Cgi_Kobu_Rtp::CmdSet_H264Distribute}};
  for (const Builder& b : builders) {
    for (const RtpRow& row : kRows) {
      for (int cmd = 0; cmd <= 5; ++cmd) {
        for (int start = 0; start <= 1; ++start) {
          Configure(r_, row.type, cmd);
          const std::string where = std::string(b.op) + " type " + std::to_string(row.type) +
                                    " cmd " + std::to_string(cmd) + " start " +
                                    std::to_string(start);
          auto build = [&] { return (r_.*b.fn)(dst_, start); };
          const std::string form = row.video;
          const std::string path = std::string("/cgi-bin/") + row.media[cmd];
          if (form == "camera") {
            ExpectLine(build,
                       path + (start ? "?connect=start" : "?connect=stop") +
                           "&protocol=rtp&my_port=5000&ch=3&UID=42&stream=1",
                       where);
          } else if (form == "recorder" || form == "recorder RES") {
            ExpectLine(build,
                       path + (start ? "?CMD=START" : "?CMD=STOP") + "&CAM=3&UID=42&PORT=5000&" +
                           (form == "recorder" ? b.codec : b.codecRes),
                       where);
          } else {
            ExpectRefusal(build, Unknown(b.op, row.type), where);
          }
        }
      }
    }
  }
}

TEST_F(RtpLines, AudioDistributeForEveryTypeCommandTypeStartAndStop) {
  for (const RtpRow& row : kRows) {
    for (int cmd = 0; cmd <= 5; ++cmd) {
      for (int start = 0; start <= 1; ++start) {
        Configure(r_, row.type, cmd);
        const std::string where = "type " + std::to_string(row.type) + " cmd " +
                                  std::to_string(cmd) + " start " + std::to_string(start);
        auto build = [&] { return r_.CmdSet_AudioDistribute(dst_, start); };
        const std::string form = row.audio;
        const std::string path = std::string("/cgi-bin/") + row.media[cmd];
        print_.Clear();
        if (form == "camera") {
          ExpectLine(build,
                     path + (start ? "?connect=start" : "?connect=stop") +
                         "&protocol=rtp&my_port=5000&ch=3&mode=in&UID=42&page=777&stream=1",
                     where);
        } else if (form == "recorder") {
          ExpectLine(
              build,
              path + (start ? "?CMD=START" : "?CMD=STOP") + "&CAM=3&UID=42&PORT=5000&COMP=AUDIO",
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

TEST_F(RtpLines, PresetForEveryType) {
  for (const RtpRow& row : kRows) {
    Configure(r_, row.type, 0);
    const std::string where = "type " + std::to_string(row.type);
    auto build = [&] { return r_.CmdSet_CamPreset(dst_); };
    const std::string form = row.preset;
    if (form == "lower") {
      ExpectLine(build, "/cgi-bin/camctrl?preset=7&ch=3", where);
    } else if (form == "upper") {
      ExpectLine(build, "/cgi-bin/camctrl?PRESET=7", where);
    } else {
      ExpectRefusal(build,
                    "CmdSet_CamPreset [ERROR] unsupport Camera type enum#[" +
                        std::to_string(row.type) + "]\n",
                    where);
    }
    // No preset: nothing to send, whatever the type, and no message.
    r_.usPresetNo = 0;
    print_.Clear();
    memset(dst_, 'x', sizeof(dst_));
    EXPECT_EQ(r_.CmdSet_CamPreset(dst_), 1) << where;
    EXPECT_STREQ(dst_, "") << where;
    EXPECT_TRUE(print_.Lines().empty()) << where;
  }
}

TEST_F(RtpLines, StartStopAboveOneIsRefusedBeforeTheCameraType) {
  for (int type : {0, 8, 34, 37}) {
    Configure(r_, type, 0);
    const std::string where = "type " + std::to_string(type);
    ExpectRefusal([&] { return r_.CmdSet_Mpeg4Distribute(dst_, 2); },
                  "CmdSet_Mpeg4Distribute [ERROR] Param Error iStartStop [2]\n", where);
    ExpectRefusal([&] { return r_.CmdSet_H264Distribute(dst_, 2); },
                  "CmdSet_H264Distribute [ERROR] Param Error iStartStop [2]\n", where);
    ExpectRefusal([&] { return r_.CmdSet_AudioDistribute(dst_, 2); },
                  "CmdSet_AudioDistribute [ERROR] Param Error iStartStop [2]\n", where);
    EXPECT_FALSE(print_.Contains("Unknown Camera Type")) << where;
  }
}

// ---- the edge cases of the description -------------------------------------

TEST_F(RtpLines, CameraSevenMpeg4SecondStreamOnChannelThree) {
  Configure(r_, 7, 2);
  r_.cStream = 2;
  ExpectLine([&] { return r_.CmdSet_Mpeg4Distribute(dst_, 1); },
             "/cgi-bin/mpeg4?connect=start&protocol=rtp&my_port=5000&ch=3&UID=42&stream=2", "");
  ExpectLine([&] { return r_.CmdSet_SessionCmmand(dst_); },
             "/cgi-bin/getuid?FILE=2&vcodec=mpeg-4_2&ch=3", "");
}

TEST_F(RtpLines, SecondStreamSuffixFollowsTheCodecOfEveryCommandType) {
  Configure(r_, 0, 1);
  r_.cStream = 2;
  r_.usSelectChNo = 0;
  ExpectLine([&] { return r_.CmdSet_SessionCmmand(dst_); }, "/cgi-bin/getuid?FILE=2&vcodec=audio_2",
             "");
  r_.iCmdType = 3;
  ExpectLine([&] { return r_.CmdSet_SessionCmmand(dst_); }, "/cgi-bin/getuid?FILE=2&vcodec=_2", "");
}

TEST_F(RtpLines, RecorderStopOnChannelZero) {
  Configure(r_, 34, 2);
  r_.usSelectChNo = 0;
  r_.iUid = 7;
  r_.iRtpPort = 6000;
  ExpectLine([&] { return r_.CmdSet_Mpeg4Distribute(dst_, 0); },
             "/cgi-bin/push.cgi?CMD=STOP&CAM=0&UID=7&PORT=6000&COMP=MPEG4", "");
}

TEST_F(RtpLines, H264RecorderLastComponent) {
  Configure(r_, 36, 0);
  ASSERT_EQ(r_.CmdSet_H264Distribute(dst_, 1), 0);
  EXPECT_TRUE(std::string(dst_).size() > 16 &&
              std::string(dst_).compare(std::string(dst_).size() - 16, 16, "&COMP=H264&RES=1") == 0)
      << dst_;
  Configure(r_, 35, 0);
  ASSERT_EQ(r_.CmdSet_H264Distribute(dst_, 1), 0);
  EXPECT_EQ(std::string(dst_), "/cgi-bin/push.cgi?CMD=START&CAM=3&UID=42&PORT=5000&COMP=H264");
}

TEST_F(RtpLines, KeepAliveOfType21HasNoSecondStreamNoChannelNoStream) {
  Configure(r_, 21, 0);
  r_.cStream = 2;
  ExpectLine([&] { return r_.CmdSet_KeepAlive(dst_); },
             "/cgi-bin/keep_alive?mode=h264&protocol=rtp&UID=42&page=777", "");
  r_.iCmdType = 1;
  ExpectRefusal([&] { return r_.CmdSet_KeepAlive(dst_); },
                "CmdSet_KeepAlive [ERROR] QV262 unsupport keepalive [audio] \n", "");
}

TEST_F(RtpLines, KeepAliveSecondStreamSuffixOnlyForVideoCommandTypes) {
  Configure(r_, 0, 0);
  r_.cStream = 2;
  r_.usSelectChNo = 0;
  ExpectLine([&] { return r_.CmdSet_KeepAlive(dst_); },
             "/cgi-bin/keep_alive?mode=h264_2&protocol=rtp&UID=42&page=777&stream=2", "");
  r_.iCmdType = 1;
  ExpectLine([&] { return r_.CmdSet_KeepAlive(dst_); },
             "/cgi-bin/keep_alive?mode=audio&protocol=rtp&UID=42&page=777&stream=2", "");
  r_.iCmdType = 2;
  ExpectLine([&] { return r_.CmdSet_KeepAlive(dst_); },
             "/cgi-bin/keep_alive?mode=mpeg4_2&protocol=rtp&UID=42&page=777&stream=2", "");
}

TEST_F(RtpLines, KeepAliveForMpeg4PlaybackWritesModeErrorAndNoStream) {
  Configure(r_, 5, 3);
  r_.usSelectChNo = 0;
  ExpectLine([&] { return r_.CmdSet_KeepAlive(dst_); },
             "/cgi-bin/keep_alive?mode=error&protocol=rtp&UID=42&page=777", "");
}

TEST_F(RtpLines, StreamNumbersOtherThanOneAndTwoAddNoStream) {
  Configure(r_, 0, 0);
  r_.cStream = 3;
  r_.usSelectChNo = 0;
  ExpectLine([&] { return r_.CmdSet_H264Distribute(dst_, 1); },
             "/cgi-bin/h264?connect=start&protocol=rtp&my_port=5000&UID=42", "");
  r_.cStream = 0;
  ExpectLine([&] { return r_.CmdSet_KeepAlive(dst_); },
             "/cgi-bin/keep_alive?mode=h264&protocol=rtp&UID=42&page=777", "");
}

TEST_F(RtpLines, Mpeg4IframeChannelAndStreamParts) {
  Configure(r_, 0, 2);
  r_.usSelectChNo = 0;
  r_.cStream = 2;
  ExpectLine([&] { return r_.CmdSet_IframInst(dst_); }, "/cgi-bin/mpeg4_I_interval?stream=2", "");
  r_.usSelectChNo = 1;
  r_.cStream = 1;
  ExpectLine([&] { return r_.CmdSet_IframInst(dst_); }, "/cgi-bin/mpeg4_I_interval?ch=1", "");
  r_.cStream = 2;
  ExpectLine([&] { return r_.CmdSet_IframInst(dst_); }, "/cgi-bin/mpeg4_I_interval?ch=1&stream=2",
             "");
  r_.usSelectChNo = 0;
  r_.cStream = 1;
  ExpectLine([&] { return r_.CmdSet_IframInst(dst_); }, "/cgi-bin/mpeg4_I_interval", "");
}

TEST_F(RtpLines, H264IframeWritesTheStreamWhateverItIs) {
  Configure(r_, 9, 0);
  r_.cStream = 0;
  ExpectLine([&] { return r_.CmdSet_H264_IframInst(dst_); }, "/cgi-bin/h264_I_interval?stream=0",
             "");
  r_.cStream = 7;
  ExpectLine([&] { return r_.CmdSet_H264_IframInst(dst_); }, "/cgi-bin/h264_I_interval?stream=7",
             "");
}

TEST_F(RtpLines, PresetBoundOfType13) {
  Configure(r_, 13, 0);
  r_.usPresetNo = 16;
  ExpectLine([&] { return r_.CmdSet_CamPreset(dst_); }, "/cgi-bin/camctrl?PRESET=16", "");
  r_.usPresetNo = 17;
  ExpectRefusal([&] { return r_.CmdSet_CamPreset(dst_); },
                "CmdSet_CamPreset [ERROR] Param error preset#[17 > 16]\n", "");
  r_.usPresetNo = 40;
  ExpectRefusal([&] { return r_.CmdSet_CamPreset(dst_); },
                "CmdSet_CamPreset [ERROR] Param error preset#[40 > 16]\n", "");
  Configure(r_, 11, 0);
  r_.usPresetNo = 17;
  r_.usSelectChNo = 0;
  ExpectLine([&] { return r_.CmdSet_CamPreset(dst_); }, "/cgi-bin/camctrl?preset=17", "");
}

TEST_F(RtpLines, FailingClockGivesTheFixedPage) {
  ClockOverride failing(&cgitest::FailingClock);
  Configure(r_, 0, 0);
  r_.usSelectChNo = 0;
  r_.iAudioEnable = 0;
  ExpectLine([&] { return r_.CmdSet_KeepAlive(dst_); },
             "/cgi-bin/keep_alive?mode=h264&protocol=rtp&UID=42&page=1234567&stream=1", "");
  r_.iCmdType = 1;
  ExpectLine([&] { return r_.CmdSet_AudioDistribute(dst_, 1); },
             "/cgi-bin/audio?connect=start&protocol=rtp&my_port=5000&UID=42&page=1234567&stream=1",
             "");
}

TEST_F(RtpLines, ModeInOnlyForAudioEnableExactly100) {
  Configure(r_, 0, 1);
  r_.usSelectChNo = 0;
  for (int enable : {0, 1, 99, 101}) {
    r_.iAudioEnable = enable;
    ExpectLine([&] { return r_.CmdSet_AudioDistribute(dst_, 0); },
               "/cgi-bin/audio?connect=stop&protocol=rtp&my_port=5000&UID=42&page=777&stream=1",
               std::to_string(enable));
  }
}

TEST_F(RtpLines, NoUidAndNoPortAreWrittenAsTheyAre) {
  Configure(r_, 0, 0);
  r_.usSelectChNo = 0;
  r_.iUid = -1;
  r_.iRtpPort = -1;
  ExpectLine([&] { return r_.CmdSet_H264Distribute(dst_, 1); },
             "/cgi-bin/h264?connect=start&protocol=rtp&my_port=-1&UID=-1&stream=1", "");
}

TEST_F(RtpLines, CameraTypesBeyondTheTableAreRefused) {
  Configure(r_, 40, 0);
  ExpectRefusal([&] { return r_.CmdSet_SessionCmmand(dst_); }, Unknown("CmdSet_SessionCmmand", 40),
                "");
  ExpectRefusal([&] { return r_.CmdSet_KeepAlive(dst_); }, Unknown("CmdSet_KeepAlive", 40), "");
  ExpectRefusal([&] { return r_.CmdSet_H264Distribute(dst_, 1); },
                Unknown("CmdSet_H264Distribute", 40), "");
}

}  // namespace
