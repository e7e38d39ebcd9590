#include "polling/protocol/dual_frame.h"

#include "fieldline/sensor/modbus.h"
#include "polling/protocol/wording.h"

namespace fieldline {
namespace {

constexpr std::size_t kRequestLength = 5;
constexpr std::size_t kChecksumPosition = 3;
constexpr std::size_t kHeadLength = 3;

bool IsRequest(ByteSpan request) { return request.size() == kRequestLength && request[1] == 1 && request[2] == 2; }

std::string DescribeDualRequest(ByteSpan request) {
  const int sum = request[0] + request[1] + request[2];
  return "unit " + std::to_string(request[0]) + ": all values" +
         Verdict("checksum", GetWordLE(&request[kChecksumPosition]) == (-sum & 0xFFFF));
}

std::size_t ReplyLength(ByteSpan head) { return kHeadLength + head[2]; }

std::string DescribeDualReply(ByteSpan, ByteSpan reply) {
  if (reply.size() < kHeadLength || reply.size() < ReplyLength(reply)) return {};
  return "unit: " + Counted(reply[2], "byte") + " of values";
}

ReplyFault FindFault(ByteSpan, ByteSpan reply) {
  const std::size_t expected = reply.size() < kHeadLength ? kHeadLength : ReplyLength(reply);
  return reply.size() < expected ? ShortReply(reply.size(), expected) : WrongLength(reply.size());
}

}  // namespace

const WireProtocol kDualFrame = {
    .is_request = IsRequest,
    .describe_request = DescribeDualRequest,
    .describe_reply = DescribeDualReply,
    .find_fault = FindFault,
    .find_frame = nullptr,
    .mismatch = NoMismatch,
    .is_sound = AlwaysSound,
    .step_name = DescribeDualRequest,
    .reply_address = NoAddress,
    .needs_clean_line = true,
    .standard_length = NoStandardLength,
};

}  // namespace fieldline
