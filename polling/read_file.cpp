#include "polling/read_file.h"

#include <filesystem>
#include <fstream>

#include "polling/usage_error.h"

namespace fieldline {

std::string ReadFile(const std::string& path, std::size_t most) {
  std::ifstream file(path, std::ios::binary);
  std::error_code error;
  if (!file || std::filesystem::is_directory(path, error)) throw UsageError(path + ": the file can't be read");
  std::string content;
  char piece[4096];
  while (file.read(piece, sizeof piece), file.gcount() > 0) {
    content.append(piece, static_cast<std::size_t>(file.gcount()));
    if (content.size() > most) {
      throw UsageError(path + ": the file is too large; at most " + std::to_string(most) + " bytes are read");
    }
  }
  if (file.bad()) throw UsageError(path + ": the file can't be read");
  return content;
}

}  // namespace fieldline
