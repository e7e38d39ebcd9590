#include "fieldline/drivers/imaging/sensor_camera.h"

#include <algorithm>
#include <iterator>

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
const Step kPoll[] = {
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
constexpr std::size_t kSteps = std::size(kPoll);
constexpr char kName[] = "20240517134500.JPEG";

class SensorCamera : public testing::Test {
 protected:
  SensorCamera() {
    std::fill_n(camera_.m_pData, sizeof(CAMERA_DATA), BYTE{0xA5});
    camera_.m_data.name[49] = '\0';
  }

  void Play(std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < end; ++i) PlayAnswer(i, Hex(kPoll[i].reply));
  }
  void PlayAnswer(std::size_t step, const Bytes& reply, int attempts = 1) {
    while (attempts-- > 0) port_.Expect(Hex(kPoll[step].command)).Reply(kPoll[step].ask, reply);
  }
  void ExpectPoll(int result, const std::string& what) {
    EXPECT_EQ(camera_.GetData(&port_, 7), result) << what;
    EXPECT_TRUE(port_.Done()) << what;
    port_.Forget();
  }
  void ExpectFailureIn(std::size_t step, const std::string& what) {
    SCOPED_TRACE("step " + std::to_string(step));
    ExpectPoll(0, what);
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
  const std::string head("\x76\0\x32\0\0", 5);
  Play(0, kLengthStep);
  PlayAnswer(kLengthStep, Hex("76 00 34 00 04 00 00 12 34"));
  port_.Expect(Hex("56 00 32 0C 00 0A 00 00 00 00 00 00 12 34 00 0A")).Reply(4670, Text(head + picture + head));
  ExpectPoll(1, "4660 bytes");
  EXPECT_EQ(ToHex({camera_.m_pData, camera_.m_pData + 2}), "34 12");
  EXPECT_EQ(camera_.m_data.name, std::string(kName));
  EXPECT_EQ(flash_.Read(kName), picture);

  // What follows the bytes that are compared is ignored.
  for (std::size_t i = 0; i < kReadStep; ++i) {
    Bytes reply = Hex(kPoll[i].reply);
    reply.resize(30, 0xEE);
    PlayAnswer(i, reply);
  }
  Play(kReadStep, kSteps);
  ExpectPoll(1, "6 bytes in the same second");
  EXPECT_EQ(camera_.m_data.length, 6);
  EXPECT_EQ(flash_.Read(kName), "\xFF\xD8\x11\x22\xFF\xD9");
}

TEST_F(SensorCamera, RepeatsAStepThatIsAnsweredWrongly) {
  for (std::size_t i = 0; i < kSteps; ++i) {
    const Bytes reply = Hex(kPoll[i].reply);
    std::vector<Bytes> wrong;
    for (std::size_t position = 0; position < reply.size(); ++position) {
      if (position >= kPoll[i].head && position < reply.size() - kPoll[i].tail) continue;
      wrong.push_back(reply);
      wrong.back()[position] ^= 0x01;
    }
    for (std::size_t length = 1; length < kPoll[i].needed; ++length) {
      wrong.emplace_back(reply.begin(), reply.begin() + static_cast<std::ptrdiff_t>(length));
    }
    for (const Bytes& answer : wrong) {
      Play(0, i);
      PlayAnswer(i, answer, 5);
      ExpectFailureIn(i, ToHex(answer));
    }

    // A whole reply that is wrong in its first byte, then the first bytes of a right one: together they would do.
    Play(0, i);
    for (const Bytes& answer : {wrong.front(), wrong.back(), wrong.front(), wrong.back(), wrong.back()}) {
      PlayAnswer(i, answer);
    }
    ExpectFailureIn(i, "completed from an earlier attempt");
  }
  for (std::size_t i = 0; i < kSteps; ++i) {
    Play(0, i);
    PlayAnswer(i, Hex("76 00 FF"), 4);
    Play(i, kSteps);
    ExpectPoll(1, "step " + std::to_string(i) + " right at last");
  }
}

TEST_F(SensorCamera, GivesUpAtOnceOnSilenceAndOnARefusedCommand) {
  for (std::size_t i = 0; i < kSteps; ++i) {
    Play(0, i);
    PlayAnswer(i, {});
    ExpectFailureIn(i, "not answered");
    const Bytes command = Hex(kPoll[i].command);
    for (const int sent : {-1, static_cast<int>(command.size()) - 1}) {
      Play(0, i);
      port_.ExpectButReport(command, sent);
      ExpectFailureIn(i, "not sent");
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
    PlayAnswer(kLengthStep, Hex(reply), 5);
    ExpectFailureIn(kLengthStep, reply);
  }
  Play(0, kLengthStep);
  PlayAnswer(kLengthStep, Hex("76 00 34 00 04 00 00 00 00"));
  for (int attempt = 0; attempt < 5; ++attempt) {
    port_.Expect(Hex("56 00 32 0C 00 0A 00 00 00 00 00 00 00 00 00 0A"))
        .Reply(10, Hex("76 00 32 00 00 76 00 32 00 00"));
  }
  ExpectPoll(0, "no bytes");
  EXPECT_EQ(camera_.m_data.length, 0);
}

TEST_F(SensorCamera, SucceedsWithoutAFile) {
  const auto expect_named = [&](const char* what) {
    camera_.m_data = {};
    Play(0, kSteps);
    ExpectPoll(1, what);
    EXPECT_EQ(camera_.m_data.length, 6) << what;
    EXPECT_EQ(camera_.m_data.name, std::string(kName)) << what;
  };
  if (flash_.MakeFull(kName)) expect_named("full");
  flash_.RemoveDirectory();
  expect_named("no directory");
}

}  // namespace
}  // namespace fieldline::test
