#pragma once

#include <map>

#include "sim/device.h"

namespace fieldline::sim {

// A Modbus RTU slave that is read: functions 1 to 4. It hears only frames to its address with a right CRC, and answers
// with exception 1 to another function, 3 to a count outside the function's limits, and 2 when one of the items asked
// for is missing from its map.
class ModbusSlave : public Device {
 public:
  explicit ModbusSlave(BYTE address) : address_(address) {}

  std::size_t Hear(std::span<const BYTE> received, bool silent, std::vector<Reply>& replies) override;

 protected:
  using Registers = std::map<WORD, WORD>;
  using Bits = std::map<WORD, bool>;

  // Brings the maps up to date with the device's values; called before each answer.
  virtual void Refresh() {}

  // The answer to a request, both from the function code to the last byte before the CRC. For devices that answer in
  // their own way.
  virtual Bytes Answer(std::span<const BYTE> request);

  // Makes `count` items exist that are 0 until they are set.
  template <typename T>
  static void AddRange(std::map<WORD, T>& items, WORD first, int count) {
    for (int i = 0; i < count; ++i) items.try_emplace(static_cast<WORD>(first + i));
  }

  Bits coils_;                          // function 1
  Bits discrete_inputs_;                // function 2
  Registers holding_registers_;         // function 3
  Registers input_registers_;           // function 4
  std::chrono::milliseconds delay_{0};  // before each answer

 private:
  const BYTE address_;
};

}  // namespace fieldline::sim
