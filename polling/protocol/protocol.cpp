#include "polling/protocol/protocol.h"

#include <algorithm>

#include "polling/protocol/alarm_frame.h"
#include "polling/protocol/dgus.h"
#include "polling/protocol/dual_frame.h"
#include "polling/protocol/hex_ascii.h"
#include "polling/protocol/modbus_rtu.h"
#include "polling/protocol/q1.h"
#include "polling/protocol/ug3.h"
#include "polling/protocol/vc0706.h"

namespace fieldline {
namespace {

// The protocol of a request, null when it is unknown. A correct checksum is tested before start marks, because a start
// mark may be a Modbus address. A request that only has the shape of a Modbus request is taken as one last.
const WireProtocol* Recognise(ByteSpan request) {
  if (HasModbusCrc(request).value_or(false)) return &kModbusRtu;
  for (const WireProtocol* const protocol :
       {&kQ1, &kUg3, &kDualFrame, &kHexAscii, &kAlarmFrame, &kDgus, &kVc0706, &kModbusRtu}) {
    if (protocol->is_request(request)) return protocol;
  }
  return nullptr;
}

}  // namespace

const WireProtocol& ProtocolOf(const Kind& kind, int address) {
  switch (kind.protocol) {
    case Protocol::kDualProto:
      return address % 2 == 0 ? kModbusRtu : kDualFrame;
    case Protocol::kQ1:
      return kQ1;
    case Protocol::kHexAscii:
      return kHexAscii;
    case Protocol::kVc0706:
      return kVc0706;
    case Protocol::kUg3:
      return kUg3;
    case Protocol::kAlarmBoard:
      return kAlarmFrame;
    case Protocol::kDgus:
      return kDgus;
    default:
      return kModbusRtu;
  }
}

std::string DescribeRequest(ByteSpan request) {
  const WireProtocol* const protocol = Recognise(request);
  return protocol != nullptr ? protocol->describe_request(request) : std::string();
}

std::string DescribeReply(ByteSpan request, ByteSpan reply) {
  const WireProtocol* const protocol = reply.empty() ? nullptr : Recognise(request);
  return protocol != nullptr ? protocol->describe_reply(request, reply) : std::string();
}

ReplyFault FindReplyFault(const WireProtocol& protocol, ByteSpan request, ByteSpan reply) {
  const bool is_echo = reply.size() >= request.size() && std::equal(request.begin(), request.end(), reply.begin());
  // A UPS sends back a command that it does not know. "Q1" is known to all: coming back, it is an echo.
  const bool unknown_to_ups = &protocol == &kQ1 && request.size() < kQ1StatusLength;
  if (is_echo && unknown_to_ups) {
    return {"device_refused", "the UPS does not know the command and sent it back"};
  }
  if (is_echo) {
    return {"echo",
            "the request came back as the reply: the adapter echoes what it sends, or receive is wired to transmit"};
  }
  return protocol.find_fault(request, reply);
}

}  // namespace fieldline
