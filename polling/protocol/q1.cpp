#include "polling/protocol/q1.h"

#include <algorithm>

#include "polling/protocol/wording.h"

namespace fieldline {
namespace {

constexpr BYTE kEnd = '\r';

struct Command {
  std::string_view line;
  std::string_view name;
};

constexpr Command kCommands[] = {
    {"Q1\r", "status"        },
    {"I\r",  "identification"},
    {"F\r",  "ratings"       },
};

const Command* Find(ByteSpan request) {
  for (const Command& command : kCommands) {
    if (Equals(request, command.line)) return &command;
  }
  return nullptr;
}

bool IsRequest(ByteSpan request) { return Find(request) != nullptr; }

std::string DescribeQ1Request(ByteSpan request) {
  return Quoted(request.first(request.size() - 1)) + ": " + std::string(Find(request)->name);
}

std::string DescribeQ1Reply(ByteSpan, ByteSpan reply) {
  return reply.back() == kEnd ? Quoted(reply.first(reply.size() - 1)) : std::string();
}

// A reply runs from its start mark to the carriage return. A line without the mark is also returned: the driver
// decides.
std::optional<FoundFrame> FindFrame(ByteSpan request, ByteSpan received, bool no_more) {
  const BYTE mark = Equals(request, kCommands[0].line) ? '(' : '#';
  const auto begin = std::ranges::find(received, mark);
  const auto end = std::find(begin, received.end(), kEnd);
  if (end != received.end()) {
    return FoundFrame{static_cast<std::size_t>(begin - received.begin()), static_cast<std::size_t>(end - begin) + 1};
  }
  if (no_more && !received.empty() && received.back() == kEnd) return FoundFrame{0, received.size()};
  return std::nullopt;
}

std::string StepName(ByteSpan request) {
  const Command* const command = Find(request);
  return command != nullptr ? std::string(command->name) : "request";
}

ReplyFault FindFault(ByteSpan, ByteSpan reply) {
  if (reply.back() != kEnd) {
    return {"short_reply", std::to_string(reply.size()) + " bytes came without the carriage return"};
  }
  return {"reply_format", "the reply is not what the command asks for: " + Quoted(reply.first(reply.size() - 1))};
}

}  // namespace

const WireProtocol kQ1 = {
    .is_request = IsRequest,
    .describe_request = DescribeQ1Request,
    .describe_reply = DescribeQ1Reply,
    .find_fault = FindFault,
    .find_frame = FindFrame,
    .mismatch = NoMismatch,
    .is_sound = AlwaysSound,
    .step_name = StepName,
    .reply_address = NoAddress,
    .needs_clean_line = false,
    .standard_length = NoStandardLength,
};

}  // namespace fieldline
