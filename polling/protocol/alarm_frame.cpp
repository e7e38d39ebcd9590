#include "polling/protocol/alarm_frame.h"

#include <algorithm>

#include "fieldline/alarm/alarm_link.h"
#include "fieldline/sensor/modbus.h"
#include "polling/protocol/wording.h"

namespace fieldline {
namespace {

constexpr BYTE kStartMark = 0xAA;
constexpr BYTE kEndMark = 0x55;
constexpr std::size_t kHeadLength = 3;
constexpr std::size_t kCommandPosition = 3;
constexpr std::size_t kPayloadPosition = 4;
constexpr std::size_t kOverhead = 6;           // all but the payload
constexpr std::size_t kMostReplyPayload = 29;  // that the library accepts

constexpr BYTE kBeginMms = 0x12;
constexpr BYTE kMmsData = 0x13;
constexpr BYTE kEndMmsData = 0x14;
constexpr BYTE kSendMms = 0x15;

constexpr CodeName kCommands[] = {
    {0x01,        "get identity"   },
    {0x02,        "get status"     },
    {0x03,        "clear text"     },
    {0x04,        "set text"       },
    {0x05,        "set snapshot"   },
    {0x06,        "signal quality" },
    {0x07,        "remote requests"},
    {0x10,        "reset GSM"      },
    {0x11,        "send SMS"       },
    {kBeginMms,   "begin MMS"      },
    {kMmsData,    "MMS data"       },
    {kEndMmsData, "end of MMS data"},
    {kSendMms,    "send MMS"       },
    {0x20,        "reset PSTN"     },
    {0x21,        "dial"           },
    {0x31,        "speak"          },
    {0x32,        "switch relay"   },
    {0x33,        "read inputs"    },
};

// Payload length from the head, of which three bytes must be there.
std::size_t PayloadLength(ByteSpan frame) { return GetWordBE(&frame[1]); }

// Checksum over command and payload.
BYTE ChecksumOf(ByteSpan frame, std::size_t payload) {
  return alm_xor_sum(&frame[kCommandPosition], static_cast<std::int16_t>(payload + 1));
}

bool IsRequest(ByteSpan request) {
  return request.size() >= kOverhead && request[0] == kStartMark && request.back() == kEndMark;
}

std::string Describe(ByteSpan frame) {
  if (frame.size() < kOverhead || frame.size() < PayloadLength(frame) + kOverhead) return {};
  const std::size_t payload = PayloadLength(frame);
  const BYTE command = frame[kCommandPosition];
  return "command " + HexOf(command) + " (" + std::string(NameOf(kCommands, command)) + "), " +
         Counted(payload, "byte") +
         Verdict("checksum", frame[kPayloadPosition + payload] == ChecksumOf(frame, payload));
}

std::string DescribeAlarmReply(ByteSpan, ByteSpan reply) { return Describe(reply); }

ReplyFault FindFault(ByteSpan request, ByteSpan reply) {
  if (reply.size() < kHeadLength) return ShortReply(reply.size(), kOverhead);
  const std::size_t payload = PayloadLength(reply);
  if (payload > kMostReplyPayload) {
    return {"reply_length", "the reply announces " + std::to_string(payload) + " bytes of payload"};
  }
  if (reply.size() < payload + kOverhead) return ShortReply(reply.size(), payload + kOverhead);

  const BYTE command = reply[kCommandPosition];
  if (command != request[kCommandPosition]) {
    return {"reply_command",
            "the reply is to command " + HexOf(command) + " and not to " + HexOf(request[kCommandPosition])};
  }
  const BYTE came = reply[kPayloadPosition + payload];
  const BYTE belongs = ChecksumOf(reply, payload);
  if (came != belongs) return WrongChecksum(HexOf(came), HexOf(belongs));
  const bool has_status = command == kBeginMms || command == kEndMmsData || command == kSendMms;
  if (has_status && payload > 0 && reply[kPayloadPosition] != 0) {
    return {"device_refused", "the board refuses the MMS with status " + std::to_string(reply[kPayloadPosition])};
  }
  return WrongLength(reply.size());
}

}  // namespace

Bytes MakeAlarmFrame(BYTE command, ByteSpan payload) {
  Bytes frame(payload.size() + kOverhead);
  frame[0] = kStartMark;
  frame[1] = static_cast<BYTE>(payload.size() >> 8);
  frame[2] = static_cast<BYTE>(payload.size() & 0xFF);
  frame[kCommandPosition] = command;
  std::ranges::copy(payload, frame.begin() + kPayloadPosition);
  frame[kPayloadPosition + payload.size()] = ChecksumOf(frame, payload.size());
  frame.back() = kEndMark;
  return frame;
}

std::size_t MmsBytesIn(ByteSpan request) {
  return IsRequest(request) && request[kCommandPosition] == kMmsData ? request.size() - kOverhead : 0;
}

const WireProtocol kAlarmFrame = {
    .is_request = IsRequest,
    .describe_request = Describe,
    .describe_reply = DescribeAlarmReply,
    .find_fault = FindFault,
    .find_frame = nullptr,
    .mismatch = NoMismatch,
    .is_sound = AlwaysSound,
    .step_name = Describe,
    .reply_address = NoAddress,
    .needs_clean_line = false,
    .standard_length = NoStandardLength,
};

}  // namespace fieldline
