#include "service/picture/picture_shelf.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <limits>
#include <system_error>

namespace fieldline::service {
namespace {

namespace fs = std::filesystem;

// 00000042-2026-05-17T13:45:00.123Z.jpg
constexpr std::size_t kNumberLength = 8;
constexpr std::size_t kTimeLength = 24;
constexpr std::string_view kSuffix = ".jpg";
constexpr std::size_t kNameLength = kNumberLength + 1 + kTimeLength + kSuffix.size();

bool IsPictureName(const std::string& name) { return name.size() == kNameLength && name.ends_with(kSuffix); }

std::string NumberText(long number) {
  const std::string digits = std::to_string(number);
  return std::string(kNumberLength - std::min(kNumberLength, digits.size()), '0') + digits;
}

// Nothing of a directory that can't be read.
std::vector<fs::path> FilesIn(const fs::path& directory) {
  std::vector<fs::path> files;
  std::error_code error;
  for (fs::directory_iterator entry(directory, error), end; !error && entry != end; entry.increment(error)) {
    files.push_back(entry->path());
  }
  return files;
}

std::vector<Picture> ListIn(const fs::path& directory, std::size_t most = std::numeric_limits<std::size_t>::max()) {
  std::vector<fs::path> files = FilesIn(directory);
  std::ranges::sort(files, std::ranges::greater());
  std::vector<Picture> pictures;
  for (const fs::path& file : files) {
    if (pictures.size() == most) break;
    const std::string name = file.filename().string();
    if (!IsPictureName(name)) continue;
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    if (!error) pictures.push_back({name.substr(kNumberLength + 1, kTimeLength), size, file});
  }
  return pictures;
}

// A camera's name may hold any bytes, a directory's may not.
std::string DirectoryName(const std::string& camera) {
  std::string name;
  for (const char c : camera) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte) != 0 || c == '-' || c == '_') {
      name += c;
    } else {
      const BYTE code[] = {byte};
      name += '%' + Hex(code);
    }
  }
  return name;
}

}  // namespace

fs::path PictureShelf::DirectoryOf(const std::string& camera) const { return directory_ / DirectoryName(camera); }

std::string PictureShelf::Keep(const std::string& camera, Time time, const fs::path& file) const {
  const fs::path directory = DirectoryOf(camera);
  fs::create_directories(directory);
  const std::vector<Picture> kept = ListIn(directory);
  const long last =
      kept.empty() ? 0 : ParseInteger(kept.front().path.filename().string().substr(0, kNumberLength)).value_or(0);
  const fs::path path = directory / (NumberText(last + 1) + '-' + IsoTime(time) + std::string(kSuffix));
  fs::rename(file, path);

  for (std::size_t i = settings_.most - 1; i < kept.size(); ++i) {
    std::error_code ignored;
    fs::remove(kept[i].path, ignored);
  }
  return path.string();
}

void PictureShelf::RemoveOld(Time now) const {
  const std::string oldest = IsoTime(now - settings_.keep);  // times that are written alike can be compared as texts
  std::error_code error;
  for (const fs::path& path : FilesIn(directory_)) {
    for (const Picture& picture : ListIn(path)) {
      if (picture.time < oldest) fs::remove(picture.path, error);
    }
  }
}

std::vector<Picture> PictureShelf::List(const std::string& camera, std::size_t most) const {
  return ListIn(DirectoryOf(camera), most);
}

std::optional<std::string> PictureShelf::Read(const std::string& camera, const std::string& time) const {
  const auto all = time.empty() ? List(camera, 1) : ListIn(DirectoryOf(camera));
  const auto found = time.empty() ? all.begin() : std::ranges::find(all, time, &Picture::time);
  if (found == all.end()) return std::nullopt;
  std::ifstream file(found->path, std::ios::binary);
  if (!file) return std::nullopt;  // it was removed meanwhile
  return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace fieldline::service
