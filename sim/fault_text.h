#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "sim/faults.h"

// How faults are written, on the command line and in scenario files.
namespace fieldline::sim {

constexpr char kFaultForm[] =
    "drop, corrupt, truncate, noise or delay, then :nth=N, :every=N or :p=P, and ms=N of a delay";

// The rule of that name, without a condition. Nothing when there is no such fault.
std::optional<FaultRule> FaultNamed(std::string_view name);

// Sets a condition of the rule: nth or every (1 to 1000000), p (0 to 1), or ms (the same; of a delay only). Returns
// what is wrong, empty when nothing is.
std::string SetCondition(FaultRule& rule, std::string_view name, std::string_view value);

// A rule without a condition hits every reply.
void HitEveryReplyByDefault(FaultRule& rule);

// Reads "drop", "corrupt:every=3", "delay:p=0.2,ms=500". Nothing, with what is wrong in *error, for anything else.
std::optional<FaultRule> ParseFault(std::string_view text, std::string* error);

}  // namespace fieldline::sim
