#include "tests/tools/tool_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <iterator>
#include <sstream>

namespace fieldline::test {
namespace {

constexpr int kPatience = 60'000;  // ms without a byte from the program

// Appends what is there, and closes `from` at the end of the output, which a terminal reports as an error.
void Take(int& from, std::string& text) {
  char bytes[4096];
  const ssize_t count = read(from, bytes, sizeof bytes);
  if (count > 0) {
    text.append(bytes, static_cast<std::size_t>(count));
    return;
  }
  close(from);
  from = -1;
}

struct Channel {
  int read;   // here
  int write;  // in the program
};

Channel Open(Output output) {
  int ends[2] = {-1, -1};
  if (output == Output::kPipes) {
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
  } else {
    ends[0] = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    EXPECT_TRUE(grantpt(ends[0]) == 0 && unlockpt(ends[0]) == 0);
    ends[1] = open(ptsname(ends[0]), O_RDWR | O_NOCTTY | O_CLOEXEC);
  }
  return {ends[0], ends[1]};
}

std::vector<std::string> Words(const std::string& text) {
  std::istringstream words(text);
  return {std::istream_iterator<std::string>(words), {}};
}

}  // namespace

ToolProcess::ToolProcess(const std::vector<std::string>& arguments, Output output) {
  const Channel out = Open(output);
  const Channel err = Open(output);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, out.write, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err.write, STDERR_FILENO);
  std::vector<char*> argv = {const_cast<char*>(FIELDLINE_TOOL)};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  EXPECT_EQ(posix_spawn(&process_, FIELDLINE_TOOL, &actions, nullptr, argv.data(), environ), 0);
  posix_spawn_file_actions_destroy(&actions);
  close(out.write);
  close(err.write);
  out_ = out.read;
  err_ = err.read;
}

ToolProcess::ToolProcess(const std::string& words, Output output) : ToolProcess(Words(words), output) {}

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

std::vector<json> Lines(const std::string& text) {
  std::vector<json> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(json::parse(line));
  return lines;
}

// Waits for output. False when both outputs have ended.
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
