#pragma once

#include <modbus.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "fieldline/platform/pseudo_terminal.h"
#include "tests/support/scripted_port.h"

namespace fieldline::test {

// A Modbus RTU slave that this project did not write, on a line of its own. Its registers and bits are those of the
// mapping, to be filled before Start().
class LibmodbusSlave {
 public:
  // Items from the first to the last address that exists, for each of the four tables; none when last < first.
  struct Range {
    int first = 0;
    int last = -1;
  };
  struct Map {
    Range coils = {};
    Range inputs = {};
    Range holding_registers = {};
    Range input_registers = {};
  };

  LibmodbusSlave(int address, const Map& map);
  ~LibmodbusSlave();

  // Device address and function as given, then `bytes`; the library adds the checksum. Sent in place of the answer that
  // the mapping gives.
  void AnswerWith(Bytes reply) { raw_reply_ = std::move(reply); }

  void Start();

  // Path of the line's near end.
  std::string Path() const { return near_.Path(); }

  modbus_mapping_t& map() { return *map_; }

 private:
  void Bridge(PseudoTerminal& from, PseudoTerminal& to);
  void Serve();

  // Both libraries open a terminal, so the line consists of two, joined by two threads.
  PseudoTerminal near_;
  PseudoTerminal far_;
  modbus_t* context_;
  modbus_mapping_t* map_;
  Bytes raw_reply_;
  std::atomic<bool> stop_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace fieldline::test
