#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "fieldline/kinds.h"
#include "polling/kind_name.h"
#include "polling/protocol/vc0706.h"
#include "tests/support/scripted_port.h"
#include "tests/support/temp_directory.h"
#include "tests/tools/simulated_line.h"
#include "tests/tools/tool_process.h"
#include "tools/output/picture_progress.h"

namespace fieldline {
namespace {

using nlohmann::json;
using test::Hex;
using test::kAnySpeed;
using test::RunTool;
using test::ToolProcess;
using test::ToolResult;
using test::Words;
using testing::HasSubstr;
using testing::StartsWith;

class CameraTool : public testing::Test {
 protected:
  void Start(std::string_view kind, const std::string& size, std::vector<sim::FaultRule> faults = {}) {
    std::string error;
    EXPECT_TRUE(line_.Add(test::MakeDevice(kind, 0)).values().Set("size", size, &error)) << error;
    line_.SetFaults(sim::Faults(1, std::move(faults)));
    ASSERT_TRUE(line_.Start());
  }

  // Pictures of the tests are 4096 bytes, so that no read of the second camera waits for more than comes.
  ToolResult Poll(const std::string& arguments) {
    return RunTool("poll " + arguments + " --timeout 1,300 --flash-root " + flash_.Path().string() + " --port " +
                   line_.Path());
  }

  TempDirectory flash_;
  sim::Line line_{kAnySpeed};
};

TEST_F(CameraTool, TellsWhereThePictureIs) {
  Start("camera", "4096");
  const ToolResult result = Poll("camera --json");
  ASSERT_EQ(result.status, 0) << result.err;
  const json poll = json::parse(result.out);
  const std::string path = poll["picture"]["path"];
  EXPECT_THAT(path, StartsWith(flash_.Path("NandFlash/www/wwwpub/images/20")));
  EXPECT_EQ(poll["record"]["name"], std::filesystem::path(path).filename().string());
  EXPECT_EQ(poll["record"]["length"], 4096);
  EXPECT_EQ(poll["picture"]["size"], 4096);
  EXPECT_EQ(std::filesystem::file_size(path), 4096u);
}

TEST_F(CameraTool, PollsUntilThePictureIsGood) {
  // Acknowledgement, head and picture are a reply each. The first poll lacks the acknowledgement, the second a part of
  // the picture.
  Start("camera-3ge", "4096",
        {
            {.fault = sim::Fault::kDrop,     .nth = 1},
            {.fault = sim::Fault::kTruncate, .nth = 6}
  });
  ToolResult result = Poll("camera-3ge --until-good 2 --interval 300ms");
  EXPECT_EQ(result.status, 5) << result.err;
  EXPECT_THAT(result.err, HasSubstr("the picture breaks off after "));
  EXPECT_THAT(result.err, HasSubstr("2 polls, 0 good, 2 failed"));
  result = Poll("camera-3ge --until-good 2 --interval 300ms");
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.err, HasSubstr("1 poll, 1 good, 0 failed"));
  EXPECT_THAT(result.out, HasSubstr(".jpeg, 4096 bytes\n"));
}

TEST_F(CameraTool, SaysThatAPictureIsNotStored) {
  std::filesystem::create_directories(flash_.Path("NandFlash/www/wwwpub"));
  std::filesystem::create_symlink("/proc", flash_.Path("NandFlash/www/wwwpub/images"));  // takes no file from anybody
  Start("camera-3ge", "4096");
  ToolResult result = Poll("camera-3ge --json");
  EXPECT_EQ(result.status, 1) << result.err;
  EXPECT_EQ(json::parse(result.out)["error"]["code"], "not_stored");

  result = RunTool("poll camera --port COM1 --flash-root /dev/null");
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.err, HasSubstr("no directory can be made there"));
  EXPECT_EQ(RunTool("poll envir --port COM1 --flash-root /tmp").status, 2);
}

TEST(CameraReply, IsToldWhatIsWrongWithIt) {
  const struct {
    const char* request;
    const char* reply;
    const char* message;
  } cases[] = {
      {"56 00 36 01 00",                                  "76 00 36 03 00",             "with status 3"       },
      {"56 00 34 01 00",                                  "76 00 34 00 04 00 01 00 00", "has 65536 bytes"     },
      {"56 00 32 0C 00 0A 00 00 00 00 00 00 12 34 00 0A", "76 00 32 00 00 FF D8",       "7 of 4670 bytes came"},
      {"56 00 26 00",                                     "55 55",                      "refused: 55 55"      },
      {"56 00",                                           "76 00 26 00",                "refused"             },
  };
  for (const auto& [request, reply, message] : cases) {
    EXPECT_THAT(FindReplyFault(kVc0706, Hex(request), Hex(reply)).message, HasSubstr(message));
  }
}

TEST(PictureProgress, CountsTheBytesOfAPicture) {
  tool::PictureProgress progress(nullptr, false);
  const auto write = [&](const char* hex) { progress.OnSerWrite(Hex(hex).data(), static_cast<int>(Hex(hex).size())); };
  const auto read = [&](const char* hex) { progress.OnSerRead(Hex(hex).data(), static_cast<int>(Hex(hex).size())); };
  write("55 47 33 23");
  for (const char* head : {"55 47 23", "55 50 00 10", "00"}) read(head);
  EXPECT_EQ(progress.Detail(), "");
  read("FF D8 11");
  read("22 33");
  EXPECT_EQ(progress.Detail(), "5 of 4096 bytes");
  write("56 00 32 0C 00 0A 00 00 00 00 00 00 12 34 00 0A");
  EXPECT_EQ(progress.Detail(), "a picture of 4660 bytes is coming");
}

}  // namespace
}  // namespace fieldline
