#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "fieldline/kinds.h"

namespace fieldline {

using ByteSpan = std::span<const BYTE>;

// What is wrong with a reply.
struct ReplyFault {
  std::string_view code;  // for programs, such as "checksum"
  std::string message;    // for people
};

// A frame among received bytes.
struct FoundFrame {
  std::size_t begin;
  std::size_t length;
};

// How the bytes of a wire protocol are read. Each protocol has one, in its own pair of files.
struct WireProtocol {
  // Whether bytes that were sent are a request of this protocol.
  bool (*is_request)(ByteSpan request);

  // The meaning of the bytes in words. Empty when it is unknown, and while a reply is incomplete.
  std::string (*describe_request)(ByteSpan request);
  std::string (*describe_reply)(ByteSpan request, ByteSpan reply);

  // Why a driver refused the reply. Request and reply have at least one byte each.
  ReplyFault (*find_fault)(ByteSpan request, ByteSpan reply);

  // The first whole frame with a correct checksum, from any device. Nothing when there is none. `no_more` says that the
  // line pauses; without it, a frame that begins at the first byte may still be incomplete, and later bytes are not
  // searched. Null for a protocol whose replies only the driver can tell from noise.
  std::optional<FoundFrame> (*find_frame)(ByteSpan request, ByteSpan received, bool no_more);

  // Why a frame is not the reply to the request, such as "device 1 answered a request to device 2"; empty when it is
  // the reply. With `any_address` the address is not compared.
  std::string (*mismatch)(ByteSpan request, ByteSpan reply, bool any_address);

  // Whether the checksum of an accepted reply is correct. Some drivers do not check it.
  bool (*is_sound)(ByteSpan reply);

  // What a request asks for, in one or two words: "status".
  std::string (*step_name)(ByteSpan request);

  // The address in a reply. Nothing when the protocol has none, or the reply is too short.
  std::optional<int> (*reply_address)(ByteSpan reply);

  // Whether a reply only counts when no other bytes come with it, because nothing in it shows where it begins.
  bool needs_clean_line;

  // Length of the reply according to the protocol's standard; 0 when there is no standard.
  std::size_t (*standard_length)(ByteSpan request);
};

// The protocol of a device of this kind at this address. The kind must have a line.
const WireProtocol& ProtocolOf(const Kind& kind, int address);

// "device 1: function 3 (read holding registers) from 0, count 2, CRC good". The protocol is recognised from the
// request; empty when it is unknown.
std::string DescribeRequest(ByteSpan request);
std::string DescribeReply(ByteSpan request, ByteSpan reply);

// Why a driver refused the reply. Also recognises an echo of the request.
ReplyFault FindReplyFault(const WireProtocol& protocol, ByteSpan request, ByteSpan reply);

}  // namespace fieldline
