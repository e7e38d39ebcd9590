#include "fieldline/platform/path_buffer.h"

namespace fieldline {

bool DefaultDevicePath(std::wstring_view name, PathBuffer& path) { return !name.empty() && CopyWidePath(name, path); }

}  // namespace fieldline
