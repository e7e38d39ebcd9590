#pragma once

#include <nlohmann/json_fwd.hpp>

#include "polling/record/record_field.h"

namespace fieldline {

// The record's raw numbers and texts by name.
nlohmann::ordered_json RecordToJson(Fields fields, const BYTE* record);

// {"value": 220.5, "unit": "V"} for each number with a scale or a unit. Empty when there is none.
nlohmann::ordered_json PhysicalToJson(Fields fields, const BYTE* record);

}  // namespace fieldline
