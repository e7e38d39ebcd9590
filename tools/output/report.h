#pragma once

#include <string>

#include "polling/record/poll_json.h"

namespace fieldline::tool {

// The object on one line, with control characters escaped.
std::string ToLine(const nlohmann::ordered_json& json);

// Prints the object on one line of standard output. Thread-safe.
void PrintJson(const nlohmann::ordered_json& json);

// Prints an error message on standard error.
void Complain(const std::string& text);

// "envir at address 1", or "ups".
std::string Subject(const Kind& kind, int address);

// Prints a warning on standard error.
void ShowWarning(const std::string& subject, const Warning& warning);
void ShowFailure(const std::string& subject, const Failure& failure);

}  // namespace fieldline::tool
