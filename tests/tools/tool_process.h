#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace fieldline::test {

// The words of a command line; blanks separate them.
std::vector<std::string> Words(const std::string& text);

struct ToolResult {
  int status = -1;  // exit code; -1 when it was killed
  std::string out;
  std::string err;
};

// A program in a process of its own, with its output in two pipes and nothing to read. It is killed when it outlives
// every patience, or this object.
class ToolProcess {
 public:
  ToolProcess(const char* program, const std::vector<std::string>& arguments);
  ~ToolProcess();
  ToolProcess(const ToolProcess&) = delete;
  ToolProcess& operator=(const ToolProcess&) = delete;

  pid_t id() const { return process_; }

  // Waits until `text` has been printed on standard output. False when the program ended without.
  bool WaitForOutput(const std::string& text);

  // What Ctrl-C does.
  void Interrupt();

  // Waits for the end.
  ToolResult Finish();

  const std::string& output() const { return result_.out; }

 private:
  bool Gather();

  pid_t process_ = -1;
  int out_ = -1;
  int err_ = -1;
  ToolResult result_;
};

}  // namespace fieldline::test
