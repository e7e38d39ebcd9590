
#include "polling/protocol/vc0706.h"
#include "tests/support/temp_directory.h"
#include "tests/tools/simulated_line.h"
#include "tests/tools/tool_process.h"
#include "tools/output/picture_progress.h"

namespace fieldline::test {
namespace {

class CameraTool : public testing::Test {
 protected:
  // Pictures are 4096 bytes, so that no read of the second camera waits for more than comes.
  std::string Start(const std::string& kind, std::vector<sim::FaultRule> faults = {}) {
    line_.Add(kind, 0).values().PutNumber("size", 4096);
    line_.SetFaults(sim::Faults(1, std::move(faults)));
    EXPECT_TRUE(line_.Start());
    return "poll " + kind + " --timeout 1,300 --flash-root " + flash_.Path().string() + " --port " + line_.Path();
  }

  const TempDirectory flash_;
  SimulatedLine line_;
};

TEST_F(CameraTool, TellsWhereThePictureIs) {
  const json poll = json::parse(ExpectTool(Start("camera") + " --json", 0, "").out);
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
  sim::FaultRule dropped = {.fault = sim::Fault::kDrop, .nth = 1};
  sim::FaultRule cut = {.fault = sim::Fault::kTruncate, .nth = 6};
  const std::string poll = Start("camera-3ge", {dropped, cut}) + " --until-good 2 --interval 300ms";
  EXPECT_THAT(ExpectTool(poll, 5, "", "the picture ends after ").err, HasSubstr("2 polls, 0 good, 2 failed"));
  ExpectTool(poll, 0, ".jpeg, 4096 bytes\n", "1 poll, 1 good, 0 failed");
}

TEST_F(CameraTool, SaysThatAPictureIsNotStored) {
  std::filesystem::create_directories(flash_.Path("NandFlash/www/wwwpub"));
  std::filesystem::create_symlink("/proc", flash_.Path("NandFlash/www/wwwpub/images"));  // takes no file from anybody
  const json poll = json::parse(ExpectTool(Start("camera-3ge") + " --json", 1, "").out);
  EXPECT_EQ(poll["error"]["code"], "not_stored");
  ExpectTool("poll camera --port COM1 --flash-root /dev/null", 2, "", "the directory can't be created");
  ExpectTool("poll envir --port COM1 --flash-root /tmp", 2, "");
}

TEST(CameraReply, IsToldWhatIsWrongWithIt) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
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
}  // namespace fieldline::test
