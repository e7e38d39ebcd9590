#include "tools/simulation/sim_report.h"

#include <chrono>
#include <iostream>
#include <memory>
#include <span>
#include <vector>

#include "fieldline/kinds.h"
#include "fieldline/platform/pseudo_terminal.h"
#include "polling/protocol/protocol.h"
#include "polling/text.h"
#include "sim/devices/alarm/alarm_board.h"
#include "sim/devices/display/display.h"
#include "sim/models.h"
#include "tools/output/report.h"
#include "tools/output/standard_output.h"
#include "tools/output/table.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;

// The command that polls the device; empty when there is none.
std::string Suggestion(const sim::RoomDevice& device, const sim::RoomLine& line, const std::string& path) {
  const std::string kind(device.kind->name);
  if (!device.kind->HasLine()) return "fieldline poll " + kind + " --map EIO1=" + path;
  const std::string port = " --port " + path + ':' + std::to_string(line.baud) + ",n,8,1";
  if (device.kind->number == SERDAT_ALARM) return "fieldline alarm status" + port;
  if (device.kind->number == SERDAT_MONITOR) return "fieldline display page 1" + port;
  const std::string address = device.address != 0 ? " --address " + std::to_string(device.address) : "";
  return "fieldline poll " + kind + address + port;
}

std::string_view TrafficMark(sim::Traffic traffic) {
  switch (traffic) {
    case sim::Traffic::kRequest:
      return " -> ";
    case sim::Traffic::kUnclaimed:
      return " -> (nobody's) ";
    case sim::Traffic::kGarbled:
      return " -> (wrong speed) ";
    default:
      return " <- ";
  }
}

std::vector<sim::Value> ValuesOf(const Kind& kind) {
  const sim::RoomLine line = {kind.name, static_cast<std::uint32_t>(kind.baud)};
  const sim::RoomDevice device = {kind.name, kind.name, &kind, kind.address};
  sim::RoomLayout layout;
  layout.lines = {&line, 1};
  layout.devices = {&device, 1};
  sim::Room room(layout, {});  // never started; used only for its values
  return room.FindValues(kind.name)->List();
}

// A text has a length in place of a range and decimals.
ordered_json ToJson(const sim::Value& value) {
  const bool text = value.max_length > 0;
  ordered_json json;
  json["name"] = value.name;
  json["unit"] = value.unit.empty() ? ordered_json() : ordered_json(value.unit);
  json["minimum"] = text ? ordered_json() : ordered_json(value.minimum);
  json["maximum"] = text ? ordered_json() : ordered_json(value.maximum);
  json["decimals"] = text ? ordered_json() : ordered_json(value.decimals);
  json["max_length"] = text ? ordered_json(value.max_length) : ordered_json();
  json["read_only"] = value.read_only;
  json["value"] = text ? ordered_json(value.text) : ordered_json(value.number);
  return json;
}

}  // namespace

std::string StartFailure(const std::filesystem::path& scratch) {
  if (!PseudoTerminal::IsSupported()) {
    return "this system has no pseudo-terminals, which the simulation needs; run it on Linux";
  }
  std::string text = "the simulation can't start: the system has no pseudo-terminal left";
  if (!scratch.empty()) text += ", or " + scratch.string() + " can't be written";
  return text;
}

void ListSimulatedAsJson() {
  for (const Kind& kind : kKinds) {
    const std::string_view note = sim::ModelOf(kind).note;
    ordered_json json;
    json["schema"] = kJsonSchema;
    json["kind"] = kind.name;
    json["description"] = kind.description;
    json["note"] = note.empty() ? ordered_json() : ordered_json(note);
    json["baud"] = kind.HasLine() ? ordered_json(kind.baud) : ordered_json();
    json["address"] = kind.HasAddress() ? ordered_json(kind.address) : ordered_json();
    json["values"] = ordered_json::array();
    for (const sim::Value& value : ValuesOf(kind)) json["values"].push_back(ToJson(value));
    PrintJson(json);
  }
}

