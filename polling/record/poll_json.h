#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "fieldline/kinds.h"
#include "polling/diagnosis.h"
#include "polling/poller.h"
#include "polling/record/record_field.h"
#include "polling/snapshot.h"

namespace fieldline {

// "schema" of every JSON object that our programs print.
constexpr int kJsonSchema = 1;

// How the JSON of a poll begins: null stands for the address of a kind that has none, and for the port of one without a
// line. A device of a site has names in place of a port.
nlohmann::ordered_json PollHead(const Kind& kind, int address, const std::string& port, const PollResult& result);
nlohmann::ordered_json PollHead(const Kind& kind, int address, std::string_view line, std::string_view device,
                                const PollResult& result);

// The JSON of an operation of the alarm board or the display.
nlohmann::ordered_json OperationHead(std::string_view kind, std::string_view operation, const LineConfig& line,
                                     const PollResult& result);

// Null stands for a request or a reply that there was not.
nlohmann::ordered_json FailureToJson(const Failure& failure);

nlohmann::ordered_json WarningToJson(const Warning& warning);

// Adds what came of a poll: how long it took, and its error or the record.
void AddOutcome(nlohmann::ordered_json& json, const PollResult& result, Fields fields);

// Adds the picture that a poll stored.
void AddSnapshot(nlohmann::ordered_json& json, const Snapshot& snapshot);

}  // namespace fieldline
