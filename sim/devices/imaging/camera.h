#pragma once

#include "sim/devices/imaging/picture_device.h"

namespace fieldline::sim {

// Serial camera with the command set of the VC0706, number 0: commands 56 00 <command> <length> <data>, replies 76 00
// <command> <status> ... It supports reset, frame control, writing a register, and reading the length and the bytes of
// a frozen frame. Any other command is answered with a status that is not 0.
class Camera : public PictureDevice {
 public:
  Camera();

  std::size_t Receive(std::span<const BYTE> received, bool silent, std::vector<Reply>& replies) override;

 private:
  Bytes Answer(BYTE command, std::span<const BYTE> data);
  Bytes ControlFrame(std::span<const BYTE> data);
  Bytes WriteRegister(std::span<const BYTE> data);
  Bytes FrameLength(std::span<const BYTE> data) const;
  Bytes ReadFrame(std::span<const BYTE> data) const;

  Bytes frame_;  // the frozen frame; empty while frames are updated
};

}  // namespace fieldline::sim
