#include "polling/protocol/wording.h"

#include <algorithm>

#include "polling/text.h"

namespace fieldline {

std::string_view NameOf(std::span<const CodeName> names, BYTE code) {
  const auto found = std::ranges::find(names, code, &CodeName::code);
  return found != names.end() ? found->name : "unknown";
}

std::string HexOf(BYTE byte) { return Hex({&byte, 1}); }

std::string HexOf(WORD word) { return HexOf(static_cast<BYTE>(word >> 8)) + HexOf(static_cast<BYTE>(word & 0xFF)); }

std::string Counted(std::size_t number, std::string_view what) {
  return std::to_string(number) + ' ' + std::string(what) + (number == 1 ? "" : "s");
}

std::string Verdict(std::string_view checksum, bool good) {
  return ", " + std::string(checksum) + (good ? " good" : " BAD");
}

std::string Quoted(ByteSpan text) {
  return '"' + Escaped({reinterpret_cast<const char*>(text.data()), text.size()}) + '"';
}

bool Equals(ByteSpan bytes, std::string_view text) {
  return std::equal(bytes.begin(), bytes.end(), text.begin(), text.end());
}

ReplyFault ShortReply(std::size_t came, std::size_t expected) {
  return {"short_reply", std::to_string(came) + " of " + std::to_string(expected) + " bytes came"};
}

ReplyFault WrongLength(std::size_t came) {
  return {"reply_length",
          "a whole reply of " + std::to_string(came) + " bytes came, but not what this kind of device sends"};
}

ReplyFault WrongChecksum(const std::string& came, const std::string& belongs) {
  return {"checksum", "the checksum is wrong: " + came + " came where " + belongs + " belongs"};
}

ReplyFault Refused(ByteSpan reply) { return {"reply_refused", "the reply was refused: " + Hex(reply, 32)}; }

std::string OtherDevice(int answered, int asked) {
  return "device " + std::to_string(answered) + " answered a request to device " + std::to_string(asked);
}

std::string NoMismatch(ByteSpan, ByteSpan, bool) { return {}; }

bool AlwaysSound(ByteSpan) { return true; }

std::optional<int> NoAddress(ByteSpan) { return std::nullopt; }

std::size_t NoStandardLength(ByteSpan) { return 0; }

}  // namespace fieldline
