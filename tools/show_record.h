#pragma once

#include "tools/verb.h"

namespace fieldline::tool {

// `fieldline record KIND`: shows how a record is laid out.
Verb AddRecord(CLI::App& app);

}  // namespace fieldline::tool
