#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fieldline/alarm/i_hub_alarm.h"
#include "fieldline/display/hub_monitor.h"
#include "fieldline/kinds.h"
#include "polling/record/kind_fields.h"
#include "polling/record/record_field.h"
#include "polling/text.h"
#include "tools/output/report.h"
#include "tools/output/table.h"
#include "tools/verbs/verbs.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;
using enum FieldType;

constexpr char kExamples[] =
    "Examples:\n"
    "  fieldline record ups\n"
    "  fieldline record emerson --json\n"
    "  fieldline record --markdown >docs/records.md";

constexpr RecordField kFourBytes[] = {
    {"byte", 0, kU8, 4, 0},
};

constexpr RecordField kRequests[] = {
    {"byte", 0, kU8, 20, 0},
};

constexpr RecordField kDisplayClock[] = {
    {"year",    0, kU8, 1, 0, 1, "BCD"},
    {"month",   1, kU8, 1, 0, 1, "BCD"},
    {"day",     2, kU8, 1, 0, 1, "BCD"},
    {"weekday", 3, kU8, 1, 0, 1, "BCD"},
    {"hour",    4, kU8, 1, 0, 1, "BCD"},
    {"minute",  5, kU8, 1, 0, 1, "BCD"},
    {"second",  6, kU8, 1, 0, 1, "BCD"},
};

struct Layout {
  std::string_view name;
  std::string_view description;
  std::string_view type;  // the driver class, or the record's own type
  std::size_t size;
  Fields fields;
};

// Records that do not come from a polled driver.
constexpr Layout kOtherLayouts[] = {
    {"device-id",     "identity of the alarm board", "DEVICE_ID",      sizeof(DEVICE_ID),      kFourBytes   },
    {"device-status", "status of the alarm board",   "DEVICE_STATUS",  sizeof(DEVICE_STATUS),  kFourBytes   },
    {"device-req",    "remote requests",             "DEVICE_REQ",     sizeof(DEVICE_REQ),     kRequests    },
    {"display-clock", "clock of the serial display", "DIWEN_RTC_DATA", sizeof(DIWEN_RTC_DATA), kDisplayClock},
};

std::vector<Layout> Layouts() {
  std::vector<Layout> layouts;
  for (const Kind& kind : kKinds) {
    if (!kind.IsPolled()) continue;
    layouts.push_back(
        {kind.name, kind.description, kind.driver, static_cast<std::size_t>(kind.record_size), FieldsOf(kind)});
  }
  layouts.insert(layouts.end(), std::begin(kOtherLayouts), std::end(kOtherLayouts));
  return layouts;
}

Layout RequireLayout(const std::string& name) {
  std::vector<std::string> names;
  for (const Layout& layout : Layouts()) {
    if (layout.name == name) return layout;
    names.emplace_back(layout.name);
  }
  throw UsageError("there is no record \"" + name + "\"; there are " + Join(names));
}

// "register_8..32" for a run of fields.
std::string Names(const RecordField& field) {
  std::string names = FieldName(field, 0);
  if (!IsText(field) && field.count > 1) names += ".." + std::to_string(field.first + field.count - 1);
  return names;
}

std::vector<TableRow> ToTable(const Layout& layout) {
  std::vector<TableRow> rows = {
      {"POSITION", "BYTES", "TYPE", "FIELD", "SCALE", "UNIT"}
  };
  for (const RecordField& field : layout.fields) {
    const std::string times = field.count > 1 ? std::to_string(field.count) + " x " : "";
    rows.push_back({std::to_string(field.position), times + std::to_string(FieldWidth(field.type)),
                    std::string(FieldTypeName(field.type)), Names(field),
                    field.factor != 1 ? "1/" + Fixed(field.factor, 0) : "", std::string(field.unit)});
  }
  return rows;
}

ordered_json ToJson(const Layout& layout) {
  ordered_json fields = ordered_json::array();
  for (const RecordField& field : layout.fields) {
    const int entries = IsText(field) ? 1 : field.count;
    const std::size_t width = FieldWidth(field.type) * static_cast<std::size_t>(field.count / entries);
    for (int i = 0; i < entries; ++i) {
      ordered_json entry;
      entry["name"] = FieldName(field, i);
      entry["position"] = field.position + static_cast<std::size_t>(i) * width;
      entry["bytes"] = width;
      entry["type"] = FieldTypeName(field.type);
      entry["scale"] = 1.0 / field.factor;
      entry["unit"] = nullptr;
      if (!field.unit.empty()) entry["unit"] = field.unit;
      fields.push_back(entry);
    }
  }
  ordered_json json;
  json["schema"] = kJsonSchema;
  json["record"] = layout.name;
  json["description"] = layout.description;
  json["type"] = layout.type;
  json["size"] = layout.size;
  json["fields"] = fields;
  return json;
}

constexpr char kMarkdownHead[] =
    "# Records\n"
    "\n"
    "The record that `m_pData` of each driver points to, and the records of the alarm board and the display.\n"
    "Positions and sizes are in bytes. Numbers are little-endian and may lie at odd positions; `int` types are "
    "signed.\n"
    "SCALE is the value of one count, in UNIT if it is known. `name_1..8` is a run of eight fields.\n"
    "\n"
    "`fieldline record --markdown` prints this page.\n";

void PrintMarkdown() {
  std::cout << kMarkdownHead;
  for (const Layout& layout : Layouts()) {
    std::cout << "\n## " << layout.name << "\n\n`" << layout.type << "`, " << layout.description << ": " << layout.size
              << " bytes.\n\n";
    PrintMarkdownTable(std::cout, ToTable(layout));
  }
}

struct Arguments {
  std::string name;
  bool json = false;
  bool markdown = false;
};

ExitCode Run(const Arguments& arguments) {
  if (arguments.markdown) {
    PrintMarkdown();
    return ExitCode::kGood;
  }
  if (arguments.name.empty()) throw UsageError("which record? write its KIND, or --markdown for a page of all");
  const Layout layout = RequireLayout(arguments.name);
  if (arguments.json) {
    PrintJson(ToJson(layout));
  } else {
    std::cout << layout.name << " (" << layout.description << "), " << layout.type << ", " << layout.size << " bytes\n";
    PrintTable(std::cout, ToTable(layout));
  }
  return ExitCode::kGood;
}

}  // namespace

Verb AddRecord(CLI::App& app) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App& command = *app.add_subcommand("record", "Show how a record is laid out");
  command.footer(kExamples);
  command.add_option("KIND", arguments->name, "Kind of device, or device-id, device-status, device-req, display-clock")
      ->type_name("");
  CLI::Option* const json = command.add_flag("--json", arguments->json, "One JSON object");
  command.add_flag("--markdown", arguments->markdown, "All records as one Markdown page")->excludes(json);
  return {&command, [arguments] { return Run(*arguments); }};
}

}  // namespace fieldline::tool
