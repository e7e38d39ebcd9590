#include "polling/protocol/ug3.h"

#include "fieldline/sensor/modbus.h"
#include "polling/protocol/wording.h"

namespace fieldline {
namespace {

constexpr std::string_view kRequest = "UG3#";
constexpr std::string_view kAcknowledgement = "UG#";
constexpr std::string_view kHead = "UG#UP";
constexpr std::size_t kAnnounced = 7;  // the head and the size

bool IsRequest(ByteSpan request) { return Equals(request, kRequest); }

std::string DescribeUg3Request(ByteSpan request) { return Quoted(request) + ": take a picture"; }

std::string DescribeUg3Reply(ByteSpan, ByteSpan reply) {
  if (Equals(reply, kAcknowledgement)) return Quoted(reply) + ": acknowledged";
  if (reply.size() != kAnnounced || !AnnouncedPicture(reply)) return {};
  return "\"UP\": a picture of " + Counted(*AnnouncedPicture(reply), "byte");
}

ReplyFault FindFault(ByteSpan, ByteSpan reply) { return Refused(reply); }

}  // namespace

std::optional<std::size_t> AnnouncedPicture(ByteSpan reply) {
  if (reply.size() < kAnnounced || !Equals(reply.first(kHead.size()), kHead)) return std::nullopt;
  return GetWordLE(&reply[kHead.size()]);
}

const WireProtocol kUg3 = {
    .is_request = IsRequest,
    .describe_request = DescribeUg3Request,
    .describe_reply = DescribeUg3Reply,
    .find_fault = FindFault,
    .find_frame = nullptr,
    .mismatch = NoMismatch,
    .is_sound = AlwaysSound,
    .step_name = DescribeUg3Request,
    .reply_address = NoAddress,
    .needs_clean_line = false,
    .standard_length = NoStandardLength,
};

}  // namespace fieldline
