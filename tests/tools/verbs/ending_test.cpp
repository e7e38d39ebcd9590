#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "polling/line_file.h"
#include "tests/support/temp_directory.h"
#include "tests/tools/simulated_line.h"
#include "tests/tools/tool_process.h"

namespace fieldline {
namespace {

namespace fs = std::filesystem;

using test::RunTool;
using test::ToolProcess;
using test::ToolResult;
using testing::HasSubstr;

// Of a command line of the shell in which $T is the command.
int Shell(const std::string& line) {
  const int status = std::system(("T='" FIELDLINE_TOOL "'; " + line).c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Ending, FollowsWhenAnOutputCantBeWritten) {
  const TempDirectory directory;
  test::SimulatedLine silent;
  ASSERT_TRUE(silent.Start());
  const std::string errors = " 2>" + directory.Path("errors");
  for (const std::string words : {"kinds", "--help", "sim --json --quiet", "demo --quiet"}) {
    EXPECT_EQ(Shell("$T " + words + " >/dev/full" + errors), 6) << words;
    EXPECT_EQ(directory.ReadFile("errors"), "fieldline: standard output: No space left on device\n") << words;
  }
  EXPECT_EQ(Shell("$T poll envir --count 0 --quiet --trace=/dev/full --timeout 0,50 --port " + silent.Path() + errors),
            6);
  EXPECT_THAT(directory.ReadFile("errors"), HasSubstr("\nfieldline: /dev/full: No space left on device\n"));

  // A reader that goes away is no error.
  EXPECT_EQ(Shell("{ $T sim --json --quiet; echo $? >" + directory.Path("status") + "; } " + errors +
                  " | head -1 >/dev/null"),
            0);
  EXPECT_EQ(directory.ReadFile("status"), "0\n");
  EXPECT_EQ(directory.ReadFile("errors"), "");
}

TEST(Ending, FollowsAnInterruptAtOnceAndLeavesNothing) {
  const TempDirectory directory;
  test::SimulatedLine silent;
  ASSERT_TRUE(silent.Start());
  for (const int number : {SIGTERM, SIGHUP}) {
    ToolProcess poll("poll battery --timeout 0,60000 --trace=" + directory.Path("trace") + " --port " + silent.Path());
    while (directory.ReadFile("trace").empty()) usleep(10'000);
    fs::remove(directory.Path("trace"));
    const auto began = std::chrono::steady_clock::now();
    kill(poll.id(), number);
    EXPECT_EQ(poll.Finish().status, 1);
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(5));  // of 60
  }
  const std::string demo = "TMPDIR=" + directory.Path().string() + " timeout -s HUP 1 $T demo --watch >/dev/null";
  EXPECT_EQ(Shell(demo), 124);
  EXPECT_TRUE(fs::is_empty(directory.Path()));
  EXPECT_EQ(Shell("timeout -s HUP -k 1 1 nohup $T sim envir >/dev/null 2>&1"), 137);  // only the kill ended it
}

TEST(Links, BelongToOneSimulatorAtATime) {
  const TempDirectory directory;
  const std::string links = directory.Path().string();
  directory.WriteFile("envir.new", "not ours");
  {
    ToolProcess killed("sim envir leak onoff --quiet --links " + links);
    ASSERT_TRUE(killed.WaitForOutput("/onoff:"));
    const ToolResult second = RunTool("sim envir --links " + links);
    EXPECT_EQ(second.status, 2);
    EXPECT_THAT(second.err, HasSubstr("another simulator uses this directory"));
    kill(killed.id(), SIGKILL);
    killed.Finish();
  }
  EXPECT_TRUE(fs::is_symlink(directory.Path("onoff")));
  fs::remove(directory.Path("leak"));
  fs::create_symlink("/nowhere", directory.Path("leak"));
  {
    ToolProcess sim("sim envir --quiet --links " + links);
    ASSERT_TRUE(sim.WaitForOutput("--port " + links + "/envir:"));
    EXPECT_FALSE(fs::is_symlink(directory.Path("onoff")));
    kill(sim.id(), SIGTERM);
    EXPECT_EQ(sim.Finish().status, 0);
  }
  EXPECT_EQ(directory.ReadFile("envir.new"), "not ours");
  EXPECT_EQ(fs::read_symlink(directory.Path("leak")), "/nowhere");
  EXPECT_EQ(std::distance(fs::directory_iterator(directory.Path()), {}), 2);
  EXPECT_EQ(RunTool("sim leak --links " + links).status, 2);
}

TEST(LineFile, GoesOnInANewFileWhenReopened) {
  const TempDirectory directory;
  directory.WriteFile("log", "before\n");
  LineFile log;
  ASSERT_FALSE(log.Open(directory.Path("log"), LineFile::Mode::kAppend));
  log.Append("one\n");
  fs::rename(directory.Path("log"), directory.Path("log.1"));
  log.Append("two\n");
  log.Reopen();
  log.Append("three\n");
  EXPECT_EQ(directory.ReadFile("log.1"), "before\none\ntwo\n");
  EXPECT_EQ(directory.ReadFile("log"), "three\n");
}

}  // namespace
}  // namespace fieldline
