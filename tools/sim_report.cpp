#include "tools/sim_report.h"

#include <chrono>
#include <iostream>
#include <memory>
#include <span>
#include <vector>

#include "sim/alarm_board.h"
#include "sim/display.h"
#include "tools/dissect.h"
#include "tools/kinds.h"
#include "tools/report.h"
#include "tools/table.h"
#include "tools/text.h"

namespace fieldline::tool {
namespace {

using nlohmann::ordered_json;

// Empty for a device that no verb talks to.
std::string Suggestion(const sim::RoomDevice& device, const sim::RoomLine& line, const std::string& path) {
  const std::string kind(device.kind);
  if (kind == sim::kInputsKind) return "fieldline poll di --map EIO1=" + path;
  const std::string port = " --port " + path + ':' + std::to_string(line.baud) + ",n,8,1";
  if (kind == "alarm") return "fieldline alarm status" + port;
  if (kind == "display") return "fieldline display page 1" + port;
  if (FindKind(kind) == nullptr) return {};
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

}  // namespace

void ListSimulated() {
  for (const sim::Kind& kind : sim::Catalog()) {
    std::cout << kind.name << ": " << kind.description << ", " << kind.baud << " bit/s\n";
    const std::unique_ptr<sim::Device> device = kind.make(static_cast<BYTE>(kind.address));
    for (const sim::Value& value : device->values().List()) {
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
                    std::string(device.name), std::string(device.kind),
                    device.address != 0 ? std::to_string(device.address) : "", Suggestion(device, line, path)});
  }
  PrintTable(std::cout, rows);
  std::cout << std::flush;
}

void PrintDevices(const sim::RoomLayout& layout, const PathOf& path_of) {
  for (const sim::RoomDevice& device : layout.devices) {
    const sim::RoomLine& line = sim::LineOf(layout, device);
    const std::string path = path_of(line.name);
    std::cout << device.kind;
    if (device.address != 0) std::cout << " at address " << device.address;
    std::cout << " on " << path << ", " << line.baud << " bit/s\n";
    const std::string suggestion = Suggestion(device, line, path);
    if (!suggestion.empty()) std::cout << "  " << suggestion << '\n';
  }
  std::cout << std::flush;
}

void PrintRoomAsJson(const sim::RoomLayout& layout, const PathOf& path_of) {
  for (const sim::RoomDevice& device : layout.devices) {
    const sim::RoomLine& line = sim::LineOf(layout, device);
    const std::string path = path_of(line.name);
    ordered_json json = {
        {"schema",  kJsonSchema},
        {"line",    line.name  },
        {"path",    path       },
        {"baud",    nullptr    },
        {"device",  device.name},
        {"kind",    device.kind},
        {"address", nullptr    },
        {"try",     nullptr    }
    };
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
      std::cout << text + '\n' << std::flush;
      return;
    }
    PrintJson({
        {"schema", kJsonSchema                              },
        {"time",   IsoTime(std::chrono::system_clock::now())},
        {"device", name                                     },
        {"shows",  text                                     }
    });
  };
  if (auto* const board = dynamic_cast<sim::AlarmBoard*>(&device)) {
    board->SetListener([show](const sim::AlarmMessage& message) { show(sim::ToText(message)); });
  } else if (auto* const display = dynamic_cast<sim::Display*>(&device)) {
    display->SetListener([show](sim::Display& shown) {
      const std::string screen = shown.Screen();
      show(screen.substr(0, screen.size() - 1));  // without its last line's end
    });
  }
}

}  // namespace fieldline::tool
