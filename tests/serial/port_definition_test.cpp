#include "fieldline/serial/port_definition.h"

#include <gtest/gtest.h>

#include <tuple>

namespace fieldline {
namespace {

struct Case {
  const wchar_t* definition;
  bool parses;
  std::uint32_t baud;
  Parity parity;
  std::uint32_t data_bits;
  StopBits stop_bits;
};

TEST(PortDefinition, ReadsFourFieldsBehindTheFirstColon) {
  const Case cases[] = {
      {L"COM1:9600,n,8,1",        true,  9600,       Parity::kNone,  8, StopBits::kOne       },
      {L"COM2:19200,e,7,2",       true,  19200,      Parity::kEven,  7, StopBits::kTwo       },
      {L"COM2:19200,E,7,1.5",     true,  19200,      Parity::kEven,  7, StopBits::kOneAndHalf},
      {L"COM2:300,Odd,5,1",       true,  300,        Parity::kOdd,   5, StopBits::kOne       },
      {L"COM2:9600,m,8,1",        true,  9600,       Parity::kMark,  8, StopBits::kOne       },
      {L"COM2:9600,S,8,1",        true,  9600,       Parity::kSpace, 8, StopBits::kOne       },
 // An unreadable field gets its default.
      {L"COM2:,x,8,1",            true,  9600,       Parity::kNone,  8, StopBits::kOne       },
      {L"COM2:fast,,many,3",      true,  9600,       Parity::kNone,  8, StopBits::kOne       },
      {L"COM2:-300,o,7,1.50",     true,  9600,       Parity::kOdd,   7, StopBits::kOne       },
      {L"COM2:  1200x9,n, 7,2 ",  true,  1200,       Parity::kNone,  7, StopBits::kOne       },
      {L"COM2:99999999999,n,8,1", true,  4294967295, Parity::kNone,  8, StopBits::kOne       },
 // A comma in the last place belongs to its field.
      {L"COM2:9600,n,8,2,",       true,  9600,       Parity::kNone,  8, StopBits::kOne       },
      {L"COM2:2400,e,7,,",        true,  2400,       Parity::kEven,  7, StopBits::kOne       },
 // Other than four fields.
      {L"COM2:",                  false, 0,          {},             0, {}                   },
      {L"COM2:9600,n,8",          false, 0,          {},             0, {}                   },
      {L"COM2:9600,n,8,",         false, 0,          {},             0, {}                   },
      {L"COM2:9600,n,8,1,0",      false, 0,          {},             0, {}                   },
  };
  for (const auto& [definition, parses, baud, parity, data_bits, stop_bits] : cases) {
    LineSettings settings{.baud = 0, .data_bits = 0, .parity = {}, .stop_bits = {}};
    EXPECT_EQ(ParseLineSettings(definition, &settings), parses) << definition;
    EXPECT_EQ(std::tie(settings.baud, settings.parity, settings.data_bits, settings.stop_bits),
              std::tie(baud, parity, data_bits, stop_bits))
        << definition;
  }
}

}  // namespace
}  // namespace fieldline
