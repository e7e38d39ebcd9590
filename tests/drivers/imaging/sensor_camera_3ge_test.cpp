#include "fieldline/drivers/imaging/sensor_camera_3ge.h"

#include <algorithm>

#include "tests/support/flash_images.h"
#include "tests/support/scripted_port.h"

namespace fieldline::test {
namespace {

constexpr char kName[] = "K20240517134500.jpeg";

class SensorCamera3ge : public testing::Test {
 public:
  SensorCamera3ge() { std::fill_n(camera_.m_pData, sizeof(CAMERA_DATA), BYTE{0xA5}); }

  SensorCamera3ge& Answer(const char* head) {
    port_.Expect(Text("UG3#")).Reply(3, Text("UG#")).Reply(4, Hex(head)).Reply(1, Hex("EE"));
    return *this;
  }

  // One read of the picture, in which `count` bytes come.
  SensorCamera3ge& Block(std::size_t count) {
    Bytes bytes(count);
    for (BYTE& byte : bytes) byte = static_cast<BYTE>(picture_.size() % 251), picture_ += static_cast<char>(byte);
    port_.Reply(512, bytes);
    return *this;
  }

  void ExpectPoll(int result, const char* length, const std::string& what) {
    EXPECT_EQ(camera_.GetData(&port_, 7), result) << what;
    EXPECT_TRUE(port_.Done()) << what;
    port_.Forget();
    EXPECT_EQ(ToHex({camera_.m_pData, camera_.m_pData + 2}), length) << what;
  }
  void ExpectStored(const char* length, const std::string& what) {
    ExpectPoll(1, length, what);
    EXPECT_EQ(camera_.m_data.name, std::string(kName)) << what;
    EXPECT_EQ(flash_.Read(kName), picture_) << what;
    picture_.clear();
  }

  FlashImages flash_;
  ScriptedPort port_;
  CSensorCamera3ge camera_;
  std::string picture_;
};

TEST_F(SensorCamera3ge, StoresThePictureAsItComes) {
  Answer("55 50 00 10");
  for (int i = 0; i < 8; ++i) Block(512);
  ExpectStored("00 10", "4096 bytes");

  Answer("55 50 58 02").Block(512).Block(88);
  ExpectStored("58 02", "600 bytes in the same second");
  Answer("55 50 58 02").Block(100).Block(1).Block(499);
  ExpectStored("58 02", "600 bytes in small pieces");
  Answer("55 50 00 00");
  ExpectStored("00 00", "no bytes");

  port_.ExpectButReport(Text("UG3#"), -1).Reply(3, Text("UG#")).Reply(4, Hex("55 50 04 00")).Reply(1, {});
  Block(4);
  ExpectStored("04 00", "neither the write's result nor the spare byte counts");
}

TEST_F(SensorCamera3ge, CountsWhatCameInsteadOfWhatWasAnnounced) {
  Answer("55 50 00 10").Block(512).Block(488).Block(0);
  ExpectStored("E8 03", "1000 of 4096 bytes");
  Answer("55 50 58 02").Block(512).Block(512);
  ExpectStored("00 04", "1024 for 600 bytes");
  Answer("55 50 FF FF");
  for (int i = 0; i < 128; ++i) Block(512);
  ExpectStored("00 00", "65536 for 65535 bytes");
}

TEST_F(SensorCamera3ge, RefusesAnotherAnswer) {
  const auto expect_refused = [&](const std::string& what) {
    ExpectPoll(0, "A5 A5", what);
    EXPECT_EQ(camera_.m_data.name[0], '\xA5') << what;
    EXPECT_TRUE(flash_.IsEmpty()) << what;
  };
  for (const char* acknowledgement : {"", "UG", "UG3", "uG#"}) {
    port_.Expect(Text("UG3#")).Reply(3, Text(acknowledgement));
    expect_refused(acknowledgement);
  }
  for (const char* head : {"", "55 50 00", "55 51 00 10", "54 50 00 10"}) {
    port_.Expect(Text("UG3#")).Reply(3, Text("UG#")).Reply(4, Hex(head));
    expect_refused(head);
  }
}

TEST_F(SensorCamera3ge, TakesThePictureFromTheLineEvenWithoutAFile) {
  if (flash_.MakeFull(kName)) {
    Answer("55 50 58 02").Block(512).Block(88);
    ExpectPoll(1, "00 00", "full");
  }
  flash_.RemoveDirectory();
  Answer("55 50 58 02").Block(512).Block(88);
  ExpectPoll(0, "58 02", "no directory");
  EXPECT_EQ(camera_.m_data.name, std::string(kName));
}

}  // namespace
}  // namespace fieldline::test
