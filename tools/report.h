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

// Null for a kind without addresses.
nlohmann::ordered_json AddressToJson(const Kind& kind, int address);

nlohmann::ordered_json FailureToJson(const Failure& failure);

// Adds what came of a poll: how long it took, and its error or the record.
void AddOutcome(nlohmann::ordered_json& json, const PollResult& result, Fields fields, const BYTE* record);

// "envir at address 1", or "ups".
std::string Subject(const Kind& kind, int address);

// For people, on standard error.
void ShowFailure(const std::string& subject, const Failure& failure);

}  // namespace fieldline::tool
