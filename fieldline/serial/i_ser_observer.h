#pragma once

#include "fieldline/types.h"

// Implemented by the application to see every block of bytes that a port reads or writes. Called inside Read or Write,
// on the thread that called it. `data` is that caller's buffer and is valid only during the call. An observer may
// insert and remove observers, including itself.
class ISerObserver {
 public:
  // Called after a read that returned `count` bytes, at least one.
  virtual void OnSerRead(const BYTE* data, int count) = 0;
  // Called after a write that wrote `count` bytes, at least one.
  virtual void OnSerWrite(const BYTE* data, int count) = 0;

 protected:
  ~ISerObserver() = default;
};
