#include "tests/support/run_tool.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <iterator>
#include <sstream>

extern char** environ;

namespace fieldline::test {
namespace {

constexpr int kPatience = 60'000;  // ms without a byte from the program

// Appends what is there. False at the end of the output.
bool Take(int& pipe, std::string& text) {
  char bytes[4096];
  const ssize_t count = read(pipe, bytes, sizeof bytes);
  if (count > 0) {
    text.append(bytes, static_cast<std::size_t>(count));
    return true;
  }
  close(pipe);
  pipe = -1;
  return false;
}

}  // namespace

std::vector<std::string> Words(const std::string& text) {
  std::istringstream words(text);
  return {std::istream_iterator<std::string>(words), {}};
}

ToolProcess::ToolProcess(const char* program, const std::vector<std::string>& arguments) {
  int out[2];
  int err[2];
  if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) {
    ADD_FAILURE() << "no pipe";
    return;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err[1], STDERR_FILENO);
  std::vector<char*> argv = {const_cast<char*>(program)};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  EXPECT_EQ(posix_spawn(&process_, program, &actions, nullptr, argv.data(), environ), 0) << program;
  posix_spawn_file_actions_destroy(&actions);
  close(out[1]);
  close(err[1]);
  out_ = out[0];
  err_ = err[0];
}

ToolProcess::~ToolProcess() {
  if (process_ > 0) kill(process_, SIGKILL);
  Finish();
}

bool ToolProcess::WaitForOutput(const std::string& text) {
  while (result_.out.find(text) == std::string::npos) {
    if (!Gather()) return false;
  }
  return true;
}

void ToolProcess::Interrupt() { kill(process_, SIGINT); }

ToolResult ToolProcess::Finish() {
  while (Gather()) {
  }
  if (process_ > 0) {
    int status = 0;
    waitpid(process_, &status, 0);
    if (WIFEXITED(status)) result_.status = WEXITSTATUS(status);
    process_ = -1;
  }
  return result_;
}

// Waits for output. False when both pipes have ended.
bool ToolProcess::Gather() {
  if (out_ < 0 && err_ < 0) return false;
  pollfd pipes[] = {
      {out_, POLLIN, 0},
      {err_, POLLIN, 0}
  };
  if (poll(pipes, 2, kPatience) <= 0) {
    ADD_FAILURE() << "the program hangs";
    kill(process_, SIGKILL);
  }
  if (pipes[0].revents != 0) Take(out_, result_.out);
  if (pipes[1].revents != 0) Take(err_, result_.err);
  return true;
}

}  // namespace fieldline::test
