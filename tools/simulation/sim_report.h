#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "polling/line/trace_output.h"
#include "sim/room.h"

namespace fieldline::tool {

// What the simulator prints about its devices.

// Prints all kinds and their values.
void ListSimulated();
void ListSimulatedAsJson();

// Message after a failed start of a room. `scratch` is the directory for its inputs, empty when it has none.
std::string StartFailure(const std::filesystem::path& scratch);

// Path under which a line is opened.
using PathOf = std::function<std::string(std::string_view line)>;

// Prints each device with the command that polls it, as a table or as two lines per device.
void PrintRoom(const sim::RoomLayout& layout, const PathOf& path_of);
void PrintDevices(const sim::RoomLayout& layout, const PathOf& path_of);
void PrintRoomAsJson(const sim::RoomLayout& layout, const PathOf& path_of);

// Shows the bytes on a line of that name on `trace`, which must outlive the line. Call it before the line starts.
void TraceLine(std::string_view name, sim::Line& line, TraceOutput& trace);

// Prints on standard output what an alarm board or a display receives. Call it before the line starts.
void ShowWhatArrives(std::string_view name, sim::Device& device, bool json);

}  // namespace fieldline::tool
