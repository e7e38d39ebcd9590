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
#include "sim/devices/basic/digital_inputs.h"
#include "sim/line.h"

namespace fieldline::sim {

struct RoomLine {
  std::string_view name;  // the unit's name for it, without the final colon: ESL3
  std::uint32_t baud;     // bit/s, with n,8,1; 0 for the unit's own inputs, which have no serial line
};

struct RoomDevice {
  std::string_view name;  // unique in this room
  std::string_view line;
  const Kind* kind;
  int address;  // 0 when the protocol has no addresses
};

struct RoomLayout {
  std::span<const RoomLine> lines;
  std::span<const RoomDevice> devices;
};

// A machine room with devices of every kind.
RoomLayout MachineRoom();

// The line of a device of the layout.
const RoomLine& LineOf(const RoomLayout& layout, const RoomDevice& device);

// The simulated devices of a layout, on their lines. Not thread-safe: one thread uses a room.
class Room {
 public:
  // The names in the layout must outlive the room. Start() creates the file of the unit's own inputs in `scratch`, an
  // existing directory.
  Room(const RoomLayout& layout, const std::filesystem::path& scratch);

  // Starts every line. Returns false when the system has no pseudo-terminal left or `scratch` can't be written.
  bool Start();

  // Null when the layout has no device of that name. For the unit's own inputs, FindDevice returns null and FindValues
  // returns their values.
  Device* FindDevice(std::string_view name);
  Values* FindValues(std::string_view device);

  // Sets a value of a device of the layout; see Values::Set. The unit's own inputs must be set here, because this also
  // writes their file.
  bool Set(std::string_view device, std::string_view value, std::string_view text, std::string* error);

  // Null when the layout has no serial line of that name. Stopping the line unplugs it, starting it plugs it in again,
  // perhaps with another path.
  Line* FindLine(std::string_view name);

  // Path of the line or of the inputs; empty while the line is unplugged.
  std::string Path(std::string_view line) const;

  // Sets the seed of the drift, and of the faults that are set from now on.
  void Seed(std::uint32_t seed);

  // Replaces the faults of a serial line of the layout.
  void SetFaults(std::string_view line, std::vector<FaultRule> rules);

  // Moves the drift of all devices forward by `seconds`.
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
