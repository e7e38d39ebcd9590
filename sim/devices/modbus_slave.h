#pragma once

#include <map>

#include "sim/device.h"

namespace fieldline::sim {

// A Modbus RTU slave for reading: functions 1 to 4. It takes only frames to its address with a correct CRC. It answers
// with exception 1 to another function, 3 to a count outside the function's limits, and 2 when a requested item is not
// in its map.
class ModbusSlave : public Device {
 public:
  explicit ModbusSlave(BYTE address) : address_(address) {}

  std::size_t Receive(std::span<const BYTE> received, bool silent, std::vector<Reply>& replies) override;
  void ChangeAddress(Bytes& reply) const override;

 protected:
  using Registers = std::map<WORD, WORD>;
  using Bits = std::map<WORD, bool>;

  // Copies the device's values into the maps. Called before each answer.
  virtual void Refresh() {}

  // Returns the answer to a request. Both are without address and CRC. Overridden by devices that answer in their own
  // way.
  virtual Bytes Answer(std::span<const BYTE> request);

  // Adds `count` items from `first` on, with the initial value 0.
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
