#include "fieldline/drivers/imaging/sensor_camera.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/flash_images.h"
#include "tests/support/scripted_port.h"

namespace fieldline::test {
namespace {

// A poll for a picture of six bytes.
struct Step {
  const char* command;
  int ask;
  const char* reply;
  std::size_t head;    // first bytes of the reply that must be right
  std::size_t tail;    // and last ones
  std::size_t needed;  // bytes that must have come
};
// clang-format off
const Step kSteps[] = {
    {"56 00 26 00",                                     4,  "76 00 26 00",                                     4, 0, 4},
    {"56 00 36 01 03",                                  20, "76 00 36 00 00",                                  5, 0, 5},
    {"56 00 31 05 01 01 12 04 80",                      20, "76 00 31 00 00",                                  5, 0, 5},
    {"56 00 36 01 00",                                  20, "76 00 36 00 00",                                  5, 0, 5},
    {"56 00 34 01 00",                                  20, "76 00 34 00 04 00 00 00 06",                      7, 0, 9},
    {"56 00 32 0C 00 0A 00 00 00 00 00 00 00 06 00 0A", 16, "76 00 32 00 00 FF D8 11 22 FF D9 76 00 32 00 00", 7, 7, 16}
};
// clang-format on
constexpr std::size_t kLengthStep = 4;
constexpr std::size_t kReadStep = 5;
constexpr char kName[] = "20240517134500.JPEG";

Bytes Cut(Bytes bytes, std::size_t length) {
  bytes.resize(length);
  return bytes;
}

class SensorCamera : public testing::Test {
 protected:
  SensorCamera() {
    std::fill_n(camera_.m_pData, sizeof(CAMERA_DATA), BYTE{0xA5});
    camera_.m_data.name[49] = '\0';
  }

  void Play(std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < end; ++i) Play(kSteps[i], Hex(kSteps[i].reply));
  }
  void Play(const Step& step, const Bytes& reply) { port_.Expect(Hex(step.command)).Reply(step.ask, reply); }

  void ExpectPoll(int result, const std::string& what) {
    EXPECT_EQ(camera_.GetData(&port_, 7), result) << what;
    EXPECT_TRUE(port_.Done()) << what;
    port_.Forget();
  }

  // What a poll that failed in a step leaves.
  void ExpectRecordOfFailureIn(std::size_t step, const std::string& what) {
    EXPECT_EQ(camera_.m_data.length, step == kReadStep ? 6 : 0xA5A5) << what;
    EXPECT_EQ(camera_.m_data.name, std::string(49, '\xA5')) << what;
    EXPECT_TRUE(flash_.IsEmpty()) << what;
    camera_.m_data.length = 0xA5A5;
  }

