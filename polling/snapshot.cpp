#include "polling/snapshot.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>

#include "fieldline/drivers/imaging/camera_data.h"
#include "fieldline/platform/file.h"
#include "polling/protocol/ug3.h"
#include "polling/usage_error.h"

namespace fieldline {
namespace {

constexpr char kImageDirectory[] = "NandFlash/www/wwwpub/images";
constexpr std::string_view kEndMark = "\xFF\xD9";

std::optional<std::string> ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

// The second camera's driver fails when the file can't be created, even if the camera sent a picture.
bool AnnouncesPicture(const PollResult& result) {
  return !result.exchanges.empty() && AnnouncedPicture(result.exchanges.back().reply);
}

}  // namespace

void UseFlashRoot(const std::string& directory) {
  std::error_code error;
  std::filesystem::create_directories(std::filesystem::path(directory) / kImageDirectory, error);
  if (error) throw UsageError(directory + ": the directory can't be created: " + error.message());
  if (SetFlashRoot(directory.c_str()) == 0) throw std::bad_alloc();
}

std::optional<Snapshot> FindSnapshot(const Kind& kind, const std::string& flash_root, const BYTE* record,
                                     PollResult* result) {
  if (result->failure && !(kind.number == SERDAT_CAMERA_3GE && AnnouncesPicture(*result))) return std::nullopt;

  CAMERA_DATA data;
  std::memcpy(&data, record, sizeof data);
  const std::filesystem::path path =
      std::filesystem::path(flash_root.empty() ? "/" : flash_root) / kImageDirectory / data.name;
  const std::optional<std::string> picture = ReadFile(path);
  const auto fail = [&](ExitCode exit, std::string_view code, const std::string& message) {
    result->failure = Failure{exit, code, message};
    return std::nullopt;
  };
  if (result->failure || !picture) {
    return fail(ExitCode::kSomeFailed, "not_stored",
                "the picture came, but " + path.string() + " can't be created" +
                    (flash_root.empty() ? "; --flash-root DIR stores it below DIR" : ""));
  }
  if (picture->size() != data.length) {
    return fail(ExitCode::kSomeFailed, "not_stored",
                path.string() + " does not hold the whole picture; is the disk full?");
  }
  if (!picture->ends_with(kEndMark)) {
    return fail(ExitCode::kRefusedReply, "picture_cut_short",
                "the picture ends after " + std::to_string(picture->size()) + " bytes, in " + path.string());
  }
  return Snapshot{path.string(), picture->size()};
}

}  // namespace fieldline
