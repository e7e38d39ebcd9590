#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "tools/diagnosis.h"

namespace fieldline::tool {

// "schema" of every JSON object that the command prints.
constexpr int kJsonSchema = 1;

// One line on standard output.
void PrintJson(const nlohmann::ordered_json& json);

nlohmann::ordered_json FailureToJson(const Failure& failure);

// For people, on standard error.
void ShowFailure(const std::string& subject, const Failure& failure);

}  // namespace fieldline::tool
