// The camsim program itself: start on port 0, report the port, answer,
// stop on SIGTERM; --help.
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <map>

#include "CamTestTiming.h"
#include "Fixture.h"
#include "RtpReceiver.h"
#include "TypeRows.h"
#include "gtest/gtest.h"

extern char** environ;

namespace camsim_test {
namespace {

struct Program {
  pid_t pid = -1;
  int out = -1;
  std::string text;

  bool Start(std::vector<std::string> args) {
    int pipeFds[2];
    if (pipe(pipeFds) != 0) return false;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeFds[1], 1);
    posix_spawn_file_actions_addclose(&actions, pipeFds[0]);
    args.insert(args.begin(), CAMSIM_PROGRAM);
    std::vector<char*> argv;
    for (auto& arg : args) argv.push_back(&arg[0]);
    argv.push_back(nullptr);
    int rc = posix_spawn(&pid, CAMSIM_PROGRAM, &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(pipeFds[1]);
    out = pipeFds[0];
    return rc == 0;
  }
  // Port printed for device n, read from the start-up lines.
  uint16_t Port(int device) { return PortAfter("camsim: device " + std::to_string(device) + " "); }
  uint16_t ControlPort() { return PortAfter("camsim: control listening"); }
  // Port at the end of the start-up line that begins with mark.
  uint16_t PortAfter(const std::string& mark) {
    std::string line;
    auto deadline = std::chrono::steady_clock::now() + kDeadline;
    while (true) {
      if (std::chrono::steady_clock::now() > deadline) return 0;
      size_t at = text.find(mark);
      size_t end = at == std::string::npos ? at : text.find('\n', at);
      if (end != std::string::npos) {
        line = text.substr(at, end - at);
        break;
      }
      if (!ReadUntil(out, &text, "\n" + mark + "never", milliseconds(100)) &&
          text.find(mark) == std::string::npos && waitpid(pid, nullptr, WNOHANG) != 0) {
        return 0;
      }
    }
    return static_cast<uint16_t>(std::atoi(line.substr(line.rfind(' ') + 1).c_str()));
  }
  // Reads standard output until the program closes it, then waits for its
  // end; the wait status.
  int Finish(std::string* output) {
    bool closed = false;
    *output = ReadUntilClose(out, kDeadline, &closed);
    EXPECT_TRUE(closed) << "the program went on";
    int status = 0;
    waitpid(pid, &status, 0);
    pid = -1;
    return status;
  }
  int Stop(int signal) {
    kill(pid, signal);
    int status = 0;
    waitpid(pid, &status, 0);
    pid = -1;
    return status;
  }
  ~Program() {
    if (pid > 0) Stop(SIGKILL);
    if (out >= 0) close(out);
  }
};

TEST(Program, RunsSeveralDevicesOnPortZeroAndStopsOnSigterm) {
  Program program;
  ASSERT_TRUE(program.Start({"--listen", "127.0.0.1:0", "--model", "7", "--aenable", "in",
                             "--fault", "/cgi-bin/mpeg4_I_interval:status=503", "--listen",
                             "[::1]:0", "--model", "KEL31"}));
  uint16_t camera = program.Port(0);
  uint16_t recorder = program.Port(1);
  ASSERT_NE(camera, 0);
  ASSERT_NE(recorder, 0);
  Response reply = Get("127.0.0.1", camera, "/cgi-bin/getuid?FILE=2&vcodec=h264");
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.Line("aEnable="), "in");
  EXPECT_EQ(Get("127.0.0.1", camera, "/cgi-bin/mpeg4_I_interval").status, 503);
  EXPECT_NE(Get("::1", recorder, "/cgi-bin/start.cgi?UID=-1").body.find("strKey = \""),
            std::string::npos);
  int status = program.Stop(SIGTERM);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(Program, SignalsCloseAndReopenTheListener) {
  Program program;
  ASSERT_TRUE(program.Start({"--listen", "127.0.0.1:0", "--refuse"}));
  uint16_t port = program.Port(0);
  ASSERT_NE(port, 0);
  EXPECT_LT(Connect("127.0.0.1", port), 0);
  kill(program.pid, SIGUSR2);
  auto deadline = std::chrono::steady_clock::now() + kDeadline;
  int fd = -1;
  while (fd < 0 && std::chrono::steady_clock::now() < deadline) {
    fd = Connect("127.0.0.1", port);
    if (fd < 0) usleep(10000);  // polling for the listener, bounded by the deadline
  }
  ASSERT_GE(fd, 0);
  close(fd);
  EXPECT_EQ(program.Stop(SIGINT), 0);
}

// The text of camsim --help ("" unless the program printed it and exited 0).
std::string HelpText() {
  Program help;
  if (!help.Start({"--help"})) return "";
  std::string text;
  int status = help.Finish(&text);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? text : "";
}

TEST(Program, HelpAndBadOptions) {
  std::string text = HelpText();
  EXPECT_NE(text.find("--listen ADDR:PORT"), std::string::npos);
  EXPECT_NE(text.find("--fault PATH:FAULT"), std::string::npos);
  Program bad;
  ASSERT_TRUE(bad.Start({"--listen", "127.0.0.1:0", "--model", "99"}));
  std::string out;
  int badStatus = bad.Finish(&out);
  EXPECT_TRUE(WIFEXITED(badStatus));
  EXPECT_EQ(WEXITSTATUS(badStatus), 2);
}

// The types of a line of the help's type list: "0-5, 7, 10".
std::vector<int> TypesOfList(const std::string& list) {
  std::vector<int> models;
  size_t at = 0;
  while (at < list.size()) {
    size_t end = list.find(", ", at);
    std::string item = list.substr(at, end == std::string::npos ? end : end - at);
    size_t dash = item.find('-');
    int first = std::atoi(item.c_str());
    int last = dash == std::string::npos ? first : std::atoi(item.c_str() + dash + 1);
    for (int model = first; model <= last; ++model) models.push_back(model);
    at = end == std::string::npos ? list.size() : end + 2;
  }
  return models;
}

// What the help says each camera type answers: the line of the type's
// group, its continuation lines joined to it, by type.
std::map<int, std::string> TypeLines(const std::string& help, int* mentions) {
  std::map<int, std::string> lines;
  *mentions = 0;
  size_t at = help.find("What each camera type");
  if (at == std::string::npos) return lines;
  at = help.find('\n', at);
  at = at == std::string::npos ? at : help.find('\n', at + 1);  // the heading's second line
  std::vector<int> group;
  while (at != std::string::npos && at + 1 < help.size() && help[at + 1] != '\n') {
    size_t end = help.find('\n', at + 1);
    std::string line = help.substr(at + 1, end == std::string::npos ? end : end - at - 1);
    at = end;
    if (line.rfind("      ", 0) == 0) {
      for (int model : group) lines[model] += " " + line.substr(6);
      continue;
    }
    size_t open = line.find(" (");
    group = TypesOfList(line.substr(2, open == std::string::npos ? open : open - 2));
    for (int model : group) {
      ++*mentions;
      lines[model] = line;
    }
  }
  return lines;
}

TEST(Program, HelpTellsWhatEachCameraTypeAnswers) {
  std::string help = HelpText();
  ASSERT_FALSE(help.empty());
  int mentions = 0;
  std::map<int, std::string> lines = TypeLines(help, &mentions);
  ASSERT_EQ(lines.size(), 37u) << help;
  EXPECT_EQ(mentions, 37) << "each type in one line";
  auto says = [&](int model, const char* words) {
    return lines[model].find(words) != std::string::npos;
  };
  for (const CameraRow& row : kCameraRows) {
    const std::string& line = lines[row.model];
    EXPECT_NE(line.find("(camera)"), std::string::npos) << line;
    EXPECT_EQ(says(row.model, "getuid"), row.session) << line;
    EXPECT_EQ(says(row.model, "nothing"), !row.session) << line;
    EXPECT_EQ(says(row.model, "mpeg4_I_interval"), row.mpeg4Interval) << line;
    EXPECT_EQ(says(row.model, "h264_I_interval"), row.h264Interval) << line;
    EXPECT_EQ(says(row.model, "keep_alive"), row.keepAlive != kNoKeepAlive) << line;
    EXPECT_EQ(says(row.model, "short form only"), row.keepAlive == kShortKeepAlive) << line;
    EXPECT_EQ(says(row.model, "h264 and mpeg4 (RTP)"), row.video) << line;
    EXPECT_EQ(says(row.model, "audio (RTP and HTTP)"), row.audio) << line;
    EXPECT_EQ(says(row.model, "jpeg (push)"), row.jpeg) << line;
    EXPECT_EQ(says(row.model, "camctrl?preset=N"), row.preset == kLowerPreset) << line;
  }
  for (int model : {6, 13, 20}) {
    const std::string& line = lines[model];
    EXPECT_NE(line.find("(quillon)"), std::string::npos) << line;
    EXPECT_TRUE(says(model, "getuid?FILE=uid.html")) << line;
    EXPECT_TRUE(says(model, "push, syssetup")) << line;
    EXPECT_TRUE(says(model, "uidutil")) << line;
    EXPECT_EQ(says(model, "camctrl?PRESET=N (1 to 16)"), model == 13) << line;
  }
  for (int model = 31; model <= 36; ++model) {
    const std::string& line = lines[model];
    EXPECT_NE(line.find("(recorder)"), std::string::npos) << line;
    EXPECT_TRUE(says(model, "start.cgi, ulogin.cgi, logout.cgi")) << line;
    EXPECT_TRUE(says(model, "status.cgi")) << line;
    EXPECT_TRUE(says(model, "push.cgi COMP=JPEG")) << line;
    EXPECT_EQ(says(model, "COMP=H264&RES=1"), model == 36) << line;
    EXPECT_EQ(says(model, "COMP=H264 without RES"), model != 36) << line;
    EXPECT_EQ(says(model, "COMP=AUDIO"), model >= 34) << line;
    // The recorders whose audio settings the requester reads from the login.
    EXPECT_EQ(says(model, "aBitrate= and aEnable= in the login reply"), LoginCarriesAudio(model))
        << line;
  }
}

TEST(Program, HelpTellsWhereAbitrateAndAenableGo) {
  std::string help = HelpText();
  size_t bitrate = help.find("\n  --abitrate N ");
  size_t enable = help.find("\n  --aenable VALUE ");
  ASSERT_NE(bitrate, std::string::npos) << help;
  ASSERT_NE(enable, std::string::npos) << help;
  std::string bitrateLine = help.substr(bitrate + 1, help.find('\n', bitrate + 1) - bitrate - 1);
  std::string enableLine = help.substr(enable + 1, help.find('\n', enable + 1) - enable - 1);
  EXPECT_NE(bitrateLine.find("aBitrate= of the camera getuid reply and of the login reply of "
                             "recorders 32, 33, 35; 32"),
            std::string::npos)
      << bitrateLine;
  EXPECT_NE(enableLine.find("aEnable= of the same replies, a number or in; 1"), std::string::npos)
      << enableLine;
}

// What the help says of --abitrate and --aenable is what the devices do: a
// camera's getuid reply and the login reply of recorders 32, 33 and 35
// carry the values, the other recorders' login replies do not.
TEST(Program, AbitrateAndAenableFeedTheGetuidAndTheLoginReplies) {
  Program program;
  std::vector<std::string> args = {"--listen",   "127.0.0.1:0", "--model",   "CAM07",
                                   "--abitrate", "24",          "--aenable", "in"};
  for (int model = 31; model <= 36; ++model) {
    for (const std::string& arg :
         {std::string("--listen"), std::string("127.0.0.1:0"), std::string("--model"),
          std::to_string(model), std::string("--abitrate"), std::string("24"),
          std::string("--aenable"), std::string("in")}) {
      args.push_back(arg);
    }
  }
  ASSERT_TRUE(program.Start(args));
  uint16_t camera = program.Port(0);
  ASSERT_NE(camera, 0);
  Response uid = Get("127.0.0.1", camera, "/cgi-bin/getuid?FILE=2&vcodec=audio");
  EXPECT_EQ(uid.Line("aBitrate="), "24");
  EXPECT_EQ(uid.Line("aEnable="), "in");
  for (int model = 31; model <= 36; ++model) {
    uint16_t port = program.Port(model - 30);
    ASSERT_NE(port, 0) << model;
    ExpectLoginAudioKeys(RecorderLogin("127.0.0.1", port), model, "24", "in");
  }
  EXPECT_EQ(program.Stop(SIGTERM), 0);
}

// --push-start-status 204: a recorder answers its push starts with an empty
// 204, whose result word carries 0x204 at the requester.
TEST(Program, PushStartStatusFromTheCommandLine) {
  Program program;
  ASSERT_TRUE(
      program.Start({"--listen", "127.0.0.1:0", "--model", "KEL33", "--push-start-status", "204"}));
  uint16_t recorder = program.Port(0);
  ASSERT_NE(recorder, 0);
  std::string uid = RecorderLogin("127.0.0.1", recorder).Line("UID=");
  ASSERT_FALSE(uid.empty());
  UdpReceiver receiver;  // where the stream that the start begins goes
  ASSERT_TRUE(receiver.Open("127.0.0.1"));
  Response reply = Get("127.0.0.1", recorder,
                       "/cgi-bin/push.cgi?CMD=START&CAM=1&UID=" + uid +
                           "&PORT=" + std::to_string(receiver.Port()) + "&COMP=MPEG4");
  EXPECT_EQ(reply.statusLine, "HTTP/1.0 204 No Content");
  EXPECT_TRUE(reply.body.empty());
  EXPECT_EQ(reply.Header("Content-Length"), "");
  EXPECT_EQ(program.Stop(SIGTERM), 0);
}

TEST(Program, NoListeningLineWhenADeviceCannotListen) {
  // A port that is taken: bound and listening here.
  camsim::DeviceConfig config;
  std::string error;
  auto taken = camsim::Device::Start(config, &error);
  ASSERT_NE(taken, nullptr) << error;
  Program program;
  ASSERT_TRUE(
      program.Start({"--listen", "127.0.0.1:0", "--listen",
                     "127.0.0.1:" + std::to_string(taken->Port()), "--listen", "127.0.0.1:0"}));
  std::string out;
  int status = program.Finish(&out);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 1);
  EXPECT_EQ(out.find("listening"), std::string::npos) << out;
}

TEST(Program, NoListeningLineWhenTheControlSocketCannotListen) {
  camsim::DeviceConfig config;
  std::string error;
  auto taken = camsim::Device::Start(config, &error);
  ASSERT_NE(taken, nullptr) << error;
  Program program;
  ASSERT_TRUE(program.Start({"--control", "127.0.0.1:" + std::to_string(taken->Port()), "--listen",
                             "127.0.0.1:0", "--listen", "[::1]:0"}));
  std::string out;
  int status = program.Finish(&out);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 1);
  EXPECT_EQ(out.find("listening"), std::string::npos) << out;
}

