#pragma once

#include <cstddef>
#include <string>

namespace fieldline {

// The whole content of a file. Throws UsageError, which begins with `path`, when the file can't be read or has more
// than `most` bytes.
std::string ReadFile(const std::string& path, std::size_t most);

}  // namespace fieldline