  FlashImages flash_;
  ScriptedPort port_;
  CSensorCamera camera_;
};

TEST_F(SensorCamera, StoresThePictureUnderTheTime) {
  std::string picture(4660, '\x5A');
  picture.replace(0, 2, "\xFF\xD8");
  picture.replace(4658, 2, "\xFF\xD9");
  Bytes frame = Hex("76 00 32 00 00");
  frame.insert(frame.end(), picture.begin(), picture.end());
  for (const BYTE byte : Hex("76 00 32 00 00")) frame.push_back(byte);

  Play(0, kLengthStep);
  Play(kSteps[kLengthStep], Hex("76 00 34 00 04 00 00 12 34"));
  port_.Expect(Hex("56 00 32 0C 00 0A 00 00 00 00 00 00 12 34 00 0A")).Reply(4670, frame);
  ExpectPoll(1, "4660 bytes");
  EXPECT_EQ(ToHex({camera_.m_pData, camera_.m_pData + 2}), "34 12");
  EXPECT_EQ(camera_.m_data.name, std::string(kName));
  EXPECT_EQ(flash_.Read(kName), picture);

  Play(0, std::size(kSteps));
  ExpectPoll(1, "6 bytes in the same second");
  EXPECT_EQ(camera_.m_data.length, 6);
  EXPECT_EQ(flash_.Read(kName), "\xFF\xD8\x11\x22\xFF\xD9");
}

TEST_F(SensorCamera, IgnoresWhatFollowsTheComparedBytes) {
  for (std::size_t i = 0; i < kReadStep; ++i) {
    Bytes reply = Hex(kSteps[i].reply);
    reply.resize(30, 0xEE);
    Play(kSteps[i], reply);
  }
  Play(kReadStep, kReadStep + 1);
  ExpectPoll(1, "");
}

TEST_F(SensorCamera, RepeatsAStepThatIsAnsweredWrongly) {
  for (std::size_t i = 0; i < std::size(kSteps); ++i) {
    const Bytes reply = Hex(kSteps[i].reply);
    std::vector<Bytes> wrong;
    for (std::size_t position = 0; position < reply.size(); ++position) {
      if (position >= kSteps[i].head && position < reply.size() - kSteps[i].tail) continue;
      wrong.push_back(reply);
      wrong.back()[position] ^= 0x01;
    }
    for (std::size_t length = 1; length < kSteps[i].needed; ++length) wrong.push_back(Cut(reply, length));

    for (const Bytes& answer : wrong) {
      const std::string what = "step " + std::to_string(i) + ": " + ToHex(answer);
      Play(0, i);
      for (int attempt = 0; attempt < 5; ++attempt) Play(kSteps[i], answer);
      ExpectPoll(0, what);
      ExpectRecordOfFailureIn(i, what);
    }
  }
  for (std::size_t i = 0; i < std::size(kSteps); ++i) {
    Play(0, i);
    for (int attempt = 0; attempt < 4; ++attempt) Play(kSteps[i], Hex("76 00 FF"));
    Play(i, std::size(kSteps));
    ExpectPoll(1, "step " + std::to_string(i) + " right at last");
  }
}

// A whole reply that is wrong in its first byte, then the first bytes of a right one: together they would do.
TEST_F(SensorCamera, DoesNotCompleteAReplyFromAnEarlierAttempt) {
  for (std::size_t i = 0; i < std::size(kSteps); ++i) {
    Bytes wrong = Hex(kSteps[i].reply);
    wrong[0] = 0x77;
    const Bytes begun = Cut(Hex(kSteps[i].reply), kSteps[i].needed - 1);
    Play(0, i);
    for (const Bytes& answer : {wrong, begun, wrong, begun, begun}) Play(kSteps[i], answer);
    ExpectPoll(0, "step " + std::to_string(i));
    ExpectRecordOfFailureIn(i, "step " + std::to_string(i));
  }
}

TEST_F(SensorCamera, GivesUpAtOnceOnSilenceAndOnARefusedCommand) {
  for (std::size_t i = 0; i < std::size(kSteps); ++i) {
    const std::string what = "step " + std::to_string(i);
    Play(0, i);
    Play(kSteps[i], {});
    ExpectPoll(0, what + " not answered");
    ExpectRecordOfFailureIn(i, what);

    const Bytes command = Hex(kSteps[i].command);
    for (const int sent : {-1, static_cast<int>(command.size()) - 1}) {
      Play(0, i);
      port_.ExpectButReport(command, sent);
      ExpectPoll(0, what + " not sent");
      ExpectRecordOfFailureIn(i, what);
    }
  }
  port_.open = 0;
  port_.calls.clear();
  ExpectPoll(0, "closed port");
  EXPECT_EQ(port_.calls, "");
}

TEST_F(SensorCamera, RefusesAPictureThatIsTooLongOrNone) {
  for (const char* reply : {"76 00 34 00 04 00 01 00 00", "76 00 34 00 04 01 00 00 06"}) {
    Play(0, kLengthStep);
    for (int attempt = 0; attempt < 5; ++attempt) Play(kSteps[kLengthStep], Hex(reply));
    ExpectPoll(0, reply);
    ExpectRecordOfFailureIn(kLengthStep, reply);
  }

  Play(0, kLengthStep);
  Play(kSteps[kLengthStep], Hex("76 00 34 00 04 00 00 00 00"));
  for (int attempt = 0; attempt < 5; ++attempt) {
    port_.Expect(Hex("56 00 32 0C 00 0A 00 00 00 00 00 00 00 00 00 0A"))
        .Reply(10, Hex("76 00 32 00 00 76 00 32 00 00"));
  }
  ExpectPoll(0, "no bytes");
  EXPECT_EQ(camera_.m_data.length, 0);
}

TEST_F(SensorCamera, TakesTheLongestPicture) {
  Bytes frame = Hex("76 00 32 00 00 FF D8");
  frame.resize(5 + 65533, 0x33);
  for (const BYTE byte : Hex("FF D9 76 00 32 00 00")) frame.push_back(byte);
  Play(0, kLengthStep);
  Play(kSteps[kLengthStep], Hex("76 00 34 00 04 00 00 FF FF"));
  port_.Expect(Hex("56 00 32 0C 00 0A 00 00 00 00 00 00 FF FF 00 0A")).Reply(65545, frame);
  ExpectPoll(1, "65535 bytes");
  EXPECT_EQ(flash_.Read(kName).size(), 65535u);
}

TEST_F(SensorCamera, SucceedsWithoutAFile) {
  const auto expect_named = [&](const char* what) {
    camera_.m_data = {};
    Play(0, std::size(kSteps));
    ExpectPoll(1, what);
    EXPECT_EQ(camera_.m_data.length, 6) << what;
    EXPECT_EQ(camera_.m_data.name, std::string(kName)) << what;
  };
  flash_.MakeFull(kName);
  expect_named("full");
  flash_.RemoveDirectory();
  expect_named("no directory");
  flash_.ReplaceDirectoryByFile();
  expect_named("a file in the directory's place");
}

}  // namespace
}  // namespace fieldline::test
