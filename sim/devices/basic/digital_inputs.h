#pragma once

#include <filesystem>

#include "sim/values.h"

namespace fieldline::sim {

// The unit's own eight digital inputs, which have no line. A file replaces the input device; its one byte holds the
// states, bit i for input i + 1.
class DigitalInputs {
 public:
  // The file is `directory`/eio1; the directory must exist. The first Update() creates the file.
  explicit DigitalInputs(const std::filesystem::path& directory);
  ~DigitalInputs();
  DigitalInputs(const DigitalInputs&) = delete;
  DigitalInputs& operator=(const DigitalInputs&) = delete;

  const std::filesystem::path& Path() const { return path_; }

  // input_1 to input_8. Call Update() after a change.
  Values& values() { return values_; }

  // Writes the states to the file. A program that reads it meanwhile gets either the old byte or the new one. Returns
  // false when the file can't be written.
  bool Update();

 private:
  const std::filesystem::path path_;
  Values values_;
};

}  // namespace fieldline::sim
