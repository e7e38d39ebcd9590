#include "sim/devices/imaging/card_terminal.h"

namespace fieldline::sim {
namespace {

constexpr std::size_t kCardBytes = 13;
constexpr unsigned kReadCard = 0x4A;
constexpr std::string_view kReadCardInfo = "F2EE00";

}  // namespace

CardTerminal::CardTerminal() : HexAsciiDevice({'\x7F', 0x10, 0x01, 0x80}) {
  values().Add({.name = "card", .max_length = kCardBytes, .text = "0012345678"});
  values().Add({.name = "state", .maximum = 0xFF});
}

std::optional<std::string> CardTerminal::Answer(unsigned command, std::string_view info) {
  if (command != kReadCard || info != kReadCardInfo) return std::nullopt;
  std::string card = values().Text("card");
  card.resize(kCardBytes, '\0');
  std::string answer;
  for (const char c : card) answer += HexByte(static_cast<unsigned char>(c));
  return answer + HexByte(static_cast<unsigned>(values().Number("state")));
}

}  // namespace fieldline::sim