void ListSimulated() {
  for (const Kind& kind : kKinds) {
    const sim::Model& model = sim::ModelOf(kind);
    std::cout << kind.name << ": " << kind.description;
    if (!model.note.empty()) std::cout << ", " << model.note;
    if (kind.HasLine()) std::cout << ", " << kind.baud << " bit/s";
    std::cout << '\n';
    for (const sim::Value& value : ValuesOf(kind)) {
      std::cout << "  " << value.name << " = " << sim::ToText(value);
      if (!value.unit.empty()) std::cout << ' ' << value.unit;
      if (value.read_only) {
        std::cout << " (read only)";
      } else if (value.max_length > 0) {
        std::cout << " (text of up to " << value.max_length << " bytes)";
      } else {
        std::cout << " (" << Fixed(value.minimum, value.decimals) << " to " << Fixed(value.maximum, value.decimals)
                  << ')';
      }
      std::cout << '\n';
    }
  }
}

void PrintRoom(const sim::RoomLayout& layout, const PathOf& path_of) {
  std::vector<TableRow> rows = {
      {"line", "path", "bit/s", "device", "kind", "address", "try"}
  };
  for (const sim::RoomDevice& device : layout.devices) {
    const sim::RoomLine& line = sim::LineOf(layout, device);
    const std::string path = path_of(line.name);
    rows.push_back({std::string(line.name), path, line.baud != 0 ? std::to_string(line.baud) : "",
                    std::string(device.name), std::string(device.kind->name),
                    device.address != 0 ? std::to_string(device.address) : "", Suggestion(device, line, path)});
  }
  PrintTable(std::cout, rows);
  std::cout << std::flush;
}

void PrintDevices(const sim::RoomLayout& layout, const PathOf& path_of) {
  for (const sim::RoomDevice& device : layout.devices) {
    const sim::RoomLine& line = sim::LineOf(layout, device);
    const std::string path = path_of(line.name);
    std::cout << device.kind->name;
    if (device.address != 0) std::cout << " at address " << device.address;
    std::cout << " on " << ForTerminal(path) << ", " << line.baud << " bit/s\n";
    const std::string suggestion = Suggestion(device, line, path);
    if (!suggestion.empty()) std::cout << "  " << ForTerminal(suggestion) << '\n';
  }
  std::cout << std::flush;
}

void PrintRoomAsJson(const sim::RoomLayout& layout, const PathOf& path_of) {
  for (const sim::RoomDevice& device : layout.devices) {
    const sim::RoomLine& line = sim::LineOf(layout, device);
    const std::string path = path_of(line.name);
    ordered_json json;
    json["schema"] = kJsonSchema;
    json["line"] = line.name;
    json["path"] = path;
    json["baud"] = nullptr;
    json["device"] = device.name;
    json["kind"] = device.kind->name;
    json["address"] = nullptr;
    json["try"] = nullptr;
    if (line.baud != 0) json["baud"] = line.baud;
    if (device.address != 0) json["address"] = device.address;
    if (const std::string suggestion = Suggestion(device, line, path); !suggestion.empty()) json["try"] = suggestion;
    PrintJson(json);
  }
}

void TraceLine(std::string_view name, sim::Line& line, TraceOutput& trace) {
  line.SetListener(
      [&trace, name = std::string(name), request = Bytes()](sim::Traffic traffic, std::span<const BYTE> bytes) mutable {
        const bool is_reply = traffic == sim::Traffic::kReply;
        if (!is_reply) request.assign(bytes.begin(), bytes.end());
        trace.Show(name + std::string(TrafficMark(traffic)), bytes,
                   is_reply ? DescribeReply(request, bytes) : DescribeRequest(bytes));
      });
}

void ShowWhatArrives(std::string_view name, sim::Device& device, bool json) {
  const auto show = [name = std::string(name), json](const std::string& text) {
    if (!json) {
      PrintLines(text + '\n');
      return;
    }
    ordered_json object;
    object["schema"] = kJsonSchema;
    object["time"] = IsoTime(std::chrono::system_clock::now());
    object["device"] = name;
    object["shows"] = text;
    PrintJson(object);
  };
  if (auto* const board = dynamic_cast<sim::AlarmBoard*>(&device)) {
    board->SetListener([show, json](const sim::AlarmMessage& message) {
      const std::string text = sim::ToText(message);
      show(json ? text : Escaped(text));
    });
  } else if (auto* const display = dynamic_cast<sim::Display*>(&device)) {
    display->SetListener([show](sim::Display& shown) {
      const std::string screen = shown.Screen();
      show(screen.substr(0, screen.size() - 1));  // without the final line feed
    });
  }
}

}  // namespace fieldline::tool
