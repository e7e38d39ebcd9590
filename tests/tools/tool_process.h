#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/types.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace fieldline::test {

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

// For lines that reply. Shorter time-outs are for replies that never come.
constexpr char kPatiently[] = " --timeout 0,20000 --port ";

struct ToolResult {
  int status = -1;  // exit code; -1 when it was killed
  std::string out;
  std::string err;
};

enum class Output { kPipes, kTerminals };

// Runs the command in its own process, with separate standard output and standard error and no input. Kills it after a
// long time-out, and in the destructor.
class ToolProcess {
 public:
  explicit ToolProcess(const std::vector<std::string>& arguments, Output output = Output::kPipes);
  // Blanks separate the words.
  explicit ToolProcess(const std::string& words, Output output = Output::kPipes);
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
  return ToolProcess(words, output).Finish();
}

// The exit code must be this one, and both outputs must have these parts.
inline ToolResult ExpectTool(const std::string& words, int status, const std::string& out,
                             const std::string& err = "") {
  const ToolResult result = RunTool(words);
  EXPECT_EQ(result.status, status) << words << result.err;
  EXPECT_THAT(result.out, HasSubstr(out)) << words;
  EXPECT_THAT(result.err, HasSubstr(err)) << words;
  return result;
}

// The objects of an output, one a line.
std::vector<json> Lines(const std::string& text);

}  // namespace fieldline::test
