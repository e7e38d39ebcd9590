#include "polling/record/record_json.h"

#include <nlohmann/json.hpp>

namespace fieldline {

using nlohmann::ordered_json;

ordered_json RecordToJson(Fields fields, const BYTE* record) {
  ordered_json json = ordered_json::object();
  for (const RecordField& field : fields) {
    if (IsText(field)) {
      json[std::string(field.name)] = RecordText(field, record);
      continue;
    }
    for (int i = 0; i < field.count; ++i) json[FieldName(field, i)] = RawNumber(field, record, i);
  }
  return json;
}

ordered_json PhysicalToJson(Fields fields, const BYTE* record) {
  ordered_json json = ordered_json::object();
  for (const RecordField& field : fields) {
    if (IsText(field) || !IsPhysical(field)) continue;
    for (int i = 0; i < field.count; ++i) {
      ordered_json& entry = json[FieldName(field, i)];
      const double value = Physical(field, RawNumber(field, record, i));
      entry["value"] = value;
      if (!IsPlausible(field, value)) entry["plausible"] = false;
      if (!field.unit.empty()) entry["unit"] = field.unit;
    }
  }
  return json;
}

}  // namespace fieldline
