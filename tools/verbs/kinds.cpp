#include "fieldline/kinds.h"

#include <iostream>
#include <memory>
#include <string>
#include <utility>
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

std::string SettingsText(const Kind& kind) { return kind.HasLine() ? UsualSettings(kind) : "-"; }
std::string SizeText(const Kind& kind) { return kind.IsPolled() ? std::to_string(kind.record_size) : "-"; }

void PrintForPeople() {
  std::vector<TableRow> rows = {
      {"KIND", "DEVICE", "CLASS", "PROTOCOL", "SETTINGS", "ADDRESS", "RECORD"}
  };
  for (const Kind& kind : kKinds) {
    rows.push_back({std::string(kind.name), std::string(kind.description), std::string(kind.driver),
                    std::string(ProtocolName(kind.protocol)), SettingsText(kind),
                    kind.HasAddress() ? std::to_string(kind.address) : "-", SizeText(kind)});
  }
  PrintTable(std::cout, rows);
  std::cout << "SETTINGS and ADDRESS are the usual ones, RECORD is in bytes.\n";
}

void PrintForReadme() {
  const auto code = [](std::string_view text) { return '`' + std::string(text) + '`'; };
  std::vector<TableRow> rows = {
      {"kind", "number", "device", "class", "protocol", "usual line", "record"}
  };
  for (const Kind& kind : kKinds) {
    rows.push_back({code(kind.name), std::to_string(kind.number), std::string(kind.description), code(kind.driver),
                    std::string(ProtocolName(kind.protocol)), SettingsText(kind), SizeText(kind)});
  }
  PrintMarkdownTable(std::cout, rows);
}

struct Arguments {
  bool json = false;
  bool markdown = false;
};

ExitCode Run(const Arguments& arguments) {
  if (arguments.markdown) {
    PrintForReadme();
  } else if (arguments.json) {
    for (const Kind& kind : kKinds) PrintJson(ToJson(kind));
  } else {
    PrintForPeople();
  }
  return ExitCode::kGood;
}

}  // namespace

Verb AddKinds(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& command = *app.add_subcommand("kinds", "List the kinds of devices");
  command.footer(kExamples);
  CLI::Option* const json = command.add_flag("--json", arguments->json, "One JSON object per line");
  command.add_flag("--markdown", arguments->markdown, "The table of README.md")->excludes(json);
  return {&command, [arguments] { return Run(*arguments); }};
}

}  // namespace fieldline::tool
