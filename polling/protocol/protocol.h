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

// What can be told of a wire protocol from its bytes. Each protocol has one, in a pair of files of its own.
struct WireProtocol {
  // Whether bytes that were sent are a request of this protocol.
  bool (*is_request)(ByteSpan request);

  // What the bytes mean, in words. Empty when they say nothing; of a reply also while it is incomplete.
  std::string (*describe_request)(ByteSpan request);
  std::string (*describe_reply)(ByteSpan request, ByteSpan reply);

  // Why a driver refused the reply. Request and reply have at least one byte each.
  ReplyFault (*find_fault)(ByteSpan request, ByteSpan reply);

  // The first whole frame with a right checksum, whoever sent it. Nothing while there is none: a frame that has begun
  // at the front may still be coming, unless `no_more` says that the line pauses. Null for a protocol whose replies
  // can't be told from noise before a driver has judged them.
  std::optional<FoundFrame> (*find_frame)(ByteSpan request, ByteSpan received, bool no_more);

  // Why a frame is not the reply to the request, such as "device 1 answered a request to device 2"; empty when it is.
  // With `any_address` the address is not compared.
  std::string (*mismatch)(ByteSpan request, ByteSpan reply, bool any_address);

  // Whether the checksum of a reply that a driver accepted is right. Some drivers don't look.
  bool (*is_sound)(ByteSpan reply);

  // What a request asks for, in a word or two: "status".
  std::string (*step_name)(ByteSpan request);

  // The address that a reply carries. Nothing where the protocol has none, or before it has come.
  std::optional<int> (*reply_address)(ByteSpan reply);

  // Whether a reply counts only when nothing else came with it, since nothing in it tells where it begins.
  bool needs_clean_line;

  // How many bytes a device that keeps to the standard answers with. 0 where there is no such standard.
  std::size_t (*standard_length)(ByteSpan request);
};

// The protocol that a device of this kind speaks at this address. The kind has a line.
const WireProtocol& ProtocolOf(const Kind& kind, int address);

// "device 1: function 3 (read holding registers) from 0, count 2, CRC good", for whatever protocol the request shows
// itself to be of; empty when it shows none.
std::string DescribeRequest(ByteSpan request);
std::string DescribeReply(ByteSpan request, ByteSpan reply);

// Why a driver refused the reply; an echo of the request is told from other replies.
ReplyFault FindReplyFault(const WireProtocol& protocol, ByteSpan request, ByteSpan reply);

}  // namespace fieldline
