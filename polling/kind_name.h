#pragma once

#include <string>
#include <string_view>

#include "fieldline/kinds.h"

namespace fieldline {

// The kind of that name, which is polled. Throws UsageError, which names the kinds that are.
const Kind& RequirePolledKind(std::string_view name);

// "9600,n,8,1"
std::string UsualSettings(const Kind& kind);

bool IsCamera(const Kind& kind);

}  // namespace fieldline
