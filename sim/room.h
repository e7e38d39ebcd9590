#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fieldline/kinds.h"
#include "sim/devices/digital_inputs.h"
#include "sim/line.h"

namespace fieldline::sim {

struct RoomLine {
  std::string_view name;  // the unit's own, without the final colon: ESL3
  std::uint32_t baud;     // bit/s, with n,8,1; 0 for the unit's own inputs, which are no serial line
};

struct RoomDevice {
  std::string_view name;  // what it is called in this room; unique
  std::string_view line;
  const Kind* kind;
  int address;  // 0 where the protocol has none
};

struct RoomLayout {
  std::span<const RoomLine> lines;
  std::span<const RoomDevice> devices;
};

// A machine room with devices of every kind.
RoomLayout MachineRoom();

// The line of a device of the layout.
const RoomLine& LineOf(const RoomLayout& layout, const RoomDevice& device);

// The devices of a layout on their lines. One thread uses a room.
class Room {
 public:
  // The names in the layout must outlive the room. The file of the unit's own inputs is made in `scratch`, an existing
  // directory, by Start().
  Room(const RoomLayout& layout, const std::filesystem::path& scratch);

  // Starts every line. False when the system has no line left or `scratch` can't be written.
  bool Start();

  // Null when the layout has no device of that name. The unit's own inputs have values, but are no device on a line.
  Device* FindDevice(std::string_view name);
  Values* FindValues(std::string_view device);

  // Sets a value of a device of the layout, see Values::Set. Values that are set past this reach the devices on lines,
  // but not the unit's own inputs.
  bool Set(std::string_view device, std::string_view value, std::string_view text, std::string* error);

  // Null when the layout has no serial line of that name. Stopping and starting it unplugs and replugs it; its path
  // may be another one then.
  Line* FindLine(std::string_view name);

  // What opens the line or the inputs; empty while the line is unplugged.
  std::string Path(std::string_view line) const;

  // From now on drift and faults follow from this seed.
  void Seed(std::uint32_t seed);

  // Replaces the faults of a serial line of the layout.
  void SetFaults(std::string_view line, std::vector<FaultRule> rules);

  // Lets the values of all devices wander for `seconds`.
  void Drift(double seconds);

 private:
  struct NamedLine {
    std::string_view name;
    std::unique_ptr<Line> line;
  };
  struct NamedDevice {
    std::string_view name;
    Device* device;  // null for the unit's own inputs
    Values* values;
  };

  std::uint32_t seed_ = 1;
  std::vector<NamedLine> lines_;
  std::optional<DigitalInputs> inputs_;
  std::vector<NamedDevice> devices_;
};

}  // namespace fieldline::sim
