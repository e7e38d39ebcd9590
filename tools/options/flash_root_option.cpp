#include "tools/options/flash_root_option.h"

namespace fieldline::tool {

void AddFlashRoot(CLI::App& command, std::string& directory) {
  command.add_option("--flash-root", directory, "Store a camera's pictures below this directory [/]")->type_name("DIR");
}

}  // namespace fieldline::tool
