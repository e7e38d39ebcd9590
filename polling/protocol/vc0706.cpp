#include "polling/protocol/vc0706.h"

#include "fieldline/sensor/modbus.h"
#include "polling/protocol/wording.h"

namespace fieldline {
namespace {

constexpr BYTE kRequestMark = 0x56;
constexpr BYTE kReplyMark = 0x76;
constexpr std::size_t kCommandPosition = 2;
constexpr std::size_t kStatusPosition = 3;
constexpr std::size_t kShortest = 4;  // of a request, and of a reply

constexpr BYTE kReset = 0x26;
constexpr BYTE kWriteRegister = 0x31;
constexpr BYTE kReadFrame = 0x32;
constexpr BYTE kGetLength = 0x34;
constexpr BYTE kControlFrame = 0x36;

constexpr std::size_t kReadFrameLength = 16;
constexpr std::size_t kReadFrameSizePosition = 12;  // of the low half of the picture's size
constexpr std::size_t kHeadAndTrailer = 10;         // around the picture
constexpr std::size_t kLengthPosition = 5;          // in the reply to kGetLength, four bytes
constexpr BYTE kResume = 3;

constexpr CodeName kCommands[] = {
    {kReset,         "reset"           },
    {kWriteRegister, "write register"  },
    {kReadFrame,     "read frame"      },
    {kGetLength,     "get frame length"},
    {kControlFrame,  "control frame"   },
};

bool IsRequest(ByteSpan request) { return request.size() >= kShortest && request[0] == kRequestMark; }

std::string DescribeVc0706Request(ByteSpan request) {
  const BYTE command = request[kCommandPosition];
  std::string text(NameOf(kCommands, command));
  if (command == kControlFrame && request.size() >= 5) text += request[4] == kResume ? ": resume" : ": freeze";
  if (command == kWriteRegister && request.size() >= 9) {
    text.append(" ").append(HexOf(GetWordBE(&request[6]))).append(" = ").append(HexOf(request[8]));
  }
  if (const std::optional<std::size_t> picture = PictureAskedFor(request)) text += ", " + Counted(*picture, "byte");
  return text;
}

std::string DescribeVc0706Reply(ByteSpan, ByteSpan reply) {
  if (reply.size() < kShortest || reply[0] != kReplyMark) return {};
  const BYTE command = reply[kCommandPosition];
  std::string text = std::string(NameOf(kCommands, command)) + ": ";
  if (const BYTE status = reply[kStatusPosition]; status != 0) {
    return text + "refused with status " + std::to_string(status);
  }
  if (command == kGetLength && reply.size() >= kLengthPosition + 4) {
    return text + Counted(GetDwordBE(&reply[kLengthPosition]), "byte");
  }
  if (command == kReadFrame) return text + Counted(reply.size(), "byte") + " with head and trailer";
  return text + "done";
}

ReplyFault FindFault(ByteSpan request, ByteSpan reply) {
  const bool matches = request.size() >= kShortest && reply.size() >= kShortest && reply[0] == kReplyMark &&
                       reply[kCommandPosition] == request[kCommandPosition];
  if (!matches) return Refused(reply);

  const BYTE command = request[kCommandPosition];
  if (const BYTE status = reply[kStatusPosition]; status != 0) {
    return {"device_refused", "the camera refuses the command \"" + std::string(NameOf(kCommands, command)) +
                                  "\" with status " + std::to_string(status)};
  }
  if (command == kGetLength && reply.size() >= kLengthPosition + 4) {
    return {"picture_size", "the camera's picture has " + std::to_string(GetDwordBE(&reply[kLengthPosition])) +
                                " bytes; at most 65535 can be taken"};
  }
  const std::optional<std::size_t> picture = PictureAskedFor(request);
  if (picture && reply.size() < *picture + kHeadAndTrailer) return ShortReply(reply.size(), *picture + kHeadAndTrailer);
  return Refused(reply);
}

}  // namespace

std::optional<std::size_t> PictureAskedFor(ByteSpan request) {
  if (request.size() != kReadFrameLength || request[kCommandPosition] != kReadFrame) return std::nullopt;
  return GetWordBE(&request[kReadFrameSizePosition]);
}

const WireProtocol kVc0706 = {
    .is_request = IsRequest,
    .describe_request = DescribeVc0706Request,
    .describe_reply = DescribeVc0706Reply,
    .find_fault = FindFault,
    .find_frame = nullptr,
    .mismatch = NoMismatch,
    .is_sound = AlwaysSound,
    .step_name = DescribeVc0706Request,
    .reply_address = NoAddress,
    .needs_clean_line = false,
    .standard_length = NoStandardLength,
};

}  // namespace fieldline
