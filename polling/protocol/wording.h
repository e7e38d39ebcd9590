#pragma once

#include <string>
#include <string_view>

#include "polling/protocol/protocol.h"

// Phrases that the descriptions of several protocols share.
namespace fieldline {

struct CodeName {
  BYTE code;
  std::string_view name;
};

// "unknown" for a code that is not among the names.
std::string_view NameOf(std::span<const CodeName> names, BYTE code);

std::string HexOf(BYTE byte);
std::string HexOf(WORD word);

// "1 byte", "2 bytes"
std::string Counted(std::size_t number, std::string_view what);

// ", CRC good" or ", CRC BAD"
std::string Verdict(std::string_view checksum, bool good);

// In quotation marks, escaped.
std::string Quoted(ByteSpan text);

bool Equals(ByteSpan bytes, std::string_view text);

ReplyFault ShortReply(std::size_t came, std::size_t expected);
ReplyFault WrongLength(std::size_t came);
ReplyFault WrongChecksum(const std::string& came, const std::string& belongs);
ReplyFault Refused(ByteSpan reply);

// "device 1 answered a request to device 2"
std::string OtherDevice(int answered, int asked);

// For protocols without addresses, without a checksum and without a standard length.
std::string NoMismatch(ByteSpan request, ByteSpan reply, bool any_address);
bool AlwaysSound(ByteSpan reply);
std::optional<int> NoAddress(ByteSpan reply);
std::size_t NoStandardLength(ByteSpan request);

}  // namespace fieldline
