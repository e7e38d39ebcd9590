#include "sim/devices/modbus_slave.h"

#include <gtest/gtest.h>

#include <initializer_list>

#include "tests/support/scripted_port.h"

namespace fieldline::sim {
namespace {

using test::Hex;
using test::ToHex;

class Slave : public ModbusSlave {
 public:
  Slave() : ModbusSlave(1) {
    AddRange(coils_, 0x13, 10);
    for (const WORD on : std::initializer_list<WORD>{0x13, 0x15, 0x17, 0x18, 0x1C}) coils_[on] = true;
    AddRange(discrete_inputs_, 0x13, 10);
    for (const WORD on : std::initializer_list<WORD>{0x13, 0x16, 0x19, 0x1A, 0x1B}) discrete_inputs_[on] = true;
    holding_registers_ = {
        {0x6B, 0x022B},
        {0x6C, 0xFF38},
        {0x6D, 100   }
    };
    input_registers_ = {
        {0,      1 },
        {8,      10},
        {0xFFFF, 1 }
    };
  }
};

TEST(ModbusSlave, AnswersEachRequest) {
  struct Exchange {
    const char* what;
    const char* request;
    const char* reply;  // empty: none
  };
  const Exchange exchanges[] = {
      {"coils",                             "01 01 00 13 00 0A 4D C8", "01 01 02 35 02 2F 6D"            },
      {"discrete inputs",                   "01 02 00 13 00 0A 09 C8", "01 02 02 C9 01 2E 28"            },
      {"holding registers",                 "01 03 00 6B 00 03 74 17", "01 03 06 02 2B FF 38 00 64 B4 A3"},
      {"input register",                    "01 04 00 08 00 01 B0 08", "01 04 02 00 0A 39 37"            },
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
  for (const Exchange& exchange : exchanges) {
    SCOPED_TRACE(exchange.what);
    Slave slave;
    std::vector<Reply> replies;
    const Bytes request = Hex(exchange.request);
    EXPECT_EQ(slave.Hear(request, false, replies), 0u);  // the frame ends with silence only
    EXPECT_TRUE(replies.empty());
    const bool answers = *exchange.reply != '\0';
    EXPECT_EQ(slave.Hear(request, true, replies), answers ? request.size() : 0u);
    ASSERT_EQ(replies.size(), answers ? 1u : 0u);
    if (answers) {
      EXPECT_EQ(ToHex(replies[0].bytes), exchange.reply);
    }
  }
}

}  // namespace
}  // namespace fieldline::sim