// Sends one control line and reads its one answer line.
std::string Control(int fd, const std::string& line) {
  if (!SendText(fd, line + "\n")) return "send failed";
  std::string answer;
  if (!ReadUntil(fd, &answer, "\n", kDeadline)) return "no answer";
  return answer.substr(0, answer.find('\n'));
}

TEST(Program, ControlSocketChangesDevicesWhileRunning) {
  Program program;
  ASSERT_TRUE(program.Start({"--control", "127.0.0.1:0", "--listen", "127.0.0.1:0", "--model", "7",
                             "--listen", "127.0.0.1:0", "--model", "KEL33"}));
  uint16_t camera = program.Port(0);
  uint16_t recorder = program.Port(1);
  uint16_t control = program.ControlPort();
  ASSERT_NE(camera, 0);
  ASSERT_NE(recorder, 0);
  ASSERT_NE(control, 0);
  int fd = Connect("127.0.0.1", control);
  ASSERT_GE(fd, 0);
  std::string uid = Get("127.0.0.1", camera, "/cgi-bin/getuid?FILE=2&vcodec=h264").Line("UID=");
  std::string keepAlive = "/cgi-bin/keep_alive?mode=h264&protocol=rtp&page=1&UID=" + uid;
  EXPECT_EQ(Get("127.0.0.1", camera, keepAlive).status, 200);
  EXPECT_EQ(Control(fd, "0 forget-uids"), "OK");
  EXPECT_EQ(Get("127.0.0.1", camera, keepAlive).status, 404);
  EXPECT_EQ(Control(fd, "0 fault /cgi-bin/getuid:status=503,times=1"), "OK");
  EXPECT_EQ(Control(fd, "0 fault /cgi-bin/getuid:status=500,times=1"), "OK");
  EXPECT_EQ(Get("127.0.0.1", camera, "/cgi-bin/getuid?FILE=2&vcodec=h264").status, 503);
  EXPECT_EQ(Get("127.0.0.1", camera, "/cgi-bin/getuid?FILE=2&vcodec=h264").status, 500);
  EXPECT_EQ(Control(fd, "0 refuse"), "OK");
  EXPECT_LT(Connect("127.0.0.1", camera), 0);
  EXPECT_EQ(Control(fd, "0 accept"), "OK");
  EXPECT_EQ(Get("127.0.0.1", camera, "/cgi-bin/mpeg4_I_interval").status, 200);
  EXPECT_EQ(Control(fd, "1 play-mode 5"), "OK");
  EXPECT_EQ(Control(fd, "1 filename =CH03.DAT"), "OK");
  EXPECT_EQ(Control(fd, "2 refuse").rfind("ERROR ", 0), 0u) << "no device 2";
  EXPECT_EQ(Control(fd, "0 explode").rfind("ERROR ", 0), 0u);
  EXPECT_EQ(Control(fd, "0 play-mode").rfind("ERROR ", 0), 0u);
  EXPECT_EQ(Control(fd, "0 refuse now").rfind("ERROR ", 0), 0u);
  EXPECT_EQ(Control(fd, "0 fault status=500").rfind("ERROR ", 0), 0u);
  EXPECT_EQ(Control(fd, "0 forget-uid 999").rfind("ERROR ", 0), 0u);
  close(fd);
  // The recorder's status shows the changes.
  Response login = RecorderLogin("127.0.0.1", recorder);
  Response status = Get("127.0.0.1", recorder,
                        "/cgi-bin/status.cgi?UID=" + login.Line("UID=") + "&HTML=as_status.html");
  EXPECT_EQ(status.Line("PLAY_MODE="), "5");
  EXPECT_EQ(status.Line("FILENAME"), "=CH03.DAT");
  EXPECT_EQ(program.Stop(SIGTERM), 0);
}

