#include "polling/protocol/hex_ascii.h"

#include "fieldline/drivers/ascii/hex_frame.h"
#include "polling/protocol/wording.h"
#include "polling/text.h"

namespace fieldline {
namespace {

constexpr std::size_t kShortest = FrameLength(0);
constexpr BYTE kCardSoi = 0x7F;
constexpr std::size_t kVerPosition = 1;
constexpr std::size_t kAdrPosition = 3;
constexpr std::size_t kCid1Position = 5;
constexpr std::size_t kChecksumLength = 4;

constexpr CodeName kCommands[] = {
    {0x41, "analog values, floating point"},
    {0x42, "analog values, fixed point"   },
    {0x43, "switch states"                },
    {0x44, "alarm states"                 },
    {0x47, "parameters, fixed point"      },
};

constexpr CodeName kReturns[] = {
    {0, "executed"              },
    {1, "wrong protocol version"},
    {2, "wrong frame checksum"  },
    {3, "wrong length checksum" },
    {4, "unknown command"       },
    {5, "wrong command format"  },
    {6, "invalid data"          },
};

BYTE ByteAt(ByteSpan frame, std::size_t position) { return GetHexByte(&frame[position]); }

// The correct checksum of a frame of that length.
WORD ChecksumOf(ByteSpan frame) {
  return GetFrameChecksum(&frame[1], static_cast<int>(frame.size()) - kTrailLength - 1);
}

ByteSpan ChecksumIn(ByteSpan frame) { return frame.last(kTrailLength).first(kChecksumLength); }

bool IsRequest(ByteSpan request) {
  return request.size() >= kShortest && (request[0] == kSoi || request[0] == kCardSoi) && request.back() == kEoi;
}

std::string Describe(ByteSpan frame, std::string_view code_field, std::span<const CodeName> codes) {
  if (frame.size() < kShortest || frame.back() != kEoi) return {};
  const BYTE code = ByteAt(frame, kRtnPosition);
  const WORD length = GetHexWord(&frame[kLengthPosition]);
  const WORD lenid = length & 0xFFF;
  return "device " + std::to_string(ByteAt(frame, kAdrPosition)) + ": VER " + HexOf(ByteAt(frame, kVerPosition)) +
         ", CID1 " + HexOf(ByteAt(frame, kCid1Position)) + ", " + std::string(code_field) + ' ' + HexOf(code) + " (" +
         std::string(NameOf(codes, code)) + "), LENID " + std::to_string(lenid) +
         (GetLengthWord(lenid) == length ? "" : " with a BAD check nibble") +
         Verdict("CHKSUM", GetHexWord(ChecksumIn(frame).data()) == ChecksumOf(frame));
}

std::string DescribeHexAsciiRequest(ByteSpan request) { return Describe(request, "CID2", kCommands); }

std::string DescribeHexAsciiReply(ByteSpan, ByteSpan reply) { return Describe(reply, "RTN", kReturns); }

ReplyFault FindFault(ByteSpan request, ByteSpan reply) {
  if (reply.front() != request.front()) {
    return {"reply_start", "the reply begins with " + Hex(reply, 1) + " and not with " + Hex(request, 1)};
  }
  if (reply.size() < kShortest) return ShortReply(reply.size(), kShortest);

  const BYTE code = ByteAt(reply, kRtnPosition);
  if (code != 0) {
    return {"device_refused", "the device refuses the command with return code " + HexOf(code) + " (" +
                                  std::string(NameOf(kReturns, code)) + ")"};
  }
  const int lenid = GetHexWord(&reply[kLengthPosition]) & 0xFFF;
  const auto announced = static_cast<std::size_t>(FrameLength(lenid));
  if (reply.size() < announced) return ShortReply(reply.size(), announced);

  const std::string belongs = HexOf(ChecksumOf(reply));
  const ByteSpan checksum = ChecksumIn(reply);
  const std::string came(checksum.begin(), checksum.end());
  if (came != belongs) return WrongChecksum(came, belongs);
  return WrongLength(reply.size());
}

bool HasChecksum(ByteSpan frame) {
  return frame.size() >= kShortest && GetHexWord(ChecksumIn(frame).data()) == ChecksumOf(frame);
}

// Length of the frame that begins here, 0 when none does. 13 characters must be there.
std::size_t LengthOfFrameAt(ByteSpan bytes) {
  const WORD length = GetHexWord(&bytes[kLengthPosition]);
  const WORD lenid = length & 0xFFF;
  return GetLengthWord(lenid) == length ? static_cast<std::size_t>(FrameLength(lenid)) : 0;
}

std::optional<FoundFrame> FindFrame(ByteSpan request, ByteSpan received, bool no_more) {
  for (std::size_t begin = 0; begin < received.size(); ++begin) {
    if (received[begin] != request[0]) continue;
    const ByteSpan rest = received.subspan(begin);
    const bool has_head = rest.size() >= kInfoPosition;
    const std::size_t length = has_head ? LengthOfFrameAt(rest) : kShortest;
    if (length == 0) continue;
    if (rest.size() >= length) {
      const ByteSpan frame = rest.first(length);
      if (frame.back() == kEoi && HasChecksum(frame)) return FoundFrame{begin, length};
    } else if (!no_more) {
      return std::nullopt;
    }
  }
  return std::nullopt;
}

// Not compared for the card terminal: it is alone on its line, and its address has no meaning.
std::string Mismatch(ByteSpan request, ByteSpan reply, bool any_address) {
  if (request[0] != kSoi || reply.size() < kRtnPosition) return {};
  const BYTE asked = ByteAt(request, kAdrPosition);
  const BYTE answered = ByteAt(reply, kAdrPosition);
  if (!any_address && answered != asked) return OtherDevice(answered, asked);
  const BYTE type = ByteAt(reply, kCid1Position);
  if (type == ByteAt(request, kCid1Position)) return {};
  return "device " + std::to_string(answered) + " answered as a device of type " + HexOf(type) + ", not " +
         HexOf(ByteAt(request, kCid1Position));
}

std::string StepName(ByteSpan request) {
  return request.size() < kLengthPosition ? "request" : std::string(NameOf(kCommands, ByteAt(request, kRtnPosition)));
}

std::optional<int> ReplyAddress(ByteSpan reply) {
  return reply.size() < kCid1Position ? std::nullopt : std::optional<int>(ByteAt(reply, kAdrPosition));
}

}  // namespace

const WireProtocol kHexAscii = {
    .is_request = IsRequest,
    .describe_request = DescribeHexAsciiRequest,
    .describe_reply = DescribeHexAsciiReply,
    .find_fault = FindFault,
    .find_frame = FindFrame,
    .mismatch = Mismatch,
    .is_sound = HasChecksum,
    .step_name = StepName,
    .reply_address = ReplyAddress,
    .needs_clean_line = false,
    .standard_length = NoStandardLength,
};

}  // namespace fieldline
