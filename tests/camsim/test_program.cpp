// The camsim program itself: start on port 0, report the port, answer,
// stop on SIGTERM; --help.
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "TestClient.h"
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
  uint16_t Port(int device) {
    std::string mark = "camsim: device " + std::to_string(device) + " ";
    std::string line;
    while (true) {
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

}  // namespace
}  // namespace camsim_test