// A camera (device 0) and a recorder (device 1) run by the program, with a
// control socket; each control line's change is seen in the devices' HTTP
// answers.
class ControlLineTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(program_.Start({"--control", "127.0.0.1:0", "--listen", "127.0.0.1:0", "--model",
                                "CAM07", "--listen", "127.0.0.1:0", "--model", "KEL33"}));
    camera_ = program_.Port(0);
    recorder_ = program_.Port(1);
    uint16_t control = program_.ControlPort();
    ASSERT_NE(camera_, 0);
    ASSERT_NE(recorder_, 0);
    ASSERT_NE(control, 0);
    fd_ = Connect("127.0.0.1", control);
    ASSERT_GE(fd_, 0);
  }
  void TearDown() override {
    if (fd_ >= 0) close(fd_);
    if (program_.pid > 0) {
      EXPECT_EQ(program_.Stop(SIGTERM), 0);
    }
  }
  std::string Say(const std::string& line) { return Control(fd_, line); }
  Response Camera(const std::string& target) { return Get("127.0.0.1", camera_, target); }
  std::string CameraUid() { return Camera("/cgi-bin/getuid?FILE=2&vcodec=h264").Line("UID="); }
  // A keep-alive: it keeps the UID alive.
  Response KeepAlive(const std::string& uid) {
    return Camera("/cgi-bin/keep_alive?mode=h264&protocol=rtp&page=1&UID=" + uid);
  }
  // A line that needs a known UID but does not keep it alive.
  Response Stop(const std::string& uid) {
    return Camera("/cgi-bin/h264?connect=stop&protocol=rtp&my_port=5000&UID=" + uid);
  }

  Program program_;
  uint16_t camera_ = 0;
  uint16_t recorder_ = 0;
  int fd_ = -1;
};

