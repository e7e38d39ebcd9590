#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "sim/faults.h"

namespace fieldline::tool {

constexpr char kFaultForm[] =
    "drop, corrupt, truncate, noise or delay, then :nth=N, :every=N or :p=P, and ms=N of a delay";

std::optional<sim::Fault> FindFault(std::string_view name);

// Reads "drop", "corrupt:every=3", "delay:p=0.2,ms=500". Without a condition every reply is hit. Throws UsageError.
sim::FaultRule ParseFault(const std::string& text);

}  // namespace fieldline::tool
