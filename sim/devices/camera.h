#pragma once

#include "sim/devices/picture_device.h"

namespace fieldline::sim {

// Serial camera with the command set of the VC0706, number 0: commands 56 00 <command> <length> <data>, replies
// 76 00 <command> <status> ... It knows reset, frame control, writing a register, and a frozen frame's length and
// bytes; any other command is answered with a status that is not 0.
class Camera : public PictureDevice {
 public:
  Camera();

  std::size_t Hear(std::span<const BYTE> received, bool silent, std::vector<Reply>& replies) override;

 private:
  Bytes Answer(BYTE command, std::span<const BYTE> data);
  Bytes ControlFrame(std::span<const BYTE> data);
  Bytes WriteRegister(std::span<const BYTE> data);
  Bytes FrameLength(std::span<const BYTE> data) const;
  Bytes ReadFrame(std::span<const BYTE> data) const;

  Bytes frame_;  // frozen; empty while frames are updated
};

}  // namespace fieldline::sim
