#pragma once

#include <string>

#include "polling/poller.h"
#include "polling/record/record_field.h"

namespace fieldline::tool {

// The polls of one device as comma-separated values: a row of headings, then one a poll. Numbers are in their unit
// where the field has one, as the record holds them otherwise; a failed poll has its code and no values.
std::string CsvHeadings(Fields fields);
std::string CsvRow(Fields fields, const PollResult& result);

}  // namespace fieldline::tool