TEST_F(ControlLineTest, ForgetUidForgetsThatUidAlone) {
  std::string forgotten = CameraUid();
  std::string kept = CameraUid();
  ASSERT_FALSE(forgotten.empty());
  ASSERT_NE(forgotten, kept);
  EXPECT_EQ(Say("0 forget-uid " + forgotten), "OK");
  Response refused = KeepAlive(forgotten);
  EXPECT_EQ(refused.status, 404);
  EXPECT_EQ(refused.body, camsim::kUnknownUidBody);
  EXPECT_EQ(KeepAlive(kept).status, 200);
  EXPECT_EQ(Say("0 forget-uid " + forgotten), "ERROR unknown UID");
  EXPECT_EQ(KeepAlive(kept).status, 200);
}

TEST_F(ControlLineTest, UidExpiryForgetsAUidWithoutKeepAlive) {
  // Wider where the build runs slower, so that the keep-alives of the loop
  // below stay far more often than the expiry.
  const milliseconds kExpiry = camtest::Scaled(milliseconds{500});
  EXPECT_EQ(Say("0 uid-expiry " + std::to_string(kExpiry.count())), "OK");
  auto issued = std::chrono::steady_clock::now();
  std::string kept = CameraUid();
  std::string idle = CameraUid();
  ASSERT_FALSE(idle.empty());
  // Keep-alives for one UID, far more often than the expiry, until a later
  // request finds the other one gone.
  Response last;
  bool gone = WaitFor([&] {
    EXPECT_EQ(KeepAlive(kept).status, 200);
    last = Stop(idle);
    return last.status != 200;
  });
  ASSERT_TRUE(gone) << "the idle UID never expired";
  EXPECT_GE(std::chrono::steady_clock::now() - issued, kExpiry) << "not before its time";
  EXPECT_EQ(last.status, 404);
  EXPECT_EQ(last.body, camsim::kUnknownUidBody);
  EXPECT_EQ(Stop(kept).status, 200) << "the UID with keep-alives lives on";
  // Turned off, a UID without keep-alives lasts well past the old expiry.
  EXPECT_EQ(Say("0 uid-expiry 0"), "OK");
  std::string lasting = CameraUid();
  auto since = std::chrono::steady_clock::now();
  while (std::chrono::steady_clock::now() - since < 3 * kExpiry) {
    ASSERT_EQ(Stop(lasting).status, 200);
    std::this_thread::sleep_for(milliseconds(20));
  }
}

