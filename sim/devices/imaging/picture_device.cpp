#include "sim/devices/imaging/picture_device.h"

#include <utility>

#include "fieldline/platform/clock.h"
#include "sim/devices/imaging/picture.h"

namespace fieldline::sim {

PictureDevice::PictureDevice() {
  values().Add(
      {.name = "size", .unit = "bytes", .minimum = kSmallestPicture, .maximum = kLargestPicture, .number = 8192});
}

bool PictureDevice::Show(Bytes picture) {
  const std::size_t size = picture.size();
  const bool is_jpeg = size >= 4 && size <= kLargestPicture && picture[0] == 0xFF && picture[1] == 0xD8 &&
                       picture[size - 2] == 0xFF && picture[size - 1] == 0xD9;
  if (is_jpeg) shown_ = std::move(picture);
  return is_jpeg;
}

Bytes PictureDevice::TakePicture() {
  if (!shown_.empty()) return shown_;
  return DrawPicture(LocalTime(), static_cast<std::size_t>(values().Number("size")));
}

}  // namespace fieldline::sim
