#pragma once

#include "sim/devices/imaging/picture_device.h"

namespace fieldline::sim {

// Serial camera that answers "UG3#" with an acknowledgement, a length and its picture.
class Camera3ge : public PictureDevice {
 public:
  std::size_t Receive(std::span<const BYTE> received, bool silent, std::vector<Reply>& replies) override;
};

}  // namespace fieldline::sim
