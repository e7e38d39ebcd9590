#pragma once

#include <filesystem>

#include "sim/values.h"

namespace fieldline::sim {

// The unit's own eight digital inputs. They hang on no line: a file stands for the input device, and its one byte for
// their states, bit i for input i + 1.
class DigitalInputs {
 public:
  // The file is `directory`/eio1; the directory must exist. There is no file before the first Update().
  explicit DigitalInputs(const std::filesystem::path& directory);
  ~DigitalInputs();
  DigitalInputs(const DigitalInputs&) = delete;
  DigitalInputs& operator=(const DigitalInputs&) = delete;

  const std::filesystem::path& Path() const { return path_; }

  // input_1 to input_8. Call Update() after a change.
  Values& values() { return values_; }

  // Brings the file up to date; whoever reads meanwhile gets the old byte or the new one. False when the file can't be
  // written.
  bool Update();

 private:
  const std::filesystem::path path_;
  Values values_;
};

}  // namespace fieldline::sim
