#pragma once

#include <cstdint>

#include "fieldline/types.h"

namespace fieldline {

// Sets the directory that serves as root of the flash file system: "\NandFlash\www\a" becomes
// <directory>/NandFlash/www/a. UTF-8; copied. Null restores the default "/". Returns 1; 0, with nothing changed, when
// out of memory. Thread-safe.
FIELDLINE_API int SetFlashRoot(const char* directory);

// A file on the flash file system, written once from start to end. A handle, not an owner: call Close().
class File {
 public:
  // Creates the file, or empties an existing one. `path` is absolute on the flash file system, with backslashes.
  // Returns false when the file can't be created. Never creates directories.
  bool Create(const char16_t* path);

  // Returns the number of bytes written: fewer than `count` when the disk is full; -1 on any other failure (also when a
  // write takes no byte) and when the file is not open.
  int Write(const BYTE* data, int count);

  // Does nothing when not open.
  void Close();

 private:
  static constexpr std::intptr_t kInvalidHandle = -1;

  std::intptr_t handle_ = kInvalidHandle;
};

}  // namespace fieldline
