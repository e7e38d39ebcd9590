#include "polling/record/poll_json.h"

#include <cmath>

#include "polling/record/record_json.h"
#include "polling/text.h"

namespace fieldline {
namespace {

using nlohmann::ordered_json;

ordered_json AddressToJson(const Kind& kind, int address) {
  return kind.HasAddress() ? ordered_json(address) : ordered_json();
}

double Milliseconds(const PollResult& result) { return std::round(result.duration.count() * 1000) / 1000; }

ordered_json BytesToJson(const Bytes& bytes) { return bytes.empty() ? ordered_json() : ordered_json(Hex(bytes)); }

}  // namespace

ordered_json PollHead(const Kind& kind, int address, const std::string& port, const PollResult& result) {
  ordered_json json;
  json["schema"] = kJsonSchema;
  json["time"] = IsoTime(result.time);
  json["kind"] = kind.name;
  json["address"] = AddressToJson(kind, address);
  json["port"] = port.empty() ? ordered_json() : ordered_json(port);
  json["ok"] = !result.failure;
  return json;
}

ordered_json PollHead(const Kind& kind, int address, std::string_view line, std::string_view device,
                      const PollResult& result) {
  ordered_json json;
  json["schema"] = kJsonSchema;
  json["time"] = IsoTime(result.time);
  json["line"] = line;
  json["device"] = device;
  json["kind"] = kind.name;
  json["address"] = AddressToJson(kind, address);
  json["ok"] = !result.failure;
  return json;
}

ordered_json OperationHead(std::string_view kind, std::string_view operation, const LineConfig& line,
                           const PollResult& result) {
  ordered_json json;
  json["schema"] = kJsonSchema;
  json["time"] = IsoTime(result.time);
  json["kind"] = kind;
  json["operation"] = operation;
  json["port"] = line.shown;
  json["ok"] = !result.failure;
  json["duration_ms"] = Milliseconds(result);
  if (result.failure) json["error"] = FailureToJson(*result.failure);
  return json;
}

ordered_json FailureToJson(const Failure& failure) {
  ordered_json json;
  json["code"] = failure.code;
  json["message"] = failure.message;
  json["request"] = BytesToJson(failure.request);
  json["reply"] = BytesToJson(failure.reply);
  return json;
}

ordered_json WarningToJson(const Warning& warning) {
  ordered_json json;
  json["code"] = warning.code;
  json["message"] = warning.message;
  return json;
}

void AddOutcome(ordered_json& json, const PollResult& result, Fields fields) {
  json["duration_ms"] = Milliseconds(result);
  if (result.failure) {
    json["error"] = FailureToJson(*result.failure);
    return;
  }
  if (result.warning) {
    json["warning"] = WarningToJson(*result.warning);
  }
  if (result.record.empty()) {
    json["record"] = ordered_json::object();
    return;
  }
  json["record"] = RecordToJson(fields, result.record.data());
  const ordered_json physical = PhysicalToJson(fields, result.record.data());
  if (!physical.empty()) json["physical"] = physical;
  if (!IsPlausible(fields, result.record.data())) json["plausible"] = false;
}

void AddSnapshot(ordered_json& json, const Snapshot& snapshot) {
  json["picture"]["path"] = snapshot.path;
  json["picture"]["size"] = snapshot.size;
}

}  // namespace fieldline
