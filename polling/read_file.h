#pragma once

#include <cstddef>
#include <string>

namespace fieldline {

// All of a file that has at most `most` bytes; no more are read of any. Throws UsageError, which begins with `path`.
std::string ReadFile(const std::string& path, std::size_t most);

}  // namespace fieldline
