// What the tests of drivers against simulated devices leave open: requests that a device must not answer, and answers
// that no driver asks for.

#include "sim/devices/basic/digital_inputs.h"
#include "sim/devices/display/display.h"
#include "sim/devices/modbus_slave.h"
#include "tests/support/make_device.h"
#include "tests/support/modbus_frames.h"
#include "tests/support/temp_directory.h"

namespace fieldline::sim {
namespace {

using test::Hex;
using test::Text;
using test::ToHex;

// What the device answers to a request; nothing when it leaves the request to others.
Bytes Ask(Device& device, const Bytes& request, bool silent = false) {
  std::vector<Reply> replies;
  const std::size_t taken = device.Receive(request, silent, replies);
  EXPECT_EQ(taken, replies.empty() ? 0 : request.size());
  return replies.empty() ? Bytes() : replies[0].bytes;
}

TEST(Devices, AnswerWhatIsTheirs) {
  const std::tuple<const char*, BYTE, const char*, const char*> cases[] = {
      {"dual-proto", 5, "\5\1\2\xFF\xF8",         ""                       }, // checksum
      {"dual-proto", 5, "\7\1\2\xF6\xFF",         ""                       }, // address
      {"dual-proto", 5, "\5\1\2\xF8",             ""                       }, // not complete
      {"ups",        0, "F\r",                    "#220.0 004 24.00 50.0\r"},
      {"ups",        0, "Q2\r",                   ""                       },
      {"ups",        0, "Q1",                     ""                       },
      {"cybermate",  7, "~210760430000FDA9",      ""                       }, // not complete
      {"cybermate",  7, "~210760430000FDA8\r",    ""                       }, // checksum
      {"cybermate",  7, "~21076043F000FD93\r",    ""                       }, // length check
      {"cybermate",  7, "~210760432001FD96\r",    ""                       }, // more announced than sent
      {"cybermate",  7, "~210860430000FDA8\r",    ""                       }, // address
      {"cybermate",  7, "~200760430000FDAA\r",    ""                       }, // version
      {"cybermate",  7, "~210761430000FDA8\r",    ""                       }, // type
      {"cybermate",  7, "\177210760430000FDA9\r", ""                       },
      {"cybermate",  7, "~\r",                    ""                       },
      {"cybermate",  7, "~210760450000FDA7\r",    "~210760040000FDAC\r"    }, // unknown command
  };
  for (const auto& [kind, address, request, reply] : cases) {
    EXPECT_EQ(Ask(*test::MakeDevice(kind, address), Text(request)), Text(reply)) << kind << ' ' << request;
  }
}

class Slave : public ModbusSlave {
 public:
  Slave() : ModbusSlave(1) {
    AddRange(coils_, 0x13, 10);
    for (const WORD on : std::initializer_list<WORD>{0x13, 0x15, 0x17, 0x18, 0x1C}) coils_[on] = true;
    holding_registers_ = {
        {0x6B, 0x022B},
        {0x6C, 0xFF38},
        {0x6D, 100   }
    };
    input_registers_[0] = input_registers_[0xFFFF] = 1;
  }
};

TEST(ModbusSlave, AnswersEachRequestOnceTheLineIsSilent) {
  const std::tuple<const char*, const char*, const char*> exchanges[] = {
      {"coils",                             "01 01 00 13 00 0A 4D C8", "01 01 02 35 02 2F 6D"            },
      {"holding registers",                 "01 03 00 6B 00 03 74 17", "01 03 06 02 2B FF 38 00 64 B4 A3"},
      {"a function that it lacks",          "01 06 00 01 00 03 98 0B", "01 86 01 83 A0"                  },
      {"one register too far",              "01 03 00 6B 00 04 35 D5", "01 83 02 C0 F1"                  },
      {"beyond the last address",           "01 04 FF FF 00 02 71 EF", "01 84 02 C2 C1"                  },
      {"no register",                       "01 03 00 6B 00 00 34 16", "01 83 03 01 31"                  },
      {"more registers than a reply holds", "01 04 00 00 00 7E 70 2A", "01 84 03 03 01"                  },
      {"more coils than a reply holds",     "01 01 00 00 07 D1 FE 66", "01 81 03 00 51"                  },
      {"a request without its count",       "01 03 00 6B B0 37",       "01 83 03 01 31"                  },
      {"another slave",                     "02 03 00 6B 00 03 74 24", ""                                },
      {"CRC high byte first",               "01 03 00 6B 00 03 17 74", ""                                },
      {"a fragment",                        "01 03",                   ""                                },
  };
  for (const auto& [what, request, reply] : exchanges) {
    Slave slave;
    EXPECT_EQ(Ask(slave, Hex(request)), Bytes()) << what;
    EXPECT_EQ(ToHex(Ask(slave, Hex(request), true)), reply) << what;
  }
  EXPECT_EQ(ToHex(Ask(*test::MakeDevice("onoff", 1), Hex("01 04 00 00 00 0B B1 CD"), true)), "01 84 02 C2 C1");
}

// Cells of 2 V and of blocks have other digits.
TEST(Ups, SendsItsBatteryVoltageInThreeOrFourDigits) {
  const auto ups = test::MakeDevice("ups", 0);
  ups->values().PutNumber("battery_voltage", 2.05);
  EXPECT_EQ(Ask(*ups, Text("Q1\r")), Text("(220.0 140.0 220.0 034 50.0 2.05 35.0 00000000\r"));
  ups->values().PutNumber("battery_voltage", 27.36);
  ups->values().PutNumber("input_voltage", 0.4);
  EXPECT_EQ(Ask(*ups, Text("Q1\r")), Text("(000.4 140.0 220.0 034 50.0 27.3 35.0 00000000\r"));
}

TEST(DigitalInputs, GoWithTheirFile) {
  const TempDirectory directory;
  {
    DigitalInputs inputs(directory.Path());
    inputs.values().PutNumber("input_1", 1);
    ASSERT_TRUE(inputs.Update());
    EXPECT_EQ(directory.ReadFile("eio1"), "\x01");
  }
  EXPECT_TRUE(std::filesystem::is_empty(directory.Path()));
  EXPECT_FALSE(DigitalInputs(directory.Path() / "missing").Update());
}

TEST(DisplayTest, ShowsWhatIsWritten) {
  Display display;
  int changes = 0;
  display.SetListener([&](Display&) { ++changes; });
  const std::pair<const char*, std::size_t> cases[] = {
      {"A5 5A 05 82 10 00 01 02",                8 },
      {"A5 5A 07 82 00 05 FF FE 00 07",          10}, // two variables from 5 on
      {"A5 5A 04 80 03 00 03 A5 5A",             7 }, // the next frame has begun
      {"A5 5A 0A 80 1F 5A 24 05 17 05 13 45 00", 13},
      {"A5 5A 0A 80 1F 00 25 06 18 06 14 46 01", 13}, // without the flag that sets the clock
      {"A5 5A 04 81 03 00 03",                   7 }, // a read
      {"A5 5A 05 82 10 00 01",                   0 },
      {"5A A5 05 82 10 00 01 02",                0 },
  };
  std::vector<Reply> replies;
  for (const auto& [frame, taken] : cases) EXPECT_EQ(display.Receive(Hex(frame), false, replies), taken) << frame;
  EXPECT_TRUE(replies.empty());
  EXPECT_EQ(changes, 4);
  EXPECT_EQ(display.Screen(),
            "+--------------------------------------+\n"
            "| page 3   24-05-17 13:45:00, day 5    |\n"
            "| 0005  65534      -2  0xFFFE          |\n"
            "| 0006      7       7  0x0007          |\n"
            "| 1000    258     258  0x0102          |\n"
            "+--------------------------------------+\n");
}

}  // namespace
}  // namespace fieldline::sim
