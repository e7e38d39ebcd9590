#pragma once

#include <string>

#include "polling/poller.h"
#include "polling/record/record_field.h"

namespace fieldline::tool {

// The polls of one device as comma-separated values: a row of headings, then a row for each poll. A number is in the
// field's unit, or raw when the field has none. A failed poll has its code and no values.
std::string CsvHeadings(Fields fields);
std::string CsvRow(Fields fields, const PollResult& result);

}  // namespace fieldline::tool
