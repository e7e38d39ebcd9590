#pragma once

#include "fieldline/kinds.h"
#include "polling/record/record_field.h"

namespace fieldline {

// The fields of a kind's record. Empty for a kind that is not polled.
Fields FieldsOf(const Kind& kind);

}  // namespace fieldline
