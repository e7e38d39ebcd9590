#include "tools/snapshot.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>

#include "fieldline/drivers/imaging/camera_data.h"
#include "fieldline/platform/file.h"
#include "tools/verb.h"

namespace fieldline::tool {
namespace {

constexpr char kImageDirectory[] = "NandFlash/www/wwwpub/images";
constexpr std::string_view kEndMark = "\xFF\xD9";

std::optional<std::string> ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

// The second camera's driver fails without a file, whatever the camera answers.
bool AnnouncesPicture(const PollResult& result) {
  constexpr std::string_view kHead = "UG#UP";
  if (result.exchanges.empty()) return false;
  const Bytes& reply = result.exchanges.back().reply;
  return reply.size() >= kHead.size() + 2 && std::equal(kHead.begin(), kHead.end(), reply.begin());
}

}  // namespace

bool IsCamera(const Kind& kind) { return kind.id == SERDAT_CAMERA || kind.id == SERDAT_CAMERA_3GE; }

void AddFlashRoot(CLI::App& command, std::string& directory) {
  command.add_option("--flash-root", directory, "Store a camera's pictures below this directory [/]")->type_name("DIR");
}

void UseFlashRoot(const std::string& directory) {
  std::error_code error;
  std::filesystem::create_directories(std::filesystem::path(directory) / kImageDirectory, error);
  if (error) throw UsageError("--flash-root " + directory + ": no directory can be made there: " + error.message());
  if (SetFlashRoot(directory.c_str()) == 0) throw std::bad_alloc();
}

void AddSnapshot(nlohmann::ordered_json& json, const Snapshot& snapshot) {
  json["picture"] = {
      {"path", snapshot.path},
      {"size", snapshot.size}
  };
}

std::optional<Snapshot> FindSnapshot(const Kind& kind, const std::string& flash_root, const BYTE* record,
                                     PollResult* result) {
  if (result->failure && !(kind.id == SERDAT_CAMERA_3GE && AnnouncesPicture(*result))) return std::nullopt;

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
                "the picture came, but " + path.string() + " can't be made; --flash-root DIR stores it below DIR");
  }
  if (picture->size() != data.length) {
    return fail(ExitCode::kSomeFailed, "not_stored",
                path.string() + " did not take the whole picture; is the disk full?");
  }
  if (!picture->ends_with(kEndMark)) {
    return fail(ExitCode::kRefusedReply, "picture_cut_short",
                "the picture breaks off after " + std::to_string(picture->size()) + " bytes, in " + path.string());
  }
  return Snapshot{path.string(), picture->size()};
}

}  // namespace fieldline::tool
