#include "polling/protocol/dgus.h"

#include "fieldline/sensor/modbus.h"
#include "polling/protocol/wording.h"
#include "polling/text.h"

namespace fieldline {
namespace {

constexpr std::size_t kCommandPosition = 3;
constexpr BYTE kWriteVariables = 0x82;
constexpr BYTE kPageRegister = 0x03;
constexpr BYTE kClockRegister = 0x1F;

bool IsRequest(ByteSpan request) { return request.size() >= 4 && request[0] == 0xA5 && request[1] == 0x5A; }

std::string DescribeDgusRequest(ByteSpan request) {
  const BYTE command = request[kCommandPosition];
  if (request.size() == 8 && command == kWriteVariables) {
    return "variable " + HexOf(GetWordBE(&request[4])) + " = " + std::to_string(GetWordBE(&request[6]));
  }
  if (request.size() == 7 && request[4] == kPageRegister) return "page " + std::to_string(GetWordBE(&request[5]));
  if (request.size() == 13 && request[4] == kClockRegister) return "clock " + Hex(request.subspan(6));
  return "command " + HexOf(command);
}

std::string DescribeDgusReply(ByteSpan, ByteSpan) { return {}; }

ReplyFault FindFault(ByteSpan, ByteSpan reply) { return Refused(reply); }

}  // namespace

const WireProtocol kDgus = {
    .is_request = IsRequest,
    .describe_request = DescribeDgusRequest,
    .describe_reply = DescribeDgusReply,
    .find_fault = FindFault,
    .find_frame = nullptr,
    .mismatch = NoMismatch,
    .is_sound = AlwaysSound,
    .step_name = DescribeDgusRequest,
    .reply_address = NoAddress,
    .needs_clean_line = false,
    .standard_length = NoStandardLength,
};

}  // namespace fieldline