TEST_F(ControlLineTest, SetFaultReplacesThePathsFaults) {
  EXPECT_EQ(Say("0 fault /cgi-bin/getuid:status=503"), "OK");
  EXPECT_EQ(Say("0 fault /cgi-bin/getuid:status=500"), "OK");
  std::string getUid = "/cgi-bin/getuid?FILE=2&vcodec=h264";
  EXPECT_EQ(Camera(getUid).status, 503);
  EXPECT_EQ(Say("0 set-fault /cgi-bin/getuid:status=502,times=1"), "OK");
  EXPECT_EQ(Camera(getUid).status, 502);
  // Neither fault of the list it replaced comes back.
  EXPECT_EQ(Camera(getUid).status, 200);
  EXPECT_EQ(Say("0 set-fault status=502").rfind("ERROR ", 0), 0u) << "no PATH";
}

TEST_F(ControlLineTest, ClearFaultRemovesOnePathsFaultsAndClearFaultsAll) {
  std::string getUid = "/cgi-bin/getuid?FILE=2&vcodec=h264";
  std::string interval = "/cgi-bin/mpeg4_I_interval";
  EXPECT_EQ(Say("0 fault /cgi-bin/getuid:status=503"), "OK");
  EXPECT_EQ(Say("0 fault /cgi-bin/getuid:noanswer"), "OK");
  EXPECT_EQ(Say("0 fault /cgi-bin/mpeg4_I_interval:status=504"), "OK");
  EXPECT_EQ(Camera(getUid).status, 503);
  EXPECT_EQ(Say("0 clear-fault /cgi-bin/getuid"), "OK");
  EXPECT_EQ(Camera(getUid).status, 200);
  EXPECT_EQ(Camera(interval).status, 504) << "another path keeps its fault";
  EXPECT_EQ(Say("0 clear-fault").rfind("ERROR ", 0), 0u) << "no PATH";
  EXPECT_EQ(Say("0 clear-faults"), "OK");
  EXPECT_EQ(Camera(interval).status, 200);
}

