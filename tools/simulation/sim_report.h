#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "polling/line/trace_output.h"
#include "sim/room.h"

namespace fieldline::tool {

// What the simulator prints about its devices.

// All kinds and their values.
void ListSimulated();
void ListSimulatedAsJson();

// Path of what opens a line.
using PathOf = std::function<std::string(std::string_view line)>;

// Each device with the command that polls it: as a table, or two lines a device.
void PrintRoom(const sim::RoomLayout& layout, const PathOf& path_of);
void PrintDevices(const sim::RoomLayout& layout, const PathOf& path_of);
void PrintRoomAsJson(const sim::RoomLayout& layout, const PathOf& path_of);

// Shows what passes on a line of that name on `trace`, which outlives the line, and on standard output what arrives at
// an alarm board or a display. Before the line starts.
void TraceLine(std::string_view name, sim::Line& line, TraceOutput& trace);
void ShowWhatArrives(std::string_view name, sim::Device& device, bool json);

}  // namespace fieldline::tool
