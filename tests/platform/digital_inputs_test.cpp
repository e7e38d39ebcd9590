#include "fieldline/platform/digital_inputs.h"

#include <gtest/gtest.h>

#include "fieldline/platform/device_name.h"
#include "tests/support/temp_directory.h"

namespace fieldline {
namespace {

TEST(DigitalInputsTest, OneByteIsReadFromTheMappedDevice) {
  const TempDirectory directory;
  directory.WriteFile("inputs", "\x81\x42");
  directory.WriteFile("empty", "");
  BYTE states = 0x55;
  const auto read_from = [&](const char* file) {
    EXPECT_EQ(1, MapDevice(L"EIO1:", directory.Path(file).c_str()));
    const bool done = ReadDigitalInputs(L"EIO1:", &states);
    MapDevice(L"EIO1:", nullptr);
    return done;
  };
  EXPECT_FALSE(read_from("nothing"));
  EXPECT_FALSE(read_from("empty"));
  EXPECT_FALSE(read_from("."));
  EXPECT_EQ(0x55, states);
  EXPECT_TRUE(read_from("inputs"));
  EXPECT_EQ(0x81, states);
  directory.WriteFile("inputs", "\x42");
  EXPECT_TRUE(read_from("inputs"));
  EXPECT_EQ(0x42, states);
  EXPECT_FALSE(ReadDigitalInputs(nullptr, &states));
}

}  // namespace
}  // namespace fieldline
