#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "tools/diagnosis.h"
#include "tools/kinds.h"
#include "tools/poller.h"
#include "tools/record.h"

namespace fieldline::tool {

// "schema" of every JSON object that the command prints.
constexpr int kJsonSchema = 1;

// One line on standard output.
void PrintJson(const nlohmann::ordered_json& json);

// How the JSON of a poll begins: null stands for the address of a kind that has none, and for the port of one without a
// line. A device of a site has names in place of a port.
nlohmann::ordered_json PollHead(const Kind& kind, int address, const std::string& port, const PollResult& result);
nlohmann::ordered_json PollHead(const Kind& kind, int address, std::string_view line, std::string_view device,
                                const PollResult& result);

// Null stands for a request or a reply that there was not.
nlohmann::ordered_json FailureToJson(const Failure& failure);

// Adds what came of a poll: how long it took, and its error or the record.
void AddOutcome(nlohmann::ordered_json& json, const PollResult& result, Fields fields, const BYTE* record);

// "envir at address 1", or "ups".
std::string Subject(const Kind& kind, int address);

// For people, on standard error.
void ShowFailure(const std::string& subject, const Failure& failure);

}  // namespace fieldline::tool
