#pragma once

#include <cstdint>

#pragma pack(push, 1)
// The record of both cameras: the last snapshot.
struct CAMERA_DATA {
  std::uint16_t length;  // bytes
  char name[50];         // name of the file without its directory; zero-terminated
};
#pragma pack(pop)
static_assert(sizeof(CAMERA_DATA) == 52);
