#pragma once

#include <ostream>

#include "polling/record/record_field.h"

namespace fieldline::tool {

// Prints a record as a table for people. `record` has FieldsEnd(fields) bytes.
void PrintRecord(std::ostream& out, Fields fields, const BYTE* record);

}  // namespace fieldline::tool
