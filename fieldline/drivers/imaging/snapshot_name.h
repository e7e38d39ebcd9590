#pragma once

#include <string_view>

namespace fieldline {

// Name of a snapshot taken now, and its path in the web server's image directory on the flash file system.
class SnapshotName {
 public:
  // The name is prefix, local time and suffix. The time has year, month, day, hour, minute and second: 20240517134500.
  // Prefix and suffix have at most 10 characters each.
  SnapshotName(std::u16string_view prefix, std::u16string_view suffix);

  const char16_t* path() const { return path_; }
  const char16_t* name() const { return path_ + kDirectory.size(); }

 private:
  static constexpr std::u16string_view kDirectory = u"\\NandFlash\\www\\wwwpub\\images\\";

  char16_t path_[128];
};

}  // namespace fieldline
