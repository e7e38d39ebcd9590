#include "sim/room.h"

#include <algorithm>
#include <utility>

#include "sim/models.h"

namespace fieldline::sim {
namespace {

constexpr RoomLine kLines[] = {
    {"ESL1", 2400  },
    {"ESL2", 9600  },
    {"ESL3", 9600  },
    {"ESL4", 2400  },
    {"ESL5", 9600  },
    {"ESL6", 9600  },
    {"ESL7", 9600  },
    {"ESL8", 115200},
    {"COM1", 115200},
    {"COM2", 9600  },
    {"COM3", 115200},
    {"COM4", 115200},
    {"EIO1", 0     },
};

constexpr RoomDevice kDevices[] = {
    {"cold-aisle",   "ESL1", &KindOf(SERDAT_ENVIR),      1},
    {"hot-aisle",    "ESL1", &KindOf(SERDAT_ENVIR),      2},
    {"battery-room", "ESL1", &KindOf(SERDAT_ENVIR),      3},
    {"floor",        "ESL2", &KindOf(SERDAT_LEAK),       1},
    {"doors",        "ESL2", &KindOf(SERDAT_ONOFF),      2},
    {"cooling-1",    "ESL2", &KindOf(SERDAT_AIRC),       3},
    {"mains",        "ESL3", &KindOf(SERDAT_ELEC),       1},
    {"racks",        "ESL3", &KindOf(SERDAT_ELEC_Y),     2},
    {"cooling-2",    "ESL3", &KindOf(SERDAT_EMERSON),    3},
    {"rectifier-1",  "ESL3", &KindOf(SERDAT_DUAL_PROTO), 4},
    {"rectifier-2",  "ESL3", &KindOf(SERDAT_DUAL_PROTO), 5},
    {"ups",          "ESL4", &KindOf(SERDAT_UPS),        0},
    {"batteries",    "ESL5", &KindOf(SERDAT_BATTERY),    1},
    {"power-unit",   "ESL6", &KindOf(SERDAT_POWER_UNIT), 1},
    {"cybermate",    "ESL7", &KindOf(SERDAT_CYBERMATE),  1},
    {"camera-1",     "ESL8", &KindOf(SERDAT_CAMERA),     0},
    {"camera-2",     "COM1", &KindOf(SERDAT_CAMERA_3GE), 0},
    {"entrance",     "COM2", &KindOf(SERDAT_CARD_K),     0},
    {"alarm-board",  "COM3", &KindOf(SERDAT_ALARM),      0},
    {"panel",        "COM4", &KindOf(SERDAT_MONITOR),    0},
    {"inputs",       "EIO1", &KindOf(SERDAT_DI),         0},
};

}  // namespace

RoomLayout MachineRoom() { return {kLines, kDevices}; }

const RoomLine& LineOf(const RoomLayout& layout, const RoomDevice& device) {
  return *std::ranges::find(layout.lines, device.line, &RoomLine::name);
}

Room::Room(const RoomLayout& layout, const std::filesystem::path& scratch) {
  for (const RoomLine& line : layout.lines) {
    if (line.baud == 0) continue;
    lines_.push_back({line.name, std::make_unique<Line>(LineOptions{.baud = line.baud})});
  }
  for (const RoomDevice& device : layout.devices) {
    if (!device.kind->HasLine()) {
      devices_.push_back({device.name, nullptr, &inputs_.emplace(scratch).values()});
    } else {
      Device& made = FindLine(device.line)->Add(Make(*device.kind, static_cast<BYTE>(device.address)));
      devices_.push_back({device.name, &made, &made.values()});
    }
  }
}

bool Room::Start() {
  if (inputs_ && !inputs_->Update()) return false;
  return std::ranges::all_of(lines_, [](const NamedLine& named) { return named.line->Start(); });
}

Device* Room::FindDevice(std::string_view name) {
  const auto found = std::ranges::find(devices_, name, &NamedDevice::name);
  return found != devices_.end() ? found->device : nullptr;
}

Values* Room::FindValues(std::string_view device) {
  const auto found = std::ranges::find(devices_, device, &NamedDevice::name);
  return found != devices_.end() ? found->values : nullptr;
}

bool Room::Set(std::string_view device, std::string_view value, std::string_view text, std::string* error) {
  Values* const values = FindValues(device);
  if (!values->Set(value, text, error)) return false;
  if (!inputs_ || values != &inputs_->values() || inputs_->Update()) return true;
  *error = inputs_->Path().string() + " can't be written";
  return false;
}

Line* Room::FindLine(std::string_view name) {
  const auto found = std::ranges::find(lines_, name, &NamedLine::name);
  return found != lines_.end() ? found->line.get() : nullptr;
}

std::string Room::Path(std::string_view line) const {
  const auto found = std::ranges::find(lines_, line, &NamedLine::name);
  if (found != lines_.end()) return found->line->Path();
  return inputs_ ? inputs_->Path().string() : std::string();
}

void Room::Seed(std::uint32_t seed) {
  seed_ = seed;
  for (const NamedDevice& device : devices_) device.values->SeedDrift(seed);
}

void Room::SetFaults(std::string_view line, std::vector<FaultRule> rules) {
  const auto found = std::ranges::find(lines_, line, &NamedLine::name);
  // Each line has its own seed: lines with the same rules are hit at different replies.
  const auto seed = seed_ + static_cast<std::uint32_t>(found - lines_.begin());
  found->line->SetFaults(Faults(seed, std::move(rules)));
}

void Room::Drift(double seconds) {
  for (const NamedDevice& device : devices_) device.values->Drift(seconds);
}

}  // namespace fieldline::sim
