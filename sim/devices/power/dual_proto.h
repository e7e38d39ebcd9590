#pragma once

#include <memory>

#include "sim/devices/modbus_slave.h"

namespace fieldline::sim {

// Creates the dual-protocol unit: a DualProtoModbus at an even address, a DualProtoFrame at an odd one.
std::unique_ptr<Device> MakeDualProto(BYTE address);

// The Modbus RTU variant: single-precision numbers in pairs of holding registers, high half first, and one coil for the
// state. A number is named after its first register: register_2348 ...
class DualProtoModbus : public ModbusSlave {
 public:
  explicit DualProtoModbus(BYTE address);

 protected:
  void Refresh() override;
};

// The variant with its own frame: answers a 5-byte request with one block of raw bytes.
//
//   request  address 01 02, checksum low byte first: negated sum of the three bytes before it
//   reply    address 01, length of the body, body
//
// Values are named after their position in the body: word_0 (two bytes, low byte first), byte_14 ... Only the state has
// a name of its own.
class DualProtoFrame : public Device {
 public:
  explicit DualProtoFrame(BYTE address);

  std::size_t Receive(std::span<const BYTE> received, bool silent, std::vector<Reply>& replies) override;
  void ChangeAddress(Bytes& reply) const override;

 private:
  Bytes Body();

  const BYTE address_;
};

}  // namespace fieldline::sim
