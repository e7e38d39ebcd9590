#include "fieldline/kinds.h"

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "polling/kind_name.h"
#include "tools/output/report.h"
#include "tools/output/table.h"
#include "tools/verbs/verbs.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;

constexpr char kExamples[] =
    "Examples:\n"
    "  fieldline kinds\n"
    "  fieldline kinds --json";

ordered_json ToJson(const Kind& kind) {
  ordered_json json;
  json["schema"] = kJsonSchema;
  json["kind"] = kind.name;
  json["description"] = kind.description;
  json["number"] = kind.number;
  json["class"] = kind.driver;
  json["protocol"] = ProtocolName(kind.protocol);
  json["settings"] = kind.HasLine() ? ordered_json(UsualSettings(kind)) : ordered_json();
  json["address"] = kind.HasAddress() ? ordered_json(kind.address) : ordered_json();
  json["record_size"] = kind.IsPolled() ? ordered_json(kind.record_size) : ordered_json();
  return json;
}

ExitCode Run(bool json) {
  if (json) {
    for (const Kind& kind : kKinds) PrintJson(ToJson(kind));
    return ExitCode::kGood;
  }
  std::vector<TableRow> rows = {
      {"KIND", "DEVICE", "CLASS", "PROTOCOL", "SETTINGS", "ADDRESS", "RECORD"}
  };
  for (const Kind& kind : kKinds) {
    rows.push_back({std::string(kind.name), std::string(kind.description), std::string(kind.driver),
                    std::string(ProtocolName(kind.protocol)), kind.HasLine() ? UsualSettings(kind) : "-",
                    kind.HasAddress() ? std::to_string(kind.address) : "-",
                    kind.IsPolled() ? std::to_string(kind.record_size) : "-"});
  }
  PrintTable(std::cout, rows);
  std::cout << "SETTINGS and ADDRESS are the usual ones, RECORD is in bytes.\n";
  return ExitCode::kGood;
}

}  // namespace

Verb AddKinds(CLI::App& app) {
  const auto json = std::make_shared<bool>(false);
  CLI::App& command = *app.add_subcommand("kinds", "List the kinds of devices");
  command.footer(kExamples);
  command.add_flag("--json", *json, "One JSON object a line");
  return {&command, [json] { return Run(*json); }};
}

}  // namespace fieldline::tool
