#pragma once

#include <cstdint>

#include "fieldline/types.h"

namespace fieldline {

// Sets the directory that stands for the root of the flash file system: "\NandFlash\www\a" becomes
// <directory>/NandFlash/www/a. UTF-8; copied. Null restores the default "/". Returns 1, or 0 (nothing changed) when
// memory is short. May be called from any thread.
FIELDLINE_API int SetFlashRoot(const char* directory);

// A file on the flash file system that is written once, front to back. A handle, not an owner: Close() it.
class File {
 public:
  // Creates the file, or empties an existing one. `path` is absolute on the flash file system, with backslashes.
  // False when it can't be created; directories are never made.
  bool Create(const char16_t* path);

  // Returns the number of bytes written: fewer than `count` when the disk is full, -1 on any other failure, a write that
  // takes no byte among them, or when the file is not open.
  int Write(const BYTE* data, int count);

  // Does nothing when not open.
  void Close();

 private:
  static constexpr std::intptr_t kInvalidHandle = -1;

  std::intptr_t handle_ = kInvalidHandle;
};

}  // namespace fieldline