TEST_F(ControlLineTest, PushStartStatusAnswersARecordersPushStart) {
  Response login = RecorderLogin("127.0.0.1", recorder_);
  std::string uid = login.Line("UID=");
  ASSERT_FALSE(uid.empty());
  UdpReceiver receiver;  // where the stream that the start begins goes
  ASSERT_TRUE(receiver.Open("127.0.0.1"));
  std::string start = "/cgi-bin/push.cgi?CMD=START&CAM=1&UID=" + uid +
                      "&PORT=" + std::to_string(receiver.Port()) + "&COMP=H264";
  EXPECT_EQ(Say("1 push-start-status 204"), "OK");
  Response empty = Get("127.0.0.1", recorder_, start);
  EXPECT_EQ(empty.statusLine, "HTTP/1.0 204 No Content");
  EXPECT_TRUE(empty.body.empty());
  EXPECT_EQ(Say("1 push-start-status 0"), "OK");
  Response normal = Get("127.0.0.1", recorder_, start);
  EXPECT_EQ(normal.status, 200);
  EXPECT_EQ(normal.body, "OK\r\n");
}

// The program's own RTP: a stream from the command line's delivery and
// fault, stalled and resumed through the control socket.
TEST(Program, RtpFromTheCommandLineAndTheControlSocket) {
  UdpReceiver receiver;
  ASSERT_TRUE(receiver.Open("127.0.0.1"));
  Program program;
  ASSERT_TRUE(
      program.Start({"--control", "127.0.0.1:0", "--listen", "127.0.0.1:0", "--model", "CAM09",
                     "--delivery", "uni", "--fault", "/cgi-bin/h264:rtp-end=3,times=1"}));
  uint16_t camera = program.Port(0);
  uint16_t control = program.ControlPort();
  ASSERT_NE(camera, 0);
  ASSERT_NE(control, 0);
  std::string uid = Get("127.0.0.1", camera, "/cgi-bin/getuid?FILE=2&vcodec=h264").Line("UID=");
  std::string start =
      "/cgi-bin/h264?connect=start&protocol=rtp&my_port=" + std::to_string(receiver.Port()) +
      "&UID=" + uid;
  ASSERT_EQ(Get("127.0.0.1", camera, start).status, 200);
  auto ended = receiver.Frames(3);
  ASSERT_FALSE(ended.empty());
  EXPECT_TRUE(receiver.Quiet(milliseconds(400), kDeadline)) << "rtp-end=3";
  int fd = Connect("127.0.0.1", control);
  ASSERT_GE(fd, 0);
  EXPECT_EQ(Control(fd, "0 rtp-stall"), "ERROR no such RTP stream");
  ASSERT_EQ(Get("127.0.0.1", camera, start).status, 200);
  ASSERT_FALSE(receiver.Frames(1).empty());
  EXPECT_EQ(Control(fd, "0 rtp-stall " + uid), "OK");
  EXPECT_TRUE(receiver.Quiet(milliseconds(400), kDeadline));
  EXPECT_EQ(Control(fd, "0 rtp-resume"), "OK");
  EXPECT_FALSE(receiver.Frames(1).empty());
  close(fd);
  EXPECT_EQ(program.Stop(SIGTERM), 0);
}

}  // namespace
}  // namespace camsim_test
