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

// Value of "schema" in every JSON object that the programs print.
constexpr int kJsonSchema = 1;

// The first members of a poll's JSON. The address is null for a kind without addresses, the port for a kind without a
// line. A device of a site has its names in place of a port.
nlohmann::ordered_json PollHead(const Kind& kind, int address, const std::string& port, const PollResult& result);
nlohmann::ordered_json PollHead(const Kind& kind, int address, std::string_view line, std::string_view device,
                                const PollResult& result);

// The same for an operation of the alarm board or the display.
nlohmann::ordered_json OperationHead(std::string_view kind, std::string_view operation, const LineConfig& line,
                                     const PollResult& result);

// Request and reply are null when there was none.
nlohmann::ordered_json FailureToJson(const Failure& failure);

nlohmann::ordered_json WarningToJson(const Warning& warning);

// Adds the result of a poll: its duration, and its record or error.
void AddOutcome(nlohmann::ordered_json& json, const PollResult& result, Fields fields);

// Adds the picture that a poll stored.
void AddSnapshot(nlohmann::ordered_json& json, const Snapshot& snapshot);

}  // namespace fieldline
