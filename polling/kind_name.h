#pragma once

#include <string>
#include <string_view>

#include "fieldline/kinds.h"

namespace fieldline {

// The polled kind of that name. Throws UsageError with the list of polled kinds when there is none.
const Kind& RequirePolledKind(std::string_view name);

// "9600,n,8,1"
std::string UsualSettings(const Kind& kind);

bool IsCamera(const Kind& kind);

}  // namespace fieldline
