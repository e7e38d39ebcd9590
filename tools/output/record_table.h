#pragma once

#include <ostream>

#include "polling/record/record_field.h"

namespace fieldline::tool {

// A record as a table for people. `record` reaches to FieldsEnd(fields).
void PrintRecord(std::ostream& out, Fields fields, const BYTE* record);

}  // namespace fieldline::tool
