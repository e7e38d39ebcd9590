#pragma once

#include <nlohmann/json_fwd.hpp>

#include "polling/record/record_field.h"

namespace fieldline {

// The record's own numbers and texts under their names.
nlohmann::ordered_json RecordToJson(Fields fields, const BYTE* record);

// {"value": 220.5, "unit": "V"} for each number that has a scale or a unit; empty when none has.
nlohmann::ordered_json PhysicalToJson(Fields fields, const BYTE* record);

}  // namespace fieldline
