#pragma once

#include <string>

#include "polling/record/poll_json.h"

namespace fieldline::tool {

// The object as a line, without control characters.
std::string ToLine(const nlohmann::ordered_json& json);

// One line on standard output. May be called from any thread.
void PrintJson(const nlohmann::ordered_json& json);

// What is wrong, on standard error.
void Complain(const std::string& text);

// "envir at address 1", or "ups".
std::string Subject(const Kind& kind, int address);

// For people, on standard error.
void ShowWarning(const std::string& subject, const Warning& warning);
void ShowFailure(const std::string& subject, const Failure& failure);

}  // namespace fieldline::tool
