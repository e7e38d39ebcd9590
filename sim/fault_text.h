#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "sim/faults.h"

// The text form of faults, on the command line and in scenario files.
namespace fieldline::sim {

constexpr char kFaultForm[] =
    "drop, corrupt, truncate, noise, trail, repeat, address or delay, then :nth=N, :every=N or :p=P, and ms=N of a "
    "delay; or deaf:ms=N";

// The rule for the fault of that name, without a condition. Empty when there is no such fault.
std::optional<FaultRule> FaultNamed(std::string_view name);

// "drop, corrupt, ... or deaf", for messages.
std::string FaultNames();

// Sets a condition of the rule: nth or every (1 to 1000000), p (0 to 1), or ms (1 to 1000000). Only the faults "delay"
// and "deaf" have ms, and "deaf" has nothing else. Returns an error message, empty on success.
std::string SetCondition(FaultRule& rule, std::string_view name, std::string_view value);

// Makes a rule without a condition hit every reply.
void HitEveryReplyByDefault(FaultRule& rule);

// Reads "drop", "corrupt:every=3", "delay:p=0.2,ms=500". For any other text the result is empty and *error says what is
// wrong.
std::optional<FaultRule> ParseFault(std::string_view text, std::string* error);

}  // namespace fieldline::sim
