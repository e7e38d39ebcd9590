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

enum class Output { kPipes, kTerminals };

// The command in a process of its own, with standard output and standard error apart and nothing to read. It is killed
// when it outlives every patience, or this object.
class ToolProcess {
 public:
  explicit ToolProcess(const std::vector<std::string>& arguments, Output output = Output::kPipes);
  explicit ToolProcess(const std::string& words) : ToolProcess(Words(words)) {}
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

inline ToolResult RunTool(const std::vector<std::string>& arguments, Output output = Output::kPipes) {
  return ToolProcess(arguments, output).Finish();
}
inline ToolResult RunTool(const std::string& words, Output output = Output::kPipes) {
  return RunTool(Words(words), output);
}

}  // namespace fieldline::test
