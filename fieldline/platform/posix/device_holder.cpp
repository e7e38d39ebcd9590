#include <dirent.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "fieldline/platform/device_path.h"

namespace fieldline {

const char* const kUsualSerialPath = "/dev/ttyUSB0";

namespace {

// Calls `visit` with the name of each entry until it returns true.
template <typename Visit>
bool FindEntry(const std::string& directory, Visit visit) {
  DIR* const entries = opendir(directory.c_str());
  if (entries == nullptr) return false;
  bool found = false;
  while (const dirent* const entry = readdir(entries)) {
    if (entry->d_name[0] == '.') continue;
    found = visit(std::string(entry->d_name));
    if (found) break;
  }
  closedir(entries);
  return found;
}

bool IsSameDevice(const std::string& path, const struct stat& device) {
  struct stat other;
  return stat(path.c_str(), &other) == 0 && S_ISCHR(other.st_mode) && other.st_rdev == device.st_rdev;
}

}  // namespace

int ProcessThatHolds(const char* path) {
  struct stat device;
  if (stat(path, &device) != 0 || !S_ISCHR(device.st_mode)) return 0;
  int holder = 0;
  FindEntry("/proc", [&](const std::string& name) {
    const int process = atoi(name.c_str());
    if (process == 0 || process == getpid()) return false;
    const std::string files = "/proc/" + name + "/fd/";
    if (!FindEntry(files, [&](const std::string& file) { return IsSameDevice(files + file, device); })) return false;
    holder = process;
    return true;
  });
  return holder;
}

}  // namespace fieldline
