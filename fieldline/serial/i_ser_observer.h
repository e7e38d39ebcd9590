#pragma once

#include "fieldline/types.h"

// Implemented by the application, to be told of every block of bytes that passes through a port. Called on the thread
// that reads or writes, inside Read or Write, with the caller's own buffer, which is valid during the call only. An
// observer may insert and remove observers, itself included.
class ISerObserver {
 public:
  // After a read that returned `count` bytes, at least one.
  virtual void OnSerRead(const BYTE* data, int count) = 0;
  // After a write that wrote `count` bytes, at least one.
  virtual void OnSerWrite(const BYTE* data, int count) = 0;

 protected:
  ~ISerObserver() = default;
};
