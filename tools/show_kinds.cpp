#include "tools/show_kinds.h"

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "tools/kinds.h"
#include "tools/report.h"
#include "tools/table.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;

constexpr char kExamples[] =
    "Examples:\n"
    "  fieldline kinds\n"
    "  fieldline kinds --json";

bool HasLine(const Kind& kind) { return kind.protocol != Protocol::kLocal; }

ordered_json ToJson(const Kind& kind) {
  ordered_json json = {
      {"schema",      kJsonSchema                },
      {"kind",        kind.name                  },
      {"description", kind.description           },
      {"number",      kind.id                    },
      {"class",       kind.driver                },
      {"protocol",    ProtocolName(kind.protocol)},
      {"settings",    nullptr                    },
      {"address",     nullptr                    },
      {"record_size", nullptr                    }
  };
  if (HasLine(kind)) json["settings"] = kind.UsualSettings();
  if (kind.record_size != 0) json["record_size"] = kind.record_size;
  if (kind.HasAddress()) json["address"] = kind.address;
  return json;
}

ExitCode Run(bool json) {
  std::vector<Kind> kinds(Kinds().begin(), Kinds().end());
  kinds.insert(kinds.end(), {kAlarmBoard, kDisplay});
  if (json) {
    for (const Kind& kind : kinds) PrintJson(ToJson(kind));
    return ExitCode::kGood;
  }
  std::vector<TableRow> rows = {
      {"KIND", "DEVICE", "CLASS", "PROTOCOL", "SETTINGS", "ADDRESS", "RECORD"}
  };
  for (const Kind& kind : kinds) {
    rows.push_back({std::string(kind.name), std::string(kind.description), std::string(kind.driver),
                    std::string(ProtocolName(kind.protocol)), HasLine(kind) ? kind.UsualSettings() : "-",
                    kind.HasAddress() ? std::to_string(kind.address) : "-",
                    kind.record_size != 0 ? std::to_string(kind.record_size) : "-"});
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
