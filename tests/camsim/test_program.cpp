// The camsim program itself: start on port 0, report the port, answer,
// stop on SIGTERM; --help.
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "Fixture.h"
#include "RtpReceiver.h"
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

TEST(Program, HelpAndBadOptions) {
  Program help;
  ASSERT_TRUE(help.Start({"--help"}));
  bool closed = false;
  std::string text = ReadUntilClose(help.out, kDeadline, &closed);
  EXPECT_NE(text.find("--listen ADDR:PORT"), std::string::npos);
  EXPECT_NE(text.find("--fault PATH:FAULT"), std::string::npos);
  int status = help.Stop(0);
  EXPECT_EQ(WEXITSTATUS(status), 0);
  Program bad;
  ASSERT_TRUE(bad.Start({"--listen", "127.0.0.1:0", "--model", "99"}));
  int badStatus = 0;
  waitpid(bad.pid, &badStatus, 0);
  bad.pid = -1;
  EXPECT_EQ(WEXITSTATUS(badStatus), 2);
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
  bool closed = false;
  std::string out = ReadUntilClose(program.out, kDeadline, &closed);
  EXPECT_TRUE(closed);
  int status = 0;
  waitpid(program.pid, &status, 0);
  program.pid = -1;
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
  EXPECT_EQ(Control(fd, "1 uid-expiry 0"), "OK");
  EXPECT_EQ(Control(fd, "1 push-start-status 204"), "OK");
  EXPECT_EQ(Control(fd, "1 clear-faults"), "OK");
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
